// logs: the app's diagnostic log, as the logs screen shows and shares it.

#include "command.h"
#include "console.h"
#include "exitcode.h"
#include "logstore.h"
#include "session.h"

#include <QCoreApplication>

namespace kestrine::cli {
namespace {

const QString clearOption = QStringLiteral("--clear");

QCoro::Task<int> runLogs(Arguments arguments, Session &session)
{
    LogStore *log = &session.log();
    if (arguments.isSet(clearOption)) {
        log->clear();
        co_return ExitCode::Success;
    }
    const QString text = log->text();
    if (!text.isEmpty())
        console::printLine(text);
    co_return ExitCode::Success;
}

} // namespace

Command logsCommand()
{
    return {
        QStringLiteral("logs"),
        QCoreApplication::translate("CliLogs", "Print the diagnostic log, or clear it"),
        {{},
         {},
         {{clearOption,
           {},
           QCoreApplication::translate("CliLogs", "empty the log, also the stored copy")}}},
        //: The log's lines are in English whatever the language: LEVEL is INFO, WARN or ERROR.
        QCoreApplication::translate(
            "CliLogs", "Prints the log as the app shares it, oldest line first:\n"
                       "  [2024-05-01T10:20:30Z] LEVEL message\n"
                       "Every request to the server leaves one line, from the app and from this "
                       "command alike."),
        runLogs,
    };
}

} // namespace kestrine::cli
