// The background check's memory file: its two keys, strict reading, plain writing.

#include "notificationstate.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

using namespace kestrine;

class TestNotificationState : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir dir;
    QString path() const { return dir.filePath(QStringLiteral("notification-state.json")); }

    void writeFile(const QByteArray &bytes) const
    {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
    }

    QByteArray readFile() const
    {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private slots:
    void emptyKeysLoadAsTheEmptyState()
    {
        writeFile("{\"announcedNewPRs\":[],\"ciStatusByPR\":{}}");
        QCOMPARE(NotificationState::load(path()), NotificationState());
    }

    void fileLackingEitherKeyLoadsEmptyAndTheNextSaveWritesBoth_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("no statuses") << QByteArray("{\"announcedNewPRs\":[\"a/b#1\"]}");
        QTest::newRow("no announced") << QByteArray("{\"ciStatusByPR\":{\"a/b#1\":\"success\"}}");
    }

    void fileLackingEitherKeyLoadsEmptyAndTheNextSaveWritesBoth()
    {
        QFETCH(QByteArray, content);
        writeFile(content);
        const NotificationState state = NotificationState::load(path());
        QCOMPARE(state, NotificationState());
        state.save(path());
        const QJsonObject saved = QJsonDocument::fromJson(readFile()).object();
        QVERIFY(saved.value(QStringLiteral("announcedNewPRs")).isArray());
        QVERIFY(saved.value(QStringLiteral("ciStatusByPR")).isObject());
    }

    void wrongShapesLoadAsTheEmptyState_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("not json") << QByteArray("{{");
        QTest::newRow("array") << QByteArray("[]");
        QTest::newRow("announced not an array")
            << QByteArray("{\"announcedNewPRs\":\"a/b#1\",\"ciStatusByPR\":{}}");
        QTest::newRow("announced with a number")
            << QByteArray("{\"announcedNewPRs\":[\"a/b#1\",2],\"ciStatusByPR\":{}}");
        QTest::newRow("statuses not an object")
            << QByteArray("{\"announcedNewPRs\":[],\"ciStatusByPR\":[]}");
        QTest::newRow("status not a text")
            << QByteArray("{\"announcedNewPRs\":[\"a/b#1\"],\"ciStatusByPR\":{\"a/b#1\":1}}");
        QTest::newRow("empty file") << QByteArray();
    }

    void wrongShapesLoadAsTheEmptyState()
    {
        QFETCH(QByteArray, content);
        writeFile(content);
        QCOMPARE(NotificationState::load(path()), NotificationState());
    }

    void missingFileLoadsAsTheEmptyState()
    {
        QFile::remove(path());
        QCOMPARE(NotificationState::load(path()), NotificationState());
    }

    void unknownKeysAreIgnored()
    {
        writeFile("{\"announcedNewPRs\":[\"a/b#1\"],"
                  "\"ciStatusByPR\":{\"a/b#1\":\"failure\"},\"version\":3}");
        const NotificationState state = NotificationState::load(path());
        QCOMPARE(state.announcedNewPRs, QSet<QString>{QStringLiteral("a/b#1")});
        QCOMPARE(state.ciStatusByPR.value(QStringLiteral("a/b#1")), QStringLiteral("failure"));
    }

    void savedStateReadsBackAndKeysAreExactTexts()
    {
        NotificationState state;
        state.announcedNewPRs = {QStringLiteral("team/app#7"), QStringLiteral("Team/app#7")};
        state.ciStatusByPR = {{QStringLiteral("team/app#7"), QStringLiteral("running")}};
        state.save(path());
        const NotificationState loaded = NotificationState::load(path());
        QCOMPARE(loaded, state);
        QCOMPARE(loaded.announcedNewPRs.size(), 2);
        QVERIFY(!loaded.ciStatusByPR.contains(QStringLiteral("Team/app#7")));
        QVERIFY(!readFile().contains('\n')); // compact, one plain write
    }

    void unwritableLocationIsIgnored()
    {
        NotificationState state;
        state.announcedNewPRs = {QStringLiteral("a/b#1")};
        state.save(dir.filePath(QStringLiteral("missing/folder/state.json")));
        QVERIFY(!QFile::exists(dir.filePath(QStringLiteral("missing/folder/state.json"))));
    }
};

QTEST_GUILESS_MAIN(TestNotificationState)
#include "tst_notificationstate.moc"
