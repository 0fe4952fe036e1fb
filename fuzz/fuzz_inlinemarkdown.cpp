// The inline renderer of a description's lines on arbitrary text. Whatever the line holds, the
// rich text it makes is the renderer's own: one white-space-keeping span around text whose every
// "<" starts one of the tags it writes (b, i, s, code, a, br), every "&" an entity, and no link
// whose target may not be opened. Nothing else could make the text engine style or load anything.

#include "externallinks.h"
#include "fuzzsupport.h"
#include "inlinemarkdownformat.h"

#include <QGuiApplication>
#include <QRegularExpression>

using namespace kestrine;
using namespace kestrine::fuzz;

namespace {

const QString spanStart = QStringLiteral("<span style=\"white-space:pre-wrap\">");
const QString spanEnd = QStringLiteral("</span>");

void checkRichText(const QString &html)
{
    check(html.startsWith(spanStart) && html.endsWith(spanEnd), "one span around everything", html);
    const QString inner =
        html.mid(spanStart.size(), html.size() - spanStart.size() - spanEnd.size());
    static const QRegularExpression tag(QStringLiteral(
        R"re(\G(?:[^<&]+|<(?:/?(?:b|i|s|code)|br|/a|a href="([^"<>]*)")>|&(?:lt|gt|amp|quot);))re"));
    qsizetype at = 0;
    while (at < inner.size()) {
        const QRegularExpressionMatch match = tag.match(inner, at);
        check(match.hasMatch() && match.capturedStart() == at && match.capturedLength() > 0,
              "only the renderer's own tags and entities", inner.mid(at, 80));
        if (match.hasCaptured(1)) {
            QString target = match.captured(1);
            target.replace(QStringLiteral("&amp;"), QStringLiteral("&"));
            check(ui::ExternalLinks::isOpenable(target), "a link only to the web or a mailbox",
                  target);
        }
        at += match.capturedLength();
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    // The text document needs a GUI application for its fonts; no window is ever shown.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication application(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // One line of a body: the classifier splits at "\n", so a line never holds one.
    const QString line = QString::fromUtf8(bytes(data, size)).split(u'\n').constFirst();
    checkRichText(ui::InlineMarkdownFormat::toRichText(line));
    return 0;
}
