#pragma once

#include "logsink.h"

#include <QString>
#include <QStringList>

namespace kestrine::testing {

/// A log that keeps the messages the client writes to it, in order.
class RecordingLog : public LogSink
{
public:
    void log(LogLevel, const QString &message) override { lines.append(message); }
    QStringList lines;
};

} // namespace kestrine::testing
