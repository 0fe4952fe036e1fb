#include "dates.h"
#include "settings.h"
#include "testfiles.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJSEngine>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQmlEngine>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <csignal>
#include <memory>
#include <sys/stat.h>

using namespace kestrine;
using kestrine::testing::defaultsFileInTheWay;
using kestrine::testing::SettingsFromDisk;

namespace {

const QString arrow = QStringLiteral("\u2192");

QDateTime utc(int hour, int minute, int second, int millis = 0)
{
    return QDateTime(QDate(2024, 5, 1), QTime(hour, minute, second, millis), Qt::UTC);
}

QJsonObject storedObject(const QString &t, const QString &l, const QString &m)
{
    return QJsonObject{
        {QStringLiteral("t"), t}, {QStringLiteral("l"), l}, {QStringLiteral("m"), m}};
}

QByteArray compact(const QJsonArray &array)
{
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

/// Puts `value` under the log's key in the defaults store and on disk, as a previous run would
/// have left it.
void storeValue(const QVariant &value)
{
    defaultsStore().setValue(LogStore::persistKey, value);
    defaultsStore().sync();
}

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

/// The log's stored bytes as they are in the defaults file right now, read without QSettings:
/// the value is a {"$data": "<base64>"} member of the file's top-level object.
std::optional<QByteArray> storedBytesInFile()
{
    const QJsonObject file =
        QJsonDocument::fromJson(fileBytes(defaultsStore().fileName())).object();
    const QJsonValue value = file.value(LogStore::persistKey);
    if (!value.isObject())
        return std::nullopt;
    const QJsonValue data = value.toObject().value(QStringLiteral("$data"));
    if (!data.isString())
        return std::nullopt;
    return QByteArray::fromBase64(data.toString().toLatin1());
}

QStringList messages(const QList<LogEntry> &entries)
{
    QStringList result;
    for (const LogEntry &entry : entries)
        result.append(entry.message);
    return result;
}

} // namespace

class TestLogStore : public QObject
{
    Q_OBJECT

private:
    SettingsFromDisk m_disk;

private slots:
    void initTestCase()
    {
        // This test rewrites the real log.
        if (const QString inTheWay = defaultsFileInTheWay(); !inTheWay.isEmpty())
            QFAIL(qPrintable(inTheWay));
    }

    void init()
    {
        defaultsStore().remove(LogStore::persistKey);
        defaultsStore().sync();
    }

    void constantsAreTheAgreedOnes()
    {
        QCOMPARE(LogStore::maxEntries, qsizetype(500));
        QCOMPARE(QString(LogStore::persistKey), QStringLiteral("kestrine.log.entries"));
    }

    void nothingStoredLoadsEmpty()
    {
        LogStore store;
        QCOMPARE(store.count(), 0);
        QVERIFY(store.entries().isEmpty());
        QCOMPARE(store.text(), QString());
        QVERIFY(!defaultsStore().contains(LogStore::persistKey));
    }

    void logAppendsAnEntryStampedNow()
    {
        LogStore store;
        const QDateTime before = QDateTime::currentDateTimeUtc();
        store.log(LogLevel::Warn, QStringLiteral("PR 7 merge refused"));
        const QDateTime after = QDateTime::currentDateTimeUtc();

        QCOMPARE(store.count(), 1);
        const LogEntry entry = store.entries().constFirst();
        QVERIFY(!entry.id.isNull());
        QCOMPARE(entry.level, LogLevel::Warn);
        QCOMPARE(entry.message, QStringLiteral("PR 7 merge refused"));
        QCOMPARE(entry.timestamp.timeSpec(), Qt::UTC);
        QVERIFY(entry.timestamp >= before);
        QVERIFY(entry.timestamp <= after);

        store.log(LogLevel::Info, QStringLiteral("second"));
        QCOMPARE(messages(store.entries()),
                 QStringList({QStringLiteral("PR 7 merge refused"), QStringLiteral("second")}));
        QVERIFY(store.entries().at(0).id != store.entries().at(1).id);
    }

    void logThroughTheSinkInterface()
    {
        LogStore store;
        LogSink &sink = store;
        sink.log(LogLevel::Error, QStringLiteral("via sink"));
        QCOMPARE(store.count(), 1);
        QCOMPARE(store.entries().constFirst().level, LogLevel::Error);
    }

    void after501LogsTheOldestIsGoneInMemoryAndOnDisk()
    {
        LogStore store;
        for (int i = 0; i < 501; ++i)
            store.log(LogLevel::Info, QStringLiteral("line %1").arg(i));

        QCOMPARE(store.count(), 500);
        QCOMPARE(store.entries().size(), 500);
        QCOMPARE(store.entries().constFirst().message, QStringLiteral("line 1"));
        QCOMPARE(store.entries().constLast().message, QStringLiteral("line 500"));
        QVERIFY(!messages(store.entries()).contains(QStringLiteral("line 0")));

        // The file itself, parsed by hand.
        store.flush();
        const auto onDisk = storedBytesInFile();
        QVERIFY(onDisk);
        const QJsonArray array = QJsonDocument::fromJson(*onDisk).array();
        QCOMPARE(array.size(), 500);
        QCOMPARE(array.first().toObject().value(QStringLiteral("m")).toString(),
                 QStringLiteral("line 1"));
        QCOMPARE(array.last().toObject().value(QStringLiteral("m")).toString(),
                 QStringLiteral("line 500"));

        // The file read through a fresh QSettings.
        const auto disk = m_disk.read(defaultsStore().fileName());
        QVERIFY(disk);
        const QVariant value = disk->value(LogStore::persistKey);
        QCOMPARE(value.typeId(), QMetaType::QByteArray);
        const QList<LogEntry> decoded = LogStore::decode(value.toByteArray());
        QCOMPARE(decoded.size(), 500);
        QCOMPARE(messages(decoded), messages(store.entries()));

        // And a new log over the stored value.
        LogStore reloaded;
        QCOMPARE(reloaded.count(), 500);
        QCOMPARE(messages(reloaded.entries()), messages(store.entries()));
    }

    void storedCopyHoldsTheLineWithinTheWriteDelay()
    {
        LogStore store;
        store.log(LogLevel::Error, QStringLiteral("GET repos/ann/tool/pulls ") + arrow +
                                       QStringLiteral(" 404 not found"));
        // In the log at once, on disk within a second, without anyone asking.
        QCOMPARE(store.count(), 1);
        QVERIFY(store.hasUnwrittenLines());
        QVERIFY(!storedBytesInFile());
        QElapsedTimer waited;
        waited.start();
        QTRY_VERIFY_WITH_TIMEOUT(storedBytesInFile().has_value(), 3000);
        QVERIFY(waited.elapsed() <= LogStore::writeDelay.count() + 500);
        QVERIFY(!store.hasUnwrittenLines());
        const auto onDisk = storedBytesInFile();
        QVERIFY(onDisk);
        const QJsonArray array = QJsonDocument::fromJson(*onDisk).array();
        QCOMPARE(array.size(), 1);
        const QJsonObject object = array.first().toObject();
        QCOMPARE(object.keys(),
                 QStringList({QStringLiteral("l"), QStringLiteral("m"), QStringLiteral("t")}));
        QCOMPARE(object.value(QStringLiteral("l")).toString(), QStringLiteral("ERROR"));
        QCOMPARE(object.value(QStringLiteral("m")).toString(),
                 QStringLiteral("GET repos/ann/tool/pulls ") + arrow +
                     QStringLiteral(" 404 not found"));
        QCOMPARE(object.value(QStringLiteral("t")).toString(),
                 InternetDate::format(store.entries().constFirst().timestamp));
    }

    void storedFormIsCompactUtf8Json()
    {
        const QList<LogEntry> entries{
            {QUuid::createUuid(), utc(10, 20, 30), LogLevel::Info, QStringLiteral("a ") + arrow},
        };
        const QByteArray stored = LogStore::encode(entries);
        QCOMPARE(stored, QByteArray("[{\"l\":\"INFO\",\"m\":\"a \xe2\x86\x92\",\"t\":"
                                    "\"2024-05-01T10:20:30Z\"}]"));
        QCOMPARE(LogStore::encode({}), QByteArray("[]"));
    }

    void unknownLevelSkipsOnlyThatObject()
    {
        storeValue(compact(QJsonArray{
            storedObject(QStringLiteral("2024-05-01T10:20:30Z"), QStringLiteral("INFO"),
                         QStringLiteral("first")),
            storedObject(QStringLiteral("2024-05-01T10:20:30Z"), QStringLiteral("DEBUG"),
                         QStringLiteral("x")),
            storedObject(QStringLiteral("2024-05-01T10:20:31Z"), QStringLiteral("ERROR"),
                         QStringLiteral("last")),
        }));

        LogStore store;
        QCOMPARE(store.count(), 2);
        const LogEntry first = store.entries().at(0);
        QCOMPARE(first.timestamp, utc(10, 20, 30));
        QCOMPARE(first.level, LogLevel::Info);
        QCOMPARE(first.message, QStringLiteral("first"));
        const LogEntry last = store.entries().at(1);
        QCOMPARE(last.timestamp, utc(10, 20, 31));
        QCOMPARE(last.level, LogLevel::Error);
        QCOMPARE(last.message, QStringLiteral("last"));
    }

    void malformedObjectsAreSkipped_data()
    {
        QTest::addColumn<QJsonObject>("object");
        QTest::addColumn<bool>("loads");

        const QString t = QStringLiteral("2024-05-01T10:20:30Z");
        const QString info = QStringLiteral("INFO");
        const QString m = QStringLiteral("x");
        QTest::newRow("well formed") << storedObject(t, info, m) << true;
        QTest::newRow("missing m")
            << QJsonObject{{QStringLiteral("t"), t}, {QStringLiteral("l"), info}} << false;
        QTest::newRow("missing t")
            << QJsonObject{{QStringLiteral("l"), info}, {QStringLiteral("m"), m}} << false;
        QTest::newRow("missing l")
            << QJsonObject{{QStringLiteral("t"), t}, {QStringLiteral("m"), m}} << false;
        QTest::newRow("t not a date")
            << storedObject(QStringLiteral("yesterday"), info, m) << false;
        QTest::newRow("t date only")
            << storedObject(QStringLiteral("2024-05-01"), info, m) << false;
        QTest::newRow("t with fraction")
            << storedObject(QStringLiteral("2024-05-01T10:20:30.9Z"), info, m) << false;
        QTest::newRow("t without zone")
            << storedObject(QStringLiteral("2024-05-01T10:20:30"), info, m) << false;
        QTest::newRow("l lower case") << storedObject(t, QStringLiteral("info"), m) << false;
        QTest::newRow("l empty") << storedObject(t, QString(), m) << false;
        QTest::newRow("empty message") << storedObject(t, info, QString()) << true;
        QTest::newRow("extra string member")
            << QJsonObject{{QStringLiteral("t"), t},
                           {QStringLiteral("l"), info},
                           {QStringLiteral("m"), m},
                           {QStringLiteral("x"), QStringLiteral("ignored")}}
            << true;
    }

    void malformedObjectsAreSkipped()
    {
        QFETCH(QJsonObject, object);
        QFETCH(bool, loads);

        const QJsonObject before = storedObject(QStringLiteral("2024-05-01T09:00:00Z"),
                                                QStringLiteral("WARN"), QStringLiteral("before"));
        const QJsonObject after = storedObject(QStringLiteral("2024-05-01T11:00:00Z"),
                                               QStringLiteral("WARN"), QStringLiteral("after"));
        storeValue(compact(QJsonArray{before, object, after}));

        LogStore store;
        const QStringList expected =
            loads
                ? QStringList{QStringLiteral("before"),
                              object.value(QStringLiteral("m")).toString(), QStringLiteral("after")}
                : QStringList{QStringLiteral("before"), QStringLiteral("after")};
        QCOMPARE(messages(store.entries()), expected);
    }

    void timestampWithOffsetLoadsAsTheSameInstant()
    {
        storeValue(compact(QJsonArray{storedObject(QStringLiteral("2024-05-01T12:20:30+02:00"),
                                                   QStringLiteral("INFO"), QStringLiteral("x"))}));
        LogStore store;
        QCOMPARE(store.count(), 1);
        QCOMPARE(store.entries().constFirst().timestamp, utc(10, 20, 30));
        QCOMPARE(store.text(), QStringLiteral("[2024-05-01T10:20:30Z] INFO x"));
    }

    void valueThatIsNotJsonLoadsEmptyAndIsOverwrittenByTheNextLog()
    {
        storeValue(QByteArray("this is not json ["));
        LogStore store;
        QCOMPARE(store.count(), 0);
        QCOMPARE(store.text(), QString());
        // Loading left the bad value alone.
        QCOMPARE(defaultsStore().value(LogStore::persistKey).toByteArray(),
                 QByteArray("this is not json ["));

        store.log(LogLevel::Info, QStringLiteral("fresh start"));
        store.flush();
        const auto onDisk = storedBytesInFile();
        QVERIFY(onDisk);
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(*onDisk, &error);
        QCOMPARE(error.error, QJsonParseError::NoError);
        QVERIFY(document.isArray());
        QCOMPARE(document.array().size(), 1);

        LogStore reloaded;
        QCOMPARE(messages(reloaded.entries()), QStringList{QStringLiteral("fresh start")});
    }

    void jsonOfTheWrongShapeLoadsEmpty_data()
    {
        QTest::addColumn<QByteArray>("stored");
        QTest::addColumn<int>("expectedCount");

        const QJsonObject valid = storedObject(QStringLiteral("2024-05-01T10:20:30Z"),
                                               QStringLiteral("INFO"), QStringLiteral("ok"));
        QTest::newRow("valid array, for comparison") << compact(QJsonArray{valid, valid}) << 2;
        QTest::newRow("empty array") << QByteArray("[]") << 0;
        QTest::newRow("object instead of array")
            << QJsonDocument(valid).toJson(QJsonDocument::Compact) << 0;
        QTest::newRow("array of strings") << QByteArray("[\"INFO\",\"ok\"]") << 0;
        QTest::newRow("non-object among objects") << compact(QJsonArray{valid, 3, valid}) << 0;
        QTest::newRow("null among objects") << compact(QJsonArray{valid, QJsonValue()}) << 0;
        QTest::newRow("number member")
            << compact(QJsonArray{valid, QJsonObject{{QStringLiteral("t"), valid["t"]},
                                                     {QStringLiteral("l"), valid["l"]},
                                                     {QStringLiteral("m"), 5}}})
            << 0;
        QTest::newRow("null in an extra member")
            << compact(QJsonArray{valid, QJsonObject{{QStringLiteral("t"), valid["t"]},
                                                     {QStringLiteral("l"), valid["l"]},
                                                     {QStringLiteral("m"), valid["m"]},
                                                     {QStringLiteral("n"), QJsonValue()}}})
            << 0;
        QTest::newRow("nested object member")
            << compact(QJsonArray{QJsonObject{{QStringLiteral("t"), valid["t"]},
                                              {QStringLiteral("l"), valid["l"]},
                                              {QStringLiteral("m"), QJsonObject()}},
                                  valid})
            << 0;
        QTest::newRow("scalar string") << QByteArray("\"text\"") << 0;
        QTest::newRow("empty bytes") << QByteArray() << 0;
    }

    void jsonOfTheWrongShapeLoadsEmpty()
    {
        QFETCH(QByteArray, stored);
        QFETCH(int, expectedCount);
        storeValue(stored);
        LogStore store;
        QCOMPARE(store.count(), expectedCount);
        QCOMPARE(LogStore::decode(stored).size(), expectedCount);
    }

    void valueThatIsNotDataLoadsEmpty_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<int>("expectedCount");

        const QByteArray json = compact(QJsonArray{storedObject(
            QStringLiteral("2024-05-01T10:20:30Z"), QStringLiteral("INFO"), QStringLiteral("x"))});
        QTest::newRow("data, for comparison") << QVariant(json) << 1;
        QTest::newRow("same JSON as a string") << QVariant(QString::fromUtf8(json)) << 0;
        QTest::newRow("string list") << QVariant(QStringList{QString::fromUtf8(json)}) << 0;
        QTest::newRow("bool") << QVariant(true) << 0;
    }

    void valueThatIsNotDataLoadsEmpty()
    {
        QFETCH(QVariant, value);
        QFETCH(int, expectedCount);
        storeValue(value);
        LogStore store;
        QCOMPARE(store.count(), expectedCount);
    }

    void fractionalSecondsAreDroppedWhenStoredAndExported()
    {
        const LogEntry entry{QUuid::createUuid(), utc(10, 20, 30, 900), LogLevel::Info,
                             QStringLiteral("msg")};
        QCOMPARE(entry.line(), QStringLiteral("[2024-05-01T10:20:30Z] INFO msg"));

        const QByteArray stored = LogStore::encode({entry});
        const QJsonObject object = QJsonDocument::fromJson(stored).array().first().toObject();
        QCOMPARE(object.value(QStringLiteral("t")).toString(),
                 QStringLiteral("2024-05-01T10:20:30Z"));

        const QList<LogEntry> loaded = LogStore::decode(stored);
        QCOMPARE(loaded.size(), 1);
        QCOMPARE(loaded.constFirst().timestamp, utc(10, 20, 30));
        QCOMPARE(loaded.constFirst().level, entry.level);
        QCOMPARE(loaded.constFirst().message, entry.message);
    }

    void loggedLineIsExportedToTheWholeSecond()
    {
        LogStore store;
        store.log(LogLevel::Info, QStringLiteral("msg"));
        static const QRegularExpression format(
            QStringLiteral("^\\[\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ\\] INFO msg$"));
        const QString text = store.text();
        QVERIFY2(format.match(text).hasMatch(), qPrintable(text));

        const QDateTime stamp = store.entries().constFirst().timestamp;
        QCOMPARE(text.mid(1, 20), stamp.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ssZ")));
    }

    void textJoinsLinesOldestFirst()
    {
        const QString request =
            QStringLiteral("GET repos/ann/tool/pulls ") + arrow + QStringLiteral(" 404 not found");
        storeValue(compact(QJsonArray{
            storedObject(QStringLiteral("2024-05-01T10:20:28Z"), QStringLiteral("INFO"),
                         QStringLiteral("Loaded 3 pull requests")),
            storedObject(QStringLiteral("2024-05-01T10:20:29Z"), QStringLiteral("WARN"),
                         QStringLiteral("PR 12 100% done, %1 left")),
            storedObject(QStringLiteral("2024-05-01T10:20:30Z"), QStringLiteral("ERROR"), request),
        }));

        LogStore store;
        QCOMPARE(store.text(), QStringLiteral("[2024-05-01T10:20:28Z] INFO Loaded 3 pull requests\n"
                                              "[2024-05-01T10:20:29Z] WARN PR 12 100% done, %1 "
                                              "left\n"
                                              "[2024-05-01T10:20:30Z] ERROR GET "
                                              "repos/ann/tool/pulls \u2192 404 not found"));
        QVERIFY(!store.text().endsWith(u'\n'));
        QCOMPARE(store.text().toUtf8().count("\xe2\x86\x92"), 1);
    }

    void levelsHaveTheirLabels()
    {
        QCOMPARE(logLevelLabel(LogLevel::Info), QStringLiteral("INFO"));
        QCOMPARE(logLevelLabel(LogLevel::Warn), QStringLiteral("WARN"));
        QCOMPARE(logLevelLabel(LogLevel::Error), QStringLiteral("ERROR"));

        LogStore store;
        store.log(LogLevel::Warn, QStringLiteral("w"));
        store.log(LogLevel::Error, QStringLiteral("e"));
        QCOMPARE(store.entries().at(0).levelLabel(), QStringLiteral("WARN"));
        QCOMPARE(store.entries().at(1).levelLabel(), QStringLiteral("ERROR"));
        const QStringList lines = store.text().split(u'\n');
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines.at(0).endsWith(QStringLiteral("] WARN w")));
        QVERIFY(lines.at(1).endsWith(QStringLiteral("] ERROR e")));
    }

    void emptyLogExportsEmptyText()
    {
        LogStore store;
        QCOMPARE(store.text(), QString());
        QVERIFY(store.text().isEmpty());
        store.log(LogLevel::Info, QStringLiteral("one"));
        QVERIFY(!store.text().isEmpty());
        store.clear();
        QCOMPARE(store.text(), QString());
    }

    void clearEmptiesTheLogAndRemovesTheStoredCopy()
    {
        LogStore store;
        store.log(LogLevel::Info, QStringLiteral("one"));
        store.log(LogLevel::Error, QStringLiteral("two"));
        store.flush();
        QVERIFY(storedBytesInFile());

        QSignalSpy changed(&store, &LogStore::entriesChanged);
        store.clear();
        QCOMPARE(changed.count(), 1);
        QCOMPARE(store.count(), 0);
        QVERIFY(store.entries().isEmpty());
        QVERIFY(!defaultsStore().contains(LogStore::persistKey));
        QVERIFY(!storedBytesInFile());
        QVERIFY(!QJsonDocument::fromJson(fileBytes(defaultsStore().fileName()))
                     .object()
                     .contains(LogStore::persistKey));

        LogStore reloaded;
        QCOMPARE(reloaded.count(), 0);

        // Clearing an empty log changes nothing and says so by staying quiet.
        store.clear();
        QCOMPARE(changed.count(), 1);
    }

    void clearRightAfterALineLeavesNothingToWriteLater()
    {
        LogStore store;
        store.log(LogLevel::Info, QStringLiteral("one"));
        store.clear();
        QVERIFY(!store.hasUnwrittenLines());
        QTest::qWait(int(LogStore::writeDelay.count()) + 200);
        QVERIFY(!defaultsStore().contains(LogStore::persistKey));
        QVERIFY(!storedBytesInFile());
    }

    void aThousandLinesInABurstAreWrittenAHandfulOfTimes()
    {
        // QSettings replaces the file on every write (a new file renamed over the old one), so
        // each write gives it a new inode.
        const QByteArray path = QFile::encodeName(defaultsStore().fileName());
        const auto identity = [&path] {
            struct stat status = {};
            if (::stat(path.constData(), &status) != 0)
                return std::pair<ino_t, qint64>(0, 0);
            return std::pair<ino_t, qint64>(status.st_ino, status.st_mtim.tv_nsec);
        };
        LogStore store;
        QElapsedTimer burst;
        burst.start();
        int writes = 0;
        auto previous = identity();
        for (int i = 0; i < 1000; ++i) {
            store.log(LogLevel::Info, QStringLiteral("line %1").arg(i));
            // The event loop runs between lines, as it does between answers of a load.
            QCoreApplication::processEvents();
            const auto now = identity();
            if (now != previous)
                ++writes;
            previous = now;
        }
        const qint64 seconds = burst.elapsed() / 1000;
        QVERIFY2(writes <= 1 + seconds,
                 qPrintable(QStringLiteral("%1 writes in %2 ms").arg(writes).arg(burst.elapsed())));
        // The last line, its order and the bound reach the disk within the delay.
        QTRY_VERIFY_WITH_TIMEOUT(!store.hasUnwrittenLines(), 3000);
        const QList<LogEntry> stored = LogStore::decode(*storedBytesInFile());
        QCOMPARE(stored.size(), 500);
        QCOMPARE(stored.constFirst().message, QStringLiteral("line 500"));
        QCOMPARE(stored.constLast().message, QStringLiteral("line 999"));
        QCOMPARE(messages(stored), messages(store.entries()));
    }

    void destroyingTheLogWritesWhatWaits()
    {
        {
            LogStore store;
            store.log(LogLevel::Warn, QStringLiteral("last words"));
            QVERIFY(!storedBytesInFile());
        }
        const auto onDisk = storedBytesInFile();
        QVERIFY(onDisk);
        QCOMPARE(messages(LogStore::decode(*onDisk)), QStringList{QStringLiteral("last words")});
    }

    void clearIsCallableByName()
    {
        LogStore store;
        store.log(LogLevel::Info, QStringLiteral("one"));
        QVERIFY(QMetaObject::invokeMethod(&store, "clear"));
        QCOMPARE(store.count(), 0);
        QVERIFY(!defaultsStore().contains(LogStore::persistKey));
    }

    void loadingNeitherTrimsNorWritesBack()
    {
        QJsonArray array;
        for (int i = 0; i < 600; ++i) {
            array.append(storedObject(QStringLiteral("2024-05-01T10:20:30Z"),
                                      QStringLiteral("INFO"), QStringLiteral("old %1").arg(i)));
        }
        const QByteArray stored = compact(array);
        storeValue(stored);
        const QString path = defaultsStore().fileName();
        const QByteArray fileBefore = fileBytes(path);
        const QDateTime modifiedBefore = QFileInfo(path).lastModified();
        QVERIFY(!fileBefore.isEmpty());

        LogStore store;
        QCOMPARE(store.count(), 600);
        QCOMPARE(store.entries().constFirst().message, QStringLiteral("old 0"));
        QCOMPARE(store.entries().constLast().message, QStringLiteral("old 599"));

        // Anything written by the constructor would reach the file at the latest here.
        defaultsStore().sync();
        QCOMPARE(defaultsStore().value(LogStore::persistKey).toByteArray(), stored);
        QCOMPARE(fileBytes(path), fileBefore);
        QCOMPARE(QFileInfo(path).lastModified(), modifiedBefore);

        // The first new line trims to 500.
        store.log(LogLevel::Info, QStringLiteral("new"));
        QCOMPARE(store.count(), 500);
        QCOMPARE(store.entries().constFirst().message, QStringLiteral("old 101"));
        QCOMPARE(store.entries().constLast().message, QStringLiteral("new"));
        store.flush();
        QCOMPARE(LogStore::decode(*storedBytesInFile()).size(), 500);
    }

    void loadedEntriesGetNewIds()
    {
        storeValue(compact(QJsonArray{storedObject(QStringLiteral("2024-05-01T10:20:30Z"),
                                                   QStringLiteral("INFO"), QStringLiteral("x"))}));
        LogStore first;
        LogStore second;
        QCOMPARE(first.count(), 1);
        QCOMPARE(second.count(), 1);
        const LogEntry a = first.entries().constFirst();
        const LogEntry b = second.entries().constFirst();
        QVERIFY(!a.id.isNull());
        QVERIFY(a.id != b.id);
        QVERIFY(a != b);
        QCOMPARE(a.timestamp, b.timestamp);
        QCOMPARE(a.level, b.level);
        QCOMPARE(a.message, b.message);
    }

    void entriesCompareFieldByField()
    {
        const LogEntry entry{QUuid::createUuid(), utc(10, 20, 30), LogLevel::Warn,
                             QStringLiteral("m")};
        LogStore::Entry same = entry;
        QCOMPARE(same, entry);

        LogEntry other = entry;
        other.id = QUuid::createUuid();
        QVERIFY(other != entry);
        other = entry;
        other.timestamp = utc(10, 20, 31);
        QVERIFY(other != entry);
        other = entry;
        other.level = LogLevel::Error;
        QVERIFY(other != entry);
        other = entry;
        other.message = QStringLiteral("n");
        QVERIFY(other != entry);
    }

    void everyChangeIsAnnouncedOnce()
    {
        LogStore store;
        QSignalSpy changed(&store, &LogStore::entriesChanged);
        store.log(LogLevel::Info, QStringLiteral("a"));
        QCOMPARE(changed.count(), 1);
        store.log(LogLevel::Info, QStringLiteral("b"));
        QCOMPARE(changed.count(), 2);
        store.clear();
        QCOMPARE(changed.count(), 3);
    }

    void propertiesAreReadableThroughTheMetaObject()
    {
        LogStore store;
        store.log(LogLevel::Error, QStringLiteral("meta"));
        QCOMPARE(store.property("count").toInt(), 1);
        QCOMPARE(store.property("text").toString(), store.text());
        const auto entries = store.property("entries").value<QList<LogEntry>>();
        QCOMPARE(entries, store.entries());

        const QMetaObject *meta = store.metaObject();
        for (const char *name : {"count", "text", "entries"}) {
            const QMetaProperty property = meta->property(meta->indexOfProperty(name));
            QVERIFY2(property.isValid(), name);
            QVERIFY2(property.hasNotifySignal(), name);
            QCOMPARE(property.notifySignal().name(), QByteArray("entriesChanged"));
        }

        const LogEntry entry = entries.constFirst();
        const QMetaObject &gadget = LogEntry::staticMetaObject;
        auto read = [&](const char *name) {
            return gadget.property(gadget.indexOfProperty(name)).readOnGadget(&entry);
        };
        QCOMPARE(read("levelLabel").toString(), QStringLiteral("ERROR"));
        QCOMPARE(read("message").toString(), QStringLiteral("meta"));
        QCOMPARE(read("id").toUuid(), entry.id);
        QCOMPARE(read("timestamp").toDateTime(), entry.timestamp);
        QCOMPARE(read("level").value<LogLevel>(), LogLevel::Error);
    }

    void qmlSingletonIsTheLogInstalledOnTheEngine()
    {
        LogStore log;
        SettingsStore settings(&log);
        QQmlEngine engine;
        QmlServices::install(engine, settings, log);
        QCOMPARE(LogStore::create(&engine, nullptr), &log);
        QCOMPARE(QJSEngine::objectOwnership(&log), QJSEngine::CppOwnership);

        QQmlEngine bare;
        QTest::ignoreMessage(QtCriticalMsg, "LogStore: no log was installed on this QML engine.");
        QCOMPARE(LogStore::create(&bare, nullptr), nullptr);
    }

    // Last, as it ends the application's event loop: what the app does when systemd or the end of
    // the session stops it. The loop ends as through the window's close, and on the way out the
    // log writes the lines its write delay still held.
    void sigtermEndsTheEventLoopWithEveryLineWritten()
    {
        LogStore store;
        store.log(LogLevel::Info, QStringLiteral("the last line before the stop"));
        QVERIFY(store.hasUnwrittenLines());
        bool reacted = false;
        onTerminationSignal([&reacted] {
            reacted = true;
            QCoreApplication::quit();
        });
        QTimer::singleShot(0, [] { ::raise(SIGTERM); });
        QElapsedTimer stopped;
        stopped.start();
        QCoreApplication::exec();

        QVERIFY(reacted);
        // Written on the way out, not by the write delay's timer.
        QVERIFY(stopped.elapsed() < LogStore::writeDelay.count());
        QVERIFY(!store.hasUnwrittenLines());
        const auto onDisk = storedBytesInFile();
        QVERIFY(onDisk);
        const QJsonArray array = QJsonDocument::fromJson(*onDisk).array();
        QCOMPARE(array.last().toObject().value(QStringLiteral("m")).toString(),
                 QStringLiteral("the last line before the stop"));
    }
};

QTEST_GUILESS_MAIN(TestLogStore)
#include "tst_logstore.moc"
