// Classifying a Markdown body line by line for the detail screen.

#include "markdownlines.h"

#include <QAbstractItemModelTester>
#include <QtTest>

using namespace kestrine;

namespace {

using K = MarkdownLine;

MarkdownLine ml(MarkdownLine::Kind kind, const char *text, int level = 0)
{
    return {kind, QString::fromUtf8(text), level};
}

QList<MarkdownLine> classify(const char *markdown)
{
    return markdownLines(QString::fromUtf8(markdown));
}

} // namespace

class TestMarkdownLines : public QObject
{
    Q_OBJECT

private slots:
    void fenceWithLanguageNameMakesCodeAndHidesFenceLines()
    {
        QCOMPARE(classify("Intro\n```swift\n  let x = 1  \n\n# not a heading\n```\nAfter"),
                 (QList<MarkdownLine>{ml(K::Text, "Intro"), ml(K::Code, "  let x = 1  "),
                                      ml(K::Code, ""), ml(K::Code, "# not a heading"),
                                      ml(K::Text, "After")}));
    }

    void unclosedFenceMakesEveryRemainingLineCode()
    {
        QCOMPARE(classify("```\n- a\n\n"),
                 (QList<MarkdownLine>{ml(K::Code, "- a"), ml(K::Code, ""), ml(K::Code, "")}));
    }

    void indentedFenceIsNotAFence()
    {
        QCOMPARE(classify("  ```"), QList<MarkdownLine>{ml(K::Text, "  ```")});
    }

    void headingsOneToThree()
    {
        QCOMPARE(classify("# One\n## Two\n### Three"),
                 (QList<MarkdownLine>{ml(K::Heading, "One", 1), ml(K::Heading, "Two", 2),
                                      ml(K::Heading, "Three", 3)}));
    }

    void hashWithoutBlankIsText()
    {
        QCOMPARE(classify("#Title"), QList<MarkdownLine>{ml(K::Text, "#Title")});
    }

    void fourHashesAreText()
    {
        QCOMPARE(classify("#### Title"), QList<MarkdownLine>{ml(K::Text, "#### Title")});
    }

    void headingTextIsTrimmedOfSpacesAndTabs()
    {
        QCOMPARE(classify("##  Title  "), QList<MarkdownLine>{ml(K::Heading, "Title", 2)});
        QCOMPARE(classify("# \tTabbed\t"), QList<MarkdownLine>{ml(K::Heading, "Tabbed", 1)});
        QCOMPARE(classify("# "), QList<MarkdownLine>{ml(K::Heading, "", 1)});
    }

    void bulletsDropTheirMarkerOnly()
    {
        QCOMPARE(classify("- item\n*  starred "),
                 (QList<MarkdownLine>{ml(K::Bullet, "item"), ml(K::Bullet, " starred ")}));
    }

    void hyphenWithoutBlankIsText()
    {
        QCOMPARE(classify("-item"), QList<MarkdownLine>{ml(K::Text, "-item")});
    }

    void hyphenAndBlankAloneIsAnEmptyBullet()
    {
        QCOMPARE(classify("- "), QList<MarkdownLine>{ml(K::Bullet, "")});
    }

    void indentedBulletIsText()
    {
        QCOMPARE(classify("  - nested"), QList<MarkdownLine>{ml(K::Text, "  - nested")});
    }

    void textKeepsItsOwnSpacing()
    {
        QCOMPARE(classify("  some *text*  "), QList<MarkdownLine>{ml(K::Text, "  some *text*  ")});
        QCOMPARE(classify("1. numbered\n> quote\n| a | b |"),
                 (QList<MarkdownLine>{ml(K::Text, "1. numbered"), ml(K::Text, "> quote"),
                                      ml(K::Text, "| a | b |")}));
    }

    void lineOfOnlySpacesIsBlank()
    {
        QCOMPARE(classify("   \t "), QList<MarkdownLine>{ml(K::Blank, "")});
    }

    void consecutiveBlankLinesEachCount()
    {
        QCOMPARE(classify("a\n\n\n\nb"),
                 (QList<MarkdownLine>{ml(K::Text, "a"), ml(K::Blank, ""), ml(K::Blank, ""),
                                      ml(K::Blank, ""), ml(K::Text, "b")}));
    }

    void emptyBodyIsOneBlankLine()
    {
        QCOMPARE(classify(""), QList<MarkdownLine>{ml(K::Blank, "")});
    }

    void windowsLineEndsKeepTheirCarriageReturn()
    {
        QCOMPARE(classify("# Title\r\n- item\r\ntext\r\n\r\n```\r\ncode\r\n```\r\n"),
                 (QList<MarkdownLine>{ml(K::Heading, "Title\r", 1), ml(K::Bullet, "item\r"),
                                      ml(K::Text, "text\r"), ml(K::Text, "\r"),
                                      ml(K::Code, "code\r"), ml(K::Blank, "")}));
    }

    void carriageReturnAloneIsTextNotBlank()
    {
        QCOMPARE(classify("\r"), QList<MarkdownLine>{ml(K::Text, "\r")});
    }

    void listModelExposesKindTextAndLevel()
    {
        MarkdownLinesModel model;
        QAbstractItemModelTester tester(&model);
        QSignalSpy changed(&model, &MarkdownLinesModel::markdownChanged);
        model.setMarkdown(QStringLiteral("## Head\n- b"));
        model.setMarkdown(QStringLiteral("## Head\n- b"));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(model.rowCount(), 2);
        const QHash<int, QByteArray> roles = model.roleNames();
        QCOMPARE(roles.value(MarkdownLinesModel::KindRole), QByteArray("kind"));
        QCOMPARE(roles.value(MarkdownLinesModel::TextRole), QByteArray("text"));
        QCOMPARE(roles.value(MarkdownLinesModel::LevelRole), QByteArray("level"));
        const QModelIndex first = model.index(0);
        QCOMPARE(first.data(MarkdownLinesModel::KindRole).toInt(), int(K::Heading));
        QCOMPARE(first.data(MarkdownLinesModel::TextRole).toString(), QStringLiteral("Head"));
        QCOMPARE(first.data(MarkdownLinesModel::LevelRole).toInt(), 2);
        QCOMPARE(model.index(1).data(MarkdownLinesModel::KindRole).toInt(), int(K::Bullet));
    }
};

QTEST_GUILESS_MAIN(TestMarkdownLines)
#include "tst_markdownlines.moc"
