// The actions of PRDetailViewModel: merge, close or reopen, review, comment, re-run.
//
// Their requests are cancelled with the model itself (not with a load's scope), so a reload does
// not abort a merge under way, while leaving the screen does. After every await a coroutine checks
// that the model still exists before it touches anything.
//
// Every action follows the same policy, which ActionSteps below carries out once: its progress text
// shows in busyMessage from its first request and is cleared however it ends; a failed request
// ends it with the failure's description in errorMessage, unless the failure is a cancellation,
// which nobody waits for any more.

#include "failure_p.h"
#include "prdetailviewmodel.h"
#include "settingsstore.h"

#include <QCoreApplication>

namespace kestrine {
namespace {

using detail::attempt;
using detail::Attempted;
using detail::Failure;

// The progress texts, shown over the detail screen (and by kestrine-cli on a terminal) in the
// user's language.
const char *const mergingText = QT_TRANSLATE_NOOP("PRDetailViewModel", "Merging…");
const char *const updatingBranchText = QT_TRANSLATE_NOOP("PRDetailViewModel", "Updating branch…");
const char *const updatingText = QT_TRANSLATE_NOOP("PRDetailViewModel", "Updating…");
const char *const submittingText = QT_TRANSLATE_NOOP("PRDetailViewModel", "Submitting…");
const char *const postingText = QT_TRANSLATE_NOOP("PRDetailViewModel", "Posting…");
const char *const rerunningText = QT_TRANSLATE_NOOP("PRDetailViewModel", "Re-running job…");

std::optional<QString> loginOf(const PullReview &review)
{
    return review.user ? std::optional<QString>(review.user->login) : std::nullopt;
}

/// How a request of an action ended, as the action goes on from it.
enum class Step {
    Done,
    /// Failed (its description is shown), or the model went away meanwhile.
    Failed,
    /// Refused as out of date or conflicting; only for a request that asked to hear of it, and
    /// then nothing is shown.
    Conflicted,
};

/// What a request's failure means to its action.
enum class OnFailure {
    Show,
    /// A merge refusal is the action's to handle (Step::Conflicted); every other failure shows.
    ShowUnlessConflict,
    /// Its outcome does not matter; the action goes on.
    Ignore,
};

/// One action under way on a model: busyMessage shows its progress from the start and is cleared
/// when this goes (however the action ended), and its requests run through perform() and fetch(),
/// which show a failure in errorMessage. Once the model is gone nothing is touched.
///
/// The model's setters are private, so the action hands them in.
class ActionSteps
{
public:
    using Setter = void (PRDetailViewModel::*)(const std::optional<QString> &);

    ActionSteps(PRDetailViewModel *model, Setter setBusy, Setter setError, const char *progress)
        : m_model(model)
        , m_setBusy(setBusy)
        , m_setError(setError)
    {
        show(progress);
    }
    ~ActionSteps()
    {
        if (m_model)
            (m_model->*m_setBusy)(std::nullopt);
    }
    ActionSteps(const ActionSteps &) = delete;
    ActionSteps &operator=(const ActionSteps &) = delete;

    /// False once the model is gone.
    bool modelExists() const { return !m_model.isNull(); }

    /// The progress text of the next step, one of the texts above.
    void show(const char *progress)
    {
        (m_model->*m_setBusy)(QCoreApplication::translate("PRDetailViewModel", progress));
    }

    QCoro::Task<Step> perform(QCoro::Task<> request, OnFailure onFailure = OnFailure::Show)
    {
        const std::optional<Failure> failure = co_await attempt(std::move(request));
        if (!m_model)
            co_return Step::Failed;
        if (!failure)
            co_return Step::Done;
        if (onFailure == OnFailure::ShowUnlessConflict && failure->isMergeConflict())
            co_return Step::Conflicted;
        if (onFailure != OnFailure::Ignore)
            report(*failure);
        co_return Step::Failed;
    }

    /// The answer of `request`; nothing when it failed (its description is shown) or when the
    /// model went away meanwhile.
    template <class T>
    QCoro::Task<std::optional<T>> fetch(QCoro::Task<T> request)
    {
        Attempted<T> answer = co_await attempt(std::move(request));
        if (!m_model)
            co_return std::nullopt;
        if (answer.failure)
            report(*answer.failure);
        co_return std::move(answer.value);
    }

private:
    void report(const Failure &failure)
    {
        if (!failure.isCancellation)
            (m_model->*m_setError)(failure.description);
    }

    QPointer<PRDetailViewModel> m_model;
    Setter m_setBusy;
    Setter m_setError;
};

/// The client of an action, its requests cancelled when the model goes; nothing when the settings
/// name no instance.
std::optional<GiteaClient> actionClient(PRDetailViewModel *model,
                                        const std::optional<GiteaClient> &configured)
{
    if (!configured)
        return std::nullopt;
    return configured->cancelledWith(model);
}

} // namespace

QCoro::Task<bool> PRDetailViewModel::merge(QString method)
{
    const std::optional<GiteaClient> client = actionClient(this, configuredClient());
    if (!client)
        co_return false;
    const QString owner = m_repo.owner.login;
    const QString name = m_repo.name;
    const qint64 number = m_prNumber;
    ActionSteps action(this, &PRDetailViewModel::setBusyMessage,
                       &PRDetailViewModel::setErrorMessage, mergingText);

    bool deleteBranch = settings()->deleteBranchAfterMerge();
    const Step merged = co_await action.perform(
        client->merge(owner, name, number, method, deleteBranch), OnFailure::ShowUnlessConflict);
    if (merged == Step::Failed)
        co_return false;
    if (merged == Step::Conflicted) {
        // Refused as out of date or conflicting: bring the branch up to date and try exactly once
        // more, with the deletion setting as it is then.
        action.show(updatingBranchText);
        if (co_await action.perform(client->updateBranch(owner, name, number)) != Step::Done)
            co_return false;
        action.show(mergingText);
        deleteBranch = settings()->deleteBranchAfterMerge();
        if (co_await action.perform(client->merge(owner, name, number, method, deleteBranch)) !=
            Step::Done)
            co_return false;
        // On this path only the body flag deletes the branch: no separate deletion request.
    } else {
        // The body flag already asks the server to delete the branch; the explicit deletion
        // covers servers that ignore it. Its outcome does not matter here.
        const std::optional<QString> headRef =
            m_pr && m_pr->head ? m_pr->head->ref : std::optional<QString>();
        if (deleteBranch && headRef) {
            co_await action.perform(client->deleteBranch(owner, name, *headRef), OnFailure::Ignore);
            if (!action.modelExists())
                co_return false;
        }
    }
    co_await refetchPullRequest(*client);
    co_return action.modelExists();
}

QCoro::Task<> PRDetailViewModel::setState(QString state)
{
    const std::optional<GiteaClient> client = actionClient(this, configuredClient());
    if (!client)
        co_return;
    ActionSteps action(this, &PRDetailViewModel::setBusyMessage,
                       &PRDetailViewModel::setErrorMessage, updatingText);
    if (co_await action.perform(
            client->setState(m_repo.owner.login, m_repo.name, m_prNumber, state)) == Step::Done)
        co_await refetchPullRequest(*client);
}

QCoro::Task<> PRDetailViewModel::submitReview(QString state, std::optional<QString> comment)
{
    const std::optional<GiteaClient> client = actionClient(this, configuredClient());
    if (!client)
        co_return;
    // The one action that guards itself: the approve entry of the review menu can be reached
    // while a comment is still being posted.
    if (m_busyMessage)
        co_return;
    ActionSteps action(this, &PRDetailViewModel::setBusyMessage,
                       &PRDetailViewModel::setErrorMessage, submittingText);
    const std::optional<PullReview> review = co_await action.fetch(
        client->submitReview(m_repo.owner.login, m_repo.name, m_prNumber, state, comment));
    if (!review)
        co_return;
    // One review per user, the newest last; the server keeps them all, a reload shows that.
    QList<PullReview> reviews = m_reviews;
    const std::optional<QString> author = loginOf(*review);
    reviews.removeIf([&author](const PullReview &other) { return loginOf(other) == author; });
    reviews.append(*review);
    setReviews({reviews, m_reviewsCut});
}

QCoro::Task<> PRDetailViewModel::postComment(QString body)
{
    const std::optional<GiteaClient> client = actionClient(this, configuredClient());
    if (!client)
        co_return;
    ActionSteps action(this, &PRDetailViewModel::setBusyMessage,
                       &PRDetailViewModel::setErrorMessage, postingText);
    const std::optional<IssueComment> comment = co_await action.fetch(
        client->postComment(m_repo.owner.login, m_repo.name, m_prNumber, body));
    if (!comment)
        co_return;
    QList<IssueComment> comments = m_comments;
    comments.append(*comment);
    setComments(comments);
}

QCoro::Task<> PRDetailViewModel::rerun(qint64 runID)
{
    const std::optional<GiteaClient> client = actionClient(this, configuredClient());
    if (!client)
        co_return;
    ActionSteps action(this, &PRDetailViewModel::setBusyMessage,
                       &PRDetailViewModel::setErrorMessage, rerunningText);
    if (co_await action.perform(client->rerun(m_repo.owner.login, m_repo.name, runID)) !=
        Step::Done)
        co_return;
    // Unlike load(), an empty sha is passed on as it is.
    const std::optional<QString> sha =
        m_pr && m_pr->head ? m_pr->head->sha : std::optional<QString>();
    if (sha)
        co_await loadRuns(*client, *sha);
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
