#include "inlinemarkdownformat.h"

#include "externallinks.h"

#include <QFont>
#include <QTextBlock>
#include <QTextCharFormat>
#include <QTextDocument>
#include <QTextFragment>
#include <QTextFrame>
#include <QUrl>
#include <optional>

namespace kestrine::ui {
namespace {

/// A document that never loads a resource. The parser records an image by its address only; a
/// document asked to lay it out would go and fetch it, and nothing here ever should.
class InertDocument : public QTextDocument
{
protected:
    QVariant loadResource(int, const QUrl &) override { return {}; }
};

// GitHub's dialect as Qt reads it turns "_text_" into underlined text (its parser's underline
// extension, flag 0x4000). On GitHub, as in CommonMark, "_text_" is emphasis and "__text__" strong,
// so that one extension is left out.
constexpr int underlineExtension = 0x4000;
const QTextDocument::MarkdownFeatures features =
    (QTextDocument::MarkdownFeatures(QTextDocument::MarkdownDialectGitHub) |
     QTextDocument::MarkdownNoHTML) &
    ~QTextDocument::MarkdownFeatures::fromInt(underlineExtension);

/// Whether the parsed line is one ordinary paragraph, the only shape whose content is inline.
bool isOneParagraph(const QTextDocument &document)
{
    if (document.blockCount() != 1 || !document.rootFrame()->childFrames().isEmpty())
        return false;
    const QTextBlock block = document.firstBlock();
    const QTextBlockFormat format = block.blockFormat();
    return block.textList() == nullptr && format.headingLevel() == 0 &&
           format.intProperty(QTextFormat::BlockQuoteLevel) == 0 &&
           !format.hasProperty(QTextFormat::BlockCodeLanguage) &&
           !format.hasProperty(QTextFormat::BlockCodeFence) &&
           !format.hasProperty(QTextFormat::BlockTrailingHorizontalRulerWidth);
}

/// `text` with its first character written as a character reference. The parser reads it back
/// as the same character, but as text, so that it no longer opens a list ("1.", "+"), a quote
/// (">"), a heading ("#"), a fence ("~~~"), a rule ("***") or a link definition ("[a]: x").
QString withFirstCharacterAsText(const QString &text)
{
    if (text.isEmpty())
        return text;
    const bool pair = text.size() > 1 && text[0].isHighSurrogate() && text[1].isLowSurrogate();
    const char32_t first = pair ? QChar::surrogateToUcs4(text[0], text[1]) : text[0].unicode();
    return QStringLiteral("&#%1;").arg(uint(first)) + text.mid(pair ? 2 : 1);
}

/// Parses `markdown` into `document`; true when it is one ordinary paragraph that shows
/// something, or shows nothing because there was nothing to show.
bool parseParagraph(InertDocument &document, const QString &markdown)
{
    document.setMarkdown(markdown, features);
    if (!isOneParagraph(document))
        return false;
    // An empty paragraph from a line with something on it: a block that swallowed it, such as a
    // fence without lines or a link reference definition.
    return !document.isEmpty() || markdown.trimmed().isEmpty();
}

/// What a fragment shows: its text, or for images their alt text (the document holds one object
/// character per image).
QString shownText(const QTextFragment &fragment, const QTextCharFormat &format)
{
    if (!format.isImageFormat())
        return fragment.text();
    const QString alt = format.stringProperty(QTextFormat::ImageAltText);
    return alt.repeated(fragment.text().count(QChar::ObjectReplacementCharacter));
}

QString escaped(const QString &text)
{
    QString html = text.toHtmlEscaped();
    html.replace(QChar::LineSeparator, QStringLiteral("<br>"));
    html.replace(QChar::ParagraphSeparator, QStringLiteral("<br>"));
    return html;
}

/// The link target to keep, written so that the text engine hands back exactly the URL that was
/// checked; nothing when the link may not be opened.
std::optional<QString> openableTarget(const QTextCharFormat &format)
{
    if (!format.isAnchor())
        return std::nullopt;
    const QUrl url(format.anchorHref());
    if (!ExternalLinks::isOpenable(url))
        return std::nullopt;
    return QString::fromUtf8(url.toEncoded());
}

QString fragmentHtml(const QTextFragment &fragment)
{
    const QTextCharFormat format = fragment.charFormat();
    QString html = escaped(shownText(fragment, format));
    if (html.isEmpty())
        return html;
    if (format.fontFixedPitch())
        html = QStringLiteral("<code>") + html + QStringLiteral("</code>");
    if (format.fontStrikeOut())
        html = QStringLiteral("<s>") + html + QStringLiteral("</s>");
    if (format.fontItalic())
        html = QStringLiteral("<i>") + html + QStringLiteral("</i>");
    if (format.fontWeight() > QFont::Normal)
        html = QStringLiteral("<b>") + html + QStringLiteral("</b>");
    if (const std::optional<QString> target = openableTarget(format))
        html = QStringLiteral("<a href=\"") + target->toHtmlEscaped() + QStringLiteral("\">") +
               html + QStringLiteral("</a>");
    return html;
}

QString spanOf(const QString &html)
{
    // Blanks are kept as typed, as they are in the line's plain text.
    return QStringLiteral("<span style=\"white-space:pre-wrap\">") + html +
           QStringLiteral("</span>");
}

} // namespace

InlineMarkdownFormat::InlineMarkdownFormat(QObject *parent)
    : QObject(parent)
{}

QString InlineMarkdownFormat::toRichText(QStringView line)
{
    // Leading blanks are shown as typed: they are not inline formatting, and a parser would either
    // drop them or, from four on, read a code block.
    qsizetype indent = 0;
    while (indent < line.size() && (line[indent] == u' ' || line[indent] == u'\t'))
        ++indent;
    const QString rest = line.mid(indent).toString();
    const QString indentHtml = line.left(indent).toString();

    InertDocument document;
    if (!parseParagraph(document, rest) &&
        !parseParagraph(document, withFirstCharacterAsText(rest))) {
        // Still not one paragraph (a carriage return inside the line starts another): the line
        // as typed, without formatting.
        return spanOf(escaped(line.toString()));
    }
    QString html = indentHtml;
    for (auto it = document.firstBlock().begin(); !it.atEnd(); ++it)
        html += fragmentHtml(it.fragment());
    return spanOf(html);
}

} // namespace kestrine::ui
