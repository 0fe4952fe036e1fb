// The app's notifications, with its window on the offscreen platform, the fake Gitea server and a
// notification server of the test's own on a private session bus: a pass run while the window is
// active is carried out and remembered as always, but nothing of it is shown; once the window is
// behind, notifications show again.

#include "app.h"
#include "fakegiteaserver.h"
#include "logstore.h"
#include "notificationpass.h"
#include "notificationserver.h"
#include "notificationstate.h"
#include "outcome.h"
#include "settingsstore.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQuickWindow>
#include <QWindow>
#include <QtTest>
#include <optional>

using namespace kestrine;
using kestrine::testing::NotificationServer;
using kestrine::testing::runToEnd;

namespace {

QJsonObject pull(qint64 number, const QString &title)
{
    return {{QStringLiteral("id"), 100 + number},
            {QStringLiteral("number"), number},
            {QStringLiteral("title"), title},
            {QStringLiteral("state"), QStringLiteral("open")}};
}

QObject *child(QObject *root, const char *name)
{
    const QList<QObject *> all = root->findChildren<QObject *>(QString::fromLatin1(name));
    return all.isEmpty() ? nullptr : all.constLast();
}

/// The log lines written from `first` on, as "LEVEL message".
QStringList logLinesFrom(const LogStore &log, qsizetype first)
{
    QStringList lines;
    const QList<LogEntry> entries = log.entries();
    for (qsizetype i = first; i < entries.size(); ++i)
        lines.append(entries[i].levelLabel() + u' ' + entries[i].message);
    return lines;
}

} // namespace

class TestAppNotifications : public QObject
{
    Q_OBJECT

private:
    NotificationServer *notifications = nullptr;
    FakeGiteaServer *server = nullptr;
    QJsonArray openPulls;
    std::optional<KestrineApp> app;
    QQuickWindow *window = nullptr;

    /// Shows `other` and makes it the active window, as another app coming to the front.
    static void activate(QWindow &other)
    {
        other.resize(100, 100);
        other.show();
        other.requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(&other));
    }

    /// One pass of the check the app installed, as the inbox and the background task run it.
    int pass()
    {
        NotificationPass *installed = NotificationPass::installed();
        return installed ? runToEnd(installed->poll()).value.value_or(-1) : -1;
    }

private slots:
    void initTestCase()
    {
        notifications = new NotificationServer(this);
        QVERIFY2(notifications->start(), "a private session bus is needed");
    }

    void init()
    {
        server = new FakeGiteaServer(this);
        QVERIFY(server->listen());
        server->route(
            "GET", QStringLiteral("/api/v1/user/repos"),
            FakeResponse::json(
                R"([{"id":1,"name":"tool","full_name":"ann/tool","owner":{"login":"ann"}}])"));
        openPulls = {pull(7, QStringLiteral("First"))};
        server->route("GET", QStringLiteral("/api/v1/repos/ann/tool/pulls"),
                      [this](const RecordedRequest &, const RouteParams &) {
                          return FakeResponse::json(
                              QJsonDocument(openPulls).toJson(QJsonDocument::Compact));
                      });
        // What the app loads as it starts.
        SettingsStore saved;
        SettingsStore *settings = &saved;
        settings->setInstanceURL(server->baseUrl().toString());
        settings->setToken(QStringLiteral("t0ken"));
        settings->setMonitoredRepos({});
        // Off while the app starts, so that the passes counted are the test's own.
        settings->setNotificationsEnabled(false);
        // In the keychain before the app reads it.
        runToEnd(saved.settle());
        QFile::remove(NotificationState::defaultFilePath());
        notifications->received.clear();

        KestrineApp &started = app.emplace(AppOptions{});
        QVERIFY2(runToEnd(started.start()).value.value_or(false),
                 qPrintable(started.errorString()));
        window = started.window();
        window->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(window));
        // The inbox's first load is over, so that every later request and log line is a pass's.
        QObject *inbox = child(window, "inboxView");
        QVERIFY(inbox);
        QObject *model = inbox->property("vm").value<QObject *>();
        QTRY_COMPARE(model->property("count").toInt(), 1);
        QTRY_VERIFY(!model->property("isLoading").toBool());
        started.settings()->setNotificationsEnabled(true);
    }

    void cleanup()
    {
        if (app && app->settings())
            app->settings()->setNotificationsEnabled(false);
        window = nullptr;
        app.reset();
        delete server;
        server = nullptr;
    }

    void aPassWhileTheWindowIsActiveIsCarriedOutButShowsNothing()
    {
        QVERIFY(window->isExposed());
        QVERIFY(window->isActive());
        const qsizetype logged = app->log()->count();

        // The pass goes as always: it counts the notification, remembers the pull request and
        // leaves the log lines of its requests.
        QCOMPARE(pass(), 1);
        QCOMPARE(NotificationState::load(NotificationState::defaultFilePath()).announcedNewPRs,
                 QSet<QString>{QStringLiteral("ann/tool#7")});
        QCOMPARE(logLinesFrom(*app->log(), logged),
                 (QStringList{QStringLiteral("INFO GET user/repos → 200"),
                              QStringLiteral("INFO GET repos/ann/tool/pulls → 200")}));

        // Behind, the next news shows, and it is the only one that reaches the server: had the
        // first been sent, it would have arrived before.
        QWindow other;
        activate(other);
        QTRY_VERIFY(!window->isActive());
        openPulls.append(pull(8, QStringLiteral("Second")));
        QCOMPARE(pass(), 1);
        QCOMPARE(notifications->takeArrived(1),
                 QStringList{QStringLiteral("New PR|Second — ann/tool")});
    }

    void aPassWhileTheWindowIsBehindShowsItsNotifications_data()
    {
        QTest::addColumn<bool>("hidden");
        QTest::newRow("window hidden") << true;
        QTest::newRow("another window in front") << false;
    }

    void aPassWhileTheWindowIsBehindShowsItsNotifications()
    {
        QFETCH(bool, hidden);
        // A hidden window is behind even where the platform leaves it the focus, as the offscreen
        // one does.
        QWindow other;
        if (hidden) {
            window->hide();
            QTRY_VERIFY(!window->isExposed());
        } else {
            activate(other);
            QVERIFY(window->isVisible());
            QTRY_VERIFY(!window->isActive());
        }

        QCOMPARE(pass(), 1);
        QCOMPARE(notifications->takeArrived(1),
                 QStringList{QStringLiteral("New PR|First — ann/tool")});
    }
};

QTEST_MAIN(TestAppNotifications)
#include "tst_appnotifications.moc"
