// The access token stays where it belongs: in the keychain and in the Authorization header of
// requests to the instance. No output, log line or file of kestrine-cli holds it, and it never
// is a process argument, where every user of the machine could read it.

#include "clirun.h"
#include "keychainhelper.h"
#include "keychainsteps.h"
#include "seededgitea.h"

#include <QDirIterator>
#include <QFile>
#include <QSignalSpy>
#include <QtTest>

using namespace kestrine;
using namespace kestrine::testing;

namespace {

const QByteArray token = SeededGitea::annToken.toLatin1();

/// The files under `root` whose bytes contain `needle`.
QStringList filesContaining(const QString &root, const QByteArray &needle)
{
    QStringList found;
    QDirIterator it(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        if (file.open(QIODevice::ReadOnly) && file.readAll().contains(needle))
            found.append(file.fileName());
    }
    return found;
}

/// A running process's arguments as the kernel shows them to everyone, program first.
QList<QByteArray> processArguments(qint64 pid)
{
    QFile cmdline(QStringLiteral("/proc/%1/cmdline").arg(pid));
    if (!cmdline.open(QIODevice::ReadOnly))
        return {};
    QByteArray bytes = cmdline.readAll();
    if (bytes.endsWith('\0'))
        bytes.chop(1);
    return bytes.split('\0');
}

} // namespace

class TestCliToken : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        // Searching for an empty text would find it everywhere and prove nothing.
        QCOMPARE(token.size(), 40);
        keychainRemove(QStringLiteral("instanceURL"));
        keychainRemove(QStringLiteral("token"));
    }

    void noOutputLogLineOrFileHoldsTheToken()
    {
        SeededGitea gitea;
        QVERIFY(gitea.start());
        CliRunner cli;
        // Failures too: their texts and log lines are the likeliest place for a stray token.
        gitea.server().route("GET", QStringLiteral("/api/v1/repos/ann/website/pulls"),
                             FakeResponse::json(R"({"message":"boom"})", 500));
        const QList<std::pair<QStringList, QByteArray>> runs{
            {{"login", "--url", gitea.url()}, token + '\n'},
            {{"settings", "notificationsEnabled", "true"}, {}},
            {{"settings"}, {}},
            {{"settings", "--json"}, {}},
            {{"inbox"}, {}},
            {{"inbox", "--json"}, {}},
            {{"check"}, {}},
            {{"show", "ann/tool", "7"}, {}},
            {{"show", "ann/tool", "7", "--json"}, {}},
            {{"show", "ann/tool", "99"}, {}},
            {{"diff", "ann/tool", "7", "uploader/retry.go"}, {}},
            {{"job-log", "ann/tool", "101"}, {}},
            {{"job-log", "ann/tool", "105"}, {}},
            {{"comment", "ann/tool", "7", "-"}, "A comment\n"},
            {{"approve", "ann/tool", "7"}, {}},
            {{"rerun", "ann/tool", "7", "999"}, {}},
            {{"merge", "ann/tool", "9"}, {}},
            {{"merge", "ann/tool", "7", "--method", "rebase"}, {}},
            {{"logs"}, {}},
            {{"inbox", "--bogus"}, {}},
        };
        int succeeded = 0;
        for (const auto &[arguments, input] : runs) {
            const CliResult result = cli.run(arguments, input);
            QVERIFY2(result.exitCode >= 0, qPrintable(arguments.join(u' ')));
            succeeded += result.exitCode == 0;
            QVERIFY2(!result.out.contains(token), qPrintable(arguments.join(u' ')));
            QVERIFY2(!result.err.contains(token), qPrintable(arguments.join(u' ')));
        }
        // The runs did reach the server with the token, and did write files: the search below
        // looks where something was written.
        QVERIFY(succeeded >= 14);
        QVERIFY(gitea.server().requests().size() > 40);
        QCOMPARE(gitea.server().requests().last().header("Authorization"), "token " + token);
        QVERIFY(QFile::exists(cli.defaultsFilePath()));
        QVERIFY(QFile::exists(cli.appCacheDirectory() + QStringLiteral("/inbox.json")));
        QVERIFY(
            QFile::exists(cli.appCacheDirectory() + QStringLiteral("/notification-state.json")));
        QVERIFY(cli.storedLog().size() > 40);

        for (const LogEntry &entry : cli.storedLog())
            QVERIFY2(!entry.message.contains(QString::fromLatin1(token)),
                     qPrintable(entry.message));
        QCOMPARE(filesContaining(cli.root(), token), QStringList());
        // The test's own home, where nothing but the keyring daemon writes (its keyring file is
        // the one place the token is meant to be).
        QStringList elsewhere;
        for (const QString &file :
             filesContaining(qEnvironmentVariable("HOME") + QStringLiteral("/.."), token)) {
            if (!file.contains(QStringLiteral("/keyrings/")))
                elsewhere.append(file);
        }
        QCOMPARE(elsewhere, QStringList());
    }

    void theTokenIsNeverAProcessArgument()
    {
        SeededGitea gitea;
        QVERIFY(gitea.start());
        CliRunner cli;

        // While login waits for the token on standard input.
        QProcess login;
        const QStringList loginArguments{QStringLiteral("login"), QStringLiteral("--url"),
                                         gitea.url()};
        cli.start(login, loginArguments);
        QVERIFY(login.waitForStarted());
        QTest::qWait(200);
        QCOMPARE(login.state(), QProcess::Running);
        QList<QByteArray> arguments = processArguments(login.processId());
        QCOMPARE(arguments.size(), 4);
        QCOMPARE(arguments.mid(1), (QList<QByteArray>{"login", "--url", gitea.url().toUtf8()}));
        login.write(token + '\n');
        login.closeWriteChannel();
        QCOMPARE(CliRunner::finish(login).exitCode, 0);

        // While a command waits on a slow server with the stored token in hand.
        gitea.server().route("GET", QStringLiteral("/api/v1/user/repos"),
                             [](const RecordedRequest &, const RouteParams &) {
                                 FakeResponse response = FakeResponse::json("[]");
                                 response.delay = std::chrono::milliseconds(1500);
                                 return response;
                             });
        QSignalSpy requested(&gitea.server(), &FakeGiteaServer::requestRecorded);
        QProcess inbox;
        cli.start(inbox, {QStringLiteral("inbox")});
        QVERIFY(requested.wait(10000));
        QCOMPARE(requested.first().first().value<RecordedRequest>().header("Authorization"),
                 "token " + token);
        QCOMPARE(inbox.state(), QProcess::Running);
        arguments = processArguments(inbox.processId());
        QCOMPARE(arguments.size(), 2);
        QCOMPARE(arguments.at(1), QByteArray("inbox"));
        for (const QByteArray &argument : arguments)
            QVERIFY(!argument.contains(token));
        QCOMPARE(CliRunner::finish(inbox).exitCode, 0);
    }
};

QTEST_GUILESS_MAIN(TestCliToken)
#include "tst_clitoken.moc"
