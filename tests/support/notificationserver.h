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
        /// The id the server gave it, which its signals name.
        uint id = 0;
        QString appName;
        QString appIcon;
        QString summary;
        QString body;
        /// Action keys and labels, one after the other.
        QStringList actions;
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

    /// What a server sends when the user activates notification `id` by its action `actionKey`:
    /// an ActivationToken first when `activationToken` is given, then ActionInvoked. As signals,
    /// they reach every client on the bus.
    void invokeAction(uint id, const QString &actionKey, const QString &activationToken = {});
    /// NotificationClosed, as when the user dismissed notification `id` (reason 2).
    void closeNotification(uint id);

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
