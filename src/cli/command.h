#pragma once

#include "arguments.h"

#include <QCoroTask>
#include <QList>
#include <QString>

namespace kestrine::cli {

class Session;

/// One command of kestrine-cli: its name, its help, what it takes, and the coroutine that carries
/// it out and answers the exit code.
///
/// A run function checks its arguments first, throwing UsageError for a wrong one, and only then
/// asks the session for the settings: a wrong command line writes nothing. (The stored settings
/// and credentials are read before the command starts, see Session::open().) It reports every
/// other failure itself.
struct Command
{
    using Run = QCoro::Task<int> (*)(Arguments arguments, Session &session);

    QString name;
    /// One line for the command list.
    QString summary;
    CommandSyntax syntax;
    /// The rest of the command's help: what it prints, what it changes, when it fails.
    QString description;
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
Command showCommand();
Command openCommand();
Command diffCommand();
Command jobLogCommand();
Command commentCommand();
Command approveCommand();
Command requestChangesCommand();
Command closeCommand();
Command reopenCommand();
Command rerunCommand();
Command mergeCommand();

} // namespace kestrine::cli
