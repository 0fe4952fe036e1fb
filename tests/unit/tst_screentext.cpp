// The screens' helpers for text from a server: the inline formatting of a description's lines
// (emphasis, code spans and links written afresh as rich text, and nothing of the line itself taken
// as markup), which links may leave the app, how a stranger's text is kept from reversing the words
// around it, and which Qt messages mean a broken screen.

#include "bidi.h"
#include "externallinks.h"
#include "inlinemarkdownformat.h"
#include "screenwarnings.h"

#include <QGuiApplication>
#include <QRegularExpression>
#include <QTest>

using kestrine::ui::Bidi;
using kestrine::ui::ExternalLinks;
using kestrine::ui::InlineMarkdownFormat;
using kestrine::ui::isBrokenScreenMessage;

namespace {

QString span(const QString &html)
{
    return QStringLiteral("<span style=\"white-space:pre-wrap\">") + html +
           QStringLiteral("</span>");
}

/// The columns of a table of lines and the rich text each must give.
void richTextColumns()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("html");
}

void compareRichText()
{
    QFETCH(QString, line);
    QFETCH(QString, html);
    QCOMPARE(InlineMarkdownFormat::toRichText(line), html);
}

} // namespace

class TestScreenText : public QObject
{
    Q_OBJECT

private slots:
    void inlineFormattingBecomesItsOwnMarkup_data()
    {
        richTextColumns();

        QTest::newRow("plain") << "Just text." << span("Just text.");
        QTest::newRow("strong and emphasis")
            << "**strong** *em* __strong__ _em_ ***both***"
            << span("<b>strong</b> <i>em</i> <b>strong</b> <i>em</i> <b><i>both</i></b>");
        QTest::newRow("code span keeps its characters")
            << "`a <b> & c`" << span("<code>a &lt;b&gt; &amp; c</code>");
        QTest::newRow("strikethrough") << "~~gone~~" << span("<s>gone</s>");
        QTest::newRow("web link") << "[page](https://example.org/a?b=1&c=2)"
                                  << span("<a href=\"https://example.org/a?b=1&amp;c=2\">page</a>");
        QTest::newRow("link target is written encoded")
            << "[x](https://example.org/\"quoted\")"
            << span("<a href=\"https://example.org/%22quoted%22\">x</a>");
        QTest::newRow("mail link") << "[mail](mailto:ann@example.org)"
                                   << span("<a href=\"mailto:ann@example.org\">mail</a>");
        QTest::newRow("autolinks")
            << "<https://example.org> www.example.org ann@example.org"
            << span("<a href=\"https://example.org\">https://example.org</a> "
                    "<a href=\"http://www.example.org\">www.example.org</a> "
                    "<a href=\"mailto:ann@example.org\">ann@example.org</a>");
        QTest::newRow("blanks are kept") << "a    b\tc" << span("a    b\tc");
        QTest::newRow("empty") << "" << span("");
    }

    void inlineFormattingBecomesItsOwnMarkup() { compareRichText(); }

    void rawHtmlShowsAsTyped_data()
    {
        richTextColumns();

        QTest::newRow("image tag") << "<img src=\"http://host/x.png\">"
                                   << span("&lt;img src=&quot;http://host/x.png&quot;&gt;");
        QTest::newRow("font and bold")
            << "<font color=\"#ff00ff\">pink</font> <b>b</b>"
            << span("&lt;font color=&quot;#ff00ff&quot;&gt;pink&lt;/font&gt; &lt;b&gt;b&lt;/b&gt;");
        QTest::newRow("anchor") << "<a href=\"http://host/\">x</a>"
                                << span("&lt;a href=&quot;http://host/&quot;&gt;x&lt;/a&gt;");
        QTest::newRow("css") << "<span style=\"background-image:url(http://host/x.png)\">x</span>"
                             << span("&lt;span style=&quot;background-image:url(http://host/"
                                     "x.png)&quot;&gt;x&lt;/span&gt;");
        QTest::newRow("block of html") << "<table><tr><td>x</td></tr></table>"
                                       << span("&lt;table&gt;&lt;tr&gt;&lt;td&gt;x&lt;/td&gt;&lt;/"
                                               "tr&gt;&lt;/table&gt;");
        QTest::newRow("entities are text once read")
            << "&lt;b&gt; &amp; &#x41;" << span("&lt;b&gt; &amp; A");
    }

    void rawHtmlShowsAsTyped() { compareRichText(); }

    void anImageShowsItsAltText_data()
    {
        richTextColumns();

        QTest::newRow("image") << "see ![the chart](http://host/chart.png) here"
                               << span("see the chart here");
        QTest::newRow("alt text with emphasis") << "![a *b* c](http://host/x.png)" << span("a b c");
        QTest::newRow("linked image")
            << "[![badge](http://host/b.svg)](https://ci.example.org)" << span("badge");
    }

    void anImageShowsItsAltText() { compareRichText(); }

    void anImageWithoutAltTextLeavesNoTraceOfItsAddress()
    {
        const QString html = InlineMarkdownFormat::toRichText(u"![](http://host/x.png)");
        QVERIFY2(!html.contains(QStringLiteral("host")), qPrintable(html));
        QVERIFY2(!html.contains(QStringLiteral("<a")), qPrintable(html));
    }

    void aLinkThatMayNotBeOpenedIsItsText_data()
    {
        richTextColumns();

        QTest::newRow("file") << "[x](file:///etc/passwd)" << span("x");
        QTest::newRow("javascript") << "[x](javascript:alert(1))" << span("x");
        QTest::newRow("custom scheme") << "[x](kestrine-evil://run)" << span("x");
        QTest::newRow("relative") << "[x](../README.md)" << span("x");
        QTest::newRow("data") << "[x](data:text/html,hi)" << span("x");
        QTest::newRow("no host") << "[x](https:///path)" << span("x");
    }

    void aLinkThatMayNotBeOpenedIsItsText() { compareRichText(); }

    void blockMarkersOfALineReadAsTyped_data()
    {
        richTextColumns();

        QTest::newRow("numbered list") << "1. first **one**" << span("1. first <b>one</b>");
        QTest::newRow("numbered with parenthesis") << "2) second" << span("2) second");
        QTest::newRow("plus bullet") << "+ item" << span("+ item");
        QTest::newRow("quote") << "> quoted *text*" << span("&gt; quoted <i>text</i>");
        QTest::newRow("deeper heading") << "#### Four" << span("#### Four");
        QTest::newRow("indented code") << "    `code` here" << span("    <code>code</code> here");
        QTest::newRow("nested bullet") << "  - sub" << span("  - sub");
        QTest::newRow("rule") << "***" << span("***");
        QTest::newRow("tilde fence") << "~~~ fence" << span("~~~ fence");
        QTest::newRow("link definition")
            << "[ref]: https://example.org"
            << span("[ref]: <a href=\"https://example.org\">https://example.org</a>");
        QTest::newRow("carriage return at the end") << "text\r" << span("text");
        QTest::newRow("carriage return alone") << "\r" << span("");
    }

    void blockMarkersOfALineReadAsTyped() { compareRichText(); }

    void aLineThatStaysSeveralParagraphsShowsAsTypedWithoutFormatting()
    {
        const QString line = QStringLiteral("**a**\r# <b>b</b>");
        QCOMPARE(InlineMarkdownFormat::toRichText(line),
                 span(QStringLiteral("**a**\r# &lt;b&gt;b&lt;/b&gt;")));
    }

    void theOnlyTagsAreTheRenderersOwn()
    {
        const QString line = QStringLiteral(
            "<img src=\"http://h/a.png\"> ![x](http://h/b.png) **b** _i_ ~~s~~ `c` "
            "[l](https://example.org) <font color=red>f</font> &lt;i&gt; \u202eevil");
        const QString html = InlineMarkdownFormat::toRichText(line);
        static const QRegularExpression tag(QStringLiteral("<(/?[a-z]+)"));
        QStringList tags;
        for (const QRegularExpressionMatch &match : tag.globalMatch(html))
            tags.append(match.captured(1));
        tags.removeDuplicates();
        tags.sort();
        QCOMPARE(tags, (QStringList{"/a", "/b", "/code", "/i", "/s", "/span", "a", "b", "code", "i",
                                    "s", "span"}));
        QVERIFY(html.contains(QStringLiteral("\u202eevil")));
    }

    void openableLinks_data()
    {
        QTest::addColumn<QString>("link");
        QTest::addColumn<bool>("openable");

        QTest::newRow("https") << "https://example.org/page" << true;
        QTest::newRow("http") << "http://example.org" << true;
        QTest::newRow("upper-case scheme") << "HTTPS://example.org" << true;
        QTest::newRow("mailto") << "mailto:ann@example.org" << true;
        QTest::newRow("empty mailto") << "mailto:" << false;
        QTest::newRow("file") << "file:///etc/passwd" << false;
        QTest::newRow("upper-case file") << "FILE:///etc/passwd" << false;
        QTest::newRow("javascript") << "javascript:alert(1)" << false;
        QTest::newRow("custom") << "kestrine-evil://run" << false;
        QTest::newRow("ssh") << "ssh://git@example.org/x" << false;
        QTest::newRow("relative") << "page.html" << false;
        QTest::newRow("no host") << "https:///x" << false;
        QTest::newRow("empty") << "" << false;
    }

    void openableLinks()
    {
        QFETCH(QString, link);
        QFETCH(bool, openable);
        QCOMPARE(ExternalLinks::isOpenable(link), openable);
    }

    void textWithDirectionalFormattingIsSetApart_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("isolated");

        QTest::newRow("plain") << "ann"
                               << "ann";
        QTest::newRow("right-to-left letters") << "\u05d3\u05e0\u05d4"
                                               << "\u05d3\u05e0\u05d4";
        QTest::newRow("markup") << "<b>x</b>"
                                << "<b>x</b>";
        QTest::newRow("empty") << ""
                               << "";
        QTest::newRow("override left open") << "\u202edevorppa"
                                            << "\u2068\u202edevorppa\u2069";
        QTest::newRow("embedding") << "a\u202bb"
                                   << "\u2068a\u202bb\u2069";
        QTest::newRow("isolate left open") << "\u2067x"
                                           << "\u2068\u2067x\u2069\u2069";
        QTest::newRow("isolate of its own") << "\u2066x\u2069y"
                                            << "\u2068\u2066x\u2069y\u2069";
        QTest::newRow("an end that would end ours early") << "\u2069\u202eevil"
                                                          << "\u2068\u202eevil\u2069";
    }

    void textWithDirectionalFormattingIsSetApart()
    {
        QFETCH(QString, text);
        QFETCH(QString, isolated);
        QCOMPARE(Bidi::isolate(text), isolated);
    }

    void brokenScreenMessages_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("message");
        QTest::addColumn<bool>("broken");

        QTest::newRow("undecodable icon")
            << int(QtWarningMsg)
            << "qrc:/qt/qml/Kestrine/Icon.qml:6:1: QML Icon: Error decoding: "
               "qrc:/qt/qml/Kestrine/icons/gearshape.svg: Unsupported image format"
            << true;
        QTest::newRow("missing image")
            << int(QtWarningMsg) << "QML Image: Cannot open: qrc:/x.png" << true;
        QTest::newRow("reference error")
            << int(QtWarningMsg) << "file.qml:3: ReferenceError: vm is not defined" << true;
        QTest::newRow("type error")
            << int(QtWarningMsg) << "file.qml:3: TypeError: Cannot read property 'title' of null"
            << true;
        QTest::newRow("binding loop")
            << int(QtWarningMsg)
            << "file.qml:3:5: QML Label: Binding loop detected for property \"width\"" << true;
        QTest::newRow("cannot assign")
            << int(QtWarningMsg) << "file.qml:3: Cannot assign [undefined] to QString" << true;
        QTest::newRow("unable to assign")
            << int(QtWarningMsg) << "file.qml:3: Unable to assign [undefined] to int" << true;
        QTest::newRow("module not installed")
            << int(QtWarningMsg) << "file.qml:2:1: module \"QtQuick.Dialogs\" is not installed"
            << true;
        QTest::newRow("component")
            << int(QtWarningMsg) << "QQmlComponent: Component is not ready" << true;
        QTest::newRow("missing font")
            << int(QtWarningMsg)
            << "Populating font family aliases took 50 ms. Replace uses of missing font family "
               "\"DejaVu Sans Mono\" with one that exists to avoid this cost."
            << true;
        QTest::newRow("debug message") << int(QtDebugMsg) << "TypeError in a debug line" << false;
        QTest::newRow("unrelated warning")
            << int(QtWarningMsg) << "QStandardPaths: XDG_RUNTIME_DIR not set" << false;
    }

    void brokenScreenMessages()
    {
        QFETCH(int, type);
        QFETCH(QString, message);
        QFETCH(bool, broken);
        QCOMPARE(isBrokenScreenMessage(QtMsgType(type), message), broken);
    }
};

QTEST_MAIN(TestScreenText)
#include "tst_screentext.moc"
