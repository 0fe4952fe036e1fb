#pragma once

#include <QDateTime>
#include <QLocale>
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace kestrine::ui {

/// A moment's time of day on the user's clock, to the second, written as the user's locale writes
/// times: "14:05:09" in German and under the C locale, "2:05:09 PM" in American English.
class TimeOfDay : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit TimeOfDay(QObject *parent = nullptr);

    /// `date` in local time, in `locale`'s long time format without its time zone.
    static QString format(const QDateTime &date, const QLocale &locale);
    /// The same in the locale of the user's times (LC_TIME, as Qt reads it); "" for no date.
    Q_INVOKABLE QString of(const QDateTime &date) const;
};

} // namespace kestrine::ui
