// The internet date-time rule every date field of the API goes through.

#include "dates.h"

#include <QtTest>

using namespace kestrine;

class TestDates : public QObject
{
    Q_OBJECT

private slots:
    void acceptedFormsGiveTheSameInstantInUtc_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("utc");
        QTest::newRow("Z") << "2024-05-01T10:20:30Z"
                           << "2024-05-01T10:20:30.000Z";
        QTest::newRow("positive offset") << "2024-05-01T12:20:30+02:00"
                                         << "2024-05-01T10:20:30.000Z";
        QTest::newRow("negative offset") << "2024-05-01T04:50:30-05:30"
                                         << "2024-05-01T10:20:30.000Z";
        QTest::newRow("one fraction digit") << "2024-05-01T10:20:30.5Z"
                                            << "2024-05-01T10:20:30.500Z";
        QTest::newRow("microseconds truncated") << "2024-05-01T10:20:30.123456Z"
                                                << "2024-05-01T10:20:30.123Z";
        QTest::newRow("fraction with offset") << "2024-05-01T11:20:30.9+01:00"
                                              << "2024-05-01T10:20:30.900Z";
        QTest::newRow("day before in utc") << "2024-05-01T01:00:00+03:00"
                                           << "2024-04-30T22:00:00.000Z";
        QTest::newRow("leap day") << "2024-02-29T00:00:00Z"
                                  << "2024-02-29T00:00:00.000Z";
    }

    void acceptedFormsGiveTheSameInstantInUtc()
    {
        QFETCH(QString, text);
        QFETCH(QString, utc);
        const auto instant = InternetDate::parseEither(text);
        QVERIFY(instant);
        QCOMPARE(instant->timeSpec(), Qt::UTC);
        QCOMPARE(instant->toString(Qt::ISODateWithMs), utc);
    }

    void rejectedForms_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("date only") << "2024-05-01";
        QTest::newRow("blank instead of T") << "2024-05-01 10:20:30Z";
        QTest::newRow("no zone") << "2024-05-01T10:20:30";
        QTest::newRow("offset without colon") << "2024-05-01T10:20:30+0200";
        QTest::newRow("lowercase z") << "2024-05-01T10:20:30z";
        QTest::newRow("month 13") << "2024-13-01T10:20:30Z";
        QTest::newRow("February 30") << "2024-02-30T10:20:30Z";
        QTest::newRow("hour 24") << "2024-05-01T24:00:00Z";
        QTest::newRow("minute 60") << "2024-05-01T10:60:00Z";
        QTest::newRow("empty fraction") << "2024-05-01T10:20:30.Z";
        QTest::newRow("trailing text") << "2024-05-01T10:20:30Zjunk";
        QTest::newRow("short year") << "24-05-01T10:20:30Z";
        QTest::newRow("no seconds") << "2024-05-01T10:20Z";
        QTest::newRow("word") << "yesterday";
        QTest::newRow("empty") << "";
        QTest::newRow("non-ascii digits") << QStringLiteral("2024-05-0\u0661T10:20:30Z");
    }

    void rejectedForms()
    {
        QFETCH(QString, text);
        QVERIFY(!InternetDate::parseEither(text));
    }

    void eachParserTakesOnlyItsOwnForm()
    {
        using F = InternetDate::Fraction;
        QVERIFY(InternetDate::parse(u"2024-05-01T10:20:30.5Z", F::Required));
        QVERIFY(!InternetDate::parse(u"2024-05-01T10:20:30Z", F::Required));
        QVERIFY(InternetDate::parse(u"2024-05-01T10:20:30Z", F::Forbidden));
        QVERIFY(!InternetDate::parse(u"2024-05-01T10:20:30.5Z", F::Forbidden));
    }

    void formatWritesUtcWholeSecondsDroppingTheFraction()
    {
        const auto instant = InternetDate::parseEither(u"2024-05-01T12:20:30.9+02:00");
        QVERIFY(instant);
        QCOMPARE(InternetDate::format(*instant), QStringLiteral("2024-05-01T10:20:30Z"));
    }
};

QTEST_GUILESS_MAIN(TestDates)
#include "tst_dates.moc"
