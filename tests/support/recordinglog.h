#pragma once

#include "logsink.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace kestrine::testing {

/// A log that keeps the messages the client writes to it, in order, and the level of each.
class RecordingLog : public LogSink
{
public:
    void log(LogLevel level, const QString &message) override
    {
        lines.append(message);
        levels.append(level);
    }
    void clear()
    {
        lines.clear();
        levels.clear();
    }

    QStringList lines;
    QList<LogLevel> levels;
};

} // namespace kestrine::testing
