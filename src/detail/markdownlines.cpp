#include "markdownlines.h"

namespace kestrine {
namespace {

bool isBlank(QChar c)
{
    return c == u' ' || c == u'\t';
}

/// Trims spaces and tabs only: other white space, a carriage return included, is content.
QStringView trimBlanks(QStringView text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isBlank(text[begin]))
        ++begin;
    while (end > begin && isBlank(text[end - 1]))
        --end;
    return text.sliced(begin, end - begin);
}

/// 1 to 3 for "# ", "## " and "### "; 0 for anything else, deeper headings included.
int headingLevel(QStringView line)
{
    for (int level = 1; level <= 3; ++level) {
        if (line.size() > level && line[level] == u' ') {
            bool allHashes = true;
            for (int i = 0; i < level; ++i)
                allHashes = allHashes && line[i] == u'#';
            if (allHashes)
                return level;
        }
    }
    return 0;
}

} // namespace

QList<MarkdownLine> markdownLines(QStringView markdown)
{
    QList<MarkdownLine> lines;
    bool insideFence = false;
    qsizetype start = 0;
    while (true) {
        const qsizetype end = markdown.indexOf(u'\n', start);
        const QStringView piece = markdown.sliced(start, (end < 0 ? markdown.size() : end) - start);

        if (piece.startsWith(u"```")) {
            insideFence = !insideFence;
        } else if (insideFence) {
            lines.append({MarkdownLine::Code, piece.toString(), 0});
        } else if (const int level = headingLevel(piece)) {
            lines.append(
                {MarkdownLine::Heading, trimBlanks(piece.sliced(level)).toString(), level});
        } else if (piece.startsWith(u"- ") || piece.startsWith(u"* ")) {
            lines.append({MarkdownLine::Bullet, piece.sliced(2).toString(), 0});
        } else if (!trimBlanks(piece).isEmpty()) {
            lines.append({MarkdownLine::Text, piece.toString(), 0});
        } else {
            lines.append({MarkdownLine::Blank, QString(), 0});
        }

        if (end < 0)
            break;
        start = end + 1;
    }
    return lines;
}

MarkdownLinesModel::MarkdownLinesModel(QObject *parent)
    : QAbstractListModel(parent)
{}

void MarkdownLinesModel::setMarkdown(const QString &markdown)
{
    if (m_markdown == markdown)
        return;
    beginResetModel();
    m_markdown = markdown;
    m_lines = markdownLines(m_markdown);
    endResetModel();
    emit markdownChanged();
}

int MarkdownLinesModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_lines.size());
}

QVariant MarkdownLinesModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const MarkdownLine &line = m_lines.at(index.row());
    switch (role) {
    case KindRole:
        return int(line.kind);
    case TextRole:
    case Qt::DisplayRole:
        return line.text;
    case LevelRole:
        return line.level;
    default:
        return {};
    }
}

QHash<int, QByteArray> MarkdownLinesModel::roleNames() const
{
    return {{KindRole, "kind"}, {TextRole, "text"}, {LevelRole, "level"}};
}

} // namespace kestrine
