#include "inboxcache.h"

#include "cachedirectory.h"

#include <QCoroFuture>
#include <QFile>
#include <QFuture>
#include <QPromise>
#include <QThreadPool>
#include <memory>

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
    try {
        return decodeJson<QList<PRRow>>(file.readAll());
    } catch (const DecodeError &) {
        return std::nullopt;
    }
}

void InboxCache::write(const QList<PRRow> &rows) const
{
    const QByteArray bytes = writeJson(rows);
    QFile file(m_filePath);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(bytes);
}

QCoro::Task<> InboxCache::writeAside(QList<PRRow> rows) const
{
    // One thread, so that an older inbox never overwrites a newer one; a static pool, whose
    // destruction at exit waits for the write under way.
    static QThreadPool writer;
    writer.setMaxThreadCount(1);
    auto done = std::make_shared<QPromise<void>>();
    QFuture<void> finished = done->future();
    done->start();
    writer.start([cache = *this, rows = std::move(rows), done] {
        cache.write(rows);
        done->finish();
    });
    co_await qCoro(finished).waitForFinished();
}

} // namespace kestrine
