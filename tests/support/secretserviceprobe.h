#pragma once

#include <QByteArray>
#include <QDBusObjectPath>
#include <QList>
#include <QMap>
#include <QString>
#include <optional>

namespace kestrine::testing {

/// A second view of the Secret Service, straight over D-Bus and beside QtKeychain, for tests that
/// must see what the store really holds: how many items match, and the bytes of an item's secret.
/// Every call answers nothing when the service cannot be asked; `lastError()` then says why.
class SecretServiceProbe
{
public:
    /// The items on the session bus's Secret Service whose attributes include all of
    /// `attributes`, locked and unlocked alike.
    static std::optional<QList<QDBusObjectPath>> search(const QMap<QString, QString> &attributes);

    /// The items QtKeychain keeps for (service, account): it stores the service under the
    /// attribute "server" and the account under "user".
    static std::optional<QList<QDBusObjectPath>> items(const QString &service,
                                                       const QString &account);
    /// Every item of `service`, whatever its account.
    static std::optional<QList<QDBusObjectPath>> items(const QString &service);

    /// The secret of `item`, read in an unencrypted ("plain") session.
    static std::optional<QByteArray> secret(const QDBusObjectPath &item);

    /// The secret of the one item for (service, account); "<no single item>" when there are none
    /// or several, "<unreadable>" when its secret cannot be read. Meant for comparisons.
    static QByteArray onlySecret(const QString &service, const QString &account);

    /// Deletes `item` directly in the store. True when the service confirmed it.
    static bool deleteItem(const QDBusObjectPath &item);

    static QString lastError();
};

/// The secret the Secret Service itself holds for the app's key `key` (see
/// SecretServiceProbe::onlySecret).
QByteArray appSecret(const QString &key);

} // namespace kestrine::testing
