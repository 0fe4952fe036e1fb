#include "dates.h"

namespace kestrine::InternetDate {
namespace {

/// A cursor over the text that reads fixed-width fields and exact separators.
class Reader
{
public:
    explicit Reader(QStringView text)
        : m_text(text)
    {}

    std::optional<int> digits(qsizetype count)
    {
        if (m_pos + count > m_text.size())
            return std::nullopt;
        int value = 0;
        for (qsizetype i = 0; i < count; ++i) {
            const QChar c = m_text[m_pos + i];
            if (c < u'0' || c > u'9')
                return std::nullopt;
            value = value * 10 + (c.unicode() - u'0');
        }
        m_pos += count;
        return value;
    }

    bool take(QChar expected)
    {
        if (m_pos >= m_text.size() || m_text[m_pos] != expected)
            return false;
        ++m_pos;
        return true;
    }

    bool peekIs(QChar c) const { return m_pos < m_text.size() && m_text[m_pos] == c; }
    bool atEnd() const { return m_pos == m_text.size(); }

    /// One or more digits of a fraction, as milliseconds (truncated).
    std::optional<int> fractionMilliseconds()
    {
        int millis = 0;
        int scale = 100;
        qsizetype count = 0;
        while (m_pos < m_text.size() && m_text[m_pos] >= u'0' && m_text[m_pos] <= u'9') {
            millis += scale * (m_text[m_pos].unicode() - u'0');
            scale /= 10;
            ++m_pos;
            ++count;
        }
        if (count == 0)
            return std::nullopt;
        return millis;
    }

private:
    QStringView m_text;
    qsizetype m_pos = 0;
};

} // namespace

std::optional<QDateTime> parse(QStringView text, Fraction fraction)
{
    Reader r(text);
    const auto year = r.digits(4);
    if (!year || !r.take(u'-'))
        return std::nullopt;
    const auto month = r.digits(2);
    if (!month || !r.take(u'-'))
        return std::nullopt;
    const auto day = r.digits(2);
    if (!day || !r.take(u'T'))
        return std::nullopt;
    const auto hour = r.digits(2);
    if (!hour || !r.take(u':'))
        return std::nullopt;
    const auto minute = r.digits(2);
    if (!minute || !r.take(u':'))
        return std::nullopt;
    const auto second = r.digits(2);
    if (!second)
        return std::nullopt;

    int millis = 0;
    if (fraction == Fraction::Required) {
        if (!r.take(u'.'))
            return std::nullopt;
        const auto fractionMillis = r.fractionMilliseconds();
        if (!fractionMillis)
            return std::nullopt;
        millis = *fractionMillis;
    } else if (r.peekIs(u'.')) {
        return std::nullopt;
    }

    int offsetSeconds = 0;
    if (!r.take(u'Z')) {
        int sign = 0;
        if (r.take(u'+'))
            sign = 1;
        else if (r.take(u'-'))
            sign = -1;
        else
            return std::nullopt;
        const auto offsetHours = r.digits(2);
        if (!offsetHours || !r.take(u':'))
            return std::nullopt;
        const auto offsetMinutes = r.digits(2);
        if (!offsetMinutes || *offsetHours > 23 || *offsetMinutes > 59)
            return std::nullopt;
        offsetSeconds = sign * (*offsetHours * 3600 + *offsetMinutes * 60);
    }
    if (!r.atEnd())
        return std::nullopt;

    const QDate date(*year, *month, *day);
    // A leap second (:60) is not representable; like most parsers we refuse it.
    if (!date.isValid() || *hour > 23 || *minute > 59 || *second > 59)
        return std::nullopt;
    const QTime time(*hour, *minute, *second, millis);
    const QDateTime local(date, time, Qt::OffsetFromUTC, offsetSeconds);
    if (!local.isValid())
        return std::nullopt;
    // Only instants that can be written back in this same form are taken: their UTC year must
    // have four digits. "0001-01-01T00:00:00+01:00" falls in the year before 1 and
    // "9999-12-31T23:00:00-01:00" in 10000; kept, they would be stored as texts (in the log, for
    // QML) that no reader accepts again.
    const QDateTime utc = local.toUTC();
    if (utc.date().year() < 1 || utc.date().year() > 9999)
        return std::nullopt;
    return utc;
}

std::optional<QDateTime> parseEither(QStringView text)
{
    if (auto withFraction = parse(text, Fraction::Required))
        return withFraction;
    return parse(text, Fraction::Forbidden);
}

QString format(const QDateTime &instant)
{
    return instant.toUTC().toString(QStringLiteral("yyyy-MM-dd'T'HH:mm:ss'Z'"));
}

} // namespace kestrine::InternetDate
