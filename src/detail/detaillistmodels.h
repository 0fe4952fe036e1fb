#pragma once

// The lists of the detail screen as list models: one row per record, the values a delegate shows
// worked out here, once, by the same rules kestrine-cli prints with.

#include "recordlistmodel.h"
#include "records.h"

#include <QHash>
#include <QString>

namespace kestrine {

/// A pull request's comments, by id. Roles: author ("unknown" when absent), body ("" when
/// absent), createdAt (a QDateTime, invalid when absent).
class CommentsModel : public KeyedListModel<IssueComment, qint64>
{
public:
    explicit CommentsModel(QObject *parent = nullptr);
};

/// A pull request's reviews, by id. Roles: author, body, verdict (a ReviewState::Value of the
/// review on its own), emoji, verb, and line ("✅ alice approved", the author set apart as a
/// directional isolate).
class ReviewsModel : public KeyedListModel<PullReview, qint64>
{
public:
    explicit ReviewsModel(QObject *parent = nullptr);
};

/// A pull request's changed files, by file name. Roles: filename, mark (changedFileMark),
/// additions, deletions.
class ChangedFilesModel : public KeyedListModel<ChangedFile, QString>
{
public:
    explicit ChangedFilesModel(QObject *parent = nullptr);
};

/// The jobs of one run, by id. Roles: jobID, name, ciStatus (CIStatus::forJob), failed
/// (CIStatus::jobFailed: it can be re-run), hasRun (CIStatus::jobHasRun: it has a log).
class JobsModel : public KeyedListModel<ActionJob, qint64>
{
public:
    explicit JobsModel(QObject *parent = nullptr);
};

/// The Actions runs of a head commit, by id. Roles: runID, name (runDisplayName), ciStatus
/// (CIStatus::forRun), createdAt (a QDateTime, invalid when absent), jobs (the run's JobsModel,
/// as a QObject).
class RunsModel : public KeyedListModel<ActionRun, qint64>
{
public:
    explicit RunsModel(QObject *parent = nullptr);

    /// The jobs of run `runID`: one model per run for as long as this one lives, so that a run's
    /// row keeps its job rows across reloads; empty until they are set. Jobs of a run that left
    /// the list stay, as the detail model keeps them.
    JobsModel *jobsOf(qint64 runID);

private:
    QHash<qint64, JobsModel *> m_jobs;
};

/// The statuses other CI than Actions reported on a head commit, by id. Roles: context and
/// description ("" when absent), ciStatus (CIStatus::forStatus), state (the status word in lower
/// case), detailsUrl (the target when it is an http or https address with a host, else "").
class CommitStatusesModel : public KeyedListModel<CommitStatus, qint64>
{
public:
    explicit CommitStatusesModel(QObject *parent = nullptr);
};

} // namespace kestrine
