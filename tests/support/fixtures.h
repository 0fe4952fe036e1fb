#pragma once

#include <QByteArray>
#include <QString>

namespace kestrine::fixtures {

/// The bytes of a file under tests/data, e.g. "gitea/pull.json".
QByteArray read(const QString &relativePath);

/// A pull request list as Gitea sends it: `count` copies of the real-shaped pull request in
/// tests/data/gitea/pull.json (every field Gitea writes, most of which the app ignores), each
/// with its own id, number, title, update time and draft flag.
QByteArray pullRequestList(int count);

} // namespace kestrine::fixtures
