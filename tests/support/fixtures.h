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

/// A Gitea simulation seed of a large instance: user "ann", holding `token`, owns `repositories`
/// repositories ("repo-001", ...) of `pullsEach` open pull requests each, all updated at
/// different times.
QByteArray largeInstanceSeed(int repositories, int pullsEach, const QString &token);

} // namespace kestrine::fixtures
