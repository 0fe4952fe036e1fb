#include "session.h"

#include "settingsstore.h"

namespace kestrine::cli {
namespace {

std::optional<QString> environmentValue(const char *name)
{
    // Set but empty still counts: a script that passes an empty token means no token, and must
    // not fall back to whatever the keychain holds.
    if (!qEnvironmentVariableIsSet(name))
        return std::nullopt;
    return qEnvironmentVariable(name);
}

} // namespace

Session::Session() = default;

Session::~Session() = default;

SettingsStore &Session::settings()
{
    if (!m_settingsOpened) {
        m_settingsOpened = true;
        SettingsStore::shared()->overrideCredentials(environmentValue("KESTRINE_URL"),
                                                     environmentValue("KESTRINE_TOKEN"));
        backgroundCheck();
    }
    return *SettingsStore::shared();
}

BackgroundCheck &Session::backgroundCheck()
{
    if (!m_check)
        m_check = std::make_unique<BackgroundCheck>();
    return *m_check;
}

QCoro::Task<> Session::finish()
{
    if (m_check)
        co_await m_check->settle();
}

} // namespace kestrine::cli
