#include "relativetime.h"

#include "dates.h"

#include <array>
#include <optional>

namespace kestrine::ui {
namespace {

struct Unit
{
    qint64 seconds;
    const char *abbreviatedSingular;
    const char *abbreviatedPlural;
    const char *fullSingular;
    const char *fullPlural;
};

// Largest first; seconds last, so that every difference finds a unit.
constexpr std::array<Unit, 7> units{{
    {365 * 86400, "yr.", "yr.", "year", "years"},
    {30 * 86400, "mo.", "mo.", "month", "months"},
    {7 * 86400, "wk.", "wk.", "week", "weeks"},
    {86400, "day", "days", "day", "days"},
    {3600, "hr.", "hr.", "hour", "hours"},
    {60, "min.", "min.", "minute", "minutes"},
    {1, "sec.", "sec.", "second", "seconds"},
}};

/// A date handed over from QML: a date as it is (when valid), or a record's date text.
std::optional<QDateTime> dateOf(const QVariant &date)
{
    if (date.metaType() == QMetaType::fromType<QDateTime>()) {
        const QDateTime value = date.toDateTime();
        return value.isValid() ? std::optional(value) : std::nullopt;
    }
    if (date.metaType() == QMetaType::fromType<QString>())
        return InternetDate::parseEither(date.toString());
    return std::nullopt;
}

} // namespace

RelativeTime::RelativeTime(QObject *parent)
    : QObject(parent)
    , m_now(QDateTime::currentDateTimeUtc())
{
    m_tick.setInterval(30000);
    connect(&m_tick, &QTimer::timeout, this, [this] {
        m_now = QDateTime::currentDateTimeUtc();
        emit nowChanged();
    });
    m_tick.start();
}

QString RelativeTime::format(const QDateTime &date, const QDateTime &now, Style style)
{
    const qint64 difference = date.secsTo(now);
    const bool past = difference >= 0;
    const qint64 magnitude = past ? difference : -difference;
    const Unit *unit = &units.back();
    for (const Unit &candidate : units) {
        if (magnitude >= candidate.seconds) {
            unit = &candidate;
            break;
        }
    }
    const qint64 count = magnitude / unit->seconds;
    const bool one = count == 1;
    const char *word = style == Style::Abbreviated
                           ? (one ? unit->abbreviatedSingular : unit->abbreviatedPlural)
                           : (one ? unit->fullSingular : unit->fullPlural);
    const QString amount = QString::number(count) + u' ' + QLatin1StringView(word);
    // A time not yet reached (a clock ahead of ours) reads forward; "now" itself counts as past
    // only when a whole second has gone, as the platform formatter has it: "in 0 sec.".
    if (past && magnitude > 0)
        return amount + QStringLiteral(" ago");
    return QStringLiteral("in ") + amount;
}

QString RelativeTime::abbreviated(const QVariant &date, const QDateTime &now) const
{
    const auto read = dateOf(date);
    return read ? format(*read, now, Style::Abbreviated) : QString();
}

QString RelativeTime::full(const QVariant &date, const QDateTime &now) const
{
    const auto read = dateOf(date);
    return read ? format(*read, now, Style::Full) : QString();
}

} // namespace kestrine::ui
