#pragma once

#include "arguments.h"

#include <QCoroTask>
#include <QList>
#include <QString>

namespace kestrine::cli {

class Session;

/// One command of kestrine-cli: its name, its help, what it takes, and the coroutine that carries
/// it out and answers the exit code. A run function may throw UsageError for an argument whose
/// value is wrong; it reports every other failure itself.
struct Command
{
    enum class Needs {
        /// Only the files of this user (the log).
        Nothing,
        /// The settings store, with credentials from the environment or the demo instance applied.
        Settings,
    };
    using Run = QCoro::Task<int> (*)(Arguments arguments, Session &session);

    QString name;
    /// One line for the command list.
    QString summary;
    CommandSyntax syntax;
    /// The rest of the command's help: what it prints, what it changes, when it fails.
    QString description;
    Needs needs = Needs::Settings;
    Run run = nullptr;
};

/// Every command, in the order the help lists them.
const QList<Command> &commands();
/// The command called `name`; null when there is none.
const Command *findCommand(const QString &name);

// The commands, one function each, grouped in files by what they drive.
Command loginCommand();
Command logoutCommand();
Command settingsCommand();
Command inboxCommand();
Command checkCommand();
Command logsCommand();

} // namespace kestrine::cli
