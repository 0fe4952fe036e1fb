// merge: the merge sheet's action under the merge gate of the current runs.

#include "command.h"
#include "console.h"
#include "detailsupport.h"
#include "exitcode.h"
#include "mergegate.h"
#include "prdetailviewmodel.h"
#include "session.h"

#include <QCoreApplication>

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
    throw UsageError(QCoreApplication::translate("CliMerge", "--method is one of %1")
                         .arg(values.join(QStringLiteral(", "))));
}

/// Whether the user goes ahead after the warning. On a terminal they are asked; elsewhere only
/// --yes answers, since nobody is there to.
bool confirmed(const MergeGateDecision &gate, bool yes)
{
    if (yes)
        return true;
    if (!console::inputIsTerminal()) {
        console::printError(gate.noteText);
        console::printError(
            QCoreApplication::translate("CliMerge", "Not merged: confirm with --yes."));
        return false;
    }
    //: The merge gate's warning (%1), then the question. Keep the space at the end. Answers in
    //: "y" or "yes" merge; a language's own word for yes is taken as well (see "yes").
    const std::optional<QString> answer = console::readLine(
        QCoreApplication::translate("CliMerge", "%1 Merge anyway? [y/N] ").arg(gate.noteText));
    const QString word = answer.value_or(QString()).trimmed().toLower();
    //: The word for "yes" typed in answer to "Merge anyway?", in lower case; "y" and "yes" are
    //: always taken too. Its first letter counts as well.
    const QString yesWord = QCoreApplication::translate("CliMerge", "yes", "answer to a question");
    if (word == u"y" || word == u"yes" || word == yesWord ||
        (!yesWord.isEmpty() && word == yesWord.left(1)))
        return true;
    console::printError(QCoreApplication::translate("CliMerge", "Not merged."));
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
                console::printError(model.errorMessage().value_or(
                    QCoreApplication::translate("CliMerge", "Not merged.")));
                co_return ExitCode::Failure;
            }
            console::printLine(
                QCoreApplication::translate("CliMerge", "Merged %1.").arg(target.key()));
            co_return ExitCode::Success;
        });
}

} // namespace

Command mergeCommand()
{
    return {
        QStringLiteral("merge"),
        QCoreApplication::translate("CliMerge", "Merge a pull request, under the merge gate"),
        {{QCoreApplication::translate("CliPlaceholder", "OWNER/REPO"),
          QCoreApplication::translate("CliPlaceholder", "NUMBER")},
         {},
         {{methodOption, QCoreApplication::translate("CliPlaceholder", "METHOD"),
           //: The methods are the values --method takes: they stay as they are.
           QCoreApplication::translate("CliMerge", "merge (the default), rebase or squash")},
          {yesOption,
           {},
           QCoreApplication::translate("CliMerge",
                                       "merge while CI is red without asking (warn mode)")}}},
        QCoreApplication::translate(
            "CliMerge", "Loads the pull request and its workflow runs first. While CI is red "
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
