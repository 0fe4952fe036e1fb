#include "clitestcase.h"

#include "keychainsteps.h"

#include <QtTest>

namespace kestrine::testing {

bool CliTestCase::startFresh()
{
    keychainRemove(QStringLiteral("instanceURL"));
    keychainRemove(QStringLiteral("token"));
    gitea = std::make_unique<SeededGitea>();
    cli = std::make_unique<CliRunner>();
    return gitea->start();
}

void CliTestCase::stop()
{
    cli.reset();
    gitea.reset();
}

void CliTestCase::login(const QString &token)
{
    const CliResult result = cli->run(
        {QStringLiteral("login"), QStringLiteral("--url"), gitea->url()}, token.toUtf8() + '\n');
    QCOMPARE(result.exitCode, 0);
}

void CliTestCase::setting(const QString &key, const QString &value)
{
    QCOMPARE(cli->run({QStringLiteral("settings"), key, value}).exitCode, 0);
}

} // namespace kestrine::testing
