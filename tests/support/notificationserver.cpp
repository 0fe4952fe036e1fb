#include "notificationserver.h"

#include <QDBusConnectionInterface>
#include <QElapsedTimer>
#include <QTest>

namespace kestrine::testing {

namespace {
const QString serviceName = QStringLiteral("org.freedesktop.Notifications");
const QString objectPath = QStringLiteral("/org/freedesktop/Notifications");
} // namespace

NotificationServer::NotificationServer(QObject *parent)
    : QObject(parent)
{}

NotificationServer::~NotificationServer()
{
    if (m_registered) {
        QDBusConnection::sessionBus().unregisterObject(objectPath);
        QDBusConnection::sessionBus().unregisterService(serviceName);
    }
}

bool NotificationServer::start()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    if (!bus.registerObject(objectPath, this, QDBusConnection::ExportAllSlots))
        return false;
    if (!bus.registerService(serviceName)) {
        bus.unregisterObject(objectPath);
        return false;
    }
    m_registered = true;
    return true;
}

uint NotificationServer::Notify(const QString &appName, uint, const QString &,
                                const QString &summary, const QString &body, const QStringList &,
                                const QVariantMap &hints, int)
{
    received.append({appName, summary, body, hints});
    return m_nextId++;
}

QStringList NotificationServer::takeArrived(qsizetype count)
{
    QElapsedTimer waited;
    waited.start();
    while (received.size() < count && waited.elapsed() < 5000)
        QTest::qWait(20);
    QTest::qWait(100);
    QStringList lines;
    for (const Received &notification : std::as_const(received))
        lines.append(notification.summary + u'|' + notification.body);
    received.clear();
    return lines;
}

QStringList NotificationServer::GetCapabilities()
{
    return capabilities;
}

QString NotificationServer::GetServerInformation(QString &vendor, QString &version,
                                                 QString &specVersion)
{
    vendor = QStringLiteral("kestrine-tests");
    version = QStringLiteral("1");
    specVersion = QStringLiteral("1.2");
    return QStringLiteral("test-notifications");
}

void NotificationServer::CloseNotification(uint)
{}

} // namespace kestrine::testing
