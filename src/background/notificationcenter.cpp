#include "notificationcenter.h"

#include "defaultsstore.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QVariantMap>

namespace kestrine {
namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");

} // namespace

const QString FreedesktopNotificationCenter::authorizationKey =
    QStringLiteral("kestrine.notifications.authorized");

FreedesktopNotificationCenter::FreedesktopNotificationCenter(QObject *parent)
    : QObject(parent)
{}

QCoro::Task<NotificationCenter::Authorization> FreedesktopNotificationCenter::authorizationStatus()
{
    const QVariant stored = defaultsStore().value(authorizationKey);
    if (stored.typeId() != QMetaType::Bool)
        co_return Authorization::NotDetermined;
    co_return stored.toBool() ? Authorization::Authorized : Authorization::Denied;
}

QCoro::Task<bool> FreedesktopNotificationCenter::requestAuthorization()
{
    // Nothing to ask on a desktop: notifications are allowed, and the session's notification
    // server decides how to show them.
    defaultsStore().setValue(authorizationKey, true);
    defaultsStore().sync();
    co_return true;
}

void FreedesktopNotificationCenter::post(const QString &identifier, const QString &title,
                                         const QString &body)
{
    const QVariant stored = defaultsStore().value(authorizationKey);
    if (stored.typeId() == QMetaType::Bool && !stored.toBool())
        return;
    if (m_isInForeground && m_isInForeground())
        return;
    QDBusMessage notify =
        QDBusMessage::createMethodCall(service, path, service, QStringLiteral("Notify"));
    const QVariantMap hints{
        {QStringLiteral("sound-name"), QStringLiteral("message-new-instant")},
        {QStringLiteral("desktop-entry"), QStringLiteral("com.norrum.kestrine")},
        {QStringLiteral("x-kestrine-id"), identifier},
    };
    notify << QStringLiteral("Kestrine") << uint(0) << QStringLiteral("com.norrum.kestrine")
           << title << body << QStringList() << hints << int(-1);
    QDBusConnection::sessionBus().asyncCall(notify);
}

void FreedesktopNotificationCenter::setForegroundTest(ForegroundTest isInForeground)
{
    m_isInForeground = std::move(isInForeground);
}

} // namespace kestrine
