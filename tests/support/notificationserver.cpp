#include "notificationserver.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
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

uint NotificationServer::Notify(const QString &appName, uint, const QString &appIcon,
                                const QString &summary, const QString &body,
                                const QStringList &actions, const QVariantMap &hints, int)
{
    const uint id = m_nextId++;
    received.append({id, appName, appIcon, summary, body, actions, hints});
    return id;
}

void NotificationServer::invokeAction(uint id, const QString &actionKey,
                                      const QString &activationToken)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!activationToken.isEmpty()) {
        QDBusMessage token =
            QDBusMessage::createSignal(objectPath, serviceName, QStringLiteral("ActivationToken"));
        token << id << activationToken;
        bus.send(token);
    }
    QDBusMessage invoked =
        QDBusMessage::createSignal(objectPath, serviceName, QStringLiteral("ActionInvoked"));
    invoked << id << actionKey;
    bus.send(invoked);
}

void NotificationServer::closeNotification(uint id)
{
    QDBusMessage closed =
        QDBusMessage::createSignal(objectPath, serviceName, QStringLiteral("NotificationClosed"));
    closed << id << uint(2);
    QDBusConnection::sessionBus().send(closed);
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
