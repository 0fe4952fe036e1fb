#pragma once

// A test program that runs a copy of itself (or another program) as a child process, to see what
// a fresh process does, and reads the JSON object the child prints as its last line.

#include <QJsonObject>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace kestrine::testing {

/// What a child process left.
struct ChildResult
{
    /// False when it did not end within a minute; it is killed then.
    bool finished = false;
    /// -1 when it did not exit normally.
    int exitCode = -1;
    /// The last line of its standard output, as a JSON object; empty when it is not one.
    QJsonObject output;
    QString stderrText;
    qint64 wallMs = 0;
};

/// Runs `program` with `arguments` in `environment` to its end.
ChildResult runChild(const QString &program, const QStringList &arguments,
                     const QProcessEnvironment &environment);

/// This process's environment without a session bus, and so without a Secret Service or a
/// notification server: the bus address is a socket path in `emptyDir` where nothing listens, and
/// there is no display either.
QProcessEnvironment environmentWithoutABus(const QString &emptyDir);

} // namespace kestrine::testing
