#include "summaries.h"

#include <QCoreApplication>
#include <QUrl>
#include <algorithm>

namespace kestrine {
namespace {

QString lower(const std::optional<QString> &text)
{
    return text.value_or(QString()).toLower();
}

/// A run or job that is executing: Gitea says "in_progress" (for its running and cancelling
/// states); "running" is what other servers and older data say.
bool isExecuting(const QString &status)
{
    return status == u"in_progress" || status == u"running";
}

/// Not finished: executing, "queued" for a runner, or "waiting" while blocked.
bool isUnfinished(const QString &status)
{
    return isExecuting(status) || status == u"queued" || status == u"waiting";
}

/// Whether `text` holds an explicit directional formatting character: an embedding, override or
/// isolate, or the end of one (U+202A to U+202E, U+2066 to U+2069).
bool hasDirectionalFormatting(const QString &text)
{
    return std::any_of(text.cbegin(), text.cend(), [](QChar c) {
        const char16_t u = c.unicode();
        return (u >= 0x202A && u <= 0x202E) || (u >= 0x2066 && u <= 0x2069);
    });
}

std::optional<CIStatus::Value> fromConclusion(const QString &conclusion)
{
    if (conclusion == u"success")
        return CIStatus::Success;
    if (conclusion == u"failure")
        return CIStatus::Failure;
    if (conclusion == u"cancelled")
        return CIStatus::Cancelled;
    return std::nullopt;
}

} // namespace

CIStatus::Value CIStatus::from(const QList<ActionRun> &runs)
{
    bool seenSuccess = false;
    for (const ActionRun &run : runs) {
        if (isUnfinished(lower(run.status)))
            return Running;
        const auto concluded = fromConclusion(lower(run.conclusion));
        if (concluded == Success)
            seenSuccess = true;
        else if (concluded)
            return *concluded;
    }
    return seenSuccess ? Success : Unknown;
}

CIStatus::Value CIStatus::forRun(const ActionRun &run)
{
    if (isUnfinished(lower(run.status)))
        return Running;
    return fromConclusion(lower(run.conclusion)).value_or(Unknown);
}

CIStatus::Value CIStatus::forJob(const ActionJob &job)
{
    const QString status = job.status.toLower();
    if (isExecuting(status) || status == u"queued")
        return Running;
    return fromConclusion(lower(job.conclusion)).value_or(Unknown);
}

CIStatus::Value CIStatus::fromStatuses(const QList<CommitStatus> &statuses)
{
    if (statuses.isEmpty())
        return Unknown;
    bool pending = false;
    bool allPassed = true;
    for (const CommitStatus &status : statuses) {
        const Value value = forStatus(status);
        if (value == Failure)
            return Failure;
        pending = pending || lower(status.status) == u"pending";
        allPassed = allPassed && (value == Success || lower(status.status) == u"warning");
    }
    if (pending)
        return Running;
    return allPassed ? Success : Unknown;
}

CIStatus::Value CIStatus::forStatus(const CommitStatus &status)
{
    const QString state = lower(status.status);
    if (state == u"success")
        return Success;
    if (state == u"failure" || state == u"error")
        return Failure;
    if (state == u"pending" || state == u"warning")
        return Running;
    return Unknown;
}

QList<CommitStatus> CIStatus::otherThanActions(const QList<CommitStatus> &statuses,
                                               const Repository &repo)
{
    const QString actionsPages =
        u'/' + repo.owner.login + u'/' + repo.name + QStringLiteral("/actions/runs/");
    QList<CommitStatus> others;
    for (const CommitStatus &status : statuses) {
        const QString path = QUrl(status.targetUrl.value_or(QString())).path();
        if (!path.contains(actionsPages, Qt::CaseInsensitive))
            others.append(status);
    }
    return others;
}

bool CIStatus::jobFailed(const ActionJob &job)
{
    const QString conclusion = lower(job.conclusion);
    return conclusion == u"failure" || conclusion == u"cancelled";
}

bool CIStatus::jobHasRun(const ActionJob &job)
{
    const QString status = job.status.toLower();
    if (isUnfinished(status) || status == u"requested")
        return false;
    return !lower(job.conclusion).isEmpty();
}

QString CIStatus::name(Value value)
{
    switch (value) {
    case Running:
        return QStringLiteral("running");
    case Success:
        return QStringLiteral("success");
    case Failure:
        return QStringLiteral("failure");
    case Cancelled:
        return QStringLiteral("cancelled");
    case Unknown:
        break;
    }
    return QStringLiteral("unknown");
}

std::optional<CIStatus::Value> CIStatus::fromName(const QString &name)
{
    for (Value value : {Running, Success, Failure, Cancelled, Unknown}) {
        if (CIStatus::name(value) == name)
            return value;
    }
    return std::nullopt;
}

ReviewState::Value ReviewState::from(const QList<PullReview> &reviews)
{
    if (reviews.isEmpty())
        return Unknown;
    for (const PullReview &review : reviews) {
        const QString state = review.state.toUpper();
        if (state == u"APPROVED")
            return Approved;
        if (state == u"REQUEST_CHANGES")
            return ChangesRequested;
    }
    return NeedsReview;
}

QString ReviewState::badgeText(Value value)
{
    switch (value) {
    case Approved:
        return QCoreApplication::translate("ReviewState", "Approved", "review badge");
    case ChangesRequested:
        //: The badge of a pull request whose reviewer requested changes.
        return QCoreApplication::translate("ReviewState", "Changes", "review badge");
    case NeedsReview:
        return QCoreApplication::translate("ReviewState", "Needs review", "review badge");
    case Unknown:
        break;
    }
    return {};
}

ReviewVerdict ReviewVerdict::of(const PullReview &review)
{
    switch (ReviewState::from({review})) {
    case ReviewState::Approved:
        return {ReviewState::Approved, QStringLiteral("✅"), QStringLiteral("approved")};
    case ReviewState::ChangesRequested:
        return {ReviewState::ChangesRequested, QStringLiteral("🔴"),
                QStringLiteral("requested changes")};
    default:
        return {ReviewState::NeedsReview, QStringLiteral("💬"), QStringLiteral("reviewed")};
    }
}

QString ReviewVerdict::line(const QString &author) const
{
    // One sentence per verdict, so that a language can put the author where it belongs.
    QString sentence;
    switch (state) {
    case ReviewState::Approved:
        sentence = QCoreApplication::translate("ReviewVerdict", "%1 approved");
        break;
    case ReviewState::ChangesRequested:
        sentence = QCoreApplication::translate("ReviewVerdict", "%1 requested changes");
        break;
    default:
        sentence = QCoreApplication::translate("ReviewVerdict", "%1 reviewed");
        break;
    }
    return emoji + u' ' + sentence.arg(author);
}

QString authorName(const std::optional<PRUser> &user)
{
    //: Shown instead of the login of a comment's or review's author when the server names nobody.
    return user ? user->login : QCoreApplication::translate("Summaries", "unknown", "author");
}

QString runDisplayName(const ActionRun &run)
{
    //: Shown instead of the name of a workflow run that has none.
    return run.name.value_or(QCoreApplication::translate("Summaries", "workflow"));
}

QString isolateDirection(const QString &text)
{
    if (!hasDirectionalFormatting(text))
        return text;
    constexpr char16_t firstStrongIsolate = 0x2068;
    constexpr char16_t popDirectionalIsolate = 0x2069;
    // An isolate ends at the first end-of-isolate that is not the text's own: the text may not
    // end ours early, so its unmatched ends go, and the isolates it leaves open are ended before
    // ours.
    QString isolated(1, QChar(firstStrongIsolate));
    int open = 0;
    for (const QChar c : text) {
        if (c.unicode() >= 0x2066 && c.unicode() <= firstStrongIsolate) {
            ++open;
        } else if (c.unicode() == popDirectionalIsolate) {
            if (open == 0)
                continue;
            --open;
        }
        isolated += c;
    }
    isolated += QString(open + 1, QChar(popDirectionalIsolate));
    return isolated;
}

} // namespace kestrine
