#include "inboxcache.h"

#include "cachedirectory.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

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
    const QByteArray bytes =
        QJsonDocument(encodeJson(rows).toArray()).toJson(QJsonDocument::Compact);
    QFile file(m_filePath);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(bytes);
}

} // namespace kestrine
