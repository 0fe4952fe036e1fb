// Lists a real Gitea hands out page by page: reviews, changed files, commits and a run's jobs
// arrive whole, each further page one more request to the instance the user configured, however
// the server announces its pages.

#include "api.h"
#include "clienttestcase.h"
#include "fakegiteaserver.h"
#include "giteasimulation.h"
#include "outcome.h"
#include "pagedanswer.h"
#include "recordinglog.h"
#include "strangerhost.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrlQuery>
#include <QtTest>

using namespace kestrine;
using kestrine::testing::ClientTestCase;
using kestrine::testing::numberedFiles;
using kestrine::testing::pagedAnswer;
using kestrine::testing::runToEnd;
using kestrine::testing::StrangerHost;

namespace {

const QString headSha = QStringLiteral("0123456789abcdef0123456789abcdef01234567");
const QString pullPath = QStringLiteral("/api/v1/repos/ann/tool/pulls/7");
const QString jobsPath = QStringLiteral("/api/v1/repos/ann/tool/actions/runs/31/jobs");

/// A seed whose pull request ann/tool#7 has `count` changed files, commits and reviews, and whose
/// head commit has one run (31) with `count` jobs.
QByteArray seedWith(int count)
{
    QJsonArray files, commits, reviews, jobs;
    for (int i = 1; i <= count; ++i) {
        files.append(
            QJsonObject{{"filename", QStringLiteral("src/file-%1.c").arg(i, 3, 10, QChar(u'0'))},
                        {"status", "changed"},
                        {"additions", i},
                        {"deletions", 0}});
        commits.append(QJsonObject{{"sha", QStringLiteral("%1").arg(i, 40, 16, QChar(u'0'))},
                                   {"author", "ann"},
                                   {"message", QStringLiteral("Step %1").arg(i)}});
        reviews.append(QJsonObject{{"id", 1000 + i},
                                   {"user", "bo"},
                                   {"state", "COMMENT"},
                                   {"body", QStringLiteral("Note %1").arg(i)}});
        jobs.append(QJsonObject{{"id", 5000 + i},
                                {"name", QStringLiteral("job %1").arg(i)},
                                {"status", "completed"},
                                {"conclusion", "success"}});
    }
    const QJsonObject pull{{"number", 7},        {"user", "ann"},       {"title", "Many things"},
                           {"head", "many"},     {"head_sha", headSha}, {"files", files},
                           {"commits", commits}, {"reviews", reviews}};
    const QJsonObject run{{"id", 31},
                          {"workflow", "ci.yml"},
                          {"display_title", "Many things"},
                          {"head_branch", "many"},
                          {"actor", "ann"},
                          {"status", "completed"},
                          {"conclusion", "success"},
                          {"jobs", jobs}};
    const QJsonObject repo{{"owner", "ann"},
                           {"name", "tool"},
                           {"pulls", QJsonArray{pull}},
                           {"runs", QJsonObject{{headSha, QJsonArray{run}}}}};
    const QJsonObject seed{
        {"users", QJsonArray{QJsonObject{{"login", "ann"}}, QJsonObject{{"login", "bo"}}}},
        {"repositories", QJsonArray{repo}}};
    return QJsonDocument(seed).toJson(QJsonDocument::Compact);
}

void addHeader(FakeResponse &response, const QByteArray &name, const QByteArray &value)
{
    response.headers.append({name, value});
}

int pageOf(const RecordedRequest &request)
{
    const QUrlQuery query(QString::fromLatin1(request.rawQuery));
    return query.hasQueryItem(QStringLiteral("page"))
               ? query.queryItemValue(QStringLiteral("page")).toInt()
               : 1;
}

QStringList rawQueries(const QList<RecordedRequest> &requests)
{
    QStringList queries;
    for (const RecordedRequest &request : requests)
        queries.append(QString::fromLatin1(request.rawQuery));
    return queries;
}

} // namespace

class TestListPaging : public ClientTestCase
{
    Q_OBJECT

private:
    std::unique_ptr<GiteaSimulation> simulation;

    /// Serves the seed of `count` items of each list; false (with the reason printed) when the
    /// simulation cannot read it.
    bool simulate(int count)
    {
        simulation = std::make_unique<GiteaSimulation>(seedWith(count));
        if (!simulation->isValid()) {
            qWarning() << simulation->loadError();
            return false;
        }
        simulation->install(server);
        return true;
    }

    /// Serves `total` files `pageSize` a page, each page naming the next with `link`.
    void serveFilesLinkedBy(int total, int pageSize, std::function<QByteArray(int page)> link)
    {
        server->route(
            "GET", pullPath + QStringLiteral("/files"),
            pagedAnswer(numberedFiles(total), pageSize,
                        [link](const RecordedRequest &, int nextPage) { return link(nextPage); }));
    }

private slots:
    void init() { QVERIFY(startServer()); }

    void cleanup()
    {
        simulation.reset();
        stopServer();
    }

    void seventyFiveChangedFilesArriveWholeInThreeRequests()
    {
        QVERIFY(simulate(75));
        const auto files = runToEnd(client().changedFiles("ann", "tool", 7));
        QVERIFY(!files.error);
        QCOMPARE(files.value->items.size(), 75);
        QVERIFY(!files.value->cut);
        for (int i = 0; i < 75; ++i)
            QCOMPARE(files.value->items.at(i).filename,
                     QStringLiteral("src/file-%1.c").arg(i + 1, 3, 10, QChar(u'0')));

        const QList<RecordedRequest> requests = server->requests("GET", pullPath + "/files");
        // The first request is the one a server without pages would see.
        QCOMPARE(rawQueries(requests),
                 (QStringList{QString(), QStringLiteral("page=2"), QStringLiteral("page=3")}));
        QVERIFY(!requests.first().hasQuery);
        QCOMPARE(log.lines,
                 QStringList(3, QStringLiteral("GET repos/ann/tool/pulls/7/files \u2192 200")));
    }

    void thirtyOneCommitsArriveInTwoRequests()
    {
        QVERIFY(simulate(31));
        const auto commits = runToEnd(client().commits("ann", "tool", 7));
        QVERIFY(!commits.error);
        QCOMPARE(commits.value->items.size(), 31);
        QCOMPARE(commits.value->items.last().sha,
                 QStringLiteral("%1").arg(31, 40, 16, QChar(u'0')));
        QCOMPARE(server->requests("GET", pullPath + "/commits").size(), 2);
        QCOMPARE(log.lines.size(), 2);
    }

    void thirtyOneReviewsAnsweredWithOnlyATotalCountArriveInTwoRequests()
    {
        QVERIFY(simulate(31));
        const auto reviews = runToEnd(client().reviews("ann", "tool", 7));
        QVERIFY(!reviews.error);
        QCOMPARE(reviews.value->items.size(), 31);
        QCOMPARE(reviews.value->items.last().id, 1031);
        const QList<RecordedRequest> requests = server->requests("GET", pullPath + "/reviews");
        // Gitea links no pages of reviews: the count alone says a second page exists.
        QCOMPARE(rawQueries(requests), (QStringList{QString(), QStringLiteral("page=2")}));
        QCOMPARE(log.lines.size(), 2);
    }

    void aGiteaBehindAProxyStillHasEveryPageAskedAtTheInstance()
    {
        // The simulation writes its links with a root URL whose host the client never reached.
        StrangerHost stranger;
        QVERIFY(stranger.listen());
        QVERIFY(simulate(75));
        simulation->setRootUrl(QStringLiteral("http://") + stranger.address() +
                               QStringLiteral("/git/"));
        const auto files = runToEnd(client().changedFiles("ann", "tool", 7));
        QVERIFY(!files.error);
        QCOMPARE(files.value->items.size(), 75);
        const auto jobs = runToEnd(client().jobs("ann", "tool", 31));
        QCOMPARE(jobs.value->items.size(), 75);
        QCOMPARE(server->requests("GET", pullPath + "/files").size(), 3);
        QCOMPARE(server->requests("GET", jobsPath).size(), 3);
        QTest::qWait(50);
        QCOMPARE(stranger.contacts(), 0);
    }

    void aRunWithFortyJobsArrivesWhole()
    {
        QVERIFY(simulate(40));
        const auto jobs = runToEnd(client().jobs("ann", "tool", 31));
        QVERIFY(!jobs.error);
        QCOMPARE(jobs.value->items.size(), 40);
        QCOMPARE(jobs.value->items.last().id, 5040);
        QCOMPARE(server->requests("GET", jobsPath).size(), 2);
    }

    void jobsCountedOnlyInTheirEnvelopeStillArriveWhole()
    {
        // Gitea 1.25 and 1.26 send a run's jobs with the total in the body and no paging headers.
        server->route("GET", jobsPath, [](const RecordedRequest &request, const RouteParams &) {
            const int page = pageOf(request);
            QJsonArray jobs;
            for (int id = (page - 1) * 30 + 1; id <= std::min(40, page * 30); ++id)
                jobs.append(QJsonObject{{"id", id}, {"name", "j"}, {"status", "completed"}});
            return FakeResponse::json(
                QJsonDocument(QJsonObject{{"jobs", jobs}, {"total_count", 40}}).toJson());
        });
        const auto jobs = runToEnd(client().jobs("ann", "tool", 31));
        QVERIFY(!jobs.error);
        QCOMPARE(jobs.value->items.size(), 40);
        QCOMPARE(rawQueries(server->requests("GET", jobsPath)),
                 (QStringList{QString(), QStringLiteral("page=2")}));
    }

    void aListOnOnePageIsOneRequest()
    {
        QVERIFY(simulate(30));
        const auto files = runToEnd(client().changedFiles("ann", "tool", 7));
        QCOMPARE(files.value->items.size(), 30);
        QCOMPARE(server->requests("GET", pullPath + "/files").size(), 1);
        const auto reviews = runToEnd(client().reviews("ann", "tool", 7));
        QCOMPARE(reviews.value->items.size(), 30);
        QCOMPARE(server->requests("GET", pullPath + "/reviews").size(), 1);
    }

    void aFailureOnPageTwoFailsTheWholeList()
    {
        // Links relative to the server, as the path alone.
        server->route("GET", pullPath + QStringLiteral("/files"),
                      pagedAnswer(numberedFiles(75), 30, QByteArray(), 2));
        const auto files = runToEnd(client().changedFiles("ann", "tool", 7));
        const auto error = files.errorAs<APIError>();
        QVERIFY(error);
        QCOMPARE(error->kind(), APIError::Kind::HttpStatus);
        QCOMPARE(error->description(), QStringLiteral("Server error (500): boom"));
        QCOMPARE(log.lines,
                 (QStringList{QStringLiteral("GET repos/ann/tool/pulls/7/files \u2192 200"),
                              QStringLiteral("GET repos/ann/tool/pulls/7/files \u2192 500 boom")}));
    }

    void theLinksPageSizeIsAskedForAgain()
    {
        // Forgejo and Gitea write `limit` into their links when the request named one.
        serveFilesLinkedBy(75, 30, [](int page) {
            return "<?limit=30&page=" + QByteArray::number(page) + ">; rel=next";
        });
        const auto files = runToEnd(client().changedFiles("ann", "tool", 7));
        QCOMPARE(files.value->items.size(), 75);
        QCOMPARE(rawQueries(server->requests("GET", pullPath + "/files")),
                 (QStringList{QString(), QStringLiteral("page=2&limit=30"),
                              QStringLiteral("page=3&limit=30")}));
    }

    void linksNamingAnotherHostAreAskedAtTheInstance()
    {
        // A Gitea behind a proxy writes its links with its own ROOT_URL.
        StrangerHost stranger;
        QVERIFY(stranger.listen());
        const QByteArray elsewhere = "http://" + stranger.address().toLatin1() + "/git";
        serveFilesLinkedBy(75, 30, [&elsewhere](int page) {
            return '<' + elsewhere + "/api/v1/repos/ann/tool/pulls/7/files?limit=30&page=" +
                   QByteArray::number(page) + ">; rel=\"next\"";
        });
        const auto files = runToEnd(client().changedFiles("ann", "tool", 7));
        QVERIFY(!files.error);
        QCOMPARE(files.value->items.size(), 75);
        const QList<RecordedRequest> requests = server->requests("GET", pullPath + "/files");
        QCOMPARE(requests.size(), 3);
        for (const RecordedRequest &request : requests)
            QCOMPARE(request.header("Host"), server->baseUrl().authority().toLatin1());
        QTest::qWait(50);
        QCOMPARE(stranger.contacts(), 0);
    }

    void relativeLinksAreFollowed()
    {
        serveFilesLinkedBy(
            45, 30, [](int page) { return "<?page=" + QByteArray::number(page) + ">; rel=next"; });
        const auto files = runToEnd(client().changedFiles("ann", "tool", 7));
        QCOMPARE(files.value->items.size(), 45);
        QCOMPARE(rawQueries(server->requests("GET", pullPath + "/files")),
                 (QStringList{QString(), QStringLiteral("page=2")}));
    }

    void aServerThatAlwaysNamesANextPageStopsAtTheBound()
    {
        server->route("GET", pullPath + QStringLiteral("/files"),
                      [](const RecordedRequest &request, const RouteParams &) {
                          const int page = pageOf(request);
                          FakeResponse response = FakeResponse::json(
                              QJsonDocument(numberedFiles(1, page)).toJson(QJsonDocument::Compact));
                          addHeader(response, "Link",
                                    "<?page=" + QByteArray::number(page + 1) + ">; rel=\"next\"");
                          addHeader(response, "X-Total-Count", "1000000");
                          return response;
                      });
        const auto files = runToEnd(client().changedFiles("ann", "tool", 7));
        QVERIFY(!files.error);
        QCOMPARE(server->requests("GET", pullPath + "/files").size(), GiteaClient::maxListPages);
        QCOMPARE(files.value->items.size(), GiteaClient::maxListPages);
        QVERIFY(files.value->cut);
        QCOMPARE(files.value->cut->shown, GiteaClient::maxListPages);
        QCOMPARE(files.value->cut->total, 1000000);
    }

    void aLinkWithoutNextEndsTheListWhateverTheCountSays()
    {
        server->route("GET", pullPath + QStringLiteral("/files"),
                      [](const RecordedRequest &, const RouteParams &) {
                          FakeResponse response = FakeResponse::json(
                              QJsonDocument(numberedFiles(30, 1)).toJson(QJsonDocument::Compact));
                          addHeader(response, "Link", "<?page=1>; rel=\"first\"");
                          addHeader(response, "X-Total-Count", "75");
                          return response;
                      });
        const auto files = runToEnd(client().changedFiles("ann", "tool", 7));
        QCOMPARE(files.value->items.size(), 30);
        QVERIFY(!files.value->cut);
        QCOMPARE(server->requests("GET", pullPath + "/files").size(), 1);
    }

    void aNextLinkThatDoesNotMoveForwardEndsTheList()
    {
        serveFilesLinkedBy(75, 30, [](int) { return QByteArray("<?page=1>; rel=next"); });
        const auto files = runToEnd(client().changedFiles("ann", "tool", 7));
        QCOMPARE(files.value->items.size(), 30);
        QCOMPARE(server->requests("GET", pullPath + "/files").size(), 1);
    }

    void aCountOnlyListStopsAtAnEmptyPage()
    {
        // The count promises more than there is: the empty page ends it.
        server->route("GET", pullPath + QStringLiteral("/reviews"),
                      [](const RecordedRequest &request, const RouteParams &) {
                          const QByteArray body =
                              pageOf(request) == 1 ? R"([{"id":1,"state":"COMMENT"}])" : "[]";
                          FakeResponse response = FakeResponse::json(body);
                          addHeader(response, "X-Total-Count", "50");
                          return response;
                      });
        const auto reviews = runToEnd(client().reviews("ann", "tool", 7));
        QCOMPARE(reviews.value->items.size(), 1);
        QCOMPARE(server->requests("GET", pullPath + "/reviews").size(), 2);
    }

    void linkHeadersSentTwiceAreReadAsOne()
    {
        server->route(
            "GET", pullPath + QStringLiteral("/files"),
            [](const RecordedRequest &request, const RouteParams &) {
                const int page = pageOf(request);
                FakeResponse response = FakeResponse::json(
                    QJsonDocument(numberedFiles(10, page * 10)).toJson(QJsonDocument::Compact));
                if (page == 1) {
                    addHeader(response, "Link", "<?page=1>; rel=\"first\"");
                    addHeader(response, "Link", "<?page=2>; rel=\"next\"");
                }
                return response;
            });
        const auto files = runToEnd(client().changedFiles("ann", "tool", 7));
        QCOMPARE(files.value->items.size(), 20);
    }
};

QTEST_GUILESS_MAIN(TestListPaging)
#include "tst_listpaging.moc"
