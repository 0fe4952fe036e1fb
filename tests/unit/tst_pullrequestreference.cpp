// A pull request named by text, "owner/name#42", as notifications and `kestrine --open` hand it to
// the app: what is read from it, and what is refused before it could become part of a request path.

#include "prrow.h"
#include "pullrequestreference.h"

#include <QtTest>

using namespace kestrine;

class TestPullRequestReference : public QObject
{
    Q_OBJECT

private slots:
    void ownerNameAndNumberAreReadFromTheText()
    {
        const auto reference = PullRequestReference::parse(QStringLiteral("ann/tool#7"));
        QVERIFY(reference);
        QCOMPARE(reference->repo.owner.login, QStringLiteral("ann"));
        QCOMPARE(reference->repo.name, QStringLiteral("tool"));
        QCOMPARE(reference->repo.fullName, QStringLiteral("ann/tool"));
        QCOMPARE(reference->number, 7);
        QCOMPARE(reference->key(), QStringLiteral("ann/tool#7"));
    }

    void theKeyIsTheInboxRowsId()
    {
        PRRow row;
        row.repo = repositoryNamed(QStringLiteral("Team-1"), QStringLiteral("app.web_2"));
        row.pr.number = 1234567;
        const auto reference = PullRequestReference::parse(row.id());
        QVERIFY(reference);
        QCOMPARE(reference->repo, row.repo);
        QCOMPARE(reference->number, row.pr.number);
        QCOMPARE(reference->key(), row.id());
    }

    void namesGiteaAllowsAreAccepted_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("dots inside") << QStringLiteral("ann.b/tool.js#1");
        QTest::newRow("dot files repository") << QStringLiteral("ann/.github#2");
        QTest::newRow("dashes and underscores") << QStringLiteral("my-org/_private-tool#3");
        QTest::newRow("largest number") << QStringLiteral("a/b#9223372036854775807");
    }

    void namesGiteaAllowsAreAccepted()
    {
        QFETCH(QString, text);
        const auto reference = PullRequestReference::parse(text);
        QVERIFY(reference);
        QCOMPARE(reference->key(), text);
    }

    void malformedTextsAreRefused_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << QString();
        QTest::newRow("no number") << QStringLiteral("ann/tool");
        QTest::newRow("nothing after #") << QStringLiteral("ann/tool#");
        QTest::newRow("zero") << QStringLiteral("ann/tool#0");
        QTest::newRow("negative") << QStringLiteral("ann/tool#-7");
        QTest::newRow("plus sign") << QStringLiteral("ann/tool#+7");
        QTest::newRow("letters after the number") << QStringLiteral("ann/tool#7x");
        QTest::newRow("blank after the number") << QStringLiteral("ann/tool#7 ");
        QTest::newRow("too large") << QStringLiteral("ann/tool#9223372036854775808");
        QTest::newRow("non-ASCII digits") << QStringLiteral("ann/tool#\u0667");
        QTest::newRow("no owner") << QStringLiteral("tool#7");
        QTest::newRow("empty owner") << QStringLiteral("/tool#7");
        QTest::newRow("empty name") << QStringLiteral("ann/#7");
        QTest::newRow("two slashes") << QStringLiteral("ann/tool/x#7");
        QTest::newRow("dot dot") << QStringLiteral("ann/..#7");
        QTest::newRow("dot") << QStringLiteral("./tool#7");
        QTest::newRow("two hashes") << QStringLiteral("ann/to#ol#7");
        QTest::newRow("blank in a name") << QStringLiteral("ann/my tool#7");
        QTest::newRow("query in a name") << QStringLiteral("ann/tool?x=1#7");
        QTest::newRow("escape in a name") << QStringLiteral("ann/%2e%2e#7");
        QTest::newRow("non-ASCII letter") << QStringLiteral("ann/t\u00f6ol#7");
        QTest::newRow("number only") << QStringLiteral("#7");
    }

    void malformedTextsAreRefused()
    {
        QFETCH(QString, text);
        QVERIFY(!PullRequestReference::parse(text));
    }
};

QTEST_APPLESS_MAIN(TestPullRequestReference)
#include "tst_pullrequestreference.moc"
