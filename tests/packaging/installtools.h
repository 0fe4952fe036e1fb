#pragma once

// What the packaging tests share: running a tool to its end, reading a text file, and installing
// this build into a staging folder as `make install` or the package build does.

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace kestrine::testing {

struct ToolResult
{
    /// -1 when it did not end within a minute or did not exit normally.
    int exitCode = -1;
    /// Its standard output and error together.
    QString output;
};

/// Runs `program` to its end.
ToolResult
runTool(const QString &program, const QStringList &arguments,
        const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());

/// The text of a file; empty when it cannot be read.
QString readText(const QString &path);

/// The value of `key` in an INI-style file's text (desktop entries, systemd units); the first one.
QString iniValue(const QString &text, const QString &key);

/// Installs this build (`component` only, unless empty) into the staging folder `stagingDir` under
/// `prefix`, as DESTDIR=stagingDir cmake --install --prefix prefix does; answers the files
/// installed, relative to the staging folder and sorted. Empty when the installation failed.
QStringList installInto(const QString &stagingDir, const QString &prefix,
                        const QString &component = {});

} // namespace kestrine::testing
