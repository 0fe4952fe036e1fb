// The diff screen's cut and parse on arbitrary text. The input's first line names the file, the
// rest is the pull request's diff. Held against the documented rules written plainly:
// - parsing never loses or invents text: the lines joined by "\n" are the input, one line more
//   than there are line feeds;
// - each line's class is the first matching prefix rule, in the documented order;
// - the section is what follows the first "+++ b/<file>", up to the line break before the next
//   "diff --git ", as a view into the diff itself; the screen parses it, or the whole diff when
//   it is empty.

#include "diffparser.h"
#include "fuzzsupport.h"

using namespace kestrine;
using namespace kestrine::fuzz;

namespace {

DiffLineType::Value documentedClass(QStringView line)
{
    if (line.startsWith(u"@@"))
        return DiffLineType::Hunk;
    if (line.startsWith(u"diff ") || line.startsWith(u"index ") || line.startsWith(u"--- ") ||
        line.startsWith(u"+++ "))
        return DiffLineType::Meta;
    if (line.startsWith(u"+"))
        return DiffLineType::Addition;
    if (line.startsWith(u"-"))
        return DiffLineType::Deletion;
    return DiffLineType::Context;
}

void checkParse(const QString &text)
{
    const ParsedDiff parsed = ParsedDiff::parse(text);
    check(parsed.size() == text.count(u'\n') + 1, "one line more than there are line feeds");
    QStringList joined;
    for (qsizetype i = 0; i < parsed.size(); ++i) {
        const QStringView line = parsed.text(i);
        check(!line.contains(u'\n'), "a line holds no line feed");
        check(parsed.type(i) == documentedClass(line), "lines take the documented class",
              line.toString());
        check(classifyDiffLine(line) == parsed.type(i), "the classifier agrees with the parse");
        joined.append(line.toString());
    }
    check(joined.join(u'\n') == text, "the lines joined are the text");
    check(parsed.lines().size() == parsed.size(), "every line has a value form");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString input = QString::fromUtf8(bytes(data, size));
    const qsizetype firstBreak = input.indexOf(u'\n');
    const QString filename = firstBreak < 0 ? input : input.left(firstBreak);
    const QString diff = firstBreak < 0 ? QString() : input.mid(firstBreak + 1);

    checkParse(diff);

    const QStringView section = diffSection(diff, filename);
    const QString marker = QStringLiteral("+++ b/") + filename;
    const qsizetype found = diff.indexOf(marker);
    if (found < 0) {
        check(section.isEmpty(), "no marker, no section");
    } else {
        QStringView expected = QStringView(diff).sliced(found + marker.size());
        const qsizetype next = expected.indexOf(u"\ndiff --git ");
        if (next >= 0)
            expected = expected.first(next);
        check(section.size() == expected.size() &&
                  (section.isEmpty() || section.data() == expected.data()),
              "the section runs from the first marker to the next file", filename);
    }

    const ParsedDiff shown = parseFileDiff(diff, filename);
    const QString shownText = section.isEmpty() ? diff : section.toString();
    check(shown.lines() == ParsedDiff::parse(shownText).lines(),
          "the screen shows the section parsed, or the whole diff", filename);
    return 0;
}
