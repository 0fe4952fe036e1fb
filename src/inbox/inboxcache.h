#pragma once

#include "prrow.h"

#include <QCoroTask>
#include <QList>
#include <QString>
#include <optional>

namespace kestrine {

/// The last inbox, kept in "inbox.json" so that an empty inbox can show it while loading.
///
/// The writer stores dates as numbers (seconds since 2001-01-01 UTC) while the reader, like every
/// decoder in the app, accepts only date texts. So a written inbox that holds any dated pull
/// request does not read back and counts as nothing cached; only a file without dates (such as
/// "[]") does. The loader is built for both outcomes, and this pairing is kept as it is.
class InboxCache
{
public:
    /// The cache in the per-user caches directory.
    InboxCache();
    explicit InboxCache(QString filePath);

    const QString &filePath() const { return m_filePath; }

    /// The cached rows; nothing when the file is missing, unreadable or does not decode.
    std::optional<QList<PRRow>> read() const;
    /// Replaces the file in one plain write; failures are ignored.
    void write(const QList<PRRow> &rows) const;
    /// write() on the cache's own thread, so that writing megabytes does not hold up the caller's
    /// event loop; the task ends once the file is written. Writes happen in the order they were
    /// asked for, and the process waits for the last one before it exits.
    QCoro::Task<> writeAside(QList<PRRow> rows) const;

private:
    QString m_filePath;
};

} // namespace kestrine
