#pragma once

#include <QString>

namespace kestrine {

/// Severity of a diagnostic line.
enum class LogLevel {
    Info,
    Warn,
    Error,
};

/// Where the client writes its one line per request. The app's log store implements it; the API
/// layer sits below the settings layer and so only knows this interface.
class LogSink
{
public:
    virtual ~LogSink() = default;
    virtual void log(LogLevel level, const QString &message) = 0;

protected:
    LogSink() = default;
    LogSink(const LogSink &) = default;
    LogSink &operator=(const LogSink &) = default;
};

} // namespace kestrine
