#pragma once

#include <QDateTime>
#include <QString>
#include <optional>

namespace kestrine {

/// Internet date-times as Gitea writes them (RFC 3339): "2024-05-01T10:20:30Z",
/// "2024-05-01T12:20:30+02:00", optionally with fractional seconds ("...T10:20:30.123Z").
/// Deliberately stricter than Qt::ISODate, which would also take "2024-05-01".
namespace InternetDate {

enum class Fraction {
    Required, ///< only "...:30.5Z" forms
    Forbidden ///< only "...:30Z" forms
};

/// Parses `text` in one of the two forms; the result is in UTC. Fractions beyond milliseconds are
/// truncated, since QDateTime keeps milliseconds. An instant whose UTC year is not between 1 and
/// 9999 is refused, since format() could not write it in a form that parses again.
std::optional<QDateTime> parse(QStringView text, Fraction fraction);

/// The decoding rule for every date field: with fractional seconds first, then without.
std::optional<QDateTime> parseEither(QStringView text);

/// "2024-05-01T10:20:30Z": UTC, whole seconds (any fraction is dropped, not rounded).
QString format(const QDateTime &instant);

} // namespace InternetDate

/// Seconds between 1970-01-01 and 2001-01-01 00:00:00 UTC, the epoch of cached dates.
inline constexpr qint64 referenceDateOffsetSeconds = 978307200;

} // namespace kestrine
