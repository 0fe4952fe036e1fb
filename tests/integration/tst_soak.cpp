// Many inbox loads in a row against the Gitea simulation, with notification passes overlapping
// them: each completed load starts a pass it does not wait for, more passes are started by hand
// while loads run, and now and then a load is abandoned halfway by destroying its model. Nothing
// may crash, nothing may be left behind (no reply outlives its request; LeakSanitizer checks the
// rest in the sanitizer build), and both files the loads and passes keep rewriting, inbox.json and
// notification-state.json, must still be whole and agree with the last load at the end.
//
// KESTRINE_SOAK_LOADS sets the number of loads (20 by default; `make soak` runs 200 in the
// sanitizer build), KESTRINE_SOAK_SECONDS the time they may take (600 by default).

#include "background.h"
#include "fakegiteaserver.h"
#include "giteasimulation.h"
#include "inbox.h"
#include "logstore.h"
#include "outcome.h"
#include "teststores.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkReply>
#include <QtTest>

using namespace kestrine;
using kestrine::testing::runToEnd;
using kestrine::testing::TestStores;

namespace {

const QString token = QStringLiteral("4f1c9e2d7a6b5c3d8e0f1a2b3c4d5e6f7a8b9c0d");

class SilentCenter : public NotificationCenter
{
public:
    QCoro::Task<Authorization> authorizationStatus() override
    {
        co_return Authorization::Authorized;
    }
    QCoro::Task<bool> requestAuthorization() override { co_return true; }
    void post(const QString &, const QString &, const QString &, const QString &) override
    {
        ++posted;
    }
    int posted = 0;
};

/// The service's passes, counted as they start and end.
class CountingPass : public NotificationPass
{
public:
    explicit CountingPass(NotificationService &service)
        : m_service(service)
    {}

    QCoro::Task<int> poll() override
    {
        ++started;
        const int posted = co_await m_service.poll();
        ++finished;
        co_return posted;
    }

    int started = 0;
    int finished = 0;

private:
    NotificationService &m_service;
};

QCoro::Task<> startPass(CountingPass *pass)
{
    co_await pass->poll();
}

int environmentNumber(const char *name, int fallback)
{
    bool ok = false;
    const int value = qEnvironmentVariableIntValue(name, &ok);
    return ok && value > 0 ? value : fallback;
}

qint64 residentKilobytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}

} // namespace

class TestSoak : public QObject
{
    Q_OBJECT

private slots:
    void backToBackLoadsWithOverlappingPassesLeaveWholeFiles()
    {
        const int loads = environmentNumber("KESTRINE_SOAK_LOADS", 20);
        const int seconds = environmentNumber("KESTRINE_SOAK_SECONDS", 600);

        FakeGiteaServer server;
        QVERIFY(server.listen());
        GiteaSimulation simulation(QStringLiteral(KESTRINE_TEST_DATA_DIR "/gitea/seed.json"));
        QVERIFY2(simulation.isValid(), qPrintable(simulation.loadError()));
        simulation.install(&server);

        TestStores stores;
        SettingsStore *settings = &stores.settings;
        stores.signIn(server.baseUrl(), token);
        settings->setMonitoredRepos({});
        settings->setNotificationsEnabled(true);
        SilentCenter center;
        NotificationService service(stores.settings, center);
        CountingPass pass(service);
        NotificationPass::install(&pass);

        QElapsedTimer elapsed;
        elapsed.start();
        InboxViewModel inbox(stores.settings);
        qint64 memoryAfterWarmUp = -1;
        int completed = 0;
        int abandoned = 0;
        for (int i = 0; i < loads; ++i) {
            QVERIFY2(elapsed.elapsed() < seconds * 1000LL,
                     qPrintable(QStringLiteral("only %1 of %2 loads within %3 s")
                                    .arg(i)
                                    .arg(loads)
                                    .arg(seconds)));
            if (i % 3 == 1)
                startPass(&pass);
            if (i % 10 == 5) {
                // A screen that goes away while its load runs.
                auto *gone = new InboxViewModel;
                gone->reload();
                QTimer::singleShot(i % 7, gone, &QObject::deleteLater);
                ++abandoned;
            }
            runToEnd(inbox.load());
            QVERIFY2(!inbox.errorMessage(), qPrintable(inbox.errorMessage().value_or(QString())));
            QVERIFY(!inbox.displayedRows().isEmpty());
            ++completed;
            if (i == loads / 10)
                memoryAfterWarmUp = residentKilobytes();
        }

        // Let every pass that was started come to its end.
        QTRY_VERIFY_WITH_TIMEOUT(pass.finished == pass.started, 60000);
        NotificationPass::install(nullptr);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        const qint64 memoryAtEnd = residentKilobytes();
        qInfo("%d loads (%d abandoned beside them), %d passes, %lld requests in %lld ms; "
              "resident memory %lld MB after the first tenth, %lld MB at the end",
              completed, abandoned, pass.finished, qint64(server.requests().size()),
              elapsed.elapsed(), memoryAfterWarmUp / 1024, memoryAtEnd / 1024);
        QCOMPARE(completed, loads);
        QVERIFY(pass.finished >= loads);

        // No reply outlives its request.
        QCOMPARE(GiteaClient::sharedSession()->findChildren<QNetworkReply *>().size(), 0);

        // inbox.json: whole JSON holding exactly the last load's rows, in its order.
        QFile cacheFile(inbox.cache().filePath());
        QVERIFY(cacheFile.open(QIODevice::ReadOnly));
        QJsonParseError error;
        const QJsonDocument cache = QJsonDocument::fromJson(cacheFile.readAll(), &error);
        QCOMPARE(error.error, QJsonParseError::NoError);
        QVERIFY(cache.isArray());
        const QJsonArray rows = cache.array();
        QCOMPARE(rows.size(), inbox.displayedRows().size());
        for (qsizetype i = 0; i < rows.size(); ++i) {
            const QJsonObject row = rows.at(i).toObject();
            const PRRow &shown = inbox.displayedRows().at(i);
            QCOMPARE(row.value("repo").toObject().value("full_name").toString(),
                     shown.repo.fullName);
            QCOMPARE(row.value("pr").toObject().value("number").toInteger(), shown.pr.number);
        }

        // notification-state.json: whole, with both keys, knowing every pull request shown.
        QFile stateFile(service.stateFilePath());
        QVERIFY(stateFile.open(QIODevice::ReadOnly));
        const QJsonDocument stateDocument = QJsonDocument::fromJson(stateFile.readAll(), &error);
        QCOMPARE(error.error, QJsonParseError::NoError);
        QVERIFY(stateDocument.object().value("announcedNewPRs").isArray());
        QVERIFY(stateDocument.object().value("ciStatusByPR").isObject());
        const NotificationState state = NotificationState::load(service.stateFilePath());
        for (const PRRow &row : inbox.displayedRows())
            QVERIFY2(state.announcedNewPRs.contains(row.id()), qPrintable(row.id()));
        for (auto it = state.ciStatusByPR.cbegin(); it != state.ciStatusByPR.cend(); ++it)
            QVERIFY(state.announcedNewPRs.contains(it.key()));

        // The log stayed within its bound, and its stored copy reads back whole.
        QVERIFY(stores.log.count() > 0);
        QVERIFY(stores.log.count() <= int(LogStore::maxEntries));
        stores.log.flush();
        QCOMPARE(LogStore(nullptr).entries().size(), stores.log.entries().size());
    }
};

QTEST_GUILESS_MAIN(TestSoak)
#include "tst_soak.moc"
