#include "diffparser.h"

#include "workerthread.h"

#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>
#include <algorithm>
#include <string_view>

namespace kestrine {

namespace {

/// A plain prefix test, inline: it runs once or twice for each of hundreds of thousands of lines.
bool hasPrefix(QStringView line, std::u16string_view prefix)
{
    return size_t(line.size()) >= prefix.size() &&
           std::equal(prefix.begin(), prefix.end(), line.utf16());
}

} // namespace

DiffLineType::Value classifyDiffLine(QStringView line)
{
    // The first character picks the only rules that can match, tried in their order: "@@" hunk;
    // "diff ", "index ", "--- ", "+++ " meta; "+" addition; "-" deletion; else context.
    if (line.isEmpty())
        return DiffLineType::Context;
    switch (line.front().unicode()) {
    case u'@':
        return hasPrefix(line, u"@@") ? DiffLineType::Hunk : DiffLineType::Context;
    case u'd':
        return hasPrefix(line, u"diff ") ? DiffLineType::Meta : DiffLineType::Context;
    case u'i':
        return hasPrefix(line, u"index ") ? DiffLineType::Meta : DiffLineType::Context;
    case u'-':
        return hasPrefix(line, u"--- ") ? DiffLineType::Meta : DiffLineType::Deletion;
    case u'+':
        return hasPrefix(line, u"+++ ") ? DiffLineType::Meta : DiffLineType::Addition;
    default:
        return DiffLineType::Context;
    }
}

ParsedDiff ParsedDiff::parse(QString text)
{
    ParsedDiff parsed;
    parsed.m_text = std::move(text);
    const QStringView all(parsed.m_text);
    // Diff lines average some 40 characters; reserving on that guess avoids most regrowth.
    parsed.m_lines.reserve(all.size() / 40 + 1);
    qsizetype start = 0;
    while (true) {
        const qsizetype end = all.indexOf(u'\n', start);
        const qsizetype length = (end < 0 ? all.size() : end) - start;
        parsed.m_lines.append({start, length, classifyDiffLine(all.sliced(start, length))});
        if (end < 0)
            break;
        start = end + 1;
    }
    return parsed;
}

QStringView ParsedDiff::text(qsizetype index) const
{
    const Span &span = m_lines.at(index);
    return QStringView(m_text).sliced(span.start, span.length);
}

QList<DiffLine> ParsedDiff::lines() const
{
    QList<DiffLine> all;
    all.reserve(size());
    for (qsizetype i = 0; i < size(); ++i)
        all.append(at(i));
    return all;
}

QStringView diffSection(QStringView diff, QStringView filename)
{
    const QString marker = QStringLiteral("+++ b/") + filename.toString();
    const qsizetype found = diff.indexOf(marker);
    if (found < 0)
        return {};
    const QStringView section = diff.sliced(found + marker.size());
    const qsizetype next = section.indexOf(u"\ndiff --git ");
    return next < 0 ? section : section.first(next);
}

ParsedDiff parseFileDiff(const QString &diff, QStringView filename)
{
    const QStringView section = diffSection(diff, filename);
    if (section.isEmpty())
        return ParsedDiff::parse(diff);
    return ParsedDiff::parse(section.toString());
}

QFuture<ParsedDiff> parseFileDiffInBackground(QString diff, QString filename)
{
    // The function object, with the text it holds, is destroyed on the worker once it has run.
    return QtConcurrent::run(diffSplittingThread(),
                             [diff = std::move(diff), filename = std::move(filename)] {
                                 return parseFileDiff(diff, filename);
                             });
}

QThreadPool *diffSplittingThread()
{
    // Waits for a split under way when the program ends.
    static WorkerThread pool;
    return &pool;
}

} // namespace kestrine
