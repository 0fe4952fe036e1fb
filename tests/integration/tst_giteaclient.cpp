// The client against the fake Gitea server: how requests are formed, how answers map to errors,
// and the one log line each request leaves.

#include "clienttestcase.h"
#include "fakegiteaserver.h"
#include "fixtures.h"
#include "outcome.h"
#include "records.h"
#include "requestcore_p.h"

#include <QTcpServer>
#include <QTemporaryDir>
#include <QtTest>

using namespace kestrine;
using kestrine::testing::ClientTestCase;
using kestrine::testing::Outcome;
using kestrine::testing::RecordingLog;
using kestrine::testing::runToEnd;

namespace {

/// Awaits a request and reports how many log lines existed the moment the result arrived.
QCoro::Task<qsizetype> logLinesWhenResultArrives(GiteaClient client, RecordingLog *log,
                                                 QByteArray method)
{
    try {
        co_await http::request(std::move(client), QStringLiteral("user"), std::move(method));
    } catch (const APIError &) {
    }
    co_return log->lines.size();
}

} // namespace

class TestGiteaClient : public ClientTestCase
{
    Q_OBJECT

private:
    Outcome<QByteArray> send(const QString &path, const QByteArray &method,
                             std::optional<http::QueryItems> query = std::nullopt,
                             std::optional<QByteArray> body = std::nullopt)
    {
        return runToEnd(http::request(client(), path, method, std::move(query), std::move(body)));
    }

private slots:
    void init() { QVERIFY(startServer()); }

    void cleanup() { stopServer(); }

    void successReturnsBodyAndLogsInfoLine()
    {
        server->route("GET", QStringLiteral("/api/v1/user/repos"),
                      FakeResponse::json(R"([{"x":1}])"));
        const auto outcome = send(QStringLiteral("user/repos"), "GET");
        QVERIFY(!outcome.error);
        QCOMPARE(*outcome.value, QByteArray(R"([{"x":1}])"));
        QCOMPARE(log.lines.size(), 1);
        QCOMPARE(log.levels[0], LogLevel::Info);
        QCOMPARE(log.lines[0], QStringLiteral("GET user/repos \u2192 200"));
    }

    void noContentAnswerReturnsEmptyBytes()
    {
        server->route("POST", QStringLiteral("/api/v1/repos/a/b/actions/runs/4/rerun"),
                      FakeResponse::empty(204));
        const auto outcome = send(QStringLiteral("repos/a/b/actions/runs/4/rerun"), "POST");
        QVERIFY(!outcome.error);
        QVERIFY(outcome.value->isEmpty());
        QCOMPARE(log.lines[0], QStringLiteral("POST repos/a/b/actions/runs/4/rerun \u2192 204"));
    }

    void getOfListFailsWithDecodingOnEmptyNoContentBody()
    {
        server->route("GET", QStringLiteral("/api/v1/repos/a/b/pulls"), FakeResponse::empty(204));
        const auto outcome =
            runToEnd(http::get<QList<PullRequest>>(client(), QStringLiteral("repos/a/b/pulls")));
        const auto error = outcome.errorAs<APIError>();
        QVERIFY(error);
        QCOMPARE(error->kind(), APIError::Kind::Decoding);
        QVERIFY(error->description().startsWith(
            QStringLiteral("Could not parse the server response: ")));
    }

    void serverErrorWithMessageIsDescribedAndLogged()
    {
        server->route("POST", QStringLiteral("/api/v1/repos/a/b/pulls/3/merge"),
                      FakeResponse::json(R"({"message":"boom","url":"x"})", 500));
        const auto outcome = send(QStringLiteral("repos/a/b/pulls/3/merge"), "POST", std::nullopt,
                                  QByteArray(R"({"Do":"merge"})"));
        const auto error = outcome.errorAs<APIError>();
        QVERIFY(error);
        QCOMPARE(*error, APIError::httpStatus(500, QStringLiteral("boom")));
        QCOMPARE(error->description(), QStringLiteral("Server error (500): boom"));
        QCOMPARE(log.lines.size(), 1);
        QCOMPARE(log.levels[0], LogLevel::Error);
        QCOMPARE(log.lines[0], QStringLiteral("POST repos/a/b/pulls/3/merge \u2192 500 boom"));
    }

    void errorBodyWithNonStringValueHasNoServerMessage()
    {
        server->route("POST", QStringLiteral("/api/v1/repos/a/b/pulls/3/merge"),
                      FakeResponse::json(R"({"message":"x","code":5})", 422));
        const auto outcome = send(QStringLiteral("repos/a/b/pulls/3/merge"), "POST");
        const auto error = outcome.errorAs<APIError>();
        QVERIFY(error);
        QCOMPARE(*error, APIError::httpStatus(422));
        QCOMPARE(error->description(), QStringLiteral("Server error (422)."));
        QCOMPARE(log.lines[0], QStringLiteral("POST repos/a/b/pulls/3/merge \u2192 422 "));
        QVERIFY(log.lines[0].endsWith(QStringLiteral("\u2192 422 ")));
    }

    void errorBodyThatIsNotJsonHasNoServerMessage()
    {
        server->route("GET", QStringLiteral("/api/v1/user"),
                      FakeResponse::text("<html>Bad gateway</html>", 502));
        const auto error = send(QStringLiteral("user"), "GET").errorAs<APIError>();
        QVERIFY(error);
        QCOMPARE(*error, APIError::httpStatus(502));
        QCOMPARE(log.lines[0], QStringLiteral("GET user \u2192 502 "));
    }

    void forbiddenAndUnauthorizedAreUnauthorizedNeverHttpStatus_data()
    {
        QTest::addColumn<int>("status");
        QTest::newRow("401") << 401;
        QTest::newRow("403") << 403;
    }

    void forbiddenAndUnauthorizedAreUnauthorizedNeverHttpStatus()
    {
        QFETCH(int, status);
        server->route("GET", QStringLiteral("/api/v1/user"),
                      FakeResponse::json(R"({"message":"token is required"})", status));
        const auto error = send(QStringLiteral("user"), "GET").errorAs<APIError>();
        QVERIFY(error);
        QCOMPARE(error->kind(), APIError::Kind::Unauthorized);
        QCOMPARE(error->description(), QStringLiteral("Authentication failed. Check your token."));
        QCOMPARE(log.levels[0], LogLevel::Error);
        QCOMPARE(log.lines[0], QStringLiteral("GET user \u2192 %1 unauthorized").arg(status));
    }

    void notFoundIsNotFoundAndLogged()
    {
        const auto error = send(QStringLiteral("repos/ann/tool/pulls"), "GET").errorAs<APIError>();
        QVERIFY(error);
        QCOMPARE(*error, APIError::notFound());
        QCOMPARE(error->description(), QStringLiteral("Not found."));
        QCOMPARE(log.levels[0], LogLevel::Error);
        QCOMPARE(log.lines[0], QStringLiteral("GET repos/ann/tool/pulls \u2192 404 not found"));
    }

    void conflictIsMergeConflictLoggedAsWarning()
    {
        server->route("POST", QStringLiteral("/api/v1/repos/a/b/pulls/3/merge"),
                      FakeResponse::json(R"({"message":"merge conflict"})", 409));
        const auto error =
            send(QStringLiteral("repos/a/b/pulls/3/merge"), "POST").errorAs<APIError>();
        QVERIFY(error);
        QCOMPARE(*error, APIError::mergeConflict());
        QCOMPARE(log.levels[0], LogLevel::Warn);
        QCOMPARE(log.lines[0], QStringLiteral("POST repos/a/b/pulls/3/merge \u2192 409 conflict"));
    }

    void emptyQueryListAddsNoQuestionMark()
    {
        server->route("GET", QStringLiteral("/api/v1/user/repos"), FakeResponse::json("[]"));
        QVERIFY(!send(QStringLiteral("user/repos"), "GET", http::QueryItems{}).error);
        QVERIFY(!send(QStringLiteral("user/repos"), "GET", std::nullopt).error);
        QCOMPARE(server->requests().size(), 2);
        for (const auto &request : server->requests()) {
            QVERIFY(!request.hasQuery);
            QCOMPARE(request.target, QByteArray("/api/v1/user/repos"));
        }
    }

    void queryItemsKeepTheirOrder()
    {
        server->route("GET", QStringLiteral("/api/v1/user/repos"), FakeResponse::json("[]"));
        QVERIFY(!send(QStringLiteral("user/repos"), "GET",
                      http::QueryItems{{QStringLiteral("page"), QStringLiteral("2")},
                                       {QStringLiteral("limit"), QStringLiteral("50")}})
                     .error);
        QCOMPARE(server->requests().at(0).rawQuery, QByteArray("page=2&limit=50"));
    }

    void queryNamesAndValuesWithBlanksAmpersandsAndHashesArrivePercentEncoded()
    {
        server->route("GET", QStringLiteral("/api/v1/search"), FakeResponse::json("[]"));
        QVERIFY(!send(QStringLiteral("search"), "GET",
                      http::QueryItems{{QStringLiteral("a b&c#d"), QStringLiteral("x y&z#1=2+3")},
                                       {QStringLiteral("plain"), QStringLiteral("v")}})
                     .error);
        QCOMPARE(server->requests().at(0).rawQuery,
                 QByteArray("a%20b%26c%23d=x%20y%26z%231%3D2%2B3&plain=v"));
        // The log names the path only, never the query.
        QCOMPARE(log.lines[0], QStringLiteral("GET search \u2192 200"));
    }

    void instancePathIsKeptBeforeApiV1()
    {
        server->route("GET", QStringLiteral("/gitea/api/v1/repos/a/b/pulls"),
                      FakeResponse::json("[]"));
        QUrl instance = server->baseUrl();
        instance.setPath(QStringLiteral("/gitea"));
        const GiteaClient gitea(instance, QStringLiteral("t"), GiteaClient::sharedSession(), &log);
        const auto outcome =
            runToEnd(http::request(gitea, QStringLiteral("repos/a/b/pulls"), "GET"));
        QVERIFY(!outcome.error);
        QCOMPARE(server->requests().at(0).rawPath, QByteArray("/gitea/api/v1/repos/a/b/pulls"));
    }

    void pathCharactersThatAPathCannotHoldAreEscapedOnce()
    {
        server->route("DELETE", QStringLiteral("/api/v1/repos/a/b/branches/{branch*}"),
                      FakeResponse::empty(204));
        QVERIFY(!send(QStringLiteral("repos/a/b/branches/feature/new ui"), "DELETE").error);
        QVERIFY(!send(QStringLiteral("repos/a/b/branches/feature/new%20ui"), "DELETE").error);
        QCOMPARE(server->requests().at(0).rawPath,
                 QByteArray("/api/v1/repos/a/b/branches/feature/new%20ui"));
        QCOMPARE(server->requests().at(1).rawPath,
                 QByteArray("/api/v1/repos/a/b/branches/feature/new%20ui"));
    }

    void requestCarriesTokenAcceptAndUserAgentButNoContentTypeWithoutBody()
    {
        server->route("GET", QStringLiteral("/api/v1/user"), FakeResponse::json("{}"));
        QVERIFY(!send(QStringLiteral("user"), "GET").error);
        const RecordedRequest request = server->requests().at(0);
        QCOMPARE(request.method, QByteArray("GET"));
        QCOMPARE(request.header("Authorization"), QByteArray("token s3cret"));
        QCOMPARE(request.header("Accept"), QByteArray("application/json"));
        QCOMPARE(request.header("User-Agent"), QByteArray("Kestrine/" KESTRINE_VERSION));
        QVERIFY(!request.hasHeader("Content-Type"));
        QVERIFY(request.body.isEmpty());
    }

    void bodyIsSentAsGivenWithJsonContentType()
    {
        server->route("PATCH", QStringLiteral("/api/v1/repos/a/b/pulls/3"),
                      FakeResponse::json("{}"));
        const QByteArray body = R"({"state":"closed"})";
        QVERIFY(!send(QStringLiteral("repos/a/b/pulls/3"), "PATCH", std::nullopt, body).error);
        const RecordedRequest request = server->requests().at(0);
        QCOMPARE(request.method, QByteArray("PATCH"));
        QCOMPARE(request.header("Content-Type"), QByteArray("application/json"));
        QCOMPARE(request.body, body);
        QCOMPARE(log.lines[0], QStringLiteral("PATCH repos/a/b/pulls/3 \u2192 200"));
    }

    void emptyTokenSendsTokenWithTrailingBlank()
    {
        server->route("GET", QStringLiteral("/api/v1/user"), FakeResponse::json("{}"));
        const auto outcome =
            runToEnd(http::request(client(QString()), QStringLiteral("user"), "GET"));
        QVERIFY(!outcome.error);
        QCOMPARE(server->requests().at(0).header("Authorization"), QByteArray("token "));
    }

    void transportFailureReachesCallerUnchangedAndIsNotLogged()
    {
        QTcpServer probe;
        QVERIFY(probe.listen(QHostAddress::LocalHost, 0));
        QUrl closed = server->baseUrl();
        closed.setPort(probe.serverPort());
        probe.close();
        const GiteaClient gitea(closed, QStringLiteral("t"), GiteaClient::sharedSession(), &log);
        const auto outcome = runToEnd(http::request(gitea, QStringLiteral("user"), "GET"));
        const auto error = outcome.errorAs<TransportError>();
        QVERIFY(error);
        QCOMPARE(error->code(), QNetworkReply::ConnectionRefusedError);
        QVERIFY(!error->isCancellation());
        QVERIFY(!outcome.errorAs<APIError>());
        QVERIFY(log.lines.isEmpty());
    }

    void stalledServerTimesOutAsTransportFailureNotCancellation()
    {
        FakeResponse slow = FakeResponse::json("{}");
        slow.delay = std::chrono::milliseconds(5000);
        server->route("GET", QStringLiteral("/api/v1/user"), slow);
        const auto outcome =
            runToEnd(http::request(client(QStringLiteral("t"), std::chrono::milliseconds(300)),
                                   QStringLiteral("user"), "GET"));
        const auto error = outcome.errorAs<TransportError>();
        QVERIFY(error);
        QCOMPARE(error->code(), QNetworkReply::TimeoutError);
        QVERIFY(!error->isCancellation());
        QVERIFY(log.lines.isEmpty());
    }

    void destroyingTheScopeCancelsInFlightRequestWithoutLogging()
    {
        FakeResponse slow = FakeResponse::json("{}");
        slow.delay = std::chrono::milliseconds(5000);
        server->route("GET", QStringLiteral("/api/v1/user"), slow);
        auto *scope = new QObject(this);
        QTimer::singleShot(100, scope, &QObject::deleteLater);
        const auto outcome =
            runToEnd(http::request(client().cancelledWith(scope), QStringLiteral("user"), "GET"));
        const auto error = outcome.errorAs<TransportError>();
        QVERIFY(error);
        QVERIFY(error->isCancellation());
        QVERIFY(log.lines.isEmpty());
    }

    void requestWhoseScopeIsAlreadyGoneIsCancelledWithoutSending()
    {
        server->route("GET", QStringLiteral("/api/v1/user"), FakeResponse::json("{}"));
        auto scope = std::make_unique<QObject>();
        const GiteaClient scoped = client().cancelledWith(scope.get());
        scope.reset();
        const auto error = runToEnd(http::request(scoped, QStringLiteral("user"), "GET"))
                               .errorAs<TransportError>();
        QVERIFY(error);
        QVERIFY(error->isCancellation());
        QVERIFY(server->requests().isEmpty());
        QVERIFY(log.lines.isEmpty());
    }

    void aLogThatWentAwayBeforeTheAnswerIsNotWrittenTo()
    {
        // The app's log store is a QObject; the shared session, and the answers still on their
        // way, outlive it when the app shuts down.
        class ObjectLog : public QObject, public LogSink
        {
        public:
            explicit ObjectLog(QStringList *written)
                : m_written(written)
            {}
            void log(LogLevel, const QString &message) override { m_written->append(message); }

        private:
            QStringList *m_written;
        };
        FakeResponse slow = FakeResponse::json("{}");
        slow.delay = std::chrono::milliseconds(300);
        server->route("GET", QStringLiteral("/api/v1/user"), slow);
        QStringList written;
        auto *gone = new ObjectLog(&written);
        const GiteaClient withGoneLog(server->baseUrl(), QStringLiteral("s3cret"),
                                      GiteaClient::sharedSession(), gone);
        QCOMPARE(withGoneLog.log(), gone);
        QTimer::singleShot(100, gone, &QObject::deleteLater);

        const auto outcome = runToEnd(http::request(withGoneLog, QStringLiteral("user"), "GET"));

        QVERIFY(!outcome.error);
        QCOMPARE(withGoneLog.log(), nullptr);
        QVERIFY2(written.isEmpty(), qPrintable(written.join(u'\n')));
    }

    void answerWithoutHttpStatusIsInvalidResponse()
    {
        // A file URL answers without any HTTP status: the one non-HTTP answer the client can meet.
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("api/v1")));
        QFile file(dir.filePath(QStringLiteral("api/v1/user")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("{}");
        file.close();
        const GiteaClient gitea(QUrl::fromLocalFile(dir.path()), QStringLiteral("t"),
                                GiteaClient::sharedSession(), &log);
        const auto outcome = runToEnd(http::request(gitea, QStringLiteral("user"), "GET"));
        const auto error = outcome.errorAs<APIError>();
        QVERIFY(error);
        QCOMPARE(*error, APIError::invalidResponse());
        QCOMPARE(log.lines.size(), 1);
        QCOMPARE(log.levels[0], LogLevel::Error);
        QCOMPARE(log.lines[0], QStringLiteral("GET user \u2192 invalid response"));
    }

    void logLineIsWrittenBeforeTheResultReachesTheCaller_data()
    {
        QTest::addColumn<int>("status");
        QTest::newRow("success") << 200;
        QTest::newRow("failure") << 500;
    }

    void logLineIsWrittenBeforeTheResultReachesTheCaller()
    {
        QFETCH(int, status);
        server->route("GET", QStringLiteral("/api/v1/user"), FakeResponse::json("{}", status));
        const qsizetype linesSeen =
            QCoro::waitFor(logLinesWhenResultArrives(client(), &log, "GET"));
        QCOMPARE(linesSeen, 1);
    }

    void getDecodesWithTheSharedRulesAndLogsOnlyTheRequestLine()
    {
        server->route("GET", QStringLiteral("/api/v1/repos/ann/tool/pulls"),
                      FakeResponse::json(fixtures::pullRequestList(3)));
        const auto outcome = runToEnd(
            http::get<QList<PullRequest>>(client(), QStringLiteral("repos/ann/tool/pulls")));
        QVERIFY(!outcome.error);
        QCOMPARE(outcome.value->size(), 3);
        QCOMPARE(outcome.value->at(2).number, 3);
        QCOMPARE(log.lines.size(), 1);
    }

    void getFailsWithDecodingThatCarriesTheDateText()
    {
        server->route(
            "GET", QStringLiteral("/api/v1/repos/a/b/pulls/1"),
            FakeResponse::json(
                R"({"id":1,"number":1,"title":"t","state":"open","created_at":"yesterday"})"));
        const auto outcome =
            runToEnd(http::get<PullRequest>(client(), QStringLiteral("repos/a/b/pulls/1")));
        const auto error = outcome.errorAs<APIError>();
        QVERIFY(error);
        QCOMPARE(error->kind(), APIError::Kind::Decoding);
        QVERIFY2(
            error->description().contains(QStringLiteral("Cannot decode date string yesterday")),
            qPrintable(error->description()));
        QCOMPARE(log.lines.size(), 1);
        QCOMPARE(log.levels[0], LogLevel::Info);
    }

    void concurrentRequestsEachLeaveOneLine()
    {
        server->route("GET", QStringLiteral("/api/v1/repos/{owner}/{repo}/pulls"),
                      FakeResponse::json("[]"));
        std::vector<QCoro::Task<QByteArray>> tasks;
        for (int i = 0; i < 8; ++i)
            tasks.push_back(
                http::request(client(), QStringLiteral("repos/o/r%1/pulls").arg(i), "GET"));
        for (auto &task : tasks)
            QVERIFY(!runToEnd(std::move(task)).error);
        QCOMPARE(server->requests().size(), 8);
        QCOMPARE(log.lines.size(), 8);
    }
};

QTEST_GUILESS_MAIN(TestGiteaClient)
#include "tst_giteaclient.moc"
