#include "secretserviceprobe.h"

#include "keychainhelper.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QVariant>

namespace kestrine::testing {
namespace {

const QString busName = QStringLiteral("org.freedesktop.secrets");
const QString servicePath = QStringLiteral("/org/freedesktop/secrets");
const QString serviceInterface = QStringLiteral("org.freedesktop.Secret.Service");
const QString itemInterface = QStringLiteral("org.freedesktop.Secret.Item");
const QString sessionInterface = QStringLiteral("org.freedesktop.Secret.Session");

QString &errorText()
{
    static QString text;
    return text;
}

/// Sends `call` and answers the reply, or nothing (with lastError set) for an error reply.
std::optional<QDBusMessage> send(const QDBusMessage &call)
{
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        errorText() = QStringLiteral("%1 on %2: %3 %4")
                          .arg(call.member(), call.path(), reply.errorName(), reply.errorMessage());
        return std::nullopt;
    }
    return reply;
}

} // namespace

std::optional<QList<QDBusObjectPath>>
SecretServiceProbe::search(const QMap<QString, QString> &attributes)
{
    // a{ss} has no built-in marshaller in QtDBus.
    qDBusRegisterMetaType<QMap<QString, QString>>();
    QDBusMessage call =
        QDBusMessage::createMethodCall(busName, servicePath, serviceInterface, "SearchItems");
    call << QVariant::fromValue(attributes);
    const std::optional<QDBusMessage> reply = send(call);
    if (!reply)
        return std::nullopt;
    if (reply->arguments().size() != 2) {
        errorText() =
            QStringLiteral("SearchItems answered %1 values").arg(reply->arguments().size());
        return std::nullopt;
    }
    // (unlocked, locked)
    return qdbus_cast<QList<QDBusObjectPath>>(reply->arguments().at(0)) +
           qdbus_cast<QList<QDBusObjectPath>>(reply->arguments().at(1));
}

std::optional<QList<QDBusObjectPath>> SecretServiceProbe::items(const QString &service,
                                                                const QString &account)
{
    return search({{QStringLiteral("server"), service}, {QStringLiteral("user"), account}});
}

std::optional<QList<QDBusObjectPath>> SecretServiceProbe::items(const QString &service)
{
    return search({{QStringLiteral("server"), service}});
}

std::optional<QByteArray> SecretServiceProbe::secret(const QDBusObjectPath &item)
{
    QDBusMessage open =
        QDBusMessage::createMethodCall(busName, servicePath, serviceInterface, "OpenSession");
    open << QStringLiteral("plain") << QVariant::fromValue(QDBusVariant(QString()));
    const std::optional<QDBusMessage> opened = send(open);
    if (!opened)
        return std::nullopt;
    const QDBusObjectPath session = qdbus_cast<QDBusObjectPath>(opened->arguments().value(1));

    QDBusMessage get = QDBusMessage::createMethodCall(busName, item.path(), itemInterface,
                                                      QStringLiteral("GetSecret"));
    get << QVariant::fromValue(session);
    const std::optional<QDBusMessage> reply = send(get);
    send(QDBusMessage::createMethodCall(busName, session.path(), sessionInterface, "Close"));
    if (!reply)
        return std::nullopt;

    // The secret is a struct (session, parameters, value, content type): (oayays).
    const QDBusArgument argument = reply->arguments().value(0).value<QDBusArgument>();
    QDBusObjectPath secretSession;
    QByteArray parameters;
    QByteArray value;
    QString contentType;
    argument.beginStructure();
    argument >> secretSession >> parameters >> value >> contentType;
    argument.endStructure();
    return value;
}

bool SecretServiceProbe::deleteItem(const QDBusObjectPath &item)
{
    return send(QDBusMessage::createMethodCall(busName, item.path(), itemInterface,
                                               QStringLiteral("Delete")))
        .has_value();
}

QByteArray SecretServiceProbe::onlySecret(const QString &service, const QString &account)
{
    const auto found = items(service, account);
    if (!found || found->size() != 1)
        return QByteArray("<no single item>");
    return secret(found->constFirst()).value_or("<unreadable>");
}

QString SecretServiceProbe::lastError()
{
    return errorText();
}

QByteArray appSecret(const QString &key)
{
    return SecretServiceProbe::onlySecret(QString(KeychainHelper::service), key);
}

} // namespace kestrine::testing
