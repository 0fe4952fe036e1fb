// The actions of PRDetailViewModel: merge, close or reopen, review, comment, re-run.
//
// Their requests are cancelled with the model itself (not with a load's scope), so a reload does
// not abort a merge under way, while leaving the screen does. After every await a coroutine checks
// that the model still exists before it touches anything.

#include "failure_p.h"
#include "prdetailviewmodel.h"
#include "settingsstore.h"

namespace kestrine {
namespace {

using detail::attempt;
using detail::Attempted;
using detail::Failure;

const QString mergingText = QStringLiteral("Merging\u2026");
const QString updatingBranchText = QStringLiteral("Updating branch\u2026");
const QString updatingText = QStringLiteral("Updating\u2026");
const QString submittingText = QStringLiteral("Submitting\u2026");
const QString postingText = QStringLiteral("Posting\u2026");
const QString rerunningText = QStringLiteral("Re-running job\u2026");

std::optional<QString> loginOf(const PullReview &review)
{
    return review.user ? std::optional<QString>(review.user->login) : std::nullopt;
}

} // namespace

QCoro::Task<bool> PRDetailViewModel::merge(QString method)
{
    const std::optional<GiteaClient> configured = SettingsStore::shared()->client();
    if (!configured)
        co_return false;
    const GiteaClient client = configured->cancelledWith(this);
    const QPointer<PRDetailViewModel> self(this);
    const QString owner = m_repo.owner.login;
    const QString name = m_repo.name;
    const qint64 number = m_prNumber;

    setBusyMessage(mergingText);
    const bool deleteBranch = SettingsStore::shared()->deleteBranchAfterMerge();
    QCoro::Task<> request = client.merge(owner, name, number, method, deleteBranch);
    const std::optional<Failure> failure = co_await attempt(std::move(request));
    if (!self)
        co_return false;

    if (!failure) {
        // The body flag already asks the server to delete the branch; the explicit deletion
        // covers servers that ignore it. Its outcome does not matter here.
        const std::optional<QString> headRef =
            m_pr && m_pr->head ? m_pr->head->ref : std::optional<QString>();
        if (deleteBranch && headRef) {
            QCoro::Task<> deletion = client.deleteBranch(owner, name, *headRef);
            co_await attempt(std::move(deletion));
            if (!self)
                co_return false;
        }
        co_await refetchPullRequest(client);
        if (!self)
            co_return false;
        setBusyMessage(std::nullopt);
        co_return true;
    }

    if (!failure->isMergeConflict()) {
        if (!failure->isCancellation)
            setErrorMessage(failure->description);
        setBusyMessage(std::nullopt);
        co_return false;
    }

    // Refused as out of date or conflicting: bring the branch up to date and try exactly once
    // more.
    setBusyMessage(updatingBranchText);
    QCoro::Task<> update = client.updateBranch(owner, name, number);
    const std::optional<Failure> updateFailure = co_await attempt(std::move(update));
    if (!self)
        co_return false;
    if (updateFailure) {
        if (!updateFailure->isCancellation)
            setErrorMessage(updateFailure->description);
        setBusyMessage(std::nullopt);
        co_return false;
    }

    setBusyMessage(mergingText);
    const bool deleteBranchOnRetry = SettingsStore::shared()->deleteBranchAfterMerge();
    QCoro::Task<> retry = client.merge(owner, name, number, method, deleteBranchOnRetry);
    const std::optional<Failure> retryFailure = co_await attempt(std::move(retry));
    if (!self)
        co_return false;
    if (retryFailure) {
        if (!retryFailure->isCancellation)
            setErrorMessage(retryFailure->description);
        setBusyMessage(std::nullopt);
        co_return false;
    }
    // On this path only the body flag deletes the branch: no separate deletion request.
    co_await refetchPullRequest(client);
    if (!self)
        co_return false;
    setBusyMessage(std::nullopt);
    co_return true;
}

QCoro::Task<> PRDetailViewModel::setState(QString state)
{
    const std::optional<GiteaClient> configured = SettingsStore::shared()->client();
    if (!configured)
        co_return;
    const GiteaClient client = configured->cancelledWith(this);
    const QPointer<PRDetailViewModel> self(this);

    setBusyMessage(updatingText);
    QCoro::Task<> request = client.setState(m_repo.owner.login, m_repo.name, m_prNumber, state);
    const std::optional<Failure> failure = co_await attempt(std::move(request));
    if (!self)
        co_return;
    if (failure) {
        if (!failure->isCancellation)
            setErrorMessage(failure->description);
    } else {
        co_await refetchPullRequest(client);
        if (!self)
            co_return;
    }
    setBusyMessage(std::nullopt);
}

QCoro::Task<> PRDetailViewModel::submitReview(QString state, std::optional<QString> comment)
{
    const std::optional<GiteaClient> configured = SettingsStore::shared()->client();
    if (!configured)
        co_return;
    // The one action that guards itself: the approve entry of the review menu can be reached
    // while a comment is still being posted.
    if (m_busyMessage)
        co_return;
    const GiteaClient client = configured->cancelledWith(this);
    const QPointer<PRDetailViewModel> self(this);

    setBusyMessage(submittingText);
    const Attempted<PullReview> review = co_await attempt(
        client.submitReview(m_repo.owner.login, m_repo.name, m_prNumber, state, comment));
    if (!self)
        co_return;
    if (review.value) {
        // One review per user, the newest last; the server keeps them all, a reload shows that.
        QList<PullReview> reviews = m_reviews;
        const std::optional<QString> author = loginOf(*review.value);
        reviews.removeIf([&author](const PullReview &other) { return loginOf(other) == author; });
        reviews.append(*review.value);
        setReviews({reviews, m_reviewsCut});
    } else if (!review.failure->isCancellation) {
        setErrorMessage(review.failure->description);
    }
    setBusyMessage(std::nullopt);
}

QCoro::Task<> PRDetailViewModel::postComment(QString body)
{
    const std::optional<GiteaClient> configured = SettingsStore::shared()->client();
    if (!configured)
        co_return;
    const GiteaClient client = configured->cancelledWith(this);
    const QPointer<PRDetailViewModel> self(this);

    setBusyMessage(postingText);
    const Attempted<IssueComment> comment =
        co_await attempt(client.postComment(m_repo.owner.login, m_repo.name, m_prNumber, body));
    if (!self)
        co_return;
    if (comment.value) {
        QList<IssueComment> comments = m_comments;
        comments.append(*comment.value);
        setComments(comments);
    } else if (!comment.failure->isCancellation) {
        setErrorMessage(comment.failure->description);
    }
    setBusyMessage(std::nullopt);
}

QCoro::Task<> PRDetailViewModel::rerun(qint64 runID)
{
    const std::optional<GiteaClient> configured = SettingsStore::shared()->client();
    if (!configured)
        co_return;
    const GiteaClient client = configured->cancelledWith(this);
    const QPointer<PRDetailViewModel> self(this);

    setBusyMessage(rerunningText);
    QCoro::Task<> request = client.rerun(m_repo.owner.login, m_repo.name, runID);
    const std::optional<Failure> failure = co_await attempt(std::move(request));
    if (!self)
        co_return;
    if (failure) {
        if (!failure->isCancellation)
            setErrorMessage(failure->description);
    } else {
        // Unlike load(), an empty sha is passed on as it is.
        const std::optional<QString> sha =
            m_pr && m_pr->head ? m_pr->head->sha : std::optional<QString>();
        if (sha) {
            co_await loadRuns(client, *sha);
            if (!self)
                co_return;
        }
    }
    setBusyMessage(std::nullopt);
}

QCoro::Task<> PRDetailViewModel::refetchPullRequest(GiteaClient client)
{
    const QPointer<PRDetailViewModel> self(this);
    // On a failure the pull request is deliberately absent rather than stale: the screen then
    // shows its loading state.
    const Attempted<PullRequest> fetched =
        co_await attempt(client.pullRequest(m_repo.owner.login, m_repo.name, m_prNumber));
    if (!self)
        co_return;
    setPr(fetched.value);
}

QCoro::Task<> PRDetailViewModel::runMerge(QString method)
{
    const QPointer<PRDetailViewModel> self(this);
    const bool merged = co_await merge(std::move(method));
    if (self)
        emit mergeFinished(merged);
}

void PRDetailViewModel::startMerge(const QString &method)
{
    runMerge(method);
}

void PRDetailViewModel::startSetState(const QString &state)
{
    setState(state);
}

void PRDetailViewModel::startSubmitReview(const QString &state, const QVariant &comment)
{
    const bool hasComment = comment.isValid() && !comment.isNull();
    submitReview(state, hasComment ? std::optional<QString>(comment.toString()) : std::nullopt);
}

void PRDetailViewModel::startPostComment(const QString &body)
{
    postComment(body);
}

void PRDetailViewModel::startRerun(qint64 runID)
{
    rerun(runID);
}

} // namespace kestrine
