#pragma once

#include <QCoroTask>
#include <QLatin1StringView>
#include <QString>
#include <chrono>
#include <optional>

/// The app's two credentials, the instance URL and the access token, in the platform's secure
/// per-user credential store (QtKeychain: the Secret Service on Linux, the Keychain on Apple
/// platforms, the Keystore on Android) rather than in the plain defaults file.
///
/// Every item is identified by (service, account) = (`service`, key) and holds the value as UTF-8
/// bytes. The three operations are coroutines that never report a failure: a missing store, a
/// locked keyring or a D-Bus error reads as "no item" and leaves writes undone.
/// The settings store is their one user, with the keys "instanceURL" and "token". In ephemeral
/// storage mode (storagemode.h) the items live in this process's memory instead and the store is
/// never opened.
///
/// Main thread only, with a QCoreApplication: each operation awaits its QtKeychain jobs on the
/// application's own event loop, for at most `jobTimeout` each; nothing blocks meanwhile. In
/// ephemeral mode they complete without suspending.
namespace kestrine::KeychainHelper {

/// The service of every item: the app's reverse-domain identifier.
inline constexpr QLatin1StringView service{"com.norrum.kestrine"};

/// How long one keychain job may take before its caller stops waiting for it. A store that is
/// there answers in milliseconds and a missing one fails at once; this bound is for a store that
/// hangs (say, one waiting on an unlock prompt nobody answers), so that the app never does.
inline constexpr std::chrono::milliseconds jobTimeout{5000};

/// The value stored under `key`; nothing when there is no such item, when its bytes are not
/// valid UTF-8, or on any error. An item with empty data gives "".
QCoro::Task<std::optional<QString>> get(QString key);

/// Stores `value` under `key`: deletes any existing item, then adds a new one (never an update in
/// place). An empty value is stored as an item with empty data. Silent on failure; when the add
/// fails after the delete worked, the key is left without an item.
///
/// Note: on Linux the value reaches the Secret Service as a C string, so a value holding U+0000
/// is cut there. Neither credential can contain one.
QCoro::Task<> set(QString value, QString key);

/// Deletes the item under `key`; a key that has no item is not an error. Silent on failure.
/// (The operation is "delete", but `delete` is a C++ keyword.)
QCoro::Task<> remove(QString key);

} // namespace kestrine::KeychainHelper
