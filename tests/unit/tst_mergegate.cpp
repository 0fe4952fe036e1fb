// The merge gate and the merge methods that the detail screen and the merge sheet share.

#include "mergegate.h"

#include <QtTest>

using namespace kestrine;

class TestMergeGate : public QObject
{
    Q_OBJECT

private slots:
    void ciThatIsNotRedAllowsMergingWithoutNoteInEitherMode_data()
    {
        QTest::addColumn<CIStatus::Value>("status");
        QTest::addColumn<MergeGateMode>("mode");
        for (const auto status :
             {CIStatus::Running, CIStatus::Success, CIStatus::Cancelled, CIStatus::Unknown}) {
            for (const auto mode : {MergeGateMode::Warn, MergeGateMode::Block}) {
                QTest::addRow("%s/%s", qPrintable(CIStatus::name(status)),
                              mode == MergeGateMode::Warn ? "warn" : "block")
                    << status << mode;
            }
        }
    }

    void ciThatIsNotRedAllowsMergingWithoutNoteInEitherMode()
    {
        QFETCH(CIStatus::Value, status);
        QFETCH(MergeGateMode, mode);
        const MergeGateDecision decision = mergeGate(status, mode);
        QVERIFY(decision.allowed);
        QVERIFY(!decision.hasNote());
        QVERIFY(decision.noteIcon.isEmpty());
    }

    void redCiInWarnModeAllowsMergingWithOrangeWarning()
    {
        const MergeGateDecision decision = mergeGate(CIStatus::Failure, MergeGateMode::Warn);
        QVERIFY(decision.allowed);
        QVERIFY(decision.hasNote());
        QCOMPARE(
            decision.noteText,
            QString::fromUtf8("CI is red \xE2\x80\x94 you can still merge (Settings allows it)."));
        QCOMPARE(decision.noteIcon, QStringLiteral("exclamationmark.triangle"));
        QCOMPARE(decision.noteTone, MergeGateDecision::Warning);
    }

    void redCiInBlockModeDisallowsMergingWithLockNote()
    {
        const MergeGateDecision decision = mergeGate(CIStatus::Failure, MergeGateMode::Block);
        QVERIFY(!decision.allowed);
        QCOMPARE(decision.noteText,
                 QStringLiteral("Merging is blocked while CI is red (Settings)."));
        QCOMPARE(decision.noteIcon, QStringLiteral("lock"));
        QCOMPARE(decision.noteTone, MergeGateDecision::Secondary);
    }

    void mergeMethodsInSheetOrderWithMergePreselected()
    {
        const QList<MergeMethod> expected{
            {QStringLiteral("merge"), QStringLiteral("Create merge commit")},
            {QStringLiteral("rebase"), QStringLiteral("Rebase and merge")},
            {QStringLiteral("squash"), QStringLiteral("Squash and merge")},
        };
        QCOMPARE(mergeMethods(), expected);
        QCOMPARE(defaultMergeMethod(), QStringLiteral("merge"));
    }
};

QTEST_GUILESS_MAIN(TestMergeGate)
#include "tst_mergegate.moc"
