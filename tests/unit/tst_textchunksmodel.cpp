// A long text cut into pieces of whole lines for the job log screen: what the pieces are, and how a
// long text is cut on a worker thread while the list keeps what it showed.

#include "busypool.h"
#include "textchunksmodel.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using kestrine::testing::BusyPool;
using kestrine::ui::TextChunksModel;

namespace {

/// `lines` numbered log lines, each with its line break.
QString logOf(int lines, const QString &word = QStringLiteral("step"))
{
    QString text;
    for (int i = 0; i < lines; ++i)
        text += QStringLiteral("2024-05-01T10:21:02Z \x1b[36m%1 %2\x1b[0m ok\r\n").arg(word).arg(i);
    return text;
}

/// A log longer than the model cuts at once.
QString longLog(const QString &word = QStringLiteral("step"))
{
    QString text;
    int lines = 1000;
    while ((text = logOf(lines, word)).size() <= TextChunksModel::splitAtOnceLimit)
        lines *= 2;
    return text;
}

QStringList pieces(const TextChunksModel &model)
{
    QStringList all;
    for (int i = 0; i < model.rowCount(); ++i)
        all.append(model.index(i).data(TextChunksModel::TextRole).toString());
    return all;
}

} // namespace

class TestTextChunksModel : public QObject
{
    Q_OBJECT

private slots:
    void piecesJoinedAreTheTextAndHoldWholeLines()
    {
        TextChunksModel model;
        QAbstractItemModelTester tester(&model);
        model.setLinesPerChunk(7);
        const QString text = logOf(50) + QStringLiteral("last line without a break");
        model.setText(text);
        const QStringList all = pieces(model);
        QCOMPARE(all.size(), 8);
        QCOMPARE(all.join(QString()), text);
        for (int i = 0; i + 1 < all.size(); ++i) {
            QCOMPARE(all.at(i).count(u'\n'), 7);
            QVERIFY(all.at(i).endsWith(u'\n'));
        }
        QCOMPARE(model.chunk(3), all.at(3));
    }

    void anEmptyTextHasNoPieces()
    {
        TextChunksModel model;
        model.setText(QStringLiteral("one\n"));
        QCOMPARE(model.count(), 1);
        model.setText(QString());
        QCOMPARE(model.count(), 0);
        QVERIFY(!model.isSplitting());
    }

    void aShortTextIsCutAtOnce()
    {
        BusyPool pool(TextChunksModel::splittingThread());
        TextChunksModel model;
        const QString text = logOf(300);
        QVERIFY(text.size() <= TextChunksModel::splitAtOnceLimit);
        model.setText(text);
        QVERIFY(!model.isSplitting());
        QCOMPARE(pieces(model).join(QString()), text);
    }

    void aLongTextIsCutOnAWorkerThread()
    {
        TextChunksModel model;
        QAbstractItemModelTester tester(&model);
        QSignalSpy splitting(&model, &TextChunksModel::splittingChanged);
        QSignalSpy count(&model, &TextChunksModel::countChanged);
        const QString text = longLog();
        {
            BusyPool pool(TextChunksModel::splittingThread());
            model.setText(text);
            // The only worker is busy: nothing is cut yet, and the text is already the model's.
            QTest::qWait(50);
            QVERIFY(model.isSplitting());
            QCOMPARE(model.count(), 0);
            QCOMPARE(model.text(), text);
        }
        QTRY_VERIFY(!model.isSplitting());
        QCOMPARE(splitting.count(), 2);
        QCOMPARE(count.count(), 1);
        QCOMPARE(model.count(), int(TextChunksModel::pieceStarts(text, 80).size()));
        QCOMPARE(pieces(model).join(QString()), text);
    }

    void thePiecesOfThePreviousTextStayWhileALongOneIsCut()
    {
        TextChunksModel model;
        const QString before = logOf(100, QStringLiteral("before"));
        model.setText(before);
        const QString after = longLog(QStringLiteral("after"));
        {
            BusyPool pool(TextChunksModel::splittingThread());
            model.setText(after);
            QTest::qWait(50);
            QVERIFY(model.isSplitting());
            QCOMPARE(pieces(model).join(QString()), before);
        }
        QTRY_VERIFY(!model.isSplitting());
        QCOMPARE(pieces(model).join(QString()), after);
    }

    void onlyTheLatestTextIsShown()
    {
        TextChunksModel model;
        const QString first = longLog(QStringLiteral("first"));
        const QString second = longLog(QStringLiteral("second"));
        {
            BusyPool pool(TextChunksModel::splittingThread());
            model.setText(first);
            model.setText(second);
        }
        QTRY_VERIFY(!model.isSplitting());
        // The first split ended too, later or earlier: its pieces were never shown.
        QTest::qWait(50);
        QCOMPARE(pieces(model).join(QString()), second);
    }

    void aShortTextSetDuringALongSplitIsShownAtOnceAndStays()
    {
        TextChunksModel model;
        const QString shortText = logOf(10, QStringLiteral("short"));
        {
            BusyPool pool(TextChunksModel::splittingThread());
            model.setText(longLog());
            QVERIFY(model.isSplitting());
            model.setText(shortText);
            QVERIFY(!model.isSplitting());
            QCOMPARE(pieces(model).join(QString()), shortText);
        }
        QTest::qWait(50);
        QVERIFY(!model.isSplitting());
        QCOMPARE(pieces(model).join(QString()), shortText);
    }
};

QTEST_GUILESS_MAIN(TestTextChunksModel)
#include "tst_textchunksmodel.moc"
