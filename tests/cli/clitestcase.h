#pragma once

#include "clirun.h"
#include "seededgitea.h"

#include <QObject>
#include <QString>
#include <memory>

namespace kestrine::testing {

/// Tests of kestrine-cli against the simulated Gitea of the seed: each test starts a fresh server
/// and a fresh home for the CLI, with nothing in the keychain.
class CliTestCase : public QObject
{
    Q_OBJECT

protected:
    std::unique_ptr<SeededGitea> gitea;
    std::unique_ptr<CliRunner> cli;

    /// Empties the keychain, starts the server and makes the CLI's home; for a test's init().
    /// False when the server could not listen.
    [[nodiscard]] bool startFresh();
    /// For a test's cleanup().
    void stop();

    /// `kestrine-cli login` to the server with `token`, which must succeed.
    void login(const QString &token);
    /// `kestrine-cli settings key value`, which must succeed.
    void setting(const QString &key, const QString &value);
};

} // namespace kestrine::testing
