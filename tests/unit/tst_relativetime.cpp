// How times read on screen: relative to now ("2 hr. ago", "5 minutes ago") in the language of the
// test's locale, English (with the English catalogue's plural forms) or, as tst_relativetime_de,
// German ("vor 2 Std."); and as a time of day in the locale's own clock format.

#include "relativetime.h"
#include "timeofday.h"
#include "translations.h"

#include <QtTest>

using kestrine::ui::RelativeTime;
using kestrine::ui::TimeOfDay;

class TestRelativeTime : public QObject
{
    Q_OBJECT

private:
    /// The catalogue run-isolated's locale gave: "en" or "de".
    QString m_language;

    void germanRows()
    {
        QTest::newRow("now") << qint64(0) << "in 0 Sek."
                             << "in 0 Sekunden";
        QTest::newRow("one second") << qint64(1) << "vor 1 Sek."
                                    << "vor 1 Sekunde";
        QTest::newRow("five minutes") << qint64(5 * 60) << "vor 5 Min."
                                      << "vor 5 Minuten";
        QTest::newRow("one hour") << qint64(3600) << "vor 1 Std."
                                  << "vor 1 Stunde";
        QTest::newRow("two hours") << qint64(2 * 3600) << "vor 2 Std."
                                   << "vor 2 Stunden";
        QTest::newRow("one day") << qint64(86400) << "vor 1 Tag"
                                 << "vor 1 Tag";
        QTest::newRow("three days") << qint64(3 * 86400) << "vor 3 Tagen"
                                    << "vor 3 Tagen";
        QTest::newRow("two weeks") << qint64(14 * 86400) << "vor 2 Wo."
                                   << "vor 2 Wochen";
        QTest::newRow("one month") << qint64(30 * 86400) << "vor 1 Mon."
                                   << "vor 1 Monat";
        QTest::newRow("four years") << qint64(4 * 365 * 86400) << "vor 4 J."
                                    << "vor 4 Jahren";
        QTest::newRow("three hours ahead") << qint64(-3 * 3600) << "in 3 Std."
                                           << "in 3 Stunden";
        QTest::newRow("a day ahead") << qint64(-86400) << "in 1 Tag"
                                     << "in 1 Tag";
    }

private slots:
    void initTestCase()
    {
        m_language = kestrine::i18n::installTranslations();
        QCOMPARE(m_language, qEnvironmentVariable("LANG").startsWith(u"de_")
                                 ? QStringLiteral("de")
                                 : QStringLiteral("en"));
    }

    void readsInTheUsersLanguage_data()
    {
        QTest::addColumn<qint64>("secondsAgo");
        QTest::addColumn<QString>("abbreviated");
        QTest::addColumn<QString>("full");
        if (m_language == u"de") {
            germanRows();
            return;
        }
        // "Now" counts as past only once a whole second has gone.
        QTest::newRow("now") << qint64(0) << "in 0 sec."
                             << "in 0 seconds";
        QTest::newRow("one second") << qint64(1) << "1 sec. ago"
                                    << "1 second ago";
        QTest::newRow("59 seconds") << qint64(59) << "59 sec. ago"
                                    << "59 seconds ago";
        QTest::newRow("one minute") << qint64(60) << "1 min. ago"
                                    << "1 minute ago";
        QTest::newRow("five minutes") << qint64(5 * 60 + 30) << "5 min. ago"
                                      << "5 minutes ago";
        QTest::newRow("one hour") << qint64(3600) << "1 hr. ago"
                                  << "1 hour ago";
        QTest::newRow("two hours") << qint64(2 * 3600) << "2 hr. ago"
                                   << "2 hours ago";
        QTest::newRow("one day") << qint64(86400) << "1 day ago"
                                 << "1 day ago";
        QTest::newRow("six days") << qint64(6 * 86400) << "6 days ago"
                                  << "6 days ago";
        QTest::newRow("one week") << qint64(7 * 86400) << "1 wk. ago"
                                  << "1 week ago";
        QTest::newRow("three weeks") << qint64(21 * 86400) << "3 wk. ago"
                                     << "3 weeks ago";
        QTest::newRow("one month") << qint64(30 * 86400) << "1 mo. ago"
                                   << "1 month ago";
        QTest::newRow("eleven months") << qint64(335 * 86400) << "11 mo. ago"
                                       << "11 months ago";
        QTest::newRow("one year") << qint64(365 * 86400) << "1 yr. ago"
                                  << "1 year ago";
        QTest::newRow("two years") << qint64(2 * 365 * 86400) << "2 yr. ago"
                                   << "2 years ago";
        QTest::newRow("one second ahead") << qint64(-1) << "in 1 sec."
                                          << "in 1 second";
        QTest::newRow("five minutes ahead") << qint64(-5 * 60) << "in 5 min."
                                            << "in 5 minutes";
        QTest::newRow("a day ahead") << qint64(-86400) << "in 1 day"
                                     << "in 1 day";
        QTest::newRow("two days ahead") << qint64(-2 * 86400) << "in 2 days"
                                        << "in 2 days";
    }

    void readsInTheUsersLanguage()
    {
        QFETCH(qint64, secondsAgo);
        QFETCH(QString, abbreviated);
        QFETCH(QString, full);
        const QDateTime now(QDate(2024, 5, 1), QTime(12, 0), Qt::UTC);
        const QDateTime then = now.addSecs(-secondsAgo);
        QCOMPARE(RelativeTime::format(then, now, RelativeTime::Style::Abbreviated), abbreviated);
        QCOMPARE(RelativeTime::format(then, now, RelativeTime::Style::Full), full);
    }

    void qmlTakesDatesAndDateTexts()
    {
        const RelativeTime relative;
        const QDateTime now(QDate(2024, 5, 1), QTime(12, 0), Qt::UTC);
        const QDateTime twoHoursBefore = now.addSecs(-2 * 3600);
        QCOMPARE(relative.abbreviated(QStringLiteral("2024-05-01T10:00:00Z"), now),
                 RelativeTime::format(twoHoursBefore, now, RelativeTime::Style::Abbreviated));
        QCOMPARE(relative.full(QVariant(twoHoursBefore), now),
                 RelativeTime::format(twoHoursBefore, now, RelativeTime::Style::Full));
        QVERIFY(!relative.full(QVariant(twoHoursBefore), now).isEmpty());
        QCOMPARE(relative.abbreviated(QStringLiteral("yesterday"), now), QString());
    }

    void timeOfDayFollowsTheLocalesClock_data()
    {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("time");
        // The C locale's is the log screen's format before it followed the locale.
        QTest::newRow("C") << "C"
                           << "14:05:09";
        QTest::newRow("German") << "de_DE"
                                << "14:05:09";
        QTest::newRow("American English") << "en_US"
                                          << "2:05:09 PM";
        QTest::newRow("Finnish") << "fi_FI"
                                 << "14.05.09";
        // The zone of the long format goes, with the brackets around it.
        QTest::newRow("Cantonese") << "yue_HK"
                                   << "下午2:05:09";
    }

    void timeOfDayFollowsTheLocalesClock()
    {
        QFETCH(QString, locale);
        QFETCH(QString, time);
        const QDateTime afternoon(QDate(2024, 5, 1), QTime(14, 5, 9), Qt::LocalTime);
        QCOMPARE(TimeOfDay::format(afternoon, QLocale(locale)), time);
    }

    void timeOfDayIsOnTheUsersClock()
    {
        // The C locale's clock and the German one write it alike.
        const QDateTime afternoon(QDate(2024, 5, 1), QTime(14, 5, 9), Qt::LocalTime);
        QCOMPARE(TimeOfDay().of(afternoon), QStringLiteral("14:05:09"));
        const QDateTime utc(QDate(2024, 5, 1), QTime(14, 5, 9), Qt::UTC);
        QCOMPARE(TimeOfDay::format(utc, QLocale::c()),
                 utc.toLocalTime().time().toString(QStringLiteral("HH:mm:ss")));
        QCOMPARE(TimeOfDay().of(QDateTime()), QString());
    }
};

QTEST_GUILESS_MAIN(TestRelativeTime)
#include "tst_relativetime.moc"
