#pragma once

#include <QObject>
#include <QString>
#include <QStringView>
#include <QtQml/qqmlregistration.h>

namespace kestrine::ui {

/// The inline formatting of one line of a Markdown body, as rich text for a Text item: emphasis
/// (bold, italic, strikethrough), code spans and links, and nothing else.
///
/// The line is written by whoever opened the pull request, so nothing it contains may reach the
/// text engine as markup of its own: the line is parsed as CommonMark with GitHub's extensions and
/// without HTML, and the rich text is then written afresh from what the parser found, every piece
/// of text escaped. Raw HTML therefore shows as typed, an image shows its alt text and is never
/// fetched, and a link keeps its target only when it may be opened (ExternalLinks); any other
/// link is drawn as its text. Block structure that a single line can start (a numbered list,
/// a quote, an indented code block, a deeper heading, a rule) is not this renderer's business:
/// such a line keeps its markers and reads as typed, with only its inline formatting applied.
class InlineMarkdownFormat : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    explicit InlineMarkdownFormat(QObject *parent = nullptr);

    /// `line` as rich text: only the tags <b>, <i>, <s>, <code> and <a href> within one
    /// white-space-keeping <span>, every other character escaped.
    static QString toRichText(QStringView line);

    Q_INVOKABLE QString richText(const QString &line) const { return toRichText(line); }
};

} // namespace kestrine::ui
