#pragma once

// One word for many records: the CI state of a pull request's head commit and the verdict of its
// reviews, and the words a single review, run or author is shown with. Every screen, kestrine-cli
// and the background check use these rules, so a pull request reads the same everywhere.

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

    /// The summary of a commit's statuses from CI other than Actions, for a head commit without
    /// Actions runs: any "failure" or "error" fails it; else any "pending" keeps it running; else
    /// it succeeded when every status is "success" or "warning"; no statuses, or a word no CI
    /// sends, tell nothing.
    static Value fromStatuses(const QList<CommitStatus> &statuses);
    /// One status on its own, as its circle shows it: "warning" is orange like a running check.
    static Value forStatus(const CommitStatus &status);
    /// The statuses Gitea Actions posted itself (their target is a page under this repository's
    /// "/OWNER/REPO/actions/runs/", whatever the host: Gitea writes it with the address it is
    /// configured with, not the one the user typed) are left out: the runs show them already.
    static QList<CommitStatus> otherThanActions(const QList<CommitStatus> &statuses,
                                                const Repository &repo);

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
    /// The word a badge shows for `value`, in the user's language: "Approved", "Changes" or
    /// "Needs review"; "" for Unknown, which shows no badge.
    static QString badgeText(Value value);
};

/// How one review reads in a conversation: "✅ alice approved", "🔴 alice requested changes",
/// "💬 alice reviewed" for anything else.
struct ReviewVerdict
{
    ReviewState::Value state = ReviewState::NeedsReview;
    QString emoji;
    /// In English ("approved"), whatever the user's language: a word of the data, not of a screen.
    QString verb;

    static ReviewVerdict of(const PullReview &review);
    /// The emoji, then the author with the verb in the user's language: in English one space apart.
    /// `author` is put in as given: a screen sets a stranger's text apart first (see
    /// isolateDirection).
    QString line(const QString &author) const;
};

/// The login a comment or review is shown under; "unknown" (in the user's language) when the
/// server names nobody.
QString authorName(const std::optional<PRUser> &user);

/// The name a run is shown under; "workflow" (in the user's language) when it has none.
QString runDisplayName(const ActionRun &run);

/// Keeps a server's text from turning the words around it. A line such as "🔴 <login> requested
/// changes" puts a stranger's text between the app's own words; a right-to-left override left open
/// in it (U+202E) would draw the rest of the line backwards. Such a text is set apart as a
/// directional isolate: `text` between U+2068 FIRST STRONG ISOLATE and U+2069 POP DIRECTIONAL
/// ISOLATE when it holds directional formatting, with the ends of isolates it never opened left out
/// and those it leaves open ended; `text` itself otherwise.
QString isolateDirection(const QString &text);

} // namespace kestrine
