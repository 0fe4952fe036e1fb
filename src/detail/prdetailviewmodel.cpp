// Loading and published state of PRDetailViewModel; the actions are in prdetailactions.cpp.

#include "prdetailviewmodel.h"

#include "failure_p.h"
#include "listcut.h"
#include "qmlrecords_p.h"
#include "settingsstore.h"
#include "weblinks.h"

namespace kestrine {

using detail::attempt;
using detail::Attempted;
using detail::Failure;

namespace {

/// The check a load makes after each answer: true when it stops there, because the model is gone
/// (then nothing is touched) or the load was replaced, its scope deleted (then `end` closes its
/// loading state first).
template <class End>
auto stopCheck(const QPointer<PRDetailViewModel> &self, const GiteaClient &client, End end)
{
    return [&self, &client, end] {
        if (!self)
            return true;
        if (!client.isCancelled())
            return false;
        end();
        return true;
    };
}

} // namespace

PRDetailViewModel::PRDetailViewModel(QObject *parent)
    : PRDetailViewModel(nullptr, Repository(), 0, parent)
{}

PRDetailViewModel::PRDetailViewModel(SettingsStore &settings, Repository repo, qint64 prNumber,
                                     QObject *parent)
    : PRDetailViewModel(&settings, std::move(repo), prNumber, parent)
{}

PRDetailViewModel::PRDetailViewModel(SettingsStore *settings, Repository repo, qint64 prNumber,
                                     QObject *parent)
    : QObject(parent)
    , SettingsUser(this, settings)
    , m_repo(std::move(repo))
    , m_prNumber(prNumber)
{
    if (settings)
        settingsFound();
    else
        updateMergeGate();
}

void PRDetailViewModel::settingsFound()
{
    // The gate follows the settings as they change, so switching the mode in the settings screen
    // takes effect on an open detail screen without a reload.
    connect(settings(), &SettingsStore::mergeGateModeChanged, this,
            &PRDetailViewModel::updateMergeGate);
    updateMergeGate();
}

// Coroutines still waiting on a request keep a QPointer to the model and stop, touching nothing,
// once it is gone; deleting the load scope (a child) aborts their requests.
PRDetailViewModel::~PRDetailViewModel() = default;

void PRDetailViewModel::setRepo(const Repository &repo)
{
    if (m_repo == repo)
        return;
    m_repo = repo;
    emit repoChanged();
}

void PRDetailViewModel::setPrNumber(qint64 prNumber)
{
    if (m_prNumber == prNumber)
        return;
    m_prNumber = prNumber;
    emit prNumberChanged();
}

QCoro::Task<> PRDetailViewModel::load()
{
    const std::optional<GiteaClient> configured = configuredClient();
    if (!configured)
        co_return;

    // Replacing the scope aborts the requests of a load still under way: they end as
    // cancellations, and that load stops without touching anything.
    delete m_loadScope;
    m_loadScope = new QObject(this);
    const GiteaClient client = configured->cancelledWith(m_loadScope);
    const QPointer<PRDetailViewModel> self(this);
    const QString owner = m_repo.owner.login;
    const QString name = m_repo.name;
    const qint64 number = m_prNumber;

    beginLoad();
    setErrorMessage(std::nullopt);

    const auto stopped = stopCheck(self, client, [this] { endLoad(); });

    const Attempted<PullRequest> fetched =
        co_await attempt(client.pullRequest(owner, name, number));
    if (stopped())
        co_return;
    if (fetched.failure) {
        if (!fetched.failure->isCancellation) {
            log(LogLevel::Error, QStringLiteral("PR ") + QString::number(number) +
                                     QStringLiteral(": load failed: ") +
                                     fetched.failure->logDescription);
            setErrorMessage(fetched.failure->description);
        }
        endLoad();
        co_return;
    }
    setPr(fetched.value);

    // All four requests go out now; their answers are taken in this order. A failure of any of
    // them leaves its list empty and says nothing: the pull request itself did load.
    auto comments = attempt(client.comments(owner, name, number));
    auto reviews = attempt(client.reviews(owner, name, number));
    auto files = attempt(client.changedFiles(owner, name, number));
    auto commits = attempt(client.commits(owner, name, number));

    const Attempted<QList<IssueComment>> commentsAnswer = co_await std::move(comments);
    if (stopped())
        co_return;
    setComments(commentsAnswer.value.value_or(QList<IssueComment>()));

    const Attempted<PagedList<PullReview>> reviewsAnswer = co_await std::move(reviews);
    if (stopped())
        co_return;
    setReviews(reviewsAnswer.value.value_or(PagedList<PullReview>()));

    const Attempted<PagedList<ChangedFile>> filesAnswer = co_await std::move(files);
    if (stopped())
        co_return;
    setFiles(filesAnswer.value.value_or(PagedList<ChangedFile>()));

    const Attempted<PagedList<PRCommit>> commitsAnswer = co_await std::move(commits);
    if (stopped())
        co_return;
    setCommits(commitsAnswer.value.value_or(PagedList<PRCommit>()));

    // Without a head commit there is nothing to ask Actions about; runs and jobs keep whatever
    // they held.
    const std::optional<QString> sha =
        m_pr && m_pr->head ? m_pr->head->sha : std::optional<QString>();
    if (sha && !sha->isEmpty()) {
        co_await loadRuns(client, *sha);
        if (!self)
            co_return;
    }
    endLoad();
}

QCoro::Task<> PRDetailViewModel::loadRuns(GiteaClient client, QString sha)
{
    const QPointer<PRDetailViewModel> self(this);
    const QString owner = m_repo.owner.login;
    const QString name = m_repo.name;
    const qint64 number = m_prNumber;
    const auto stopped = stopCheck(self, client, [this] { endRunsLoad(); });

    beginRunsLoad();
    const Attempted<QList<ActionRun>> runs = co_await attempt(client.runs(owner, name, sha));
    if (stopped())
        co_return;
    if (runs.failure) {
        // A server without Actions must not make the pull request look broken: a log line, but
        // no error message, and the runs shown so far stay.
        if (!runs.failure->isCancellation) {
            log(LogLevel::Warn, QStringLiteral("PR ") + QString::number(number) +
                                    QStringLiteral(": actions/runs failed: ") +
                                    runs.failure->logDescription);
        }
        endRunsLoad();
        co_return;
    }
    setRuns(*runs.value);

    // One run after another. Entries of runs that have since disappeared are left in place.
    for (const ActionRun &run : *runs.value) {
        const qint64 runID = run.id;
        const Attempted<PagedList<ActionJob>> jobs =
            co_await attempt(client.jobs(owner, name, runID));
        if (stopped())
            co_return;
        setJobs(runID, jobs.value.value_or(PagedList<ActionJob>()));
    }
    endRunsLoad();
}

QCoro::Task<> PRDetailViewModel::loadWithStatuses()
{
    const QPointer<PRDetailViewModel> self(this);
    QCoro::Task<> loading = load();
    // The scope the load just made: a newer load replaces it, and then this refresh is over too.
    const QPointer<QObject> scope = m_loadScope;
    co_await std::move(loading);
    if (!self || !scope || !m_pr || !m_pr->head)
        co_return;
    const std::optional<QString> sha = m_pr->head->sha;
    const std::optional<GiteaClient> configured = configuredClient();
    if (!sha || sha->isEmpty() || !configured)
        co_return;
    co_await loadStatuses(configured->cancelledWith(scope), *sha);
}

void PRDetailViewModel::refresh()
{
    // Runs on by itself, like reload().
    loadWithStatuses();
}

QCoro::Task<> PRDetailViewModel::loadStatuses(GiteaClient client, QString sha)
{
    const QPointer<PRDetailViewModel> self(this);
    const qint64 number = m_prNumber;
    const auto stopped = stopCheck(self, client, [this] { endRunsLoad(); });

    beginRunsLoad();
    const Attempted<PagedList<CommitStatus>> statuses =
        co_await attempt(client.commitStatuses(m_repo.owner.login, m_repo.name, sha));
    if (stopped())
        co_return;
    if (statuses.failure) {
        // Like a server without Actions, a server or commit without statuses says nothing on the
        // screen; only an unexpected failure leaves a log line. What was shown stays.
        const Failure &failure = *statuses.failure;
        if (!failure.isCancellation && failure.apiErrorKind != APIError::Kind::NotFound) {
            log(LogLevel::Warn, QStringLiteral("PR ") + QString::number(number) +
                                    QStringLiteral(": commit status failed: ") +
                                    failure.logDescription);
        }
        endRunsLoad();
        co_return;
    }
    setStatuses(CIStatus::otherThanActions(statuses.value->items, m_repo));
    endRunsLoad();
}

void PRDetailViewModel::reload()
{
    // The task runs on by itself; the model's QPointer checks keep it safe if the model goes.
    load();
}

void PRDetailViewModel::clearErrorMessage()
{
    setErrorMessage(std::nullopt);
}

void PRDetailViewModel::setPr(const std::optional<PullRequest> &pr)
{
    if (m_pr == pr)
        return;
    m_pr = pr;
    emit prChanged();
}

void PRDetailViewModel::setComments(const QList<IssueComment> &comments)
{
    if (m_comments == comments)
        return;
    m_comments = comments;
    m_commentsModel->setItems(comments);
    emit commentsChanged();
}

void PRDetailViewModel::setReviews(const PagedList<PullReview> &reviews)
{
    if (m_reviews == reviews.items && m_reviewsCut == reviews.cut)
        return;
    m_reviews = reviews.items;
    m_reviewsModel->setItems(reviews.items);
    m_reviewsCut = reviews.cut;
    emit reviewsChanged();
}

void PRDetailViewModel::setFiles(const PagedList<ChangedFile> &files)
{
    if (m_files == files.items && m_filesCut == files.cut)
        return;
    m_files = files.items;
    m_filesModel->setItems(files.items);
    m_filesCut = files.cut;
    emit filesChanged();
}

void PRDetailViewModel::setCommits(const PagedList<PRCommit> &commits)
{
    if (m_commits == commits.items && m_commitsCut == commits.cut)
        return;
    m_commits = commits.items;
    m_commitsCut = commits.cut;
    emit commitsChanged();
}

void PRDetailViewModel::setRuns(const QList<ActionRun> &runs)
{
    if (m_runs == runs)
        return;
    const CIStatus::Value before = ciStatus();
    m_runs = runs;
    m_runsModel->setItems(runs);
    emit runsChanged();
    ciInputsChanged(before);
}

void PRDetailViewModel::setStatuses(const QList<CommitStatus> &statuses)
{
    if (m_statuses == statuses)
        return;
    const CIStatus::Value before = ciStatus();
    m_statuses = statuses;
    m_statusesModel->setItems(statuses);
    emit statusesChanged();
    ciInputsChanged(before);
}

void PRDetailViewModel::ciInputsChanged(CIStatus::Value before)
{
    if (ciStatus() != before)
        emit ciStatusChanged();
    updateMergeGate();
}

CIStatus::Value PRDetailViewModel::ciStatus() const
{
    return m_runs.isEmpty() ? CIStatus::fromStatuses(m_statuses) : CIStatus::from(m_runs);
}

void PRDetailViewModel::setJobs(qint64 runID, const PagedList<ActionJob> &jobs)
{
    const auto existing = m_jobs.constFind(runID);
    if (existing != m_jobs.constEnd() && *existing == jobs.items && jobsCut(runID) == jobs.cut)
        return;
    m_jobs.insert(runID, jobs.items);
    m_runsModel->jobsOf(runID)->setItems(jobs.items);
    if (jobs.cut)
        m_jobsCuts.insert(runID, *jobs.cut);
    else
        m_jobsCuts.remove(runID);
    emit jobsChanged();
}

std::optional<ListCut> PRDetailViewModel::jobsCut(qint64 runID) const
{
    const auto found = m_jobsCuts.constFind(runID);
    return found == m_jobsCuts.constEnd() ? std::nullopt : std::optional(*found);
}

QString PRDetailViewModel::filesCutNotice() const
{
    return m_filesCut ? listCutNotice(*m_filesCut) : QString();
}

void PRDetailViewModel::beginLoad()
{
    if (++m_loadsInFlight == 1)
        emit isLoadingChanged();
}

void PRDetailViewModel::endLoad()
{
    if (--m_loadsInFlight == 0)
        emit isLoadingChanged();
}

void PRDetailViewModel::beginRunsLoad()
{
    if (++m_runLoadsInFlight == 1)
        emit isActionsLoadingChanged();
}

void PRDetailViewModel::endRunsLoad()
{
    if (--m_runLoadsInFlight == 0)
        emit isActionsLoadingChanged();
}

void PRDetailViewModel::setErrorMessage(const std::optional<QString> &message)
{
    if (m_errorMessage == message)
        return;
    m_errorMessage = message;
    emit errorMessageChanged();
}

void PRDetailViewModel::setBusyMessage(const std::optional<QString> &message)
{
    if (m_busyMessage == message)
        return;
    m_busyMessage = message;
    emit busyMessageChanged();
}

void PRDetailViewModel::updateMergeGate()
{
    // Without settings (yet) the mode is the default one.
    const MergeGateMode mode = settings() ? settings()->mergeGateMode() : MergeGateMode::Warn;
    const MergeGateDecision decision = kestrine::mergeGate(ciStatus(), mode);
    if (m_mergeGate == decision)
        return;
    m_mergeGate = decision;
    emit mergeGateChanged();
}

QVariant PRDetailViewModel::qmlRepo() const
{
    return toQmlValue(m_repo);
}

void PRDetailViewModel::setQmlRepo(const QVariant &repo)
{
    if (const auto decoded = detail::recordFromQml<Repository>(repo))
        setRepo(*decoded);
}

QVariant PRDetailViewModel::qmlPr() const
{
    return m_pr ? toQmlValue(*m_pr) : QVariant();
}

std::optional<QUrl> PRDetailViewModel::webUrl() const
{
    return m_pr ? webPage(m_pr->htmlURL) : std::nullopt;
}

QString PRDetailViewModel::qmlWebUrl() const
{
    // Encoded, so that what is shown, copied and opened is one text without spaces or controls.
    const std::optional<QUrl> url = webUrl();
    return url ? url->toString(QUrl::FullyEncoded) : QString();
}

QVariant PRDetailViewModel::qmlCommits() const
{
    return toQmlValue(m_commits);
}

} // namespace kestrine
