// The session the client's requests go out through: a burst to one instance spreads over a few
// network access managers, bounded, while requests one after another keep one connection, and
// every manager sends the cookies any of them received.

#include "fakegiteaserver.h"
#include "httpsession.h"
#include "tlsproxy.h"

#include <QNetworkCookieJar>
#include <QNetworkReply>
#include <QtTest>
#include <memory>
#include <vector>

using namespace kestrine;
using kestrine::testing::TlsProxy;
using kestrine::testing::TrustedInProcess;

namespace {

using ReplyPointer = std::unique_ptr<QNetworkReply>;

QNetworkRequest requestAt(const QUrl &origin, int index)
{
    return QNetworkRequest(QUrl(origin.toString() + QStringLiteral("/api/v1/item/%1").arg(index)));
}

QNetworkRequest requestFor(const FakeGiteaServer &server, int index)
{
    return requestAt(server.baseUrl(), index);
}

bool allFinished(const std::vector<ReplyPointer> &replies)
{
    return std::all_of(replies.begin(), replies.end(),
                       [](const ReplyPointer &reply) { return reply->isFinished(); });
}

} // namespace

class TestHttpSession : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<FakeGiteaServer> server;

    std::vector<ReplyPointer> sendAtOnce(HttpSession &session, int count)
    {
        std::vector<ReplyPointer> replies;
        for (int i = 0; i < count; ++i)
            replies.emplace_back(session.send(requestFor(*server, i), "GET"));
        return replies;
    }

private slots:
    void init()
    {
        server = std::make_unique<FakeGiteaServer>();
        server->route("GET", QStringLiteral("/api/v1/item/{n}"), FakeResponse::json("{}"));
        QVERIFY(server->listen());
    }

    void cleanup() { server.reset(); }

    void aBurstToOneInstanceOpensThirtyConnectionsAndNoMore()
    {
        // Answers held back long enough that every request is in flight before the first ends.
        server->setAnswerDelay(std::chrono::milliseconds(300));
        HttpSession session;
        QCOMPARE(session.maxConnectionsPerOrigin(), 30);

        const std::vector<ReplyPointer> replies = sendAtOnce(session, 100);
        QCOMPARE(session.requestsInFlight(), 100);
        QTRY_VERIFY_WITH_TIMEOUT(allFinished(replies), 20000);

        for (const ReplyPointer &reply : replies)
            QCOMPARE(reply->error(), QNetworkReply::NoError);
        QCOMPARE(server->requests().size(), 100);
        QCOMPARE(server->connectionCount(), 30);
        QCOMPARE(session.requestsInFlight(), 0);
    }

    void aSmallerBurstFillsTheFirstManagersConnectionsFirst()
    {
        server->setAnswerDelay(std::chrono::milliseconds(300));
        HttpSession session;
        const std::vector<ReplyPointer> replies = sendAtOnce(session, 8);
        QTRY_VERIFY_WITH_TIMEOUT(allFinished(replies), 20000);
        // Six on the first manager, two on the second: one connection per request.
        QCOMPARE(server->connectionCount(), 8);
    }

    void requestsOneAfterAnotherKeepOneConnection()
    {
        HttpSession session;
        for (int i = 0; i < 12; ++i) {
            const ReplyPointer reply(session.send(requestFor(*server, i), "GET"));
            QTRY_VERIFY_WITH_TIMEOUT(reply->isFinished(), 10000);
            QCOMPARE(reply->error(), QNetworkReply::NoError);
        }
        QCOMPARE(server->connectionCount(), 1);
        QVERIFY(!session.speaksHttp2(server->baseUrl()));
    }

    void everyManagerSendsTheCookiesAnyOfThemReceived()
    {
        server->route("GET", QStringLiteral("/api/v1/login"),
                      FakeResponse{{200, "{}", {{"Set-Cookie", "i_like_gitea=abc123; Path=/"}}}});
        HttpSession session;
        const ReplyPointer login(session.send(
            QNetworkRequest(QUrl(server->baseUrl().toString() + "/api/v1/login")), "GET"));
        QTRY_VERIFY_WITH_TIMEOUT(login->isFinished(), 10000);
        QCOMPARE(session.cookieJar()->cookiesForUrl(server->baseUrl()).size(), 1);

        // Enough at once that the later ones go out through the other managers.
        server->setAnswerDelay(std::chrono::milliseconds(200));
        const std::vector<ReplyPointer> replies = sendAtOnce(session, 20);
        QTRY_VERIFY_WITH_TIMEOUT(allFinished(replies), 20000);
        QVERIFY(server->connectionCount() > HttpSession::connectionsPerManager);
        const QList<RecordedRequest> items = server->requests().mid(1);
        QCOMPARE(items.size(), 20);
        for (const RecordedRequest &request : items)
            QCOMPARE(request.header("Cookie"), QByteArray("i_like_gitea=abc123"));
    }

    void aReplyDeletedBeforeItEndsIsNoLongerCountedInFlight()
    {
        server->setAnswerDelay(std::chrono::milliseconds(500));
        HttpSession session;
        std::vector<ReplyPointer> replies = sendAtOnce(session, 7);
        QCOMPARE(session.requestsInFlight(), 7);
        replies.clear();
        QCOMPARE(session.requestsInFlight(), 0);

        // The managers are free again: a new burst starts on the first one's connections.
        const std::vector<ReplyPointer> again = sendAtOnce(session, 3);
        QCOMPARE(session.requestsInFlight(), 3);
        QTRY_VERIFY_WITH_TIMEOUT(allFinished(again), 20000);
        QCOMPARE(session.requestsInFlight(), 0);
    }

    void overHttpsABurstAfterTheFirstAnswerUsesWhatTheProtocolNeeds_data()
    {
        QTest::addColumn<bool>("http2");
        QTest::addColumn<QString>("protocol");
        QTest::addColumn<int>("connections");
        // HTTP/2 carries the burst side by side on the connection the first answer came over.
        QTest::newRow("HTTP/2") << true << QStringLiteral("HTTP/2.0") << 1;
        // Without it, the burst spreads over every manager as over plain HTTP.
        QTest::newRow("HTTP/1.1") << false << QStringLiteral("HTTP/1.1")
                                  << HttpSession::defaultManagerCount *
                                         HttpSession::connectionsPerManager;
    }

    void overHttpsABurstAfterTheFirstAnswerUsesWhatTheProtocolNeeds()
    {
        QFETCH(bool, http2);
        QFETCH(QString, protocol);
        QFETCH(int, connections);
        TlsProxy proxy(server->baseUrl(), http2 ? TlsProxy::Http2::On : TlsProxy::Http2::Off);
        QVERIFY2(proxy.start(), qPrintable(proxy.failure()));
        TrustedInProcess trusted(proxy.caCertificate());
        server->setAnswerDelay(std::chrono::milliseconds(200));
        HttpSession session;

        const ReplyPointer first(session.send(requestAt(proxy.url(), 0), "GET"));
        QTRY_VERIFY_WITH_TIMEOUT(first->isFinished(), 10000);
        QCOMPARE(first->error(), QNetworkReply::NoError);
        QCOMPARE(session.speaksHttp2(proxy.url()), http2);

        std::vector<ReplyPointer> replies;
        for (int i = 1; i <= 60; ++i)
            replies.emplace_back(session.send(requestAt(proxy.url(), i), "GET"));
        QTRY_VERIFY_WITH_TIMEOUT(allFinished(replies), 20000);
        for (const ReplyPointer &reply : replies)
            QCOMPARE(reply->error(), QNetworkReply::NoError);

        QCOMPARE(proxy.requests().size(), 61);
        QCOMPARE(proxy.protocols(), QSet<QString>{protocol});
        QCOMPARE(proxy.clientConnections(), connections);
        QCOMPARE(proxy.acceptedConnections(), connections);
    }

    void aBodyAndAnotherMethodGoOutAsGiven()
    {
        server->route("PATCH", QStringLiteral("/api/v1/item/{n}"), FakeResponse::json("{}"));
        HttpSession session;
        QNetworkRequest request = requestFor(*server, 1);
        request.setHeader(QNetworkRequest::ContentTypeHeader, "application/json");
        const ReplyPointer reply(
            session.send(request, "PATCH", QByteArray("{\"state\":\"closed\"}")));
        QTRY_VERIFY_WITH_TIMEOUT(reply->isFinished(), 10000);
        QCOMPARE(reply->error(), QNetworkReply::NoError);
        QCOMPARE(server->requests().size(), 1);
        QCOMPARE(server->requests().first().method, QByteArray("PATCH"));
        QCOMPARE(server->requests().first().body, QByteArray("{\"state\":\"closed\"}"));
    }
};

QTEST_GUILESS_MAIN(TestHttpSession)
#include "tst_httpsession.moc"
