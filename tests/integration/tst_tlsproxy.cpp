// The client reaches the Gitea simulation over HTTPS through a real nginx (TlsProxy), the proxy's
// throwaway authority trusted in this process alone: over HTTP/2 when nginx offers it and over
// HTTP/1.1 when it does not, requests one after another sharing one connection, answers arriving
// with their paging headers. Without that trust the handshake fails before any request is sent.

#include "fakegiteaserver.h"
#include "giteasimulation.h"
#include "outcome.h"
#include "recordinglog.h"
#include "requestcore_p.h"
#include "tlsproxy.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkReply>
#include <QSslConfiguration>
#include <QtTest>
#include <memory>

using namespace kestrine;
using kestrine::testing::failureOf;
using kestrine::testing::Outcome;
using kestrine::testing::RecordingLog;
using kestrine::testing::runToEnd;
using kestrine::testing::TlsProxy;
using kestrine::testing::TrustedInProcess;

namespace {

const QString token = QStringLiteral("5e2b7d9f1a3c4e6a8b0d2f4a6c8e0b1d3f5a7c9e");
// More than the 50 a page Gitea hands out, so that repos() follows the "Link" header once.
constexpr int repositoryCount = 60;

QByteArray seed()
{
    QJsonArray repositories;
    for (int r = 1; r <= repositoryCount; ++r)
        repositories.append(
            QJsonObject{{"owner", "ann"}, {"name", QStringLiteral("repo-%1").arg(r)}});
    return QJsonDocument(QJsonObject{{"users", QJsonArray{QJsonObject{{"login", "ann"}}}},
                                     {"tokens", QJsonObject{{token, "ann"}}},
                                     {"repositories", repositories}})
        .toJson(QJsonDocument::Compact);
}

bool trustedByDefault(const QSslCertificate &certificate)
{
    return QSslConfiguration::defaultConfiguration().caCertificates().contains(certificate);
}

} // namespace

class TestTlsProxy : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<FakeGiteaServer> server;
    std::unique_ptr<GiteaSimulation> simulation;
    RecordingLog log;

    /// The client as the app builds it, with the app's shared session, at `instance`.
    GiteaClient clientAt(const QUrl &instance)
    {
        return GiteaClient(instance, token, GiteaClient::sharedSession(), &log,
                           std::chrono::seconds(20));
    }

private slots:
    void init()
    {
        server = std::make_unique<FakeGiteaServer>();
        simulation = std::make_unique<GiteaSimulation>(seed());
        QVERIFY2(simulation->isValid(), qPrintable(simulation->loadError()));
        simulation->install(server.get());
        QVERIFY(server->listen());
        log.lines.clear();
    }

    void cleanup()
    {
        simulation.reset();
        server.reset();
    }

    void cleanupTestCase()
    {
        // Qt 6.4 closes the TLS connections a session still holds from its network thread as
        // that thread ends, and looks up the TLS backend on the way, which fails with a warning
        // once the application object is gone: the session goes first.
        delete GiteaClient::sharedSession();
    }

    void requestsOneAfterAnotherShareOneConnection_data()
    {
        QTest::addColumn<TlsProxy::Http2>("http2");
        QTest::addColumn<QString>("protocol");
        QTest::newRow("HTTP/2 offered") << TlsProxy::Http2::On << QStringLiteral("HTTP/2.0");
        QTest::newRow("HTTP/1.1 only") << TlsProxy::Http2::Off << QStringLiteral("HTTP/1.1");
    }

    void requestsOneAfterAnotherShareOneConnection()
    {
        QFETCH(TlsProxy::Http2, http2);
        QFETCH(QString, protocol);
        TlsProxy proxy(server->baseUrl(), http2);
        QVERIFY2(proxy.start(), qPrintable(proxy.failure()));
        QCOMPARE(proxy.url().scheme(), QStringLiteral("https"));
        TrustedInProcess trusted(proxy.caCertificate());

        const auto user = runToEnd(clientAt(proxy.url()).currentUser());
        QVERIFY2(user.value, failureOf(user).constData());
        QCOMPARE(user.value->login, QStringLiteral("ann"));
        const auto repositories = runToEnd(clientAt(proxy.url()).repos());
        QVERIFY2(repositories.value, failureOf(repositories).constData());
        QCOMPARE(repositories.value->size(), repositoryCount);

        // Three requests (the user, two pages of repositories), each logged by nginx and passed
        // on with the target the client sent and the Host it named.
        const QList<TlsProxy::LoggedRequest> logged = proxy.requests();
        const QList<RecordedRequest> arrived = server->requests();
        QCOMPARE(logged.size(), 3);
        QCOMPARE(arrived.size(), 3);
        const QByteArray host = QStringLiteral("127.0.0.1:%1").arg(proxy.url().port()).toUtf8();
        for (qsizetype i = 0; i < logged.size(); ++i) {
            QCOMPARE(logged[i].status, 200);
            QCOMPARE(logged[i].method, QStringLiteral("GET"));
            QCOMPARE(logged[i].target.toUtf8(), arrived[i].target);
            QCOMPARE(arrived[i].header("Host"), host);
        }
        QCOMPARE(proxy.protocols(), QSet<QString>{protocol});
        QCOMPARE(proxy.clientConnections(), 1);
        // No connection was opened beside the one that carried the requests.
        QCOMPARE(proxy.acceptedConnections(), 1);
        // nginx kept its connection to the server alive between the requests.
        QCOMPARE(server->connectionCount(), 1);
    }

    void answersKeepTheirPagingHeaders()
    {
        TlsProxy proxy(server->baseUrl(), TlsProxy::Http2::On);
        QVERIFY2(proxy.start(), qPrintable(proxy.failure()));
        TrustedInProcess trusted(proxy.caCertificate());
        const http::QueryItems firstPage = {{QStringLiteral("limit"), QStringLiteral("50")}};

        const auto direct = runToEnd(http::exchange(
            clientAt(server->baseUrl()), QStringLiteral("user/repos"), "GET", firstPage));
        const auto proxied = runToEnd(
            http::exchange(clientAt(proxy.url()), QStringLiteral("user/repos"), "GET", firstPage));
        QVERIFY2(direct.value, failureOf(direct).constData());
        QVERIFY2(proxied.value, failureOf(proxied).constData());
        QCOMPARE(proxy.protocols(), QSet<QString>{QStringLiteral("HTTP/2.0")});

        QVERIFY(direct.value->header("Link").contains("rel=\"next\""));
        QCOMPARE(proxied.value->header("Link"), direct.value->header("Link"));
        QCOMPARE(direct.value->header("X-Total-Count"), QByteArray::number(repositoryCount));
        QCOMPARE(proxied.value->header("X-Total-Count"), direct.value->header("X-Total-Count"));
        QCOMPARE(proxied.value->body, direct.value->body);
    }

    void trustEndsWithItsScope()
    {
        TlsProxy proxy(server->baseUrl());
        QVERIFY2(proxy.start(), qPrintable(proxy.failure()));
        QVERIFY(!trustedByDefault(proxy.caCertificate()));
        {
            TrustedInProcess trusted(proxy.caCertificate());
            QVERIFY(trustedByDefault(proxy.caCertificate()));
        }
        QVERIFY(!trustedByDefault(proxy.caCertificate()));
    }

    // The authority is trusted nowhere but where a test says so: the process's configuration
    // does not hold it, and the client stops at the handshake, before the token leaves, with
    // Qt's reason. Qt looks for issuers in the system's store too, so that holds it neither.
    void anAuthorityNobodyTrustsIsRefusedInTheHandshake()
    {
        TlsProxy proxy(server->baseUrl(), TlsProxy::Http2::On);
        QVERIFY2(proxy.start(), qPrintable(proxy.failure()));
        QVERIFY(!trustedByDefault(proxy.caCertificate()));

        const auto user = runToEnd(clientAt(proxy.url()).currentUser());
        const auto error = user.errorAs<TransportError>();
        QVERIFY2(error, failureOf(user).constData());
        QCOMPARE(error->code(), QNetworkReply::SslHandshakeFailedError);
        QVERIFY2(error->description().contains(QStringLiteral("issuer"), Qt::CaseInsensitive),
                 qPrintable(error->description()));

        // The client reached nginx, on one connection, and got no further.
        QCOMPARE(proxy.acceptedConnections(), 1);
        QVERIFY(proxy.requests().isEmpty());
        QVERIFY(server->requests().isEmpty());
        QVERIFY(log.lines.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestTlsProxy)
#include "tst_tlsproxy.moc"
