// The background check against the fake Gitea server, with a notification server of the test's
// own on the private session bus: what is announced, when, and what is remembered.

#include "background.h"
#include "defaultsstore.h"
#include "fakegiteaserver.h"
#include "notificationserver.h"
#include "onerepository.h"
#include "outcome.h"
#include "teststores.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using namespace kestrine;
using kestrine::testing::NotificationServer;
using kestrine::testing::openPull;
using kestrine::testing::runToEnd;

namespace {

/// The little Gitea world each test arranges: repositories, their open pull requests, and the
/// Actions runs of each head commit.
struct World
{
    QStringList repositories;
    QHash<QString, QJsonArray> pulls;         // full name → open pull requests
    QHash<QString, QStringList> failingPulls; // full names whose listing fails
    QHash<QString, QByteArray> runsBySha;     // sha → runs envelope; missing: 500
    bool reposFail = false;

    void install(FakeGiteaServer &server)
    {
        server.route(
            "GET", QStringLiteral("/api/v1/user/repos"),
            [this](const RecordedRequest &, const RouteParams &) {
                if (reposFail)
                    return FakeResponse::json(R"({"message":"down"})", 500);
                QJsonArray list;
                qint64 id = 1;
                for (const QString &fullName : repositories) {
                    const QStringList parts = fullName.split(u'/');
                    list.append(QJsonObject{{QStringLiteral("id"), id++},
                                            {QStringLiteral("name"), parts[1]},
                                            {QStringLiteral("full_name"), fullName},
                                            {QStringLiteral("owner"),
                                             QJsonObject{{QStringLiteral("login"), parts[0]}}}});
                }
                return FakeResponse::json(QJsonDocument(list).toJson(QJsonDocument::Compact));
            });
        server.route("GET", QStringLiteral("/api/v1/repos/{owner}/{repo}/pulls"),
                     [this](const RecordedRequest &, const RouteParams &params) {
                         const QString fullName = params[QStringLiteral("owner")] + u'/' +
                                                  params[QStringLiteral("repo")];
                         if (failingPulls.contains(fullName))
                             return FakeResponse::json(R"({"message":"boom"})", 500);
                         return FakeResponse::json(
                             QJsonDocument(pulls.value(fullName)).toJson(QJsonDocument::Compact));
                     });
        server.route("GET", QStringLiteral("/api/v1/repos/{owner}/{repo}/actions/runs"),
                     [this](const RecordedRequest &request, const RouteParams &) {
                         const QString sha = QUrlQuery(QString::fromLatin1(request.rawQuery))
                                                 .queryItemValue(QStringLiteral("head_sha"));
                         if (!runsBySha.contains(sha))
                             return FakeResponse::json(R"({"message":"boom"})", 500);
                         return FakeResponse::json(runsBySha.value(sha));
                     });
    }
};

QByteArray runs(const char *status, const char *conclusion)
{
    QJsonObject run{{QStringLiteral("id"), 1},
                    {QStringLiteral("status"), QString::fromLatin1(status)}};
    if (conclusion)
        run.insert(QStringLiteral("conclusion"), QString::fromLatin1(conclusion));
    return QJsonDocument(QJsonObject{{QStringLiteral("workflow_runs"), QJsonArray{run}},
                                     {QStringLiteral("total_count"), 1}})
        .toJson(QJsonDocument::Compact);
}

} // namespace

class TestNotificationService : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<kestrine::testing::TestStores> stores;
    FakeGiteaServer *server = nullptr;
    NotificationServer *notifications = nullptr;
    FreedesktopNotificationCenter *center = nullptr;
    NotificationService *service = nullptr;
    World world;
    QString statePath;

    int pass()
    {
        const auto outcome = runToEnd(service->poll());
        return outcome.value.value_or(-1);
    }

    /// Notifications are delivered over the bus; wait until `count` have arrived, then a little
    /// longer to be sure no more follow.
    QStringList arrived(qsizetype count) { return notifications->takeArrived(count); }

    NotificationState storedState() const { return NotificationState::load(statePath); }

    /// ann/tool with one open pull request, announced by a pass: what the server received.
    NotificationServer::Received announceOne()
    {
        world.repositories = {QStringLiteral("ann/tool")};
        world.pulls[QStringLiteral("ann/tool")] = {
            openPull(7, QStringLiteral("T"), QStringLiteral("s7"))};
        pass();
        if (!QTest::qWaitFor([this] { return notifications->received.size() == 1; }))
            return {};
        return notifications->received.first();
    }

    int runsRequests() const
    {
        int count = 0;
        for (const auto &request : server->requests())
            count += request.path().endsWith(u"/actions/runs");
        return count;
    }

private slots:
    void initTestCase()
    {
        notifications = new NotificationServer(this);
        QVERIFY2(notifications->start(), "a private session bus is needed");
    }

    void init()
    {
        server = new FakeGiteaServer(this);
        QVERIFY(server->listen());
        world = World();
        world.install(*server);
        stores = std::make_unique<kestrine::testing::TestStores>();
        SettingsStore *settings = &stores->settings;
        stores->signIn(server->baseUrl(), QStringLiteral("t0ken"));
        settings->setMonitoredRepos({});
        settings->setNotificationsEnabled(true);
        center = new FreedesktopNotificationCenter(this);
        service = new NotificationService(stores->settings, *center, this);
        statePath = service->stateFilePath();
        QFile::remove(statePath);
        notifications->received.clear();
        notifications->capabilities = {QStringLiteral("body"), QStringLiteral("sound")};
    }

    void cleanup()
    {
        delete service;
        delete center;
        delete server;
        stores.reset();
    }

    void stateFileLivesInTheCachesDirectory()
    {
        QCOMPARE(QFileInfo(statePath).fileName(), QStringLiteral("notification-state.json"));
        QVERIFY(statePath.startsWith(QString::fromLocal8Bit(qgetenv("XDG_CACHE_HOME"))));
    }

    void firstPassAnnouncesEveryOpenPullRequestAsNew()
    {
        world.repositories = {QStringLiteral("ann/tool"), QStringLiteral("bo/site")};
        world.pulls[QStringLiteral("ann/tool")] = {
            openPull(7, QStringLiteral("Add retry"), QStringLiteral("s7")),
            openPull(8, QStringLiteral("Fix typo"), QStringLiteral("s8"))};
        world.pulls[QStringLiteral("bo/site")] = {
            openPull(1, QStringLiteral("New page"), QStringLiteral("s1"))};
        QCOMPARE(pass(), 3);
        QCOMPARE(arrived(3), (QStringList{QStringLiteral("New PR|Add retry \u2014 ann/tool"),
                                          QStringLiteral("New PR|Fix typo \u2014 ann/tool"),
                                          QStringLiteral("New PR|New page \u2014 bo/site")}));
        QCOMPARE(storedState().announcedNewPRs,
                 (QSet<QString>{"ann/tool#7", "ann/tool#8", "bo/site#1"}));
        QVERIFY(storedState().ciStatusByPR.isEmpty());
        QCOMPARE(runsRequests(), 0); // a new pull request's CI is not looked at in its first pass
        QCOMPARE(notifications->received.size(), 0);
    }

    void newPullRequestWithRedCIGetsOnlyNewPRAndCINewsTwoPassesLater()
    {
        world.repositories = {QStringLiteral("ann/tool")};
        world.pulls[QStringLiteral("ann/tool")] = {
            openPull(7, QStringLiteral("Add retry"), QStringLiteral("s7"))};
        world.runsBySha[QStringLiteral("s7")] = runs("completed", "failure");
        QCOMPARE(pass(), 1);
        QCOMPARE(arrived(1), QStringList{QStringLiteral("New PR|Add retry \u2014 ann/tool")});
        QCOMPARE(pass(), 0); // the summary is recorded silently
        QCOMPARE(storedState().ciStatusByPR.value(QStringLiteral("ann/tool#7")),
                 QStringLiteral("failure"));
        world.runsBySha[QStringLiteral("s7")] = runs("completed", "success");
        QCOMPARE(pass(), 1);
        QCOMPARE(arrived(1), QStringList{QStringLiteral("CI passed|Add retry \u2014 ann/tool")});
    }

    void storedSuccessAndNewFailurePostsCIFailed()
    {
        world.repositories = {QStringLiteral("ann/tool")};
        world.pulls[QStringLiteral("ann/tool")] = {
            openPull(7, QStringLiteral("Add retry"), QStringLiteral("s7"))};
        world.runsBySha[QStringLiteral("s7")] = runs("completed", "failure");
        NotificationState known;
        known.announcedNewPRs = {QStringLiteral("ann/tool#7")};
        known.ciStatusByPR = {{QStringLiteral("ann/tool#7"), QStringLiteral("success")}};
        known.save(statePath);
        QCOMPARE(pass(), 1);
        QCOMPARE(arrived(1), QStringList{QStringLiteral("CI failed|Add retry \u2014 ann/tool")});
        QCOMPARE(storedState().ciStatusByPR.value(QStringLiteral("ann/tool#7")),
                 QStringLiteral("failure"));
        QCOMPARE(pass(), 0); // unchanged: nothing more
    }

    void executingRunThatFailsIsReportedAsCIFailed()
    {
        // Gitea's word for an executing run is "in_progress".
        world.repositories = {QStringLiteral("ann/tool")};
        world.pulls[QStringLiteral("ann/tool")] = {
            openPull(7, QStringLiteral("Add retry"), QStringLiteral("s7"))};
        world.runsBySha[QStringLiteral("s7")] = runs("in_progress", nullptr);
        NotificationState known;
        known.announcedNewPRs = {QStringLiteral("ann/tool#7")};
        known.ciStatusByPR = {{QStringLiteral("ann/tool#7"), QStringLiteral("success")}};
        known.save(statePath);
        QCOMPARE(pass(), 1);
        QCOMPARE(arrived(1), QStringList{QStringLiteral("CI running|Add retry \u2014 ann/tool")});
        QCOMPARE(storedState().ciStatusByPR.value(QStringLiteral("ann/tool#7")),
                 QStringLiteral("running"));

        world.runsBySha[QStringLiteral("s7")] = runs("completed", "failure");
        QCOMPARE(pass(), 1);
        QCOMPARE(arrived(1), QStringList{QStringLiteral("CI failed|Add retry \u2014 ann/tool")});
        QCOMPARE(storedState().ciStatusByPR.value(QStringLiteral("ann/tool#7")),
                 QStringLiteral("failure"));
    }

    void everySummaryChangeHasItsTitle_data()
    {
        QTest::addColumn<QByteArray>("runsBody");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("stored");
        QTest::newRow("running") << runs("running", nullptr) << "CI running"
                                 << "running";
        QTest::newRow("in_progress") << runs("in_progress", nullptr) << "CI running"
                                     << "running";
        QTest::newRow("passed") << runs("completed", "success") << "CI passed"
                                << "success";
        QTest::newRow("failed") << runs("completed", "failure") << "CI failed"
                                << "failure";
        QTest::newRow("cancelled") << runs("completed", "cancelled") << "CI cancelled"
                                   << "cancelled";
        QTest::newRow("updated") << QByteArray(R"({"workflow_runs":[]})") << "CI updated"
                                 << "unknown";
    }

    void everySummaryChangeHasItsTitle()
    {
        QFETCH(QByteArray, runsBody);
        QFETCH(QString, title);
        QFETCH(QString, stored);
        world.repositories = {QStringLiteral("ann/tool")};
        world.pulls[QStringLiteral("ann/tool")] = {
            openPull(7, QStringLiteral("T"), QStringLiteral("s7"))};
        world.runsBySha[QStringLiteral("s7")] = runsBody;
        NotificationState known;
        known.announcedNewPRs = {QStringLiteral("ann/tool#7")};
        known.ciStatusByPR = {{QStringLiteral("ann/tool#7"), stored == u"failure"
                                                                 ? QStringLiteral("success")
                                                                 : QStringLiteral("failure")}};
        known.save(statePath);
        QCOMPARE(pass(), 1);
        QCOMPARE(arrived(1), QStringList{title + QStringLiteral("|T \u2014 ann/tool")});
        QCOMPARE(storedState().ciStatusByPR.value(QStringLiteral("ann/tool#7")), stored);
    }

    void failedRunsRequestReadsAsUpdated()
    {
        world.repositories = {QStringLiteral("ann/tool")};
        world.pulls[QStringLiteral("ann/tool")] = {
            openPull(7, QStringLiteral("T"), QStringLiteral("gone"))};
        NotificationState known;
        known.announcedNewPRs = {QStringLiteral("ann/tool#7")};
        known.ciStatusByPR = {{QStringLiteral("ann/tool#7"), QStringLiteral("running")}};
        known.save(statePath);
        QCOMPARE(pass(), 1);
        QCOMPARE(arrived(1), QStringList{QStringLiteral("CI updated|T \u2014 ann/tool")});
        QCOMPARE(storedState().ciStatusByPR.value(QStringLiteral("ann/tool#7")),
                 QStringLiteral("unknown"));
    }

    void pullRequestWithoutHeadShaStaysUnknownAndNeverPostsCI()
    {
        world.repositories = {QStringLiteral("ann/tool")};
        world.pulls[QStringLiteral("ann/tool")] = {
            openPull(7, QStringLiteral("No head"), QString()),
            openPull(8, QStringLiteral("Empty sha"), QStringLiteral(""))};
        QCOMPARE(pass(), 2);
        arrived(2);
        QCOMPARE(pass(), 0);
        QCOMPARE(pass(), 0);
        QCOMPARE(storedState().ciStatusByPR.value(QStringLiteral("ann/tool#7")),
                 QStringLiteral("unknown"));
        QCOMPARE(storedState().ciStatusByPR.value(QStringLiteral("ann/tool#8")),
                 QStringLiteral("unknown"));
        QCOMPARE(runsRequests(), 0);
        QCOMPARE(notifications->received.size(), 0);
    }

    void closedPullRequestIsForgottenAndAnnouncedAgainWhenReopened()
    {
        world.repositories = {QStringLiteral("ann/tool")};
        world.pulls[QStringLiteral("ann/tool")] = {
            openPull(7, QStringLiteral("T"), QStringLiteral("s7"))};
        world.runsBySha[QStringLiteral("s7")] = runs("completed", "success");
        QCOMPARE(pass(), 1);
        QCOMPARE(pass(), 0);
        arrived(1);
        world.pulls[QStringLiteral("ann/tool")] = {};
        QCOMPARE(pass(), 0);
        QVERIFY(storedState().announcedNewPRs.isEmpty());
        QVERIFY(storedState().ciStatusByPR.isEmpty());
        world.pulls[QStringLiteral("ann/tool")] = {
            openPull(7, QStringLiteral("T"), QStringLiteral("s7"))};
        QCOMPARE(pass(), 1);
        QCOMPARE(arrived(1), QStringList{QStringLiteral("New PR|T \u2014 ann/tool")});
    }

    void failingListingForgetsThatRepositorysPullRequests()
    {
        world.repositories = {QStringLiteral("ann/tool"), QStringLiteral("bo/site")};
        world.pulls[QStringLiteral("ann/tool")] = {
            openPull(7, QStringLiteral("T"), QStringLiteral("s7"))};
        world.pulls[QStringLiteral("bo/site")] = {
            openPull(1, QStringLiteral("P"), QStringLiteral("s1"))};
        QCOMPARE(pass(), 2);
        arrived(2);
        world.failingPulls[QStringLiteral("ann/tool")] = {};
        world.runsBySha[QStringLiteral("s1")] = runs("completed", "success");
        QCOMPARE(pass(), 0);
        QCOMPARE(storedState().announcedNewPRs, QSet<QString>{QStringLiteral("bo/site#1")});
        world.failingPulls.clear();
        QCOMPARE(pass(), 1);
        QCOMPARE(arrived(1), QStringList{QStringLiteral("New PR|T \u2014 ann/tool")});
    }

    void keysCompareAsExactTexts()
    {
        world.repositories = {QStringLiteral("team/app")};
        world.pulls[QStringLiteral("team/app")] = {
            openPull(7, QStringLiteral("T"), QStringLiteral("s7"))};
        NotificationState known;
        known.announcedNewPRs = {QStringLiteral("Team/app#7")};
        known.save(statePath);
        QCOMPARE(pass(), 1);
        QCOMPARE(arrived(1), QStringList{QStringLiteral("New PR|T \u2014 team/app")});
        // Team/app#7 is another repository's key and is left alone.
        QCOMPARE(storedState().announcedNewPRs, (QSet<QString>{"Team/app#7", "team/app#7"}));
    }

    void deletedStateFileAnnouncesEverythingAgain()
    {
        world.repositories = {QStringLiteral("ann/tool")};
        world.pulls[QStringLiteral("ann/tool")] = {
            openPull(7, QStringLiteral("T"), QStringLiteral("s7"))};
        QCOMPARE(pass(), 1);
        arrived(1);
        QVERIFY(QFile::remove(statePath));
        QCOMPARE(pass(), 1);
        QCOMPARE(arrived(1), QStringList{QStringLiteral("New PR|T \u2014 ann/tool")});
    }

    void notificationsOffReturnsZeroWithoutTouchingTheState()
    {
        stores->settings.setNotificationsEnabled(false);
        world.repositories = {QStringLiteral("ann/tool")};
        QCOMPARE(pass(), 0);
        QVERIFY(!QFile::exists(statePath));
        QVERIFY(server->requests().isEmpty());
    }

    void notConfiguredReturnsZeroWithoutTouchingTheState()
    {
        stores->settings.overrideCredentials(std::nullopt, QString());
        QCOMPARE(pass(), 0);
        QVERIFY(!QFile::exists(statePath));
        QVERIFY(server->requests().isEmpty());
    }

    void monitoredNamesMatchingNothingWriteTheStateUnchanged()
    {
        world.repositories = {QStringLiteral("ann/tool")};
        stores->settings.setMonitoredRepos({QStringLiteral("nobody/nothing")});
        NotificationState known;
        known.announcedNewPRs = {QStringLiteral("x/y#1")};
        known.save(statePath);
        QFile::remove(statePath); // no file at all: the pass writes the (empty) state
        QCOMPARE(pass(), 0);
        QVERIFY(QFile::exists(statePath));
        QCOMPARE(storedState(), NotificationState());
        known.save(statePath);
        QCOMPARE(pass(), 0);
        QCOMPARE(storedState(), known);
    }

    void failingRepositoryListReturnsZeroAndLeavesTheStateAlone()
    {
        world.reposFail = true;
        QCOMPARE(pass(), 0);
        QVERIFY(!QFile::exists(statePath));
    }

    void firstPassAsksForPermissionOnce()
    {
        defaultsStore().remove(FreedesktopNotificationCenter::authorizationKey);
        QCOMPARE(runToEnd(center->authorizationStatus()).value,
                 NotificationCenter::Authorization::NotDetermined);
        world.repositories = {QStringLiteral("ann/tool")};
        pass();
        QCOMPARE(runToEnd(center->authorizationStatus()).value,
                 NotificationCenter::Authorization::Authorized);
        QCOMPARE(defaultsStore().value(FreedesktopNotificationCenter::authorizationKey),
                 QVariant(true));
    }

    void refusedPermissionPostsNothingButThePassGoesOn()
    {
        defaultsStore().setValue(FreedesktopNotificationCenter::authorizationKey, false);
        world.repositories = {QStringLiteral("ann/tool")};
        world.pulls[QStringLiteral("ann/tool")] = {
            openPull(7, QStringLiteral("T"), QStringLiteral("s7"))};
        QCOMPARE(pass(), 1);
        QTest::qWait(300);
        QCOMPARE(notifications->received.size(), 0);
        QCOMPARE(storedState().announcedNewPRs, QSet<QString>{QStringLiteral("ann/tool#7")});
        defaultsStore().remove(FreedesktopNotificationCenter::authorizationKey);
    }

    void notificationsCarryTheAppsNameAndASound()
    {
        const NotificationServer::Received shown = announceOne();
        QCOMPARE(shown.appName, QStringLiteral("Kestrine"));
        QVERIFY(shown.hints.contains(QStringLiteral("sound-name")));
    }

    void notificationsNameTheAppsDesktopEntry()
    {
        const NotificationServer::Received shown = announceOne();
        QCOMPARE(shown.hints.value(QStringLiteral("desktop-entry")),
                 QVariant(QStringLiteral("com.norrum.kestrine")));
        QCOMPARE(shown.appIcon, QStringLiteral("com.norrum.kestrine"));
    }

    void notificationsNobodyListensForOfferNoAction()
    {
        const NotificationServer::Received shown = announceOne();
        QCOMPARE(shown.summary, QStringLiteral("New PR"));
        QCOMPARE(shown.actions, QStringList());
    }

    void notificationsOfACentreThatOpensPullRequestsHaveADefaultAction()
    {
        QVERIFY(center->openPullRequests());
        world.repositories = {QStringLiteral("ann/tool")};
        world.pulls[QStringLiteral("ann/tool")] = {
            openPull(7, QStringLiteral("T"), QStringLiteral("s7"))};
        world.runsBySha[QStringLiteral("s7")] = runs("completed", "success");
        QCOMPARE(pass(), 1);
        QCOMPARE(pass(), 0);
        world.runsBySha[QStringLiteral("s7")] = runs("completed", "failure");
        QCOMPARE(pass(), 1);

        // Both kinds, "New PR" and the CI news.
        QTRY_COMPARE(notifications->received.size(), 2);
        for (const NotificationServer::Received &shown : std::as_const(notifications->received)) {
            QCOMPARE(shown.actions.size(), 2); // key and label
            QCOMPARE(shown.actions.first(), QStringLiteral("default"));
        }
        QCOMPARE(notifications->received.last().summary, QStringLiteral("CI failed"));
    }

    void activatingANotificationReportsItsPullRequest()
    {
        QVERIFY(center->openPullRequests());
        QSignalSpy activated(center, &FreedesktopNotificationCenter::pullRequestActivated);
        world.repositories = {QStringLiteral("ann/tool"), QStringLiteral("bo/site")};
        world.pulls[QStringLiteral("ann/tool")] = {
            openPull(7, QStringLiteral("T"), QStringLiteral("s7"))};
        world.pulls[QStringLiteral("bo/site")] = {
            openPull(12, QStringLiteral("U"), QStringLiteral("s12"))};
        QCOMPARE(pass(), 2);
        QTRY_COMPARE(notifications->received.size(), 2);
        // The server's answer with its id is in before the user can click.
        QTest::qWait(100);

        notifications->invokeAction(notifications->received.at(1).id, QStringLiteral("default"),
                                    QStringLiteral("token-1"));
        QTRY_COMPARE(activated.size(), 1);
        QCOMPARE(activated.first(),
                 (QVariantList{QStringLiteral("bo/site#12"), QStringLiteral("token-1")}));

        notifications->invokeAction(notifications->received.at(0).id, QStringLiteral("default"));
        QTRY_COMPARE(activated.size(), 2);
        QCOMPARE(activated.last(), (QVariantList{QStringLiteral("ann/tool#7"), QString()}));
    }

    void activationsOfOtherNotificationsAreIgnored()
    {
        QVERIFY(center->openPullRequests());
        QSignalSpy activated(center, &FreedesktopNotificationCenter::pullRequestActivated);
        world.repositories = {QStringLiteral("ann/tool")};
        world.pulls[QStringLiteral("ann/tool")] = {
            openPull(7, QStringLiteral("T"), QStringLiteral("s7")),
            openPull(8, QStringLiteral("U"), QStringLiteral("s8"))};
        QCOMPARE(pass(), 2);
        QTRY_COMPARE(notifications->received.size(), 2);
        QTest::qWait(100);
        const uint first = notifications->received.at(0).id;
        const uint second = notifications->received.at(1).id;

        // Another app's notification: the server's signals reach every client.
        notifications->invokeAction(second + 100, QStringLiteral("default"));
        // An action other than the default one, which these notifications do not have.
        notifications->invokeAction(first, QStringLiteral("reply"));
        // A notification the user dismissed is gone; a late activation of it does nothing.
        notifications->closeNotification(second);
        notifications->invokeAction(second, QStringLiteral("default"));
        QTest::qWait(300);
        QCOMPARE(activated.size(), 0);

        // Once activated, a notification is gone as well.
        notifications->invokeAction(first, QStringLiteral("default"));
        QTRY_COMPARE(activated.size(), 1);
        notifications->invokeAction(first, QStringLiteral("default"));
        QTest::qWait(300);
        QCOMPARE(activated.size(), 1);
    }

    void aTitleWithMarkupReachesTheServerAsText_data()
    {
        QTest::addColumn<bool>("readsMarkup");
        QTest::addColumn<QString>("body");
        const QString title =
            QStringLiteral("<b>Tidy</b> & <img src=\"http://127.0.0.1:9/x.png\"> &amp;");
        QTest::newRow("server that reads markup")
            << true
            << QStringLiteral("&lt;b&gt;Tidy&lt;/b&gt; &amp; &lt;img "
                              "src=\"http://127.0.0.1:9/x.png\"&gt; &amp;amp; — ann/tool");
        QTest::newRow("server that shows plain text")
            << false << title + QStringLiteral(" — ann/tool");
    }

    void aTitleWithMarkupReachesTheServerAsText()
    {
        QFETCH(bool, readsMarkup);
        QFETCH(QString, body);
        if (readsMarkup)
            notifications->capabilities.append(QStringLiteral("body-markup"));
        world.repositories = {QStringLiteral("ann/tool")};
        world.pulls[QStringLiteral("ann/tool")] = {openPull(
            7, QStringLiteral("<b>Tidy</b> & <img src=\"http://127.0.0.1:9/x.png\"> &amp;"),
            QStringLiteral("s7"))};

        QCOMPARE(pass(), 1);
        QCOMPARE(arrived(1), QStringList{QStringLiteral("New PR|") + body});
    }

    void notificationsPostedWhileTheAppIsInFrontAreDeliveredButNotSent()
    {
        bool inFront = true;
        center->setForegroundTest([&inFront] { return inFront; });
        world.repositories = {QStringLiteral("ann/tool")};
        world.pulls[QStringLiteral("ann/tool")] = {
            openPull(7, QStringLiteral("T"), QStringLiteral("s7"))};

        // As far as the pass can tell the notification went out, and it is remembered.
        QCOMPARE(pass(), 1);
        QCOMPARE(storedState().announcedNewPRs, QSet<QString>{QStringLiteral("ann/tool#7")});

        // The test is asked at each post. The bus keeps the order of what one connection sends,
        // so had the first notification been sent, it would arrive before this one.
        inFront = false;
        world.pulls[QStringLiteral("ann/tool")].append(
            openPull(8, QStringLiteral("U"), QStringLiteral("s8")));
        QCOMPARE(pass(), 1);
        QCOMPARE(arrived(1), QStringList{QStringLiteral("New PR|U — ann/tool")});
    }
};

QTEST_GUILESS_MAIN(TestNotificationService)
#include "tst_notificationservice.moc"
