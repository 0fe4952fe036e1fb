// job-log: the job log model's text, as the job log screen shows and shares it.

#include "command.h"
#include "console.h"
#include "detailsupport.h"
#include "exitcode.h"
#include "joblogmodel.h"
#include "notconfigured.h"
#include "session.h"

#include <QCoreApplication>

namespace kestrine::cli {
namespace {

QCoro::Task<int> runJobLog(Arguments arguments, Session &session)
{
    const Repository repo = repositoryArgument(arguments.positional(0).value_or(QString()));
    const qint64 jobID = idArgument(arguments.positional(1).value_or(QString()),
                                    QCoreApplication::translate("CliPlaceholder", "JOB_ID"));
    if (!ensureConfigured(session, notConfiguredMessage()))
        co_return ExitCode::Failure;

    // The run a job belongs to plays no part in fetching its log.
    JobLogModel model(session.settings(), repo, 0, jobID, QString());
    co_await model.load();
    if (model.errorMessage()) {
        console::printError(*model.errorMessage());
        co_return ExitCode::Failure;
    }
    console::writeVerbatim(model.text());
    co_return ExitCode::Success;
}

} // namespace

Command jobLogCommand()
{
    return {
        QStringLiteral("job-log"),
        QCoreApplication::translate("CliJobLog", "Print the raw log of one Actions job"),
        {{QCoreApplication::translate("CliPlaceholder", "OWNER/REPO"),
          QCoreApplication::translate("CliPlaceholder", "JOB_ID")},
         {},
         {}},
        QCoreApplication::translate(
            "CliJobLog", "Prints the log exactly as the server sends it: escape sequences, "
                         "timestamps and all,\n"
                         "with nothing added, not even a final line break. show lists the jobs "
                         "and their ids."),
        runJobLog,
    };
}

} // namespace kestrine::cli
