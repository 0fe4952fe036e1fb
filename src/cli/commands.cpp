#include "command.h"

namespace kestrine::cli {

const QList<Command> &commands()
{
    static const QList<Command> all{
        loginCommand(),   logoutCommand(),  settingsCommand(),       inboxCommand(),
        showCommand(),    openCommand(),    diffCommand(),           jobLogCommand(),
        commentCommand(), approveCommand(), requestChangesCommand(), closeCommand(),
        reopenCommand(),  rerunCommand(),   mergeCommand(),          checkCommand(),
        logsCommand(),
    };
    return all;
}

const Command *findCommand(const QString &name)
{
    for (const Command &command : commands()) {
        if (command.name == name)
            return &command;
    }
    return nullptr;
}

} // namespace kestrine::cli
