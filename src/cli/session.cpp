#include "session.h"

#include "demoinstance.h"
#include "settingsstore.h"
#include "storagemode.h"

#include <QCoreApplication>

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

std::optional<QString> Session::startDemo()
{
    if (!Storage::useEphemeral())
        return QCoreApplication::translate(
            "DemoInstance", "The demo needs private storage, and none could be set up.");
    auto demo = std::make_unique<DemoInstance>();
    if (!demo->start())
        return demo->errorString();
    m_demo = std::move(demo);
    return std::nullopt;
}

LogStore &Session::log()
{
    if (!m_log)
        m_log = std::make_unique<LogStore>();
    return *m_log;
}

void Session::flushLog()
{
    if (m_log)
        m_log->flush();
}

QCoro::Task<> Session::open()
{
    if (m_settings)
        co_return;
    m_settings = std::make_unique<SettingsStore>(&log());
    SettingsStore *store = m_settings.get();
    co_await store->load();
    if (m_demo) {
        // As the app does: its keychain is in memory in this mode.
        store->setInstanceURL(m_demo->url().toString());
        store->setToken(m_demo->token());
    } else {
        store->overrideCredentials(environmentValue("KESTRINE_URL"),
                                   environmentValue("KESTRINE_TOKEN"));
    }
}

SettingsStore &Session::settings()
{
    Q_ASSERT(m_settings);
    // Installed when a command first asks for the settings, not before: a wrong command line
    // writes nothing, and the check's state lives in the caches directory.
    backgroundCheck();
    return *m_settings;
}

BackgroundCheck &Session::backgroundCheck()
{
    if (!m_check)
        m_check = std::make_unique<BackgroundCheck>(*m_settings);
    return *m_check;
}

QCoro::Task<> Session::finish()
{
    if (m_check)
        co_await m_check->settle();
    if (m_settings)
        co_await m_settings->settle();
}

} // namespace kestrine::cli
