#include "defaultsstore.h"
#include "testfiles.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

using namespace kestrine;
using kestrine::testing::defaultsFileInTheWay;
using kestrine::testing::SettingsFromDisk;

namespace {

QJsonObject readJsonObject(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
}

bool writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes) == bytes.size();
}

} // namespace

class TestDefaultsStore : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    int m_copies = 0;
    SettingsFromDisk m_disk;

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        // This test writes the real defaults file.
        if (const QString inTheWay = defaultsFileInTheWay(); !inTheWay.isEmpty())
            QFAIL(qPrintable(inTheWay));
    }

    void defaultsFileLivesInTheUserConfigDirectory()
    {
        const QString configHome = qEnvironmentVariable("XDG_CONFIG_HOME");
        QVERIFY(!configHome.isEmpty());
        QCOMPARE(defaultsStore().fileName(),
                 QDir(configHome).filePath(QStringLiteral("norrum/kestrine.json")));
        QCOMPARE(defaultsStore().format(), jsonSettingsFormat());
    }

    void registeringTheFormatTwiceGivesTheSameFormat()
    {
        QCOMPARE(jsonSettingsFormat(), jsonSettingsFormat());
        QVERIFY(jsonSettingsFormat() != QSettings::IniFormat);
        QVERIFY(jsonSettingsFormat() != QSettings::NativeFormat);
    }

    void valuesKeepTheirTypesThroughTheFile()
    {
        QSettings &store = defaultsStore();
        const QByteArray bytes("\x00\x01\xff raw \xe2\x86\x92", 12);
        store.setValue(QStringLiteral("flagOn"), true);
        store.setValue(QStringLiteral("flagOff"), false);
        store.setValue(QStringLiteral("name"), QStringLiteral("Block merge when CI is red"));
        store.setValue(QStringLiteral("repos"),
                       QStringList{QStringLiteral("ann/tool"), QStringLiteral("bob/lib")});
        store.setValue(QStringLiteral("noRepos"), QStringList());
        store.setValue(QStringLiteral("count"), 42);
        store.setValue(QStringLiteral("big"), qint64(9007199254740993)); // 2^53 + 1
        store.setValue(QStringLiteral("ratio"), 2.5);
        store.setValue(QStringLiteral("blob"), bytes);
        store.setValue(QStringLiteral("nested"),
                       QVariantMap{{QStringLiteral("inner"), QVariantList{1, QStringLiteral("x")}},
                                   {QStringLiteral("data"), QByteArray("abc")}});
        store.sync();
        QCOMPARE(store.status(), QSettings::NoError);

        const auto disk = m_disk.read(store.fileName());
        QVERIFY(disk);
        QCOMPARE(disk->status(), QSettings::NoError);

        const QVariant flagOn = disk->value(QStringLiteral("flagOn"));
        QCOMPARE(flagOn.typeId(), QMetaType::Bool);
        QCOMPARE(flagOn.toBool(), true);
        const QVariant flagOff = disk->value(QStringLiteral("flagOff"));
        QCOMPARE(flagOff.typeId(), QMetaType::Bool);
        QCOMPARE(flagOff.toBool(), false);

        const QVariant name = disk->value(QStringLiteral("name"));
        QCOMPARE(name.typeId(), QMetaType::QString);
        QCOMPARE(name.toString(), QStringLiteral("Block merge when CI is red"));

        const QVariant repos = disk->value(QStringLiteral("repos"));
        QCOMPARE(repos.typeId(), QMetaType::QVariantList);
        const QVariantList repoList = repos.toList();
        QCOMPARE(repoList.size(), 2);
        QCOMPARE(repoList.at(0).typeId(), QMetaType::QString);
        QCOMPARE(repoList.at(1).typeId(), QMetaType::QString);
        QCOMPARE(repos.toStringList(),
                 QStringList({QStringLiteral("ann/tool"), QStringLiteral("bob/lib")}));

        // An empty list is still a stored list, unlike a key that was never written.
        QVERIFY(disk->contains(QStringLiteral("noRepos")));
        QCOMPARE(disk->value(QStringLiteral("noRepos")).typeId(), QMetaType::QVariantList);
        QVERIFY(disk->value(QStringLiteral("noRepos")).toList().isEmpty());
        QVERIFY(!disk->contains(QStringLiteral("neverWritten")));
        QVERIFY(!disk->value(QStringLiteral("neverWritten")).isValid());

        const QVariant count = disk->value(QStringLiteral("count"));
        QCOMPARE(count.typeId(), QMetaType::LongLong);
        QCOMPARE(count.toLongLong(), 42);
        const QVariant big = disk->value(QStringLiteral("big"));
        QCOMPARE(big.typeId(), QMetaType::LongLong);
        QCOMPARE(big.toLongLong(), qint64(9007199254740993));

        const QVariant ratio = disk->value(QStringLiteral("ratio"));
        QCOMPARE(ratio.typeId(), QMetaType::Double);
        QCOMPARE(ratio.toDouble(), 2.5);

        const QVariant blob = disk->value(QStringLiteral("blob"));
        QCOMPARE(blob.typeId(), QMetaType::QByteArray);
        QCOMPARE(blob.toByteArray(), bytes);

        const QVariant nested = disk->value(QStringLiteral("nested"));
        QCOMPARE(nested.typeId(), QMetaType::QVariantMap);
        const QVariantMap nestedMap = nested.toMap();
        const QVariantList inner = nestedMap.value(QStringLiteral("inner")).toList();
        QCOMPARE(inner.size(), 2);
        QCOMPARE(inner.at(0).typeId(), QMetaType::LongLong);
        QCOMPARE(inner.at(0).toLongLong(), 1);
        QCOMPARE(inner.at(1).toString(), QStringLiteral("x"));
        QCOMPARE(nestedMap.value(QStringLiteral("data")).typeId(), QMetaType::QByteArray);
        QCOMPARE(nestedMap.value(QStringLiteral("data")).toByteArray(), QByteArray("abc"));
    }

    void fileHoldsPlainJsonTypes()
    {
        QSettings &store = defaultsStore();
        store.setValue(QStringLiteral("plain.bool"), true);
        store.setValue(QStringLiteral("plain.list"), QStringList{QStringLiteral("a")});
        store.setValue(QStringLiteral("plain.int"), 7);
        store.setValue(QStringLiteral("plain.data"), QByteArray("hi"));
        store.sync();

        const QJsonObject file = readJsonObject(store.fileName());
        QCOMPARE(file.value(QStringLiteral("plain.bool")), QJsonValue(true));
        QCOMPARE(file.value(QStringLiteral("plain.list")), QJsonValue(QJsonArray{"a"}));
        QCOMPARE(file.value(QStringLiteral("plain.int")), QJsonValue(7));
        QCOMPARE(file.value(QStringLiteral("plain.data")),
                 QJsonValue(QJsonObject{{QStringLiteral("$data"), QStringLiteral("aGk=")}}));
    }

    void keysStayFlatEvenWithDotsAndSlashes()
    {
        QSettings &store = defaultsStore();
        store.setValue(QStringLiteral("kestrine.log.entries.probe"), 1);
        store.setValue(QStringLiteral("section/key"), 2);
        store.sync();

        const QJsonObject file = readJsonObject(store.fileName());
        QCOMPARE(file.value(QStringLiteral("kestrine.log.entries.probe")), QJsonValue(1));
        QCOMPARE(file.value(QStringLiteral("section/key")), QJsonValue(2));
        QVERIFY(!file.contains(QStringLiteral("kestrine")));
        QVERIFY(!file.contains(QStringLiteral("section")));

        const auto disk = m_disk.read(store.fileName());
        QVERIFY(disk);
        QCOMPARE(disk->value(QStringLiteral("section/key")).toLongLong(), 2);
        QCOMPARE(disk->value(QStringLiteral("kestrine.log.entries.probe")).toLongLong(), 1);
    }

    void wholeNumbersReadBackAsIntegersOthersAsDoubles()
    {
        // JSON has one number type: a double with a whole value is written as "3" and so comes
        // back as an integer, as does "3.0" written by hand.
        const QString path = m_dir.filePath(QStringLiteral("numbers.json"));
        QVERIFY(
            writeBytes(path, "{\"written\": 3.0, \"huge\": 1e300, \"neg\": -4, \"half\": -0.5}"));
        QSettings settings(path, jsonSettingsFormat());
        QCOMPARE(settings.status(), QSettings::NoError);
        QCOMPARE(settings.value(QStringLiteral("written")).typeId(), QMetaType::LongLong);
        QCOMPARE(settings.value(QStringLiteral("written")).toLongLong(), 3);
        QCOMPARE(settings.value(QStringLiteral("huge")).typeId(), QMetaType::Double);
        QCOMPARE(settings.value(QStringLiteral("huge")).toDouble(), 1e300);
        QCOMPARE(settings.value(QStringLiteral("neg")).typeId(), QMetaType::LongLong);
        QCOMPARE(settings.value(QStringLiteral("neg")).toLongLong(), -4);
        QCOMPARE(settings.value(QStringLiteral("half")).typeId(), QMetaType::Double);
        QCOMPARE(settings.value(QStringLiteral("half")).toDouble(), -0.5);
    }

    void dataTagThatIsNotBase64StaysAnObject()
    {
        const QString path = m_dir.filePath(QStringLiteral("badtag.json"));
        QVERIFY(
            writeBytes(path, "{\"odd\": {\"$data\": \"***\"}, \"fine\": {\"$data\": \"aGk=\"}}"));
        QSettings settings(path, jsonSettingsFormat());
        QCOMPARE(settings.value(QStringLiteral("odd")).typeId(), QMetaType::QVariantMap);
        QCOMPARE(settings.value(QStringLiteral("odd")).toMap().value(QStringLiteral("$data")),
                 QVariant(QStringLiteral("***")));
        QCOMPARE(settings.value(QStringLiteral("fine")).typeId(), QMetaType::QByteArray);
        QCOMPARE(settings.value(QStringLiteral("fine")).toByteArray(), QByteArray("hi"));
    }

    void unreadableFileReadsEmptyAndIsReplacedByTheNextWrite_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("not JSON") << QByteArray("this is {not json");
        QTest::newRow("truncated object") << QByteArray("{\"mergeGateMode\": \"Block");
        QTest::newRow("array") << QByteArray("[\"mergeGateMode\", true]");
        QTest::newRow("binary") << QByteArray("\x00\xff\xfe\x01", 4);
    }

    void unreadableFileReadsEmptyAndIsReplacedByTheNextWrite()
    {
        QFETCH(QByteArray, content);
        const QString path = m_dir.filePath(QStringLiteral("broken-%1.json").arg(++m_copies));
        QVERIFY(writeBytes(path, content));

        {
            QSettings settings(path, jsonSettingsFormat());
            QCOMPARE(settings.status(), QSettings::FormatError);
            QVERIFY(settings.allKeys().isEmpty());
            QVERIFY(!settings.contains(QStringLiteral("mergeGateMode")));

            settings.setValue(QStringLiteral("deleteBranchAfterMerge"), true);
            settings.sync();
        }

        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
        QCOMPARE(error.error, QJsonParseError::NoError);
        QVERIFY(document.isObject());
        QCOMPARE(document.object(),
                 QJsonObject({{QStringLiteral("deleteBranchAfterMerge"), true}}));

        const auto disk = m_disk.read(path);
        QVERIFY(disk);
        QCOMPARE(disk->status(), QSettings::NoError);
        QCOMPARE(disk->value(QStringLiteral("deleteBranchAfterMerge")), QVariant(true));
    }

    void emptyFileReadsEmptyWithoutError()
    {
        const QString path = m_dir.filePath(QStringLiteral("empty.json"));
        QVERIFY(writeBytes(path, QByteArray()));
        QSettings settings(path, jsonSettingsFormat());
        QCOMPARE(settings.status(), QSettings::NoError);
        QVERIFY(settings.allKeys().isEmpty());
    }

    void removedKeyIsGoneFromTheFile()
    {
        QSettings &store = defaultsStore();
        store.setValue(QStringLiteral("toRemove"), QStringLiteral("x"));
        store.sync();
        QVERIFY(readJsonObject(store.fileName()).contains(QStringLiteral("toRemove")));
        store.remove(QStringLiteral("toRemove"));
        store.sync();
        QVERIFY(!readJsonObject(store.fileName()).contains(QStringLiteral("toRemove")));
        QVERIFY(!store.contains(QStringLiteral("toRemove")));
    }
};

QTEST_GUILESS_MAIN(TestDefaultsStore)
#include "tst_defaultsstore.moc"
