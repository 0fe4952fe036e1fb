// The Markdown line classifier on arbitrary text, held against its documented rules written
// plainly: pieces split at "\n" only; a piece starting with three backticks flips the code fence
// and shows nothing; inside a fence a piece is code, as it is; "# ", "## ", "### " start headings
// (text trimmed of blanks and tabs); "- " and "* " bullets; a piece of only blanks and tabs is
// blank; anything else is text, untrimmed. No piece is lost: every piece but the fence lines
// gives exactly one line, in order.

#include "fuzzsupport.h"
#include "markdownlines.h"

using namespace kestrine;
using namespace kestrine::fuzz;

namespace {

QString trimmedOfBlanks(QString text)
{
    while (!text.isEmpty() && (text.front() == u' ' || text.front() == u'\t'))
        text.remove(0, 1);
    while (!text.isEmpty() && (text.back() == u' ' || text.back() == u'\t'))
        text.chop(1);
    return text;
}

QList<MarkdownLine> documentedLines(const QString &markdown)
{
    QList<MarkdownLine> lines;
    bool insideFence = false;
    for (const QString &piece : markdown.split(u'\n')) {
        if (piece.startsWith(QStringLiteral("```"))) {
            insideFence = !insideFence;
        } else if (insideFence) {
            lines.append({MarkdownLine::Code, piece, 0});
        } else if (piece.startsWith(QStringLiteral("# "))) {
            lines.append({MarkdownLine::Heading, trimmedOfBlanks(piece.mid(1)), 1});
        } else if (piece.startsWith(QStringLiteral("## "))) {
            lines.append({MarkdownLine::Heading, trimmedOfBlanks(piece.mid(2)), 2});
        } else if (piece.startsWith(QStringLiteral("### "))) {
            lines.append({MarkdownLine::Heading, trimmedOfBlanks(piece.mid(3)), 3});
        } else if (piece.startsWith(QStringLiteral("- ")) ||
                   piece.startsWith(QStringLiteral("* "))) {
            lines.append({MarkdownLine::Bullet, piece.mid(2), 0});
        } else if (!trimmedOfBlanks(piece).isEmpty()) {
            lines.append({MarkdownLine::Text, piece, 0});
        } else {
            lines.append({MarkdownLine::Blank, QString(), 0});
        }
    }
    return lines;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString markdown = QString::fromUtf8(bytes(data, size));
    const QList<MarkdownLine> lines = markdownLines(markdown);
    const QList<MarkdownLine> expected = documentedLines(markdown);
    check(lines.size() == expected.size(), "every piece but a fence line gives one line");
    for (qsizetype i = 0; i < lines.size(); ++i) {
        check(lines[i] == expected[i], "each line follows the documented rules",
              QStringLiteral("line %1: %2").arg(i).arg(expected[i].text));
        check((lines[i].kind == MarkdownLine::Heading) == (lines[i].level > 0),
              "only headings have a level");
    }
    return 0;
}
