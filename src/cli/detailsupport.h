#pragma once

// What the commands about one pull request share: reading OWNER/REPO, NUMBER and TEXT arguments,
// the configuration check, and opening the detail model as the detail screen does.

#include "arguments.h"
#include "pullrequestreference.h"
#include "records.h"

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <functional>

namespace kestrine {
class PRDetailViewModel;
}

namespace kestrine::cli {

class Session;

/// One pull request named on the command line, by OWNER/REPO and NUMBER.
using PullRequestTarget = PullRequestReference;

/// "owner/name"; throws UsageError otherwise.
Repository repositoryArgument(const QString &text);
/// A positive whole number, named `what` (e.g. "NUMBER", in the user's language) in the error;
/// throws UsageError.
qint64 idArgument(const QString &text, const QString &what);
/// The first two positional arguments, OWNER/REPO and NUMBER.
PullRequestTarget targetArgument(const Arguments &arguments);
/// A text argument as the comment sheet submits it: trimmed at both ends; "-" reads it from
/// standard input. Throws UsageError when nothing is left.
QString textArgument(const QString &argument);

/// The app opens a pull request only from a configured inbox; here the same check comes first,
/// with the inbox's words. Prints them and answers false when no instance or token is set, or the
/// instance URL does not parse.
bool ensureConfigured(Session &session);
/// The same check for a command that stands for a screen with words of its own for it (the diff
/// and job log screens say "Not configured."): prints `message` instead.
bool ensureConfigured(Session &session, const QString &message);

/// Opens the pull request `target` names as the detail screen does: the configuration check, then
/// the detail model's load, with its progress texts echoed (see ProgressEcho), then `act` on the
/// loaded model. Gives act's exit code; prints the error and gives ExitCode::Failure when the
/// settings are not configured or the pull request itself could not be loaded.
QCoro::Task<int> withPullRequest(Session &session, const PullRequestTarget &target,
                                 std::function<QCoro::Task<int>(PRDetailViewModel &)> act);

/// Shows a model's progress texts ("Merging…") on standard error while that is a terminal, as
/// the app shows them over the detail screen; scripts see nothing of it. Lives no longer than the
/// model.
class ProgressEcho : public QObject
{
    Q_OBJECT

public:
    explicit ProgressEcho(PRDetailViewModel &model);
};

} // namespace kestrine::cli
