#include "applicationservice.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>

namespace kestrine {
namespace {

/// Long enough for an app that is busy starting (the keychain can take a while to answer), short
/// enough that a hung one does not keep the second start waiting the bus's 25 seconds.
constexpr int handOverTimeoutMs = 10000;

const QString activationTokenKey = QStringLiteral("activation-token");
const QString startupIdKey = QStringLiteral("desktop-startup-id");

/// The token the launcher gave for the window to come to the front: Wayland's, else X11's.
QString activationToken(const QVariantMap &platformData)
{
    const QString token = platformData.value(activationTokenKey).toString();
    return token.isEmpty() ? platformData.value(startupIdKey).toString() : token;
}

/// A parameter of an "av" argument: the bus hands its items over unwrapped, a caller in this
/// process may not.
QVariant unwrapped(const QVariant &item)
{
    return item.canConvert<QDBusVariant>() ? item.value<QDBusVariant>().variant() : item;
}

} // namespace

const QString ApplicationService::interfaceName = QStringLiteral("org.freedesktop.Application");
const QString ApplicationService::openPullRequestAction = QStringLiteral("open-pull-request");

QString ApplicationService::busName(bool demo)
{
    return demo ? QStringLiteral("com.norrum.kestrine.Demo")
                : QStringLiteral("com.norrum.kestrine");
}

QString ApplicationService::objectPath(const QString &busName)
{
    QString path = u'/' + busName;
    path.replace(u'.', u'/');
    path.replace(u'-', u'_');
    return path;
}

ApplicationService::ApplicationService(QString busName, QObject *parent)
    : QObject(parent)
    , m_busName(std::move(busName))
{}

ApplicationService::~ApplicationService()
{
    release();
}

ApplicationService::Claim ApplicationService::claim()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.interface())
        return Claim::NoBus;
    if (!m_registered) {
        if (!bus.registerObject(objectPath(m_busName), this,
                                QDBusConnection::ExportScriptableSlots))
            return Claim::NoBus;
        m_registered = true;
    }
    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply =
        bus.interface()->registerService(m_busName, QDBusConnectionInterface::DontQueueService,
                                         QDBusConnectionInterface::DontAllowReplacement);
    if (reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered) {
        m_owned = true;
        return Claim::Owned;
    }
    bus.unregisterObject(objectPath(m_busName));
    m_registered = false;
    return reply.isValid() ? Claim::AlreadyRunning : Claim::NoBus;
}

void ApplicationService::release()
{
    if (!m_owned && !m_registered)
        return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (m_owned)
        bus.unregisterService(m_busName);
    if (m_registered)
        bus.unregisterObject(objectPath(m_busName));
    m_owned = false;
    m_registered = false;
}

void ApplicationService::Activate(const QVariantMap &platformData)
{
    emit activationRequested(activationToken(platformData));
}

void ApplicationService::Open(const QStringList &, const QVariantMap &)
{
    sendErrorReply(QDBusError::NotSupported,
                   QStringLiteral("Kestrine opens no files or addresses; use the action %1.")
                       .arg(openPullRequestAction));
}

void ApplicationService::ActivateAction(const QString &actionName, const QVariantList &parameter,
                                        const QVariantMap &platformData)
{
    if (actionName != openPullRequestAction) {
        sendErrorReply(QDBusError::NotSupported,
                       QStringLiteral("Kestrine has no action %1.").arg(actionName));
        return;
    }
    const QVariant key = parameter.size() == 1 ? unwrapped(parameter.constFirst()) : QVariant();
    const std::optional<PullRequestReference> reference =
        key.typeId() == QMetaType::QString ? PullRequestReference::parse(key.toString())
                                           : std::nullopt;
    if (!reference) {
        sendErrorReply(QDBusError::InvalidArgs,
                       QStringLiteral("%1 takes one text, %2.")
                           .arg(openPullRequestAction, PullRequestReference::syntax()));
        return;
    }
    emit pullRequestRequested(*reference, activationToken(platformData));
}

QVariantMap ApplicationService::launchPlatformData()
{
    QVariantMap platformData;
    const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    if (!token.isEmpty())
        platformData.insert(activationTokenKey, token);
    const QString startupId = qEnvironmentVariable("DESKTOP_STARTUP_ID");
    if (!startupId.isEmpty())
        platformData.insert(startupIdKey, startupId);
    return platformData;
}

std::optional<QString> ApplicationService::handOver(const QString &busName,
                                                    const std::optional<PullRequestReference> &open,
                                                    const QVariantMap &platformData)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return bus.lastError().message();

    const QString path = objectPath(busName);
    QDBusMessage call;
    if (open) {
        call = QDBusMessage::createMethodCall(busName, path, interfaceName,
                                              QStringLiteral("ActivateAction"));
        call << openPullRequestAction
             << QVariantList{QVariant::fromValue(QDBusVariant(open->key()))} << platformData;
    } else {
        call = QDBusMessage::createMethodCall(busName, path, interfaceName,
                                              QStringLiteral("Activate"));
        call << platformData;
    }
    const QDBusMessage reply = bus.call(call, QDBus::Block, handOverTimeoutMs);
    if (reply.type() == QDBusMessage::ErrorMessage)
        return reply.errorMessage().isEmpty() ? reply.errorName() : reply.errorMessage();
    return std::nullopt;
}

} // namespace kestrine
