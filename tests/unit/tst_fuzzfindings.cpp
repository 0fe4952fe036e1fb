// Inputs the fuzz targets of fuzz/ once found a fault with, kept as ordinary tests so that the
// fault stays fixed in every build, sanitizers or not.

#include "api.h"
#include "logstore.h"

#include <QtTest>

using namespace kestrine;

class TestFuzzFindings : public QObject
{
    Q_OBJECT

private slots:
    // fuzz_dates: "0001-01-01T00:00:00+09:00" was accepted as an instant in the year before 1,
    // which is written as "-0001-12-31T15:00:00Z", a text no reader accepts. The log store lost
    // such an entry on its next load; QML got an unreadable date.
    void dateBeforeYearOneInUtcIsRefused()
    {
        QVERIFY(
            !InternetDate::parse(u"0001-01-01T00:00:00+09:00", InternetDate::Fraction::Forbidden));
        QVERIFY(!InternetDate::parse(u"0001-01-01T00:59:59.999+01:00",
                                     InternetDate::Fraction::Required));
        QVERIFY(!InternetDate::parseEither(u"0001-01-01T00:00:00+00:01"));
    }

    void dateAfterYear9999InUtcIsRefused()
    {
        QVERIFY(!InternetDate::parseEither(u"9999-12-31T23:59:59-01:00"));
        QVERIFY(!InternetDate::parseEither(u"9999-12-31T23:00:00.5-01:00"));
    }

    void datesAtTheEdgesOfTheRangeStillReadAndWriteBack()
    {
        // Go's zero time, which Gitea writes for times it does not have.
        for (const QString &text :
             {QStringLiteral("0001-01-01T00:00:00Z"), QStringLiteral("0001-01-01T01:00:00+01:00"),
              QStringLiteral("9999-12-31T23:59:59Z"),
              QStringLiteral("9999-12-31T22:59:59-01:00")}) {
            const auto parsed = InternetDate::parseEither(text);
            QVERIFY2(parsed, qPrintable(text));
            const QString written = InternetDate::format(*parsed);
            QCOMPARE(InternetDate::parse(written, InternetDate::Fraction::Forbidden), parsed);
        }
    }

    void recordWithAnOutOfRangeDateFailsToDecodeWithTheDateRuleText()
    {
        const QByteArray json =
            R"({"id":1,"number":2,"title":"t","state":"open","created_at":"0001-01-01T00:00:00+09:00"})";
        try {
            decodeJson<PullRequest>(json);
            QFAIL("decoded a date that cannot be written back");
        } catch (const DecodeError &error) {
            QCOMPARE(error.description(),
                     QStringLiteral("Cannot decode date string 0001-01-01T00:00:00+09:00"));
        }
    }

    void storedLogKeepsEveryEntryItLoadedThroughTheNextSave()
    {
        const QByteArray stored = R"([{"t":"0001-01-01T00:00:00+09:00","l":"INFO","m":"gone"},)"
                                  R"({"t":"0001-01-01T00:00:00Z","l":"WARN","m":"zero"},)"
                                  R"({"t":"2024-05-01T12:20:30+02:00","l":"ERROR","m":"x"}])";
        const QList<LogEntry> loaded = LogStore::decode(stored);
        QCOMPARE(loaded.size(), 2);
        QCOMPARE(loaded[0].message, QStringLiteral("zero"));
        const QList<LogEntry> reloaded = LogStore::decode(LogStore::encode(loaded));
        QCOMPARE(reloaded.size(), loaded.size());
        for (qsizetype i = 0; i < loaded.size(); ++i) {
            QCOMPARE(reloaded[i].timestamp, loaded[i].timestamp);
            QCOMPARE(reloaded[i].message, loaded[i].message);
        }
    }

    // fuzz_records: the quick JSON reader multiplied a number of 70 digits out before finding it
    // too long for the plain case, overflowing a signed integer on the way (undefined behaviour
    // that the sanitizers stop at). It now counts the digits first, and the number fails to decode
    // as an integer as it always did.
    void integerOfSeventyDigitsIsLeftToQtWithoutOverflowing()
    {
        const QByteArray json =
            "[{\"additions\":1,\"changes\":2,\"deletions\":" + QByteArray(69, '1') +
            "6,\"filename\":\"a.go\",\"status\":\"modified\"}]";
        QVERIFY(!jsondetail::tryReadJson<QList<ChangedFile>>(json));
        try {
            decodeJson<QList<ChangedFile>>(json);
            QFAIL("a number beyond 64 bits was taken as an integer");
        } catch (const DecodeError &error) {
            QCOMPARE(error.description(),
                     QStringLiteral("Expected an integer at [0].deletions but found a number."));
        }
    }
};

QTEST_GUILESS_MAIN(TestFuzzFindings)
#include "tst_fuzzfindings.moc"
