#pragma once

#include <QByteArray>
#include <QSettings>
#include <QString>
#include <QTemporaryDir>
#include <memory>

namespace kestrine::testing {

/// Where the app keeps the user's defaults (settings and log) when nothing redirects it.
QString userDefaultsPath();

/// Writes `bytes` to `path`, creating its folder first; false when not every byte was written.
[[nodiscard]] bool writeFile(const QString &path, const QByteArray &bytes);

/// The bytes of `path`, or "<missing>" when it cannot be read, so that a missing file never
/// compares equal to an empty one.
QByteArray readFile(const QString &path);

/// Settings files as they are on disk. QSettings shares one parsed copy of a file between all its
/// instances in a process, so a second QSettings on the same path would see the writer's values in
/// memory; reading a copy of the file is what makes the read go through the JSON reader.
class SettingsFromDisk
{
public:
    /// `path` read in the defaults store's JSON format; null when it cannot be copied.
    std::unique_ptr<QSettings> read(const QString &path);

private:
    QTemporaryDir m_dir;
    int m_copies = 0;
};

/// Why a test that writes the real defaults file must not run here: the file exists already, so
/// the test was not given a home of its own by tests/run-isolated. Empty when it may run.
QString defaultsFileInTheWay();

} // namespace kestrine::testing
