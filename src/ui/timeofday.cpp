#include "timeofday.h"

#include <QRegularExpression>

namespace kestrine::ui {
namespace {

/// A locale's long time format without its time zone ("HH:mm:ss t" becomes "HH:mm:ss"). The long
/// format is the one with seconds everywhere, which a log needs; the short one has none in most
/// locales. The zone is its last field, bare or in brackets ("H.mm:ss (t)", "APh:mm:ss [t]").
QString timeFormatWithoutZone(const QLocale &locale)
{
    static const QRegularExpression zone(QStringLiteral("\\s*[\\[(]?t+[\\])]?\\s*$"));
    QString format = locale.timeFormat(QLocale::LongFormat);
    format.remove(zone);
    return format;
}

} // namespace

TimeOfDay::TimeOfDay(QObject *parent)
    : QObject(parent)
{}

QString TimeOfDay::format(const QDateTime &date, const QLocale &locale)
{
    if (!date.isValid())
        return {};
    return locale.toString(date.toLocalTime(), timeFormatWithoutZone(locale));
}

QString TimeOfDay::of(const QDateTime &date) const
{
    return format(date, QLocale());
}

} // namespace kestrine::ui
