// The quick reader against Qt's parser. Whatever the text, the reader either gives up or gives
// exactly what decoding through Qt's parser gives, and it never takes a text Qt's parser refuses
// or the decoder rejects. It must also really take the plain case: Gitea's own answers, with
// escapes, non-ASCII text and every kind of value in the keys the records do not read.

#include "fixtures.h"
#include "records.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>
#include <random>

using namespace kestrine;

namespace {

/// What decoding through Qt's parser makes of `bytes`: the value, or nothing when it fails.
template <class T>
std::optional<T> decodeThroughQt(const QByteArray &bytes)
{
    try {
        const jsondetail::CodingPath root;
        return jsondetail::decodeValue<T>(jsondetail::parseDocument(bytes), root);
    } catch (const DecodeError &) {
        return std::nullopt;
    }
}

/// What the quick reader did, as the tests name it.
const QString quick = QStringLiteral("quick");
const QString refused = QStringLiteral("refused");
const QString gaveUp = QStringLiteral("gave up");

/// Compares both ways of reading `bytes`, failing the test on any disagreement, and says what the
/// quick reader did.
template <class T>
QString compareReadings(const QByteArray &bytes)
{
    using Outcome = typename jsondetail::QuickReading<T>::Outcome;
    const jsondetail::QuickReading<T> reading = jsondetail::readQuickly<T>(bytes);
    const std::optional<T> throughQt = decodeThroughQt<T>(bytes);
    switch (reading.outcome) {
    case Outcome::Read:
        if (!throughQt) {
            QTest::qFail(
                ("taken by the reader, refused through Qt: " + bytes.left(400)).constData(),
                __FILE__, __LINE__);
        } else if (!(reading.value == *throughQt)) {
            QTest::qFail(("read differently: " + bytes.left(400)).constData(), __FILE__, __LINE__);
        }
        return quick;
    case Outcome::Refused:
        if (throughQt) {
            QTest::qFail(
                ("refused by the reader, taken through Qt: " + bytes.left(400)).constData(),
                __FILE__, __LINE__);
        }
        // The callers that need no reason get the same answer both ways.
        if (tryDecodeJson<T>(bytes).has_value())
            QTest::qFail("tryDecodeJson took a refused text", __FILE__, __LINE__);
        return refused;
    case Outcome::GaveUp:
        break;
    }
    return gaveUp;
}

/// A one-element list of the real-shaped pull request whose top-level `key` holds the raw JSON
/// text `json` (which may also spill into further keys).
QByteArray pullRequestWith(const QString &key, const QByteArray &json)
{
    QJsonArray list = QJsonDocument::fromJson(fixtures::pullRequestList(1)).array();
    QJsonObject pull = list.at(0).toObject();
    const QString placeholder = QStringLiteral("@@raw value@@");
    pull.insert(key, placeholder);
    list.replace(0, pull);
    QByteArray text = QJsonDocument(list).toJson(QJsonDocument::Compact);
    return text.replace('"' + placeholder.toUtf8() + '"', json);
}

} // namespace

class TestJsonReader : public QObject
{
    Q_OBJECT

private slots:
    void aPageOfGiteaPullRequestsIsReadQuicklyAsQtReadsIt()
    {
        const QByteArray page = fixtures::pullRequestList(100);
        const auto quick = jsondetail::tryReadJson<QList<PullRequest>>(page);
        QVERIFY(quick);
        QCOMPARE(quick->size(), 100);
        QVERIFY(*quick == *decodeThroughQt<QList<PullRequest>>(page));
        QVERIFY(quick->at(0).head.has_value() || quick->at(0).base.has_value());
    }

    void aRepositoryListIsReadQuicklyAsQtReadsIt()
    {
        const QByteArray repository = fixtures::read(QStringLiteral("gitea/repository.json"));
        const QByteArray list = '[' + repository + ',' + repository + ']';
        QCOMPARE(compareReadings<QList<Repository>>(list), quick);
    }

    void stringsAreReadAsQtReadsThem_data()
    {
        QTest::addColumn<QByteArray>("title");
        QTest::addColumn<QString>("expected");
        QTest::newRow("plain") << QByteArray("\"Fix the parser\"") << quick;
        QTest::newRow("empty") << QByteArray("\"\"") << quick;
        QTest::newRow("every short escape")
            << QByteArray("\"a\\\"b\\\\c\\/d\\be\\ff\\ng\\rh\\ti\"") << quick;
        QTest::newRow("escaped letters") << QByteArray("\"\\u0041\\u00e9\\u4e2d\"") << quick;
        QTest::newRow("escaped pair") << QByteArray("\"smile \\ud83d\\ude00 done\"") << quick;
        QTest::newRow("raw non-ASCII") << QByteArray("\"Gr\xc3\xbc\xc3\x9f\x65 \xe4\xb8\xad "
                                                     "\xf0\x9f\x98\x80\"")
                                       << quick;
        QTest::newRow("right-to-left override") << QByteArray("\"a\xe2\x80\xae"
                                                              "b\"")
                                                << quick;
        QTest::newRow("markup") << QByteArray("\"<img src=x onerror=alert(1)>\"") << quick;
        QTest::newRow("noncharacters") << QByteArray("\"\xef\xbf\xbe\xef\xbf\xbf\"") << quick;
        QTest::newRow("escaped NUL") << QByteArray("\"a\\u0000b\"") << quick;
        QTest::newRow("lone high escape") << QByteArray("\"a\\ud83d\"") << gaveUp;
        QTest::newRow("lone low escape") << QByteArray("\"a\\ude00b\"") << gaveUp;
        QTest::newRow("reversed pair") << QByteArray("\"\\ude00\\ud83d\"") << gaveUp;
        QTest::newRow("raw control") << QByteArray("\"a\x01z\"") << gaveUp;
        QTest::newRow("raw tab") << QByteArray("\"a\tz\"") << gaveUp;
        QTest::newRow("overlong slash") << QByteArray("\"\xc0\xaf\"") << gaveUp;
        QTest::newRow("encoded surrogate") << QByteArray("\"\xed\xa0\x80\"") << gaveUp;
        QTest::newRow("beyond U+10FFFF") << QByteArray("\"\xf4\x90\x80\x80\"") << gaveUp;
        QTest::newRow("cut sequence") << QByteArray("\"\xe4\xb8\"") << gaveUp;
        QTest::newRow("lone continuation") << QByteArray("\"\x80\"") << gaveUp;
        QTest::newRow("bad escape") << QByteArray("\"\\x41\"") << gaveUp;
        QTest::newRow("short unicode escape") << QByteArray("\"\\u41\"") << gaveUp;
        QTest::newRow("unterminated") << QByteArray("\"abc") << gaveUp;
        QTest::newRow("a number") << QByteArray("42") << refused;
        QTest::newRow("null for a required key") << QByteArray("null") << refused;
    }

    void stringsAreReadAsQtReadsThem()
    {
        QFETCH(QByteArray, title);
        QFETCH(QString, expected);
        const QString reading =
            compareReadings<QList<PullRequest>>(pullRequestWith(QStringLiteral("title"), title));
        // Where the reader gives up, Qt's parser decides; where it reads or refuses, Qt agrees.
        QCOMPARE(reading, expected);
    }

    void numbersAreReadAsQtReadsThem_data()
    {
        QTest::addColumn<QByteArray>("number");
        QTest::addColumn<QString>("expected");
        QTest::newRow("plain") << QByteArray("17") << quick;
        QTest::newRow("zero") << QByteArray("0") << quick;
        QTest::newRow("negative") << QByteArray("-17") << quick;
        QTest::newRow("eighteen digits") << QByteArray("999999999999999999") << quick;
        QTest::newRow("nineteen digits") << QByteArray("1000000000000000000") << gaveUp;
        QTest::newRow("beyond 64 bits") << QByteArray("99999999999999999999") << gaveUp;
        QTest::newRow("one point zero") << QByteArray("1.0") << gaveUp;
        QTest::newRow("fraction") << QByteArray("1.5") << gaveUp;
        QTest::newRow("exponent") << QByteArray("1e3") << gaveUp;
        QTest::newRow("leading zero") << QByteArray("017") << gaveUp;
        QTest::newRow("plus sign") << QByteArray("+17") << gaveUp;
        QTest::newRow("minus alone") << QByteArray("-") << gaveUp;
        QTest::newRow("a string") << QByteArray("\"17\"") << refused;
        QTest::newRow("a boolean") << QByteArray("true") << refused;
    }

    void numbersAreReadAsQtReadsThem()
    {
        QFETCH(QByteArray, number);
        QFETCH(QString, expected);
        const QByteArray list = pullRequestWith(QStringLiteral("number"), number);
        const QString reading = compareReadings<QList<PullRequest>>(list);
        QCOMPARE(reading, expected);
    }

    void unreadKeysAreCheckedButNotKept_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<QString>("expected");
        QTest::newRow("nested objects and arrays")
            << QByteArray("{\"a\":[1,-2.5,true,false,null,{\"b\":[[]]}],\"c\":{}}") << quick;
        QTest::newRow("escaped key") << QByteArray("{\"\\u0069d\":1}") << quick;
        QTest::newRow("lone surrogate escape") << QByteArray("\"\\ud800\"") << quick;
        QTest::newRow("exponent") << QByteArray("1e999") << gaveUp;
        QTest::newRow("long number") << QByteArray("1" + QByteArray(400, '0')) << gaveUp;
        QTest::newRow("invalid UTF-8") << QByteArray("\"\xff\"") << gaveUp;
        QTest::newRow("trailing comma") << QByteArray("[1,2,]") << gaveUp;
        QTest::newRow("missing colon") << QByteArray("{\"a\" 1}") << gaveUp;
        QTest::newRow("bare word") << QByteArray("nope") << gaveUp;
        QTest::newRow("single quotes") << QByteArray("'a'") << gaveUp;
        QTest::newRow("too deep") << QByteArray(200, '[') + QByteArray(200, ']') << gaveUp;
    }

    void unreadKeysAreCheckedButNotKept()
    {
        QFETCH(QByteArray, value);
        QFETCH(QString, expected);
        // "merge_base" is a key Gitea sends that no record reads.
        const QByteArray list = pullRequestWith(QStringLiteral("merge_base"), value);
        const QString reading = compareReadings<QList<PullRequest>>(list);
        QCOMPARE(reading, expected);
    }

    void documentsOutsideThePlainCaseAreLeftToQt_data()
    {
        QTest::addColumn<QByteArray>("document");
        const QByteArray one = fixtures::pullRequestList(1);
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("whitespace around") << " \n\t" + one + "\r\n ";
        QTest::newRow("garbage after") << one + "x";
        QTest::newRow("second document") << one + "[]";
        QTest::newRow("byte order mark") << "\xef\xbb\xbf" + one;
        QTest::newRow("cut off") << one.left(one.size() / 2);
        QTest::newRow("duplicate read key")
            << pullRequestWith(QStringLiteral("merge_base"), "1,\"title\":\"x\"");
        QTest::newRow("empty list") << QByteArray("[]");
        QTest::newRow("empty list, spaced") << QByteArray(" [ ] ");
        QTest::newRow("date with a fraction")
            << pullRequestWith(QStringLiteral("updated_at"), "\"2024-05-01T10:20:30.5Z\"");
        QTest::newRow("date with an offset")
            << pullRequestWith(QStringLiteral("updated_at"), "\"2024-05-01T12:20:30+02:00\"");
        QTest::newRow("optional null") << pullRequestWith(QStringLiteral("updated_at"), "null");
    }

    void documentsOutsideThePlainCaseAreLeftToQt()
    {
        QFETCH(QByteArray, document);
        // Which of these the reader takes does not matter; that it agrees with Qt does.
        compareReadings<QList<PullRequest>>(document);
        QVERIFY(!QTest::currentTestFailed());
    }

    void refusalsAreKnownInOnePass_data()
    {
        QTest::addColumn<QByteArray>("document");
        QTest::addColumn<QString>("expected");
        const QByteArray one = fixtures::pullRequestList(1);
        QTest::newRow("date as a number")
            << pullRequestWith(QStringLiteral("updated_at"), "1714558830") << refused;
        QTest::newRow("date of one day")
            << pullRequestWith(QStringLiteral("updated_at"), "\"2024-05-01\"") << refused;
        QTest::newRow("missing required key") << QByteArray("[{\"id\":1}]") << refused;
        QTest::newRow("null element") << QByteArray("[null]") << refused;
        QTest::newRow("an object, not a list") << one.mid(1, one.size() - 2) << refused;
        // Refused only when the whole text is well-formed: Qt's parser reports broken JSON first.
        QTest::newRow("refused, then cut off")
            << pullRequestWith(QStringLiteral("updated_at"), "1714558830").chopped(2) << gaveUp;
        QTest::newRow("refused, then invalid UTF-8")
            << pullRequestWith(QStringLiteral("body"), "42")
                   .replace("\"merge_base\":", "\"merge_base\":\"\xff\",\"unread\":")
            << gaveUp;
        // What the inbox cache's writer writes: numeric dates, which its reader refuses.
        QTest::newRow("a cached inbox")
            << writeJson(decodeJson<QList<PullRequest>>(one)) << refused;
    }

    void refusalsAreKnownInOnePass()
    {
        QFETCH(QByteArray, document);
        QFETCH(QString, expected);
        QCOMPARE(compareReadings<QList<PullRequest>>(document), expected);
    }

    void randomDamageNeverChangesTheOutcome()
    {
        // Seeded, so that a failure repeats.
        std::mt19937 random(20261123);
        const QByteArray original =
            fixtures::pullRequestList(2) + QByteArray(" "); // room to damage the end too
        const QByteArray pieces[] = {"\"", "\\",   "\\u",  "\\ud83d", "{", "}", "[",
                                     "]",  ",",    ":",    "null",    "0", "-", ".5",
                                     "e9", "\xc3", "\xff", "\x01",    " "};
        int quickCount = 0;
        int refusedCount = 0;
        int gaveUpCount = 0;
        for (int round = 0; round < 4000; ++round) {
            QByteArray damaged = original;
            const int changes = 1 + int(random() % 3);
            for (int c = 0; c < changes; ++c) {
                const auto at = qsizetype(random() % quint32(damaged.size()));
                switch (random() % 3) {
                case 0:
                    damaged.remove(at, 1 + qsizetype(random() % 4));
                    break;
                case 1:
                    damaged.insert(at, pieces[random() % std::size(pieces)]);
                    break;
                default:
                    damaged[at] = char(random() % 256);
                }
            }
            const QString reading = compareReadings<QList<PullRequest>>(damaged);
            if (QTest::currentTestFailed())
                return;
            (reading == quick ? quickCount : reading == refused ? refusedCount : gaveUpCount) += 1;
        }
        QVERIFY(!QTest::currentTestFailed());
        // Both ways were exercised: damage in the unread keys is often still valid JSON.
        QVERIFY2(quickCount > 100 && refusedCount > 10 && gaveUpCount > 100,
                 qPrintable(QStringLiteral("%1 quick, %2 refused, %3 given up")
                                .arg(quickCount)
                                .arg(refusedCount)
                                .arg(gaveUpCount)));
    }
};

QTEST_GUILESS_MAIN(TestJsonReader)
#include "tst_jsonreader.moc"
