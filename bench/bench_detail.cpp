// How fast the detail screen's text work runs on large input: cutting one file out of a 20 MB pull
// request diff (about 400,000 lines) and classifying its lines, and classifying a 1 MB Markdown
// body. Each case prints its throughput in MB/s (of UTF-8 input, 1 MB = 10^6 bytes) and the
// process's peak resident memory.

#include "diffparser.h"
#include "largetexts.h"
#include "markdownlines.h"

#include <QElapsedTimer>
#include <QFile>
#include <QtTest>
#include <algorithm>

using namespace kestrine;

namespace {

constexpr qsizetype diffTargetBytes = 20'000'000;
constexpr qsizetype markdownTargetBytes = 1'000'000;
constexpr int rounds = 5;

/// Cutting the last file out of the diff scans the whole text.
const testing::NamedFile lastFile{"last/file.cpp", 3, 1};

QByteArray largeMarkdown(qsizetype targetBytes)
{
    const QByteArray block = "# Release notes\n"
                             "Some **bold** text with `code` and a [link](https://example.com).\n"
                             "- first bullet item with *emphasis*\n"
                             "* second bullet item\n"
                             "\n"
                             "```cpp\n"
                             "int main() { return 0; }\n"
                             "```\n"
                             "## Details\n"
                             "   \n"
                             "#### not a heading, just text\n";
    QByteArray markdown;
    markdown.reserve(targetBytes + block.size());
    while (markdown.size() < targetBytes)
        markdown += block;
    return markdown;
}

/// The process's peak resident set size in MiB (VmHWM), or -1 where /proc is not available.
double peakMemoryMiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').first().toDouble() / 1024.0;
    }
    return -1;
}

/// Runs `work` `rounds` times and reports the best round's throughput over `bytes` of input.
template <class Work>
void report(const char *what, qsizetype bytes, Work work)
{
    qint64 best = std::numeric_limits<qint64>::max();
    for (int round = 0; round < rounds; ++round) {
        QElapsedTimer timer;
        timer.start();
        work();
        best = std::min(best, timer.nsecsElapsed());
    }
    const double megabytes = double(bytes) / 1e6;
    const double seconds = double(best) / 1e9;
    qInfo("%s: %.1f MB in %.1f ms = %.0f MB/s; peak memory %.0f MiB", what, megabytes,
          seconds * 1e3, megabytes / seconds, peakMemoryMiB());
}

} // namespace

class BenchDetail : public QObject
{
    Q_OBJECT

private slots:
    void cutAndParseLastFileOfA20MBDiff()
    {
        const QByteArray bytes = testing::largeDiff(diffTargetBytes, lastFile);
        const QString diff = QString::fromUtf8(bytes);
        qInfo("diff: %lld bytes, %lld lines", qlonglong(bytes.size()),
              qlonglong(bytes.count('\n') + 1));
        qsizetype lines = 0;
        report("cut + parse last file", bytes.size(),
               [&] { lines = parseFileDiff(diff, u"last/file.cpp").size(); });
        // The rest of the marker line, three hunks of 21 lines, and the empty line after the last
        // line break.
        QCOMPARE(lines, qsizetype(1 + 3 * 21 + 1));
    }

    void parseWholeDiffWhenTheFileIsMissing()
    {
        const QByteArray bytes = testing::largeDiff(diffTargetBytes, lastFile);
        const QString diff = QString::fromUtf8(bytes);
        qsizetype lines = 0;
        report("cut (not found) + parse whole diff", bytes.size(),
               [&] { lines = parseFileDiff(diff, u"deleted/file.cpp").size(); });
        QCOMPARE(lines, bytes.count('\n') + 1);
    }

    void decodeUtf8OfA20MBDiff()
    {
        // For comparison: what turning the downloaded bytes into text costs before any cutting.
        const QByteArray bytes = testing::largeDiff(diffTargetBytes, lastFile);
        qsizetype length = 0;
        report("UTF-8 decode (reference)", bytes.size(),
               [&] { length = QString::fromUtf8(bytes).size(); });
        QCOMPARE(length, bytes.size());
    }

    void classifyA1MBMarkdownBody()
    {
        const QByteArray bytes = largeMarkdown(markdownTargetBytes);
        const QString markdown = QString::fromUtf8(bytes);
        qsizetype lines = 0;
        report("Markdown lines", bytes.size(), [&] { lines = markdownLines(markdown).size(); });
        QCOMPARE(lines, bytes.count('\n') + 1 - 2 * (bytes.count("```") / 2));
    }
};

QTEST_GUILESS_MAIN(BenchDetail)
#include "bench_detail.moc"
