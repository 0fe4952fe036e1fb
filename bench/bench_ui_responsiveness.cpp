// How long the interface stops answering while the largest contents open in the real screens: an
// inbox of 4,000 pull requests (200 repositories of 20), a 20 MB pull request diff in the diff view
// and a 5 MB job log in the job log view, served by a fake Gitea on 127.0.0.1 that runs on a
// thread of its own, so that serving megabytes is not counted as the screens' work. A timer ticks
// every 5 ms on the main thread; the longest gap between two ticks is the longest time input would
// have waited. Each case prints that gap, the time until the content was on screen, and what the
// gaps add up to; then the same while the inbox is flung from its first row to its last, and while
// the diff and the log are scrolled to the end and back.
//
// The diff and the log count from the moment their screen is asked for, building it included. The
// inbox counts while its rows arrive: from the moment its screen is built (which starts the load)
// until the rows are drawn and the load has ended; building the empty inbox screen, which the app
// does once at start, is printed on its own.
//
// Runs offscreen unless QT_QPA_PLATFORM says otherwise (offscreen draws with the software
// renderer, which is slower than a GPU, so these are upper figures for drawing).

#include "demoinstance.h"
#include "fakegiteaserver.h"
#include "fixtures.h"
#include "largetexts.h"
#include "qmlservices.h"
#include "simulationthread.h"
#include "storagemode.h"
#include "teststores.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QTimer>
#include <QtQml/qqmlextensionplugin.h>
#include <algorithm>
#include <cstdio>
#include <functional>

Q_IMPORT_QML_PLUGIN(KestrinePlugin)

using namespace kestrine;
using kestrine::testing::SimulationThread;

namespace {

constexpr qsizetype diffBytes = 20'000'000;
constexpr qsizetype logBytes = 5'000'000;
constexpr int inboxRepositories = 200;
constexpr int inboxPullsEach = 20;
/// How fast the inbox is flung, in points a second: four times the fastest flick Qt Quick lets a
/// finger give (2,500), so that a list that keeps up here keeps up with any real fling.
constexpr qreal flingVelocity = 10000;
const QString token = QStringLiteral("b3nch");

/// The file the diff view opens: long, in the middle of the diff.
const testing::NamedFile middleFile{"middle/file.cpp", 2000, 0.5};

/// Ticks every 5 ms and keeps the longest gap.
class Heartbeat
{
public:
    Heartbeat()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(5);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { tick(); });
    }
    void start()
    {
        m_longest = 0;
        m_blocked = 0;
        m_clock.start();
        m_last = 0;
        m_timer.start();
    }
    void stop() { m_timer.stop(); }
    qint64 longest() const { return m_longest; }
    /// Time beyond the 5 ms rhythm, summed: how long input waited in all.
    qint64 blocked() const { return m_blocked; }

private:
    void tick()
    {
        const qint64 now = m_clock.elapsed();
        const qint64 gap = now - m_last;
        m_longest = std::max(m_longest, gap);
        if (gap > 16)
            m_blocked += gap - 5;
        m_last = now;
    }

    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_last = 0;
    qint64 m_longest = 0;
    qint64 m_blocked = 0;
};

bool waitUntil(const std::function<bool()> &done, int timeoutMs = 60000)
{
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    return true;
}

/// Lets `frames` more frames be drawn.
void drawFrames(QQuickWindow *window, int frames)
{
    int swapped = 0;
    const auto connection =
        QObject::connect(window, &QQuickWindow::frameSwapped, [&swapped] { ++swapped; });
    window->update();
    waitUntil(
        [&] {
            window->update();
            return swapped >= frames;
        },
        10000);
    QObject::disconnect(connection);
}

struct Figures
{
    qint64 toScreen = 0;
    qint64 longest = 0;
    qint64 blocked = 0;
    /// How long building the screen took, in one stretch; -1 where nothing was built.
    qint64 built = -1;
};

void print(const char *what, const Figures &figures)
{
    std::printf("%-44s on screen after %5lld ms; longest stall %4lld ms; stalls in all %5lld ms",
                what, static_cast<long long>(figures.toScreen),
                static_cast<long long>(figures.longest), static_cast<long long>(figures.blocked));
    if (figures.built >= 0)
        std::printf("; screen built in %3lld ms", static_cast<long long>(figures.built));
    std::printf("\n");
    std::fflush(stdout);
}

/// Whether building the screen counts among the stalls measured.
enum class Building {
    Counted,
    NotCounted,
};

/// Pushes `screen` with `properties` on the stack, and measures until `shown` holds and the
/// result has been drawn, then on until `settled` holds.
Figures open(QQuickWindow *window, QQuickItem *stack, const QString &screen,
             const QVariantMap &properties, const std::function<bool(QQuickItem *)> &shown,
             const std::function<bool(QQuickItem *)> &settled, Building building,
             QQuickItem **opened)
{
    Heartbeat heartbeat;
    QElapsedTimer clock;
    if (building == Building::Counted)
        heartbeat.start();
    clock.start();
    // Builds the screen before it returns.
    QMetaObject::invokeMethod(stack, "openScreen", Q_ARG(QVariant, screen),
                              Q_ARG(QVariant, properties));
    const qint64 built = clock.elapsed();
    if (building == Building::NotCounted)
        heartbeat.start();
    QQuickItem *item = nullptr;
    waitUntil([&] {
        item = stack->property("currentItem").value<QQuickItem *>();
        return item && item->objectName() != QLatin1String("blank") && shown(item);
    });
    drawFrames(window, 3);
    Figures figures{clock.elapsed(), 0, 0, built};
    waitUntil([&] { return settled(item); });
    heartbeat.stop();
    figures.longest = heartbeat.longest();
    figures.blocked = heartbeat.blocked();
    *opened = item;
    return figures;
}

/// Scrolls the list `name` of `screen` to its end and back, drawing on the way.
Figures scroll(QQuickWindow *window, QQuickItem *screen, const char *name)
{
    auto *list = screen->findChild<QQuickItem *>(QString::fromLatin1(name));
    Heartbeat heartbeat;
    QElapsedTimer clock;
    heartbeat.start();
    clock.start();
    QMetaObject::invokeMethod(list, "positionViewAtEnd");
    drawFrames(window, 2);
    QMetaObject::invokeMethod(list, "positionViewAtBeginning");
    drawFrames(window, 2);
    Figures figures{clock.elapsed(), 0, 0};
    heartbeat.stop();
    figures.longest = heartbeat.longest();
    figures.blocked = heartbeat.blocked();
    return figures;
}

/// Flings the list `name` of `screen` from where it stands to its end, as a finger would but at
/// `velocity` points a second, slowing down only at the end.
Figures fling(QQuickWindow *window, QQuickItem *screen, const char *name, qreal velocity)
{
    auto *list = screen->findChild<QQuickItem *>(QString::fromLatin1(name));
    list->setProperty("maximumFlickVelocity", velocity);
    // Almost no friction: the fling keeps its speed over the whole list.
    list->setProperty("flickDeceleration", 1.0);
    Heartbeat heartbeat;
    QElapsedTimer clock;
    heartbeat.start();
    clock.start();
    QMetaObject::invokeMethod(list, "flick", Q_ARG(qreal, 0), Q_ARG(qreal, -velocity));
    waitUntil([list] { return !list->property("moving").toBool(); }, 600000);
    drawFrames(window, 2);
    if (!list->property("atYEnd").toBool())
        std::printf("  (the fling stopped before the end of the list)\n");
    Figures figures{clock.elapsed(), 0, 0};
    heartbeat.stop();
    figures.longest = heartbeat.longest();
    figures.blocked = heartbeat.blocked();
    return figures;
}

QVariantMap benchRepository()
{
    return {{QStringLiteral("id"), 1},
            {QStringLiteral("name"), QStringLiteral("r")},
            {QStringLiteral("full_name"), QStringLiteral("o/r")},
            {QStringLiteral("owner"), QVariantMap{{QStringLiteral("login"), QStringLiteral("o")}}}};
}

void runInbox(QQuickWindow *window, QQuickItem *stack)
{
    const int inboxRows = inboxRepositories * inboxPullsEach;
    QQuickItem *inbox = nullptr;
    // The rows are on screen once the list holds them all; the load ends a little later, once
    // the inbox cache is written.
    const Figures inboxOpened = open(
        window, stack, QStringLiteral("InboxView"), {},
        [inboxRows](QQuickItem *view) {
            auto *list = view->findChild<QQuickItem *>(QStringLiteral("inboxList"));
            return list && list->property("count").toInt() == inboxRows;
        },
        [](QQuickItem *view) {
            return !view->property("vm").value<QObject *>()->property("isLoading").toBool();
        },
        Building::NotCounted, &inbox);
    const QByteArray inboxWhat = "inbox, " + QByteArray::number(inboxRepositories) + " repos x " +
                                 QByteArray::number(inboxPullsEach) + " PRs (" +
                                 QByteArray::number(inboxRows) + " rows)";
    print(inboxWhat.constData(), inboxOpened);
    print("  flung from the first row to the last",
          fling(window, inbox, "inboxList", flingVelocity));
}

void runDiff(QQuickWindow *window, QQuickItem *stack)
{
    const QVariantMap repo = benchRepository();
    auto diffLoaded = [](QQuickItem *view) {
        QObject *model = view->property("diff").value<QObject *>();
        return model && !model->property("isLoading").toBool() &&
               model->property("count").toInt() > 0;
    };
    for (const QString &file : {QString::fromUtf8(middleFile.name), QStringLiteral("absent.cpp")}) {
        QQuickItem *view = nullptr;
        const QVariantMap properties{{QStringLiteral("repo"), repo},
                                     {QStringLiteral("prNumber"), 1},
                                     {QStringLiteral("filename"), file}};
        const Figures opened = open(window, stack, QStringLiteral("DiffView"), properties,
                                    diffLoaded, diffLoaded, Building::Counted, &view);
        const int lines = view->property("diff").value<QObject *>()->property("count").toInt();
        const QByteArray what =
            "20 MB diff, " + file.toUtf8() + " (" + QByteArray::number(lines) + " lines)";
        print(what.constData(), opened);
        print("  scrolling it to the end and back", scroll(window, view, "diffLines"));
    }
}

void runLog(QQuickWindow *window, QQuickItem *stack)
{
    const QVariantMap repo = benchRepository();
    QQuickItem *logView = nullptr;
    auto logLoaded = [](QQuickItem *view) {
        QObject *model = view->property("log").value<QObject *>();
        return model && !model->property("isLoading").toBool() &&
               !model->property("text").toString().isEmpty();
    };
    const Figures logOpened = open(window, stack, QStringLiteral("JobLogsView"),
                                   {{QStringLiteral("repo"), repo},
                                    {QStringLiteral("runID"), 1},
                                    {QStringLiteral("jobID"), 1},
                                    {QStringLiteral("jobName"), QStringLiteral("test")}},
                                   logLoaded, logLoaded, Building::Counted, &logView);
    print("5 MB job log", logOpened);
    print("  scrolling it to the end and back", scroll(window, logView, "logText"));
}

const char *scene = R"(
import QtQuick
import QtQuick.Controls
import Kestrine

ApplicationWindow {
    width: 390
    height: 844
    visible: true
    StackView {
        objectName: "stack"
        anchors.fill: parent
        initialItem: Item { objectName: "blank" }
        function openScreen(screen, properties) {
            const component = Qt.createComponent("qrc:/qt/qml/Kestrine/" + screen + ".qml");
            replace(null, component, properties, StackView.Immediate);
        }
    }
}
)";

} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QCoreApplication::setOrganizationName(QStringLiteral("norrum"));
    QCoreApplication::setApplicationName(QStringLiteral("kestrine"));
    QGuiApplication app(argc, argv);
    QQuickStyle::setStyle(QStringLiteral("Material"));
    Storage::useEphemeral();

    // The inbox's simulation, and the large diff and log of pull request o/r#1 and its job 1.
    const QByteArray diff = testing::largeDiff(diffBytes, middleFile);
    const QByteArray log = testing::largeLog(logBytes);
    const SimulationThread server(
        fixtures::largeInstanceSeed(inboxRepositories, inboxPullsEach, token),
        std::chrono::milliseconds(0), [&diff, &log](FakeGiteaServer &routes) {
            routes.route("GET", QStringLiteral("/api/v1/repos/o/r/pulls/1.diff"),
                         FakeResponse::text(diff));
            routes.route("GET", QStringLiteral("/api/v1/repos/o/r/actions/jobs/1/logs"),
                         FakeResponse::text(log));
        });
    if (server.url().isEmpty())
        return 1;
    // The log and the settings the screens work with, made and installed as the app does.
    kestrine::testing::TestStores stores;
    stores.settings.setInstanceURL(server.url());
    stores.settings.setToken(token);

    QQmlEngine engine;
    QmlServices::install(engine, stores.settings, stores.log);
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    QQmlComponent component(&engine);
    component.setData(scene, QUrl(QStringLiteral("bench.qml")));
    auto *window = qobject_cast<QQuickWindow *>(component.create());
    if (!window) {
        std::fprintf(stderr, "%s\n", qPrintable(component.errorString()));
        return 1;
    }
    auto *stack = window->findChild<QQuickItem *>(QStringLiteral("stack"));
    drawFrames(window, 2);

    // Cases may be named on the command line ("inbox", "diff", "log"); all run by default.
    QStringList cases = app.arguments().mid(1);
    if (cases.isEmpty())
        cases = {QStringLiteral("inbox"), QStringLiteral("diff"), QStringLiteral("log")};

    std::printf("Opening large contents in the screens (%s)\n", qPrintable(app.platformName()));
    if (cases.contains(QStringLiteral("inbox")))
        runInbox(window, stack);
    if (cases.contains(QStringLiteral("diff")))
        runDiff(window, stack);
    if (cases.contains(QStringLiteral("log")))
        runLog(window, stack);

    delete window;
    return 0;
}
