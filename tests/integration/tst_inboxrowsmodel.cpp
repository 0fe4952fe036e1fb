// The inbox screen's list model against the loader and the fake Gitea server: the rows it hands
// the list, their order and QML form, and when it hands them over.

#include "fakegiteaserver.h"
#include "inboxfixture.h"
#include "inboxrowsmodel.h"
#include "inboxviewmodel.h"
#include "outcome.h"

#include <QAbstractItemModelTester>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QtTest>

using namespace kestrine;
using kestrine::testing::runToEnd;
using kestrine::testing::TestStores;
using kestrine::ui::InboxRowsModel;

namespace {

QJsonObject repoJson(const QString &name, qint64 id)
{
    return {{QStringLiteral("id"), id},
            {QStringLiteral("name"), name},
            {QStringLiteral("full_name"), QStringLiteral("ann/") + name},
            {QStringLiteral("owner"),
             QJsonObject{{QStringLiteral("id"), 1}, {QStringLiteral("login"), "ann"}}}};
}

/// `count` open pull requests of one repository, numbered from `first`, updated `first` hours
/// into 2024 and on, so that they interleave with another repository's.
QJsonArray pullsJson(int first, int count)
{
    QJsonArray pulls;
    for (int number = first; number < first + count; ++number) {
        const QDateTime updated =
            QDateTime(QDate(2024, 1, 1), QTime(0, 0), Qt::UTC).addSecs(qint64(number) * 3600);
        pulls.append(QJsonObject{{QStringLiteral("id"), 1000 + number},
                                 {QStringLiteral("number"), number},
                                 {QStringLiteral("title"), QStringLiteral("Change %1").arg(number)},
                                 {QStringLiteral("state"), QStringLiteral("open")},
                                 {QStringLiteral("draft"), number % 3 == 0},
                                 {QStringLiteral("updated_at"), updated.toString(Qt::ISODate)}});
    }
    return pulls;
}

QByteArray json(const QJsonArray &array)
{
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

QVariantList listed(const InboxRowsModel &model)
{
    QVariantList rows;
    for (int i = 0; i < model.rowCount(); ++i)
        rows.append(model.index(i).data(InboxRowsModel::RowRole));
    return rows;
}

} // namespace

class TestInboxRowsModel : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<TestStores> stores;
    FakeGiteaServer *server = nullptr;

    void serve(const QJsonArray &firstPulls, const QJsonArray &secondPulls)
    {
        server->route("GET", QStringLiteral("/api/v1/user/repos"),
                      FakeResponse::json(json({repoJson("a", 1), repoJson("b", 2)})));
        server->route("GET", QStringLiteral("/api/v1/repos/ann/a/pulls"),
                      FakeResponse::json(json(firstPulls)));
        server->route("GET", QStringLiteral("/api/v1/repos/ann/b/pulls"),
                      FakeResponse::json(json(secondPulls)));
    }

private slots:
    void init()
    {
        server = new FakeGiteaServer(this);
        QVERIFY(server->listen());
        stores = std::make_unique<TestStores>();
        kestrine::testing::prepareInbox(*stores, *server);
    }

    void cleanup()
    {
        delete server;
        server = nullptr;
        stores.reset();
    }

    void rowsAreTheDisplayedRowsInTheirOrderAndQmlForm()
    {
        serve(pullsJson(1, 30), pullsJson(20, 30));
        InboxViewModel viewModel(stores->settings);
        InboxRowsModel model;
        QAbstractItemModelTester tester(&model);
        model.setViewModel(&viewModel);
        QVERIFY(runToEnd(viewModel.load()).value);
        QTRY_COMPARE(model.count(), 60);
        QCOMPARE(model.rowCount(), 60);
        // The same objects, in the same order, as the screen's displayedRows.
        QCOMPARE(listed(model), viewModel.displayedRowsForQml());
        QCOMPARE(model.index(0).data(InboxRowsModel::RowRole),
                 toQmlValue(viewModel.displayedRows().first()));
        QCOMPARE(model.roleNames().value(InboxRowsModel::RowRole), QByteArray("row"));
    }

    void newRowsReplaceTheListInOneResetOnALaterTurn()
    {
        serve(pullsJson(1, 5), pullsJson(10, 5));
        InboxViewModel viewModel(stores->settings);
        InboxRowsModel model;
        QAbstractItemModelTester tester(&model);
        model.setViewModel(&viewModel);
        QVERIFY(runToEnd(viewModel.load()).value);
        QTRY_COMPARE(model.count(), 10);

        serve(pullsJson(1, 2), pullsJson(40, 1));
        QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
        QSignalSpy inserts(&model, &QAbstractItemModel::rowsInserted);
        QSignalSpy counts(&model, &InboxRowsModel::countChanged);
        int countWhenPublished = -1;
        connect(&viewModel, &InboxViewModel::displayedRowsChanged, this,
                [&] { countWhenPublished = model.count(); });
        QVERIFY(runToEnd(viewModel.load()).value);
        QTRY_COMPARE(model.count(), 3);
        // The list still held the earlier rows when the new ones were published.
        QCOMPARE(countWhenPublished, 10);
        QCOMPARE(resets.count(), 1);
        QCOMPARE(inserts.count(), 0);
        QCOMPARE(counts.count(), 1);
        QCOMPARE(listed(model), viewModel.displayedRowsForQml());
    }

    void theListHoldsTheRowsByTheTimeTheLoadEnds()
    {
        // The repository list fails, and the cache, written while it was asked for (too late for
        // the prefill), is shown in the same turn as the load ends.
        const QString cachePath = InboxCache().filePath();
        connect(server, &FakeGiteaServer::requestRecorded, this, [&cachePath] {
            QFile cache(cachePath);
            QVERIFY(cache.open(QIODevice::WriteOnly));
            cache.write(
                R"([{"repo":{"id":1,"name":"a","full_name":"ann/a","owner":{"id":1,"login":"ann"}},
                           "pr":{"id":9,"number":9,"title":"cached","state":"open"}}])");
        });
        server->route("GET", QStringLiteral("/api/v1/user/repos"),
                      FakeResponse::json(R"({"message":"boom"})", 500));
        InboxViewModel viewModel(stores->settings);
        InboxRowsModel model;
        model.setViewModel(&viewModel);
        int listedWhenLoaded = -1;
        connect(&viewModel, &InboxViewModel::isLoadingChanged, this, [&] {
            if (!viewModel.isLoading())
                listedWhenLoaded = model.count();
        });
        QVERIFY(runToEnd(viewModel.load()).value);
        QCOMPARE(viewModel.displayedRows().size(), 1);
        QCOMPARE(listedWhenLoaded, 1);
        QCOMPARE(listed(model), viewModel.displayedRowsForQml());
    }

    void withoutAViewModelTheListIsEmpty()
    {
        serve(pullsJson(1, 3), {});
        InboxViewModel viewModel(stores->settings);
        InboxRowsModel model;
        model.setViewModel(&viewModel);
        QVERIFY(runToEnd(viewModel.load()).value);
        QTRY_COMPARE(model.count(), 3);
        model.setViewModel(nullptr);
        QCOMPARE(model.count(), 0);
        QVERIFY(!model.index(0).data(InboxRowsModel::RowRole).isValid());
    }
};

QTEST_GUILESS_MAIN(TestInboxRowsModel)
#include "tst_inboxrowsmodel.moc"
