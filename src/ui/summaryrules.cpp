#include "summaryrules.h"

#include "changedfilemark.h"
#include "jsoncodec.h"
#include "records.h"
#include "summaries.h"

#include <QJSValue>
#include <QJsonValue>
#include <optional>

namespace kestrine::ui {
namespace {

template <class T>
std::optional<T> record(const QVariant &value)
{
    const QVariant plain = value.metaType() == QMetaType::fromType<QJSValue>()
                               ? value.value<QJSValue>().toVariant()
                               : value;
    try {
        return decodeJson<T>(QJsonValue::fromVariant(plain));
    } catch (const DecodeError &) {
        return std::nullopt;
    }
}

} // namespace

SummaryRules::SummaryRules(QObject *parent)
    : QObject(parent)
{}

int SummaryRules::runStatus(const QVariant &run) const
{
    const auto decoded = record<ActionRun>(run);
    return decoded ? CIStatus::forRun(*decoded) : CIStatus::Unknown;
}

int SummaryRules::jobStatus(const QVariant &job) const
{
    const auto decoded = record<ActionJob>(job);
    return decoded ? CIStatus::forJob(*decoded) : CIStatus::Unknown;
}

bool SummaryRules::jobFailed(const QVariant &job) const
{
    const auto decoded = record<ActionJob>(job);
    return decoded && CIStatus::jobFailed(*decoded);
}

bool SummaryRules::jobHasRun(const QVariant &job) const
{
    const auto decoded = record<ActionJob>(job);
    return decoded && CIStatus::jobHasRun(*decoded);
}

QString SummaryRules::fileMark(const QVariant &status) const
{
    // QML hands an absent status over as undefined or null.
    return changedFileMark(status.metaType() == QMetaType::fromType<QString>()
                               ? std::optional(status.toString())
                               : std::nullopt);
}

int SummaryRules::reviewState(const QVariant &review) const
{
    const auto decoded = record<PullReview>(review);
    return decoded ? ReviewState::from({*decoded}) : ReviewState::Unknown;
}

} // namespace kestrine::ui
