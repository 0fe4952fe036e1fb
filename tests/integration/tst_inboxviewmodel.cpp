// The inbox loader against the fake Gitea server: selection, concurrency, ordering, failures,
// the cache and the notification pass it starts.

#include "busypool.h"
#include "fakegiteaserver.h"
#include "inbox.h"
#include "inboxfixture.h"
#include "outcome.h"

#include <QCoroTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QtTest>

using namespace kestrine;
using kestrine::testing::BusyPool;
using kestrine::testing::repoJson;
using kestrine::testing::runToEnd;
using kestrine::testing::TestStores;

namespace {

QJsonObject pullJson(qint64 number, const QString &title, const QString &updatedAt)
{
    QJsonObject pull{{QStringLiteral("id"), 1000 + number},
                     {QStringLiteral("number"), number},
                     {QStringLiteral("title"), title},
                     {QStringLiteral("state"), QStringLiteral("open")}};
    if (!updatedAt.isEmpty())
        pull.insert(QStringLiteral("updated_at"), updatedAt);
    return pull;
}

QByteArray json(const QJsonArray &array)
{
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

QStringList titles(const QList<PRRow> &rows)
{
    QStringList list;
    for (const PRRow &row : rows)
        list.append(row.pr.title);
    return list;
}

/// The bytes the cache file holds for `rows`, as InboxCache writes them.
/// The cache's document for `rows`, in Qt's compact form (keys sorted).
QByteArray cacheBytes(const QList<PRRow> &rows)
{
    return QJsonDocument(encodeJson(rows).toArray()).toJson(QJsonDocument::Compact);
}

/// A written cache in the same form, whatever order the writer gave its keys.
QByteArray canonical(const QByteArray &json)
{
    return QJsonDocument::fromJson(json).toJson(QJsonDocument::Compact);
}

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList logMessagesSince(const LogStore &log, qsizetype first)
{
    QStringList messages;
    const auto entries = log.entries();
    for (qsizetype i = first; i < entries.size(); ++i)
        messages.append(logLevelLabel(entries[i].level) + u' ' + entries[i].message);
    return messages;
}

/// Counts the passes it is asked for; each takes a while, so a caller that waited would show.
class SlowPass : public NotificationPass
{
public:
    QCoro::Task<int> poll() override
    {
        ++started;
        co_await QCoro::sleepFor(std::chrono::milliseconds(300));
        ++finished;
        co_return 0;
    }
    int started = 0;
    int finished = 0;
};

} // namespace

class TestInboxViewModel : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestStores> stores;
    FakeGiteaServer *server = nullptr;
    QString cachePath;
    qsizetype logStart = 0;

    void serveRepos(const QJsonArray &repos)
    {
        server->route("GET", QStringLiteral("/api/v1/user/repos"), FakeResponse::json(json(repos)));
    }

    void servePulls(const QString &fullName, const QJsonArray &pulls, int delayMs = 0,
                    int status = 200)
    {
        FakeResponse response = status == 200 ? FakeResponse::json(json(pulls))
                                              : FakeResponse::json(R"({"message":"boom"})", status);
        response.delay = std::chrono::milliseconds(delayMs);
        server->route("GET", QStringLiteral("/api/v1/repos/%1/pulls").arg(fullName), response);
    }

    int pullRequestCalls() const
    {
        int count = 0;
        for (const auto &request : server->requests())
            count += request.path().endsWith(u"/pulls");
        return count;
    }

private slots:
    void init()
    {
        server = new FakeGiteaServer(this);
        QVERIFY(server->listen());
        stores = std::make_unique<TestStores>();
        kestrine::testing::prepareInbox(*stores, *server);
        cachePath = InboxCache().filePath();
        logStart = stores->log.count();
        NotificationPass::install(nullptr);
    }

    void cleanup()
    {
        delete server;
        server = nullptr;
        stores.reset();
    }

    void notConfiguredLoadShowsMessageAndLeavesLoadingFalse()
    {
        stores->settings.overrideCredentials(std::nullopt, QString());
        InboxViewModel model(stores->settings);
        QSignalSpy loading(&model, &InboxViewModel::isLoadingChanged);
        runToEnd(model.load());
        QCOMPARE(model.errorMessage(),
                 QStringLiteral("Configure your Gitea instance in Settings."));
        QVERIFY(!model.isLoading());
        QCOMPARE(loading.count(), 0);
        QVERIFY(server->requests().isEmpty());
        QVERIFY(logMessagesSince(stores->log, logStart).isEmpty());
    }

    void unparsableInstanceURLCountsAsNotConfigured()
    {
        stores->settings.overrideCredentials(QStringLiteral("not a url with spaces"), std::nullopt);
        InboxViewModel model(stores->settings);
        runToEnd(model.load());
        QCOMPARE(model.errorMessage(),
                 QStringLiteral("Configure your Gitea instance in Settings."));
        QVERIFY(!model.isLoading());
    }

    void emptyMonitoredListSelectsEveryRepository()
    {
        serveRepos({repoJson("ann", "a", 1), repoJson("ann", "b", 2), repoJson("bo", "c", 3)});
        servePulls("ann/a", {pullJson(1, "A1", "2024-05-01T10:00:00Z")});
        servePulls("ann/b", {pullJson(2, "B2", "2024-05-02T10:00:00Z")});
        servePulls("bo/c", {pullJson(3, "C3", "2024-05-03T10:00:00Z")});
        InboxViewModel model(stores->settings);
        runToEnd(model.load());
        QCOMPARE(titles(model.displayedRows()), (QStringList{"C3", "B2", "A1"}));
        QCOMPARE(model.displayedRows().first().id(), QStringLiteral("bo/c#3"));
        QCOMPARE(model.displayedRows().first().repo.fullName, QStringLiteral("bo/c"));
        QVERIFY(!model.errorMessage());
        QVERIFY(!model.isLoading());
        QVERIFY(model.rows().isEmpty());
        QCOMPARE(logMessagesSince(stores->log, logStart).filter(QStringLiteral("Inbox:")),
                 QStringList{QStringLiteral("INFO Inbox: 3/3 repos")});
        QCOMPARE(server->requests().at(1).rawQuery, QByteArray("state=open&limit=100"));
    }

    void monitoredNamesMatchingNothingSelectNoneWithoutError()
    {
        serveRepos({repoJson("ann", "a", 1), repoJson("ann", "b", 2), repoJson("bo", "c", 3)});
        stores->settings.setMonitoredRepos({QStringLiteral("Ann/a"), QStringLiteral("gone/x")});
        InboxViewModel model(stores->settings);
        QSignalSpy published(&model, &InboxViewModel::displayedRowsChanged);
        runToEnd(model.load());
        QVERIFY(model.displayedRows().isEmpty());
        QVERIFY(published.count() >= 1);
        QVERIFY(!model.errorMessage());
        QCOMPARE(pullRequestCalls(), 0);
        QVERIFY(logMessagesSince(stores->log, logStart)
                    .contains(QStringLiteral("INFO Inbox: 0/3 repos")));
    }

    void monitoredNamesSelectExactMatchesOnly()
    {
        serveRepos({repoJson("ann", "a", 1), repoJson("ann", "b", 2), repoJson("bo", "c", 3)});
        servePulls("ann/b", {pullJson(2, "B2", "2024-05-02T10:00:00Z")});
        servePulls("bo/c", {pullJson(3, "C3", "2024-05-03T10:00:00Z")});
        stores->settings.setMonitoredRepos({QStringLiteral("bo/c"), QStringLiteral("ann/b")});
        InboxViewModel model(stores->settings);
        runToEnd(model.load());
        QCOMPARE(titles(model.displayedRows()), (QStringList{"C3", "B2"}));
        QCOMPARE(pullRequestCalls(), 2);
        QVERIFY(logMessagesSince(stores->log, logStart)
                    .contains(QStringLiteral("INFO Inbox: 2/3 repos")));
    }

    void equalUpdateTimesKeepArrivalOrderAndUndatedRowsComeLast()
    {
        serveRepos({repoJson("ann", "slow", 1), repoJson("ann", "fast", 2)});
        servePulls(
            "ann/slow",
            {pullJson(1, "slow-same", "2024-05-01T10:00:00Z"), pullJson(2, "slow-undated", "")},
            300);
        servePulls("ann/fast", {pullJson(3, "fast-undated", ""),
                                pullJson(4, "fast-same", "2024-05-01T12:00:00+02:00"),
                                pullJson(5, "fast-older", "2024-04-01T10:00:00Z")});
        InboxViewModel model(stores->settings);
        runToEnd(model.load());
        // "fast" answers first, so its rows come first among equals; undated rows go last in
        // arrival order.
        QCOMPARE(titles(model.displayedRows()), (QStringList{"fast-same", "slow-same", "fast-older",
                                                             "fast-undated", "slow-undated"}));
    }

    void everyRepositoryRequestStartsBeforeAnyAnswerArrives_data()
    {
        QTest::addColumn<int>("repositories");
        QTest::newRow("a few") << 5;
        // More than the loader starts in one turn of the event loop, and fewer than the
        // connections HTTP/1.1 may open, so that none waits for a connection to come free.
        QTest::newRow("more than one turn's worth") << 28;
    }

    void everyRepositoryRequestStartsBeforeAnyAnswerArrives()
    {
        QFETCH(int, repositories);
        QJsonArray repos;
        for (int i = 0; i < repositories; ++i) {
            repos.append(repoJson("ann", QStringLiteral("r%1").arg(i), i + 1));
            servePulls(QStringLiteral("ann/r%1").arg(i),
                       {pullJson(i + 1, QStringLiteral("P%1").arg(i), "2024-05-01T10:00:00Z")},
                       400);
        }
        serveRepos(repos);
        QList<qint64> arrivals;
        QElapsedTimer clock;
        clock.start();
        connect(server, &FakeGiteaServer::requestRecorded, this,
                [&](const RecordedRequest &request) {
                    if (request.path().endsWith(u"/pulls"))
                        arrivals.append(clock.elapsed());
                });
        InboxViewModel model(stores->settings);
        runToEnd(model.load());
        QCOMPARE(model.count(), repositories);
        QCOMPARE(arrivals.size(), repositories);
        // Each answer takes 400 ms: had any request waited for another's answer, it would have
        // arrived at least that much later than the first.
        QVERIFY2(arrivals.last() - arrivals.first() < 400,
                 qPrintable(QStringLiteral("arrivals spread over %1 ms")
                                .arg(arrivals.last() - arrivals.first())));
    }

    void someFailingRepositoriesShowTheRestAndLogOneWarning()
    {
        QJsonArray repos;
        for (int i = 0; i < 5; ++i)
            repos.append(repoJson("ann", QStringLiteral("r%1").arg(i), i + 1));
        serveRepos(repos);
        servePulls("ann/r0", {pullJson(1, "P0", "2024-05-01T10:00:00Z")});
        servePulls("ann/r1", {}, 0, 500);
        servePulls("ann/r2", {pullJson(2, "P2", "2024-05-02T10:00:00Z")});
        // r3 is unknown to the server: 404
        servePulls("ann/r4", {pullJson(4, "P4", "2024-05-03T10:00:00Z")}, 100);
        InboxViewModel model(stores->settings);
        runToEnd(model.load());
        QCOMPARE(titles(model.displayedRows()), (QStringList{"P4", "P2", "P0"}));
        QVERIFY(!model.errorMessage());
        const QStringList warnings =
            logMessagesSince(stores->log, logStart).filter(QStringLiteral("WARN"));
        QCOMPARE(warnings.size(), 1);
        QVERIFY2(
            warnings.first() ==
                    QStringLiteral(
                        "WARN Inbox: 2 repo(s) failed: Server error (500): boom; Not found.") ||
                warnings.first() ==
                    QStringLiteral(
                        "WARN Inbox: 2 repo(s) failed: Not found.; Server error (500): boom"),
            qPrintable(warnings.first()));
    }

    void everySelectedRepositoryFailingShowsTheAlert()
    {
        serveRepos({repoJson("ann", "a", 1), repoJson("ann", "b", 2), repoJson("ann", "c", 3)});
        servePulls("ann/a", {}, 0, 500);
        servePulls("ann/b", {}, 0, 500);
        InboxViewModel model(stores->settings);
        runToEnd(model.load());
        QVERIFY(model.displayedRows().isEmpty());
        QCOMPARE(
            model.errorMessage(),
            QStringLiteral("Couldn't load any PRs (3 repo(s) failed). Check the Logs screen."));
        QVERIFY(!model.isLoading());
    }

    void failingRepositoryListLogsAndShowsItsDescription()
    {
        server->route("GET", QStringLiteral("/api/v1/user/repos"),
                      FakeResponse::json(R"({"message":"token is required"})", 401));
        InboxViewModel model(stores->settings);
        runToEnd(model.load());
        QCOMPARE(model.errorMessage(), QStringLiteral("Authentication failed. Check your token."));
        QVERIFY(logMessagesSince(stores->log, logStart)
                    .contains(QStringLiteral(
                        "ERROR Inbox load failed: Authentication failed. Check your token.")));
        QVERIFY(!model.isLoading());
        QVERIFY(model.displayedRows().isEmpty());
    }

    void failingRepositoryListFallsBackToReadableCache()
    {
        QFile file(cachePath);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(R"([{"repo":{"id":1,"name":"a","full_name":"ann/a","owner":{"login":"ann"}},
                       "pr":{"id":9,"number":9,"title":"cached","state":"open","updated_at":"2024-05-01T10:00:00Z"}}])");
        file.close();
        server->route("GET", QStringLiteral("/api/v1/user/repos"), FakeResponse::json("{}", 500));
        InboxViewModel model(stores->settings);
        runToEnd(model.load());
        QCOMPARE(titles(model.displayedRows()), QStringList{"cached"});
        QCOMPARE(model.errorMessage(), QStringLiteral("Server error (500)."));
    }

    void cachePrefillShowsWhileLoadingOnlyWhenNothingIsShown()
    {
        QFile file(cachePath);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(R"([{"repo":{"id":1,"name":"a","full_name":"ann/a","owner":{"login":"ann"}},
                       "pr":{"id":9,"number":9,"title":"cached","state":"open","updated_at":"2024-05-01T10:00:00Z"}}])");
        file.close();
        const QByteArray cachedBytes = [&] {
            QFile f(cachePath);
            f.open(QIODevice::ReadOnly);
            return f.readAll();
        }();
        serveRepos({repoJson("ann", "a", 1)});
        servePulls("ann/a", {pullJson(1, "fresh", "2024-05-02T10:00:00Z")}, 200);

        InboxViewModel model(stores->settings);
        QStringList seenWhileLoading;
        connect(&model, &InboxViewModel::isLoadingChanged, this, [&] {
            if (model.isLoading())
                seenWhileLoading = titles(model.displayedRows());
        });
        runToEnd(model.load());
        QCOMPARE(seenWhileLoading, QStringList{"cached"});
        QCOMPARE(titles(model.displayedRows()), QStringList{"fresh"});

        // A refresh keeps what is shown instead of going back to the cache.
        QFile again(cachePath);
        QVERIFY(again.open(QIODevice::WriteOnly));
        again.write(cachedBytes);
        again.close();
        seenWhileLoading.clear();
        runToEnd(model.load());
        QCOMPARE(seenWhileLoading, QStringList{"fresh"});
    }

    void writtenNonEmptyInboxDoesNotReadBack()
    {
        serveRepos({repoJson("ann", "a", 1)});
        servePulls("ann/a", {pullJson(1, "fresh", "2024-05-02T10:00:00Z")});
        InboxViewModel model(stores->settings);
        runToEnd(model.load());
        QVERIFY(QFile::exists(cachePath));
        const auto numbers = QJsonDocument::fromJson([&] {
                                 QFile f(cachePath);
                                 f.open(QIODevice::ReadOnly);
                                 return f.readAll();
                             }())
                                 .array()
                                 .first()
                                 .toObject()
                                 .value(QStringLiteral("pr"))
                                 .toObject()
                                 .value(QStringLiteral("updated_at"));
        QVERIFY(numbers.isDouble()); // seconds since 2001, which the reader refuses
        QCOMPARE(numbers.toDouble(), 736336800.0);
        QVERIFY(!InboxCache().read());

        // A second model starts empty and stays so until its own load lands.
        InboxViewModel next(stores->settings);
        QStringList seenWhileLoading{QStringLiteral("unset")};
        connect(&next, &InboxViewModel::isLoadingChanged, this, [&] {
            if (next.isLoading())
                seenWhileLoading = titles(next.displayedRows());
        });
        runToEnd(next.load());
        QVERIFY(seenWhileLoading.isEmpty());
        QCOMPARE(titles(next.displayedRows()), QStringList{"fresh"});
    }

    void emptyCacheFileReadsAsEmptyAndCountsAsNothingCached()
    {
        serveRepos({});
        InboxViewModel model(stores->settings);
        runToEnd(model.load());
        QFile file(cachePath);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("[]"));
        QCOMPARE(InboxCache().read(), QList<PRRow>());
    }

    void unreadableCacheIsLikeNoCache_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("not json") << QByteArray("{{{");
        QTest::newRow("object") << QByteArray("{}");
        QTest::newRow("row without pr") << QByteArray(
            R"([{"repo":{"id":1,"name":"a","full_name":"ann/a","owner":{"login":"ann"}}}])");
    }

    void unreadableCacheIsLikeNoCache()
    {
        QFETCH(QByteArray, content);
        QFile file(cachePath);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        QVERIFY(!InboxCache().read());
        server->route("GET", QStringLiteral("/api/v1/user/repos"), FakeResponse::json("{}", 500));
        InboxViewModel model(stores->settings);
        runToEnd(model.load());
        QVERIFY(model.displayedRows().isEmpty());
    }

    void deletedCacheChangesOnlyThePrefill()
    {
        serveRepos({repoJson("ann", "a", 1)});
        servePulls("ann/a", {pullJson(1, "fresh", "2024-05-02T10:00:00Z")});
        InboxViewModel model(stores->settings);
        runToEnd(model.load());
        QVERIFY(QFile::remove(cachePath));
        runToEnd(model.load());
        QCOMPARE(titles(model.displayedRows()), QStringList{"fresh"});
        QVERIFY(QFile::exists(cachePath));
    }

    void loadEndsOnlyOnceTheCacheIsWritten()
    {
        serveRepos({repoJson("ann", "a", 1), repoJson("ann", "b", 2)});
        servePulls("ann/a", {pullJson(1, "one", "2024-05-02T10:00:00Z")});
        servePulls("ann/b", {pullJson(2, "two", "2024-05-03T10:00:00Z")});
        InboxViewModel model(stores->settings);
        QByteArray onDiskWhenLoaded;
        connect(&model, &InboxViewModel::isLoadingChanged, this, [&] {
            if (!model.isLoading())
                onDiskWhenLoaded = fileBytes(cachePath);
        });
        runToEnd(model.load());
        QCOMPARE(titles(model.displayedRows()), (QStringList{"two", "one"}));
        QCOMPARE(canonical(onDiskWhenLoaded), cacheBytes(model.displayedRows()));
    }

    void cacheIsWrittenOnAWorkerThreadNotOnTheCaller()
    {
        serveRepos({repoJson("ann", "a", 1)});
        servePulls("ann/a", {pullJson(1, "fresh", "2024-05-02T10:00:00Z")});
        InboxViewModel model(stores->settings);
        {
            BusyPool writer(InboxCache::writerThread());
            QCoro::Task<> load = model.load();
            QTRY_COMPARE(titles(model.displayedRows()), QStringList{"fresh"});
            // The rows are shown; their file waits for the busy writer, and so does the load.
            QTest::qWait(50);
            QVERIFY(!QFile::exists(cachePath));
            QVERIFY(model.isLoading());
            writer.release();
            runToEnd(std::move(load));
        }
        QVERIFY(!model.isLoading());
        QCOMPARE(canonical(fileBytes(cachePath)), cacheBytes(model.displayedRows()));
    }

    void backgroundWritesLandInTheOrderAsked()
    {
        PRRow first;
        first.repo.fullName = QStringLiteral("ann/a");
        first.pr.title = QStringLiteral("first");
        PRRow second = first;
        second.pr.title = QStringLiteral("second");
        const InboxCache cache(cachePath);
        // One writer thread: two writes never run at once.
        QCOMPARE(InboxCache::writerThread()->maxThreadCount(), 1);
        QFuture<void> earlier;
        QFuture<void> later;
        {
            BusyPool writer(InboxCache::writerThread());
            earlier = cache.writeInBackground({first, first});
            later = cache.writeInBackground({second});
        }
        earlier.waitForFinished();
        later.waitForFinished();
        QCOMPARE(canonical(fileBytes(cachePath)), cacheBytes({second}));
    }

    void notificationPassStartsWithoutBeingAwaitedWhenEnabled()
    {
        SlowPass pass;
        NotificationPass::install(&pass);
        serveRepos({repoJson("ann", "a", 1)});
        servePulls("ann/a", {pullJson(1, "fresh", "2024-05-02T10:00:00Z")});
        InboxViewModel model(stores->settings);

        runToEnd(model.load());
        QCOMPARE(pass.started, 0); // notifications are off

        stores->settings.setNotificationsEnabled(true);
        runToEnd(model.load());
        QCOMPARE(pass.started, 1);
        QCOMPARE(pass.finished, 0); // the load did not wait for it
        QTRY_COMPARE(pass.finished, 1);

        server->route("GET", QStringLiteral("/api/v1/user/repos"), FakeResponse::json("{}", 500));
        runToEnd(model.load());
        QCOMPARE(pass.started, 1); // not after a failed repository list
        NotificationPass::install(nullptr);
    }

    void destroyingTheModelMidLoadAbandonsItQuietly()
    {
        serveRepos({repoJson("ann", "a", 1)});
        servePulls("ann/a", {pullJson(1, "fresh", "2024-05-02T10:00:00Z")}, 2000);
        auto *model = new InboxViewModel(stores->settings);
        QTimer::singleShot(200, model, &QObject::deleteLater);
        QElapsedTimer timer;
        timer.start();
        runToEnd(model->load());
        QVERIFY(timer.elapsed() < 1500);
        QVERIFY(logMessagesSince(stores->log, logStart).filter(QStringLiteral("WARN")).isEmpty());
        QVERIFY(!QFile::exists(cachePath));
    }
};

QTEST_GUILESS_MAIN(TestInboxViewModel)
#include "tst_inboxviewmodel.moc"
