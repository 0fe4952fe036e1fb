#include "notificationcenter.h"

#include "defaultsstore.h"

#include <QCoroSignal>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
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
    // The body holds a pull request's title, which a stranger wrote. A server that reads markup in
    // bodies would style it, or fetch the image an <img> tag names, so it gets the text escaped.
    // The answers arrive in the order asked, so notifications still go out in order.
    const QDBusMessage capabilities =
        QDBusMessage::createMethodCall(service, path, service, QStringLiteral("GetCapabilities"));
    auto *answer =
        new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(capabilities), this);
    ++m_unsent;
    connect(answer, &QDBusPendingCallWatcher::finished, this,
            [this, identifier, title, body](QDBusPendingCallWatcher *call) {
                call->deleteLater();
                const QDBusPendingReply<QStringList> reply = *call;
                const bool readsMarkup =
                    !reply.isError() && reply.value().contains(QStringLiteral("body-markup"));
                send(identifier, title, readsMarkup ? escapedMarkup(body) : body);
                if (--m_unsent == 0)
                    emit sendingFinished();
            });
}

QCoro::Task<> FreedesktopNotificationCenter::allSent()
{
    if (m_unsent > 0)
        co_await qCoro(this, &FreedesktopNotificationCenter::sendingFinished);
}

QString FreedesktopNotificationCenter::escapedMarkup(const QString &text)
{
    QString escaped = text;
    escaped.replace(u'&', QStringLiteral("&amp;"));
    escaped.replace(u'<', QStringLiteral("&lt;"));
    escaped.replace(u'>', QStringLiteral("&gt;"));
    return escaped;
}

void FreedesktopNotificationCenter::send(const QString &identifier, const QString &title,
                                         const QString &body)
{
    QDBusMessage notify =
        QDBusMessage::createMethodCall(service, path, service, QStringLiteral("Notify"));
    const QVariantMap hints{
        {QStringLiteral("sound-name"), QStringLiteral("message-new-instant")},
        {QStringLiteral("desktop-entry"), QStringLiteral("com.norrum.kestrine")},
        {QStringLiteral("x-kestrine-id"), identifier},
    };
    // The summary is always plain text to a notification server; only bodies may be markup.
    notify << QStringLiteral("Kestrine") << uint(0) << QStringLiteral("com.norrum.kestrine")
           << title << body << QStringList() << hints << int(-1);
    QDBusConnection::sessionBus().asyncCall(notify);
}

void FreedesktopNotificationCenter::setForegroundTest(ForegroundTest isInForeground)
{
    m_isInForeground = std::move(isInForeground);
}

} // namespace kestrine
