// The date rule on arbitrary text, held against a plain description of the two accepted forms:
// "YYYY-MM-DDTHH:MM:SS" with a fraction (required or forbidden), then "Z" or "+hh:mm"/"-hh:mm".
// - whatever is accepted has that shape, and everything of that shape with real calendar values
//   whose UTC year has four digits is accepted;
// - the either-rule tries the fraction first, then the form without;
// - the result is a valid UTC instant whose milliseconds are the fraction's first three digits;
// - its written form (what the log stores) is accepted again and names the same second.

#include "dates.h"
#include "fuzzsupport.h"

#include <QRegularExpression>

using namespace kestrine;
using namespace kestrine::fuzz;

namespace {

const QRegularExpression &shape()
{
    static const QRegularExpression expression(
        QStringLiteral("^([0-9]{4})-([0-9]{2})-([0-9]{2})T([0-9]{2}):([0-9]{2}):([0-9]{2})"
                       "(?:\\.([0-9]+))?(?:Z|([+-])([0-9]{2}):([0-9]{2}))\\z"));
    return expression;
}

/// Whether `text` has one of the two shapes with values a calendar and a clock can hold.
bool acceptable(const QString &text, InternetDate::Fraction fraction)
{
    const QRegularExpressionMatch match = shape().match(text);
    if (!match.hasMatch())
        return false;
    const bool hasFraction = match.capturedLength(7) > 0;
    if (hasFraction != (fraction == InternetDate::Fraction::Required))
        return false;
    auto number = [&](int group) {
        return match.captured(group).toInt();
    };
    if (!QDate::isValid(number(1), number(2), number(3)))
        return false;
    if (number(4) > 23 || number(5) > 59 || number(6) > 59)
        return false;
    int offsetSeconds = 0;
    if (match.capturedLength(8) > 0) {
        if (number(9) > 23 || number(10) > 59)
            return false;
        offsetSeconds = (match.captured(8) == u"-" ? -1 : 1) * (number(9) * 3600 + number(10) * 60);
    }
    // The instant must have a four-digit year in UTC, or it could not be written back.
    const QDateTime utc = QDateTime(QDate(number(1), number(2), number(3)),
                                    QTime(number(4), number(5), number(6)), Qt::UTC)
                              .addSecs(-offsetSeconds);
    return utc.date().year() >= 1 && utc.date().year() <= 9999;
}

int fractionMilliseconds(const QString &text)
{
    const QRegularExpressionMatch match = shape().match(text);
    const QString digits = (match.captured(7) + QStringLiteral("000")).left(3);
    return digits.toInt();
}

void checkForm(const QString &text, InternetDate::Fraction fraction)
{
    const std::optional<QDateTime> parsed = InternetDate::parse(text, fraction);
    const bool expected = acceptable(text, fraction);
    check(parsed.has_value() == expected,
          expected ? "a well-formed date is accepted" : "only well-formed dates are accepted",
          text);
    if (!parsed)
        return;
    check(parsed->isValid() && parsed->timeSpec() == Qt::UTC, "the result is a UTC instant", text);
    check(parsed->time().msec() == fractionMilliseconds(text),
          "milliseconds are the fraction's first three digits", text);

    const QString written = InternetDate::format(*parsed);
    const std::optional<QDateTime> reread =
        InternetDate::parse(written, InternetDate::Fraction::Forbidden);
    check(reread.has_value(), "the written form of an accepted date is accepted again",
          text + QStringLiteral(" -> ") + written);
    check(*reread == parsed->addMSecs(-parsed->time().msec()), "and names the same whole second",
          text + QStringLiteral(" -> ") + written);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(bytes(data, size));
    checkForm(text, InternetDate::Fraction::Required);
    checkForm(text, InternetDate::Fraction::Forbidden);

    const auto withFraction = InternetDate::parse(text, InternetDate::Fraction::Required);
    const auto withoutFraction = InternetDate::parse(text, InternetDate::Fraction::Forbidden);
    check(!(withFraction && withoutFraction), "no text has both forms", text);
    const auto either = InternetDate::parseEither(text);
    check(either == (withFraction ? withFraction : withoutFraction),
          "the rule takes the fraction form first, then the other", text);
    return 0;
}
