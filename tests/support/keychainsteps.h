#pragma once

// The keychain's operations and a settings store's load run to their end on the spot, for tests
// that check one step before taking the next.

#include "keychainhelper.h"
#include "outcome.h"
#include "settingsstore.h"

#include <optional>

namespace kestrine::testing {

inline std::optional<QString> keychainGet(const QString &key)
{
    return runToEnd(KeychainHelper::get(key)).value.value_or(std::nullopt);
}

inline void keychainSet(const QString &value, const QString &key)
{
    runToEnd(KeychainHelper::set(value, key));
}

inline void keychainRemove(const QString &key)
{
    runToEnd(KeychainHelper::remove(key));
}

/// Waits until every keychain write `store` was asked for is done.
inline void settled(SettingsStore &store)
{
    runToEnd(store.settle());
}

/// A settings store as a program has it once its entry has awaited the load. Like a program at
/// its exit it waits for its keychain writes before it goes, so that none is still under way when
/// the next test looks at the keychain.
class LoadedSettingsStore : public SettingsStore
{
public:
    explicit LoadedSettingsStore(LogSink *log = nullptr)
        : SettingsStore(log)
    {
        runToEnd(load());
    }
    ~LoadedSettingsStore() override { settled(*this); }
};

} // namespace kestrine::testing
