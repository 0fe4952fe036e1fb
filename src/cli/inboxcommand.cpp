// inbox: one load of the inbox model, as the app's inbox screen does on its first appearance.

#include "command.h"
#include "console.h"
#include "exitcode.h"
#include "inboxviewmodel.h"
#include "jsonoutput.h"
#include "session.h"

#include <QCoreApplication>

namespace kestrine::cli {
namespace {

const QString jsonOption = QStringLiteral("--json");

/// A title on one line: tabs and line breaks would split the row's fields and lines.
QString oneLine(QString text)
{
    for (QChar &c : text) {
        if (c == u'\t' || c == u'\n' || c == u'\r')
            c = u' ';
    }
    return text;
}

/// "#NUMBER<TAB>OWNER/REPO<TAB>TITLE", and "<TAB>draft" for a draft.
QString rowLine(const PRRow &row)
{
    QString line = u'#' + QString::number(row.pr.number) + u'\t' + row.repo.fullName + u'\t' +
                   oneLine(row.pr.title);
    if (row.pr.draft.value_or(false))
        line += QStringLiteral("\tdraft");
    return line;
}

QCoro::Task<int> runInbox(Arguments arguments, Session &session)
{
    InboxViewModel inbox(session.settings());
    co_await inbox.load();
    if (inbox.errorMessage()) {
        console::printError(*inbox.errorMessage());
        co_return ExitCode::Failure;
    }
    if (arguments.isSet(jsonOption)) {
        printRecordsJson(inbox.displayedRows());
    } else {
        for (const PRRow &row : inbox.displayedRows())
            console::printLine(rowLine(row));
    }
    co_return ExitCode::Success;
}

} // namespace

Command inboxCommand()
{
    return {
        QStringLiteral("inbox"),
        QCoreApplication::translate("CliInbox",
                                    "List the open pull requests of the watched repositories"),
        {{},
         {},
         {{jsonOption,
           {},
           QCoreApplication::translate("CliInbox",
                                       "print the rows as a JSON array of {repo, pr}")}}},
        //: The rows themselves are data for scripts: "draft" stays as it is.
        QCoreApplication::translate("CliInbox",
                                    "Loads the inbox as the app does and prints one line per pull "
                                    "request, newest update first:\n"
                                    "  #NUMBER<TAB>OWNER/REPO<TAB>TITLE, with <TAB>draft after a "
                                    "draft's title.\n"
                                    "Tabs and line breaks in a title are printed as spaces. When "
                                    "notifications are on, the\n"
                                    "background check runs after the load, as in the app, and the "
                                    "command waits for it.\n"
                                    "Fails when nothing could be loaded; some repositories failing "
                                    "is only logged."),
        runInbox,
    };
}

} // namespace kestrine::cli
