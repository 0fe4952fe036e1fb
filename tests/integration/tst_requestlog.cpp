// Requests against the fake server leave their lines in the app's persisted log.

#include "fakegiteaserver.h"
#include "logstore.h"
#include "outcome.h"
#include "requestcore_p.h"

#include <QtTest>

using namespace kestrine;
using kestrine::testing::runToEnd;

class TestRequestLog : public QObject
{
    Q_OBJECT

private slots:
    void eachRequestLeavesOneStoredLineInTheAppLog()
    {
        FakeGiteaServer server;
        QVERIFY(server.listen());
        server.route("GET", QStringLiteral("/api/v1/user/repos"), FakeResponse::json("[]"));
        LogStore log;
        const GiteaClient client(server.baseUrl(), QStringLiteral("t"),
                                 GiteaClient::sharedSession(), &log);

        QVERIFY(!runToEnd(http::request(client, QStringLiteral("user/repos"), "GET")).error);
        QVERIFY(
            runToEnd(http::request(client, QStringLiteral("repos/ann/tool/pulls"), "GET")).error);

        const auto entries = log.entries();
        QCOMPARE(entries.size(), 2);
        QCOMPARE(entries[0].level, LogLevel::Info);
        QCOMPARE(entries[0].message, QStringLiteral("GET user/repos \u2192 200"));
        QCOMPARE(entries[1].level, LogLevel::Error);
        QCOMPARE(entries[1].message,
                 QStringLiteral("GET repos/ann/tool/pulls \u2192 404 not found"));

        // What a restart after a normal exit would load: the stored copy holds both lines.
        log.flush();
        const LogStore reloaded;
        QCOMPARE(reloaded.count(), 2);
        QVERIFY(reloaded.text().endsWith(
            QStringLiteral("] ERROR GET repos/ann/tool/pulls \u2192 404 not found")));
    }
};

QTEST_GUILESS_MAIN(TestRequestLog)
#include "tst_requestlog.moc"
