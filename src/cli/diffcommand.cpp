// diff: the diff model of one changed file, as the diff screen shows it.

#include "command.h"
#include "console.h"
#include "detailsupport.h"
#include "diffmodel.h"
#include "exitcode.h"
#include "notconfigured.h"
#include "session.h"

#include <QCoreApplication>

namespace kestrine::cli {
namespace {

QCoro::Task<int> runDiff(Arguments arguments, Session &session)
{
    const PullRequestTarget target = targetArgument(arguments);
    ChangedFile file;
    file.filename = arguments.positional(2).value_or(QString());
    if (!ensureConfigured(session, notConfiguredMessage()))
        co_return ExitCode::Failure;

    DiffModel model(session.settings(), target.repo, target.number, file);
    co_await model.load();
    if (model.errorMessage()) {
        console::printError(*model.errorMessage());
        co_return ExitCode::Failure;
    }
    const ParsedDiff &lines = model.lines();
    QString text;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        text += lines.text(i);
        text += u'\n';
    }
    console::writeVerbatim(text);
    co_return ExitCode::Success;
}

} // namespace

Command diffCommand()
{
    return {
        QStringLiteral("diff"),
        QCoreApplication::translate("CliDiff",
                                    "Print the diff of one changed file of a pull request"),
        {{QCoreApplication::translate("CliPlaceholder", "OWNER/REPO"),
          QCoreApplication::translate("CliPlaceholder", "NUMBER"),
          QCoreApplication::translate("CliPlaceholder", "FILE")},
         {},
         {}},
        QCoreApplication::translate(
            "CliDiff", "Prints the lines of FILE's section of the pull request's diff, one per "
                       "line, exactly as the\n"
                       "diff screen lists them: the first is the rest of the file's \"+++ b/\" "
                       "line, normally\n"
                       "empty. When FILE's section cannot be found (a deleted file, a name that "
                       "is not in the\n"
                       "diff) the whole pull request's diff is printed, as in the app."),
        runDiff,
    };
}

} // namespace kestrine::cli
