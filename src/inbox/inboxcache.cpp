#include "inboxcache.h"

#include "cachedirectory.h"
#include "workerthread.h"

#include <QFile>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>

namespace kestrine {

InboxCache::InboxCache()
    : InboxCache(cacheDirectory() + QStringLiteral("/inbox.json"))
{}

InboxCache::InboxCache(QString filePath)
    : m_filePath(std::move(filePath))
{}

std::optional<QList<PRRow>> InboxCache::read() const
{
    QFile file(m_filePath);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    // A file the writer wrote from pull requests holds numeric dates, which the reader refuses by
    // design; the quick reader knows that in one pass over the text.
    return tryDecodeJson<QList<PRRow>>(file.readAll());
}

void InboxCache::write(const QList<PRRow> &rows) const
{
    const QByteArray bytes = writeJson(rows);
    QFile file(m_filePath);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(bytes);
}

QFuture<void> InboxCache::writeInBackground(QList<PRRow> rows) const
{
    // The rows are implicitly shared with the caller, which only reads them from now on.
    return QtConcurrent::run(writerThread(),
                             [cache = *this, rows = std::move(rows)] { cache.write(rows); });
}

QThreadPool *InboxCache::writerThread()
{
    // One thread, so that two writes never interleave and the later one asked for lands last. It
    // waits for a write under way when the program ends.
    static WorkerThread pool;
    return &pool;
}

} // namespace kestrine
