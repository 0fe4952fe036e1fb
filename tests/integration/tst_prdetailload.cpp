// Loading one pull request into PRDetailViewModel against the fake Gitea server: the order of
// requests, what each failure leaves behind, and what cancellation does not do.

#include "detailfixture.h"
#include "outcome.h"
#include "pagedanswer.h"
#include "prdetailviewmodel.h"

#include <QtTest>

using namespace kestrine;
using namespace kestrine::testing;

class TestPRDetailLoad : public DetailTestCase
{
    Q_OBJECT

private:
    std::unique_ptr<PRDetailViewModel> newModel()
    {
        return std::make_unique<PRDetailViewModel>(stores->settings, annApp(), 7);
    }

    /// Serves `total` changed files of pull request 7 `pageSize` a page, with links written
    /// with another host, as a Gitea behind a proxy writes them; `failingPage` answers 500.
    void serveFilesInPages(int total, int pageSize, int failingPage = 0)
    {
        server->route("GET", pullPath + QStringLiteral("/files"),
                      pagedAnswer(numberedFiles(total), pageSize, "https://git.internal.example",
                                  failingPage));
    }

    /// Answers the combined status of the head commit "abc123" with `statuses`.
    void serveStatuses(const QJsonArray &statuses)
    {
        server->route("GET", apiRoot + QStringLiteral("/commits/abc123/status"),
                      FakeResponse::json(compact(QJsonObject{
                          {QStringLiteral("state"), QStringLiteral("failure")},
                          {QStringLiteral("sha"), QStringLiteral("abc123")},
                          {QStringLiteral("total_count"), statuses.size()},
                          {QStringLiteral("statuses"), statuses},
                      })));
    }

    static QJsonObject status(qint64 id, const QString &state, const QString &context,
                              const QString &targetUrl)
    {
        return QJsonObject{{QStringLiteral("id"), id},
                           {QStringLiteral("status"), state},
                           {QStringLiteral("context"), context},
                           {QStringLiteral("description"), context + QStringLiteral(" said so")},
                           {QStringLiteral("target_url"), targetUrl}};
    }

    void withoutRuns()
    {
        server->route("GET", apiRoot + QStringLiteral("/actions/runs"),
                      FakeResponse::json(runsJson({})));
    }

private slots:
    void init()
    {
        QVERIFY(startServer());
        serveDefaults(*server);
    }

    void cleanup() { stopServer(); }

    void newModelStartsEmptyAndIdle()
    {
        const auto model = newModel();
        QCOMPARE(model->repo(), annApp());
        QCOMPARE(model->prNumber(), qint64(7));
        QVERIFY(!model->pr());
        QVERIFY(model->comments().isEmpty() && model->reviews().isEmpty());
        QVERIFY(model->files().isEmpty() && model->commits().isEmpty());
        QVERIFY(model->runs().isEmpty() && model->jobs().isEmpty());
        QVERIFY(!model->isLoading() && !model->isActionsLoading());
        QVERIFY(!model->errorMessage() && !model->busyMessage());
    }

    void fullLoadFillsEveryFieldInServerOrder()
    {
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);

        QCOMPARE(model->pr()->title, QStringLiteral("Fix the parser"));
        QCOMPARE(model->comments().size(), 1);
        QCOMPARE(model->reviews().first().user->login, QStringLiteral("bob"));
        QCOMPARE(model->files().first().filename, QStringLiteral("a.c"));
        QCOMPARE(model->commits().first().sha, QStringLiteral("abc123"));
        QCOMPARE(model->runs().size(), 1);
        QCOMPARE(model->jobs().keys(), QList<qint64>{11});
        QCOMPARE(model->jobs().value(11).first().id, qint64(110));
        QVERIFY(!model->isLoading() && !model->isActionsLoading());
        QVERIFY(!model->errorMessage());
        QCOMPARE(model->ciStatus(), CIStatus::Success);
        QCOMPARE(model->reviewState(), ReviewState::Approved);

        const QStringList requests = requestLog(*server);
        QCOMPARE(requests.size(), 7);
        QCOMPARE(requests.first(), QStringLiteral("GET /pulls/7"));
        // The four secondary requests run concurrently, so they may arrive in any order.
        QCOMPARE(QSet<QString>(requests.begin() + 1, requests.begin() + 5),
                 (QSet<QString>{QStringLiteral("GET /issues/7/comments"),
                                QStringLiteral("GET /pulls/7/reviews"),
                                QStringLiteral("GET /pulls/7/files"),
                                QStringLiteral("GET /pulls/7/commits")}));
        QCOMPARE(requests.at(5), QStringLiteral("GET /actions/runs"));
        QCOMPARE(requests.at(6), QStringLiteral("GET /actions/runs/11/jobs"));
        QCOMPARE(server->requests().at(5).rawQuery, QByteArray("head_sha=abc123&limit=20"));
    }

    void secondaryListsAreRequestedTogetherAndAssignedInOrder()
    {
        // Comments answer last, yet they are assigned first: the others wait for their turn.
        server->route("GET", apiRoot + QStringLiteral("/issues/7/comments"),
                      [](const RecordedRequest &, const RouteParams &) {
                          FakeResponse response = FakeResponse::json(
                              compact(QJsonArray{comment(1, QStringLiteral("late"))}));
                          response.delay = std::chrono::milliseconds(300);
                          return response;
                      });
        const auto model = newModel();
        QStringList order;
        qsizetype requestsWhenCommentsLanded = 0;
        connect(model.get(), &PRDetailViewModel::prChanged, this,
                [&] { order << QStringLiteral("pr"); });
        connect(model.get(), &PRDetailViewModel::commentsChanged, this, [&] {
            order << QStringLiteral("comments");
            requestsWhenCommentsLanded = server->requests().size();
        });
        connect(model.get(), &PRDetailViewModel::reviewsChanged, this,
                [&] { order << QStringLiteral("reviews"); });
        connect(model.get(), &PRDetailViewModel::filesChanged, this,
                [&] { order << QStringLiteral("files"); });
        connect(model.get(), &PRDetailViewModel::commitsChanged, this,
                [&] { order << QStringLiteral("commits"); });
        connect(model.get(), &PRDetailViewModel::runsChanged, this,
                [&] { order << QStringLiteral("runs"); });
        connect(model.get(), &PRDetailViewModel::jobsChanged, this,
                [&] { order << QStringLiteral("jobs"); });

        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(order,
                 (QStringList{"pr", "comments", "reviews", "files", "commits", "runs", "jobs"}));
        // The pull request and all four list requests had arrived before the slow one answered.
        QCOMPARE(requestsWhenCommentsLanded, qsizetype(5));
    }

    void isLoadingIsTrueExactlyWhileLoadRuns()
    {
        const auto model = newModel();
        QList<bool> seen;
        connect(model.get(), &PRDetailViewModel::isLoadingChanged, this,
                [&] { seen << model->isLoading(); });
        QList<bool> actionsSeen;
        connect(model.get(), &PRDetailViewModel::isActionsLoadingChanged, this,
                [&] { actionsSeen << model->isActionsLoading(); });
        bool loadingWhenRunsLanded = false;
        connect(model.get(), &PRDetailViewModel::runsChanged, this,
                [&] { loadingWhenRunsLanded = model->isLoading() && model->isActionsLoading(); });
        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(seen, (QList<bool>{true, false}));
        QCOMPARE(actionsSeen, (QList<bool>{true, false}));
        QVERIFY(loadingWhenRunsLanded);
    }

    void withoutConfiguredClientLoadChangesNothing()
    {
        stores->settings.overrideCredentials(QString(), std::nullopt);
        const auto model = newModel();
        QSignalSpy loading(model.get(), &PRDetailViewModel::isLoadingChanged);
        QSignalSpy errors(model.get(), &PRDetailViewModel::errorMessageChanged);
        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(loading.count(), 0);
        QCOMPARE(errors.count(), 0);
        QVERIFY(server->requests().isEmpty());
        QVERIFY(stores->log.entries().isEmpty());
    }

    void failedPullRequestFetchLogsAndShowsTheErrorButKeepsTheLists()
    {
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        server->route("GET", pullPath, FakeResponse::json(R"({"message":"gone"})", 404));
        server->clearRequests();
        stores->log.clear();

        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(model->errorMessage(), QStringLiteral("Not found."));
        QCOMPARE(stores->lines(LogLevel::Error),
                 (QStringList{QStringLiteral("GET repos/ann/app/pulls/7 \u2192 404 not found"),
                              QStringLiteral("PR 7: load failed: Not found.")}));
        QCOMPARE(model->pr()->title, QStringLiteral("Fix the parser"));
        QCOMPARE(model->comments().size(), 1);
        QCOMPARE(model->jobs().size(), 1);
        QVERIFY(!model->isLoading());
        QCOMPARE(requestLog(*server), QStringList{QStringLiteral("GET /pulls/7")});
    }

    void nextLoadClearsTheErrorMessage()
    {
        server->route("GET", pullPath, FakeResponse::json(R"({"message":"boom"})", 500));
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(model->errorMessage(), QStringLiteral("Server error (500): boom"));
        server->route("GET", pullPath, FakeResponse::json(pullJson()));
        QVERIFY(runToEnd(model->load()).value);
        QVERIFY(!model->errorMessage());
    }

    void commentsNotFoundGiveEmptyCommentsAndNoErrorWhileOthersLand()
    {
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(model->comments().size(), 1);
        server->route("GET", apiRoot + QStringLiteral("/issues/7/comments"),
                      FakeResponse::json(R"({"message":"not found"})", 404));
        server->route("GET", pullPath + QStringLiteral("/reviews"),
                      FakeResponse::json(compact(
                          QJsonArray{review(2, QStringLiteral("COMMENT"), QStringLiteral("cy"))})));
        stores->log.clear();

        QVERIFY(runToEnd(model->load()).value);
        QVERIFY(model->comments().isEmpty());
        QVERIFY(!model->errorMessage());
        QCOMPARE(model->reviews().first().id, qint64(2));
        QCOMPARE(model->files().size(), 1);
        QCOMPARE(model->commits().size(), 1);
        // Only the request's own line; the model adds nothing about the failure.
        QCOMPARE(stores->lines(LogLevel::Error),
                 QStringList{
                     QStringLiteral("GET repos/ann/app/issues/7/comments \u2192 404 not found")});
        QCOMPARE(stores->lines(LogLevel::Warn), QStringList());
    }

    void seventyFiveFilesArriveWholeInServerOrderWithALogLinePerPage()
    {
        serveFilesInPages(75, 30);
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(model->files().size(), 75);
        for (int i = 0; i < 75; ++i)
            QCOMPARE(model->files().at(i).filename, QStringLiteral("file-%1.txt").arg(i + 1));
        QVERIFY(!model->filesCut());
        QCOMPARE(model->filesCutNotice(), QString());
        QCOMPARE(server->requests("GET", pullPath + QStringLiteral("/files")).size(), 3);
        QCOMPARE(stores->lines(LogLevel::Info)
                     .count(QStringLiteral("GET repos/ann/app/pulls/7/files \u2192 200")),
                 3);
    }

    void aFailedSecondPageLeavesTheFilesEmptyLikeAFailedFirstPage_data()
    {
        QTest::addColumn<int>("failingPage");
        QTest::newRow("first page") << 1;
        QTest::newRow("second page") << 2;
    }

    void aFailedSecondPageLeavesTheFilesEmptyLikeAFailedFirstPage()
    {
        QFETCH(int, failingPage);
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(model->files().size(), 1);
        serveFilesInPages(75, 30, failingPage);
        stores->log.clear();

        QVERIFY(runToEnd(model->load()).value);
        QVERIFY(model->files().isEmpty());
        QVERIFY(!model->errorMessage());
        QCOMPARE(model->reviews().size(), 1);
        QCOMPARE(stores->lines(LogLevel::Error),
                 QStringList{QStringLiteral("GET repos/ann/app/pulls/7/files \u2192 500 boom")});
    }

    void filesCutAtThePageBoundSaySo()
    {
        serveFilesInPages(GiteaClient::maxListPages + 20, 1);
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(model->files().size(), GiteaClient::maxListPages);
        QCOMPARE(model->filesCut(), (ListCut{GiteaClient::maxListPages, 120}));
        QCOMPARE(model->filesCutNotice(), QStringLiteral("Showing the first 100 of 120."));
    }

    void executingRunMakesTheSummaryRunning()
    {
        server->route("GET", apiRoot + QStringLiteral("/actions/runs"),
                      FakeResponse::json(runsJson(
                          {QJsonObject{{QStringLiteral("id"), 11},
                                       {QStringLiteral("status"), QStringLiteral("in_progress")}},
                           run(12, QStringLiteral("failure"))})));
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(model->ciStatus(), CIStatus::Running);
        QCOMPARE(CIStatus::forRun(model->runs().first()), CIStatus::Running);
    }

    void runsServerErrorWritesOneWarnLineAndNoErrorMessage()
    {
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        const QList<ActionRun> runsBefore = model->runs();
        const PRDetailViewModel::JobsByRun jobsBefore = model->jobs();
        server->route("GET", apiRoot + QStringLiteral("/actions/runs"),
                      FakeResponse::json(R"({"message":"boom"})", 500));
        stores->log.clear();
        QSignalSpy actionsLoading(model.get(), &PRDetailViewModel::isActionsLoadingChanged);

        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(
            stores->lines(LogLevel::Warn),
            QStringList{QStringLiteral("PR 7: actions/runs failed: Server error (500): boom")});
        QVERIFY(!model->errorMessage());
        QCOMPARE(model->runs(), runsBefore);
        QCOMPARE(model->jobs(), jobsBefore);
        QCOMPARE(actionsLoading.count(), 2);
        QVERIFY(!model->isActionsLoading());
    }

    void loadAloneAsksForNoStatusesAndTheRefreshAsksLast()
    {
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        QVERIFY(!requestLog(*server).join(u' ').contains(QStringLiteral("/status")));
        server->clearRequests();
        QVERIFY(runToEnd(model->loadWithStatuses()).value);
        QCOMPARE(requestLog(*server).last(), QStringLiteral("GET /commits/abc123/status"));
    }

    void statusesShowOtherCIAndLeaveOutActionsOwn()
    {
        serveStatuses({
            status(1, QStringLiteral("failure"), QStringLiteral("ci/woodpecker"),
                   QStringLiteral("https://ci.example.org/repos/1/pipeline/2")),
            // Posted by Actions itself, written with the host Gitea is configured with.
            status(2, QStringLiteral("success"), QStringLiteral("ci.yml / build (push)"),
                   QStringLiteral("https://gitea.internal/ann/app/actions/runs/3/jobs/0")),
            status(3, QStringLiteral("pending"), QStringLiteral("drone"),
                   QStringLiteral("javascript:alert(1)")),
        });
        const auto model = newModel();
        QVERIFY(runToEnd(model->loadWithStatuses()).value);
        QCOMPARE(model->statuses().size(), 2);
        const RecordListModel &rows = *model->statusesModel();
        QCOMPARE(rows.rowCount(), 2);
        QCOMPARE(rows.valueAt(0, "context").toString(), QStringLiteral("ci/woodpecker"));
        QCOMPARE(rows.valueAt(0, "ciStatus").toInt(), int(CIStatus::Failure));
        QCOMPARE(rows.valueAt(0, "detailsUrl").toString(),
                 QStringLiteral("https://ci.example.org/repos/1/pipeline/2"));
        QCOMPARE(rows.valueAt(1, "context").toString(), QStringLiteral("drone"));
        QCOMPARE(rows.valueAt(1, "ciStatus").toInt(), int(CIStatus::Running));
        // Only web pages are offered to open.
        QCOMPARE(rows.valueAt(1, "detailsUrl").toString(), QString());
        // The head commit has a successful run: the runs decide.
        QCOMPARE(model->ciStatus(), CIStatus::Success);
    }

    void withoutRunsTheStatusesDecideTheSummaryAndTheGate()
    {
        withoutRuns();
        serveStatuses({status(1, QStringLiteral("success"), QStringLiteral("lint"),
                              QStringLiteral("https://ci.example.org/1")),
                       status(2, QStringLiteral("error"), QStringLiteral("build"),
                              QStringLiteral("https://ci.example.org/2"))});
        stores->settings.setMergeGateMode(MergeGateMode::Block);
        const auto model = newModel();
        QSignalSpy ciChanged(model.get(), &PRDetailViewModel::ciStatusChanged);
        QVERIFY(runToEnd(model->loadWithStatuses()).value);
        QCOMPARE(model->ciStatus(), CIStatus::Failure);
        QCOMPARE(ciChanged.count(), 1);
        QVERIFY(!model->mergeAllowed());
    }

    void withRunsAFailingStatusDoesNotOutweighThem()
    {
        serveStatuses({status(1, QStringLiteral("failure"), QStringLiteral("lint"),
                              QStringLiteral("https://ci.example.org/1"))});
        stores->settings.setMergeGateMode(MergeGateMode::Block);
        const auto model = newModel();
        QVERIFY(runToEnd(model->loadWithStatuses()).value);
        QCOMPARE(model->statuses().size(), 1);
        QCOMPARE(model->ciStatus(), CIStatus::Success);
        QVERIFY(model->mergeAllowed());
    }

    void statusNotFoundChangesNothingAndSaysNothing()
    {
        withoutRuns();
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        stores->log.clear();
        QVERIFY(runToEnd(model->loadWithStatuses()).value);
        QVERIFY(requestLog(*server).contains(QStringLiteral("GET /commits/abc123/status")));
        QVERIFY(model->statuses().isEmpty());
        QCOMPARE(model->ciStatus(), CIStatus::Unknown);
        QVERIFY(!model->errorMessage());
        QCOMPARE(stores->lines(LogLevel::Warn), QStringList());
        QVERIFY(!model->isActionsLoading());
    }

    void statusServerErrorWritesOneWarnLineAndKeepsTheStatuses()
    {
        serveStatuses({status(1, QStringLiteral("success"), QStringLiteral("lint"),
                              QStringLiteral("https://ci.example.org/1"))});
        const auto model = newModel();
        QVERIFY(runToEnd(model->loadWithStatuses()).value);
        server->route("GET", apiRoot + QStringLiteral("/commits/abc123/status"),
                      FakeResponse::json(R"({"message":"boom"})", 500));
        stores->log.clear();
        QVERIFY(runToEnd(model->loadWithStatuses()).value);
        QCOMPARE(
            stores->lines(LogLevel::Warn),
            QStringList{QStringLiteral("PR 7: commit status failed: Server error (500): boom")});
        QVERIFY(!model->errorMessage());
        QCOMPARE(model->statuses().size(), 1);
    }

    void noUsableHeadShaMeansNoRunsRequest_data()
    {
        QTest::addColumn<QJsonObject>("headBranch");
        QTest::newRow("no head branch") << QJsonObject();
        QTest::newRow("head without sha") << head(QStringLiteral("feature/x"), QString());
        QTest::newRow("head with empty sha") << head(QStringLiteral("feature/x"), QString(""));
    }

    void noUsableHeadShaMeansNoRunsRequest()
    {
        QFETCH(QJsonObject, headBranch);
        server->route("GET", pullPath,
                      FakeResponse::json(pullJson(QStringLiteral("No head"), headBranch)));
        const auto model = newModel();
        QSignalSpy actionsLoading(model.get(), &PRDetailViewModel::isActionsLoadingChanged);
        QVERIFY(runToEnd(model->load()).value);
        QVERIFY(model->pr());
        QCOMPARE(actionsLoading.count(), 0);
        QVERIFY(!model->isActionsLoading());
        for (const QString &request : requestLog(*server))
            QVERIFY2(!request.contains(u"/actions/"), qPrintable(request));
        QCOMPARE(server->requests().size(), 5);
    }

    void threeRunsGiveThreeJobsRequestsInOrderAndAFailedOneIsEmpty()
    {
        server->route("GET", apiRoot + QStringLiteral("/actions/runs"),
                      FakeResponse::json(runsJson({run(31, QStringLiteral("success")),
                                                   run(32, QStringLiteral("failure")),
                                                   run(33, QStringLiteral("success"))})));
        server->route("GET", apiRoot + QStringLiteral("/actions/runs/32/jobs"),
                      FakeResponse::json(R"({"message":"boom"})", 500));
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);

        const QStringList requests = requestLog(*server);
        QCOMPARE(requests.mid(requests.size() - 3),
                 (QStringList{QStringLiteral("GET /actions/runs/31/jobs"),
                              QStringLiteral("GET /actions/runs/32/jobs"),
                              QStringLiteral("GET /actions/runs/33/jobs")}));
        QCOMPARE(model->jobs().keys(), (QList<qint64>{31, 32, 33}));
        QCOMPARE(model->jobs().value(31).first().id, qint64(310));
        QVERIFY(model->jobs().value(32).isEmpty());
        QCOMPARE(model->jobs().value(33).first().id, qint64(330));
        QVERIFY(!model->errorMessage());
        QCOMPARE(model->ciStatus(), CIStatus::Failure);
    }

    void refreshAfterARunDisappearedKeepsItsOldJobs()
    {
        server->route("GET", apiRoot + QStringLiteral("/actions/runs"),
                      FakeResponse::json(runsJson({run(41, QStringLiteral("success")),
                                                   run(42, QStringLiteral("success"))})));
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(model->jobs().keys(), (QList<qint64>{41, 42}));

        server->route("GET", apiRoot + QStringLiteral("/actions/runs"),
                      FakeResponse::json(runsJson({run(41, QStringLiteral("success"))})));
        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(model->runs().size(), 1);
        QCOMPARE(model->jobs().keys(), (QList<qint64>{41, 42}));
        QCOMPARE(model->jobs().value(42).first().id, qint64(420));
    }

    void emptyRunListMakesNoJobsRequests()
    {
        server->route("GET", apiRoot + QStringLiteral("/actions/runs"),
                      FakeResponse::json(runsJson({})));
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        QVERIFY(model->runs().isEmpty());
        QCOMPARE(requestLog(*server).last(), QStringLiteral("GET /actions/runs"));
        QVERIFY(!model->isActionsLoading());
    }

    void identicalReloadNotifiesNothingButLoading()
    {
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        QSignalSpy pr(model.get(), &PRDetailViewModel::prChanged);
        QSignalSpy comments(model.get(), &PRDetailViewModel::commentsChanged);
        QSignalSpy runs(model.get(), &PRDetailViewModel::runsChanged);
        QSignalSpy jobs(model.get(), &PRDetailViewModel::jobsChanged);
        QSignalSpy errors(model.get(), &PRDetailViewModel::errorMessageChanged);
        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(pr.count() + comments.count() + runs.count() + jobs.count() + errors.count(), 0);
    }

    void destroyingTheModelDuringThePullRequestFetchLogsAndSetsNothing()
    {
        server->route("GET", pullPath, [](const RecordedRequest &, const RouteParams &) {
            FakeResponse response = FakeResponse::json(pullJson());
            response.delay = std::chrono::milliseconds(300);
            return response;
        });
        auto *model = new PRDetailViewModel(stores->settings, annApp(), 7);
        QPointer<PRDetailViewModel> watch(model);
        connect(server, &FakeGiteaServer::requestRecorded, model, &QObject::deleteLater);
        const auto outcome = runToEnd(model->load());
        QVERIFY(outcome.value);
        QVERIFY(!watch);
        QTest::qWait(500);
        QVERIFY(stores->log.entries().isEmpty());
        QCOMPARE(server->requests().size(), 1);
    }

    void destroyingTheModelDuringTheListFetchesAbortsThemSilently()
    {
        server->route("GET", pullPath + QStringLiteral("/commits"),
                      [](const RecordedRequest &, const RouteParams &) {
                          FakeResponse response = FakeResponse::json("[]");
                          response.delay = std::chrono::milliseconds(300);
                          return response;
                      });
        auto *model = new PRDetailViewModel(stores->settings, annApp(), 7);
        QPointer<PRDetailViewModel> watch(model);
        // Gone as soon as comments have landed, while commits are still under way.
        connect(model, &PRDetailViewModel::commentsChanged, model, &QObject::deleteLater);
        QVERIFY(runToEnd(model->load()).value);
        QVERIFY(!watch);
        QTest::qWait(500);
        // The pull request and the comments (at least) were logged when they arrived; the
        // aborted commits request never is, and the model adds no line of its own.
        const QStringList lines = stores->lines(LogLevel::Info);
        QVERIFY(lines.contains(QStringLiteral("GET repos/ann/app/pulls/7 \u2192 200")));
        for (const QString &line : lines)
            QVERIFY2(!line.contains(u"/commits"), qPrintable(line));
        QCOMPARE(stores->lines(LogLevel::Warn) + stores->lines(LogLevel::Error), QStringList());
        QVERIFY(!requestLog(*server).contains(QStringLiteral("GET /actions/runs")));
    }

    void newLoadAbortsThePreviousOneWithoutALogLine()
    {
        int calls = 0;
        server->route("GET", pullPath, [&calls](const RecordedRequest &, const RouteParams &) {
            ++calls;
            if (calls == 1) {
                FakeResponse slow = FakeResponse::json(pullJson(QStringLiteral("Old")));
                slow.delay = std::chrono::milliseconds(400);
                return slow;
            }
            return FakeResponse::json(pullJson(QStringLiteral("New")));
        });
        const auto model = newModel();
        QList<bool> loadingSeen;
        connect(model.get(), &PRDetailViewModel::isLoadingChanged, this,
                [&] { loadingSeen << model->isLoading(); });
        model->reload();
        QTRY_COMPARE(server->requests().size(), 1);

        QVERIFY(runToEnd(model->load()).value);
        QTest::qWait(600);
        QCOMPARE(model->pr()->title, QStringLiteral("New"));
        QCOMPARE(calls, 2);
        QCOMPARE(stores->lines(LogLevel::Info)
                     .count(QStringLiteral("GET repos/ann/app/pulls/7 \u2192 200")),
                 1);
        QCOMPARE(stores->lines(LogLevel::Warn) + stores->lines(LogLevel::Error), QStringList());
        QVERIFY(!model->errorMessage());
        QCOMPARE(loadingSeen, (QList<bool>{true, false}));
        QVERIFY(!model->isLoading());
    }

    void qmlPropertiesGiveThePullRequestAsJsonAndTheListsAsModels()
    {
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(model->property("pr").toMap().value(QStringLiteral("title")).toString(),
                 QStringLiteral("Fix the parser"));
        QCOMPARE(model->property("hasPr").toBool(), true);
        const auto *runs = model->property("runsModel").value<RecordListModel *>();
        QVERIFY(runs);
        QCOMPARE(runs->count(), 1);
        QCOMPARE(runs->valueAt(0, "runID"), QVariant(qint64(11)));
        const auto *jobs =
            qobject_cast<const RecordListModel *>(runs->valueAt(0, "jobs").value<QObject *>());
        QVERIFY(jobs);
        QCOMPARE(jobs->count(), 1);
        QCOMPARE(jobs->valueAt(0, "name"), QVariant(QStringLiteral("build")));
        QCOMPARE(model->property("reviewsModel").value<RecordListModel *>()->count(), 1);
        QCOMPARE(model->property("commentsModel").value<RecordListModel *>()->count(), 1);
        QCOMPARE(model->property("filesModel").value<RecordListModel *>()->valueAt(0, "filename"),
                 QVariant(QStringLiteral("a.c")));
        QCOMPARE(model->property("errorMessage").toString(), QString());
        QCOMPARE(model->property("ciStatus").value<CIStatus::Value>(), CIStatus::Success);
    }

    void webUrlIsThePagesAddressOnlyForHttpAndHttps_data()
    {
        QTest::addColumn<QJsonValue>("htmlUrl");
        QTest::addColumn<QString>("webUrl");

        QTest::newRow("https") << QJsonValue(
                                      QStringLiteral("https://git.example.org/ann/app/pulls/7"))
                               << QStringLiteral("https://git.example.org/ann/app/pulls/7");
        QTest::newRow("http") << QJsonValue(QStringLiteral("http://127.0.0.1:3000/ann/app/pulls/7"))
                              << QStringLiteral("http://127.0.0.1:3000/ann/app/pulls/7");
        QTest::newRow("absent") << QJsonValue(QJsonValue::Undefined) << QString();
        QTest::newRow("null") << QJsonValue(QJsonValue::Null) << QString();
        QTest::newRow("javascript")
            << QJsonValue(QStringLiteral("javascript:alert(1)")) << QString();
        QTest::newRow("file") << QJsonValue(QStringLiteral("file:///etc/passwd")) << QString();
        QTest::newRow("relative") << QJsonValue(QStringLiteral("/ann/app/pulls/7")) << QString();
    }

    void webUrlIsThePagesAddressOnlyForHttpAndHttps()
    {
        QFETCH(QJsonValue, htmlUrl);
        QFETCH(QString, webUrl);
        QJsonObject pull = QJsonDocument::fromJson(pullJson()).object();
        if (!htmlUrl.isUndefined())
            pull.insert(QStringLiteral("html_url"), htmlUrl);
        server->route("GET", pullPath, FakeResponse::json(compact(pull)));

        const auto model = newModel();
        QSignalSpy changes(model.get(), &PRDetailViewModel::prChanged);
        // Nothing before the pull request is there.
        QVERIFY(!model->webUrl());
        QCOMPARE(model->property("webUrl").toString(), QString());
        QVERIFY(runToEnd(model->load()).value);

        QVERIFY(model->hasPr());
        QCOMPARE(model->webUrl().has_value(), !webUrl.isEmpty());
        if (model->webUrl())
            QCOMPARE(model->webUrl()->toString(), webUrl);
        QCOMPARE(model->property("webUrl").toString(), webUrl);
        QVERIFY(!changes.isEmpty());
    }

    void listModelsHoldWhatTheTypedListsHold()
    {
        server->route("GET", apiRoot + QStringLiteral("/actions/runs"),
                      FakeResponse::json(runsJson({run(11, QStringLiteral("success")),
                                                   run(12, QStringLiteral("failure"))})));
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(model->commentsModel()->items(), model->comments());
        QCOMPARE(model->reviewsModel()->items(), model->reviews());
        QCOMPARE(model->filesModel()->items(), model->files());
        QCOMPARE(model->runsModel()->items(), model->runs());
        QCOMPARE(model->jobs().keys(), (QList<qint64>{11, 12}));
        for (const qint64 runID : model->jobs().keys())
            QCOMPARE(model->runsModel()->jobsOf(runID)->items(), model->jobs().value(runID));
    }

    void reloadOfTheSamePullRequestKeepsEveryRow()
    {
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        const QList<QAbstractItemModel *> lists{model->commentsModel(), model->reviewsModel(),
                                                model->filesModel(), model->runsModel(),
                                                model->runsModel()->jobsOf(11)};
        std::vector<std::unique_ptr<QSignalSpy>> spies;
        for (QAbstractItemModel *list : lists) {
            QCOMPARE(list->rowCount(), 1);
            for (const auto signal :
                 {&QAbstractItemModel::rowsRemoved, &QAbstractItemModel::rowsInserted})
                spies.push_back(std::make_unique<QSignalSpy>(list, signal));
            spies.push_back(std::make_unique<QSignalSpy>(list, &QAbstractItemModel::rowsMoved));
            spies.push_back(std::make_unique<QSignalSpy>(list, &QAbstractItemModel::modelReset));
            spies.push_back(std::make_unique<QSignalSpy>(list, &QAbstractItemModel::dataChanged));
        }
        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(server->requests().size(), 14);
        for (const auto &spy : spies)
            QCOMPARE(spy->count(), 0);
    }

    void aCommentEditedOnTheServerChangesOnlyItsRow()
    {
        const auto serveComments = [this](const QString &second) {
            server->route("GET", apiRoot + QStringLiteral("/issues/7/comments"),
                          FakeResponse::json(compact(
                              QJsonArray{comment(1, QStringLiteral("First")), comment(2, second),
                                         comment(3, QStringLiteral("Third"))})));
        };
        serveComments(QStringLiteral("Second"));
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        CommentsModel *comments = model->commentsModel();
        QSignalSpy removed(comments, &QAbstractItemModel::rowsRemoved);
        QSignalSpy inserted(comments, &QAbstractItemModel::rowsInserted);
        QSignalSpy reset(comments, &QAbstractItemModel::modelReset);
        QSignalSpy changed(comments, &QAbstractItemModel::dataChanged);

        serveComments(QStringLiteral("Second, edited"));
        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(removed.count() + inserted.count() + reset.count(), 0);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().at(0).toModelIndex().row(), 1);
        QCOMPARE(changed.first().at(1).toModelIndex().row(), 1);
        QCOMPARE(comments->valueAt(1, "body"), QVariant(QStringLiteral("Second, edited")));

        // A new comment is one inserted row at the end.
        server->route(
            "GET", apiRoot + QStringLiteral("/issues/7/comments"),
            FakeResponse::json(compact(QJsonArray{
                comment(1, QStringLiteral("First")), comment(2, QStringLiteral("Second, edited")),
                comment(3, QStringLiteral("Third")), comment(4, QStringLiteral("New"))})));
        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(inserted.first().at(1).toInt(), 3);
        QCOMPARE(inserted.first().at(2).toInt(), 3);
        QCOMPARE(removed.count() + reset.count(), 0);
        QCOMPARE(changed.count(), 1);
    }

    void aRunsJobModelStaysAndChangesInPlaceOnReload()
    {
        const auto model = newModel();
        QVERIFY(runToEnd(model->load()).value);
        RunsModel *runs = model->runsModel();
        auto *jobs = runs->valueAt(0, "jobs").value<QObject *>();
        QVERIFY(jobs);
        QSignalSpy runRows(runs, &QAbstractItemModel::rowsRemoved);
        QSignalSpy runReset(runs, &QAbstractItemModel::modelReset);
        QSignalSpy runChanged(runs, &QAbstractItemModel::dataChanged);
        QSignalSpy jobRowsRemoved(jobs, SIGNAL(rowsRemoved(QModelIndex, int, int)));
        QSignalSpy jobRowsInserted(jobs, SIGNAL(rowsInserted(QModelIndex, int, int)));
        QSignalSpy jobReset(jobs, SIGNAL(modelReset()));
        QSignalSpy jobChanged(jobs, SIGNAL(dataChanged(QModelIndex, QModelIndex, QList<int>)));

        // The same job, now failed.
        server->route("GET", apiRoot + QStringLiteral("/actions/runs/{run}/jobs"),
                      FakeResponse::json(compact(QJsonObject{
                          {QStringLiteral("jobs"),
                           QJsonArray{QJsonObject{
                               {QStringLiteral("id"), 110},
                               {QStringLiteral("name"), QStringLiteral("build")},
                               {QStringLiteral("status"), QStringLiteral("completed")},
                               {QStringLiteral("conclusion"), QStringLiteral("failure")}}}},
                          {QStringLiteral("total_count"), 1}})));
        QVERIFY(runToEnd(model->load()).value);
        QCOMPARE(runs->valueAt(0, "jobs").value<QObject *>(), jobs);
        QCOMPARE(runRows.count() + runReset.count() + runChanged.count(), 0);
        QCOMPARE(jobRowsRemoved.count() + jobRowsInserted.count() + jobReset.count(), 0);
        QCOMPARE(jobChanged.count(), 1);
        const auto *jobModel = qobject_cast<const RecordListModel *>(jobs);
        QCOMPARE(jobModel->valueAt(0, "failed"), QVariant(true));
        QCOMPARE(jobModel->valueAt(0, "ciStatus"), QVariant(int(CIStatus::Failure)));
    }

    void repoCanBeSetInItsQmlForm()
    {
        QQmlEngine engine;
        QmlServices::install(engine, stores->settings, stores->log);
        PRDetailViewModel model;
        setUpAsQmlDoes(model, model, engine);
        QCOMPARE(model.settings(), &stores->settings);
        QSignalSpy changed(&model, &PRDetailViewModel::repoChanged);
        QVERIFY(model.setProperty("repo", toQmlValue(annApp())));
        QVERIFY(model.setProperty("prNumber", 7));
        QCOMPARE(model.repo(), annApp());
        QCOMPARE(model.prNumber(), qint64(7));
        QCOMPARE(changed.count(), 1);
        model.setProperty("repo", QVariantMap{{QStringLiteral("name"), 3}});
        QCOMPARE(model.repo(), annApp());
        QCOMPARE(changed.count(), 1);
        QVERIFY(runToEnd(model.load()).value);
        QCOMPARE(model.pr()->number, qint64(7));
    }
};

QTEST_GUILESS_MAIN(TestPRDetailLoad)
#include "tst_prdetailload.moc"
