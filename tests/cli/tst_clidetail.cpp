// The commands about one pull request (show, diff, job-log, the actions and merge) through
// kestrine-cli against the simulated Gitea of the seed: output, exit code, the log lines stored,
// and the requests the server saw.

#include "clirun.h"
#include "clitestcase.h"
#include "fixtures.h"
#include "pagedanswer.h"
#include "seededgitea.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QtTest>

using namespace kestrine;
using namespace kestrine::testing;

namespace {

const QString tool = QStringLiteral("ann/tool");

/// The requests of opening PR `number` of ann/tool: the pull request, its four lists, then the
/// runs of its head commit, the jobs of each run and its commit statuses. (The four lists go out
/// together, so their order among themselves is not fixed; this is the order they are started in.)
QStringList detailLoad(int number, const QString &headSha, const QList<int> &runIDs)
{
    const QString pull = QStringLiteral("/api/v1/repos/ann/tool/pulls/%1").arg(number);
    QStringList requests{
        QStringLiteral("GET ") + pull,
        QStringLiteral("GET /api/v1/repos/ann/tool/issues/%1/comments").arg(number),
        QStringLiteral("GET ") + pull + QStringLiteral("/reviews"),
        QStringLiteral("GET ") + pull + QStringLiteral("/files"),
        QStringLiteral("GET ") + pull + QStringLiteral("/commits"),
        QStringLiteral("GET /api/v1/repos/ann/tool/actions/runs?head_sha=%1&limit=20").arg(headSha),
    };
    for (int run : runIDs)
        requests.append(QStringLiteral("GET /api/v1/repos/ann/tool/actions/runs/%1/jobs").arg(run));
    // The statuses of other CI, after Actions, as the detail screen asks for them.
    requests.append(QStringLiteral("GET /api/v1/repos/ann/tool/commits/%1/status").arg(headSha));
    return requests;
}

/// `requests` with the four lists of each load (which go out together, in no fixed order) put in
/// the order detailLoad() gives them.
QStringList normalized(QStringList requests)
{
    static const QRegularExpression pullRequest(
        QStringLiteral("^GET /api/v1/repos/[^/]+/[^/]+/pulls/[0-9]+$"));
    for (qsizetype i = 0; i + 4 < requests.size(); ++i) {
        if (!pullRequest.match(requests[i]).hasMatch())
            continue;
        const QString pull = requests[i].mid(4);
        const QString issue =
            QString(pull).replace(QStringLiteral("/pulls/"), QStringLiteral("/issues/"));
        const QStringList lists{
            QStringLiteral("GET ") + issue + QStringLiteral("/comments"),
            QStringLiteral("GET ") + pull + QStringLiteral("/reviews"),
            QStringLiteral("GET ") + pull + QStringLiteral("/files"),
            QStringLiteral("GET ") + pull + QStringLiteral("/commits"),
        };
        QStringList next = requests.mid(i + 1, 4);
        QStringList sortedNext = next;
        QStringList sortedLists = lists;
        sortedNext.sort();
        sortedLists.sort();
        if (sortedNext == sortedLists) {
            for (int k = 0; k < 4; ++k)
                requests[i + 1 + k] = lists[k];
        }
    }
    return requests;
}

const QString sha7 = QStringLiteral("9a8b7c6d5e4f30211223344556677889900aabbc");
const QString sha9 = QStringLiteral("7c0ffee5a1b2c3d4e5f60718293a4b5c6d7e8f90");

/// The seed's ann/tool repository.
QJsonObject seededTool()
{
    const QJsonDocument seed =
        QJsonDocument::fromJson(fixtures::read(QStringLiteral("gitea/seed.json")));
    for (const QJsonValue &repo : seed[QStringLiteral("repositories")].toArray()) {
        if (repo[QStringLiteral("owner")] == QStringLiteral("ann") &&
            repo[QStringLiteral("name")] == QStringLiteral("tool"))
            return repo.toObject();
    }
    return {};
}

/// The diff of ann/tool's pull request `number` in the seed.
QByteArray seededDiff(int number)
{
    for (const QJsonValue &pr : seededTool()[QStringLiteral("pulls")].toArray()) {
        if (pr[QStringLiteral("number")].toInt() == number)
            return pr[QStringLiteral("diff")].toString().toUtf8();
    }
    return {};
}

/// The log text of ann/tool's job `id` in the seed.
QByteArray seededJobLog(qint64 id)
{
    for (const QJsonValue &runs : seededTool()[QStringLiteral("runs")].toObject()) {
        for (const QJsonValue &run : runs.toArray()) {
            for (const QJsonValue &job : run[QStringLiteral("jobs")].toArray()) {
                if (job[QStringLiteral("id")].toInteger() == id)
                    return job[QStringLiteral("log")].toString().toUtf8();
            }
        }
    }
    return {};
}

} // namespace

class TestCliDetail : public CliTestCase
{
    Q_OBJECT

private:
    QStringList requests() const { return normalized(gitea->requestLines()); }

    /// The "Files" block of show's text, up to the blank line before "Checks".
    static QString filesBlock(const QString &shown)
    {
        const qsizetype start = shown.indexOf(QStringLiteral("\n\nFiles\n")) + 2;
        const qsizetype end = shown.indexOf(QStringLiteral("\n\nChecks\n"), start);
        return start < 2 || end < 0 ? QString() : shown.mid(start, end - start);
    }

private slots:
    void init()
    {
        QVERIFY(startFresh());
        login(SeededGitea::annToken);
    }

    void cleanup() { stop(); }

    void showPrintsThePullRequestTabByTab()
    {
        const CliResult result = cli->run({QStringLiteral("show"), tool, QStringLiteral("7")});

        QCOMPARE(result.errText(), QString());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outText(),
                 QStringLiteral("Add retry to the release uploader\n"
                                "ann/tool#7 · open · CI success · Changes\n") +
                     gitea->url() +
                     QStringLiteral("/ann/tool/pulls/7\n"
                                    "\n"
                                    "## Why\n"
                                    "\n"
                                    "Uploads fail on flaky networks.\n"
                                    "\n"
                                    "- retry 3 times\n"
                                    "- back off\n"
                                    "\n"
                                    "```go\n"
                                    "for i := 0; i < 3; i++ {}\n"
                                    "```\n"
                                    "\n"
                                    "Reviews\n"
                                    "  🔴 ann requested changes\n"
                                    "    Please back off between attempts.\n"
                                    "  ✅ cy approved\n"
                                    "  💬 ann reviewed\n"
                                    "    Looks good now, one question about the pause.\n"
                                    "Comments\n"
                                    "  ann 2024-04-30T08:45:00Z\n"
                                    "    Could this also cover the checksum upload?\n"
                                    "  bo 2024-04-30T09:10:00Z\n"
                                    "    Yes, it goes through `Upload` too.\n"
                                    "\n"
                                    "Files\n"
                                    "  → docs/UPLOAD.md  +1 −1\n"
                                    "  － uploader/legacy.go  +0 −6\n"
                                    "  ＋ uploader/retry.go  +21 −0\n"
                                    "  ✎ uploader/upload.go  +8 −6\n"
                                    "\n"
                                    "Checks\n"
                                    "  success  workflow  (run 42)\n"
                                    "    success  lint  (job 103)\n"
                                    "  success  workflow  (run 41)\n"
                                    "    success  build  (job 101)\n"
                                    "    success  test  (job 102)\n"));
        QCOMPARE(requests(), detailLoad(7, sha7, {42, 41}));
        // One log line per request, as the app writes them.
        const QStringList log = cli->storedLogLines();
        QCOMPARE(log.size(), 9);
        QCOMPARE(log.first(), QStringLiteral("INFO GET repos/ann/tool/pulls/7 → 200"));
        QVERIFY(log.contains(QStringLiteral("INFO GET repos/ann/tool/issues/7/comments → 200")));
        QCOMPARE(log.mid(5),
                 (QStringList{
                     QStringLiteral("INFO GET repos/ann/tool/actions/runs → 200"),
                     QStringLiteral("INFO GET repos/ann/tool/actions/runs/42/jobs → 200"),
                     QStringLiteral("INFO GET repos/ann/tool/actions/runs/41/jobs → 200"),
                     QStringLiteral("INFO GET repos/ann/tool/commits/") + sha7 +
                         QStringLiteral("/status → 200"),
                 }));
    }

    void showPrintsThePagesAddressAsTheServerWritesIt()
    {
        // Gitea builds the address from its ROOT_URL, not from the address it was asked at.
        gitea->simulation().setRootUrl(QStringLiteral("https://git.example.org/code/"));
        const QString page = QStringLiteral("https://git.example.org/code/ann/tool/pulls/7");

        const CliResult text = cli->run({QStringLiteral("show"), tool, QStringLiteral("7")});
        QCOMPARE(text.exitCode, 0);
        QCOMPARE(text.outText().section(u'\n', 0, 2),
                 QStringLiteral("Add retry to the release uploader\n"
                                "ann/tool#7 · open · CI success · Changes\n") +
                     page);

        const CliResult json =
            cli->run({QStringLiteral("show"), tool, QStringLiteral("7"), QStringLiteral("--json")});
        QCOMPARE(json.exitCode, 0);
        QCOMPARE(QJsonDocument::fromJson(json.out)[QStringLiteral("pr")][QStringLiteral("html_url")]
                     .toString(),
                 page);
    }

    void showLeavesOutAnAddressThatIsNoWebPage_data()
    {
        QTest::addColumn<QJsonValue>("htmlUrl");
        QTest::newRow("javascript") << QJsonValue(QStringLiteral("javascript:alert(1)"));
        QTest::newRow("file") << QJsonValue(QStringLiteral("file:///etc/passwd"));
        QTest::newRow("absent") << QJsonValue(QJsonValue::Undefined);
    }

    void showLeavesOutAnAddressThatIsNoWebPage()
    {
        QFETCH(QJsonValue, htmlUrl);
        gitea->answerPullRequestWith(QStringLiteral("ann"), QStringLiteral("tool"), 7,
                                     QStringLiteral("html_url"), htmlUrl);

        const CliResult result = cli->run({QStringLiteral("show"), tool, QStringLiteral("7")});

        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.outText().startsWith(
            QStringLiteral("Add retry to the release uploader\n"
                           "ann/tool#7 · open · CI success · Changes\n\n## Why\n")));
        if (htmlUrl.isString())
            QVERIFY(!result.outText().contains(htmlUrl.toString()));
    }

    void showMakesTheControlCharactersOfServerTextsVisible()
    {
        // A title that would retitle the terminal, hide its start behind a carriage return and
        // open a C1 control sequence.
        const QString title = QStringLiteral("Fix \x1b]0;owned\x07 it\rX\u009b2J\x7f\tend");
        gitea->answerPullRequestWith(QStringLiteral("ann"), QStringLiteral("tool"), 7,
                                     QStringLiteral("title"), title);

        const CliResult shown = cli->run({QStringLiteral("show"), tool, QStringLiteral("7")});

        QCOMPARE(shown.exitCode, 0);
        QVERIFY(shown.outText().startsWith(
            QStringLiteral("Fix \u241b]0;owned\u2407 it\u240dX\ufffd2J\u2421\tend\n")));
        QVERIFY(!shown.out.contains('\x1b'));
        QVERIFY(!shown.out.contains('\r'));

        // JSON escapes them itself and keeps the title as it is.
        const CliResult json =
            cli->run({QStringLiteral("show"), tool, QStringLiteral("7"), QStringLiteral("--json")});
        QCOMPARE(json.exitCode, 0);
        QCOMPARE(QJsonDocument::fromJson(json.out)[QStringLiteral("pr")][QStringLiteral("title")]
                     .toString(),
                 title);
    }

    void showOfAPullRequestWithoutReviewsOrDescription()
    {
        const CliResult result =
            cli->run({QStringLiteral("show"), QStringLiteral("cy/infra"), QStringLiteral("2")});

        QCOMPARE(result.exitCode, 0);
        const QStringList blocks = result.outText().split(QStringLiteral("\n\n"));
        QCOMPARE(blocks.size(), 5);
        QVERIFY(
            blocks[0].startsWith(QStringLiteral("Pin the runner image\ncy/infra#2 · open · CI ")));
        QVERIFY(blocks[2].startsWith(QStringLiteral("Comments\n")) ||
                blocks[2].startsWith(QStringLiteral("Reviews\n")));
        QCOMPARE(blocks[4], QStringLiteral("Checks\n  No workflow runs for this head commit.\n"));
    }

    void showAsJsonHoldsTheRecords()
    {
        const CliResult result =
            cli->run({QStringLiteral("show"), tool, QStringLiteral("7"), QStringLiteral("--json")});

        QCOMPARE(result.exitCode, 0);
        QJsonParseError error;
        const QJsonObject report = QJsonDocument::fromJson(result.out, &error).object();
        QCOMPARE(error.error, QJsonParseError::NoError);
        QCOMPARE(report[QStringLiteral("pr")][QStringLiteral("number")].toInteger(), 7);
        QCOMPARE(
            report[QStringLiteral("pr")][QStringLiteral("head")][QStringLiteral("sha")].toString(),
            sha7);
        QCOMPARE(report[QStringLiteral("ciStatus")].toString(), QStringLiteral("success"));
        QCOMPARE(report[QStringLiteral("reviews")].toArray().size(), 3);
        QCOMPARE(report[QStringLiteral("comments")].toArray().size(), 2);
        QCOMPARE(report[QStringLiteral("files")].toArray().size(), 4);
        QVERIFY(!report[QStringLiteral("commits")].toArray().isEmpty());
        QCOMPARE(report[QStringLiteral("runs")].toArray().size(), 2);
        QCOMPARE(report[QStringLiteral("jobs")].toObject().keys(),
                 (QStringList{QStringLiteral("41"), QStringLiteral("42")}));
        QCOMPARE(report[QStringLiteral("jobs")][QStringLiteral("41")][1][QStringLiteral("name")]
                     .toString(),
                 QStringLiteral("test"));
        QCOMPARE(report[QStringLiteral("comments")][0][QStringLiteral("created_at")].toString(),
                 QStringLiteral("2024-04-30T08:45:00Z"));
        // Every list arrived whole.
        QCOMPARE(report[QStringLiteral("cut")].toObject(), QJsonObject());
    }

    void showMarksADeletedFileWithTheRemovedMark()
    {
        // Gitea calls a removed file "deleted".
        const CliResult result = cli->run({QStringLiteral("show"), tool, QStringLiteral("7")});
        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.outText().contains(QStringLiteral("\n  － uploader/legacy.go  +0 −6\n")));
    }

    void showListsEveryPageOfTheChangedFiles()
    {
        gitea->server().route("GET", QStringLiteral("/api/v1/repos/ann/tool/pulls/7/files"),
                              pagedAnswer(numberedFiles(75), 30, "https://git.internal.example"));
        const CliResult result = cli->run({QStringLiteral("show"), tool, QStringLiteral("7")});

        QCOMPARE(result.exitCode, 0);
        const QString files = filesBlock(result.outText());
        QStringList expected{QStringLiteral("Files")};
        for (int i = 1; i <= 75; ++i)
            expected.append(QStringLiteral("  ✎ file-%1.txt  +%1 −0").arg(i));
        QCOMPARE(files, expected.join(u'\n'));
        QCOMPARE(requests().filter(QStringLiteral("/pulls/7/files")).size(), 3);
    }

    void showSaysWhenTheFilesWereCutAtThePageBound()
    {
        gitea->server().route("GET", QStringLiteral("/api/v1/repos/ann/tool/pulls/7/files"),
                              pagedAnswer(numberedFiles(120), 1, "https://git.internal.example"));
        const CliResult text = cli->run({QStringLiteral("show"), tool, QStringLiteral("7")});
        QCOMPARE(text.exitCode, 0);
        const QStringList files = filesBlock(text.outText()).split(u'\n');
        QCOMPARE(files.size(), 1 + 100 + 1);
        QCOMPARE(files.at(100), QStringLiteral("  ✎ file-100.txt  +100 −0"));
        QCOMPARE(files.last(), QStringLiteral("  (Showing the first 100 of 120.)"));

        const CliResult json =
            cli->run({QStringLiteral("show"), tool, QStringLiteral("7"), QStringLiteral("--json")});
        QCOMPARE(json.exitCode, 0);
        const QJsonObject report = QJsonDocument::fromJson(json.out).object();
        QCOMPARE(report[QStringLiteral("files")].toArray().size(), 100);
        QCOMPARE(
            report[QStringLiteral("cut")].toObject(),
            (QJsonObject{{QStringLiteral("files"), QJsonObject{{QStringLiteral("shown"), 100},
                                                               {QStringLiteral("total"), 120}}}}));
    }

    void showOfAMissingPullRequestFails()
    {
        const CliResult result = cli->run({QStringLiteral("show"), tool, QStringLiteral("99")});

        QCOMPARE(result.errText(), QStringLiteral("Not found.\n"));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.isEmpty());
        QCOMPARE(requests(), QStringList{QStringLiteral("GET /api/v1/repos/ann/tool/pulls/99")});
        QCOMPARE(cli->storedLogLines(),
                 (QStringList{QStringLiteral("ERROR GET repos/ann/tool/pulls/99 → 404 not found"),
                              QStringLiteral("ERROR PR 99: load failed: Not found.")}));
    }

    void everyCommandWithoutConfigurationFails_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        // The commands that stand for the detail screen use the inbox's words, from which the app
        // opens a pull request; diff and job-log say what their own screens say.
        const QString inboxWords = QStringLiteral("Configure your Gitea instance in Settings.\n");
        const QString screenWords = QStringLiteral("Not configured.\n");
        QTest::newRow("show") << QStringList{"show", "ann/tool", "7"} << inboxWords;
        QTest::newRow("open") << QStringList{"open", "ann/tool", "7"} << inboxWords;
        QTest::newRow("diff") << QStringList{"diff", "ann/tool", "7", "go.mod"} << screenWords;
        QTest::newRow("job-log") << QStringList{"job-log", "ann/tool", "101"} << screenWords;
        QTest::newRow("comment") << QStringList{"comment", "ann/tool", "7", "hi"} << inboxWords;
        QTest::newRow("approve") << QStringList{"approve", "ann/tool", "7"} << inboxWords;
        QTest::newRow("request-changes")
            << QStringList{"request-changes", "ann/tool", "7", "no"} << inboxWords;
        QTest::newRow("close") << QStringList{"close", "ann/tool", "7"} << inboxWords;
        QTest::newRow("reopen") << QStringList{"reopen", "ann/tool", "7"} << inboxWords;
        QTest::newRow("rerun") << QStringList{"rerun", "ann/tool", "7", "41"} << inboxWords;
        QTest::newRow("merge") << QStringList{"merge", "ann/tool", "7", "--yes"} << inboxWords;
    }

    void everyCommandWithoutConfigurationFails()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        QCOMPARE(cli->run({QStringLiteral("logout")}).exitCode, 0);

        const CliResult result = cli->run(arguments);

        QCOMPARE(result.errText(), message);
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.isEmpty());
        QVERIFY(gitea->server().requests().isEmpty());
        QVERIFY(cli->storedLog().isEmpty());
    }

    void diffAndJobLogSayNotConfiguredWithoutAUsableInstance_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("cause");
        const QList<std::pair<const char *, QStringList>> commands{
            {"diff", QStringList{"diff", "ann/tool", "9", "go.mod"}},
            {"job-log", QStringList{"job-log", "ann/tool", "101"}},
        };
        for (const auto &[name, arguments] : commands) {
            for (const char *cause :
                 {"no token", "stored URL that does not parse", "KESTRINE_URL that does not parse"})
                QTest::addRow("%s, %s", name, cause) << arguments << QString::fromLatin1(cause);
        }
    }

    void diffAndJobLogSayNotConfiguredWithoutAUsableInstance()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, cause);
        if (cause == u"no token") {
            // The instance is the test's server, so a request made without the token would show.
            QCOMPARE(cli->run({QStringLiteral("logout")}).exitCode, 0);
            cli->environment.insert(QStringLiteral("KESTRINE_URL"), gitea->url());
        } else if (cause == u"stored URL that does not parse") {
            // No scheme: a relative path, not an instance.
            const CliResult login = cli->run({QStringLiteral("login"), QStringLiteral("--url"),
                                              QStringLiteral("git.example.org")},
                                             SeededGitea::annToken.toUtf8() + '\n');
            QCOMPARE(login.exitCode, 0);
        } else {
            // A scheme without a host, over the stored instance and token of init().
            cli->environment.insert(QStringLiteral("KESTRINE_URL"), QStringLiteral("https://"));
        }
        const CliResult settings = cli->run({QStringLiteral("settings"), QStringLiteral("--json")});
        QCOMPARE(QJsonDocument::fromJson(settings.out)[QStringLiteral("isConfigured")].toBool(),
                 cause != u"no token");

        const CliResult result = cli->run(arguments);

        QCOMPARE(result.errText(), QStringLiteral("Not configured.\n"));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.isEmpty());
        QVERIFY(gitea->server().requests().isEmpty());
        QVERIFY(cli->storedLog().isEmpty());
    }

    void aRefusedTokenFailsTheLoad()
    {
        login(QStringLiteral("0000000000000000000000000000000000000000"));

        const CliResult result = cli->run({QStringLiteral("close"), tool, QStringLiteral("7")});

        QCOMPARE(result.errText(), QStringLiteral("Authentication failed. Check your token.\n"));
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(requests(), QStringList{QStringLiteral("GET /api/v1/repos/ann/tool/pulls/7")});
    }

    void diffPrintsTheFilesLines()
    {
        const CliResult result =
            cli->run({QStringLiteral("diff"), tool, QStringLiteral("9"), QStringLiteral("go.mod")});

        QCOMPARE(result.errText(), QString());
        QCOMPARE(result.exitCode, 0);
        // The section starts right after the "+++ b/go.mod" marker, so its first line is the
        // (empty) rest of that line; the diff's final line break gives an empty last line.
        QCOMPARE(result.outText(), QStringLiteral("\n"
                                                  "@@ -1,3 +1,3 @@\n"
                                                  " module git.example.org/ann/tool\n"
                                                  " \n"
                                                  "-go 1.21\n"
                                                  "+go 1.22\n"
                                                  "\n"));
        QCOMPARE(requests(),
                 QStringList{QStringLiteral("GET /api/v1/repos/ann/tool/pulls/9.diff")});
        QCOMPARE(cli->storedLogLines(),
                 QStringList{QStringLiteral("INFO GET repos/ann/tool/pulls/9.diff → 200")});
    }

    void diffOfAFileWithoutItsOwnSectionPrintsTheWholeDiff()
    {
        // A deleted file's header names /dev/null, so there is no "+++ b/" line for it.
        const CliResult result = cli->run({QStringLiteral("diff"), tool, QStringLiteral("7"),
                                           QStringLiteral("uploader/legacy.go")});

        QCOMPARE(result.exitCode, 0);
        const QByteArray whole = seededDiff(7);
        QVERIFY(whole.contains("+++ /dev/null"));
        QCOMPARE(result.out, whole + '\n');
    }

    void diffOfAMissingPullRequestFails()
    {
        const CliResult result = cli->run(
            {QStringLiteral("diff"), tool, QStringLiteral("99"), QStringLiteral("go.mod")});

        QCOMPARE(result.errText(), QStringLiteral("Not found.\n"));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.isEmpty());
    }

    void jobLogIsPrintedByteForByte()
    {
        const CliResult result = cli->run({QStringLiteral("job-log"), tool, QStringLiteral("101")});

        QCOMPARE(result.errText(), QString());
        QCOMPARE(result.exitCode, 0);
        QVERIFY(!seededJobLog(101).isEmpty());
        QCOMPARE(result.out, seededJobLog(101));
        QCOMPARE(requests(),
                 QStringList{QStringLiteral("GET /api/v1/repos/ann/tool/actions/jobs/101/logs")});
    }

    void jobLogKeepsEscapesLineEndsAndTheMissingLastLineBreak()
    {
        const QByteArray log = "\x1b[1;32m✓\x1b[0m build\r\n"
                               "2024-05-01T10:21:02.1234567Z ümlaut\ttab\r"
                               "progress 50%\r"
                               "progress 100%";
        gitea->server().route("GET", QStringLiteral("/api/v1/repos/ann/tool/actions/jobs/777/logs"),
                              FakeResponse::text(log));

        const CliResult result = cli->run({QStringLiteral("job-log"), tool, QStringLiteral("777")});

        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.out, log);
    }

    void jobLogOfAJobWithoutALogFails()
    {
        const CliResult result = cli->run({QStringLiteral("job-log"), tool, QStringLiteral("105")});

        QCOMPARE(result.errText(), QStringLiteral("Not found.\n"));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.isEmpty());
        QCOMPARE(cli->storedLogLines(),
                 QStringList{QStringLiteral(
                     "ERROR GET repos/ann/tool/actions/jobs/105/logs → 404 not found")});
    }

    void actionsActAfterTheLoad_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QString>("printed");
        QTest::addColumn<QString>("request");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("logLine");
        QTest::newRow("comment") << QStringList{"comment", "ann/tool", "7", "  Looks good.\n"}
                                 << QByteArray() << "Commented on ann/tool#7.\n"
                                 << "POST /api/v1/repos/ann/tool/issues/7/comments"
                                 << QByteArray(R"({"body":"Looks good."})")
                                 << "INFO POST repos/ann/tool/issues/7/comments → 201";
        QTest::newRow("comment from standard input")
            << QStringList{"comment", "ann/tool", "7", "-"}
            << QByteArray("\nFirst line\nsecond line\n\n") << "Commented on ann/tool#7.\n"
            << "POST /api/v1/repos/ann/tool/issues/7/comments"
            << QByteArray(R"({"body":"First line\nsecond line"})")
            << "INFO POST repos/ann/tool/issues/7/comments → 201";
        QTest::newRow("approve") << QStringList{"approve", "ann/tool", "7"} << QByteArray()
                                 << "Approved ann/tool#7.\n"
                                 << "POST /api/v1/repos/ann/tool/pulls/7/reviews"
                                 << QByteArray(R"({"event":"APPROVED"})")
                                 << "INFO POST repos/ann/tool/pulls/7/reviews → 200";
        QTest::newRow("approve with a text")
            << QStringList{"approve", "ann/tool", "7", "Ship it"} << QByteArray()
            << "Approved ann/tool#7.\n"
            << "POST /api/v1/repos/ann/tool/pulls/7/reviews"
            << QByteArray(R"({"body":"Ship it","event":"APPROVED"})")
            << "INFO POST repos/ann/tool/pulls/7/reviews → 200";
        QTest::newRow("request changes")
            << QStringList{"request-changes", "ann/tool", "7", "--", "-1, needs a test"}
            << QByteArray() << "Requested changes on ann/tool#7.\n"
            << "POST /api/v1/repos/ann/tool/pulls/7/reviews"
            << QByteArray(R"({"body":"-1, needs a test","event":"REQUEST_CHANGES"})")
            << "INFO POST repos/ann/tool/pulls/7/reviews → 200";
        QTest::newRow("close") << QStringList{"close", "ann/tool", "7"} << QByteArray()
                               << "Closed ann/tool#7.\n"
                               << "PATCH /api/v1/repos/ann/tool/pulls/7"
                               << QByteArray(R"({"state":"closed"})")
                               << "INFO PATCH repos/ann/tool/pulls/7 → 201";
        QTest::newRow("rerun") << QStringList{"rerun", "ann/tool", "7", "41"} << QByteArray()
                               << "Re-running run 41 of ann/tool#7.\n"
                               << "POST /api/v1/repos/ann/tool/actions/runs/41/rerun"
                               << QByteArray()
                               << "INFO POST repos/ann/tool/actions/runs/41/rerun → 201";
    }

    void actionsActAfterTheLoad()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, input);
        QFETCH(QString, printed);
        QFETCH(QString, request);
        QFETCH(QByteArray, body);
        QFETCH(QString, logLine);

        const CliResult result = cli->run(arguments, input);

        QCOMPARE(result.errText(), QString());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outText(), printed);
        // The detail screen's load first, then the action's request.
        const QStringList sent = requests();
        const QStringList load = detailLoad(7, sha7, {42, 41});
        QCOMPARE(sent.mid(0, load.size()), load);
        QCOMPARE(sent.at(load.size()), request);
        const RecordedRequest &action = gitea->server().requests().at(load.size());
        QCOMPARE(action.body, body);
        QCOMPARE(cli->storedLogLines().at(load.size()), logLine);
    }

    void closeThenReopenChangesTheState()
    {
        QCOMPARE(cli->run({QStringLiteral("close"), tool, QStringLiteral("7")}).exitCode, 0);
        QCOMPARE((*gitea->simulation().pullRequest(QStringLiteral("ann"), QStringLiteral("tool"),
                                                   7))[QStringLiteral("state")]
                     .toString(),
                 QStringLiteral("closed"));

        const CliResult result = cli->run({QStringLiteral("reopen"), tool, QStringLiteral("7")});

        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outText(), QStringLiteral("Reopened ann/tool#7.\n"));
        QCOMPARE((*gitea->simulation().pullRequest(QStringLiteral("ann"), QStringLiteral("tool"),
                                                   7))[QStringLiteral("state")]
                     .toString(),
                 QStringLiteral("open"));
        // The pull request is fetched again after the change, as the model does.
        QCOMPARE(requests().last(), QStringLiteral("GET /api/v1/repos/ann/tool/pulls/7"));
    }

    void aFailingActionReportsItsError()
    {
        const CliResult result =
            cli->run({QStringLiteral("rerun"), tool, QStringLiteral("7"), QStringLiteral("999")});

        QCOMPARE(result.errText(), QStringLiteral("Not found.\n"));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.isEmpty());
        QCOMPARE(requests().last(),
                 QStringLiteral("POST /api/v1/repos/ann/tool/actions/runs/999/rerun"));
        QCOMPARE(
            cli->storedLogLines().last(),
            QStringLiteral("ERROR POST repos/ann/tool/actions/runs/999/rerun → 404 not found"));
    }

    void mergeOfAGreenPullRequest()
    {
        const CliResult result = cli->run({QStringLiteral("merge"), tool, QStringLiteral("7"),
                                           QStringLiteral("--method=squash")});

        QCOMPARE(result.errText(), QString());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outText(), QStringLiteral("Merged ann/tool#7.\n"));
        const QStringList load = detailLoad(7, sha7, {42, 41});
        QCOMPARE(requests().mid(load.size()),
                 (QStringList{QStringLiteral("POST /api/v1/repos/ann/tool/pulls/7/merge"),
                              QStringLiteral("GET /api/v1/repos/ann/tool/pulls/7")}));
        QCOMPARE(gitea->server().requests().at(load.size()).body,
                 QByteArray(R"({"Do":"squash","delete_branch_after_merge":false})"));
        QCOMPARE((*gitea->simulation().pullRequest(QStringLiteral("ann"), QStringLiteral("tool"),
                                                   7))[QStringLiteral("merged")]
                     .toBool(),
                 true);
    }

    void mergeDeletesTheBranchWhenSetTo()
    {
        setting(QStringLiteral("deleteBranchAfterMerge"), QStringLiteral("true"));

        const CliResult result = cli->run({QStringLiteral("merge"), tool, QStringLiteral("7")});

        QCOMPARE(result.exitCode, 0);
        const QStringList load = detailLoad(7, sha7, {42, 41});
        QCOMPARE(requests().mid(load.size()),
                 (QStringList{QStringLiteral("POST /api/v1/repos/ann/tool/pulls/7/merge"),
                              QStringLiteral("DELETE /api/v1/repos/ann/tool/branches/retry-upload"),
                              QStringLiteral("GET /api/v1/repos/ann/tool/pulls/7")}));
        QCOMPARE(gitea->server().requests().at(load.size()).body,
                 QByteArray(R"({"Do":"merge","delete_branch_after_merge":true})"));
    }

    void mergeIsRefusedWhileCIIsRedInBlockMode()
    {
        setting(QStringLiteral("mergeGateMode"), QStringLiteral("block"));

        const CliResult result =
            cli->run({QStringLiteral("merge"), tool, QStringLiteral("9"), QStringLiteral("--yes")});

        QCOMPARE(result.errText(),
                 QStringLiteral("Merging is blocked while CI is red (Settings).\n"));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.isEmpty());
        QCOMPARE(requests(), detailLoad(9, sha9, {39}));
    }

    void mergeWhileCIIsRedNeedsYesWithoutATerminal()
    {
        const CliResult result = cli->run({QStringLiteral("merge"), tool, QStringLiteral("9")});

        QCOMPARE(result.errText(),
                 QStringLiteral("CI is red — you can still merge (Settings allows it).\n"
                                "Not merged: confirm with --yes.\n"));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.isEmpty());
        QCOMPARE(requests(), detailLoad(9, sha9, {39}));
    }

    void mergeOfAnOutOfDateBranchUpdatesItAndTriesOnceMore()
    {
        // CI is red (warn mode, confirmed) and the branch is behind its base.
        const CliResult result =
            cli->run({QStringLiteral("merge"), tool, QStringLiteral("9"), QStringLiteral("--yes")});

        QCOMPARE(result.errText(), QString());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outText(), QStringLiteral("Merged ann/tool#9.\n"));
        const QStringList load = detailLoad(9, sha9, {39});
        QCOMPARE(requests().mid(load.size()),
                 (QStringList{QStringLiteral("POST /api/v1/repos/ann/tool/pulls/9/merge"),
                              QStringLiteral("POST /api/v1/repos/ann/tool/pulls/9/update"),
                              QStringLiteral("POST /api/v1/repos/ann/tool/pulls/9/merge"),
                              QStringLiteral("GET /api/v1/repos/ann/tool/pulls/9")}));
        QCOMPARE(
            cli->storedLogLines().mid(load.size()),
            (QStringList{QStringLiteral("WARN POST repos/ann/tool/pulls/9/merge → 409 conflict"),
                         QStringLiteral("INFO POST repos/ann/tool/pulls/9/update → 200"),
                         QStringLiteral("INFO POST repos/ann/tool/pulls/9/merge → 200"),
                         QStringLiteral("INFO GET repos/ann/tool/pulls/9 → 200")}));
    }

    void mergeRefusedAgainAfterTheUpdateFails()
    {
        gitea->server().route("POST", QStringLiteral("/api/v1/repos/ann/tool/pulls/7/merge"),
                              FakeResponse::json(R"({"message":"Please try again later"})", 409));

        const CliResult result = cli->run({QStringLiteral("merge"), tool, QStringLiteral("7")});

        QCOMPARE(result.errText(),
                 QStringLiteral("This branch is out of date or conflicts with the base "
                                "branch. Update the branch and try again.\n"));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.isEmpty());
        const QStringList load = detailLoad(7, sha7, {42, 41});
        // Exactly two merge requests and one update between them.
        QCOMPARE(requests().mid(load.size()),
                 (QStringList{QStringLiteral("POST /api/v1/repos/ann/tool/pulls/7/merge"),
                              QStringLiteral("POST /api/v1/repos/ann/tool/pulls/7/update"),
                              QStringLiteral("POST /api/v1/repos/ann/tool/pulls/7/merge")}));
        QCOMPARE(
            cli->storedLogLines().mid(load.size()),
            (QStringList{QStringLiteral("WARN POST repos/ann/tool/pulls/7/merge → 409 conflict"),
                         QStringLiteral("INFO POST repos/ann/tool/pulls/7/update → 200"),
                         QStringLiteral("WARN POST repos/ann/tool/pulls/7/merge → 409 conflict")}));
    }

    void mergeOnATerminalAsksWhileCIIsRed_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<int>("mergeRequests");
        QTest::newRow("yes") << QByteArray("y\n") << 0 << 2;
        QTest::newRow("no") << QByteArray("n\n") << 1 << 0;
        QTest::newRow("just enter") << QByteArray("\n") << 1 << 0;
    }

    void mergeOnATerminalAsksWhileCIIsRed()
    {
        QFETCH(QByteArray, answer);
        QFETCH(int, exitCode);
        QFETCH(int, mergeRequests);
        if (QStandardPaths::findExecutable(QStringLiteral("script")).isEmpty())
            QSKIP("script(1) is needed to give the command a terminal");

        // script(1) runs the command on a pseudo-terminal and passes our input to it.
        QProcess process;
        process.setProcessEnvironment(cli->environment);
        process.setProgram(QStringLiteral("script"));
        process.setArguments({QStringLiteral("-qec"),
                              CliRunner::program() + QStringLiteral(" merge ann/tool 9"),
                              QStringLiteral("/dev/null")});
        process.start();
        QVERIFY(process.waitForStarted());
        // Answer once the question is on the terminal.
        QByteArray screen;
        QTRY_VERIFY_WITH_TIMEOUT((screen += process.readAllStandardOutput()).contains("[y/N]"),
                                 10000);
        QVERIFY(screen.contains(
            "CI is red — you can still merge (Settings allows it). Merge anyway? [y/N] "));
        process.write(answer);
        const CliResult result = CliRunner::finish(process);

        QCOMPARE(result.exitCode, exitCode);
        QCOMPARE(requests().count(QStringLiteral("POST /api/v1/repos/ann/tool/pulls/9/merge")),
                 mergeRequests);
        // On a terminal the progress shows as in the app, including the branch update.
        screen += result.out;
        QCOMPARE(screen.contains("Updating branch…"), mergeRequests > 0);
        QCOMPARE(screen.contains("Merged ann/tool#9."), mergeRequests > 0);
    }
};

QTEST_GUILESS_MAIN(TestCliDetail)
#include "tst_clidetail.moc"
