#include "relativetime.h"

#include "dates.h"

#include <QCoreApplication>
#include <array>
#include <optional>

namespace kestrine::ui {
namespace {

/// One unit of time with its four sentences, as plural forms of the count (%n): past and future,
/// abbreviated and full. Whole sentences, not words put together, since languages put the count,
/// the unit and the direction in orders of their own ("vor 5 Min.").
struct Unit
{
    qint64 seconds;
    const char *abbreviatedPast;
    const char *abbreviatedFuture;
    const char *fullPast;
    const char *fullFuture;
};

// Largest first; seconds last, so that every difference finds a unit.
constexpr std::array<Unit, 7> units{{
    {365 * 86400, QT_TRANSLATE_N_NOOP("RelativeTime", "%n yr. ago"),
     QT_TRANSLATE_N_NOOP("RelativeTime", "in %n yr."),
     QT_TRANSLATE_N_NOOP("RelativeTime", "%n year(s) ago"),
     QT_TRANSLATE_N_NOOP("RelativeTime", "in %n year(s)")},
    {30 * 86400, QT_TRANSLATE_N_NOOP("RelativeTime", "%n mo. ago"),
     QT_TRANSLATE_N_NOOP("RelativeTime", "in %n mo."),
     QT_TRANSLATE_N_NOOP("RelativeTime", "%n month(s) ago"),
     QT_TRANSLATE_N_NOOP("RelativeTime", "in %n month(s)")},
    {7 * 86400, QT_TRANSLATE_N_NOOP("RelativeTime", "%n wk. ago"),
     QT_TRANSLATE_N_NOOP("RelativeTime", "in %n wk."),
     QT_TRANSLATE_N_NOOP("RelativeTime", "%n week(s) ago"),
     QT_TRANSLATE_N_NOOP("RelativeTime", "in %n week(s)")},
    // A day has no shorter word: both styles say "1 day ago".
    {86400, QT_TRANSLATE_N_NOOP("RelativeTime", "%n day(s) ago"),
     QT_TRANSLATE_N_NOOP("RelativeTime", "in %n day(s)"),
     QT_TRANSLATE_N_NOOP("RelativeTime", "%n day(s) ago"),
     QT_TRANSLATE_N_NOOP("RelativeTime", "in %n day(s)")},
    {3600, QT_TRANSLATE_N_NOOP("RelativeTime", "%n hr. ago"),
     QT_TRANSLATE_N_NOOP("RelativeTime", "in %n hr."),
     QT_TRANSLATE_N_NOOP("RelativeTime", "%n hour(s) ago"),
     QT_TRANSLATE_N_NOOP("RelativeTime", "in %n hour(s)")},
    {60, QT_TRANSLATE_N_NOOP("RelativeTime", "%n min. ago"),
     QT_TRANSLATE_N_NOOP("RelativeTime", "in %n min."),
     QT_TRANSLATE_N_NOOP("RelativeTime", "%n minute(s) ago"),
     QT_TRANSLATE_N_NOOP("RelativeTime", "in %n minute(s)")},
    {1, QT_TRANSLATE_N_NOOP("RelativeTime", "%n sec. ago"),
     QT_TRANSLATE_N_NOOP("RelativeTime", "in %n sec."),
     QT_TRANSLATE_N_NOOP("RelativeTime", "%n second(s) ago"),
     QT_TRANSLATE_N_NOOP("RelativeTime", "in %n second(s)")},
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
    // A time not yet reached (a clock ahead of ours) reads forward; "now" itself counts as past
    // only when a whole second has gone, as the platform formatter has it: "in 0 sec.".
    const bool abbreviated = style == Style::Abbreviated;
    const char *sentence = past && magnitude > 0
                               ? (abbreviated ? unit->abbreviatedPast : unit->fullPast)
                               : (abbreviated ? unit->abbreviatedFuture : unit->fullFuture);
    // Dates are years 1 to 9999, so a count of any unit fits an int.
    return QCoreApplication::translate("RelativeTime", sentence, nullptr, int(count));
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
