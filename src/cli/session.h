#pragma once

#include "backgroundcheck.h"
#include "logstore.h"
#include "settingsstore.h"

#include <QCoroTask>
#include <QString>
#include <memory>
#include <optional>

namespace kestrine {
class DemoInstance;
}

namespace kestrine::cli {

/// What one run of kestrine-cli sets up around its command: the run's log and settings, which the
/// command hands to the models it makes; where the instance URL and the token come from (the
/// keychain; KESTRINE_URL and KESTRINE_TOKEN for this run only; or the built-in demo instance);
/// and the background check that the command's models may start, which the run waits for before
/// it ends.
class Session
{
public:
    Session();
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    /// Switches this run to the built-in demo instance, as `kestrine --demo` does: the instance
    /// runs in this process, and the settings, the log and the caches live in a private temporary
    /// folder, so nothing of the user's is read or written. Must come before settings(). Answers
    /// the error text when the demo cannot start.
    std::optional<QString> startDemo();

    /// Makes the run's settings store, waits for it to read the credentials, and applies this
    /// run's own. The run does this before its command starts; it writes nothing. Must come after
    /// startDemo().
    QCoro::Task<> open();

    /// The run's settings store, which open() has made. The first call installs the background
    /// check, so that whatever the command's models start is waited for.
    SettingsStore &settings();

    /// The run's diagnostic log, loaded on the first call (after startDemo(), which decides where
    /// it is stored).
    LogStore &log();

    /// Writes the log's waiting lines, when it was opened.
    void flushLog();

    /// The background check of this run.
    BackgroundCheck &backgroundCheck();

    /// Waits for what the command left running (see BackgroundCheck::settle()) and for the
    /// settings' keychain writes.
    QCoro::Task<> finish();

private:
    std::unique_ptr<DemoInstance> m_demo;
    std::unique_ptr<LogStore> m_log;
    std::unique_ptr<SettingsStore> m_settings;
    std::unique_ptr<BackgroundCheck> m_check;
};

} // namespace kestrine::cli
