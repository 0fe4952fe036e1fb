// kestrine-cli --demo: the built-in demo instance in the command's own process, as `make run`
// shows it on a machine without a display. Nothing of the user's is read or written.

#include "clirun.h"

#include <QDir>
#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QtTest>

using namespace kestrine::testing;

namespace {

/// Every file under `root`.
QStringList filesUnder(const QString &root)
{
    QStringList files;
    QDirIterator it(root, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(it.next());
    return files;
}

} // namespace

class TestCliDemo : public QObject
{
    Q_OBJECT

private slots:
    void demoInboxIsPrintedWithoutTouchingTheUsersFiles()
    {
        CliRunner cli;
        // Whatever the environment says, the demo uses its own instance.
        cli.environment.insert(QStringLiteral("KESTRINE_URL"),
                               QStringLiteral("http://127.0.0.1:9"));
        cli.environment.insert(QStringLiteral("KESTRINE_TOKEN"), QStringLiteral("not-used"));

        const CliResult result = cli.run({QStringLiteral("--demo"), QStringLiteral("inbox")});

        QCOMPARE(result.errText(), QString());
        QCOMPARE(result.exitCode, 0);
        const QStringList rows = result.outText().split(u'\n', Qt::SkipEmptyParts);
        QVERIFY(rows.size() >= 5);
        const QRegularExpression row(
            QStringLiteral("^#[0-9]+\t[^/\t]+/[^/\t]+\t[^\t]+(\tdraft)?$"));
        int drafts = 0;
        for (const QString &line : rows) {
            QVERIFY2(row.match(line).hasMatch(), qPrintable(line));
            drafts += line.endsWith(u"\tdraft");
        }
        QVERIFY(drafts >= 1);
        QCOMPARE(filesUnder(cli.root()), QStringList());
    }

    void demoPullRequestsCanBeShown()
    {
        const CliRunner cli;
        const CliResult inbox = cli.run({QStringLiteral("--demo"), QStringLiteral("inbox")});
        QCOMPARE(inbox.exitCode, 0);
        const QStringList first = inbox.outText().section(u'\n', 0, 0).split(u'\t');
        QVERIFY(first.size() >= 3);

        const CliResult show =
            cli.run({QStringLiteral("--demo"), QStringLiteral("show"), first[1], first[0].mid(1)});

        QCOMPARE(show.errText(), QString());
        QCOMPARE(show.exitCode, 0);
        QVERIFY(show.outText().startsWith(
            QStringLiteral("%1\n%2%3 · open · CI ").arg(first[2], first[1], first[0])));
    }

    void externalCIStatusesAreListedAndDecideTheCircleWithoutRuns()
    {
        const CliRunner cli;
        const CliResult show = cli.run({QStringLiteral("--demo"), QStringLiteral("show"),
                                        QStringLiteral("norrum/docs"), QStringLiteral("17")});
        QCOMPARE(show.errText(), QString());
        QCOMPARE(show.exitCode, 0);
        const QString out = show.outText();
        // No Actions runs: the failing Woodpecker status makes CI red.
        QVERIFY2(out.contains(QStringLiteral("norrum/docs#17 · open · CI failure")),
                 qPrintable(out));
        QVERIFY2(out.contains(QStringLiteral("  No workflow runs for this head commit.\n"
                                             "  Commit statuses\n"
                                             "    failure  ci/woodpecker/pr/links  2 broken links "
                                             "in release-checklist.md  "
                                             "https://ci.norrum.example/repos/24/pipeline/218/2\n"
                                             "    pending  ci/woodpecker/pr/site  Pipeline is "
                                             "running  "
                                             "https://ci.norrum.example/repos/24/pipeline/218/1")),
                 qPrintable(out));
    }

    void actionsOwnStatusesAreNotListedBesideTheRuns()
    {
        const CliRunner cli;
        const CliResult show =
            cli.run({QStringLiteral("--demo"), QStringLiteral("show"), QStringLiteral("--json"),
                     QStringLiteral("norrum/harbor"), QStringLiteral("142")});
        QCOMPARE(show.exitCode, 0);
        const QJsonObject report = QJsonDocument::fromJson(show.outText().toUtf8()).object();
        const QJsonArray statuses = report.value(QStringLiteral("statuses")).toArray();
        QCOMPARE(statuses.size(), 1);
        QCOMPARE(statuses.at(0).toObject().value(QStringLiteral("context")).toString(),
                 QStringLiteral("coverage/codecov"));
        QVERIFY(!report.value(QStringLiteral("runs")).toArray().isEmpty());
    }

    void demoSettingsPointAtTheDemoInstance()
    {
        const CliRunner cli;

        const CliResult result = cli.run({QStringLiteral("--demo"), QStringLiteral("settings")});

        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.outText().startsWith(QStringLiteral("instanceURL\thttp://127.0.0.1:")));
        QVERIFY(result.outText().contains(QStringLiteral("\nisConfigured\ttrue\n")));
    }
};

QTEST_GUILESS_MAIN(TestCliDemo)
#include "tst_clidemo.moc"
