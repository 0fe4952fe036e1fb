// merge: the merge sheet's action under the merge gate of the current runs.

#include "command.h"
#include "console.h"
#include "detailsupport.h"
#include "exitcode.h"
#include "mergegate.h"
#include "prdetailviewmodel.h"
#include "session.h"

namespace kestrine::cli {
namespace {

const QString methodOption = QStringLiteral("--method");
const QString yesOption = QStringLiteral("--yes");

QString methodArgument(const Arguments &arguments)
{
    const QString method = arguments.value(methodOption).value_or(defaultMergeMethod());
    QStringList values;
    for (const MergeMethod &known : mergeMethods()) {
        if (known.value == method)
            return method;
        values.append(known.value);
    }
    throw UsageError(
        QStringLiteral("--method is one of %1").arg(values.join(QStringLiteral(", "))));
}

/// Whether the user goes ahead after the warning. On a terminal they are asked; elsewhere only
/// --yes answers, since nobody is there to.
bool confirmed(const MergeGateDecision &gate, bool yes)
{
    if (yes)
        return true;
    if (!console::inputIsTerminal()) {
        console::printError(gate.noteText);
        console::printError(QStringLiteral("Not merged: confirm with --yes."));
        return false;
    }
    const std::optional<QString> answer =
        console::readLine(gate.noteText + QStringLiteral(" Merge anyway? [y/N] "));
    const QString word = answer.value_or(QString()).trimmed().toLower();
    if (word == u"y" || word == u"yes")
        return true;
    console::printError(QStringLiteral("Not merged."));
    return false;
}

QCoro::Task<int> runMerge(Arguments arguments, Session &session)
{
    const PullRequestTarget target = targetArgument(arguments);
    const QString method = methodArgument(arguments);
    co_return co_await withPullRequest(
        session, target, [&](PRDetailViewModel &model) -> QCoro::Task<int> {
            // The gate as the merge sheet shows it for the runs just loaded.
            const MergeGateDecision gate =
                mergeGate(model.ciStatus(), session.settings().mergeGateMode());
            if (!gate.allowed) {
                console::printError(gate.noteText);
                co_return ExitCode::Failure;
            }
            if (gate.hasNote() && !confirmed(gate, arguments.isSet(yesOption)))
                co_return ExitCode::Failure;

            if (!co_await model.merge(method)) {
                console::printError(model.errorMessage().value_or(QStringLiteral("Not merged.")));
                co_return ExitCode::Failure;
            }
            console::printLine(QStringLiteral("Merged %1.").arg(target.key()));
            co_return ExitCode::Success;
        });
}

} // namespace

Command mergeCommand()
{
    return {
        QStringLiteral("merge"),
        QStringLiteral("Merge a pull request, under the merge gate"),
        {{QStringLiteral("OWNER/REPO"), QStringLiteral("NUMBER")},
         {},
         {{methodOption, QStringLiteral("METHOD"),
           QStringLiteral("merge (the default), rebase or squash")},
          {yesOption, {}, QStringLiteral("merge while CI is red without asking (warn mode)")}}},
        QStringLiteral("Loads the pull request and its workflow runs first. While CI is red "
                       "(a run failed):\n"
                       "  in block mode the merge is refused;\n"
                       "  in warn mode it is asked for on a terminal, and without one it needs "
                       "--yes.\n"
                       "A merge refused as out of date brings the branch up to date and is "
                       "tried once more.\n"
                       "With deleteBranchAfterMerge on, the head branch is deleted. Exits with "
                       "1 when not merged."),
        runMerge,
    };
}

} // namespace kestrine::cli
