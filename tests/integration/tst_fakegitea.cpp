// The fake Gitea server itself: that it records what arrives byte for byte and answers as scripted.

#include "fakegiteaserver.h"

#include <QCoroNetworkReply>
#include <QElapsedTimer>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTcpSocket>
#include <QtTest>

using namespace kestrine;

namespace {

struct Answer
{
    int status = 0;
    QByteArray body;
    QByteArray contentType;
};

Answer fetch(QNetworkAccessManager &nam, const QUrl &url, const QByteArray &method = "GET",
             const QByteArray &body = {})
{
    QNetworkRequest request(url);
    if (!body.isEmpty())
        request.setHeader(QNetworkRequest::ContentTypeHeader,
                          QByteArrayLiteral("application/json"));
    std::unique_ptr<QNetworkReply> reply(body.isEmpty()
                                             ? nam.sendCustomRequest(request, method)
                                             : nam.sendCustomRequest(request, method, body));
    QCoro::waitFor(qCoro(reply.get()).waitForFinished());
    return {reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), reply->readAll(),
            reply->header(QNetworkRequest::ContentTypeHeader).toByteArray()};
}

} // namespace

class TestFakeGitea : public QObject
{
    Q_OBJECT

private:
    FakeGiteaServer *server = nullptr;
    QNetworkAccessManager nam;

    QUrl at(const QString &pathAndQuery) const
    {
        return QUrl(server->baseUrl().toString() + pathAndQuery, QUrl::TolerantMode);
    }

private slots:
    void init()
    {
        server = new FakeGiteaServer(this);
        QVERIFY(server->listen());
        QVERIFY(server->port() != 0);
        QCOMPARE(server->baseUrl().host(), QStringLiteral("127.0.0.1"));
    }

    void cleanup()
    {
        delete server;
        server = nullptr;
    }

    void answersScriptedRouteWithStatusBodyAndJsonContentType()
    {
        server->route("GET", QStringLiteral("/api/v1/user"),
                      FakeResponse::json(R"({"login":"ann"})", 201));
        const Answer answer = fetch(nam, at(QStringLiteral("/api/v1/user")));
        QCOMPARE(answer.status, 201);
        QCOMPARE(answer.body, QByteArray(R"({"login":"ann"})"));
        QCOMPARE(answer.contentType, QByteArray("application/json;charset=utf-8"));
    }

    void extraHeadersAreSent()
    {
        FakeResponse response = FakeResponse::json("[]");
        response.headers.append(std::pair<QByteArray, QByteArray>("X-Total-Count", "600"));
        server->route("GET", QStringLiteral("/api/v1/user/repos"), response);
        QNetworkRequest request(at(QStringLiteral("/api/v1/user/repos")));
        std::unique_ptr<QNetworkReply> reply(nam.get(request));
        QCoro::waitFor(qCoro(reply.get()).waitForFinished());
        QCOMPARE(reply->rawHeader("X-Total-Count"), QByteArray("600"));
    }

    void recordsTargetQueryHeadersAndBodyAsSent()
    {
        server->route("POST", QStringLiteral("/api/v1/repos/{owner}/{repo}/pulls/{number}/merge"),
                      FakeResponse::empty(200));
        fetch(nam, at(QStringLiteral("/api/v1/repos/a/b/pulls/3/merge?x=a%20b&y=%26")), "POST",
              R"({"Do":"merge"})");
        QCOMPARE(server->requests().size(), 1);
        const RecordedRequest request = server->requests().first();
        QCOMPARE(request.method, QByteArray("POST"));
        QCOMPARE(request.target, QByteArray("/api/v1/repos/a/b/pulls/3/merge?x=a%20b&y=%26"));
        QCOMPARE(request.rawPath, QByteArray("/api/v1/repos/a/b/pulls/3/merge"));
        QCOMPARE(request.rawQuery, QByteArray("x=a%20b&y=%26"));
        QVERIFY(request.hasQuery);
        QCOMPARE(request.header("content-type"), QByteArray("application/json"));
        QCOMPARE(request.body, QByteArray(R"({"Do":"merge"})"));
    }

    void pathIsRecordedStillEncodedAndMatchedDecoded()
    {
        server->route("DELETE", QStringLiteral("/api/v1/repos/{owner}/{repo}/branches/{branch*}"),
                      [](const RecordedRequest &, const RouteParams &params) {
                          return FakeResponse::json(
                              params.value(QStringLiteral("branch")).toUtf8());
                      });
        const Answer answer =
            fetch(nam, at(QStringLiteral("/api/v1/repos/a/b/branches/feature/new%20ui")), "DELETE");
        QCOMPARE(answer.body, QByteArray("feature/new ui"));
        QCOMPARE(server->requests().first().rawPath,
                 QByteArray("/api/v1/repos/a/b/branches/feature/new%20ui"));
        QCOMPARE(server->requests().first().path(),
                 QStringLiteral("/api/v1/repos/a/b/branches/feature/new ui"));
    }

    void handlerSeesPlaceholdersAndTheRequest()
    {
        server->route("GET", QStringLiteral("/api/v1/repos/{owner}/{repo}/pulls"),
                      [](const RecordedRequest &request, const RouteParams &params) {
                          return FakeResponse::json(params.value(QStringLiteral("owner")).toUtf8() +
                                                    '|' +
                                                    params.value(QStringLiteral("repo")).toUtf8() +
                                                    '|' + request.rawQuery);
                      });
        QCOMPARE(fetch(nam, at(QStringLiteral("/api/v1/repos/ann/tool/pulls?state=open"))).body,
                 QByteArray("ann|tool|state=open"));
    }

    void laterRouteOverridesEarlierOne()
    {
        server->route("GET", QStringLiteral("/api/v1/user"), FakeResponse::json("1"));
        server->route("GET", QStringLiteral("/api/v1/user"), FakeResponse::json("2"));
        QCOMPARE(fetch(nam, at(QStringLiteral("/api/v1/user"))).body, QByteArray("2"));
        server->clearRoutes();
        QCOMPARE(fetch(nam, at(QStringLiteral("/api/v1/user"))).status, 404);
    }

    void unknownPathIs404AndUnknownMethodIs405()
    {
        server->route("GET", QStringLiteral("/api/v1/user"), FakeResponse::json("{}"));
        QCOMPARE(fetch(nam, at(QStringLiteral("/api/v1/nothing"))).status, 404);
        QCOMPARE(fetch(nam, at(QStringLiteral("/api/v1/user")), "DELETE").status, 405);
        QCOMPARE(server->requests().size(), 2);
    }

    void delayedAnswerArrivesAfterTheDelay()
    {
        FakeResponse slow = FakeResponse::json("{}");
        slow.delay = std::chrono::milliseconds(300);
        server->route("GET", QStringLiteral("/api/v1/user"), slow);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(fetch(nam, at(QStringLiteral("/api/v1/user"))).status, 200);
        QVERIFY(timer.elapsed() >= 250);
    }

    void requestsOnOneKeptAliveConnectionAreEachRecorded()
    {
        server->route("GET", QStringLiteral("/api/v1/n/{i}"), FakeResponse::json("{}"));
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, server->port());
        QVERIFY(socket.waitForConnected(5000));
        socket.write("GET /api/v1/n/1 HTTP/1.1\r\nHost: x\r\nAuthorization: token \r\n\r\n");
        QTRY_COMPARE(server->requests().size(), 1);
        socket.write("POST /api/v1/n/2?q HTTP/1.1\r\nHost: x\r\nContent-Length: 4\r\n\r\nbody");
        QTRY_COMPARE(server->requests().size(), 2);
        QCOMPARE(server->requests().at(0).header("Authorization"), QByteArray("token "));
        QCOMPARE(server->requests().at(1).body, QByteArray("body"));
        QCOMPARE(server->requests().at(1).rawQuery, QByteArray("q"));
        QCOMPARE(server->requests(QByteArrayView("POST"), QStringLiteral("/api/v1/n/2")).size(), 1);
        QCOMPARE(server->requests(QByteArrayView("GET"), QStringLiteral("/api/v1/n/2")).size(), 0);
    }

    void serializedAnswerHasNoBodyForNoContent()
    {
        const QByteArray wire = serializeResponse(FakeResponse::empty(204));
        QCOMPARE(wire, QByteArray("HTTP/1.1 204 No Content\r\n\r\n"));
    }
};

QTEST_GUILESS_MAIN(TestFakeGitea)
#include "tst_fakegitea.moc"
