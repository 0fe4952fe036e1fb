// Cutting one file's section out of a pull request diff and classifying its lines.

#include "busypool.h"
#include "diffparser.h"

#include <QtTest>

using namespace kestrine;
using namespace kestrine::testing;

namespace {

using T = DiffLineType;

QList<DiffLine> parsed(const QString &text)
{
    return ParsedDiff::parse(text).lines();
}

DiffLine line(const char *text, DiffLineType::Value type)
{
    return {QString::fromUtf8(text), type};
}

/// A diff of three files: a.cpp, then a.c, then docs/readme.md.
const QString threeFiles = QStringLiteral("diff --git a/a.cpp b/a.cpp\n"
                                          "index 111..222 100644\n"
                                          "--- a/a.cpp\n"
                                          "+++ b/a.cpp\n"
                                          "@@ -1 +1 @@\n"
                                          "-int x;\n"
                                          "+int y;\n"
                                          "diff --git a/a.c b/a.c\n"
                                          "index 333..444 100644\n"
                                          "--- a/a.c\n"
                                          "+++ b/a.c\n"
                                          "@@ -1,2 +1,2 @@\n"
                                          " keep\n"
                                          "-old\n"
                                          "+new\n"
                                          "diff --git a/docs/readme.md b/docs/readme.md\n"
                                          "--- a/docs/readme.md\n"
                                          "+++ b/docs/readme.md\n"
                                          "@@ -3 +3 @@\n"
                                          "+last line\n");

/// A diff of `files` files of a few hunks each, megabytes long for thousands of files; file n is
/// "pkg/n/file.go".
QString manyFiles(int files)
{
    QString diff;
    for (int n = 0; n < files; ++n) {
        const QString name = QStringLiteral("pkg/%1/file.go").arg(n);
        diff += QStringLiteral("diff --git a/%1 b/%1\nindex 83db48f..bf269f4 100644\n--- a/%1\n"
                               "+++ b/%1\n")
                    .arg(name);
        for (int hunk = 0; hunk < 3; ++hunk) {
            diff += QStringLiteral("@@ -%1,4 +%1,4 @@ func f()\n").arg(hunk * 10 + 1);
            diff += QStringLiteral(" \tkeep := 1\n-\told := 2\n+\tnew := 3\r\n\\ No newline\n");
        }
    }
    return diff;
}

} // namespace

class TestDiffParser : public QObject
{
    Q_OBJECT

private slots:
    void classification_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<DiffLineType::Value>("type");
        QTest::newRow("hunk header") << "@@ -1,3 +1,4 @@ int main()" << T::Hunk;
        QTest::newRow("@@ alone is a hunk") << "@@" << T::Hunk;
        QTest::newRow("diff header") << "diff --git a/x b/x" << T::Meta;
        QTest::newRow("index line") << "index 83db48f..bf269f4 100644" << T::Meta;
        QTest::newRow("old file header") << "--- a/x" << T::Meta;
        QTest::newRow("new file header") << "+++ b/x" << T::Meta;
        QTest::newRow("removed line starting '-- ' reads as meta") << "--- comment" << T::Meta;
        QTest::newRow("+ alone is an addition") << "+" << T::Addition;
        QTest::newRow("+++ without blank is an addition") << "+++" << T::Addition;
        QTest::newRow("addition") << "+int y;" << T::Addition;
        QTest::newRow("three hyphens without blank are a deletion") << "---" << T::Deletion;
        QTest::newRow("deletion") << "-int x;" << T::Deletion;
        QTest::newRow("context with leading blank") << " keep" << T::Context;
        QTest::newRow("no newline marker") << "\\ No newline at end of file" << T::Context;
        QTest::newRow("empty line") << "" << T::Context;
        QTest::newRow("diff without blank is context") << "diff" << T::Context;
        QTest::newRow("indexed word is context") << "indexing" << T::Context;
        QTest::newRow("single @ is context") << "@ x" << T::Context;
    }

    void classification()
    {
        QFETCH(QString, text);
        QFETCH(DiffLineType::Value, type);
        QCOMPARE(classifyDiffLine(text), type);
        QCOMPARE(parsed(text), QList<DiffLine>{DiffLine({text, type})});
    }

    void emptyTextIsOneEmptyContextLine()
    {
        QCOMPARE(parsed(QString()), QList<DiffLine>{line("", T::Context)});
    }

    void trailingLineBreakGivesFinalEmptyLine()
    {
        QCOMPARE(parsed(QStringLiteral("+a\n-b\n")),
                 (QList<DiffLine>{line("+a", T::Addition), line("-b", T::Deletion),
                                  line("", T::Context)}));
    }

    void carriageReturnStaysOnItsLine()
    {
        QCOMPARE(parsed(QStringLiteral("+a\r\n b\r\n")),
                 (QList<DiffLine>{line("+a\r", T::Addition), line(" b\r", T::Context),
                                  line("", T::Context)}));
    }

    void spanAccessorsMatchTheLines()
    {
        const ParsedDiff diff = ParsedDiff::parse(QStringLiteral("@@ h\n x\n+y"));
        QCOMPARE(diff.size(), 3);
        QCOMPARE(diff.text(0), u"@@ h");
        QCOMPARE(diff.text(2), u"+y");
        QCOMPARE(diff.type(1), T::Context);
        QCOMPARE(diff.at(2), line("+y", T::Addition));
    }

    void sectionRunsFromTheMarkerToTheNextFileHeader()
    {
        QCOMPARE(diffSection(threeFiles, u"docs/readme.md"), u"\n@@ -3 +3 @@\n+last line\n");
        const QList<DiffLine> lines = parseFileDiff(threeFiles, u"a.cpp").lines();
        QCOMPARE(lines,
                 (QList<DiffLine>{line("", T::Context), line("@@ -1 +1 @@", T::Hunk),
                                  line("-int x;", T::Deletion), line("+int y;", T::Addition)}));
    }

    void markerLineRemainderIsAnEmptyContextLineAtTheTop()
    {
        const QList<DiffLine> lines = parseFileDiff(threeFiles, u"a.cpp").lines();
        QCOMPARE(lines.first(), line("", T::Context));
        for (const DiffLine &each : lines)
            QVERIFY(!each.text.startsWith(u"+++ ") && !each.text.startsWith(u"diff --git "));
    }

    void lastFileRunsToTheEndOfTheText()
    {
        const QList<DiffLine> lines = parseFileDiff(threeFiles, u"docs/readme.md").lines();
        QCOMPARE(lines, (QList<DiffLine>{line("", T::Context), line("@@ -3 +3 @@", T::Hunk),
                                         line("+last line", T::Addition), line("", T::Context)}));
    }

    void firstSubstringMatchWinsSoAcStartsInsideTheHeaderOfAcpp()
    {
        // "+++ b/a.c" first occurs inside "+++ b/a.cpp": the section starts with "pp".
        const QList<DiffLine> lines = parseFileDiff(threeFiles, u"a.c").lines();
        QCOMPARE(lines.first(), line("pp", T::Context));
        QCOMPARE(lines.at(1), line("@@ -1 +1 @@", T::Hunk));
        QCOMPARE(lines.last(), line("+int y;", T::Addition));
        QCOMPARE(lines.size(), 4);
    }

    void missingMarkerShowsTheWholeDiff()
    {
        // A deleted file's header names /dev/null, so its marker never appears.
        const QString deleted = QStringLiteral("diff --git a/gone.txt b/gone.txt\n"
                                               "deleted file mode 100644\n"
                                               "--- a/gone.txt\n"
                                               "+++ /dev/null\n"
                                               "@@ -1 +0,0 @@\n"
                                               "-bye\n");
        QVERIFY(diffSection(deleted, u"gone.txt").isEmpty());
        QCOMPARE(parseFileDiff(deleted, u"gone.txt").lines(), parsed(deleted));
        QCOMPARE(parseFileDiff(threeFiles, u"renamed-away.txt").lines(), parsed(threeFiles));
    }

    void markerSearchIsCaseSensitive() { QVERIFY(diffSection(threeFiles, u"A.CPP").isEmpty()); }

    void markerAtTheVeryEndGivesAnEmptySectionAndTheWholeDiff()
    {
        const QString text = QStringLiteral("diff --git a/x b/x\n+++ b/x");
        QVERIFY(diffSection(text, u"x").isEmpty());
        QCOMPARE(parseFileDiff(text, u"x").size(), 2);
    }

    void parsingOnAWorkerThreadGivesTheSameLines_data()
    {
        QTest::addColumn<QString>("diff");
        QTest::addColumn<QString>("filename");
        QTest::newRow("a file's section") << threeFiles << "a.cpp";
        QTest::newRow("the last file, to the end") << threeFiles << "docs/readme.md";
        QTest::newRow("a.c found inside the header of a.cpp") << threeFiles << "a.c";
        QTest::newRow("a file not in the diff: all of it") << threeFiles << "renamed-away.txt";
        QTest::newRow("an empty diff") << QString() << "a.cpp";
        QTest::newRow("megabytes, a file in the middle") << manyFiles(20000) << "pkg/10000/file.go";
        QTest::newRow("megabytes, all of it") << manyFiles(20000) << "absent.go";
    }

    void parsingOnAWorkerThreadGivesTheSameLines()
    {
        QFETCH(QString, diff);
        QFETCH(QString, filename);
        const QList<DiffLine> expected = parseFileDiff(diff, filename).lines();
        QFuture<ParsedDiff> future = parseFileDiffInBackground(diff, filename);
        future.waitForFinished();
        QCOMPARE(future.result().lines(), expected);
    }

    void parsingInTheBackgroundWaitsForAWorkerInsteadOfRunningOnTheCaller()
    {
        BusyPool pool(diffSplittingThread());
        QFuture<ParsedDiff> future = parseFileDiffInBackground(threeFiles, QStringLiteral("a.c"));
        // The only worker is busy, so nothing has parsed the diff yet.
        QTest::qWait(50);
        QVERIFY(!future.isFinished());
        pool.release();
        future.waitForFinished();
        QCOMPARE(future.result().lines(), parseFileDiff(threeFiles, u"a.c").lines());
    }
};

QTEST_GUILESS_MAIN(TestDiffParser)
#include "tst_diffparser.moc"
