// The inbox screen's list model against the loader and the fake Gitea server: the rows it hands
// the list, their order and QML form, and when it hands them over; and the search over them,
// which hides rows and nothing else.

#include "fakegiteaserver.h"
#include "inboxfixture.h"
#include "inboxrowsmodel.h"
#include "inboxsearchmodel.h"
#include "inboxviewmodel.h"
#include "outcome.h"

#include <QAbstractItemModelTester>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QStringListModel>
#include <QtTest>

using namespace kestrine;
using kestrine::testing::runToEnd;
using kestrine::testing::TestStores;
using kestrine::ui::InboxRowsModel;
using kestrine::ui::InboxSearchModel;

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

QVariantList listed(const QAbstractItemModel &model)
{
    QVariantList rows;
    for (int i = 0; i < model.rowCount(); ++i)
        rows.append(model.index(i, 0).data(InboxRowsModel::RowRole));
    return rows;
}

/// Open pull requests with these numbers and titles, each updated `number` hours into 2024, so
/// that the inbox lists the highest number first.
QJsonArray titledPullsJson(const QList<std::pair<int, QString>> &pulls)
{
    QJsonArray array;
    for (const auto &[number, title] : pulls) {
        const QDateTime updated =
            QDateTime(QDate(2024, 1, 1), QTime(0, 0), Qt::UTC).addSecs(qint64(number) * 3600);
        array.append(QJsonObject{{QStringLiteral("id"), 1000 + number},
                                 {QStringLiteral("number"), number},
                                 {QStringLiteral("title"), title},
                                 {QStringLiteral("state"), QStringLiteral("open")},
                                 {QStringLiteral("updated_at"), updated.toString(Qt::ISODate)}});
    }
    return array;
}

/// The numbers of the pull requests the model lists, in its order, read through its role.
QList<qint64> numbers(const QAbstractItemModel &model)
{
    QList<qint64> listedNumbers;
    for (const QVariant &row : listed(model)) {
        listedNumbers.append(row.toMap()
                                 .value(QStringLiteral("pr"))
                                 .toMap()
                                 .value(QStringLiteral("number"))
                                 .toLongLong());
    }
    return listedNumbers;
}

/// The loader, the list's rows and the search over them, wired as the inbox screen wires them.
struct SearchedInbox
{
    explicit SearchedInbox(SettingsStore &settings)
        : viewModel(settings)
    {
        rows.setViewModel(&viewModel);
        search.setSourceModel(&rows);
    }

    bool load() { return runToEnd(viewModel.load()).value.has_value(); }

    InboxViewModel viewModel;
    InboxRowsModel rows;
    InboxSearchModel search;
    QAbstractItemModelTester tester{&search};
};

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

    void searchListsTheMatchingRowsInTheListsOrder()
    {
        serve(titledPullsJson({{1, QStringLiteral("Fix the login page")},
                               {2, QStringLiteral("Café menu")},
                               {3, QStringLiteral("Bump crème deps")}}),
              titledPullsJson({{42, QStringLiteral("Login for admins")},
                               {4, QStringLiteral("Docs for the cafe")}}));
        SearchedInbox inbox(stores->settings);
        auto &[viewModel, rows, search, tester] = inbox;
        QVERIFY(inbox.load());
        QTRY_COMPARE(search.count(), 5);
        QCOMPARE(numbers(search), (QList<qint64>{42, 4, 3, 2, 1}));
        QCOMPARE(listed(search), viewModel.displayedRowsForQml());
        QCOMPARE(search.roleNames().value(InboxRowsModel::RowRole), QByteArray("row"));

        const QList<std::pair<QString, QList<qint64>>> expected = {
            {QStringLiteral("login"), {42, 1}},
            {QStringLiteral("LOGIN"), {42, 1}},
            {QStringLiteral("ann/b"), {42, 4}},
            {QStringLiteral("#42"), {42}},
            {QStringLiteral("42"), {42}},
            {QStringLiteral("#4"), {42, 4}},
            {QStringLiteral("login ann/a"), {1}},
            {QStringLiteral("#1 page"), {1}},
            {QStringLiteral("cafe"), {4, 2}},
            {QStringLiteral("CAFÉ"), {4, 2}},
            {QStringLiteral("café menu"), {2}},
            {QStringLiteral("creme"), {3}},
            {QStringLiteral("zzz"), {}},
            {QStringLiteral("login zzz"), {}},
            {QStringLiteral("  "), {42, 4, 3, 2, 1}},
            {QString(), {42, 4, 3, 2, 1}},
        };
        for (const auto &[text, matching] : expected) {
            search.setSearchText(text);
            QCOMPARE(search.searchText(), text);
            QCOMPARE(numbers(search), matching);
            QCOMPARE(search.count(), matching.size());
        }
    }

    void searchingNeitherLoadsNorChangesTheRowsOrTheCache()
    {
        serve(titledPullsJson({{1, QStringLiteral("Fix the login page")}}),
              titledPullsJson({{2, QStringLiteral("Docs")}}));
        SearchedInbox inbox(stores->settings);
        auto &[viewModel, rows, search, tester] = inbox;
        QVERIFY(inbox.load());
        QTRY_COMPARE(rows.count(), 2);
        const qsizetype requests = server->requests().size();
        const QVariantList displayed = viewModel.displayedRowsForQml();
        QFile cache(viewModel.cache().filePath());
        QVERIFY(cache.open(QIODevice::ReadOnly));
        const QByteArray cached = cache.readAll();
        cache.close();
        QSignalSpy published(&viewModel, &InboxViewModel::displayedRowsChanged);
        QSignalSpy loading(&viewModel, &InboxViewModel::isLoadingChanged);
        QSignalSpy resets(&rows, &QAbstractItemModel::modelReset);

        for (const QString &text : {QStringLiteral("l"), QStringLiteral("lo"),
                                    QStringLiteral("login"), QStringLiteral("zzz"), QString()}) {
            search.setSearchText(text);
            QTest::qWait(20);
        }
        QTest::qWait(100);
        QCOMPARE(server->requests().size(), requests);
        QCOMPARE(published.count(), 0);
        QCOMPARE(loading.count(), 0);
        QCOMPARE(resets.count(), 0);
        QCOMPARE(viewModel.count(), 2);
        QCOMPARE(viewModel.displayedRowsForQml(), displayed);
        QCOMPARE(rows.count(), 2);
        QVERIFY(cache.open(QIODevice::ReadOnly));
        QCOMPARE(cache.readAll(), cached);
    }

    void aNewSearchRemovesAndInsertsRowsSoThatMatchingRowsStay()
    {
        serve(titledPullsJson({{1, QStringLiteral("Fix the login page")},
                               {2, QStringLiteral("Café menu")},
                               {3, QStringLiteral("Login for admins")}}),
              {});
        SearchedInbox inbox(stores->settings);
        auto &[viewModel, rows, search, tester] = inbox;
        QVERIFY(inbox.load());
        QTRY_COMPARE(search.count(), 3);

        QSignalSpy resets(&search, &QAbstractItemModel::modelReset);
        QSignalSpy removed(&search, &QAbstractItemModel::rowsRemoved);
        QSignalSpy inserted(&search, &QAbstractItemModel::rowsInserted);
        QSignalSpy counts(&search, &InboxSearchModel::countChanged);
        QSignalSpy texts(&search, &InboxSearchModel::searchTextChanged);
        // The row of #3 stays the first; only #2 goes.
        const QPersistentModelIndex first = search.index(0, 0);
        search.setSearchText(QStringLiteral("login"));
        QCOMPARE(numbers(search), (QList<qint64>{3, 1}));
        QCOMPARE(resets.count(), 0);
        QCOMPARE(removed.count(), 1);
        QCOMPARE(inserted.count(), 0);
        QCOMPARE(counts.count(), 1);
        QCOMPARE(texts.count(), 1);
        QVERIFY(first.isValid());
        QCOMPARE(first.row(), 0);

        // The same words: nothing to redo.
        search.setSearchText(QStringLiteral("Login "));
        QCOMPARE(texts.count(), 2);
        QCOMPARE(removed.count(), 1);
        QCOMPARE(inserted.count(), 0);
        QCOMPARE(counts.count(), 1);

        search.setSearchText(QString());
        QCOMPARE(numbers(search), (QList<qint64>{3, 2, 1}));
        QCOMPARE(resets.count(), 0);
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(counts.count(), 2);
        QCOMPARE(first.row(), 0);
    }

    void aLoadWhileSearchingListsTheNewRowsThatMatch()
    {
        serve(titledPullsJson(
                  {{1, QStringLiteral("Fix the login page")}, {2, QStringLiteral("Café menu")}}),
              {});
        SearchedInbox inbox(stores->settings);
        auto &[viewModel, rows, search, tester] = inbox;
        QVERIFY(inbox.load());
        QTRY_COMPARE(rows.count(), 2);
        search.setSearchText(QStringLiteral("login"));
        QCOMPARE(numbers(search), (QList<qint64>{1}));

        // #2 is renamed, #5 is new: the search reads the new titles, not the ones it folded.
        serve(titledPullsJson({{1, QStringLiteral("Fix the login page")},
                               {2, QStringLiteral("Login café")},
                               {5, QStringLiteral("Logins everywhere")}}),
              titledPullsJson({{3, QStringLiteral("Docs")}}));
        QVERIFY(runToEnd(viewModel.load()).value);
        QTRY_COMPARE(rows.count(), 4);
        QCOMPARE(search.searchText(), QStringLiteral("login"));
        QCOMPARE(numbers(search), (QList<qint64>{5, 2, 1}));
        QCOMPARE(search.count(), 3);

        // An empty load leaves the search nothing to show.
        serve({}, {});
        QVERIFY(runToEnd(viewModel.load()).value);
        QTRY_COMPARE(rows.count(), 0);
        QCOMPARE(search.count(), 0);
    }

    void withoutInboxRowsTheSearchShowsNothingButAnEmptySearchShowsAll()
    {
        QStringListModel other({QStringLiteral("login"), QStringLiteral("docs")});
        InboxSearchModel search;
        search.setSourceModel(&other);
        QCOMPARE(search.count(), 2);
        search.setSearchText(QStringLiteral("login"));
        QCOMPARE(search.count(), 0);
        search.setSourceModel(nullptr);
        search.setSearchText(QString());
        QCOMPARE(search.count(), 0);
    }
};

QTEST_GUILESS_MAIN(TestInboxRowsModel)
#include "tst_inboxrowsmodel.moc"
