#pragma once

#include "detaillistmodels.h"
#include "giteaclient.h"
#include "mergegate.h"
#include "qmlservices.h"
#include "records.h"
#include "summaries.h"

#include <QCoroTask>
#include <QList>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <QVariant>
#include <QtQml/qqmlregistration.h>
#include <optional>

namespace kestrine {

/// Everything about one pull request, for its detail screen: the pull request, its conversation,
/// changed files and commits, and the Actions runs of its head commit with their jobs; plus the
/// actions on it (merge, close or reopen, review, comment, re-run).
///
/// Screens only read the published state. Nothing here throws to them: failures end up in
/// `errorMessage` (the error's description, cleared only by the next load) and in the log, and
/// secondary lists that fail to load are simply empty. A cancelled request is never shown nor
/// logged. Requests are cancelled when the model is destroyed, and those of a load when the next
/// load starts: a load's requests carry a scope object that the model owns, and deleting that
/// scope aborts them.
///
/// Each published field has a typed accessor for C++ and a Q_PROPERTY for QML. The lists the
/// screen shows (comments, reviews, changed files, runs and each run's jobs) reach QML as list
/// models with named roles, which keep their rows across reloads; the pull request, the
/// repository and the commits as JavaScript objects with their JSON keys, optional texts as ""
/// when absent. Main thread only.
class PRDetailViewModel : public QObject, public SettingsUser
{
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT

    Q_PROPERTY(QVariant repo READ qmlRepo WRITE setQmlRepo NOTIFY repoChanged)
    Q_PROPERTY(qint64 prNumber READ prNumber WRITE setPrNumber NOTIFY prNumberChanged)
    Q_PROPERTY(QVariant pr READ qmlPr NOTIFY prChanged)
    Q_PROPERTY(bool hasPr READ hasPr NOTIFY prChanged)
    /// The pull request's page on the server, "" unless that is an http or https address.
    Q_PROPERTY(QString webUrl READ qmlWebUrl NOTIFY prChanged)
    Q_PROPERTY(kestrine::RecordListModel *commentsModel READ commentsModel CONSTANT)
    Q_PROPERTY(kestrine::RecordListModel *reviewsModel READ reviewsModel CONSTANT)
    Q_PROPERTY(kestrine::RecordListModel *filesModel READ filesModel CONSTANT)
    /// "Showing the first N of M." when the page bound cut the files short, else "".
    Q_PROPERTY(QString filesCutNotice READ filesCutNotice NOTIFY filesChanged)
    Q_PROPERTY(QVariant commits READ qmlCommits NOTIFY commitsChanged)
    /// Each run's row has its jobs as a model of their own, in its "jobs" role.
    Q_PROPERTY(kestrine::RecordListModel *runsModel READ runsModel CONSTANT)
    /// The head commit's statuses from CI other than Actions.
    Q_PROPERTY(kestrine::RecordListModel *statusesModel READ statusesModel CONSTANT)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    Q_PROPERTY(bool isActionsLoading READ isActionsLoading NOTIFY isActionsLoadingChanged)
    Q_PROPERTY(QString errorMessage READ qmlErrorMessage NOTIFY errorMessageChanged)
    Q_PROPERTY(QString busyMessage READ qmlBusyMessage NOTIFY busyMessageChanged)
    Q_PROPERTY(kestrine::CIStatus::Value ciStatus READ ciStatus NOTIFY ciStatusChanged)
    Q_PROPERTY(kestrine::ReviewState::Value reviewState READ reviewState NOTIFY reviewsChanged)
    Q_PROPERTY(bool mergeAllowed READ mergeAllowed NOTIFY mergeGateChanged)
    Q_PROPERTY(kestrine::MergeGateDecision mergeGate READ mergeGate NOTIFY mergeGateChanged)
    Q_PROPERTY(QList<kestrine::MergeMethod> mergeMethods READ mergeMethods CONSTANT)
    Q_PROPERTY(QString defaultMergeMethod READ defaultMergeMethod CONSTANT)

public:
    using JobsByRun = QMap<qint64, QList<ActionJob>>;

    /// For QML, which sets `repo` and `prNumber` afterwards; the settings are its engine's (see
    /// SettingsUser). C++ creators hand theirs in.
    explicit PRDetailViewModel(QObject *parent = nullptr);
    PRDetailViewModel(SettingsStore &settings, Repository repo, qint64 prNumber,
                      QObject *parent = nullptr);
    ~PRDetailViewModel() override;

    const Repository &repo() const { return m_repo; }
    void setRepo(const Repository &repo);
    qint64 prNumber() const { return m_prNumber; }
    void setPrNumber(qint64 prNumber);

    const std::optional<PullRequest> &pr() const { return m_pr; }
    bool hasPr() const { return m_pr.has_value(); }
    /// The pull request's page on the server (its `html_url`), for a browser: nothing while no
    /// pull request is loaded, and nothing when the server sent no address or one that is not a
    /// web page (a `javascript:` or `file:` address, say), which is never to be opened.
    std::optional<QUrl> webUrl() const;
    const QList<IssueComment> &comments() const { return m_comments; }
    const QList<PullReview> &reviews() const { return m_reviews; }
    const QList<ChangedFile> &files() const { return m_files; }
    const QList<PRCommit> &commits() const { return m_commits; }
    const QList<ActionRun> &runs() const { return m_runs; }
    const JobsByRun &jobs() const { return m_jobs; }
    /// The head commit's statuses, without those Actions posted itself.
    const QList<CommitStatus> &statuses() const { return m_statuses; }
    CommentsModel *commentsModel() const { return m_commentsModel; }
    ReviewsModel *reviewsModel() const { return m_reviewsModel; }
    ChangedFilesModel *filesModel() const { return m_filesModel; }
    RunsModel *runsModel() const { return m_runsModel; }
    CommitStatusesModel *statusesModel() const { return m_statusesModel; }
    // How much of a list arrived when the page bound stopped its fetch early; nothing when the
    // whole list is there.
    const std::optional<ListCut> &reviewsCut() const { return m_reviewsCut; }
    const std::optional<ListCut> &filesCut() const { return m_filesCut; }
    const std::optional<ListCut> &commitsCut() const { return m_commitsCut; }
    std::optional<ListCut> jobsCut(qint64 runID) const;
    QString filesCutNotice() const;
    bool isLoading() const { return m_loadsInFlight > 0; }
    bool isActionsLoading() const { return m_runLoadsInFlight > 0; }
    const std::optional<QString> &errorMessage() const { return m_errorMessage; }
    const std::optional<QString> &busyMessage() const { return m_busyMessage; }

    /// The CI summary: of the runs when the head commit has any, else of the other CI's
    /// statuses. "CI is red" means Failure.
    CIStatus::Value ciStatus() const;
    ReviewState::Value reviewState() const { return ReviewState::from(m_reviews); }
    /// The merge gate for the runs held now and the current settings mode; re-evaluated when
    /// either changes.
    const MergeGateDecision &mergeGate() const { return m_mergeGate; }
    bool mergeAllowed() const { return m_mergeGate.allowed; }
    static QList<MergeMethod> mergeMethods() { return kestrine::mergeMethods(); }
    static QString defaultMergeMethod() { return kestrine::defaultMergeMethod(); }

    /// The full refresh: the pull request; then its comments, reviews, files and commits, fetched
    /// together; then, when the head commit is known, its runs and their jobs. Does nothing
    /// without a configured client. Never throws.
    QCoro::Task<> load();
    /// What the detail screen and kestrine-cli do: load(), then the head commit's statuses from
    /// CI other than Actions, which decide the CI summary when the commit has no runs. A newer
    /// load supersedes the statuses' request as it does the load's own.
    QCoro::Task<> loadWithStatuses();

    // The actions. Each does nothing without a configured client, shows its progress in
    // `busyMessage` and clears it on every way out, and never throws.

    /// Merges by `method` ("merge", "rebase" or "squash"); true when merged. A merge refused as
    /// out of date is retried once after bringing the branch up to date.
    QCoro::Task<bool> merge(QString method);
    /// "closed" or "open".
    QCoro::Task<> setState(QString state);
    /// "approved", "changes", or anything else for a plain review comment. Does nothing while
    /// another action shows its progress.
    QCoro::Task<> submitReview(QString state, std::optional<QString> comment);
    QCoro::Task<> postComment(QString body);
    QCoro::Task<> rerun(qint64 runID);

    // QML entry points: each starts its action and returns at once.
    Q_INVOKABLE void reload();
    /// Starts loadWithStatuses() and returns.
    Q_INVOKABLE void refresh();
    /// Emits mergeFinished() with the outcome.
    Q_INVOKABLE void startMerge(const QString &method);
    Q_INVOKABLE void startSetState(const QString &state);
    /// `comment`: a text, or null/undefined for none.
    Q_INVOKABLE void startSubmitReview(const QString &state, const QVariant &comment = {});
    Q_INVOKABLE void startPostComment(const QString &body);
    Q_INVOKABLE void startRerun(qint64 runID);
    /// The error alert was dismissed.
    Q_INVOKABLE void clearErrorMessage();

    QVariant qmlRepo() const;
    /// Takes a repository in QML form (as `repo` gives it); anything that does not decode as one
    /// is ignored.
    void setQmlRepo(const QVariant &repo);
    QVariant qmlPr() const;
    QString qmlWebUrl() const;
    QVariant qmlCommits() const;
    QString qmlErrorMessage() const { return m_errorMessage.value_or(QString()); }
    QString qmlBusyMessage() const { return m_busyMessage.value_or(QString()); }

signals:
    void repoChanged();
    void prNumberChanged();
    void prChanged();
    void commentsChanged();
    void reviewsChanged();
    void filesChanged();
    void commitsChanged();
    void runsChanged();
    void statusesChanged();
    void ciStatusChanged();
    void jobsChanged();
    void isLoadingChanged();
    void isActionsLoadingChanged();
    void errorMessageChanged();
    void busyMessageChanged();
    void mergeGateChanged();
    /// The outcome of a merge started by startMerge().
    void mergeFinished(bool merged);

private:
    PRDetailViewModel(SettingsStore *settings, Repository repo, qint64 prNumber, QObject *parent);
    /// Follows the merge gate mode of the settings, once they are known.
    void settingsFound() override;

    /// Fetches the runs of `sha` and then, one run after another, their jobs.
    QCoro::Task<> loadRuns(GiteaClient client, QString sha);
    /// Fetches the statuses of `sha`. A server or commit without them (404) is no error.
    QCoro::Task<> loadStatuses(GiteaClient client, QString sha);
    /// Stores the pull request as the server has it now, or nothing when that fetch fails.
    QCoro::Task<> refetchPullRequest(GiteaClient client);
    QCoro::Task<> runMerge(QString method);

    void setPr(const std::optional<PullRequest> &pr);
    void setComments(const QList<IssueComment> &comments);
    void setReviews(const PagedList<PullReview> &reviews);
    void setFiles(const PagedList<ChangedFile> &files);
    void setCommits(const PagedList<PRCommit> &commits);
    void setRuns(const QList<ActionRun> &runs);
    void setStatuses(const QList<CommitStatus> &statuses);
    /// After the runs or the statuses changed: tells of a new CI summary (it was `before`) and
    /// re-evaluates the merge gate.
    void ciInputsChanged(CIStatus::Value before);
    void setJobs(qint64 runID, const PagedList<ActionJob> &jobs);
    void beginLoad();
    void endLoad();
    void beginRunsLoad();
    void endRunsLoad();
    void setErrorMessage(const std::optional<QString> &message);
    void setBusyMessage(const std::optional<QString> &message);
    void updateMergeGate();

    Repository m_repo;
    qint64 m_prNumber = 0;
    std::optional<PullRequest> m_pr;
    QList<IssueComment> m_comments;
    QList<PullReview> m_reviews;
    QList<ChangedFile> m_files;
    QList<PRCommit> m_commits;
    QList<ActionRun> m_runs;
    QList<CommitStatus> m_statuses;
    JobsByRun m_jobs;
    // The same lists for QML, set together with those above; children of this model.
    CommentsModel *m_commentsModel = new CommentsModel(this);
    ReviewsModel *m_reviewsModel = new ReviewsModel(this);
    ChangedFilesModel *m_filesModel = new ChangedFilesModel(this);
    RunsModel *m_runsModel = new RunsModel(this);
    CommitStatusesModel *m_statusesModel = new CommitStatusesModel(this);
    std::optional<ListCut> m_reviewsCut;
    std::optional<ListCut> m_filesCut;
    std::optional<ListCut> m_commitsCut;
    QMap<qint64, ListCut> m_jobsCuts;
    // Counters rather than flags: a load that a newer one replaced still ends on its own.
    int m_loadsInFlight = 0;
    int m_runLoadsInFlight = 0;
    std::optional<QString> m_errorMessage;
    std::optional<QString> m_busyMessage;
    MergeGateDecision m_mergeGate;
    /// The cancellation scope of the current load; the next load deletes it.
    QPointer<QObject> m_loadScope;
};

} // namespace kestrine
