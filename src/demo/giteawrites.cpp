// The simulation's write endpoints: each checks what the Gitea handler of the same route checks,
// in the same order, answers with its status and message, and changes the state on success.

#include "giteaendpoints_p.h"

#include <QJsonArray>
#include <QRegularExpression>

namespace kestrine::sim {
namespace {

/// What Gitea writes for a failed binding: the field names in brackets and the rule.
HttpAnswer validationError(const Call &call, const QString &field, const QString &rule)
{
    return call.error(422, QStringLiteral("[%1]: %2").arg(field, rule));
}

bool canWrite(const Call &call)
{
    return call.access() >= Access::Write;
}

/// Gitea's refusal of a merge style that the repository does not allow, if it is one.
std::optional<HttpAnswer> refuseStyle(const Call &call, const QString &style)
{
    if (call.repo->mergeStyles.contains(style))
        return std::nullopt;
    return call.error(
        405,
        QStringLiteral("%1 is not allowed an allowed merge style for this repository").arg(style));
}

/// Whether the head branch may go after a merge: Gitea keeps the default branch, protected
/// branches and branches that another open pull request still uses.
bool headBranchDeletable(const Repository &repo, const PullRequest &merged)
{
    const Branch *branch = repo.branch(merged.headBranch);
    if (!branch || branch->isProtected || branch->name == repo.defaultBranch)
        return false;
    return std::none_of(repo.pulls.begin(), repo.pulls.end(), [&merged](const PullRequest &p) {
        return p.id != merged.id && !p.closed && p.headBranch == merged.headBranch;
    });
}

/// The body Gitea sends for a merge that git refused with conflicts: its error value as JSON.
QJsonObject conflictBody(const QString &style, const PullRequest &pull)
{
    const QString file =
        pull.files.isEmpty() ? QStringLiteral("README.md") : pull.files.first().filename;
    QJsonObject body{
        {QStringLiteral("Style"), style},
        {QStringLiteral("StdOut"), QString()},
        {QStringLiteral("StdErr"),
         QStringLiteral("CONFLICT (content): Merge conflict in %1\n").arg(file)},
        {QStringLiteral("Err"), QJsonObject()},
    };
    if (style.startsWith(QLatin1String("rebase")))
        body.insert(QStringLiteral("CommitSHA"), pull.headSha);
    return body;
}

void markMerged(Call &call, PullRequest &pull, const QString &commitSha)
{
    pull.merged = true;
    pull.closed = true;
    pull.mergedAt = pull.closedAt = pull.updatedAt = call.now;
    pull.mergedById = call.doer->id;
    pull.mergeCommitSha = commitSha;
    if (Branch *base = call.repo->branch(pull.baseBranch))
        base->commit = commitSha;
}

/// The commit a merge of `style` leaves on the base branch.
QString mergeCommitOf(const QString &style, const PullRequest &pull, const QString &baseCommit)
{
    if (style == QLatin1String("fast-forward-only"))
        return pull.headSha;
    return derivedSha(style + u':' + baseCommit + u':' + pull.headSha);
}

/// Brings the head branch up to date with the base, as a merge commit or by a rebase.
void bringUpToDate(Call &call, PullRequest &pull, bool rebase)
{
    const QString baseCommit = call.repo->branch(pull.baseBranch)->commit;
    if (rebase) {
        QString parent = baseCommit;
        for (Commit &commit : pull.commits) {
            commit.sha = derivedSha(commit.sha + QStringLiteral(":onto:") + baseCommit);
            commit.parents = {parent};
            parent = commit.sha;
        }
        pull.headSha = pull.commits.isEmpty() ? derivedSha(pull.headSha + baseCommit) : parent;
    } else {
        Commit merge;
        merge.sha = derivedSha(pull.headSha + QStringLiteral(":merge:") + baseCommit);
        merge.message =
            QStringLiteral("Merge branch '%1' into %2").arg(pull.baseBranch, pull.headBranch);
        merge.authorId = call.doer->id;
        merge.authorName = call.doer->fullName.isEmpty() ? call.doer->login : call.doer->fullName;
        merge.authorEmail = call.doer->email;
        merge.date = call.now;
        merge.parents = {pull.headSha, baseCommit};
        pull.commits.append(merge);
        pull.headSha = merge.sha;
    }
    pull.mergeBase = baseCommit;
    pull.behindBase = false;
    pull.updatedAt = call.now;
    if (Branch *head = call.repo->branch(pull.headBranch))
        head->commit = pull.headSha;
}

} // namespace

HttpAnswer mergePull(Call &call, const QJsonObject &body)
{
    const QString style = bodyText(body, QStringLiteral("Do"));
    if (style.isEmpty())
        return validationError(call, QStringLiteral("Do"), QStringLiteral("Required"));
    if (!mergeStyleNames().contains(style))
        return validationError(call, QStringLiteral("Do"), QStringLiteral("In"));

    PullRequest *pull = call.pull();
    if (!pull)
        return call.notFound();
    if (pull->merged) // Gitea's message for this one is empty.
        return call.error(405, QString());
    if (pull->closed) // A closed pull request is "not found" to the merge endpoint.
        return call.notFound();
    if (!canWrite(call))
        return call.error(405, QStringLiteral("User not allowed to merge PR"));

    if (style == QLatin1String("manually-merged")) {
        // Marking as merged by hand skips the mergeability checks but needs the commit that did
        // it; Gitea answers a wrong one with its bare error value, which encodes as {}.
        if (auto refused = refuseStyle(call, style))
            return *refused;
        static const QRegularExpression sha(QStringLiteral("^[0-9a-f]{40}$"));
        const QString commit = bodyText(body, QStringLiteral("MergeCommitID"));
        if (!sha.match(commit).hasMatch())
            return call.answer(QJsonObject(), 409);
        markMerged(call, *pull, commit);
        return HttpAnswer::empty(200);
    }
    if (isWorkInProgress(pull->title))
        return call.error(405, QStringLiteral("Work in progress PRs cannot be merged"));
    if (!pull->mergeable)
        return call.error(405, QStringLiteral("Please try again later"));
    if (auto refused = refuseStyle(call, style))
        return *refused;
    const QString expectedHead = bodyText(body, QStringLiteral("head_commit_id"));
    if (!expectedHead.isEmpty() && expectedHead != pull->headSha)
        return call.error(409, QStringLiteral("head out of date"));
    if (pull->conflicting)
        return call.answer(conflictBody(style, *pull), 409);
    if (pull->behindBase)
        return call.error(409, QStringLiteral("merge push out of date"));

    markMerged(call, *pull,
               mergeCommitOf(style, *pull, call.repo->branch(pull->baseBranch)->commit));
    if (bodyFlag(body, QStringLiteral("delete_branch_after_merge")) &&
        headBranchDeletable(*call.repo, *pull))
        call.repo->removeBranch(pull->headBranch);
    return HttpAnswer::empty(200);
}

HttpAnswer updatePull(Call &call)
{
    PullRequest *pull = call.pull();
    if (!pull)
        return call.notFound();
    // Gitea formats a nil error here, so the message really is "%!s(<nil>)".
    if (pull->merged || pull->closed)
        return call.error(422, QStringLiteral("%!s(<nil>)"));
    if (!canWrite(call))
        return HttpAnswer::empty(403);
    const bool rebase =
        call.query().queryItemValue(QStringLiteral("style")) == QLatin1String("rebase");
    if (pull->conflicting) {
        return call.error(409, rebase ? QStringLiteral("rebase failed because of conflict")
                                      : QStringLiteral("merge failed because of conflict"));
    }
    // Already up to date: git has nothing to do and Gitea answers 200 all the same.
    if (pull->behindBase)
        bringUpToDate(call, *pull, rebase);
    return HttpAnswer::empty(200);
}

HttpAnswer editPull(Call &call, const QJsonObject &body)
{
    PullRequest *pull = call.pull();
    if (!pull)
        return call.notFound();
    if (call.doer->id != pull->posterId && !canWrite(call))
        return HttpAnswer::empty(403);
    if (bodyField(body, QStringLiteral("state")).isString()) {
        if (pull->merged) {
            return call.error(
                412,
                QStringLiteral("cannot change state of this pull request, it was already merged"));
        }
        // Gitea closes for "closed" and reopens for any other value.
        const bool close = bodyText(body, QStringLiteral("state")) == QLatin1String("closed");
        if (close != pull->closed) {
            pull->closed = close;
            pull->closedAt = close ? call.now : QDateTime();
            pull->updatedAt = call.now;
        }
    }
    // Gitea answers an edit with 201 and the pull request as it now is.
    return call.answer(call.json.pullRequest(*call.repo, *pull), 201);
}

HttpAnswer createReview(Call &call, const QJsonObject &body)
{
    PullRequest *pull = call.pull();
    if (!pull)
        return call.notFound();

    const QString event = bodyText(body, QStringLiteral("event"));
    const QString text = bodyText(body, QStringLiteral("body"));
    const bool hasBody = !text.trimmed().isEmpty();
    const int codeComments = int(bodyField(body, QStringLiteral("comments")).toArray().size());
    const bool ownPull = call.doer->id == pull->posterId;
    QString state = event;
    if (event == QLatin1String("APPROVED")) {
        if (ownPull)
            return call.error(422, QStringLiteral("approve your own pull is not allowed"));
    } else if (event == QLatin1String("REQUEST_CHANGES")) {
        if (ownPull)
            return call.error(422, QStringLiteral("reject your own pull is not allowed"));
        if (!hasBody)
            return call.error(422, QStringLiteral("review event REQUEST_CHANGES requires a body"));
    } else if (event == QLatin1String("COMMENT")) {
        if (!hasBody && codeComments == 0) {
            return call.error(422,
                              QStringLiteral("review event COMMENT requires a body or a comment"));
        }
    } else {
        state = QStringLiteral("PENDING"); // Any other event starts a pending review.
    }
    const bool pending = state == QLatin1String("PENDING");
    if (!pending && pull->closed)
        return call.error(422, QStringLiteral("can't submit review for a closed or merged PR"));

    Review review;
    review.id = call.state.nextReviewId++;
    review.userId = call.doer->id;
    review.state = state;
    review.body = text;
    const QString commit = bodyText(body, QStringLiteral("commit_id"));
    review.commitId = commit.isEmpty() ? pull->headSha : commit;
    review.official = !pending && state != QLatin1String("COMMENT") && canWrite(call);
    review.codeCommentsCount = codeComments;
    review.submittedAt = review.updatedAt = call.now;
    pull->reviews.append(review);
    if (!pending) {
        pull->reviewerIds.removeAll(call.doer->id); // The review answers the request for one.
        pull->updatedAt = call.now;
    }
    return call.answer(call.json.review(*call.repo, *pull, pull->reviews.constLast()));
}

HttpAnswer createComment(Call &call, const QJsonObject &body)
{
    const QString text = bodyText(body, QStringLiteral("body"));
    if (text.isEmpty())
        return validationError(call, QStringLiteral("Body"), QStringLiteral("Required"));
    PullRequest *pull = call.pull();
    if (!pull)
        return call.notFound();
    Comment comment{call.state.nextCommentId++, call.doer->id, text, call.now, call.now};
    pull->comments.append(comment);
    pull->updatedAt = call.now;
    return call.answer(call.json.comment(*call.repo, *pull, comment), 201);
}

HttpAnswer deleteBranch(Call &call)
{
    if (!canWrite(call))
        return call.error(403, QStringLiteral("user should have a permission to write to a repo"));
    const QString name = call.params.value(QStringLiteral("branch"));
    const Branch *branch = call.repo->branch(name);
    if (!branch)
        return call.notFound({QStringLiteral("branch does not exist [name: %1]").arg(name)});
    if (branch->name == call.repo->defaultBranch)
        return call.error(403, QStringLiteral("can not delete default branch"));
    if (branch->isProtected)
        return call.error(403, QStringLiteral("branch protected"));
    call.repo->removeBranch(name);
    return HttpAnswer::empty(204);
}

HttpAnswer rerunRun(Call &call)
{
    if (!canWrite(call))
        return call.error(403, QStringLiteral("user should have a permission to write to a repo"));
    Run *run = call.repo->run(call.params.value(QStringLiteral("run")).toLongLong());
    if (!run)
        return call.notFound();
    if (run->status != QLatin1String("completed"))
        return call.error(400, QStringLiteral("this workflow run is not done"));
    run->status = QStringLiteral("queued");
    run->conclusion.clear();
    run->runAttempt += 1;
    run->startedAt = run->completedAt = QDateTime();
    for (Job &job : run->jobs) {
        // A job goes back to waiting for a runner: no runner, no steps, no log yet.
        job.status = QStringLiteral("queued");
        job.conclusion.clear();
        job.runnerId = 0;
        job.runnerName.clear();
        job.steps.clear();
        job.startedAt = job.completedAt = QDateTime();
        job.log.reset();
    }
    return call.answer(call.json.run(*call.repo, *run), 201);
}

} // namespace kestrine::sim
