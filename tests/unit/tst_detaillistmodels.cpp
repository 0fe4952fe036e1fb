// The detail screen's list models on their own: the values of their roles, and how an update
// keeps the rows of the records that stay.

#include "detaillistmodels.h"
#include "summaries.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QtTest>

using namespace kestrine;

namespace {

PRUser person(const QString &login)
{
    PRUser user;
    user.login = login;
    return user;
}

IssueComment comment(qint64 id, std::optional<QString> body, std::optional<PRUser> user = {})
{
    IssueComment made;
    made.id = id;
    made.body = std::move(body);
    made.user = std::move(user);
    return made;
}

ChangedFile file(const char *name, std::optional<QString> status = {}, qint64 additions = 0)
{
    ChangedFile made;
    made.filename = QString::fromLatin1(name);
    made.status = std::move(status);
    made.additions = additions;
    return made;
}

ActionJob job(qint64 id, const char *status, const char *conclusion)
{
    ActionJob made;
    made.id = id;
    made.name = QStringLiteral("job %1").arg(id);
    made.status = QString::fromLatin1(status);
    if (conclusion)
        made.conclusion = QString::fromLatin1(conclusion);
    return made;
}

ActionRun run(qint64 id, const char *status, const char *conclusion)
{
    ActionRun made;
    made.id = id;
    made.status = QString::fromLatin1(status);
    if (conclusion)
        made.conclusion = QString::fromLatin1(conclusion);
    return made;
}

/// Every signal by which a view learns that rows changed, counted.
struct RowSignals
{
    explicit RowSignals(QAbstractItemModel *model)
        : inserted(model, &QAbstractItemModel::rowsInserted)
        , removed(model, &QAbstractItemModel::rowsRemoved)
        , moved(model, &QAbstractItemModel::rowsMoved)
        , reset(model, &QAbstractItemModel::modelReset)
        , changed(model, &QAbstractItemModel::dataChanged)
    {}

    QSignalSpy inserted;
    QSignalSpy removed;
    QSignalSpy moved;
    QSignalSpy reset;
    QSignalSpy changed;

    int structural() const
    {
        return int(inserted.count() + removed.count() + moved.count() + reset.count());
    }
};

/// The rows of `model` by `role`, in order.
QVariantList column(const RecordListModel &model, const QByteArray &role)
{
    QVariantList values;
    for (int row = 0; row < model.count(); ++row)
        values.append(model.valueAt(row, role));
    return values;
}

} // namespace

class TestDetailListModels : public QObject
{
    Q_OBJECT

private slots:
    void commentWithoutUserBodyOrDateShowsUnknownAndNothing()
    {
        CommentsModel model;
        IssueComment dated =
            comment(2, QStringLiteral("Looks good"), person(QStringLiteral("bob")));
        dated.createdAt = QDateTime(QDate(2024, 5, 1), QTime(10, 20), Qt::UTC);
        model.setItems({comment(1, std::nullopt), dated});
        QCOMPARE(model.count(), 2);
        QCOMPARE(model.valueAt(0, "author"), QVariant(QStringLiteral("unknown")));
        QCOMPARE(model.valueAt(0, "body"), QVariant(QString()));
        QVERIFY(model.valueAt(0, "body").metaType() == QMetaType::fromType<QString>());
        QVERIFY(!model.valueAt(0, "createdAt").toDateTime().isValid());
        QCOMPARE(model.valueAt(1, "author"), QVariant(QStringLiteral("bob")));
        QCOMPARE(model.valueAt(1, "body"), QVariant(QStringLiteral("Looks good")));
        QCOMPARE(model.valueAt(1, "createdAt").toDateTime(), *dated.createdAt);
        // No such row or role: nothing.
        QVERIFY(!model.valueAt(2, "author").isValid());
        QVERIFY(!model.valueAt(0, "login").isValid());
    }

    void reviewRowsCarryTheirVerdictAndItsLine()
    {
        ReviewsModel model;
        model.setItems(
            {PullReview{1, QStringLiteral("APPROVED"), QStringLiteral("Fine."), {}, {}},
             PullReview{2, QStringLiteral("REQUEST_CHANGES"), {}, person(QStringLiteral("bo")), {}},
             PullReview{3,
                        QStringLiteral("COMMENT"),
                        QStringLiteral("Hm."),
                        person(QStringLiteral("\u202eevil")),
                        {}}});
        QCOMPARE(column(model, "line"),
                 (QVariantList{QStringLiteral("✅ unknown approved"),
                               QStringLiteral("🔴 bo requested changes"),
                               // A login that would turn the verb around is set apart.
                               QStringLiteral("💬 \u2068\u202eevil\u2069 reviewed")}));
        QCOMPARE(column(model, "verdict"),
                 (QVariantList{int(ReviewState::Approved), int(ReviewState::ChangesRequested),
                               int(ReviewState::NeedsReview)}));
        QCOMPARE(column(model, "emoji"),
                 (QVariantList{QStringLiteral("✅"), QStringLiteral("🔴"), QStringLiteral("💬")}));
        QCOMPARE(column(model, "verb"),
                 (QVariantList{QStringLiteral("approved"), QStringLiteral("requested changes"),
                               QStringLiteral("reviewed")}));
        QCOMPARE(column(model, "author"),
                 (QVariantList{QStringLiteral("unknown"), QStringLiteral("bo"),
                               QStringLiteral("\u202eevil")}));
        QCOMPARE(column(model, "body"),
                 (QVariantList{QStringLiteral("Fine."), QString(), QStringLiteral("Hm.")}));
    }

    void fileRowsCarryTheirMarkByExactStatus()
    {
        ChangedFilesModel model;
        model.setItems({file("a", QStringLiteral("added"), 3), file("b", QStringLiteral("Added")),
                        file("c", QStringLiteral("deleted")), file("d", QStringLiteral("removed")),
                        file("e", QStringLiteral("renamed")), file("f")});
        QCOMPARE(column(model, "mark"),
                 (QVariantList{QStringLiteral("＋"), QStringLiteral("✎"), QStringLiteral("－"),
                               QStringLiteral("－"), QStringLiteral("→"), QStringLiteral("✎")}));
        QCOMPARE(model.valueAt(0, "filename"), QVariant(QStringLiteral("a")));
        QCOMPARE(model.valueAt(0, "additions").toLongLong(), 3);
        QCOMPARE(model.valueAt(0, "deletions").toLongLong(), 0);
    }

    void runAndJobRowsCarryTheirStatusAndWhatCanBeDoneWithThem()
    {
        RunsModel runs;
        runs.setItems({run(1, "in_progress", nullptr), run(2, "completed", "failure")});
        QCOMPARE(column(runs, "runID"), (QVariantList{qint64(1), qint64(2)}));
        QCOMPARE(column(runs, "name"),
                 (QVariantList{QStringLiteral("workflow"), QStringLiteral("workflow")}));
        QCOMPARE(column(runs, "ciStatus"),
                 (QVariantList{int(CIStatus::Running), int(CIStatus::Failure)}));
        QVERIFY(!runs.valueAt(0, "createdAt").toDateTime().isValid());

        JobsModel *jobs = runs.jobsOf(2);
        jobs->setItems({job(20, "completed", "failure"), job(21, "waiting", "failure"),
                        job(22, "in_progress", nullptr), job(23, "completed", "success")});
        QCOMPARE(column(*jobs, "jobID"),
                 (QVariantList{qint64(20), qint64(21), qint64(22), qint64(23)}));
        QCOMPARE(jobs->valueAt(0, "name"), QVariant(QStringLiteral("job 20")));
        QCOMPARE(column(*jobs, "ciStatus"),
                 (QVariantList{int(CIStatus::Failure), int(CIStatus::Failure),
                               int(CIStatus::Running), int(CIStatus::Success)}));
        QCOMPARE(column(*jobs, "failed"), (QVariantList{true, true, false, false}));
        QCOMPARE(column(*jobs, "hasRun"), (QVariantList{true, false, false, true}));
    }

    void eachRunsRowReachesItsOwnJobModel()
    {
        RunsModel runs;
        runs.setItems({run(1, "completed", "success"), run(2, "completed", "failure")});
        auto *first = qobject_cast<RecordListModel *>(runs.valueAt(0, "jobs").value<QObject *>());
        auto *second = qobject_cast<RecordListModel *>(runs.valueAt(1, "jobs").value<QObject *>());
        QVERIFY(first && second);
        QVERIFY(first != second);
        QCOMPARE(first, runs.jobsOf(1));
        QCOMPARE(second, runs.jobsOf(2));
        QCOMPARE(first->parent(), &runs);
        runs.jobsOf(2)->setItems({job(5, "completed", "success")});
        QCOMPARE(second->count(), 1);
        QCOMPARE(first->count(), 0);

        // The same run in a new list keeps its job model.
        runs.setItems({run(3, "queued", nullptr), run(2, "completed", "success")});
        QCOMPARE(runs.valueAt(1, "jobs").value<QObject *>(), second);
        QCOMPARE(second->count(), 1);
    }

    void identicalItemsChangeNoRow()
    {
        CommentsModel model;
        QAbstractItemModelTester tester(&model);
        const QList<IssueComment> items{comment(1, QStringLiteral("a")),
                                        comment(2, QStringLiteral("b"))};
        model.setItems(items);
        RowSignals spy(&model);
        QSignalSpy count(&model, &RecordListModel::countChanged);
        model.setItems(items);
        QCOMPARE(spy.structural(), 0);
        QCOMPARE(spy.changed.count(), 0);
        QCOMPARE(count.count(), 0);
    }

    void aChangedRecordReportsDataChangedForItsRowOnly()
    {
        CommentsModel model;
        QAbstractItemModelTester tester(&model);
        model.setItems({comment(1, QStringLiteral("a")), comment(2, QStringLiteral("b")),
                        comment(3, QStringLiteral("c"))});
        RowSignals spy(&model);
        model.setItems({comment(1, QStringLiteral("a")), comment(2, QStringLiteral("edited")),
                        comment(3, QStringLiteral("c"))});
        QCOMPARE(spy.structural(), 0);
        QCOMPARE(spy.changed.count(), 1);
        QCOMPARE(spy.changed.first().at(0).toModelIndex().row(), 1);
        QCOMPARE(spy.changed.first().at(1).toModelIndex().row(), 1);
        QCOMPARE(model.valueAt(1, "body"), QVariant(QStringLiteral("edited")));
    }

    void newAndGoneRecordsAreInsertedAndRemovedAroundTheRest()
    {
        ChangedFilesModel model;
        QAbstractItemModelTester tester(&model);
        model.setItems({file("a"), file("b"), file("c"), file("d")});
        RowSignals spy(&model);
        QSignalSpy count(&model, &RecordListModel::countChanged);
        // "b" goes, "x" and "y" come between "c" and "d", "z" at the end.
        model.setItems({file("a"), file("c"), file("x"), file("y"), file("d"), file("z")});
        QCOMPARE(column(model, "filename"),
                 (QVariantList{QStringLiteral("a"), QStringLiteral("c"), QStringLiteral("x"),
                               QStringLiteral("y"), QStringLiteral("d"), QStringLiteral("z")}));
        QCOMPARE(spy.removed.count(), 1);
        QCOMPARE(spy.removed.first().at(1).toInt(), 1);
        QCOMPARE(spy.removed.first().at(2).toInt(), 1);
        QCOMPARE(spy.inserted.count(), 2);
        QCOMPARE(spy.inserted.at(0).at(1).toInt(), 2);
        QCOMPARE(spy.inserted.at(0).at(2).toInt(), 3);
        QCOMPARE(spy.inserted.at(1).at(1).toInt(), 5);
        QCOMPARE(spy.inserted.at(1).at(2).toInt(), 5);
        QCOMPARE(spy.moved.count() + spy.reset.count() + spy.changed.count(), 0);
        QCOMPARE(count.count(), 1);
        QCOMPARE(model.count(), 6);
    }

    void aRecordThatMovedIsMovedNotReplaced()
    {
        ChangedFilesModel model;
        QAbstractItemModelTester tester(&model);
        model.setItems({file("a"), file("b"), file("c")});
        RowSignals spy(&model);
        model.setItems({file("c"), file("a"), file("b", QStringLiteral("added"))});
        QCOMPARE(column(model, "filename"),
                 (QVariantList{QStringLiteral("c"), QStringLiteral("a"), QStringLiteral("b")}));
        QCOMPARE(spy.inserted.count() + spy.removed.count() + spy.reset.count(), 0);
        QCOMPARE(spy.moved.count(), 1);
        QCOMPARE(spy.changed.count(), 1);
        QCOMPARE(spy.changed.first().at(0).toModelIndex().row(), 2);
        QCOMPARE(model.valueAt(2, "mark"), QVariant(QStringLiteral("＋")));
    }

    void emptyingAndFillingAListTakesOneSignalEach()
    {
        JobsModel model;
        QAbstractItemModelTester tester(&model);
        RowSignals spy(&model);
        model.setItems({job(1, "queued", nullptr), job(2, "queued", nullptr)});
        QCOMPARE(spy.inserted.count(), 1);
        model.setItems({});
        QCOMPARE(spy.removed.count(), 1);
        QCOMPARE(spy.reset.count() + spy.moved.count() + spy.changed.count(), 0);
        QCOMPARE(model.count(), 0);
    }

    void twoRecordsUnderOneKeyStartTheListOver()
    {
        CommentsModel model;
        QAbstractItemModelTester tester(&model);
        model.setItems({comment(1, QStringLiteral("a"))});
        RowSignals spy(&model);
        model.setItems({comment(1, QStringLiteral("a")), comment(1, QStringLiteral("again"))});
        QCOMPARE(spy.reset.count(), 1);
        QCOMPARE(column(model, "body"),
                 (QVariantList{QStringLiteral("a"), QStringLiteral("again")}));
    }
};

QTEST_GUILESS_MAIN(TestDetailListModels)
#include "tst_detaillistmodels.moc"
