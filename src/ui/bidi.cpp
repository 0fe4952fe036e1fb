#include "bidi.h"

#include <algorithm>

namespace kestrine::ui {
namespace {

/// Whether `text` holds an explicit directional formatting character: an embedding, override or
/// isolate, or the end of one (U+202A to U+202E, U+2066 to U+2069).
bool hasDirectionalFormatting(const QString &text)
{
    return std::any_of(text.cbegin(), text.cend(), [](QChar c) {
        const char16_t u = c.unicode();
        return (u >= 0x202A && u <= 0x202E) || (u >= 0x2066 && u <= 0x2069);
    });
}

} // namespace

Bidi::Bidi(QObject *parent)
    : QObject(parent)
{}

QString Bidi::isolate(const QString &text)
{
    if (!hasDirectionalFormatting(text))
        return text;
    constexpr char16_t firstStrongIsolate = 0x2068;
    constexpr char16_t popDirectionalIsolate = 0x2069;
    // An isolate ends at the first end-of-isolate that is not the text's own: the text may not
    // end ours early, so its unmatched ends go, and the isolates it leaves open are ended before
    // ours.
    QString isolated(1, QChar(firstStrongIsolate));
    int open = 0;
    for (const QChar c : text) {
        if (c.unicode() >= 0x2066 && c.unicode() <= firstStrongIsolate) {
            ++open;
        } else if (c.unicode() == popDirectionalIsolate) {
            if (open == 0)
                continue;
            --open;
        }
        isolated += c;
    }
    isolated += QString(open + 1, QChar(popDirectionalIsolate));
    return isolated;
}

} // namespace kestrine::ui
