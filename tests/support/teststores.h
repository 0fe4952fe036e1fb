#pragma once

#include "logstore.h"
#include "settingsstore.h"

#include <QString>
#include <QUrl>

namespace kestrine::testing {

/// The log and the settings that a test's models and services work with, made by the test the way
/// a program's entry makes them: the settings' clients write to this log.
struct TestStores
{
    LogStore log;
    SettingsStore settings{&log};

    /// Points the settings at `instance` with `token`, in memory only: the keychain is neither
    /// read nor written, so a test that needs nothing else of it runs without one.
    void signIn(const QUrl &instance, const QString &token)
    {
        settings.overrideCredentials(instance.toString(), token);
    }

    /// The messages of the log at `level`, oldest first.
    QStringList lines(LogLevel level) const
    {
        QStringList messages;
        for (const LogEntry &entry : log.entries()) {
            if (entry.level == level)
                messages.append(entry.message);
        }
        return messages;
    }
};

} // namespace kestrine::testing
