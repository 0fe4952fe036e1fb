#pragma once

#include "records.h"

#include <QString>
#include <optional>

namespace kestrine {

/// A repository known only by its owner's login and its name: all that a request path needs. The
/// screens and commands that open a pull request by name, without an inbox row to take the
/// repository from, work with this; the server's record has more, which nothing there reads.
Repository repositoryNamed(const QString &owner, const QString &name);

/// One pull request named by text, as "owner/name#42": the form of the inbox row's id and of the
/// notification state's keys, which notifications and `kestrine --open` hand to the app.
struct PullRequestReference
{
    Repository repo;
    qint64 number = 0;

    /// "owner/name#42".
    QString key() const;

    /// How the text form is written, for messages: "OWNER/REPO#NUMBER".
    static QString syntax();

    /// The reference that `text` names, or nothing when it is not OWNER/REPO#NUMBER with a
    /// positive decimal number and an owner and a name such as Gitea allows (letters, digits, "-",
    /// "_" and ".", but not "." or ".." alone). The text comes from other programs (a notification
    /// server, a launcher, a script), so it is checked strictly: it becomes part of a request path.
    static std::optional<PullRequestReference> parse(const QString &text);
};

} // namespace kestrine
