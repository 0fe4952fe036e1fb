// The background refresh: registration, the next run asked for first, completion, expiry.

#include "background.h"
#include "fakegiteaserver.h"
#include "teststores.h"

#include <QSignalSpy>
#include <QtTest>

using namespace kestrine;

namespace {

/// Records what the app asks of the platform's scheduler.
class RecordingScheduler : public BackgroundScheduler
{
public:
    bool registerTask(const QString &identifier, LaunchHandler handler) override
    {
        registered.append(identifier);
        handlers.insert(identifier, std::move(handler));
        return true;
    }
    bool submit(const QString &identifier, const QDateTime &earliestBegin) override
    {
        submissions.append({identifier, earliestBegin});
        return acceptSubmissions;
    }

    QStringList registered;
    QHash<QString, LaunchHandler> handlers;
    QList<std::pair<QString, QDateTime>> submissions;
    bool acceptSubmissions = true;
};

class SilentCenter : public NotificationCenter
{
public:
    QCoro::Task<Authorization> authorizationStatus() override
    {
        co_return Authorization::Authorized;
    }
    QCoro::Task<bool> requestAuthorization() override { co_return true; }
    void post(const QString &, const QString &title, const QString &, const QString &) override
    {
        posted.append(title);
    }
    QStringList posted;
};

/// The background refresh wired as the app wires it, over a scheduler that records and a center
/// that keeps the titles it is given.
struct WiredDelegate
{
    explicit WiredDelegate(SettingsStore &settings)
        : service(settings, center)
        , delegate(scheduler, service)
    {}

    /// Hands the registered refresh handler `task`, as the system does when the time comes.
    void launch(BackgroundTask &task)
    {
        scheduler.handlers.value(AppDelegate::refreshTaskIdentifier)(&task);
    }

    RecordingScheduler scheduler;
    SilentCenter center;
    NotificationService service;
    AppDelegate delegate;
};

} // namespace

class TestAppDelegate : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<kestrine::testing::TestStores> stores;
    FakeGiteaServer *server = nullptr;

private slots:
    void init()
    {
        server = new FakeGiteaServer(this);
        QVERIFY(server->listen());
        server->route(
            "GET", QStringLiteral("/api/v1/user/repos"),
            FakeResponse::json(
                R"([{"id":1,"name":"tool","full_name":"ann/tool","owner":{"login":"ann"}}])"));
        server->route("GET", QStringLiteral("/api/v1/repos/ann/tool/pulls"),
                      FakeResponse::json(R"([{"id":5,"number":7,"title":"T","state":"open"}])"));
        stores = std::make_unique<kestrine::testing::TestStores>();
        stores->signIn(server->baseUrl(), QStringLiteral("t"));
        stores->settings.setNotificationsEnabled(true);
        QFile::remove(NotificationState::defaultFilePath());
    }

    void cleanup()
    {
        delete server;
        stores.reset();
    }

    void registersTheRefreshIdentifierOnly()
    {
        WiredDelegate app(stores->settings);
        QVERIFY(app.delegate.registerBackgroundTask());
        QCOMPARE(app.scheduler.registered,
                 QStringList{QStringLiteral("com.norrum.kestrine.refresh")});
        QVERIFY(app.scheduler.submissions.isEmpty()); // registering asks for no run by itself
    }

    void launchAsksForTheNextRunFirstThenRunsAPassAndCompletes()
    {
        WiredDelegate app(stores->settings);
        app.delegate.registerBackgroundTask();

        int submissionsAtFirstRequest = -1;
        connect(server, &FakeGiteaServer::requestRecorded, this, [&] {
            if (submissionsAtFirstRequest < 0)
                submissionsAtFirstRequest = int(app.scheduler.submissions.size());
        });
        BackgroundTask task(AppDelegate::refreshTaskIdentifier);
        QSignalSpy completed(&task, &BackgroundTask::completed);
        const QDateTime before = QDateTime::currentDateTimeUtc();
        app.launch(task);

        QCOMPARE(app.scheduler.submissions.size(), 1);
        QCOMPARE(app.scheduler.submissions[0].first, QStringLiteral("com.norrum.kestrine.refresh"));
        const qint64 ahead = before.secsTo(app.scheduler.submissions[0].second);
        QVERIFY2(ahead >= 900 && ahead <= 901, qPrintable(QString::number(ahead)));
        QTRY_COMPARE(completed.count(), 1);
        QCOMPARE(completed[0][0].toBool(), true);
        QCOMPARE(submissionsAtFirstRequest, 1);
        QCOMPARE(app.center.posted, QStringList{QStringLiteral("New PR")});
    }

    void launchWithNotificationsOffCompletesSuccessfullyWithoutTouchingTheState()
    {
        stores->settings.setNotificationsEnabled(false);
        WiredDelegate app(stores->settings);
        app.scheduler.acceptSubmissions = false; // a refused request is dropped silently
        app.delegate.registerBackgroundTask();
        BackgroundTask task(AppDelegate::refreshTaskIdentifier);
        QSignalSpy completed(&task, &BackgroundTask::completed);
        app.launch(task);
        QTRY_COMPARE(completed.count(), 1);
        QCOMPARE(completed[0][0].toBool(), true);
        QVERIFY(server->requests().isEmpty());
        QVERIFY(!QFile::exists(NotificationState::defaultFilePath()));
    }

    void expiryAbandonsThePassAndStillCompletesSuccessfully()
    {
        FakeResponse slow =
            FakeResponse::json(R"([{"id":5,"number":7,"title":"T","state":"open"}])");
        slow.delay = std::chrono::milliseconds(5000);
        server->route("GET", QStringLiteral("/api/v1/repos/ann/tool/pulls"), slow);
        WiredDelegate app(stores->settings);
        app.delegate.registerBackgroundTask();
        BackgroundTask task(AppDelegate::refreshTaskIdentifier);
        QSignalSpy completed(&task, &BackgroundTask::completed);
        app.launch(task);
        QTRY_COMPARE(server->requests().size(), 2);
        QElapsedTimer timer;
        timer.start();
        task.expire();
        QTRY_COMPARE(completed.count(), 1);
        QVERIFY(timer.elapsed() < 2000);
        QCOMPARE(completed[0][0].toBool(), true);
        QVERIFY(app.center.posted.isEmpty());
        QVERIFY(!QFile::exists(NotificationState::defaultFilePath())); // nothing half-done is saved
    }

    void inProcessSchedulerLaunchesOnceByItselfThenAtEachSubmittedDate()
    {
        InProcessScheduler::Timing timing;
        timing.firstLaunchDelay = std::chrono::milliseconds(50);
        timing.runTimeLimit = std::chrono::milliseconds(200);
        InProcessScheduler scheduler(timing);
        int launches = 0;
        QList<bool> expired;
        scheduler.registerTask(QStringLiteral("job"), [&](BackgroundTask *task) {
            ++launches;
            task->setExpirationHandler([&expired] { expired.append(true); });
            if (launches == 1)
                task->setTaskCompleted(true);
        });
        QVERIFY(!scheduler.registerTask(QStringLiteral("job"), [](BackgroundTask *) {}));
        QTRY_COMPARE(launches, 1);
        QVERIFY(!scheduler.nextLaunch(QStringLiteral("job")).isValid());
        QTest::qWait(200);
        QCOMPARE(launches, 1); // no second launch without a request

        QVERIFY(
            scheduler.submit(QStringLiteral("job"), QDateTime::currentDateTimeUtc().addMSecs(100)));
        QVERIFY(scheduler.nextLaunch(QStringLiteral("job")).isValid());
        QTRY_COMPARE(launches, 2);
        // The second launch never completes: its time runs out.
        QTRY_COMPARE(expired.size(), 1);
        QVERIFY(!scheduler.submit(QStringLiteral("unknown"), QDateTime::currentDateTimeUtc()));
    }

    void inProcessSchedulerDrivesTheDelegateEndToEnd()
    {
        InProcessScheduler::Timing timing;
        timing.firstLaunchDelay = std::chrono::milliseconds(10);
        InProcessScheduler scheduler(timing);
        SilentCenter center;
        NotificationService service(stores->settings, center);
        AppDelegate delegate(scheduler, service);
        QSignalSpy launched(&scheduler, &InProcessScheduler::launched);
        QVERIFY(delegate.registerBackgroundTask());
        QTRY_COMPARE(launched.count(), 1);
        QTRY_COMPARE(center.posted.size(), 1);
        const QDateTime next = scheduler.nextLaunch(AppDelegate::refreshTaskIdentifier);
        QVERIFY(next.isValid());
        const qint64 ahead = QDateTime::currentDateTimeUtc().secsTo(next);
        QVERIFY2(ahead >= 898 && ahead <= 900, qPrintable(QString::number(ahead)));
    }
};

QTEST_GUILESS_MAIN(TestAppDelegate)
#include "tst_appdelegate.moc"
