#include "textchunksmodel.h"

#include "workerthread.h"

#include <QFutureWatcher>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>

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
    split();
    emit textChanged();
}

void TextChunksModel::setLinesPerChunk(int lines)
{
    lines = qMax(1, lines);
    if (m_linesPerChunk == lines)
        return;
    m_linesPerChunk = lines;
    split();
    emit linesPerChunkChanged();
}

QList<qsizetype> TextChunksModel::pieceStarts(const QString &text, int linesPerChunk)
{
    QList<qsizetype> starts;
    if (text.isEmpty())
        return starts;
    starts.append(0);
    int lines = 0;
    const qsizetype size = text.size();
    const QChar *data = text.constData();
    for (qsizetype i = 0; i < size; ++i) {
        if (data[i] != u'\n')
            continue;
        if (++lines == linesPerChunk && i + 1 < size) {
            starts.append(i + 1);
            lines = 0;
        }
    }
    return starts;
}

void TextChunksModel::split()
{
    const quint64 generation = ++m_generation;
    if (m_text.size() <= splitAtOnceLimit) {
        show(m_text, pieceStarts(m_text, m_linesPerChunk));
        setSplitting(false);
        return;
    }
    setSplitting(true);
    // The worker reads its own reference to the text, which nothing changes while it runs.
    auto *watcher = new QFutureWatcher<QList<qsizetype>>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher, generation] {
        watcher->deleteLater();
        // A later text, or a later piece length, has superseded this split.
        if (generation != m_generation)
            return;
        show(m_text, watcher->result());
        setSplitting(false);
    });
    watcher->setFuture(QtConcurrent::run(splittingThread(), &TextChunksModel::pieceStarts, m_text,
                                         m_linesPerChunk));
}

QThreadPool *TextChunksModel::splittingThread()
{
    // Waits for a split under way when the program ends.
    static WorkerThread pool;
    return &pool;
}

void TextChunksModel::show(const QString &text, QList<qsizetype> starts)
{
    const int before = count();
    beginResetModel();
    m_shown = text;
    m_starts = std::move(starts);
    endResetModel();
    if (count() != before)
        emit countChanged();
}

void TextChunksModel::setSplitting(bool splitting)
{
    if (m_splitting == splitting)
        return;
    m_splitting = splitting;
    emit splittingChanged();
}

QString TextChunksModel::chunk(int index) const
{
    if (index < 0 || index >= m_starts.size())
        return {};
    const qsizetype start = m_starts.at(index);
    const qsizetype end = index + 1 < m_starts.size() ? m_starts.at(index + 1) : m_shown.size();
    return m_shown.mid(start, end - start);
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
