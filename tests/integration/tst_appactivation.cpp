// One window per session, and the ways to its pull requests: opening one on top of the inbox (as
// an activated notification and `kestrine --open` do), a second start of the real `kestrine`
// executable that brings the running window to the front instead of opening another, its command
// line, the app's org.freedesktop.Application interface as other programs call it, and the demo,
// which runs beside the user's app as an app of its own. The first app runs in this process, its
// window on the offscreen platform, on the private session bus of run-isolated --keyring.

#include "app.h"
#include "applicationservice.h"
#include "fakegiteaserver.h"
#include "onerepository.h"
#include "outcome.h"
#include "settingsstore.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QQuickItem>
#include <QQuickWindow>
#include <QtTest>
#include <optional>

using namespace kestrine;
using kestrine::testing::namedChild;
using kestrine::testing::openPull;
using kestrine::testing::runToEnd;
using kestrine::testing::saveAppSettings;
using kestrine::testing::serveOneRepository;

namespace {

PullRequestReference reference(const char *text)
{
    return PullRequestReference::parse(QString::fromLatin1(text)).value();
}

/// What one run of the `kestrine` executable left.
struct Run
{
    /// -1 when it had not ended after the time allowed (it is killed then).
    int exitCode = -1;
    QString out;
    QString err;
};

} // namespace

class TestAppActivation : public QObject
{
    Q_OBJECT

private:
    FakeGiteaServer *server = nullptr;
    const QJsonArray openPulls{openPull(7, QStringLiteral("First")),
                               openPull(8, QStringLiteral("Second"))};
    std::optional<KestrineApp> app;
    QQuickWindow *window = nullptr;
    QObject *navigation = nullptr;

    void startApp(AppOptions options)
    {
        KestrineApp &started = app.emplace(std::move(options));
        QCOMPARE(started.claimBusName(), ApplicationService::Claim::Owned);
        QVERIFY2(runToEnd(started.start()).value.value_or(false),
                 qPrintable(started.errorString()));
        window = started.window();
        QVERIFY(window);
        navigation = namedChild(window, "navigation");
        QVERIFY(navigation);
        QObject *model = namedChild(window, "inboxView")->property("vm").value<QObject *>();
        QTRY_COMPARE(model->property("count").toInt(), 2);
        QTRY_VERIFY(!model->property("isLoading").toBool());
    }

    /// Ends the app once its screens have no load under way: a test that stops early (a failed
    /// check) must not take the app down with an answer on its way in.
    void stopApp()
    {
        if (navigation) {
            QObject *inbox = namedChild(window, "inboxView");
            const bool settled = QTest::qWaitFor([&] {
                QObject *screen = top();
                const QObject *detail =
                    screen && screen->objectName() == u"prDetailView" ? viewModel(screen) : nullptr;
                return !viewModel(inbox)->property("isLoading").toBool() &&
                       !(detail && detail->property("isLoading").toBool());
            });
            if (!settled)
                qWarning("the app's screens are still loading as it ends");
            QTest::qWait(50);
        }
        window = nullptr;
        navigation = nullptr;
        app.reset();
    }

    int depth() const { return navigation->property("depth").toInt(); }
    QObject *top() const { return navigation->property("currentItem").value<QObject *>(); }

    /// The screens on the stack, bottom first: a detail screen as "owner/name#N", any other by its
    /// object name.
    QStringList screens() const
    {
        QStringList names;
        for (int index = 0; index < depth(); ++index) {
            QQuickItem *item = nullptr;
            QMetaObject::invokeMethod(navigation, "get", Q_RETURN_ARG(QQuickItem *, item),
                                      Q_ARG(int, index));
            names.append(item ? screenName(item) : QStringLiteral("?"));
        }
        return names;
    }

    static QString screenName(QObject *item)
    {
        if (item->objectName() != u"prDetailView")
            return item->objectName();
        const QObject *vm = item->property("vm").value<QObject *>();
        return vm->property("repo").toMap().value(QStringLiteral("full_name")).toString() + u'#' +
               QString::number(vm->property("prNumber").toLongLong());
    }

    static QObject *viewModel(QObject *screen) { return screen->property("vm").value<QObject *>(); }

    /// Waits until the detail screen on top has loaded its pull request or failed to.
    QObject *loadedDetail()
    {
        QObject *detail = top();
        if (!detail || detail->objectName() != u"prDetailView")
            return nullptr;
        QObject *vm = viewModel(detail);
        if (!QTest::qWaitFor([vm] {
                return (vm->property("hasPr").toBool() ||
                        !vm->property("errorMessage").toString().isEmpty()) &&
                       !vm->property("isLoading").toBool();
            }))
            return nullptr;
        return detail;
    }

    /// The title of the pull request that the detail screen on top loaded; empty when it loaded
    /// none.
    QString loadedTitle()
    {
        QObject *detail = loadedDetail();
        return detail ? viewModel(detail)
                            ->property("pr")
                            .toMap()
                            .value(QStringLiteral("title"))
                            .toString()
                      : QString();
    }

    /// Runs `kestrine` with `arguments` while this process keeps answering on the bus.
    static Run
    runKestrine(const QStringList &arguments, int timeoutMs = 20000,
                const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
    {
        QProcess process;
        process.setProgram(QStringLiteral(KESTRINE_APP_PATH));
        process.setArguments(arguments);
        process.setProcessEnvironment(environment);
        process.start();
        Run run;
        if (!process.waitForStarted())
            return run;
        const bool ended =
            QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, timeoutMs);
        if (!ended) {
            process.kill();
            process.waitForFinished();
        } else if (process.exitStatus() == QProcess::NormalExit) {
            run.exitCode = process.exitCode();
        }
        run.out = QString::fromUtf8(process.readAllStandardOutput());
        run.err = QString::fromUtf8(process.readAllStandardError());
        return run;
    }

    static bool hasOwner(const QString &name)
    {
        return QDBusConnection::sessionBus().interface()->isServiceRegistered(name).value();
    }

    /// Calls the user's app on the bus as another program would: from a connection of its own,
    /// without blocking this process, which is the one that answers.
    static QDBusMessage callApp(const QString &method, const QVariantList &arguments)
    {
        QDBusConnection caller =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("caller"));
        const QString name = ApplicationService::busName(false);
        QDBusMessage call = QDBusMessage::createMethodCall(
            name, ApplicationService::objectPath(name), ApplicationService::interfaceName, method);
        call.setArguments(arguments);
        QDBusPendingCall pending = caller.asyncCall(call);
        if (!QTest::qWaitFor([&] { return pending.isFinished(); }, 10000))
            return QDBusMessage();
        return pending.reply();
    }

private slots:
    void init()
    {
        server = new FakeGiteaServer(this);
        QVERIFY(server->listen());
        serveOneRepository(*server, openPulls);
        // ann/other is not a repository the inbox lists.
        server->route(
            "GET", QStringLiteral("/api/v1/repos/ann/other/pulls/3"),
            FakeResponse::json(QJsonDocument(openPull(3, QStringLiteral("Elsewhere"))).toJson()));
        saveAppSettings(server->baseUrl(), QStringLiteral("t0ken"));
        startApp(AppOptions{});
    }

    void cleanup()
    {
        stopApp();
        delete server;
        server = nullptr;
    }

    void openingAPullRequestShowsItOnTopOfTheInbox()
    {
        app->openPullRequest(reference("ann/tool#7"));
        QTRY_COMPARE(screens(), (QStringList{QStringLiteral("inboxView"), "ann/tool#7"}));
        QCOMPARE(loadedTitle(), QStringLiteral("First"));

        QMetaObject::invokeMethod(window, "back");
        QTRY_COMPARE(screens(), QStringList{QStringLiteral("inboxView")});
    }

    void openingThePullRequestOnScreenKeepsItsScreen()
    {
        app->openPullRequest(reference("ann/tool#7"));
        QObject *detail = loadedDetail();
        QVERIFY(detail);
        // The user is writing a comment on it when its notification is activated.
        QMetaObject::invokeMethod(detail, "openCommentSheet", Q_ARG(QVariant, false));
        QObject *sheet = detail->property("commentSheet").value<QObject *>();
        QTRY_VERIFY(sheet->property("opened").toBool());
        sheet->setProperty("text", QStringLiteral("Looks good"));

        app->openPullRequest(reference("ann/tool#7"));
        QTest::qWait(300);
        QCOMPARE(top(), detail);
        QCOMPARE(depth(), 2);
        QVERIFY(sheet->property("visible").toBool());
        QCOMPARE(sheet->property("text").toString(), QStringLiteral("Looks good"));
    }

    void openingThePullRequestUnderADiffGoesBackToIt()
    {
        app->openPullRequest(reference("ann/tool#7"));
        QObject *detail = loadedDetail();
        QVERIFY(detail);
        QMetaObject::invokeMethod(detail, "openFile", Q_ARG(QVariant, QStringLiteral("a.txt")));
        QTRY_COMPARE(screens(), (QStringList{QStringLiteral("inboxView"), "ann/tool#7",
                                             QStringLiteral("diffView")}));

        app->openPullRequest(reference("ann/tool#7"));
        QTRY_COMPARE(depth(), 2);
        QCOMPARE(top(), detail);
    }

    void openingAnotherPullRequestReplacesTheScreensOverTheInbox()
    {
        app->openPullRequest(reference("ann/tool#7"));
        QObject *detail = loadedDetail();
        QVERIFY(detail);
        QMetaObject::invokeMethod(detail, "openFile", Q_ARG(QVariant, QStringLiteral("a.txt")));
        QTRY_COMPARE(depth(), 3);

        app->openPullRequest(reference("ann/tool#8"));
        QTRY_COMPARE(screens(), (QStringList{QStringLiteral("inboxView"), "ann/tool#8"}));
        QVERIFY(loadedDetail());
        QMetaObject::invokeMethod(window, "back");
        QTRY_COMPARE(screens(), QStringList{QStringLiteral("inboxView")});
    }

    void openingAPullRequestPutsTheInboxSheetsAway()
    {
        QObject *inbox = namedChild(window, "inboxView");
        QMetaObject::invokeMethod(inbox, "openSettings");
        QObject *settingsSheet = inbox->property("settingsSheet").value<QObject *>();
        QTRY_VERIFY(settingsSheet->property("opened").toBool());

        app->openPullRequest(reference("ann/tool#8"));
        QTRY_VERIFY(!settingsSheet->property("visible").toBool());
        QTRY_COMPARE(screens(), (QStringList{QStringLiteral("inboxView"), "ann/tool#8"}));
    }

    void aPullRequestOutsideTheInboxIsLoadedByName()
    {
        app->openPullRequest(reference("ann/other#3"));
        QTRY_COMPARE(screens(), (QStringList{QStringLiteral("inboxView"), "ann/other#3"}));
        QCOMPARE(loadedTitle(), QStringLiteral("Elsewhere"));
        QCOMPARE(namedChild(top(), "prReference")->property("text").toString(),
                 QStringLiteral("ann/other#3"));
    }

    void aPullRequestThatCannotBeLoadedSaysWhy()
    {
        app->openPullRequest(reference("ann/tool#99"));
        QObject *detail = loadedDetail();
        QVERIFY(detail);
        QVERIFY(!viewModel(detail)->property("hasPr").toBool());
        QCOMPARE(viewModel(detail)->property("errorMessage").toString(),
                 QStringLiteral("Not found."));
        QTRY_VERIFY(namedChild(detail, "loadFailedState")->property("visible").toBool());
    }

    void withoutConfigurationTheInboxStays()
    {
        app->settings()->setToken(QString());
        QVERIFY(!app->settings()->isConfigured());
        app->openPullRequest(reference("ann/tool#7"));
        QTest::qWait(300);
        QCOMPARE(screens(), QStringList{QStringLiteral("inboxView")});
        QVERIFY(namedChild(window, "notConfiguredState")->property("visible").toBool());
    }

    void aPullRequestAskedForAtStartOpensOnceTheWindowIsUp()
    {
        stopApp();
        startApp(AppOptions{.open = reference("ann/tool#8")});
        QTRY_COMPARE(screens(), (QStringList{QStringLiteral("inboxView"), "ann/tool#8"}));
        QVERIFY(loadedDetail());
    }

    void anActivationBringsAHiddenWindowBack()
    {
        window->hide();
        QTRY_VERIFY(!window->isExposed());
        app->activate();
        QTRY_VERIFY(window->isExposed());
        QTRY_VERIFY(window->isActive());
    }

    void aSecondStartBringsTheWindowBackAndExitsZero()
    {
        window->hide();
        QTRY_VERIFY(!window->isExposed());

        const Run second = runKestrine({});

        QCOMPARE(second.err, QString());
        QCOMPARE(second.exitCode, 0);
        QTRY_VERIFY(window->isExposed());
        QTRY_VERIFY(window->isActive());
        QCOMPARE(screens(), QStringList{QStringLiteral("inboxView")});
    }

    void aSecondStartWithOpenShowsThatPullRequest()
    {
        window->hide();
        const Run second = runKestrine({QStringLiteral("--open"), QStringLiteral("ann/tool#8")});

        QCOMPARE(second.err, QString());
        QCOMPARE(second.exitCode, 0);
        QTRY_COMPARE(screens(), (QStringList{QStringLiteral("inboxView"), "ann/tool#8"}));
        QTRY_VERIFY(window->isExposed());
        QVERIFY(loadedDetail());
    }

    void aWrongCommandLineFailsWithoutTouchingTheRunningApp_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        const QString openSyntax = QStringLiteral("--open takes OWNER/REPO#NUMBER");
        QTest::newRow("no number") << QStringList{"--open", "bo/site"} << openSyntax;
        QTest::newRow("number zero") << QStringList{"--open", "bo/site#0"} << openSyntax;
        QTest::newRow("not a number") << QStringList{"--open=bo/site#seven"} << openSyntax;
        QTest::newRow("no owner") << QStringList{"--open", "site#7"} << openSyntax;
        QTest::newRow("path") << QStringList{"--open", "bo/../../user#7"} << openSyntax;
        QTest::newRow("blank") << QStringList{"--open", ""} << openSyntax;
        QTest::newRow("no value") << QStringList{"--open"}
                                  << QStringLiteral("Missing value after '--open'.");
        QTest::newRow("unknown option")
            << QStringList{"--opne", "ann/tool#7"} << QStringLiteral("Unknown option 'opne'.");
    }

    void aWrongCommandLineFailsWithoutTouchingTheRunningApp()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        window->hide();
        QTRY_VERIFY(!window->isExposed());

        const Run run = runKestrine(arguments);

        QCOMPARE(run.exitCode, 2);
        QVERIFY2(run.err.startsWith(QStringLiteral("kestrine: ") + message), qPrintable(run.err));
        QVERIFY2(
            run.err.endsWith(QStringLiteral("\nTry 'kestrine --help' for more information.\n")),
            qPrintable(run.err));
        // What was typed is not repeated: it could be a token in the wrong place.
        QVERIFY(!run.err.contains(QStringLiteral("bo/")));
        QTest::qWait(200);
        QVERIFY(!window->isExposed());
        QCOMPARE(screens(), QStringList{QStringLiteral("inboxView")});
    }

    void whatEndsAtTheCommandLineNeedsNoDisplay_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("outStart");
        QTest::addColumn<QString>("errStart");
        QTest::newRow("help") << QStringList{"--help"} << 0 << QStringLiteral("Usage: ")
                              << QString();
        QTest::newRow("h") << QStringList{"-h"} << 0 << QStringLiteral("Usage: ") << QString();
        QTest::newRow("version") << QStringList{"--version"} << 0 << QStringLiteral("kestrine ")
                                 << QString();
        QTest::newRow("unknown option") << QStringList{"--opne"} << 2 << QString()
                                        << QStringLiteral("kestrine: Unknown option 'opne'.");
        QTest::newRow("bad reference") << QStringList{"--open", "site#7"} << 2 << QString()
                                       << QStringLiteral("kestrine: --open takes ");
    }

    void whatEndsAtTheCommandLineNeedsNoDisplay()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, outStart);
        QFETCH(QString, errStart);
        // A terminal over SSH: no X display, no Wayland, no platform asked for.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            environment.remove(QString::fromLatin1(name));

        const Run run = runKestrine(arguments, 20000, environment);

        QCOMPARE(run.exitCode, exitCode);
        QVERIFY2(run.out.startsWith(outStart), qPrintable(run.out));
        QVERIFY2(run.err.startsWith(errStart), qPrintable(run.err));
        QVERIFY2(!run.err.contains(QStringLiteral("platform plugin")), qPrintable(run.err));
        QCOMPARE(screens(), QStringList{QStringLiteral("inboxView")});
    }

    void aSecondStartSaysSoWhenTheRunningAppCannotBeReached()
    {
        // The name is held by a process that does not serve the interface (a hung or foreign one).
        app->releaseBusName();
        const QString name = ApplicationService::busName(false);
        QVERIFY(QDBusConnection::sessionBus().registerService(name));

        const Run second = runKestrine({});

        QDBusConnection::sessionBus().unregisterService(name);
        QCOMPARE(second.exitCode, 1);
        QVERIFY2(second.err.startsWith(
                     QStringLiteral("kestrine: Kestrine is already running but could not be "
                                    "brought to the front: ")),
                 qPrintable(second.err));
    }

    void otherProgramsReachTheAppByTheStandardInterface()
    {
        window->hide();
        const QVariantMap platformData{{QStringLiteral("activation-token"), QStringLiteral("t")}};
        const QDBusMessage opened = callApp(QStringLiteral("ActivateAction"),
                                            {ApplicationService::openPullRequestAction,
                                             QVariant::fromValue(QVariantList{QVariant::fromValue(
                                                 QDBusVariant(QStringLiteral("ann/tool#7")))}),
                                             platformData});
        QCOMPARE(opened.type(), QDBusMessage::ReplyMessage);
        QTRY_COMPARE(screens(), (QStringList{QStringLiteral("inboxView"), "ann/tool#7"}));
        QTRY_VERIFY(window->isExposed());

        window->hide();
        QTRY_VERIFY(!window->isExposed());
        const QDBusMessage activated =
            callApp(QStringLiteral("Activate"), {QVariant::fromValue(QVariantMap())});
        QCOMPARE(activated.type(), QDBusMessage::ReplyMessage);
        QTRY_VERIFY(window->isExposed());
    }

    void theInterfaceRefusesWhatTheAppCannotDo()
    {
        const QDBusMessage malformed =
            callApp(QStringLiteral("ActivateAction"),
                    {ApplicationService::openPullRequestAction,
                     QVariant::fromValue(QVariantList{
                         QVariant::fromValue(QDBusVariant(QStringLiteral("ann/tool")))}),
                     QVariant::fromValue(QVariantMap())});
        QCOMPARE(malformed.type(), QDBusMessage::ErrorMessage);
        QCOMPARE(malformed.errorName(), QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"));

        const QDBusMessage notText =
            callApp(QStringLiteral("ActivateAction"),
                    {ApplicationService::openPullRequestAction,
                     QVariant::fromValue(QVariantList{QVariant::fromValue(QDBusVariant(7))}),
                     QVariant::fromValue(QVariantMap())});
        QCOMPARE(notText.errorName(), QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"));

        const QDBusMessage unknown =
            callApp(QStringLiteral("ActivateAction"),
                    {QStringLiteral("merge-everything"), QVariant::fromValue(QVariantList()),
                     QVariant::fromValue(QVariantMap())});
        QCOMPARE(unknown.errorName(), QStringLiteral("org.freedesktop.DBus.Error.NotSupported"));

        const QDBusMessage files =
            callApp(QStringLiteral("Open"), {QStringList{QStringLiteral("file:///etc/passwd")},
                                             QVariant::fromValue(QVariantMap())});
        QCOMPARE(files.errorName(), QStringLiteral("org.freedesktop.DBus.Error.NotSupported"));

        QTest::qWait(200);
        QCOMPARE(screens(), QStringList{QStringLiteral("inboxView")});
    }

    void theDemoRunsBesideTheUsersAppAsAnAppOfItsOwn()
    {
        window->hide();
        QTRY_VERIFY(!window->isExposed());
        const QString demoName = ApplicationService::busName(true);
        QVERIFY(demoName != ApplicationService::busName(false));

        // The user's app runs; the demo starts all the same, and stays.
        QProcess demo;
        demo.setProgram(QStringLiteral(KESTRINE_APP_PATH));
        demo.setArguments({QStringLiteral("--demo")});
        demo.start();
        QVERIFY(demo.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(hasOwner(demoName), 20000);
        QCOMPARE(demo.state(), QProcess::Running);

        // A second demo brings the first one's window to the front and ends.
        const Run second = runKestrine({QStringLiteral("--demo")});
        QCOMPARE(second.err, QString());
        QCOMPARE(second.exitCode, 0);
        QCOMPARE(demo.state(), QProcess::Running);
        // The user's window was not asked.
        QVERIFY(!window->isExposed());

        demo.terminate();
        QTRY_VERIFY_WITH_TIMEOUT(demo.state() == QProcess::NotRunning, 20000);
        QCOMPARE(demo.exitStatus(), QProcess::NormalExit);
        QCOMPARE(demo.exitCode(), 0);
        QTRY_VERIFY(!hasOwner(demoName));
        QVERIFY(hasOwner(ApplicationService::busName(false)));
    }
};

QTEST_MAIN(TestAppActivation)
#include "tst_appactivation.moc"
