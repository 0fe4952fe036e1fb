#include "logstore.h"

#include "dates.h"
#include "defaultsstore.h"
#include "qmlservices.h"

#include <QCoreApplication>
#include <QJSEngine>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <optional>

namespace kestrine {
namespace {

const QString timeKey = QStringLiteral("t");
const QString levelKey = QStringLiteral("l");
const QString messageKey = QStringLiteral("m");

std::optional<LogLevel> levelFromLabel(const QString &label)
{
    for (LogLevel level : {LogLevel::Info, LogLevel::Warn, LogLevel::Error}) {
        if (label == logLevelLabel(level))
            return level;
    }
    return std::nullopt;
}

} // namespace

QString logLevelLabel(LogLevel level)
{
    switch (level) {
    case LogLevel::Info:
        return QStringLiteral("INFO");
    case LogLevel::Warn:
        return QStringLiteral("WARN");
    case LogLevel::Error:
        return QStringLiteral("ERROR");
    }
    return {};
}

QString LogEntry::levelLabel() const
{
    return logLevelLabel(level);
}

QString LogEntry::line() const
{
    QString text;
    text += u'[';
    text += InternetDate::format(timestamp);
    text += u"] ";
    text += levelLabel();
    text += u' ';
    text += message;
    return text;
}

LogStore::LogStore(QObject *parent)
    : QObject(parent)
{
    m_writeTimer.setSingleShot(true);
    m_writeTimer.setInterval(writeDelay);
    connect(&m_writeTimer, &QTimer::timeout, this, &LogStore::flush);
    // The application may be left without destroying the log (a quit that ends in exit() never
    // gets to the destructor).
    if (QCoreApplication *application = QCoreApplication::instance())
        connect(application, &QCoreApplication::aboutToQuit, this, &LogStore::flush);

    // Only a byte array is our stored form; anything else under the key is treated as no log.
    // Loading keeps what it finds, even beyond 500 entries, and writes nothing back: the next
    // log() call trims and rewrites.
    const QVariant stored = defaultsStore().value(persistKey);
    if (stored.typeId() == QMetaType::QByteArray)
        m_entries = decode(stored.toByteArray());
}

LogStore::~LogStore()
{
    flush();
}

LogStore *LogStore::create(QQmlEngine *qmlEngine, QJSEngine *)
{
    LogStore *store = QmlServices::log(qmlEngine);
    if (!store) {
        qCritical("LogStore: no log was installed on this QML engine.");
        return nullptr;
    }
    QJSEngine::setObjectOwnership(store, QJSEngine::CppOwnership);
    return store;
}

void LogStore::log(LogLevel level, const QString &message)
{
    m_entries.append(
        LogEntry{QUuid::createUuid(), QDateTime::currentDateTimeUtc(), level, message});
    if (m_entries.size() > maxEntries)
        m_entries.remove(0, m_entries.size() - maxEntries);
    m_unwritten = true;
    // The first line after a write starts the clock; later ones ride along.
    if (!m_writeTimer.isActive())
        m_writeTimer.start();
    emit entriesChanged();
}

QString LogStore::text() const
{
    QStringList lines;
    lines.reserve(m_entries.size());
    for (const LogEntry &entry : m_entries)
        lines.append(entry.line());
    return lines.join(u'\n');
}

void LogStore::clear()
{
    const bool hadEntries = !m_entries.isEmpty();
    m_entries.clear();
    m_unwritten = false;
    m_writeTimer.stop();
    QSettings &store = defaultsStore();
    store.remove(persistKey);
    store.sync();
    if (hadEntries)
        emit entriesChanged();
}

QByteArray LogStore::encode(const QList<LogEntry> &entries)
{
    QJsonArray array;
    for (const LogEntry &entry : entries) {
        array.append(QJsonObject{
            {timeKey, InternetDate::format(entry.timestamp)},
            {levelKey, entry.levelLabel()},
            {messageKey, entry.message},
        });
    }
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

QList<LogEntry> LogStore::decode(const QByteArray &stored)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(stored, &error);
    if (error.error != QJsonParseError::NoError || !document.isArray())
        return {};
    const QJsonArray array = document.array();

    // The whole value is rejected when its shape is wrong, before any entry is taken.
    for (const QJsonValue &item : array) {
        if (!item.isObject())
            return {};
        const QJsonObject object = item.toObject();
        for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
            if (!it.value().isString())
                return {};
        }
    }

    QList<LogEntry> entries;
    entries.reserve(array.size());
    for (const QJsonValue &item : array) {
        const QJsonObject object = item.toObject();
        if (!object.contains(timeKey) || !object.contains(levelKey) || !object.contains(messageKey))
            continue;
        const auto timestamp = InternetDate::parse(object.value(timeKey).toString(),
                                                   InternetDate::Fraction::Forbidden);
        const auto level = levelFromLabel(object.value(levelKey).toString());
        if (!timestamp || !level)
            continue;
        entries.append(
            LogEntry{QUuid::createUuid(), *timestamp, *level, object.value(messageKey).toString()});
    }
    return entries;
}

void LogStore::flush()
{
    if (!m_unwritten)
        return;
    m_unwritten = false;
    m_writeTimer.stop();
    // Serialising cannot fail here: every member is a string.
    QSettings &store = defaultsStore();
    store.setValue(persistKey, encode(m_entries));
    store.sync();
}

} // namespace kestrine
