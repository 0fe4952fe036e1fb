#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace kestrine::testing {

/// A desktop notification server for tests: owns org.freedesktop.Notifications on the session
/// bus and keeps every notification that arrives.
class NotificationServer : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    struct Received
    {
        QString appName;
        QString summary;
        QString body;
        QVariantMap hints;
    };

    explicit NotificationServer(QObject *parent = nullptr);
    ~NotificationServer() override;

    /// Registers on the session bus; false when there is no bus or the name is taken.
    bool start();

    QList<Received> received;
    /// What GetCapabilities answers; a test adds "body-markup" for a server that reads markup.
    QStringList capabilities{QStringLiteral("body"), QStringLiteral("sound")};

    /// Waits until `count` notifications have arrived (five seconds at most), then a little longer
    /// so that any that follow are caught too; answers each as "summary|body", in order of
    /// arrival, and forgets them.
    QStringList takeArrived(qsizetype count);

public slots:
    uint Notify(const QString &appName, uint replacesId, const QString &appIcon,
                const QString &summary, const QString &body, const QStringList &actions,
                const QVariantMap &hints, int expireTimeout);
    QStringList GetCapabilities();
    QString GetServerInformation(QString &vendor, QString &version, QString &specVersion);
    void CloseNotification(uint id);

private:
    bool m_registered = false;
    uint m_nextId = 1;
};

} // namespace kestrine::testing
