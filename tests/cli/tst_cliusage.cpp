// kestrine-cli's help and command-line errors: what every command documents, and that a wrong
// command line exits with 2 before anything is read or written.

#include "clirun.h"

#include <QDir>
#include <QtTest>

using namespace kestrine::testing;

namespace {

const QStringList commandNames{
    QStringLiteral("login"),
    QStringLiteral("logout"),
    QStringLiteral("settings"),
    QStringLiteral("inbox"),
    QStringLiteral("show"),
    QStringLiteral("open"),
    QStringLiteral("diff"),
    QStringLiteral("job-log"),
    QStringLiteral("comment"),
    QStringLiteral("approve"),
    QStringLiteral("request-changes"),
    QStringLiteral("close"),
    QStringLiteral("reopen"),
    QStringLiteral("rerun"),
    QStringLiteral("merge"),
    QStringLiteral("check"),
    QStringLiteral("logs"),
};

} // namespace

class TestCliUsage : public QObject
{
    Q_OBJECT

private slots:
    void programHelpListsEveryCommand()
    {
        const CliRunner cli;
        for (const QStringList &arguments :
             {QStringList{QStringLiteral("--help")}, QStringList{QStringLiteral("-h")},
              QStringList{QStringLiteral("help")}}) {
            const CliResult result = cli.run(arguments);
            QCOMPARE(result.exitCode, 0);
            QVERIFY(result.err.isEmpty());
            QVERIFY(result.outText().startsWith(
                QStringLiteral("Usage: kestrine-cli [--demo] COMMAND [ARGUMENTS]\n")));
            for (const QString &name : commandNames)
                QVERIFY2(result.outText().contains(QStringLiteral("\n  %1 ").arg(name)),
                         qPrintable(name));
            QVERIFY(result.outText().contains(QStringLiteral("KESTRINE_TOKEN")));
            QVERIFY(result.outText().contains(QStringLiteral("Exit status: 0 success")));
        }
    }

    void everyCommandHasHelp_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("usage");
        QTest::newRow("login") << "login"
                               << "Usage: kestrine-cli login [--url URL]\n";
        QTest::newRow("logout") << "logout"
                                << "Usage: kestrine-cli logout\n";
        QTest::newRow("settings") << "settings"
                                  << "Usage: kestrine-cli settings [KEY VALUE] [--json]\n";
        QTest::newRow("inbox") << "inbox"
                               << "Usage: kestrine-cli inbox [--json]\n";
        QTest::newRow("check") << "check"
                               << "Usage: kestrine-cli check\n";
        QTest::newRow("logs") << "logs"
                              << "Usage: kestrine-cli logs [--clear]\n";
        QTest::newRow("open") << "open"
                              << "Usage: kestrine-cli open OWNER/REPO NUMBER\n";
    }

    void everyCommandHasHelp()
    {
        QFETCH(QString, name);
        QFETCH(QString, usage);
        const CliRunner cli;

        const CliResult asOption = cli.run({name, QStringLiteral("--help")});
        const CliResult asCommand = cli.run({QStringLiteral("help"), name});

        QCOMPARE(asOption.exitCode, 0);
        QVERIFY(asOption.outText().startsWith(usage));
        QVERIFY(asOption.err.isEmpty());
        QCOMPARE(asCommand.exitCode, 0);
        QCOMPARE(asCommand.out, asOption.out);
        // Help neither reads nor writes anything of the user's.
        QVERIFY(QDir(cli.configHome()).isEmpty());
        QVERIFY(QDir(cli.cacheHome()).isEmpty());
    }

    void versionIsPrinted()
    {
        const CliResult result = CliRunner().run({QStringLiteral("--version")});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outText(), QStringLiteral("kestrine-cli " KESTRINE_VERSION "\n"));
    }

    void wrongCommandLinesExitWithTwo_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("error");
        QTest::newRow("no command") << QStringList{}
                                    << "kestrine-cli: no command given\n"
                                       "Run 'kestrine-cli --help' for usage.\n";
        QTest::newRow("unknown command") << QStringList{"frobnicate"}
                                         << "kestrine-cli: unknown command frobnicate\n"
                                            "Run 'kestrine-cli --help' for usage.\n";
        QTest::newRow("unknown global option") << QStringList{"--verbose", "inbox"}
                                               << "kestrine-cli: unknown option --verbose\n"
                                                  "Run 'kestrine-cli --help' for usage.\n";
        QTest::newRow("help on an unknown command") << QStringList{"help", "frobnicate"}
                                                    << "kestrine-cli: unknown command frobnicate\n"
                                                       "Run 'kestrine-cli --help' for usage.\n";
        QTest::newRow("unknown option") << QStringList{"inbox", "--all"}
                                        << "kestrine-cli: unknown option --all\n"
                                           "Run 'kestrine-cli inbox --help' for usage.\n";
        QTest::newRow("too many arguments") << QStringList{"logout", "now"}
                                            << "kestrine-cli: too many arguments\n"
                                               "Run 'kestrine-cli logout --help' for usage.\n";
        QTest::newRow("flag with a value") << QStringList{"inbox", "--json=yes"}
                                           << "kestrine-cli: --json takes no value\n"
                                              "Run 'kestrine-cli inbox --help' for usage.\n";
        QTest::newRow("option without its value") << QStringList{"login", "--url"}
                                                  << "kestrine-cli: --url needs a value (URL)\n"
                                                     "Run 'kestrine-cli login --help' for usage.\n";
        QTest::newRow("login without a URL")
            << QStringList{"login"}
            << "kestrine-cli: login needs --url with the instance URL\n"
               "Run 'kestrine-cli login --help' for usage.\n";
        QTest::newRow("setting without a value")
            << QStringList{"settings", "mergeGateMode"}
            << "kestrine-cli: settings mergeGateMode needs a value\n"
               "Run 'kestrine-cli settings --help' for usage.\n";
        QTest::newRow("unknown setting")
            << QStringList{"settings", "colour", "blue"}
            << "kestrine-cli: colour is not a setting that can be changed here\n"
               "Run 'kestrine-cli settings --help' for usage.\n";
        QTest::newRow("the token is not a setting")
            << QStringList{"settings", "token", "abc"}
            << "kestrine-cli: token is not a setting that can be changed here\n"
               "Run 'kestrine-cli settings --help' for usage.\n";
        QTest::newRow("gate mode word") << QStringList{"settings", "mergeGateMode", "strict"}
                                        << "kestrine-cli: mergeGateMode is warn or block\n"
                                           "Run 'kestrine-cli settings --help' for usage.\n";
        QTest::newRow("bool word") << QStringList{"settings", "notificationsEnabled", "yes"}
                                   << "kestrine-cli: notificationsEnabled is true or false\n"
                                      "Run 'kestrine-cli settings --help' for usage.\n";
        QTest::newRow("repository name")
            << QStringList{"settings", "monitoredRepos", "ann/tool,website"}
            << "kestrine-cli: monitoredRepos takes full names such as owner/name\n"
               "Run 'kestrine-cli settings --help' for usage.\n";
        QTest::newRow("missing arguments") << QStringList{"show", "ann/tool"}
                                           << "kestrine-cli: missing NUMBER\n"
                                              "Run 'kestrine-cli show --help' for usage.\n";
        QTest::newRow("repository without owner")
            << QStringList{"show", "tool", "7"}
            << "kestrine-cli: OWNER/REPO is a full name such as owner/name\n"
               "Run 'kestrine-cli show --help' for usage.\n";
        QTest::newRow("number that is not one")
            << QStringList{"close", "ann/tool", "seven"}
            << "kestrine-cli: NUMBER is a positive whole number\n"
               "Run 'kestrine-cli close --help' for usage.\n";
        QTest::newRow("negative number") << QStringList{"diff", "ann/tool", "-7", "go.mod"}
                                         << "kestrine-cli: unknown option -7\n"
                                            "Run 'kestrine-cli diff --help' for usage.\n";
        QTest::newRow("zero") << QStringList{"reopen", "ann/tool", "0"}
                              << "kestrine-cli: NUMBER is a positive whole number\n"
                                 "Run 'kestrine-cli reopen --help' for usage.\n";
        QTest::newRow("run id") << QStringList{"rerun", "ann/tool", "7", "last"}
                                << "kestrine-cli: RUN_ID is a positive whole number\n"
                                   "Run 'kestrine-cli rerun --help' for usage.\n";
        QTest::newRow("job id") << QStringList{"job-log", "ann/tool", "1.5"}
                                << "kestrine-cli: JOB_ID is a positive whole number\n"
                                   "Run 'kestrine-cli job-log --help' for usage.\n";
        QTest::newRow("blank comment") << QStringList{"comment", "ann/tool", "7", " \n\t"}
                                       << "kestrine-cli: the text is empty\n"
                                          "Run 'kestrine-cli comment --help' for usage.\n";
        QTest::newRow("comment from empty input")
            << QStringList{"comment", "ann/tool", "7", "-"}
            << "kestrine-cli: the text is empty\n"
               "Run 'kestrine-cli comment --help' for usage.\n";
        QTest::newRow("request changes without text")
            << QStringList{"request-changes", "ann/tool", "7"}
            << "kestrine-cli: missing TEXT\n"
               "Run 'kestrine-cli request-changes --help' for usage.\n";
        QTest::newRow("merge method")
            << QStringList{"merge", "ann/tool", "7", "--method", "octopus"}
            << "kestrine-cli: --method is one of merge, rebase, squash\n"
               "Run 'kestrine-cli merge --help' for usage.\n";
        QTest::newRow("json while setting")
            << QStringList{"settings", "deleteBranchAfterMerge", "true", "--json"}
            << "kestrine-cli: --json is for printing the settings\n"
               "Run 'kestrine-cli settings --help' for usage.\n";
    }

    void wrongCommandLinesExitWithTwo()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, error);
        const CliRunner cli;

        const CliResult result = cli.run(arguments);

        QCOMPARE(result.errText(), error);
        QCOMPARE(result.exitCode, 2);
        QVERIFY(result.out.isEmpty());
        // Refused before anything was written: the command never asked for the settings, which
        // would install the background check and create the caches directory.
        QVERIFY(QDir(cli.configHome()).isEmpty());
        QVERIFY(QDir(cli.cacheHome()).isEmpty());
    }

    void errorsNeverRepeatAValue()
    {
        // A token typed where it does not belong must not end up on the screen or in a
        // terminal's scrollback.
        const QString secret = QStringLiteral("s3cr3t-t0ken-value");
        const CliRunner cli;
        for (const QStringList &arguments : {
                 QStringList{QStringLiteral("login"), QStringLiteral("--url"),
                             QStringLiteral("https://git.example"), secret},
                 QStringList{QStringLiteral("login"), QStringLiteral("--token=") + secret},
                 QStringList{QStringLiteral("--token=") + secret, QStringLiteral("login")},
                 QStringList{QStringLiteral("settings"), QStringLiteral("mergeGateMode"), secret},
                 QStringList{QStringLiteral("settings"), QStringLiteral("notificationsEnabled"),
                             secret},
             }) {
            const CliResult result = cli.run(arguments);
            QCOMPARE(result.exitCode, 2);
            QVERIFY2(!result.errText().contains(secret), qPrintable(result.errText()));
            QVERIFY(!result.outText().contains(secret));
        }
    }
};

QTEST_GUILESS_MAIN(TestCliUsage)
#include "tst_cliusage.moc"
