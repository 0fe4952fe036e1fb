// The app's notifications, with its window on the offscreen platform, the fake Gitea server and a
// notification server of the test's own on a private session bus: a pass run while the window is
// active is carried out and remembered as always, but nothing of it is shown; once the window is
// behind, notifications show again. Activating one brings the window to the front on its pull
// request, on top of the inbox.

#include "app.h"
#include "fakegiteaserver.h"
#include "logstore.h"
#include "notificationpass.h"
#include "notificationserver.h"
#include "notificationstate.h"
#include "onerepository.h"
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
using kestrine::testing::namedChild;
using kestrine::testing::NotificationServer;
using kestrine::testing::openPull;
using kestrine::testing::runToEnd;
using kestrine::testing::saveAppSettings;
using kestrine::testing::serveOneRepository;

namespace {

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

    QObject *navigation() const { return namedChild(window, "navigation"); }
    int depth() const { return navigation()->property("depth").toInt(); }
    QObject *top() const { return navigation()->property("currentItem").value<QObject *>(); }

    /// With the window behind, one pass that announces the pull requests not yet announced:
    /// what reached the notification server.
    QList<NotificationServer::Received> postBehind(QWindow &other, qsizetype count)
    {
        activate(other);
        if (!QTest::qWaitFor([this] { return !window->isActive(); }))
            return {};
        if (pass() != count ||
            !QTest::qWaitFor([&] { return notifications->received.size() == count; }))
            return {};
        // The server's answer with each id has come back before anyone could click.
        QTest::qWait(100);
        return std::exchange(notifications->received, {});
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
        openPulls = {openPull(7, QStringLiteral("First"))};
        serveOneRepository(*server, openPulls);
        // What the app loads as it starts; notifications are off until the test is ready.
        saveAppSettings(server->baseUrl(), QStringLiteral("t0ken"));
        QFile::remove(NotificationState::defaultFilePath());
        notifications->received.clear();

        KestrineApp &started = app.emplace(AppOptions{});
        QVERIFY2(runToEnd(started.start()).value.value_or(false),
                 qPrintable(started.errorString()));
        window = started.window();
        window->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(window));
        // The inbox's first load is over, so that every later request and log line is a pass's.
        QObject *inbox = namedChild(window, "inboxView");
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
        openPulls.append(openPull(8, QStringLiteral("Second")));
        QCOMPARE(pass(), 1);
        QCOMPARE(notifications->takeArrived(1),
                 QStringList{QStringLiteral("New PR|Second — ann/tool")});
    }

    void notificationsOfTheAppHaveADefaultAction()
    {
        QWindow other;
        const QList<NotificationServer::Received> shown = postBehind(other, 1);
        QCOMPARE(shown.size(), 1);
        QCOMPARE(shown.first().actions.value(0), QStringLiteral("default"));
        QCOMPARE(shown.first().hints.value(QStringLiteral("desktop-entry")),
                 QVariant(QStringLiteral("com.norrum.kestrine")));
    }

    void activatingANotificationOpensItsPullRequestOnTopOfTheInbox()
    {
        openPulls.append(openPull(8, QStringLiteral("Second")));
        QWindow other;
        const QList<NotificationServer::Received> shown = postBehind(other, 2);
        QCOMPARE(shown.size(), 2);
        QCOMPARE(shown.at(1).body, QStringLiteral("Second — ann/tool"));

        notifications->invokeAction(shown.at(1).id, QStringLiteral("default"));

        // In front, on the pull request's detail screen, which loads it.
        QTRY_VERIFY(window->isActive());
        QTRY_COMPARE(depth(), 2);
        QObject *detail = top();
        QCOMPARE(detail->objectName(), QStringLiteral("prDetailView"));
        QObject *vm = detail->property("vm").value<QObject *>();
        QCOMPARE(vm->property("repo").toMap().value(QStringLiteral("full_name")),
                 QVariant(QStringLiteral("ann/tool")));
        QCOMPARE(vm->property("prNumber").toLongLong(), 8);
        QTRY_VERIFY(vm->property("hasPr").toBool());
        QCOMPARE(vm->property("pr").toMap().value(QStringLiteral("title")),
                 QVariant(QStringLiteral("Second")));

        // Back returns to the inbox.
        QMetaObject::invokeMethod(window, "back");
        QTRY_COMPARE(depth(), 1);
        QCOMPARE(top()->objectName(), QStringLiteral("inboxView"));
    }

    void activatingAnotherAppsNotificationChangesNothing()
    {
        QWindow other;
        const QList<NotificationServer::Received> shown = postBehind(other, 1);
        QCOMPARE(shown.size(), 1);

        // Every client of the notification server hears its signals.
        notifications->invokeAction(shown.first().id + 1000, QStringLiteral("default"));
        QTest::qWait(300);
        QCOMPARE(depth(), 1);
        QVERIFY(!window->isActive());

        // The app's own still works.
        notifications->invokeAction(shown.first().id, QStringLiteral("default"));
        QTRY_COMPARE(depth(), 2);
        QTRY_VERIFY(window->isActive());
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
