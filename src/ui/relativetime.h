#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

namespace kestrine::ui {

/// Times relative to now, as a phone shows them: "2 hr. ago" in lists, "5 minutes ago" in the
/// conversation ("vor 2 Std.", "vor 5 Minuten" in German). The largest unit that fits whole is
/// used (seconds, minutes, hours, days, weeks, months of 30 days, years of 365 days), counted
/// down; later times read "in 5 min.".
///
/// For QML, `now` advances every 30 seconds, so that bindings written as
/// `RelativeTime.abbreviated(date, RelativeTime.now)` stay current on a screen left open.
class RelativeTime : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QDateTime now READ now NOTIFY nowChanged)

public:
    enum class Style {
        /// "2 hr. ago", "1 day ago", "3 wk. ago"
        Abbreviated,
        /// "2 hours ago", "1 day ago", "3 weeks ago"
        Full,
    };

    explicit RelativeTime(QObject *parent = nullptr);

    QDateTime now() const { return m_now; }

    /// In the language of the installed catalogue; English needs its own for the plural forms.
    static QString format(const QDateTime &date, const QDateTime &now, Style style);

    /// `date` is a date, or a record's date text ("2024-05-01T10:20:30Z"); "" when it is invalid,
    /// empty or unreadable.
    Q_INVOKABLE QString abbreviated(const QVariant &date, const QDateTime &now) const;
    Q_INVOKABLE QString full(const QVariant &date, const QDateTime &now) const;

signals:
    void nowChanged();

private:
    QDateTime m_now;
    QTimer m_tick;
};

} // namespace kestrine::ui
