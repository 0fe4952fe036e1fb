// open: the pull request's page on the server, in the user's browser.

#include "command.h"
#include "console.h"
#include "detailsupport.h"
#include "exitcode.h"
#include "prdetailviewmodel.h"
#include "session.h"

#include <QCoreApplication>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QUrl>
#include <qcoroprocess.h>

namespace kestrine::cli {
namespace {

const QString desktopOpener = QStringLiteral("xdg-open");
const QString browserVariable = QStringLiteral("BROWSER");

/// A program and its arguments.
struct OpenerCommand
{
    QString program;
    QStringList arguments;
};

/// What opens a web page here, in the order Qt's desktop services follow for the app's own links:
/// the desktop's xdg-open, else the command in $BROWSER (split into words as QProcess splits a
/// command: double quotes group), where a "%s" stands for the address (else it goes last). Nothing
/// when neither is there.
std::optional<OpenerCommand> openerFor(const QUrl &url)
{
    const QString address = url.toString(QUrl::FullyEncoded);
    const QString desktop = QStandardPaths::findExecutable(desktopOpener);
    if (!desktop.isEmpty())
        return OpenerCommand{desktop, {address}};

    QStringList words =
        QProcess::splitCommand(QProcessEnvironment::systemEnvironment().value(browserVariable));
    if (words.isEmpty())
        return std::nullopt;
    const QString program = words.takeFirst();
    bool placed = false;
    for (QString &word : words) {
        if (word.contains(QStringLiteral("%s"))) {
            word.replace(QStringLiteral("%s"), address);
            placed = true;
        }
    }
    if (!placed)
        words.append(address);
    return OpenerCommand{program, words};
}

/// Hands `url` to the opener and waits for it: a terminal browser takes over the terminal until
/// the user leaves it, xdg-open returns once the desktop has the page. Answers the error text;
/// nothing when the opener took the page.
QCoro::Task<std::optional<QString>> openInBrowser(QUrl url, QString name)
{
    const std::optional<OpenerCommand> opener = openerFor(url);
    if (!opener) {
        co_return QCoreApplication::translate(
            "CliOpen",
            "Cannot open %1: there is no %2 (Debian package xdg-utils) and %3 is not set.")
            .arg(name, desktopOpener, browserVariable);
    }
    QProcess process;
    process.setProgram(opener->program);
    process.setArguments(opener->arguments);
    // The opener talks to the user, not to us: a terminal browser needs the terminal.
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.setInputChannelMode(QProcess::ForwardedInputChannel);
    // Starting takes no time worth waiting for asynchronously, and a program that cannot start
    // is only known once the start has been waited for.
    process.start();
    if (!process.waitForStarted()) {
        co_return QCoreApplication::translate("CliOpen", "Cannot open %1: %2 did not start (%3).")
            .arg(name, opener->program, process.errorString());
    }
    co_await qCoro(process).waitForFinished(-1);
    if (process.exitStatus() != QProcess::NormalExit)
        co_return QCoreApplication::translate("CliOpen", "Cannot open %1: %2 crashed.")
            .arg(name, opener->program);
    if (process.exitCode() != 0) {
        co_return QCoreApplication::translate("CliOpen",
                                              "Cannot open %1: %2 failed (exit status %3).")
            .arg(name, opener->program)
            .arg(process.exitCode());
    }
    co_return std::nullopt;
}

QCoro::Task<int> openPage(PRDetailViewModel &model, PullRequestTarget target)
{
    const QString name = target.key();
    const std::optional<QUrl> url = model.webUrl();
    if (!url) {
        // The address came from the server: what it holds is a stranger's text, so it is not
        // repeated here.
        console::printError(
            model.pr()->htmlURL
                ? QCoreApplication::translate("CliOpen", "Not opening %1: its address on the "
                                                         "server is not an http or https address.")
                      .arg(name)
                : QCoreApplication::translate("CliOpen",
                                              "Cannot open %1: the server gave no address for its "
                                              "page.")
                      .arg(name));
        co_return ExitCode::Failure;
    }
    console::printLine(QCoreApplication::translate("CliOpen", "Opening %1")
                           .arg(url->toString(QUrl::FullyEncoded)));
    if (const std::optional<QString> error = co_await openInBrowser(*url, name)) {
        console::printError(*error);
        co_return ExitCode::Failure;
    }
    co_return ExitCode::Success;
}

QCoro::Task<int> runOpen(Arguments arguments, Session &session)
{
    const PullRequestTarget target = targetArgument(arguments);
    std::function<QCoro::Task<int>(PRDetailViewModel &)> open = [target](PRDetailViewModel &model) {
        return openPage(model, target);
    };
    co_return co_await withPullRequest(session, target, std::move(open));
}

} // namespace

Command openCommand()
{
    return {
        QStringLiteral("open"),
        QCoreApplication::translate("CliOpen",
                                    "Open a pull request's page on the server in the browser"),
        {{QCoreApplication::translate("CliPlaceholder", "OWNER/REPO"),
          QCoreApplication::translate("CliPlaceholder", "NUMBER")},
         {},
         {}},
        QCoreApplication::translate(
            "CliOpen", "Loads the pull request as its detail screen does, prints the address of "
                       "its page (the\n"
                       "server's html_url) and hands it to xdg-open, or, where there is none, to "
                       "the command in\n"
                       "BROWSER (\"%s\" in it stands for the address). Waits until that returns.\n"
                       "Only http and https addresses are opened; for any other the command "
                       "fails."),
        runOpen,
    };
}

} // namespace kestrine::cli
