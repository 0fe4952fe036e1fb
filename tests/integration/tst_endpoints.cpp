// Every Gitea endpoint the client calls: method, path, query, body and result, against the fake
// server with scripted answers.

#include "api.h"
#include "clienttestcase.h"
#include "fakegiteaserver.h"
#include "fixtures.h"
#include "outcome.h"
#include "recordinglog.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

using namespace kestrine;
using namespace std::chrono_literals;
using kestrine::testing::ClientTestCase;
using kestrine::testing::runToEnd;

namespace {

QByteArray repositoryPage(int first, int count)
{
    QJsonArray page;
    for (int i = first; i < first + count; ++i) {
        page.append(QJsonObject{{QStringLiteral("id"), i},
                                {QStringLiteral("name"), QStringLiteral("r%1").arg(i)},
                                {QStringLiteral("full_name"), QStringLiteral("ann/r%1").arg(i)},
                                {QStringLiteral("owner"),
                                 QJsonObject{{QStringLiteral("login"), QStringLiteral("ann")}}}});
    }
    return QJsonDocument(page).toJson(QJsonDocument::Compact);
}

QJsonObject jsonObject(const QByteArray &bytes)
{
    return QJsonDocument::fromJson(bytes).object();
}

/// How a scripted repository list answers beyond its items.
struct RepositoryListing
{
    /// The page that fails with a 500.
    int failingPage = 0;
    /// The "X-Total-Count" every page carries, as Gitea's does; none without.
    std::optional<int> announcedTotal = std::nullopt;
    /// Pages from this one on are never answered.
    int firstSilentPage = 0;
    /// Page 2 is answered this much later than page 10, and every page in between an eighth
    /// of it less per page: the answers arrive in the reverse of page order.
    std::chrono::milliseconds staggered{0};
};

} // namespace

class TestEndpoints : public ClientTestCase
{
    Q_OBJECT

private:
    /// Serves `total` repositories in Gitea's pages of `limit`, and records nothing else.
    void serveRepositories(int total, RepositoryListing listing = {})
    {
        server->route("GET", QStringLiteral("/api/v1/user/repos"),
                      [total, listing](const RecordedRequest &request, const RouteParams &) {
                          const QUrlQuery query(QString::fromLatin1(request.rawQuery));
                          const int page = query.queryItemValue(QStringLiteral("page")).toInt();
                          const int limit = query.queryItemValue(QStringLiteral("limit")).toInt();
                          if (listing.firstSilentPage > 0 && page >= listing.firstSilentPage)
                              return FakeResponse::never();
                          FakeResponse answer =
                              page == listing.failingPage
                                  ? FakeResponse::json(R"({"message":"boom"})", 500)
                                  : FakeResponse::json(repositoryPage(
                                        (page - 1) * limit,
                                        std::clamp(total - (page - 1) * limit, 0, limit)));
                          if (listing.announcedTotal) {
                              answer.headers.append(
                                  {"X-Total-Count", QByteArray::number(*listing.announcedTotal)});
                          }
                          if (page >= 2)
                              answer.delay = listing.staggered * (10 - page) / 8;
                          return answer;
                      });
    }

    /// The "page" of each request for repositories, in the order they arrived.
    QList<int> requestedRepositoryPages() const
    {
        QList<int> pages;
        for (const RecordedRequest &request : server->requests("GET", "/api/v1/user/repos")) {
            pages.append(QUrlQuery(QString::fromLatin1(request.rawQuery))
                             .queryItemValue(QStringLiteral("page"))
                             .toInt());
        }
        return pages;
    }

private slots:
    void init() { QVERIFY(startServer()); }

    void cleanup() { stopServer(); }

    void exactlyFiftyRepositoriesAskForAnEmptySecondPage()
    {
        serveRepositories(50);
        const auto outcome = runToEnd(client().repos());
        QVERIFY(!outcome.error);
        QCOMPARE(outcome.value->size(), 50);
        QCOMPARE(server->requests().size(), 2);
        QCOMPARE(server->requests().at(1).rawQuery, QByteArray("page=2&limit=50"));
    }

    void fewerThanFiftyRepositoriesTakeOneRequest()
    {
        serveRepositories(7);
        const auto outcome = runToEnd(client().repos());
        QCOMPARE(outcome.value->size(), 7);
        QCOMPARE(server->requests().size(), 1);
        QCOMPARE(log.lines, QStringList{QStringLiteral("GET user/repos \u2192 200")});
    }

    void sixHundredRepositoriesGiveTheFirstFiveHundredInTenOrderedRequests()
    {
        serveRepositories(600);
        const auto outcome = runToEnd(client().repos());
        QVERIFY(!outcome.error);
        QCOMPARE(outcome.value->size(), 500);
        QCOMPARE(outcome.value->first().fullName, QStringLiteral("ann/r0"));
        QCOMPARE(outcome.value->last().fullName, QStringLiteral("ann/r499"));
        QCOMPARE(server->requests().size(), 10);
        for (int page = 1; page <= 10; ++page) {
            const RecordedRequest &request = server->requests().at(page - 1);
            QCOMPARE(request.rawPath, QByteArray("/api/v1/user/repos"));
            QCOMPARE(request.rawQuery,
                     QByteArray("page=%1&limit=50").replace("%1", QByteArray::number(page)));
        }
    }

    void failureOnPageThreeFailsTheWholeCall()
    {
        serveRepositories(600, {.failingPage = 3});
        const auto outcome = runToEnd(client().repos());
        QVERIFY(!outcome.value);
        QCOMPARE(*outcome.errorAs<APIError>(), APIError::httpStatus(500, QStringLiteral("boom")));
        QCOMPARE(server->requests().size(), 3);
    }

    void aCountedListAsksForEveryPageItWillReachTogether()
    {
        // Pages 2 on are never answered, so only pages asked for before any answer came are seen.
        serveRepositories(600, {.announcedTotal = 600, .firstSilentPage = 2});
        const auto outcome = runToEnd(client(QStringLiteral("s3cret"), 1500ms).repos());
        QVERIFY(outcome.errorAs<TransportError>());
        QList<int> pages = requestedRepositoryPages();
        std::sort(pages.begin(), pages.end());
        QCOMPARE(pages, (QList<int>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    }

    void aCountedListKeepsPageOrderWhenLaterPagesAnswerFirst()
    {
        serveRepositories(600, {.announcedTotal = 600, .staggered = 400ms});
        const auto outcome = runToEnd(client().repos());
        QVERIFY(!outcome.error);
        QCOMPARE(outcome.value->size(), 500);
        for (int i = 0; i < 500; ++i)
            QCOMPARE(outcome.value->at(i).fullName, QStringLiteral("ann/r%1").arg(i));
        QCOMPARE(server->requests().size(), 10);
        QCOMPARE(log.lines.size(), 10);
    }

    void aCountedListOfFiftyAsksForTheEmptySecondPageOnly()
    {
        serveRepositories(50, {.announcedTotal = 50});
        const auto outcome = runToEnd(client().repos());
        QCOMPARE(outcome.value->size(), 50);
        QCOMPARE(requestedRepositoryPages(), (QList<int>{1, 2}));
    }

    void aCountedListOfSevenTakesOneRequest()
    {
        serveRepositories(7, {.announcedTotal = 7});
        QCOMPARE(runToEnd(client().repos()).value->size(), 7);
        QCOMPARE(requestedRepositoryPages(), QList<int>{1});
    }

    void aListLongerThanItsCountIsWalkedToItsEnd()
    {
        // The count says 60 (two pages); the list has grown to 120 since.
        serveRepositories(120, {.announcedTotal = 60});
        const auto outcome = runToEnd(client().repos());
        QCOMPARE(outcome.value->size(), 120);
        QCOMPARE(outcome.value->last().fullName, QStringLiteral("ann/r119"));
        QCOMPARE(requestedRepositoryPages(), (QList<int>{1, 2, 3}));
    }

    void aPageBeyondTheListsEndDoesNotFailTheCall()
    {
        // The count says 600, but the list ends on page 3: page 5 was asked for ahead and failed.
        serveRepositories(120, {.failingPage = 5, .announcedTotal = 600});
        const auto outcome = runToEnd(client().repos());
        QVERIFY(!outcome.error);
        QCOMPARE(outcome.value->size(), 120);
        QCOMPARE(outcome.value->last().fullName, QStringLiteral("ann/r119"));
    }

    void aFailureOnACountedPageFailsTheWholeCall()
    {
        serveRepositories(600, {.failingPage = 3, .announcedTotal = 600});
        const auto outcome = runToEnd(client().repos());
        QVERIFY(!outcome.value);
        QCOMPARE(*outcome.errorAs<APIError>(), APIError::httpStatus(500, QStringLiteral("boom")));
    }

    void aCountThatIsNotANumberMeansOnePageAtATime()
    {
        server->route("GET", QStringLiteral("/api/v1/user/repos"),
                      [](const RecordedRequest &request, const RouteParams &) {
                          const bool first = request.rawQuery.startsWith("page=1&");
                          FakeResponse answer = FakeResponse::json(first ? repositoryPage(0, 50)
                                                                         : repositoryPage(50, 0));
                          answer.headers.emplaceBack("X-Total-Count", "5e2");
                          return answer;
                      });
        const auto outcome = runToEnd(client().repos());
        QCOMPARE(outcome.value->size(), 50);
        QCOMPARE(requestedRepositoryPages(), (QList<int>{1, 2}));
    }

    void undecodableRepositoryPageIsADecodingError()
    {
        server->route("GET", QStringLiteral("/api/v1/user/repos"),
                      FakeResponse::json(R"([{"id":1}])"));
        const auto error = runToEnd(client().repos()).errorAs<APIError>();
        QVERIFY(error);
        QCOMPARE(error->kind(), APIError::Kind::Decoding);
    }

    void pullRequestsAsksForOneHundredOpenOnes()
    {
        server->route("GET", QStringLiteral("/api/v1/repos/ann/tool/pulls"),
                      FakeResponse::json(fixtures::pullRequestList(2)));
        const auto outcome =
            runToEnd(client().pullRequests(QStringLiteral("ann"), QStringLiteral("tool")));
        QCOMPARE(outcome.value->size(), 2);
        QCOMPARE(server->requests().at(0).rawQuery, QByteArray("state=open&limit=100"));
        QCOMPARE(log.lines, QStringList{QStringLiteral("GET repos/ann/tool/pulls \u2192 200")});
    }

    void singleReadsHitTheirPaths_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("pullRequest") << "/api/v1/repos/ann/tool/pulls/7";
        QTest::newRow("currentUser") << "/api/v1/user";
        QTest::newRow("reviews") << "/api/v1/repos/ann/tool/pulls/7/reviews";
        QTest::newRow("comments") << "/api/v1/repos/ann/tool/issues/7/comments";
        QTest::newRow("changedFiles") << "/api/v1/repos/ann/tool/pulls/7/files";
        QTest::newRow("commits") << "/api/v1/repos/ann/tool/pulls/7/commits";
        QTest::newRow("jobs") << "/api/v1/repos/ann/tool/actions/runs/41/jobs";
    }

    void singleReadsHitTheirPaths()
    {
        QFETCH(QString, path);
        const QString tag = QString::fromLatin1(QTest::currentDataTag());
        const QString owner = QStringLiteral("ann"), repo = QStringLiteral("tool");
        bool decoded = false;
        if (tag == u"pullRequest") {
            server->route("GET", path,
                          FakeResponse::json(fixtures::read(QStringLiteral("gitea/pull.json"))));
            decoded = runToEnd(client().pullRequest(owner, repo, 7)).value->number == 7;
        } else if (tag == u"currentUser") {
            server->route("GET", path,
                          FakeResponse::json(fixtures::read(QStringLiteral("gitea/user.json"))));
            decoded = runToEnd(client().currentUser()).value->login == u"ann";
        } else if (tag == u"reviews") {
            server->route("GET", path, FakeResponse::json(R"([{"id":1,"state":"APPROVED"}])"));
            decoded = runToEnd(client().reviews(owner, repo, 7)).value->items.first().state ==
                      u"APPROVED";
        } else if (tag == u"comments") {
            server->route("GET", path, FakeResponse::json(R"([{"id":2,"body":"hi"}])"));
            decoded = runToEnd(client().comments(owner, repo, 7)).value->first().body == u"hi";
        } else if (tag == u"changedFiles") {
            server->route(
                "GET", path,
                FakeResponse::json(
                    R"([{"filename":"a.go","status":"changed","additions":1,"deletions":2,"changes":3}])"));
            decoded =
                runToEnd(client().changedFiles(owner, repo, 7)).value->items.first().deletions == 2;
        } else if (tag == u"commits") {
            server->route("GET", path,
                          FakeResponse::json(R"([{"sha":"abc","commit":{"message":"m"}}])"));
            decoded =
                runToEnd(client().commits(owner, repo, 7)).value->items.first().id() == u"abc";
        } else if (tag == u"jobs") {
            server->route(
                "GET", path,
                FakeResponse::json(
                    R"({"jobs":[{"id":5,"name":"test","status":"completed","conclusion":"success"}],"total_count":1})"));
            decoded = runToEnd(client().jobs(owner, repo, 41)).value->items.first().id == 5;
        }
        QVERIFY(decoded);
        QCOMPARE(server->requests().size(), 1);
        const RecordedRequest request = server->requests().first();
        QCOMPARE(request.method, QByteArray("GET"));
        QCOMPARE(QString::fromLatin1(request.rawPath), path);
        QVERIFY(!request.hasQuery);
        QCOMPARE(log.lines, QStringList{QStringLiteral("GET %1 \u2192 200").arg(path.mid(8))});
    }

    void runsAsksByHeadShaAndReadsTheEnvelope()
    {
        server->route(
            "GET", QStringLiteral("/api/v1/repos/ann/tool/actions/runs"),
            FakeResponse::json(
                R"({"workflow_runs":[{"id":41,"status":"completed","conclusion":"failure"}],"total_count":1})"));
        const auto outcome = runToEnd(
            client().runs(QStringLiteral("ann"), QStringLiteral("tool"), QStringLiteral("9a8b")));
        QCOMPARE(outcome.value->size(), 1);
        QCOMPARE(outcome.value->first().conclusion, QStringLiteral("failure"));
        QCOMPARE(server->requests().at(0).rawQuery, QByteArray("head_sha=9a8b&limit=20"));
        QCOMPARE(log.lines,
                 QStringList{QStringLiteral("GET repos/ann/tool/actions/runs \u2192 200")});
    }

    void runsEnvelopeWithoutListOrWithNullListIsEmpty_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("empty object") << QByteArray("{}");
        QTest::newRow("null list") << QByteArray(R"({"workflow_runs":null})");
        QTest::newRow("only a count") << QByteArray(R"({"total_count":0})");
    }

    void runsEnvelopeWithoutListOrWithNullListIsEmpty()
    {
        QFETCH(QByteArray, body);
        server->route("GET", QStringLiteral("/api/v1/repos/a/b/actions/runs"),
                      FakeResponse::json(body));
        const auto outcome =
            runToEnd(client().runs(QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("s")));
        QVERIFY(!outcome.error);
        QVERIFY(outcome.value->isEmpty());
    }

    void jobsEnvelopeWithoutListOrWithNullListIsEmpty()
    {
        server->route("GET", QStringLiteral("/api/v1/repos/a/b/actions/runs/1/jobs"),
                      FakeResponse::json("{}"));
        QVERIFY(runToEnd(client().jobs(QStringLiteral("a"), QStringLiteral("b"), 1))
                    .value->items.isEmpty());
        server->route("GET", QStringLiteral("/api/v1/repos/a/b/actions/runs/1/jobs"),
                      FakeResponse::json(R"({"jobs":null})"));
        QVERIFY(runToEnd(client().jobs(QStringLiteral("a"), QStringLiteral("b"), 1))
                    .value->items.isEmpty());
    }

    void envelopeThatIsAListFailsToDecode()
    {
        server->route("GET", QStringLiteral("/api/v1/repos/a/b/actions/runs"),
                      FakeResponse::json("[]"));
        const auto error =
            runToEnd(client().runs(QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("s")))
                .errorAs<APIError>();
        QVERIFY(error);
        QCOMPARE(error->kind(), APIError::Kind::Decoding);
    }

    void diffAndJobLogsArriveAsUtf8Text()
    {
        const QByteArray diffText =
            "diff --git a/caf\xc3\xa9.txt b/caf\xc3\xa9.txt\n+\xe2\x86\x92\n";
        server->route("GET", QStringLiteral("/api/v1/repos/a/b/pulls/3.diff"),
                      FakeResponse::text(diffText));
        server->route("GET", QStringLiteral("/api/v1/repos/a/b/actions/jobs/77/logs"),
                      FakeResponse::text("line 1\r\nline 2\n"));
        QCOMPARE(*runToEnd(client().diff(QStringLiteral("a"), QStringLiteral("b"), 3)).value,
                 QString::fromUtf8(diffText));
        QCOMPARE(*runToEnd(client().jobLogs(QStringLiteral("a"), QStringLiteral("b"), 77)).value,
                 QStringLiteral("line 1\r\nline 2\n"));
        QCOMPARE(log.lines,
                 (QStringList{QStringLiteral("GET repos/a/b/pulls/3.diff \u2192 200"),
                              QStringLiteral("GET repos/a/b/actions/jobs/77/logs \u2192 200")}));
    }

    void largeTextsAreDecodedOffTheCallersThreadToTheSameText()
    {
        // Over a megabyte, as a large diff or job log is: decoded on a worker thread.
        QByteArray large;
        while (large.size() < 3'000'000)
            large += "+\tcaf\xc3\xa9 \xe2\x86\x92 \xf0\x9f\x98\x80 line\n";
        server->route("GET", QStringLiteral("/api/v1/repos/a/b/pulls/3.diff"),
                      FakeResponse::text(large));
        QCOMPARE(*runToEnd(client().diff(QStringLiteral("a"), QStringLiteral("b"), 3)).value,
                 QString::fromUtf8(large));

        // One bad byte at the very end still fails the whole text.
        server->route("GET", QStringLiteral("/api/v1/repos/a/b/actions/jobs/77/logs"),
                      FakeResponse::text(large + "\xff"));
        QCOMPARE(*runToEnd(client().jobLogs(QStringLiteral("a"), QStringLiteral("b"), 77))
                      .errorAs<APIError>(),
                 APIError::invalidResponse());
    }

    void invalidUtf8IsAnInvalidResponseAfterTheSuccessLine()
    {
        server->route("GET", QStringLiteral("/api/v1/repos/a/b/pulls/3.diff"),
                      FakeResponse::text("ok \xff\xfe bad"));
        server->route("GET", QStringLiteral("/api/v1/repos/a/b/actions/jobs/77/logs"),
                      FakeResponse::text("\xc3("));
        QCOMPARE(*runToEnd(client().diff(QStringLiteral("a"), QStringLiteral("b"), 3))
                      .errorAs<APIError>(),
                 APIError::invalidResponse());
        QCOMPARE(*runToEnd(client().jobLogs(QStringLiteral("a"), QStringLiteral("b"), 77))
                      .errorAs<APIError>(),
                 APIError::invalidResponse());
        QCOMPARE(log.lines,
                 (QStringList{QStringLiteral("GET repos/a/b/pulls/3.diff \u2192 200"),
                              QStringLiteral("GET repos/a/b/actions/jobs/77/logs \u2192 200")}));
    }

    void emptyDiffIsEmptyText()
    {
        server->route("GET", QStringLiteral("/api/v1/repos/a/b/pulls/3.diff"),
                      FakeResponse::text(""));
        const auto outcome = runToEnd(client().diff(QStringLiteral("a"), QStringLiteral("b"), 3));
        QVERIFY(!outcome.error);
        QVERIFY(outcome.value->isEmpty());
    }

    void mergeSendsBothKeysAlways_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<bool>("deleteBranch");
        QTest::newRow("merge, keep branch") << "merge" << false;
        QTest::newRow("squash, delete branch") << "squash" << true;
        QTest::newRow("rebase") << "rebase" << false;
    }

    void mergeSendsBothKeysAlways()
    {
        QFETCH(QString, method);
        QFETCH(bool, deleteBranch);
        server->route("POST", QStringLiteral("/api/v1/repos/a/b/pulls/3/merge"),
                      FakeResponse::empty(200));
        QVERIFY(!runToEnd(client().merge(QStringLiteral("a"), QStringLiteral("b"), 3, method,
                                         deleteBranch))
                     .error);
        const RecordedRequest request = server->requests().first();
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(request.header("Content-Type"), QByteArray("application/json"));
        const QJsonObject body = jsonObject(request.body);
        QCOMPARE(body.size(), 2);
        QCOMPARE(body.value(QStringLiteral("Do")).toString(), method);
        QVERIFY(body.value(QStringLiteral("delete_branch_after_merge")).isBool());
        QCOMPARE(body.value(QStringLiteral("delete_branch_after_merge")).toBool(), deleteBranch);
        QCOMPARE(log.lines, QStringList{QStringLiteral("POST repos/a/b/pulls/3/merge \u2192 200")});
    }

    void mergeConflictAnswerIsMergeConflict()
    {
        server->route("POST", QStringLiteral("/api/v1/repos/a/b/pulls/3/merge"),
                      FakeResponse::json(R"({"message":"Please try again later"})", 409));
        QCOMPARE(*runToEnd(client().merge(QStringLiteral("a"), QStringLiteral("b"), 3,
                                          QStringLiteral("merge"), false))
                      .errorAs<APIError>(),
                 APIError::mergeConflict());
    }

    void setStatePatchesTheState()
    {
        server->route("PATCH", QStringLiteral("/api/v1/repos/a/b/pulls/3"),
                      FakeResponse::json(fixtures::read(QStringLiteral("gitea/pull.json")), 201));
        QVERIFY(!runToEnd(client().setState(QStringLiteral("a"), QStringLiteral("b"), 3,
                                            QStringLiteral("closed")))
                     .error);
        const RecordedRequest request = server->requests().first();
        QCOMPARE(request.method, QByteArray("PATCH"));
        QCOMPARE(jsonObject(request.body),
                 (QJsonObject{{QStringLiteral("state"), QStringLiteral("closed")}}));
    }

    void reviewChoiceMapsToGiteasEvent_data()
    {
        QTest::addColumn<QString>("state");
        QTest::addColumn<QString>("event");
        QTest::newRow("approved") << "approved"
                                  << "APPROVED";
        QTest::newRow("changes") << "changes"
                                 << "REQUEST_CHANGES";
        QTest::newRow("comment") << "comment"
                                 << "COMMENT";
        QTest::newRow("approve is not approved") << "approve"
                                                 << "COMMENT";
        QTest::newRow("empty") << ""
                               << "COMMENT";
    }

    void reviewChoiceMapsToGiteasEvent()
    {
        QFETCH(QString, state);
        QFETCH(QString, event);
        server->route("POST", QStringLiteral("/api/v1/repos/a/b/pulls/3/reviews"),
                      FakeResponse::json(R"({"id":9,"state":"APPROVED","body":"LGTM"})"));
        const auto outcome = runToEnd(client().submitReview(
            QStringLiteral("a"), QStringLiteral("b"), 3, state, QStringLiteral("LGTM")));
        QCOMPARE(outcome.value->id, 9);
        const QJsonObject body = jsonObject(server->requests().first().body);
        QCOMPARE(body, (QJsonObject{{QStringLiteral("event"), event},
                                    {QStringLiteral("body"), QStringLiteral("LGTM")}}));
    }

    void reviewWithoutCommentSendsOnlyTheEvent()
    {
        server->route("POST", QStringLiteral("/api/v1/repos/a/b/pulls/3/reviews"),
                      FakeResponse::json(R"({"id":9,"state":"APPROVED"})"));
        QVERIFY(!runToEnd(client().submitReview(QStringLiteral("a"), QStringLiteral("b"), 3,
                                                QStringLiteral("approved"), std::nullopt))
                     .error);
        QCOMPARE(server->requests().first().body, QByteArray(R"({"event":"APPROVED"})"));
    }

    void postCommentSendsTheBodyAndDecodesTheComment()
    {
        server->route(
            "POST", QStringLiteral("/api/v1/repos/a/b/issues/3/comments"),
            FakeResponse::json(
                "{\"id\":12,\"body\":\"Thanks\",\"created_at\":\"2024-05-01T10:20:30Z\"}", 201));
        const QString text = QStringLiteral("Thanks \"Bo\" \u2192 done");
        const auto outcome =
            runToEnd(client().postComment(QStringLiteral("a"), QStringLiteral("b"), 3, text));
        QCOMPARE(outcome.value->id, 12);
        QCOMPARE(jsonObject(server->requests().first().body),
                 (QJsonObject{{QStringLiteral("body"), text}}));
        QCOMPARE(log.lines,
                 QStringList{QStringLiteral("POST repos/a/b/issues/3/comments \u2192 201")});
    }

    void bodilessWritesSendNoBodyAndNoContentType_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("updateBranch") << "/api/v1/repos/a/b/pulls/3/update";
        QTest::newRow("rerun") << "/api/v1/repos/a/b/actions/runs/41/rerun";
    }

    void bodilessWritesSendNoBodyAndNoContentType()
    {
        QFETCH(QString, path);
        server->route("POST", path, FakeResponse::empty(200));
        const bool update = QByteArrayView(QTest::currentDataTag()) == "updateBranch";
        const auto outcome =
            update ? runToEnd(client().updateBranch(QStringLiteral("a"), QStringLiteral("b"), 3))
                   : runToEnd(client().rerun(QStringLiteral("a"), QStringLiteral("b"), 41));
        QVERIFY(!outcome.error);
        const RecordedRequest request = server->requests().first();
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(QString::fromLatin1(request.rawPath), path);
        QVERIFY(request.body.isEmpty());
        QVERIFY(!request.hasHeader("Content-Type"));
    }

    void updateBranchConflictIsMergeConflict()
    {
        server->route("POST", QStringLiteral("/api/v1/repos/a/b/pulls/3/update"),
                      FakeResponse::json(R"({"message":"conflict"})", 409));
        QCOMPARE(*runToEnd(client().updateBranch(QStringLiteral("a"), QStringLiteral("b"), 3))
                      .errorAs<APIError>(),
                 APIError::mergeConflict());
    }

    void deleteBranchEncodesTheNameOnce_data()
    {
        QTest::addColumn<QString>("branch");
        QTest::addColumn<QByteArray>("rawPath");
        QTest::addColumn<QString>("decodedName");
        QTest::newRow("slash and blank")
            << "feature/new ui" << QByteArray("/api/v1/repos/a/b/branches/feature/new%20ui")
            << "feature/new ui";
        QTest::newRow("hash") << "fix#12" << QByteArray("/api/v1/repos/a/b/branches/fix%2312")
                              << "fix#12";
        QTest::newRow("percent") << "50%off" << QByteArray("/api/v1/repos/a/b/branches/50%25off")
                                 << "50%off";
        QTest::newRow("percent with hex")
            << "a%20b" << QByteArray("/api/v1/repos/a/b/branches/a%2520b") << "a%20b";
        QTest::newRow("question mark")
            << "what?" << QByteArray("/api/v1/repos/a/b/branches/what%3F") << "what?";
        QTest::newRow("non-ascii")
            << QStringLiteral("caf\u00e9") << QByteArray("/api/v1/repos/a/b/branches/caf%C3%A9")
            << QStringLiteral("caf\u00e9");
        QTest::newRow("plain") << "main" << QByteArray("/api/v1/repos/a/b/branches/main") << "main";
    }

    void deleteBranchEncodesTheNameOnce()
    {
        QFETCH(QString, branch);
        QFETCH(QByteArray, rawPath);
        QFETCH(QString, decodedName);
        server->route("DELETE", QStringLiteral("/api/v1/repos/a/b/branches/{branch*}"),
                      FakeResponse::empty(204));
        QVERIFY(!runToEnd(client().deleteBranch(QStringLiteral("a"), QStringLiteral("b"), branch))
                     .error);
        const RecordedRequest request = server->requests().first();
        QCOMPARE(request.method, QByteArray("DELETE"));
        QCOMPARE(request.rawPath, rawPath);
        QCOMPARE(request.path(), QStringLiteral("/api/v1/repos/a/b/branches/") + decodedName);
        QCOMPARE(log.lines, QStringList{QStringLiteral("DELETE repos/a/b/branches/%1 \u2192 204")
                                            .arg(QString::fromLatin1(rawPath.mid(qsizetype(
                                                strlen("/api/v1/repos/a/b/branches/")))))});
    }

    void notFoundOnAnyEndpointIsNotFound()
    {
        const auto error =
            runToEnd(client().pullRequest(QStringLiteral("a"), QStringLiteral("b"), 99))
                .errorAs<APIError>();
        QCOMPARE(*error, APIError::notFound());
        QCOMPARE(log.lines,
                 QStringList{QStringLiteral("GET repos/a/b/pulls/99 \u2192 404 not found")});
    }

    void callOutlivesTheClientItWasMadeFrom()
    {
        server->route("GET", QStringLiteral("/api/v1/user"),
                      FakeResponse::json(R"({"login":"ann"})"));
        QCoro::Task<PRUser> task = [this] {
            const GiteaClient shortLived = client();
            return shortLived.currentUser();
        }();
        QCOMPARE(runToEnd(std::move(task)).value->login, QStringLiteral("ann"));
    }
};

QTEST_GUILESS_MAIN(TestEndpoints)
#include "tst_endpoints.moc"
