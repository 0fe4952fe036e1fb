// inbox, check and logs through kestrine-cli against the simulated Gitea of the seed: what is
// printed, the exit code, the log lines the run added to the defaults file, the requests the
// server saw, and the notifications that reached the desktop's notification server.

#include "clirun.h"
#include "clitestcase.h"
#include "notificationserver.h"
#include "seededgitea.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpServer>
#include <QUrlQuery>
#include <QtTest>

using namespace kestrine;
using namespace kestrine::testing;

namespace {

/// What ann's inbox shows, newest update first.
const QString annInbox = QStringLiteral("#8\tann/tool\tWIP: Rework the config loader\tdraft\n"
                                        "#11\tann/tool\tDrop the legacy upload path\n"
                                        "#7\tann/tool\tAdd retry to the release uploader\n"
                                        "#9\tann/tool\tBump the Go toolchain to 1.22\n"
                                        "#10\tann/tool\tSwitch the changelog to keep-a-changelog\n"
                                        "#3\tann/website\tUpdate the privacy page\n"
                                        "#2\tcy/infra\tPin the runner image\n");

const QString reposRequest = QStringLiteral("GET /api/v1/user/repos?page=1&limit=50");

QStringList sorted(QStringList lines)
{
    lines.sort();
    return lines;
}

/// Fifty repositories, as one full page of the repository list.
QByteArray fullRepositoryPage()
{
    QJsonArray page;
    for (int i = 1; i <= 50; ++i) {
        const QString name = QStringLiteral("repo-%1").arg(i, 3, 10, QLatin1Char('0'));
        page.append(QJsonObject{{QStringLiteral("id"), 1000 + i},
                                {QStringLiteral("name"), name},
                                {QStringLiteral("full_name"), QStringLiteral("ann/") + name},
                                {QStringLiteral("owner"),
                                 QJsonObject{{QStringLiteral("login"), QStringLiteral("ann")}}}});
    }
    return QJsonDocument(page).toJson(QJsonDocument::Compact);
}

} // namespace

class TestCliInbox : public CliTestCase
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(startFresh()); }

    void cleanup() { stop(); }

    void inboxPrintsEveryOpenPullRequestNewestFirst()
    {
        login(SeededGitea::annToken);

        const CliResult result = cli->run({QStringLiteral("inbox")});

        QCOMPARE(result.errText(), QString());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outText(), annInbox);

        // One repository list (ann owns two and administers cy/infra; bo/dotfiles is not hers),
        // then every repository's open pull requests, all with ann's token.
        const QStringList requests = gitea->requestLines();
        QCOMPARE(requests.first(), reposRequest);
        QCOMPARE(sorted(requests.mid(1)),
                 sorted({
                     QStringLiteral("GET /api/v1/repos/ann/tool/pulls?state=open&limit=100"),
                     QStringLiteral("GET /api/v1/repos/ann/website/pulls?state=open&limit=100"),
                     QStringLiteral("GET /api/v1/repos/cy/infra/pulls?state=open&limit=100"),
                 }));
        for (const RecordedRequest &request : gitea->server().requests())
            QCOMPARE(request.header("Authorization"), "token " + SeededGitea::annToken.toLatin1());

        // The same log lines the app writes: the requests' own lines and the loader's summary.
        const QStringList log = cli->storedLogLines();
        QCOMPARE(log.size(), 5);
        QCOMPARE(log.mid(0, 2), (QStringList{QStringLiteral("INFO GET user/repos → 200"),
                                             QStringLiteral("INFO Inbox: 3/3 repos")}));
        QCOMPARE(sorted(log.mid(2)), sorted({
                                         QStringLiteral("INFO GET repos/ann/tool/pulls → 200"),
                                         QStringLiteral("INFO GET repos/ann/website/pulls → 200"),
                                         QStringLiteral("INFO GET repos/cy/infra/pulls → 200"),
                                     }));

        // And the same cache file, under XDG_CACHE_HOME.
        QFile cache(cli->appCacheDirectory() + QStringLiteral("/inbox.json"));
        QVERIFY(cache.open(QIODevice::ReadOnly));
        QCOMPARE(QJsonDocument::fromJson(cache.readAll()).array().size(), 7);
    }

    void inboxAsJsonHoldsTheRecords()
    {
        login(SeededGitea::annToken);

        const CliResult result = cli->run({QStringLiteral("inbox"), QStringLiteral("--json")});

        QCOMPARE(result.exitCode, 0);
        QJsonParseError error;
        const QJsonArray rows = QJsonDocument::fromJson(result.out, &error).array();
        QCOMPARE(error.error, QJsonParseError::NoError);
        QStringList lines;
        for (const QJsonValue &row : rows) {
            const QJsonObject pr = row[QStringLiteral("pr")].toObject();
            QString line = u'#' + QString::number(pr[QStringLiteral("number")].toInteger()) +
                           u'\t' +
                           row[QStringLiteral("repo")][QStringLiteral("full_name")].toString() +
                           u'\t' + pr[QStringLiteral("title")].toString();
            if (pr[QStringLiteral("draft")].toBool())
                line += QStringLiteral("\tdraft");
            lines.append(line);
        }
        QCOMPARE(lines.join(u'\n') + u'\n', annInbox);
        // Dates as internet date-times.
        QCOMPARE(rows.first()[QStringLiteral("pr")][QStringLiteral("updated_at")].toString(),
                 QStringLiteral("2024-05-02T08:00:00Z"));
    }

    void inboxWatchesOnlyTheMonitoredRepositories()
    {
        login(SeededGitea::annToken);
        setting(QStringLiteral("monitoredRepos"), QStringLiteral("cy/infra,ann/website"));

        const CliResult result = cli->run({QStringLiteral("inbox")});

        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outText(), QStringLiteral("#3\tann/website\tUpdate the privacy page\n"
                                                  "#2\tcy/infra\tPin the runner image\n"));
        QVERIFY(cli->storedLogLines().contains(QStringLiteral("INFO Inbox: 2/3 repos")));
    }

    void inboxWithoutConfigurationFails()
    {
        const CliResult result = cli->run({QStringLiteral("inbox")});

        QCOMPARE(result.errText(), QStringLiteral("Configure your Gitea instance in Settings.\n"));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.isEmpty());
        QVERIFY(gitea->server().requests().isEmpty());
        QVERIFY(cli->storedLog().isEmpty());
    }

    void inboxWithARefusedTokenFails()
    {
        login(QStringLiteral("0000000000000000000000000000000000000000"));

        const CliResult result = cli->run({QStringLiteral("inbox")});

        QCOMPARE(result.errText(), QStringLiteral("Authentication failed. Check your token.\n"));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.isEmpty());
        QCOMPARE(gitea->requestLines(), QStringList{reposRequest});
        QCOMPARE(
            cli->storedLogLines(),
            (QStringList{
                QStringLiteral("ERROR GET user/repos → 401 unauthorized"),
                QStringLiteral("ERROR Inbox load failed: Authentication failed. Check your token."),
            }));
    }

    void aRepositoryListFailingOnItsSecondPageFailsTheInbox()
    {
        login(SeededGitea::annToken);
        gitea->server().route("GET", QStringLiteral("/api/v1/user/repos"),
                              [](const RecordedRequest &request, const RouteParams &) {
                                  const QUrlQuery query(QString::fromLatin1(request.rawQuery));
                                  if (query.queryItemValue(QStringLiteral("page")) == u"1")
                                      return FakeResponse::json(fullRepositoryPage());
                                  return FakeResponse::json(R"({"message":"database is locked"})",
                                                            500);
                              });

        const CliResult result = cli->run({QStringLiteral("inbox")});

        QCOMPARE(result.errText(), QStringLiteral("Server error (500): database is locked\n"));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.isEmpty());
        // The whole list failed: no repository's pull requests were asked for.
        QCOMPARE(
            gitea->requestLines(),
            (QStringList{reposRequest, QStringLiteral("GET /api/v1/user/repos?page=2&limit=50")}));
        QCOMPARE(
            cli->storedLogLines(),
            (QStringList{
                QStringLiteral("INFO GET user/repos → 200"),
                QStringLiteral("ERROR GET user/repos → 500 database is locked"),
                QStringLiteral("ERROR Inbox load failed: Server error (500): database is locked"),
            }));
    }

    void someRepositoriesFailingIsOnlyLogged()
    {
        login(SeededGitea::annToken);
        gitea->server().route("GET", QStringLiteral("/api/v1/repos/ann/tool/pulls"),
                              FakeResponse::json(R"({"message":"boom"})", 500));

        const CliResult result = cli->run({QStringLiteral("inbox")});

        QCOMPARE(result.errText(), QString());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outText(), QStringLiteral("#3\tann/website\tUpdate the privacy page\n"
                                                  "#2\tcy/infra\tPin the runner image\n"));
        QVERIFY(cli->storedLogLines().contains(
            QStringLiteral("WARN Inbox: 1 repo(s) failed: Server error (500): boom")));
    }

    void everyRepositoryFailingFailsTheInbox()
    {
        login(SeededGitea::annToken);
        setting(QStringLiteral("monitoredRepos"), QStringLiteral("ann/tool,cy/infra"));
        gitea->server().route("GET", QStringLiteral("/api/v1/repos/{owner}/{repo}/pulls"),
                              FakeResponse::json(R"({"message":"boom"})", 500));

        const CliResult result = cli->run({QStringLiteral("inbox")});

        QCOMPARE(result.errText(), QStringLiteral("Couldn't load any PRs (2 repo(s) failed). Check "
                                                  "the Logs screen.\n"));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.isEmpty());
    }

    void stoppedBySigtermItStillWritesTheLinesItLogged()
    {
        // systemd stops the background check's service with SIGTERM; the log's last second is
        // written before the process ends.
        login(SeededGitea::annToken);
        gitea->server().route("GET", QStringLiteral("/api/v1/repos/{owner}/{repo}/pulls"),
                              FakeResponse::never());
        QProcess process;
        cli->start(process, {QStringLiteral("inbox")});
        QTRY_VERIFY_WITH_TIMEOUT(
            !gitea->server()
                 .requests("GET", QStringLiteral("/api/v1/repos/ann/tool/pulls"))
                 .isEmpty(),
            10000);
        // The repository list's line was logged a moment ago, well within the write delay.
        process.terminate();
        const CliResult result = CliRunner::finish(process);
        QCOMPARE(result.exitCode, 128 + 15);
        QVERIFY2(cli->storedLogLines().contains(QStringLiteral("INFO GET user/repos \u2192 200")),
                 qPrintable(cli->storedLogLines().join(u'\n')));
    }

    void anUnreachableServerFailsAtOnce()
    {
        // Nothing listens on a port that was free a moment ago.
        QTcpServer probe;
        QVERIFY(probe.listen(QHostAddress::LocalHost));
        const QString url = QStringLiteral("http://127.0.0.1:%1").arg(probe.serverPort());
        probe.close();
        login(SeededGitea::annToken);
        cli->environment.insert(QStringLiteral("KESTRINE_URL"), url);

        QElapsedTimer timer;
        timer.start();
        const CliResult result = cli->run({QStringLiteral("inbox")});

        QCOMPARE(result.exitCode, 1);
        QVERIFY2(result.errText().contains(QStringLiteral("refused")),
                 qPrintable(result.errText()));
        QVERIFY(result.out.isEmpty());
        QVERIFY(timer.elapsed() < 10000);
        // The network's own failures are the caller's to report: only the loader's line is kept.
        QCOMPARE(cli->storedLogLines(), QStringList{QStringLiteral("ERROR Inbox load failed: ") +
                                                    result.errText().trimmed()});
    }

    void logsPrintsAndClearsTheLog()
    {
        login(SeededGitea::annToken);
        setting(QStringLiteral("deleteBranchAfterMerge"), QStringLiteral("true"));
        QCOMPARE(cli->run({QStringLiteral("inbox")}).exitCode, 0);
        const QList<LogEntry> entries = cli->storedLog();
        QCOMPARE(entries.size(), 5);

        const CliResult logs = cli->run({QStringLiteral("logs")});

        QCOMPARE(logs.exitCode, 0);
        QStringList expected;
        for (const LogEntry &entry : entries)
            expected.append(entry.line());
        QCOMPARE(logs.outText(), expected.join(u'\n') + u'\n');
        QVERIFY(logs.outText().startsWith(QStringLiteral("[")));
        QVERIFY(logs.outText().contains(QStringLiteral("Z] INFO GET user/repos → 200\n")));

        const CliResult clear = cli->run({QStringLiteral("logs"), QStringLiteral("--clear")});
        QCOMPARE(clear.exitCode, 0);
        QVERIFY(clear.out.isEmpty());
        QVERIFY(!cli->defaults().contains(QStringLiteral("kestrine.log.entries")));
        // The settings beside it stay.
        QCOMPARE(cli->defaults().value(QStringLiteral("deleteBranchAfterMerge")), QJsonValue(true));

        const CliResult empty = cli->run({QStringLiteral("logs")});
        QCOMPARE(empty.exitCode, 0);
        QVERIFY(empty.out.isEmpty());
    }

    void checkPostsNothingWhileNotificationsAreOff()
    {
        login(SeededGitea::annToken);

        const CliResult result = cli->run({QStringLiteral("check")});

        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outText(), QStringLiteral("0\n"));
        QVERIFY(gitea->server().requests().isEmpty());
        QVERIFY(
            !QFile::exists(cli->appCacheDirectory() + QStringLiteral("/notification-state.json")));
    }

    void checkAnnouncesNewPullRequestsOnce()
    {
        NotificationServer notifications;
        QVERIFY(notifications.start());
        login(SeededGitea::annToken);
        setting(QStringLiteral("notificationsEnabled"), QStringLiteral("true"));
        setting(QStringLiteral("monitoredRepos"), QStringLiteral("ann/website,cy/infra"));

        const CliResult first = cli->run({QStringLiteral("check")});

        QCOMPARE(first.errText(), QString());
        QCOMPARE(first.exitCode, 0);
        QCOMPARE(first.outText(), QStringLiteral("2\n"));
        // The run ended only after its notifications had left; give the bus a moment to deliver.
        QTRY_COMPARE(notifications.received.size(), 2);
        QStringList announced;
        for (const NotificationServer::Received &notification : notifications.received)
            announced.append(notification.summary + u'|' + notification.body);
        QCOMPARE(sorted(announced),
                 (QStringList{QStringLiteral("New PR|Pin the runner image — cy/infra"),
                              QStringLiteral("New PR|Update the privacy page — ann/website")}));
        QVERIFY(
            QFile::exists(cli->appCacheDirectory() + QStringLiteral("/notification-state.json")));
        // The check's requests are logged like any other.
        const QStringList log = cli->storedLogLines();
        QCOMPARE(log.size(), 3);
        QCOMPARE(log.first(), QStringLiteral("INFO GET user/repos → 200"));
        QCOMPARE(sorted(log.mid(1)),
                 (QStringList{QStringLiteral("INFO GET repos/ann/website/pulls → 200"),
                              QStringLiteral("INFO GET repos/cy/infra/pulls → 200")}));

        // Known pull requests are not announced again; their CI summaries are recorded.
        const CliResult second = cli->run({QStringLiteral("check")});
        QCOMPARE(second.exitCode, 0);
        QCOMPARE(second.outText(), QStringLiteral("0\n"));
        QTest::qWait(200);
        QCOMPARE(notifications.received.size(), 2);
    }

    void checkNotificationsNameTheAppsDesktopEntry()
    {
        NotificationServer notifications;
        QVERIFY(notifications.start());
        login(SeededGitea::annToken);
        setting(QStringLiteral("notificationsEnabled"), QStringLiteral("true"));
        setting(QStringLiteral("monitoredRepos"), QStringLiteral("cy/infra"));

        const CliResult result = cli->run({QStringLiteral("check")});

        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outText(), QStringLiteral("1\n"));
        QTRY_COMPARE(notifications.received.size(), 1);
        const NotificationServer::Received &shown = notifications.received.first();
        // So the desktop shows Kestrine's name and icon, and knows whose notification it is.
        QCOMPARE(shown.hints.value(QStringLiteral("desktop-entry")),
                 QVariant(QStringLiteral("com.norrum.kestrine")));
        QCOMPARE(shown.appName, QStringLiteral("Kestrine"));
        QCOMPARE(shown.appIcon, QStringLiteral("com.norrum.kestrine"));
        // The run has ended by the time the user sees it, so no action is offered that nobody
        // would answer; a desktop opens such a notification by starting the app from its entry.
        QCOMPARE(shown.actions, QStringList());
    }

    void inboxWaitsForTheBackgroundCheckItStarts()
    {
        NotificationServer notifications;
        QVERIFY(notifications.start());
        login(SeededGitea::annToken);
        setting(QStringLiteral("notificationsEnabled"), QStringLiteral("true"));

        const CliResult result = cli->run({QStringLiteral("inbox")});

        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outText(), annInbox);
        // As in the app, a completed load with notifications on runs one pass, and the command
        // ended only after it: all seven pull requests were announced and remembered.
        QTRY_COMPARE(notifications.received.size(), 7);
        QCOMPARE(gitea->requestLines().count(reposRequest), 2);
        QFile state(cli->appCacheDirectory() + QStringLiteral("/notification-state.json"));
        QVERIFY(state.open(QIODevice::ReadOnly));
        QVERIFY(state.readAll().contains("ann/tool#8"));
    }
};

QTEST_GUILESS_MAIN(TestCliInbox)
#include "tst_cliinbox.moc"
