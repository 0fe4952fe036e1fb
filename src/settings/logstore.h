#pragma once

#include "logsink.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QUuid>
#include <QtQml/qqmlregistration.h>
#include <chrono>

QT_BEGIN_NAMESPACE
class QQmlEngine;
class QJSEngine;
QT_END_NAMESPACE

namespace kestrine {

/// One line of the diagnostic log. Two entries are equal when all four fields are.
struct LogEntry
{
    Q_GADGET
    QML_VALUE_TYPE(logEntry)
    Q_PROPERTY(QUuid id MEMBER id)
    Q_PROPERTY(QDateTime timestamp MEMBER timestamp)
    Q_PROPERTY(kestrine::LogLevel level MEMBER level)
    Q_PROPERTY(QString levelLabel READ levelLabel)
    Q_PROPERTY(QString message MEMBER message)

public:
    QUuid id;
    QDateTime timestamp;
    LogLevel level = LogLevel::Info;
    QString message;

    /// "INFO", "WARN" or "ERROR": the level as it is shown, exported and stored.
    QString levelLabel() const;
    /// The entry as one line of the export text: "[2024-05-01T10:20:30Z] ERROR <message>".
    /// The timestamp is shown in UTC to the whole second.
    QString line() const;

    bool operator==(const LogEntry &) const = default;
};

/// The label of a level: "INFO", "WARN" or "ERROR".
QString logLevelLabel(LogLevel level);

/// The app's diagnostic log: the last 500 lines written by the API client and the loaders, kept in
/// the defaults store so that a user can read and share them after a restart, without any
/// developer tooling. Main thread only.
///
/// A line is in the log the moment log() returns; the disk follows lazily, like a defaults store
/// that lives in memory: the lines of a second are written together, a second after the first of
/// them (writeDelay), and at once on clear(), flush(), when the application quits and when the
/// log is destroyed. An inbox load writes hundreds of lines; rewriting the whole file for each
/// one cost more than the load. A crash loses at most the last second.
///
/// Stored form, under persistKey: a byte array holding a UTF-8 JSON array, oldest first, of
/// {"t": "2024-05-01T10:20:30Z", "l": "INFO" | "WARN" | "ERROR", "m": message}. Ids are not
/// stored (a loaded entry gets a new one) and timestamps keep whole seconds only.
class LogStore : public QObject, public LogSink
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QList<kestrine::LogEntry> entries READ entries NOTIFY entriesChanged)
    Q_PROPERTY(int count READ count NOTIFY entriesChanged)
    Q_PROPERTY(QString text READ text NOTIFY entriesChanged)

public:
    using Entry = LogEntry;

    static constexpr qsizetype maxEntries = 500;
    static constexpr QLatin1StringView persistKey{"kestrine.log.entries"};
    /// How long a line waits, at most, before it is on disk.
    static constexpr std::chrono::milliseconds writeDelay{1000};

    /// A log over what the defaults store holds now. The program makes one at its entry and
    /// hands it on; separate instances are for reading the stored log afresh.
    explicit LogStore(QObject *parent = nullptr);
    /// Writes what is still waiting.
    ~LogStore() override;

    /// The QML singleton is the log the program installed on the engine (QmlServices); C++ keeps
    /// ownership.
    static LogStore *create(QQmlEngine *qmlEngine, QJSEngine *jsEngine);

    /// Appends a line stamped now and drops the oldest beyond 500; the disk follows within
    /// writeDelay.
    void log(LogLevel level, const QString &message) override;
    /// Writes the log to disk now when lines are waiting.
    void flush();
    /// True while lines are waiting to be written.
    bool hasUnwrittenLines() const { return m_unwritten; }

    /// Oldest first.
    QList<LogEntry> entries() const { return m_entries; }
    int count() const { return int(m_entries.size()); }
    /// The whole log as shareable text: one line() per entry, oldest first, joined by "\n"
    /// without a trailing newline; "" when the log is empty.
    QString text() const;

    /// Empties the log and deletes the stored copy, so that it stays empty after a restart.
    Q_INVOKABLE void clear();

    /// The stored form of `entries` (compact UTF-8 JSON).
    static QByteArray encode(const QList<LogEntry> &entries);
    /// Entries read back from the stored form. Anything that is not a JSON array of objects with
    /// string values gives an empty list; an object whose "t" (whole seconds), "l" or "m" is
    /// missing or unreadable is skipped alone. Each entry gets a new id.
    static QList<LogEntry> decode(const QByteArray &stored);

signals:
    void entriesChanged();

private:
    QList<LogEntry> m_entries;
    QTimer m_writeTimer;
    bool m_unwritten = false;
};

} // namespace kestrine
