// The diff model and the job log model against the fake Gitea server.

#include "busypool.h"
#include "detailfixture.h"
#include "diffmodel.h"
#include "joblogmodel.h"
#include "outcome.h"

#include <QAbstractItemModelTester>
#include <QtTest>

using namespace kestrine;
using namespace kestrine::testing;

namespace {

const QString diffPath = apiRoot + QStringLiteral("/pulls/7.diff");
const QString logPath = apiRoot + QStringLiteral("/actions/jobs/110/logs");

const QByteArray twoFiles = "diff --git a/a.cpp b/a.cpp\n"
                            "--- a/a.cpp\n"
                            "+++ b/a.cpp\n"
                            "@@ -1 +1 @@\n"
                            "-int x;\n"
                            "+int y;\n"
                            "diff --git a/old.txt b/old.txt\n"
                            "deleted file mode 100644\n"
                            "--- a/old.txt\n"
                            "+++ /dev/null\n"
                            "@@ -1 +0,0 @@\n"
                            "-bye";

ChangedFile changedFile(const QString &name)
{
    ChangedFile file;
    file.filename = name;
    return file;
}

QStringList texts(const DiffModel &model)
{
    QStringList lines;
    for (int row = 0; row < model.rowCount(); ++row)
        lines.append(model.index(row).data(DiffModel::TextRole).toString());
    return lines;
}

QList<int> types(const DiffModel &model)
{
    QList<int> all;
    for (int row = 0; row < model.rowCount(); ++row)
        all.append(model.index(row).data(DiffModel::TypeRole).toInt());
    return all;
}

} // namespace

class TestDiffAndLogModels : public DetailTestCase
{
    Q_OBJECT

private slots:
    void init()
    {
        QVERIFY(startServer());
        server->route("GET", diffPath, FakeResponse::text(twoFiles));
    }

    void cleanup() { stopServer(); }

    void diffShowsOnlyTheFilesSection()
    {
        DiffModel model(stores->settings, annApp(), 7, changedFile(QStringLiteral("a.cpp")));
        QAbstractItemModelTester tester(&model);
        QList<bool> loading;
        connect(&model, &DiffModel::isLoadingChanged, this, [&] { loading << model.isLoading(); });
        QVERIFY(runToEnd(model.load()).value);
        QCOMPARE(texts(model), (QStringList{"", "@@ -1 +1 @@", "-int x;", "+int y;"}));
        QCOMPARE(types(model), (QList<int>{DiffLineType::Context, DiffLineType::Hunk,
                                           DiffLineType::Deletion, DiffLineType::Addition}));
        QCOMPARE(model.count(), 4);
        QVERIFY(!model.errorMessage());
        QCOMPARE(loading, (QList<bool>{true, false}));
        QCOMPARE(server->requests().size(), 1);
        QCOMPARE(server->requests().first().rawPath,
                 QByteArray("/api/v1/repos/ann/app/pulls/7.diff"));
        QCOMPARE(model.roleNames().value(DiffModel::TextRole), QByteArray("text"));
        QCOMPARE(model.roleNames().value(DiffModel::TypeRole), QByteArray("type"));
    }

    void deletedFileWhoseMarkerIsMissingShowsTheWholeDiff()
    {
        DiffModel model(stores->settings, annApp(), 7, changedFile(QStringLiteral("old.txt")));
        QVERIFY(runToEnd(model.load()).value);
        QCOMPARE(texts(model), QString::fromUtf8(twoFiles).split(u'\n'));
        QCOMPARE(types(model).first(), int(DiffLineType::Meta));
        QVERIFY(!model.errorMessage());
    }

    void emptyDiffGivesOneEmptyLineAndNoError()
    {
        // Splitting never yields an empty list, so "No diff content for this file." stays
        // unseen even for an empty answer.
        server->route("GET", diffPath, FakeResponse::text(QByteArray()));
        DiffModel model(stores->settings, annApp(), 7, changedFile(QStringLiteral("a.cpp")));
        QVERIFY(runToEnd(model.load()).value);
        QCOMPARE(texts(model), QStringList{QString()});
        QVERIFY(!model.errorMessage());
    }

    void diffWithoutClientSaysNotConfigured()
    {
        stores->settings.overrideCredentials(QString(), std::nullopt);
        DiffModel model(stores->settings, annApp(), 7, changedFile(QStringLiteral("a.cpp")));
        QVERIFY(runToEnd(model.load()).value);
        QCOMPARE(model.errorMessage(), QStringLiteral("Not configured."));
        QVERIFY(!model.isLoading());
        QCOMPARE(model.rowCount(), 0);
        QVERIFY(server->requests().isEmpty());
    }

    void failedDiffReloadShowsTheErrorAndKeepsTheLines()
    {
        DiffModel model(stores->settings, annApp(), 7, changedFile(QStringLiteral("a.cpp")));
        QVERIFY(runToEnd(model.load()).value);
        server->route("GET", diffPath, FakeResponse::json(R"({"message":"boom"})", 500));
        QVERIFY(runToEnd(model.load()).value);
        QCOMPARE(model.errorMessage(), QStringLiteral("Server error (500): boom"));
        QCOMPARE(model.property("errorMessage").toString(),
                 QStringLiteral("Server error (500): boom"));
        QCOMPARE(model.rowCount(), 4);
        QVERIFY(!model.isLoading());

        server->route("GET", diffPath, FakeResponse::text(twoFiles));
        QVERIFY(runToEnd(model.load()).value);
        QVERIFY(!model.errorMessage());
    }

    void diffStaysLoadingUntilItsLinesAreSplitOnAWorker()
    {
        BusyPool pool(diffSplittingThread());
        DiffModel model(stores->settings, annApp(), 7, changedFile(QStringLiteral("a.cpp")));
        QCoro::Task<> load = model.load();
        // The answer is in once its log line is; the lines then wait for the busy worker.
        QTRY_COMPARE(stores->log.entries().size(), 1);
        QTest::qWait(50);
        QVERIFY(model.isLoading());
        QCOMPARE(model.rowCount(), 0);
        pool.release();
        QVERIFY(runToEnd(std::move(load)).value);
        QVERIFY(!model.isLoading());
        QCOMPARE(texts(model), (QStringList{"", "@@ -1 +1 @@", "-int x;", "+int y;"}));
    }

    void destroyingTheDiffModelWhileItsLinesAreSplitIsSilent()
    {
        BusyPool pool(diffSplittingThread());
        auto *model =
            new DiffModel(stores->settings, annApp(), 7, changedFile(QStringLiteral("a.cpp")));
        QCoro::Task<> load = model->load();
        QTRY_COMPARE(stores->log.entries().size(), 1);
        delete model;
        pool.release();
        QVERIFY(runToEnd(std::move(load)).value);
        // Only the request's own line.
        QCOMPARE(stores->log.entries().size(), 1);
    }

    void diffFileCanBeSetInItsQmlForm()
    {
        QQmlEngine engine;
        QmlServices::install(engine, stores->settings, stores->log);
        DiffModel model;
        setUpAsQmlDoes(model, model, engine);
        QVERIFY(model.setProperty("repo", toQmlValue(annApp())));
        QVERIFY(model.setProperty("prNumber", 7));
        QVERIFY(model.setProperty("file", toQmlValue(changedFile(QStringLiteral("a.cpp")))));
        QCOMPARE(model.file().filename, QStringLiteral("a.cpp"));
        QVERIFY(runToEnd(model.load()).value);
        QCOMPARE(model.rowCount(), 4);
    }

    void jobLogIsKeptExactlyAsSent()
    {
        const QByteArray raw = "2024-05-01T10:20:30.1234567Z \x1b[36;1mRun tests\x1b[0m\r\n"
                               "  trailing blanks   \n\n";
        server->route("GET", logPath, FakeResponse::text(raw));
        JobLogModel model(stores->settings, annApp(), 11, 110, QStringLiteral("build"));
        QList<bool> loading;
        connect(&model, &JobLogModel::isLoadingChanged, this,
                [&] { loading << model.isLoading(); });
        QVERIFY(runToEnd(model.load()).value);
        QCOMPARE(model.text(), QString::fromUtf8(raw));
        QVERIFY(!model.errorMessage());
        QCOMPARE(loading, (QList<bool>{true, false}));
        QCOMPARE(server->requests().first().rawPath,
                 QByteArray("/api/v1/repos/ann/app/actions/jobs/110/logs"));
    }

    void emptyLogIsEmptyTextWithoutError()
    {
        server->route("GET", logPath, FakeResponse::empty(200));
        JobLogModel model(stores->settings, annApp(), 11, 110, QStringLiteral("build"));
        QSignalSpy textChanged(&model, &JobLogModel::textChanged);
        QVERIFY(runToEnd(model.load()).value);
        QVERIFY(model.text().isEmpty());
        QCOMPARE(textChanged.count(), 0);
        QVERIFY(!model.errorMessage());
        QVERIFY(!model.isLoading());
    }

    void failedLogReloadShowsTheErrorButKeepsTheOldText()
    {
        server->route("GET", logPath, FakeResponse::text("step 1\nstep 2\n"));
        JobLogModel model(stores->settings, annApp(), 11, 110, QStringLiteral("build"));
        QVERIFY(runToEnd(model.load()).value);
        server->route("GET", logPath, FakeResponse::json(R"({"message":"gone"})", 404));
        QVERIFY(runToEnd(model.load()).value);
        QCOMPARE(model.errorMessage(), QStringLiteral("Not found."));
        QCOMPARE(model.text(), QStringLiteral("step 1\nstep 2\n"));
        QVERIFY(!model.isLoading());
    }

    void jobLogWithoutClientSaysNotConfigured()
    {
        stores->settings.overrideCredentials(QString(), std::nullopt);
        JobLogModel model(stores->settings, annApp(), 11, 110, QStringLiteral("build"));
        QVERIFY(runToEnd(model.load()).value);
        QCOMPARE(model.errorMessage(), QStringLiteral("Not configured."));
        QVERIFY(!model.isLoading());
        QVERIFY(server->requests().isEmpty());
    }

    void destroyingTheLogModelMidRequestIsSilent()
    {
        server->route("GET", logPath, [](const RecordedRequest &, const RouteParams &) {
            FakeResponse response = FakeResponse::text("late");
            response.delay = std::chrono::milliseconds(300);
            return response;
        });
        auto *model = new JobLogModel(stores->settings, annApp(), 11, 110, QStringLiteral("build"));
        const QPointer<JobLogModel> watch(model);
        connect(server, &FakeGiteaServer::requestRecorded, model, &QObject::deleteLater);
        QVERIFY(runToEnd(model->load()).value);
        QVERIFY(!watch);
        QTest::qWait(500);
        QVERIFY(stores->log.entries().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestDiffAndLogModels)
#include "tst_diffandlogmodels.moc"
