#include "notificationcenter.h"

#include "defaultsstore.h"

#include <QCoreApplication>
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
/// The action the server runs when the notification itself is clicked or tapped.
const QString defaultAction = QStringLiteral("default");

} // namespace

const QString FreedesktopNotificationCenter::desktopEntry = QStringLiteral("com.norrum.kestrine");

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
                                         const QString &body, const QString &pullRequestKey)
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
            [this, identifier, title, body, pullRequestKey](QDBusPendingCallWatcher *call) {
                call->deleteLater();
                const QDBusPendingReply<QStringList> reply = *call;
                const bool readsMarkup =
                    !reply.isError() && reply.value().contains(QStringLiteral("body-markup"));
                send(identifier, title, readsMarkup ? escapedMarkup(body) : body, pullRequestKey);
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
                                         const QString &body, const QString &pullRequestKey)
{
    QDBusMessage notify =
        QDBusMessage::createMethodCall(service, path, service, QStringLiteral("Notify"));
    const QVariantMap hints{
        {QStringLiteral("sound-name"), QStringLiteral("message-new-instant")},
        {QStringLiteral("desktop-entry"), desktopEntry},
        {QStringLiteral("x-kestrine-id"), identifier},
    };
    // The default action has no button of its own on most servers; those that draw one show its
    // label.
    QStringList actions;
    if (m_opensPullRequests) {
        actions << defaultAction
                << QCoreApplication::translate("NotificationService", "Open",
                                               "opens the notification's pull request");
    }
    // The summary is always plain text to a notification server; only bodies may be markup.
    notify << QStringLiteral("Kestrine") << uint(0) << desktopEntry << title << body << actions
           << hints << int(-1);
    const QDBusPendingCall sent = QDBusConnection::sessionBus().asyncCall(notify);
    if (!m_opensPullRequests)
        return;
    // The server answers with the notification's id, which its signals name; the answer comes
    // before any signal about that notification, as the bus keeps the order of what one sender
    // sends.
    auto *answer = new QDBusPendingCallWatcher(sent, this);
    connect(answer, &QDBusPendingCallWatcher::finished, this,
            [this, pullRequestKey](QDBusPendingCallWatcher *call) {
                call->deleteLater();
                const QDBusPendingReply<uint> reply = *call;
                if (!reply.isError())
                    m_shown.insert(reply.value(), pullRequestKey);
            });
}

bool FreedesktopNotificationCenter::openPullRequests()
{
    if (m_opensPullRequests)
        return true;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    // Signals of whichever process owns the server's name, now or later.
    bus.connect(service, path, service, QStringLiteral("ActionInvoked"), this,
                SLOT(onActionInvoked(uint, QString)));
    bus.connect(service, path, service, QStringLiteral("ActivationToken"), this,
                SLOT(onActivationToken(uint, QString)));
    bus.connect(service, path, service, QStringLiteral("NotificationClosed"), this,
                SLOT(onNotificationClosed(uint, uint)));
    m_opensPullRequests = true;
    return true;
}

void FreedesktopNotificationCenter::onActionInvoked(uint id, const QString &actionKey)
{
    const auto shown = m_shown.constFind(id);
    if (shown == m_shown.cend() || actionKey != defaultAction)
        return;
    const QString pullRequestKey = *shown;
    const QString activationToken = m_activationTokens.take(id);
    // An activated notification is done with: servers take it away, and not every one says so
    // with a NotificationClosed.
    m_shown.erase(shown);
    emit pullRequestActivated(pullRequestKey, activationToken);
}

void FreedesktopNotificationCenter::onActivationToken(uint id, const QString &activationToken)
{
    if (m_shown.contains(id))
        m_activationTokens.insert(id, activationToken);
}

void FreedesktopNotificationCenter::onNotificationClosed(uint id, uint)
{
    m_shown.remove(id);
    m_activationTokens.remove(id);
}

void FreedesktopNotificationCenter::setForegroundTest(ForegroundTest isInForeground)
{
    m_isInForeground = std::move(isInForeground);
}

} // namespace kestrine
