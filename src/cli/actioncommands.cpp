// comment, approve, request-changes, close, reopen and rerun: the detail model's actions, each
// after the load that opening the detail screen does.

#include "command.h"
#include "console.h"
#include "detailsupport.h"
#include "exitcode.h"
#include "prdetailviewmodel.h"
#include "session.h"

#include <QCoreApplication>

namespace kestrine::cli {
namespace {

enum class Action {
    Comment,
    Approve,
    RequestChanges,
    Close,
    Reopen,
    Rerun,
};

/// What an action acts with besides the pull request: a text, or a run id.
struct ActionInput
{
    std::optional<QString> text;
    qint64 runID = 0;
};

ActionInput readInput(Action action, const Arguments &arguments)
{
    const std::optional<QString> third = arguments.positional(2);
    switch (action) {
    case Action::Comment:
    case Action::RequestChanges:
        return {textArgument(third.value_or(QString())), 0};
    case Action::Approve:
        // Without a text it is the review menu's quick approve.
        return {third ? std::optional(textArgument(*third)) : std::nullopt, 0};
    case Action::Rerun:
        return {std::nullopt, idArgument(third.value_or(QString()),
                                         QCoreApplication::translate("CliPlaceholder", "RUN_ID"))};
    case Action::Close:
    case Action::Reopen:
        break;
    }
    return {};
}

QCoro::Task<> perform(PRDetailViewModel &model, Action action, ActionInput input)
{
    switch (action) {
    case Action::Comment:
        co_await model.postComment(*input.text);
        break;
    case Action::Approve:
        co_await model.submitReview(QStringLiteral("approved"), input.text);
        break;
    case Action::RequestChanges:
        co_await model.submitReview(QStringLiteral("changes"), input.text);
        break;
    case Action::Close:
        co_await model.setState(QStringLiteral("closed"));
        break;
    case Action::Reopen:
        co_await model.setState(QStringLiteral("open"));
        break;
    case Action::Rerun:
        co_await model.rerun(input.runID);
        break;
    }
}

QString doneText(Action action, const PullRequestTarget &target, const ActionInput &input)
{
    const QString name = target.key();
    switch (action) {
    case Action::Comment:
        return QCoreApplication::translate("CliActions", "Commented on %1.").arg(name);
    case Action::Approve:
        return QCoreApplication::translate("CliActions", "Approved %1.").arg(name);
    case Action::RequestChanges:
        return QCoreApplication::translate("CliActions", "Requested changes on %1.").arg(name);
    case Action::Close:
        return QCoreApplication::translate("CliActions", "Closed %1.").arg(name);
    case Action::Reopen:
        return QCoreApplication::translate("CliActions", "Reopened %1.").arg(name);
    case Action::Rerun:
        //: %1 is the run's id, %2 the pull request (owner/name#42).
        return QCoreApplication::translate("CliActions", "Re-running run %1 of %2.")
            .arg(input.runID)
            .arg(name);
    }
    return {};
}

QCoro::Task<int> runAction(Arguments arguments, Session &session, Action action)
{
    // Every argument is checked, and a text read, before anything is sent.
    const PullRequestTarget target = targetArgument(arguments);
    const ActionInput input = readInput(action, arguments);
    co_return co_await withPullRequest(session, target,
                                       [&](PRDetailViewModel &model) -> QCoro::Task<int> {
                                           co_await perform(model, action, input);
                                           // The load cleared any earlier error, so one now is this
                                           // action's.
                                           if (model.errorMessage()) {
                                               console::printError(*model.errorMessage());
                                               co_return ExitCode::Failure;
                                           }
                                           console::printLine(doneText(action, target, input));
                                           co_return ExitCode::Success;
                                       });
}

QString textHelp()
{
    return QCoreApplication::translate(
        "CliActions",
        "TEXT is trimmed of blanks and line breaks at both ends, as the comment sheet "
        "sends it; \"-\"\n"
        "reads it from standard input. A text starting with \"-\" goes after "
        "\"--\".");
}

QString textArgumentName()
{
    return QCoreApplication::translate("CliPlaceholder", "TEXT");
}

Command actionCommand(QString name, QString summary, QStringList required, QStringList optional,
                      QString description, Command::Run run)
{
    required.prepend(QCoreApplication::translate("CliPlaceholder", "NUMBER"));
    required.prepend(QCoreApplication::translate("CliPlaceholder", "OWNER/REPO"));
    return {std::move(name),
            std::move(summary),
            {std::move(required), std::move(optional), {}},
            std::move(description),
            run};
}

} // namespace

Command commentCommand()
{
    return actionCommand(
        QStringLiteral("comment"),
        QCoreApplication::translate("CliActions", "Post a comment on a pull request"),
        {textArgumentName()}, {}, textHelp(), [](Arguments arguments, Session &session) {
            return runAction(std::move(arguments), session, Action::Comment);
        });
}

Command approveCommand()
{
    return actionCommand(
        QStringLiteral("approve"),
        QCoreApplication::translate("CliActions", "Approve a pull request, with an optional text"),
        {}, {textArgumentName()}, textHelp(), [](Arguments arguments, Session &session) {
            return runAction(std::move(arguments), session, Action::Approve);
        });
}

Command requestChangesCommand()
{
    return actionCommand(
        QStringLiteral("request-changes"),
        QCoreApplication::translate("CliActions", "Request changes on a pull request"),
        {textArgumentName()}, {}, textHelp(), [](Arguments arguments, Session &session) {
            return runAction(std::move(arguments), session, Action::RequestChanges);
        });
}

Command closeCommand()
{
    return actionCommand(QStringLiteral("close"),
                         QCoreApplication::translate("CliActions", "Close a pull request"), {}, {},
                         {}, [](Arguments arguments, Session &session) {
                             return runAction(std::move(arguments), session, Action::Close);
                         });
}

Command reopenCommand()
{
    return actionCommand(QStringLiteral("reopen"),
                         QCoreApplication::translate("CliActions", "Reopen a closed pull request"),
                         {}, {}, {}, [](Arguments arguments, Session &session) {
                             return runAction(std::move(arguments), session, Action::Reopen);
                         });
}

Command rerunCommand()
{
    return actionCommand(
        QStringLiteral("rerun"),
        QCoreApplication::translate("CliActions", "Re-run a workflow run of a pull request"),
        {QCoreApplication::translate("CliPlaceholder", "RUN_ID")}, {},
        QCoreApplication::translate(
            "CliActions", "show lists the runs of the pull request's head commit and their ids."),
        [](Arguments arguments, Session &session) {
            return runAction(std::move(arguments), session, Action::Rerun);
        });
}

} // namespace kestrine::cli
