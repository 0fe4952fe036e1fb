#include "textchunksmodel.h"

namespace kestrine::ui {

TextChunksModel::TextChunksModel(QObject *parent)
    : QAbstractListModel(parent)
{}

void TextChunksModel::setText(const QString &text)
{
    // Compared by identity first: a 5 MB log set again must not be compared character by
    // character.
    if (m_text.isSharedWith(text) || m_text == text)
        return;
    m_text = text;
    rebuild();
    emit textChanged();
}

void TextChunksModel::setLinesPerChunk(int lines)
{
    lines = qMax(1, lines);
    if (m_linesPerChunk == lines)
        return;
    m_linesPerChunk = lines;
    rebuild();
    emit linesPerChunkChanged();
}

void TextChunksModel::rebuild()
{
    beginResetModel();
    m_starts.clear();
    if (!m_text.isEmpty()) {
        m_starts.append(0);
        int lines = 0;
        const qsizetype size = m_text.size();
        const QChar *data = m_text.constData();
        for (qsizetype i = 0; i < size; ++i) {
            if (data[i] != u'\n')
                continue;
            if (++lines == m_linesPerChunk && i + 1 < size) {
                m_starts.append(i + 1);
                lines = 0;
            }
        }
    }
    endResetModel();
}

QString TextChunksModel::chunk(int index) const
{
    if (index < 0 || index >= m_starts.size())
        return {};
    const qsizetype start = m_starts.at(index);
    const qsizetype end = index + 1 < m_starts.size() ? m_starts.at(index + 1) : m_text.size();
    return m_text.mid(start, end - start);
}

int TextChunksModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_starts.size());
}

QVariant TextChunksModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || role != TextRole)
        return {};
    return chunk(index.row());
}

QHash<int, QByteArray> TextChunksModel::roleNames() const
{
    return {{TextRole, "chunk"}};
}

} // namespace kestrine::ui
