#include "cli.h"

#include "apierror.h"
#include "command.h"
#include "console.h"
#include "exitcode.h"
#include "help.h"
#include "session.h"
#include "terminationsignal.h"

#include <QCoreApplication>
#include <QTimer>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace kestrine::cli {
namespace {

/// What comes before the command.
struct GlobalOptions
{
    bool demo = false;
    bool help = false;
    bool version = false;
};

GlobalOptions takeGlobalOptions(QStringList &arguments)
{
    GlobalOptions options;
    while (!arguments.isEmpty() && arguments.first().startsWith(u'-')) {
        const QString option = arguments.takeFirst();
        if (option == u"--demo")
            options.demo = true;
        else if (option == u"--help" || option == u"-h")
            options.help = true;
        else if (option == u"--version")
            options.version = true;
        else
            throw UsageError(QCoreApplication::translate("CliArguments", "unknown option %1")
                                 .arg(option.section(u'=', 0, 0)));
    }
    return options;
}

/// Runs the command to its end, lets the session settle, and stops the event loop with the
/// command's exit code.
QCoro::Task<> execute(const Command *command, Arguments arguments, Session *session, int *exitCode)
{
    int code = ExitCode::Failure;
    // Nothing of the command reads the credentials before they are in.
    co_await session->open();
    try {
        code = co_await command->run(std::move(arguments), *session);
    } catch (const UsageError &error) {
        console::printError(usageErrorText(error.message(), command));
        code = ExitCode::Usage;
    } catch (...) {
        console::printError(localizedErrorDescription(std::current_exception()));
        code = ExitCode::Failure;
    }
    co_await session->finish();
    *exitCode = code;
    QCoreApplication::exit(code);
}

/// `help` and `help COMMAND`.
int printHelp(const QStringList &topics)
{
    if (topics.isEmpty()) {
        console::write(programHelp());
        return ExitCode::Success;
    }
    const Command *command = findCommand(topics.first());
    if (!command || topics.size() > 1) {
        console::printError(usageErrorText(
            command
                ? QCoreApplication::translate("CliArguments", "too many arguments")
                : QCoreApplication::translate("Cli", "unknown command %1").arg(topics.first())));
        return ExitCode::Usage;
    }
    console::write(commandHelp(*command));
    return ExitCode::Success;
}

} // namespace

int run(QStringList arguments)
{
    if (!arguments.isEmpty())
        arguments.removeFirst();

    GlobalOptions options;
    try {
        options = takeGlobalOptions(arguments);
    } catch (const UsageError &error) {
        console::printError(usageErrorText(error.message()));
        return ExitCode::Usage;
    }
    if (options.help)
        return printHelp({});
    if (options.version) {
        console::printLine(programName + u' ' + QCoreApplication::applicationVersion());
        return ExitCode::Success;
    }
    if (arguments.isEmpty()) {
        console::printError(usageErrorText(QCoreApplication::translate("Cli", "no command given")));
        return ExitCode::Usage;
    }

    const QString name = arguments.takeFirst();
    if (name == u"help")
        return printHelp(arguments);
    const Command *command = findCommand(name);
    if (!command) {
        console::printError(
            usageErrorText(QCoreApplication::translate("Cli", "unknown command %1").arg(name)));
        return ExitCode::Usage;
    }
    if (asksForHelp(arguments)) {
        console::write(commandHelp(*command));
        return ExitCode::Success;
    }
    Arguments parsed;
    try {
        parsed = Arguments::parse(arguments, command->syntax);
    } catch (const UsageError &error) {
        console::printError(usageErrorText(error.message(), command));
        return ExitCode::Usage;
    }

    Session session;
    // Stopped by systemd (the background check's service) or kill: the command is cut short, but
    // the lines it logged are written first. The exit status is the one of a process SIGTERM
    // ended; nothing unwinds, as the command's coroutines would resume into a gone session.
    onTerminationSignal([&session] {
        session.flushLog();
        std::fflush(stdout);
        std::fflush(stderr);
        std::_Exit(128 + SIGTERM);
    });
    if (options.demo) {
        if (const std::optional<QString> failure = session.startDemo()) {
            console::printError(failure.value());
            return ExitCode::Failure;
        }
    }
    // The command starts once the event loop runs, so that its end can stop the loop even when
    // it finishes without ever waiting.
    int exitCode = ExitCode::Failure;
    QTimer::singleShot(0, qApp, [command, &parsed, &session, &exitCode] {
        execute(command, std::move(parsed), &session, &exitCode);
    });
    QCoreApplication::exec();
    return exitCode;
}

} // namespace kestrine::cli
