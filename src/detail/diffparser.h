#pragma once

#include <QFuture>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringView>

QT_BEGIN_NAMESPACE
class QThreadPool;
QT_END_NAMESPACE

namespace kestrine {

/// How one line of a unified diff is coloured.
class DiffLineType
{
    Q_GADGET

public:
    enum Value : quint8 {
        Context,
        Addition,
        Deletion,
        Hunk,
        Meta,
    };
    Q_ENUM(Value)
};

/// One displayed line: its text exactly as in the diff (prefix included, line break excluded) and
/// its classification.
struct DiffLine
{
    QString text;
    DiffLineType::Value type = DiffLineType::Context;

    bool operator==(const DiffLine &) const = default;
};

/// A diff split into classified lines. It keeps the text once and each line as a span of it, so a
/// pull request diff of many megabytes costs one small entry per line rather than one string.
class ParsedDiff
{
public:
    ParsedDiff() = default;

    /// Splits `text` at every "\n" (a carriage return stays at the end of its line): a trailing
    /// line break gives a final empty line and an empty text gives one empty line. Each line takes
    /// the first matching class: "@@" hunk; "diff ", "index ", "--- ", "+++ " meta; "+" addition;
    /// "-" deletion; anything else context. So "+++ "/"--- " lines are meta although they start
    /// like an addition or a deletion, and a removed line reading "-- x" shows as meta: a plain
    /// prefix test, kept on purpose.
    static ParsedDiff parse(QString text);

    qsizetype size() const { return m_lines.size(); }
    bool isEmpty() const { return m_lines.isEmpty(); }
    /// The text of line `index`, valid as long as this object is.
    QStringView text(qsizetype index) const;
    DiffLineType::Value type(qsizetype index) const { return m_lines.at(index).type; }
    DiffLine at(qsizetype index) const { return {text(index).toString(), type(index)}; }
    /// Every line as its own value; for tests and small diffs.
    QList<DiffLine> lines() const;

private:
    struct Span
    {
        qsizetype start;
        qsizetype length;
        DiffLineType::Value type;
    };

    QString m_text;
    QList<Span> m_lines;
};

/// The classification rule alone, for one line without its line break.
DiffLineType::Value classifyDiffLine(QStringView line);

/// The part of a pull request's `diff` that belongs to `filename`: the text right after the first
/// "+++ b/" + filename (a plain, case-sensitive substring search, so "a.c" may match inside the
/// header of an earlier "a.cpp"), up to but excluding the line break before the next
/// "diff --git ", or to the end. Its first line is the rest of the marker line, normally empty.
/// Empty when the marker is absent, e.g. for a deleted file whose header names /dev/null.
QStringView diffSection(QStringView diff, QStringView filename);

/// What the diff screen shows for one file: its section parsed, or the whole diff parsed when the
/// section is empty (better the whole pull request than nothing).
ParsedDiff parseFileDiff(const QString &diff, QStringView filename);

/// parseFileDiff() on a worker thread: splitting a diff of many megabytes takes longer than a
/// frame, and the screen must keep answering meanwhile. The worker takes the text over, so when
/// the caller kept no copy of it, it is released there too (freeing tens of megabytes is not
/// free either). The lines are the same as parseFileDiff() gives.
QFuture<ParsedDiff> parseFileDiffInBackground(QString diff, QString filename);

/// The one worker thread (a WorkerThread) that parseFileDiffInBackground() uses.
QThreadPool *diffSplittingThread();

} // namespace kestrine
