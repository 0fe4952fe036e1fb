#include "summaries.h"

namespace kestrine {
namespace {

QString lower(const std::optional<QString> &text)
{
    return text.value_or(QString()).toLower();
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
        const QString status = lower(run.status);
        if (status == u"running" || status == u"queued" || status == u"waiting")
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
    const QString status = lower(run.status);
    if (status == u"running" || status == u"queued" || status == u"waiting")
        return Running;
    return fromConclusion(lower(run.conclusion)).value_or(Unknown);
}

CIStatus::Value CIStatus::forJob(const ActionJob &job)
{
    const QString status = job.status.toLower();
    if (status == u"running" || status == u"queued")
        return Running;
    return fromConclusion(lower(job.conclusion)).value_or(Unknown);
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
