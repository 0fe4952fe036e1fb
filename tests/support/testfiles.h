#pragma once

#include <QByteArray>
#include <QString>

namespace kestrine::testing {

/// Where the app keeps the user's defaults (settings and log) when nothing redirects it.
QString userDefaultsPath();

/// Writes `bytes` to `path`, creating its folder first; false when not every byte was written.
[[nodiscard]] bool writeFile(const QString &path, const QByteArray &bytes);

/// The bytes of `path`, or "<missing>" when it cannot be read, so that a missing file never
/// compares equal to an empty one.
QByteArray readFile(const QString &path);

} // namespace kestrine::testing
