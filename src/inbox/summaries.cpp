#include "summaries.h"

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

} // namespace kestrine
