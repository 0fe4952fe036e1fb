// check: one pass of the background check, as the app's background refresh runs it.

#include "command.h"
#include "console.h"
#include "exitcode.h"
#include "session.h"

#include <QCoreApplication>

namespace kestrine::cli {
namespace {

QCoro::Task<int> runCheck(Arguments, Session &session)
{
    const int posted = co_await session.backgroundCheck().poll();
    console::printLine(QString::number(posted));
    co_return ExitCode::Success;
}

} // namespace

Command checkCommand()
{
    return {
        QStringLiteral("check"),
        QCoreApplication::translate(
            "CliCheck", "Run one background check and print how many notifications it posted"),
        {},
        QCoreApplication::translate(
            "CliCheck", "Posts desktop notifications for new pull requests and for changes of "
                        "their CI status, and\n"
                        "remembers what it announced, exactly as the app's background refresh. "
                        "It does nothing and\n"
                        "prints 0 while notificationsEnabled is false or no instance is "
                        "configured. The systemd\n"
                        "user timer kestrine-check.timer runs it every 15 minutes."),
        runCheck,
    };
}

} // namespace kestrine::cli
