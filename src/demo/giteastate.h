#pragma once

// The in-memory state of the simulated Gitea instance: plain values, loaded from a seed
// (giteaseed.h), changed by the write endpoints and turned into Gitea's JSON by giteajson.h.
// Times are UTC; an invalid QDateTime means "never" (Gitea then writes its zero time).

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

namespace kestrine::sim {

struct User
{
    qint64 id = 0;
    QString login;
    QString fullName;
    QString email;
    QString language;
    QString location;
    QString website;
    QString description;
    bool isAdmin = false;
    bool keepEmailPrivate = false;
    QDateTime created;
    QDateTime lastLogin;
    int followers = 0;
    int following = 0;
    int starredRepos = 0;
};

struct Label
{
    qint64 id = 0;
    QString name;
    QString color;
    QString description;
    bool exclusive = false;
};

struct Review
{
    qint64 id = 0;
    qint64 userId = 0;
    /// "APPROVED", "PENDING", "COMMENT", "REQUEST_CHANGES" or "REQUEST_REVIEW".
    QString state;
    QString body;
    QString commitId;
    bool stale = false;
    bool official = false;
    bool dismissed = false;
    int codeCommentsCount = 0;
    QDateTime submittedAt;
    QDateTime updatedAt;
};

struct Comment
{
    qint64 id = 0;
    qint64 userId = 0;
    QString body;
    QDateTime createdAt;
    QDateTime updatedAt;
};

struct ChangedFile
{
    QString filename;
    QString previousFilename;
    /// "added", "deleted", "renamed", "copied", "changed" or "unchanged".
    QString status;
    int additions = 0;
    int deletions = 0;
};

struct CommitFile
{
    QString filename;
    QString status;
};

struct Commit
{
    QString sha;
    QString message;
    /// The author as a known user, or 0 with only a name and an e-mail address.
    qint64 authorId = 0;
    QString authorName;
    QString authorEmail;
    QDateTime date;
    QStringList parents;
    QList<CommitFile> files;
    int additions = 0;
    int deletions = 0;
};

struct PullRequest
{
    qint64 id = 0;
    int number = 0;
    qint64 posterId = 0;
    QString title;
    QString body;
    QString baseBranch;
    QString headBranch;
    QString headSha;
    QString mergeBase;
    bool closed = false;
    bool merged = false;
    /// False when Gitea's conflict check found a conflict (merging answers 405).
    bool mergeable = true;
    /// The base moved on since the head was last updated: merging answers 409 until an update.
    bool behindBase = false;
    /// The merge itself fails with conflicts (409), and so does an update.
    bool conflicting = false;
    bool allowMaintainerEdit = false;
    QDateTime createdAt;
    QDateTime updatedAt;
    QDateTime closedAt;
    QDateTime mergedAt;
    qint64 mergedById = 0;
    QString mergeCommitSha;
    QList<Label> labels;
    QList<qint64> assigneeIds;
    QList<qint64> reviewerIds;
    QList<Review> reviews;
    QList<Comment> comments;
    QList<ChangedFile> files;
    QList<Commit> commits;
    QByteArray diff;
};

struct Step
{
    QString name;
    QString status;
    QString conclusion;
    QDateTime startedAt;
    QDateTime completedAt;
};

struct Job
{
    qint64 id = 0;
    QString name;
    QStringList labels;
    /// "queued", "waiting", "in_progress" or "completed".
    QString status;
    /// Only when completed: "success", "failure", "cancelled" or "skipped".
    QString conclusion;
    qint64 runnerId = 0;
    QString runnerName;
    QList<Step> steps;
    QDateTime createdAt;
    QDateTime startedAt;
    QDateTime completedAt;
    /// The raw log; absent while the job has not run.
    std::optional<QByteArray> log;
};

struct Run
{
    qint64 id = 0;
    int runNumber = 0;
    /// The workflow file, e.g. "ci.yml".
    QString workflow;
    QString title;
    QString event;
    QString headSha;
    QString headBranch;
    QString status;
    QString conclusion;
    qint64 actorId = 0;
    int runAttempt = 1;
    QDateTime createdAt;
    QDateTime startedAt;
    QDateTime completedAt;
    QList<Job> jobs;
};

/// A status another CI (not Actions) reported on a commit.
struct CommitStatus
{
    qint64 id = 0;
    QString sha;
    QString context;
    /// "pending", "success", "error", "failure" or "warning".
    QString state;
    QString description;
    QString targetUrl;
    qint64 creatorId = 0;
    QDateTime createdAt;
};

struct Branch
{
    QString name;
    QString commit;
    bool isProtected = false;
};

enum class Access { None, Read, Write, Admin };

struct Repository
{
    qint64 id = 0;
    qint64 ownerId = 0;
    QString name;
    QString description;
    QString defaultBranch;
    QString language;
    bool isPrivate = false;
    bool archived = false;
    int size = 0;
    int stars = 0;
    int forks = 0;
    int watchers = 0;
    QDateTime createdAt;
    QDateTime updatedAt;
    /// Collaborators by user id.
    QHash<qint64, Access> collaborators;
    /// The merge styles the repository allows ("merge", "rebase", ...).
    QStringList mergeStyles;
    QList<Branch> branches;
    QList<PullRequest> pulls;
    /// Newest last; the API lists them newest first.
    QList<Run> runs;
    /// Statuses of other CI, oldest first. Those Actions posts are made from the runs.
    QList<CommitStatus> statuses;

    PullRequest *pull(int number);
    const PullRequest *pull(int number) const;
    Branch *branch(const QString &name);
    const Branch *branch(const QString &name) const;
    bool removeBranch(const QString &name);
    Run *run(qint64 id);
    const Run *run(qint64 id) const;
    /// The job with this id in any of the repository's runs, with its run.
    std::optional<std::pair<const Run *, const Job *>> job(qint64 id) const;
};

struct State
{
    QList<User> users;
    /// Token → user id. Empty: every request is accepted as `defaultViewerId`.
    QHash<QString, qint64> tokens;
    qint64 defaultViewerId = 0;
    QList<Repository> repositories;
    /// Gitea's [api] DEFAULT_PAGING_NUM and MAX_RESPONSE_ITEMS.
    int defaultPagingNum = 30;
    int maxResponseItems = 50;
    /// Gitea's [server] ROOT_URL as the seed gives it, with a trailing "/"; empty: the address
    /// the instance listens on.
    QString rootUrl;
    qint64 nextReviewId = 1;
    qint64 nextCommentId = 1;

    const User *user(qint64 id) const;
    const User *user(const QString &login) const;
    /// Case-insensitive, as Gitea looks up owners and repository names.
    Repository *repository(const QString &owner, const QString &name);
    const Repository *repository(const QString &owner, const QString &name) const;
    Access access(const Repository &repository, const User *viewer) const;
};

/// Gitea's draft rule: a title that starts with one of WORK_IN_PROGRESS_PREFIXES ("WIP:" and
/// "[WIP]" by default), in any letter case, marks work in progress.
bool isWorkInProgress(const QString &title);

/// Every merge style Gitea knows, as its merge endpoint spells them in "Do".
const QStringList &mergeStyleNames();

/// A ROOT_URL as Gitea keeps it: without the default port of its scheme (":80" for http, ":443"
/// for https) and ending in exactly one "/". Empty stays empty.
QString normalizedRootUrl(const QString &rootUrl);

/// A stable, commit-like SHA-1 (40 hex digits) made from `text`, for commits that the simulation
/// creates itself (merges, updates) or that a seed leaves out.
QString derivedSha(const QString &text);

} // namespace kestrine::sim
