#pragma once

// One word for many records: the CI state of a pull request's head commit and the verdict of its
// reviews. Every screen and the background check use these rules, so a pull request reads the
// same everywhere.

#include "records.h"

#include <QObject>
#include <QString>
#include <optional>

namespace kestrine {

class CIStatus
{
    Q_GADGET

public:
    enum Value {
        Running,
        Success,
        Failure,
        Cancelled,
        Unknown,
    };
    Q_ENUM(Value)

    // A run or job is in progress while its status (any letter case) is "in_progress" (Gitea's
    // word while it executes), "running", "queued" or "waiting"; for a single job, "waiting"
    // does not count.

    /// The summary of a pull request's runs, in the server's order (newest first): the first run
    /// still in progress, failed or cancelled decides; otherwise any success makes it a success.
    static Value from(const QList<ActionRun> &runs);
    /// One run on its own: in progress, else its conclusion.
    static Value forRun(const ActionRun &run);
    /// One job on its own. Unlike a run, a "waiting" job is not counted as running.
    static Value forJob(const ActionJob &job);
    /// The job concluded "failure" or "cancelled" (any case): it can be re-run.
    static bool jobFailed(const ActionJob &job);
    /// The job is past "queued", "in_progress", "running", "waiting" and "requested" and has a
    /// conclusion: it has a log to show.
    static bool jobHasRun(const ActionJob &job);

    /// "running", "success", "failure", "cancelled" or "unknown": how a summary is stored.
    static QString name(Value value);
    static std::optional<Value> fromName(const QString &name);
};

class ReviewState
{
    Q_GADGET

public:
    enum Value {
        Approved,
        ChangesRequested,
        NeedsReview,
        Unknown,
    };
    Q_ENUM(Value)

    /// The earliest approving or change-requesting review in the server's order decides, even if
    /// its author later changed their mind; reviews without either verdict need review; no
    /// reviews at all are unknown.
    static Value from(const QList<PullReview> &reviews);
};

} // namespace kestrine
