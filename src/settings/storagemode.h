#pragma once

#include <QString>

/// Where this process keeps what it would otherwise persist for the user: the keychain's
/// credentials, the defaults store (settings and the diagnostic log) and the caches directory
/// (inbox cache, notification state).
///
/// Persistent, the normal mode, uses the user's real stores. Ephemeral keeps the credentials in
/// memory only (the keychain is never opened) and puts the defaults file and the caches in a
/// private temporary folder that is removed when the process exits. The built-in demo instance
/// runs this way, so that trying the app out never touches the user's own configuration.
///
/// The mode is chosen once, before anything reads a store: the stores load when first used and
/// keep where they load from.
namespace kestrine::Storage {

/// Switches this process to ephemeral storage. Answers false, and changes nothing, once the
/// defaults store has been opened (it is too late then) or when no temporary folder can be made.
/// Calling it again in ephemeral mode answers true.
bool useEphemeral();

/// True after a successful useEphemeral().
bool isEphemeral();

/// The private folder of ephemeral storage; empty in persistent mode.
QString ephemeralDirectory();

/// Called by the defaults store when it opens; from then on the mode is fixed.
void markDefaultsOpened();

} // namespace kestrine::Storage
