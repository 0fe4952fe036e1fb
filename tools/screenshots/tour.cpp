#include "tour.h"

#include "app.h"
#include "demoinstance.h"
#include "fakegiteaserver.h"
#include "giteasimulation.h"
#include "logstore.h"
#include "recordlistmodel.h"
#include "settingsstore.h"
#include "strangerhost.h"

#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQuickItem>
#include <QQuickWindow>
#include <QThread>

namespace kestrine {
namespace {

/// A JSON answer that arrives after `ms` milliseconds.
FakeResponse delayed(int status, const QByteArray &body, int ms)
{
    FakeResponse response = FakeResponse::json(body, status);
    response.delay = std::chrono::milliseconds(ms);
    return response;
}

QObject *objectProperty(QObject *object, const char *name)
{
    return object ? object->property(name).value<QObject *>() : nullptr;
}

/// List model `name` of `detail`'s view model ("filesModel", "runsModel", ...).
const RecordListModel *listModel(QObject *detail, const char *name)
{
    return qobject_cast<const RecordListModel *>(
        objectProperty(objectProperty(detail, "vm"), name));
}

/// The inbox row of pull request `number`, as the inbox model holds it.
QVariant rowOf(QObject *inbox, qint64 number)
{
    const QVariantList rows = objectProperty(inbox, "vm")->property("displayedRows").toList();
    for (const QVariant &row : rows) {
        if (row.toMap()
                .value(QStringLiteral("pr"))
                .toMap()
                .value(QStringLiteral("number"))
                .toLongLong() == number)
            return row;
    }
    return {};
}

} // namespace

/// The steps of the tour, with the small moves they share.
struct TourSteps
{
    static void demoScenes(Tour &t);
    static void hostileScenes(Tour &t, testing::StrangerHost &stranger);

    static void reloadInbox(QObject *inboxVm)
    {
        QMetaObject::invokeMethod(inboxVm, "reload");
        Tour::waitFor([&] { return !inboxVm->property("isLoading").toBool(); });
        Tour::settle(300);
    }

    /// Opens `row` from the inbox and waits until its pull request has loaded or failed.
    static QObject *openDetail(Tour &t, const QVariant &row)
    {
        QMetaObject::invokeMethod(t.find(QStringLiteral("inboxView")), "openRow",
                                  Q_ARG(QVariant, row));
        return loadedDetail(t);
    }

    /// The detail screen just opened, once its pull request has loaded or failed.
    static QObject *loadedDetail(Tour &t)
    {
        Tour::settle(100);
        QObject *detail = t.find(QStringLiteral("prDetailView"));
        QObject *vm = objectProperty(detail, "vm");
        Tour::waitFor([&] {
            return (vm->property("hasPr").toBool() ||
                    !vm->property("errorMessage").toString().isEmpty()) &&
                   !vm->property("isLoading").toBool() &&
                   !vm->property("isActionsLoading").toBool();
        });
        Tour::settle(500);
        return detail;
    }

    /// Waits until `detail` has the `count` commit statuses of other CI the demo gives its head
    /// commit, which arrive after the rest of the pull request.
    static void expectStatuses(Tour &t, QObject *detail, int count)
    {
        const RecordListModel *statuses = listModel(detail, "statusesModel");
        if (!Tour::waitFor([&] { return statuses->rowCount() == count; }, 5000))
            t.fail(QStringLiteral("%1 commit statuses instead of %2")
                       .arg(statuses->rowCount())
                       .arg(count));
        Tour::settle(200);
    }

    /// Opens the diff of `file` from `detail` and waits until it has loaded.
    static void openDiff(Tour &t, QObject *detail, const QString &filename)
    {
        QMetaObject::invokeMethod(detail, "openFile", Q_ARG(QVariant, filename));
        Tour::settle(200);
        Tour::waitFor([&] {
            return !objectProperty(t.find(QStringLiteral("diffView")), "diff")
                        ->property("isLoading")
                        .toBool();
        });
        Tour::settle(500);
    }

    /// Opens the log of job `jobRow` of the run in row `runRow` of `detail`'s checks and waits
    /// until it has loaded.
    static void openLogs(Tour &t, QObject *detail, int runRow, int jobRow)
    {
        const RecordListModel *runs = listModel(detail, "runsModel");
        const auto *jobs =
            qobject_cast<const RecordListModel *>(runs->valueAt(runRow, "jobs").value<QObject *>());
        QMetaObject::invokeMethod(detail, "openLogs",
                                  Q_ARG(QVariant, runs->valueAt(runRow, "runID")),
                                  Q_ARG(QVariant, jobs->valueAt(jobRow, "jobID")),
                                  Q_ARG(QVariant, jobs->valueAt(jobRow, "name")));
        Tour::settle(200);
        Tour::waitFor([&] {
            return !objectProperty(t.find(QStringLiteral("jobLogsView")), "log")
                        ->property("isLoading")
                        .toBool();
        });
        Tour::settle(500);
    }

    static void back(Tour &t)
    {
        QMetaObject::invokeMethod(t.window(), "back");
        Tour::settle(500);
    }

    /// Types `text` into the inbox's search field, which keeps the focus as while typing; an
    /// empty text clears the field and lets the focus go.
    static void search(Tour &t, const QString &text)
    {
        QObject *field = t.find(QStringLiteral("inboxSearchField"));
        field->setProperty("text", text);
        if (text.isEmpty())
            field->setProperty("focus", false);
        else
            QMetaObject::invokeMethod(field, "forceActiveFocus");
        Tour::settle(400);
    }

    /// Copies the address of `detail`'s pull request as a long press on its header line does,
    /// shows the note that says so as scene `scene`, and waits until the note is gone.
    static void copyLink(Tour &t, QObject *detail, const QString &scene)
    {
        QMetaObject::invokeMethod(detail, "copyWebLink");
        Tour::settle(400);
        t.shoot(scene);
        QObject *toast = objectProperty(detail, "toast");
        if (!Tour::waitFor([&] { return toast && !toast->property("shown").toBool(); }, 5000))
            t.fail(QStringLiteral("the note of scene %1 stays").arg(scene));
    }

    static void selectTab(QObject *detail, int tab)
    {
        QMetaObject::invokeMethod(detail, "selectTab", Q_ARG(QVariant, tab));
        Tour::settle(400);
    }

    /// Back to the demo instance's own answers.
    static void restoreDemo(Tour &t)
    {
        t.server().clearRoutes();
        t.demo().simulation()->install(&t.server());
    }
};

Tour::Tour(KestrineApp &app, QString folder, QStringList only)
    : m_app(app)
    , m_folder(std::move(folder))
    , m_only(std::move(only))
{}

QQuickWindow *Tour::window() const
{
    return m_app.window();
}

DemoInstance &Tour::demo() const
{
    return *m_app.demo();
}

SettingsStore &Tour::settings() const
{
    return *m_app.settings();
}

LogStore &Tour::log() const
{
    return *m_app.log();
}

AppOptions Tour::appOptions()
{
    return AppOptions{.demo = true, .demoServer = [] {
                          return std::make_unique<FakeGiteaServer>();
                      }};
}

FakeGiteaServer &Tour::server() const
{
    return *qobject_cast<FakeGiteaServer *>(&demo().server());
}

void Tour::settle(int ms)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(5);
    }
}

bool Tour::waitFor(const std::function<bool()> &done, int ms)
{
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > ms)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(5);
    }
    return true;
}

QObject *Tour::find(const QString &name)
{
    const QList<QObject *> all = window()->findChildren<QObject *>(name);
    QObject *found = nullptr;
    for (QObject *object : all) {
        auto *item = qobject_cast<QQuickItem *>(object);
        if (!item || item->isVisible())
            found = object;
    }
    if (!found && !all.isEmpty())
        found = all.constLast();
    if (!found)
        fail(QStringLiteral("no object named %1").arg(name));
    return found;
}

void Tour::fail(const QString &what)
{
    qWarning("tour: %s", qPrintable(what));
    m_failures.append(what);
}

void Tour::shoot(const QString &name)
{
    m_scenes.append(name);
    settle(150);
    if (m_inspect)
        m_inspect(name, window());
    if (m_folder.isEmpty() || !wanted(name))
        return;
    const QImage image = window()->grabWindow();
    const QString path = m_folder + u'/' + name + QStringLiteral(".png");
    if (!image.save(path))
        fail(QStringLiteral("cannot write %1").arg(path));
    else
        m_written.append(path);
}

void Tour::run(testing::StrangerHost &stranger)
{
    if (!qobject_cast<FakeGiteaServer *>(&demo().server())) {
        fail(QStringLiteral("the app was not started with Tour::appOptions()"));
        return;
    }
    TourSteps::demoScenes(*this);
    TourSteps::hostileScenes(*this, stranger);
}

void TourSteps::demoScenes(Tour &t)
{
    QQuickWindow *window = t.window();
    QObject *inbox = t.find(QStringLiteral("inboxView"));
    QObject *inboxVm = objectProperty(inbox, "vm");
    SettingsStore *settings = &t.settings();
    auto inboxLoaded = [&] {
        return !inboxVm->property("isLoading").toBool() && inboxVm->property("count").toInt() > 0;
    };

    // --- Inbox
    Tour::waitFor(inboxLoaded);
    Tour::settle(600);
    t.shoot(QStringLiteral("inbox"));

    // Pull to refresh, caught while the load runs: the server answers the repository list late.
    t.server().route("GET", QStringLiteral("/api/v1/user/repos"), delayed(200, "[]", 3000));
    QMetaObject::invokeMethod(t.find(QStringLiteral("listRefresh")), "trigger");
    Tour::settle(700);
    t.shoot(QStringLiteral("inbox-refreshing"));
    Tour::waitFor([&] { return !inboxVm->property("isLoading").toBool(); });
    Tour::settle(300);
    t.shoot(QStringLiteral("inbox-empty"));
    restoreDemo(t);
    reloadInbox(inboxVm);

    // The repository list fails: the inbox keeps what it shows and says why.
    t.server().route("GET", QStringLiteral("/api/v1/user/repos"),
                     FakeResponse::json(R"({"message":"internal error"})", 500));
    reloadInbox(inboxVm);
    Tour::settle(400);
    t.shoot(QStringLiteral("inbox-error"));
    QMetaObject::invokeMethod(t.find(QStringLiteral("inboxErrorAlert")), "close");
    restoreDemo(t);
    reloadInbox(inboxVm);

    const QString token = settings->token();
    settings->setToken(QString());
    Tour::settle(300);
    t.shoot(QStringLiteral("inbox-not-configured"));
    settings->setToken(token);
    Tour::settle(200);

    // Searching: the rows that match as the user types, then a search that finds none.
    search(t, QStringLiteral("cache"));
    t.shoot(QStringLiteral("inbox-search"));
    search(t, QStringLiteral("kubernetes"));
    t.shoot(QStringLiteral("inbox-search-no-matches"));
    search(t, QString());

    // --- Settings
    QMetaObject::invokeMethod(inbox, "openSettings");
    Tour::settle(600);
    t.shoot(QStringLiteral("settings"));
    QObject *settingsView = t.find(QStringLiteral("settingsView"));
    QObject *tester = objectProperty(settingsView, "tester");
    QMetaObject::invokeMethod(settingsView, "testConnection");
    Tour::waitFor([&] { return !tester->property("testing").toBool(); });
    Tour::settle(300);
    t.shoot(QStringLiteral("settings-test-success"));
    settingsView->setProperty("instanceURL", QStringLiteral("not a url"));
    QMetaObject::invokeMethod(settingsView, "testConnection");
    Tour::waitFor([&] { return !tester->property("testing").toBool(); });
    Tour::settle(300);
    t.shoot(QStringLiteral("settings-test-failure"));
    settingsView->setProperty("instanceURL", settings->instanceURL());
    settingsView->setProperty("token", QStringLiteral("wrong-token"));
    QMetaObject::invokeMethod(settingsView, "testConnection");
    Tour::waitFor([&] { return !tester->property("testing").toBool(); });
    Tour::settle(300);
    t.shoot(QStringLiteral("settings-test-unauthorized"));
    settingsView->setProperty("token", settings->token());
    settingsView->setProperty("mergeGateMode", int(MergeGateMode::Block));
    settingsView->setProperty("instanceURL", QStringLiteral("   "));
    Tour::settle(300);
    t.shoot(QStringLiteral("settings-save-disabled"));
    settingsView->setProperty("instanceURL", settings->instanceURL());
    // The lower half of the form.
    for (QQuickItem *item : settingsView->findChildren<QQuickItem *>()) {
        if (QByteArray(item->metaObject()->className()).startsWith("QQuickFlickable")) {
            item->setProperty("contentY",
                              item->property("contentHeight").toReal() - item->height());
            break;
        }
    }
    Tour::settle(300);
    t.shoot(QStringLiteral("settings-bottom"));
    QMetaObject::invokeMethod(objectProperty(settingsView, "logoutConfirm"), "open");
    Tour::settle(500);
    t.shoot(QStringLiteral("settings-logout-confirm"));
    QMetaObject::invokeMethod(objectProperty(settingsView, "logoutConfirm"), "close");
    Tour::settle(300);

    // Monitored repositories, with two ticked.
    settingsView->setProperty("monitoredRepos", QStringList{QStringLiteral("norrum/kestrel-web"),
                                                            QStringLiteral("norrum/harbor")});
    QMetaObject::invokeMethod(t.find(QStringLiteral("monitoredReposLink")), "clicked");
    Tour::settle(200);
    QObject *reposView = t.find(QStringLiteral("monitoredReposView"));
    Tour::waitFor(
        [&] { return !objectProperty(reposView, "loader")->property("isLoading").toBool(); });
    Tour::settle(500);
    t.shoot(QStringLiteral("monitored-repos"));
    QMetaObject::invokeMethod(t.find(QStringLiteral("settingsSheet")), "back");
    Tour::settle(400);
    t.server().route("GET", QStringLiteral("/api/v1/user/repos"),
                     FakeResponse::json(R"({"message":"internal error"})", 500));
    QMetaObject::invokeMethod(t.find(QStringLiteral("monitoredReposLink")), "clicked");
    Tour::settle(200);
    reposView = t.find(QStringLiteral("monitoredReposView"));
    Tour::waitFor(
        [&] { return !objectProperty(reposView, "loader")->property("isLoading").toBool(); });
    Tour::settle(500);
    t.shoot(QStringLiteral("monitored-repos-error"));
    restoreDemo(t);
    QMetaObject::invokeMethod(t.find(QStringLiteral("settingsSheet")), "back");
    Tour::settle(400);

    // Logs.
    QMetaObject::invokeMethod(t.find(QStringLiteral("viewLogsLink")), "clicked");
    Tour::settle(600);
    t.shoot(QStringLiteral("logs"));
    QObject *logsView = t.find(QStringLiteral("logsView"));
    QMetaObject::invokeMethod(logsView, "share");
    Tour::settle(600);
    t.shoot(QStringLiteral("logs-share-sheet"));
    QMetaObject::invokeMethod(t.find(QStringLiteral("copyRow")), "clicked");
    Tour::settle(300);
    t.shoot(QStringLiteral("logs-share-copied"));
    QMetaObject::invokeMethod(objectProperty(logsView, "shareSheet"), "close");
    Tour::settle(400);
    t.log().clear();
    Tour::settle(300);
    t.shoot(QStringLiteral("logs-empty"));
    QMetaObject::invokeMethod(t.find(QStringLiteral("settingsSheet")), "back");
    Tour::settle(400);
    QMetaObject::invokeMethod(t.find(QStringLiteral("settingsSheet")), "close");
    Tour::settle(500);

    // --- Detail

    // Loading: the pull request answers late.
    t.server().route("GET", QStringLiteral("/api/v1/repos/norrum/harbor/pulls/142"),
                     delayed(404, "{}", 2000));
    QMetaObject::invokeMethod(inbox, "openRow", Q_ARG(QVariant, rowOf(inbox, 142)));
    Tour::settle(600);
    t.shoot(QStringLiteral("detail-loading"));
    Tour::settle(2000);
    t.shoot(QStringLiteral("detail-load-failed"));
    QMetaObject::invokeMethod(objectProperty(t.find(QStringLiteral("prDetailView")), "errorAlert"),
                              "close");
    Tour::settle(400);
    restoreDemo(t);
    back(t);

    QObject *detail = openDetail(t, rowOf(inbox, 142));
    t.shoot(QStringLiteral("detail-overview"));
    copyLink(t, detail, QStringLiteral("detail-link-copied"));
    selectTab(detail, 1);
    t.shoot(QStringLiteral("detail-conversation"));
    selectTab(detail, 2);
    t.shoot(QStringLiteral("detail-files"));
    selectTab(detail, 3);
    expectStatuses(t, detail, 1);
    t.shoot(QStringLiteral("detail-checks"));
    selectTab(detail, 0);
    QMetaObject::invokeMethod(detail, "openMergeSheet");
    Tour::settle(600);
    t.shoot(QStringLiteral("merge-sheet-passing"));
    QMetaObject::invokeMethod(objectProperty(detail, "mergeSheet"), "close");
    Tour::settle(400);
    QObject *reviewButton = t.find(QStringLiteral("reviewButton"));
    QMetaObject::invokeMethod(reviewButton, "clicked");
    Tour::settle(500);
    t.shoot(QStringLiteral("detail-review-menu"));
    QMetaObject::invokeMethod(objectProperty(detail, "reviewMenu"), "close");
    Tour::settle(300);
    QMetaObject::invokeMethod(detail, "openCommentSheet", Q_ARG(QVariant, false));
    Tour::settle(600);
    t.shoot(QStringLiteral("comment-sheet"));
    QObject *commentSheet = objectProperty(detail, "commentSheet");
    QObject *editor = t.find(QStringLiteral("commentEditor"));
    editor->setProperty(
        "text",
        QStringLiteral(
            "Let's wait for the 1.4 release branch first.\n\nOtherwise this looks good to me."));
    Tour::settle(300);
    t.shoot(QStringLiteral("comment-sheet-text"));
    QMetaObject::invokeMethod(commentSheet, "close");
    Tour::settle(400);
    QMetaObject::invokeMethod(detail, "openCommentSheet", Q_ARG(QVariant, true));
    Tour::settle(400);
    t.find(QStringLiteral("commentEditor"))->setProperty("text", QStringLiteral("   \n  "));
    Tour::settle(300);
    t.shoot(QStringLiteral("request-changes-sheet-blank"));
    QMetaObject::invokeMethod(commentSheet, "close");
    Tour::settle(400);
    QMetaObject::invokeMethod(objectProperty(detail, "closeConfirm"), "open");
    Tour::settle(500);
    t.shoot(QStringLiteral("detail-close-confirm"));
    QMetaObject::invokeMethod(objectProperty(detail, "closeConfirm"), "close");
    Tour::settle(400);

    // Busy: an approval that takes its time.
    t.server().route("POST", QStringLiteral("/api/v1/repos/norrum/harbor/pulls/142/reviews"),
                     delayed(500, R"({"message":"review failed"})", 1500));
    QMetaObject::invokeMethod(detail, "approve");
    Tour::settle(600);
    t.shoot(QStringLiteral("detail-busy"));
    Tour::settle(1400);
    t.shoot(QStringLiteral("detail-error"));
    QMetaObject::invokeMethod(objectProperty(detail, "errorAlert"), "close");
    Tour::settle(400);
    restoreDemo(t);

    // Diff of one file, then of a file whose section is not found (the whole diff).
    openDiff(t, detail, QStringLiteral("fetcher/fetcher.go"));
    t.shoot(QStringLiteral("diff"));
    back(t);
    openDiff(t, detail, QStringLiteral("docs/configuration.md"));
    t.shoot(QStringLiteral("diff-markdown-file"));
    back(t);
    back(t);

    // A pull request with red CI: its checks, the merge sheet in warn and in block mode, a re-run.
    detail = openDetail(t, rowOf(inbox, 139));
    selectTab(detail, 3);
    t.shoot(QStringLiteral("detail-checks-failing"));
    const RecordListModel *runs = listModel(detail, "runsModel");
    QMetaObject::invokeMethod(detail, "askToRerun", Q_ARG(QVariant, runs->valueAt(0, "runID")),
                              Q_ARG(QVariant, runs->valueAt(0, "name")));
    Tour::settle(500);
    t.shoot(QStringLiteral("detail-rerun-confirm"));
    QMetaObject::invokeMethod(objectProperty(detail, "rerunConfirm"), "close");
    Tour::settle(400);
    QMetaObject::invokeMethod(detail, "openMergeSheet");
    Tour::settle(600);
    t.shoot(QStringLiteral("merge-sheet-failing-warn"));
    QMetaObject::invokeMethod(objectProperty(detail, "mergeSheet"), "close");
    Tour::settle(400);
    settings->setMergeGateMode(MergeGateMode::Block);
    Tour::settle(300);
    t.shoot(QStringLiteral("detail-merge-blocked"));
    QMetaObject::invokeMethod(detail, "openMergeSheet");
    Tour::settle(600);
    t.shoot(QStringLiteral("merge-sheet-failing-block"));
    QMetaObject::invokeMethod(objectProperty(detail, "mergeSheet"), "close");
    Tour::settle(400);
    settings->setMergeGateMode(MergeGateMode::Warn);
    selectTab(detail, 1);
    t.shoot(QStringLiteral("detail-conversation-changes"));

    // Job log of the failing test job.
    const auto *failingJobs =
        qobject_cast<const RecordListModel *>(runs->valueAt(0, "jobs").value<QObject *>());
    int failingJob = 0;
    for (int row = 0; row < failingJobs->count(); ++row) {
        if (failingJobs->valueAt(row, "failed").toBool())
            failingJob = row;
    }
    openLogs(t, detail, 0, failingJob);
    t.shoot(QStringLiteral("job-log"));
    QMetaObject::invokeMethod(t.find(QStringLiteral("jobLogsView")), "share");
    Tour::settle(600);
    t.shoot(QStringLiteral("job-log-share-sheet"));
    QMetaObject::invokeMethod(objectProperty(t.find(QStringLiteral("jobLogsView")), "shareSheet"),
                              "close");
    Tour::settle(400);
    back(t);
    back(t);

    // A draft whose CI is still running.
    detail = openDetail(t, rowOf(inbox, 145));
    t.shoot(QStringLiteral("detail-draft"));
    selectTab(detail, 3);
    t.shoot(QStringLiteral("detail-checks-running"));
    QMetaObject::invokeMethod(detail, "openMergeSheet");
    Tour::settle(600);
    t.shoot(QStringLiteral("merge-sheet-running"));
    QMetaObject::invokeMethod(objectProperty(detail, "mergeSheet"), "close");
    Tour::settle(400);
    back(t);

    // Cancelled CI; no description; a merged pull request.
    detail = openDetail(t, rowOf(inbox, 61));
    selectTab(detail, 3);
    t.shoot(QStringLiteral("detail-checks-cancelled"));
    QMetaObject::invokeMethod(detail, "openMergeSheet");
    Tour::settle(600);
    t.shoot(QStringLiteral("merge-sheet-cancelled"));
    QMetaObject::invokeMethod(objectProperty(detail, "mergeSheet"), "close");
    Tour::settle(400);
    back(t);
    detail = openDetail(t, rowOf(inbox, 17));
    t.shoot(QStringLiteral("detail-no-description"));
    selectTab(detail, 1);
    t.shoot(QStringLiteral("detail-no-comments"));
    selectTab(detail, 3);
    expectStatuses(t, detail, 2);
    t.shoot(QStringLiteral("detail-no-runs"));
    back(t);
    QVariantMap mergedRow = rowOf(inbox, 142).toMap();
    QVariantMap mergedPr;
    mergedPr.insert(QStringLiteral("number"), 137);
    mergedRow.insert(QStringLiteral("pr"), mergedPr);
    detail = openDetail(t, mergedRow);
    t.shoot(QStringLiteral("detail-merged-pr"));
    back(t);

    // Merging: the sheet while the merge is under way, and a merge the server refuses.
    detail = openDetail(t, rowOf(inbox, 58));
    QMetaObject::invokeMethod(detail, "openMergeSheet");
    Tour::settle(600);
    t.server().route("POST", QStringLiteral("/api/v1/repos/norrum/kestrel-web/pulls/58/merge"),
                     delayed(405, R"({"message":"Please try again later"})", 1500));
    QMetaObject::invokeMethod(objectProperty(detail, "mergeSheet"), "merge");
    Tour::settle(500);
    t.shoot(QStringLiteral("merge-sheet-merging"));
    Tour::waitFor(
        [&] { return !objectProperty(detail, "mergeSheet")->property("isMerging").toBool(); });
    Tour::settle(600);
    t.shoot(QStringLiteral("merge-sheet-failed"));
    QMetaObject::invokeMethod(objectProperty(detail, "errorAlert"), "close");
    Tour::settle(300);
    QMetaObject::invokeMethod(objectProperty(detail, "mergeSheet"), "close");
    Tour::settle(400);
    restoreDemo(t);
    back(t);

    // A merge that goes through: the confirmation over everything, then back to the inbox.
    detail = openDetail(t, rowOf(inbox, 23));
    detail->setProperty("mergedDisplayTime", 60000);
    QMetaObject::invokeMethod(detail, "openMergeSheet");
    Tour::settle(600);
    QMetaObject::invokeMethod(objectProperty(detail, "mergeSheet"), "merge");
    Tour::waitFor([&] { return detail->property("showMergeSuccess").toBool(); });
    Tour::settle(700);
    t.shoot(QStringLiteral("merged-overlay"));
    back(t);

    // The inbox reloads once the settings sheet closes after a merge.
    QMetaObject::invokeMethod(inbox, "openSettings");
    Tour::settle(500);
    QMetaObject::invokeMethod(t.find(QStringLiteral("settingsSheet")), "close");
    Tour::waitFor([&] { return !inboxVm->property("isLoading").toBool(); });
    Tour::settle(600);
    t.shoot(QStringLiteral("inbox-after-merge"));

    // A notification activated while the settings sheet was open: its pull request on top of the
    // inbox, the sheet put away.
    QMetaObject::invokeMethod(inbox, "openSettings");
    Tour::settle(500);
    t.m_app.openPullRequest(*PullRequestReference::parse(QStringLiteral("norrum/harbor#142")));
    loadedDetail(t);
    t.shoot(QStringLiteral("detail-from-notification"));
    back(t);

    // A desktop-sized window.
    window->resize(1280, 800);
    Tour::settle(600);
    t.shoot(QStringLiteral("desktop-inbox"));
    search(t, QStringLiteral("harbor"));
    t.shoot(QStringLiteral("desktop-inbox-search"));
    search(t, QStringLiteral("kubernetes"));
    t.shoot(QStringLiteral("desktop-inbox-search-no-matches"));
    search(t, QString());
    detail = openDetail(t, rowOf(inbox, 142));
    t.shoot(QStringLiteral("desktop-detail"));
    selectTab(detail, 3);
    expectStatuses(t, detail, 1);
    t.shoot(QStringLiteral("desktop-detail-checks"));
    selectTab(detail, 0);
    copyLink(t, detail, QStringLiteral("desktop-detail-link-copied"));
    back(t);
    window->resize(390, 844);
    Tour::settle(300);

    // A repository whose full name is longer than the header's line, on a phone and a desktop.
    QJsonObject seed =
        QJsonDocument::fromJson(DemoInstance::seed(QDateTime::currentDateTimeUtc())).object();
    QJsonArray repositories = seed.value(QStringLiteral("repositories")).toArray();
    for (QJsonValueRef repository : repositories) {
        QJsonObject renamed = repository.toObject();
        if (renamed.value(QStringLiteral("name")) == QStringLiteral("harbor")) {
            renamed.insert(QStringLiteral("name"),
                           QStringLiteral("harbor-container-registry-release-automation"));
            repository = renamed;
        }
    }
    seed.insert(QStringLiteral("repositories"), repositories);
    if (!t.demo().simulation()->loadSeed(QJsonDocument(seed).toJson())) {
        t.fail(QStringLiteral("the renamed demo seed cannot be read: ") +
               t.demo().simulation()->loadError());
        return;
    }
    reloadInbox(inboxVm);
    openDetail(t, rowOf(inbox, 142));
    t.shoot(QStringLiteral("detail-long-repository-name"));
    back(t);
    window->resize(1280, 800);
    Tour::settle(600);
    openDetail(t, rowOf(inbox, 142));
    t.shoot(QStringLiteral("desktop-detail-long-repository-name"));
    back(t);
    window->resize(390, 844);
    Tour::settle(300);
}

void TourSteps::hostileScenes(Tour &t, testing::StrangerHost &stranger)
{
    // The same screens on an instance where every text was written by a stranger: HTML tags,
    // Markdown images, entities, right-to-left overrides, a title of 10,000 characters. Their
    // addresses point at `stranger`, which nothing may ever contact.
    QObject *inbox = t.find(QStringLiteral("inboxView"));
    QObject *inboxVm = objectProperty(inbox, "vm");
    if (!t.demo().simulation()->loadSeed(stranger.hostileSeed())) {
        t.fail(QStringLiteral("the hostile seed cannot be read: ") +
               t.demo().simulation()->loadError());
        return;
    }
    restoreDemo(t);
    t.log().clear();
    reloadInbox(inboxVm);
    Tour::settle(300);
    t.shoot(QStringLiteral("hostile-inbox"));
    // The user's own words are shown as typed too, markup and direction marks included.
    search(t, QStringLiteral("<b>bold"));
    t.shoot(QStringLiteral("hostile-inbox-search"));
    search(t, QStringLiteral("<i>none</i> \u202eevil"));
    t.shoot(QStringLiteral("hostile-inbox-search-no-matches"));
    search(t, QString());

    QObject *detail = openDetail(t, rowOf(inbox, 1));
    t.shoot(QStringLiteral("hostile-detail-overview"));
    selectTab(detail, 1);
    t.shoot(QStringLiteral("hostile-detail-conversation"));
    selectTab(detail, 2);
    t.shoot(QStringLiteral("hostile-detail-files"));
    selectTab(detail, 3);
    t.shoot(QStringLiteral("hostile-detail-checks"));

    openDiff(t, detail, listModel(detail, "filesModel")->valueAt(1, "filename").toString());
    t.shoot(QStringLiteral("hostile-diff"));
    back(t);

    openLogs(t, detail, 0, 1);
    t.shoot(QStringLiteral("hostile-job-log"));
    back(t);
    back(t);

    detail = openDetail(t, rowOf(inbox, 2));
    t.shoot(QStringLiteral("hostile-long-title"));
    detail->setProperty("titleExpanded", true);
    selectTab(detail, 1);
    t.shoot(QStringLiteral("hostile-long-title-expanded"));
    back(t);

    // The server refuses with a message of its own.
    t.server().route(
        "GET", QStringLiteral("/api/v1/repos/ann/{repo}/pulls/1"),
        FakeResponse::json(QStringLiteral(R"({"message":"<img src=\"http://%1/error.png\"> )"
                                          R"(<b>denied</b> &amp; \u202eevil"})")
                               .arg(stranger.address())
                               .toUtf8(),
                           500));
    detail = openDetail(t, rowOf(inbox, 1));
    t.shoot(QStringLiteral("hostile-error"));
    QMetaObject::invokeMethod(objectProperty(detail, "errorAlert"), "close");
    Tour::settle(400);
    back(t);
    restoreDemo(t);

    // The log, its lines naming the stranger's repository and carrying its messages.
    t.log().log(LogLevel::Warn, QStringLiteral("PR 1: <img src=\"http://%1/log.png\"> <b>bold</b> "
                                               "\u202eevil")
                                    .arg(stranger.address()));
    QMetaObject::invokeMethod(inbox, "openSettings");
    Tour::settle(600);
    QMetaObject::invokeMethod(t.find(QStringLiteral("viewLogsLink")), "clicked");
    Tour::settle(600);
    t.shoot(QStringLiteral("hostile-logs"));
    QMetaObject::invokeMethod(t.find(QStringLiteral("settingsSheet")), "back");
    Tour::settle(400);
    QMetaObject::invokeMethod(t.find(QStringLiteral("settingsSheet")), "close");
    Tour::settle(500);

    // The same at a desktop's size.
    t.window()->resize(1280, 800);
    Tour::settle(600);
    t.shoot(QStringLiteral("hostile-desktop-inbox"));
    openDetail(t, rowOf(inbox, 1));
    t.shoot(QStringLiteral("hostile-desktop-detail"));
    back(t);
    t.window()->resize(390, 844);
    Tour::settle(300);
}

} // namespace kestrine
