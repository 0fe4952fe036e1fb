// login, logout and settings through kestrine-cli: what lands in the keychain (the real Secret
// Service of the test's private session bus) and in the defaults file under XDG_CONFIG_HOME, and
// how KESTRINE_URL and KESTRINE_TOKEN replace the stored credentials for one run only.

#include "clirun.h"
#include "keychainhelper.h"
#include "keychainsteps.h"
#include "seededgitea.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtTest>

using namespace kestrine;
using namespace kestrine::testing;

namespace {

const QString urlKey = QStringLiteral("instanceURL");
const QString tokenKey = QStringLiteral("token");

std::optional<QString> stored(const QString &key)
{
    return keychainGet(key);
}

std::optional<QString> text(const QString &value)
{
    return value;
}

} // namespace

class TestCliSettings : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        keychainRemove(urlKey);
        keychainRemove(tokenKey);
    }

    void loginStoresTheURLAndTheTokenFromStandardInput()
    {
        const CliRunner cli;

        const CliResult result = cli.run({QStringLiteral("login"), QStringLiteral("--url"),
                                          QStringLiteral("  https://git.example/ \n")},
                                         "tok en \r\nsecond line is not read\n");

        QCOMPARE(result.errText(), QString());
        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.out.isEmpty());
        // As the settings screen saves: the URL trimmed, the token as typed (without its line end).
        QCOMPARE(stored(urlKey), text(QStringLiteral("https://git.example/")));
        QCOMPARE(stored(tokenKey), text(QStringLiteral("tok en ")));
        // Nothing was sent anywhere, so nothing was logged either.
        QVERIFY(cli.storedLog().isEmpty());
    }

    void loginWithoutATokenChangesNothing_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QString>("error");
        QTest::newRow("no input") << QByteArray() << "no token on standard input";
        QTest::newRow("empty line") << QByteArray("\n") << "the token on standard input is empty";
    }

    void loginWithoutATokenChangesNothing()
    {
        QFETCH(QByteArray, input);
        QFETCH(QString, error);
        keychainSet(QStringLiteral("https://kept.example"), urlKey);
        keychainSet(QStringLiteral("kept"), tokenKey);
        const CliRunner cli;

        const CliResult result = cli.run(
            {QStringLiteral("login"), QStringLiteral("--url=https://other.example")}, input);

        QCOMPARE(result.errText(), QStringLiteral("kestrine-cli: %1\n"
                                                  "Run 'kestrine-cli login --help' for usage.\n")
                                       .arg(error));
        QCOMPARE(result.exitCode, 2);
        QCOMPARE(stored(urlKey), text(QStringLiteral("https://kept.example")));
        QCOMPARE(stored(tokenKey), text(QStringLiteral("kept")));
    }

    void settingsPrintsEverythingButTheToken()
    {
        const CliRunner cli;
        QCOMPARE(cli.run({QStringLiteral("login"), QStringLiteral("--url"),
                          QStringLiteral("https://git.example")},
                         "very-secret\n")
                     .exitCode,
                 0);

        const CliResult result = cli.run({QStringLiteral("settings")});

        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outText(), QStringLiteral("instanceURL\thttps://git.example\n"
                                                  "isConfigured\ttrue\n"
                                                  "mergeGateMode\twarn\n"
                                                  "deleteBranchAfterMerge\tfalse\n"
                                                  "monitoredRepos\t\n"
                                                  "notificationsEnabled\tfalse\n"));
        QVERIFY(result.err.isEmpty());
    }

    void settingsChangesAreStoredWhereTheAppReadsThem()
    {
        const CliRunner cli;
        const QList<QStringList> changes{
            {QStringLiteral("mergeGateMode"), QStringLiteral("block")},
            {QStringLiteral("deleteBranchAfterMerge"), QStringLiteral("true")},
            {QStringLiteral("notificationsEnabled"), QStringLiteral("true")},
            {QStringLiteral("monitoredRepos"), QStringLiteral("ann/tool, cy/infra,")},
        };
        for (const QStringList &change : changes) {
            const CliResult result = cli.run(QStringList{QStringLiteral("settings")} + change);
            QCOMPARE(result.exitCode, 0);
            QVERIFY(result.out.isEmpty());
            QVERIFY(result.err.isEmpty());
        }

        // The defaults file under XDG_CONFIG_HOME holds what the app's settings store reads.
        const QJsonObject defaults = cli.defaults();
        QCOMPARE(defaults.value(QStringLiteral("mergeGateMode")),
                 QJsonValue(QStringLiteral("Block merge when CI is red")));
        QCOMPARE(defaults.value(QStringLiteral("deleteBranchAfterMerge")), QJsonValue(true));
        QCOMPARE(defaults.value(QStringLiteral("notificationsEnabled")), QJsonValue(true));
        QCOMPARE(defaults.value(QStringLiteral("monitoredRepos")),
                 QJsonValue(QJsonArray{QStringLiteral("ann/tool"), QStringLiteral("cy/infra")}));

        const CliResult json = cli.run({QStringLiteral("settings"), QStringLiteral("--json")});
        QCOMPARE(json.exitCode, 0);
        QJsonParseError parseError;
        const QJsonObject printed = QJsonDocument::fromJson(json.out, &parseError).object();
        QCOMPARE(parseError.error, QJsonParseError::NoError);
        QCOMPARE(printed, (QJsonObject{
                              {QStringLiteral("instanceURL"), QStringLiteral("https://gitea.com")},
                              {QStringLiteral("isConfigured"), false},
                              {QStringLiteral("mergeGateMode"), QStringLiteral("block")},
                              {QStringLiteral("deleteBranchAfterMerge"), true},
                              {QStringLiteral("monitoredRepos"),
                               QJsonArray{QStringLiteral("ann/tool"), QStringLiteral("cy/infra")}},
                              {QStringLiteral("notificationsEnabled"), true},
                          }));

        // Back to the defaults: an empty list watches every repository again.
        QCOMPARE(cli.run({QStringLiteral("settings"), QStringLiteral("monitoredRepos"), QString()})
                     .exitCode,
                 0);
        QCOMPARE(cli.run({QStringLiteral("settings"), QStringLiteral("mergeGateMode"),
                          QStringLiteral("warn")})
                     .exitCode,
                 0);
        QCOMPARE(cli.defaults().value(QStringLiteral("monitoredRepos")), QJsonValue(QJsonArray()));
        QCOMPARE(cli.defaults().value(QStringLiteral("mergeGateMode")),
                 QJsonValue(QStringLiteral("Warn on red (allow merge with confirm)")));
    }

    void logoutKeepsTheOtherSettings()
    {
        const CliRunner cli;
        QCOMPARE(cli.run({QStringLiteral("login"), QStringLiteral("--url"),
                          QStringLiteral("https://git.example")},
                         "abc\n")
                     .exitCode,
                 0);
        QCOMPARE(cli.run({QStringLiteral("settings"), QStringLiteral("deleteBranchAfterMerge"),
                          QStringLiteral("true")})
                     .exitCode,
                 0);

        const CliResult result = cli.run({QStringLiteral("logout")});

        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.out.isEmpty());
        QVERIFY(result.err.isEmpty());
        QCOMPARE(stored(urlKey), text(QStringLiteral("https://gitea.com")));
        QCOMPARE(stored(tokenKey), text(QString()));
        QCOMPARE(cli.defaults().value(QStringLiteral("deleteBranchAfterMerge")), QJsonValue(true));
        QVERIFY(cli.run({QStringLiteral("settings")})
                    .outText()
                    .contains(QStringLiteral("\nisConfigured\tfalse\n")));
    }

    void environmentReplacesTheStoredCredentialsForOneRun()
    {
        SeededGitea gitea;
        QVERIFY(gitea.start());
        keychainSet(QStringLiteral("https://stored.example"), urlKey);
        keychainSet(QStringLiteral("stored-token"), tokenKey);
        CliRunner cli;
        cli.environment.insert(QStringLiteral("KESTRINE_URL"), gitea.url());
        cli.environment.insert(QStringLiteral("KESTRINE_TOKEN"), SeededGitea::boToken);

        const CliResult settings = cli.run({QStringLiteral("settings")});
        const CliResult inbox = cli.run({QStringLiteral("inbox")});

        QVERIFY(
            settings.outText().startsWith(QStringLiteral("instanceURL\t%1\n").arg(gitea.url())));
        QCOMPARE(inbox.errText(), QString());
        QCOMPARE(inbox.exitCode, 0);
        QVERIFY(!gitea.server().requests().isEmpty());
        for (const RecordedRequest &request : gitea.server().requests())
            QCOMPARE(request.header("Authorization"), "token " + SeededGitea::boToken.toLatin1());
        // Used, never stored.
        QCOMPARE(stored(urlKey), text(QStringLiteral("https://stored.example")));
        QCOMPARE(stored(tokenKey), text(QStringLiteral("stored-token")));
    }

    void anEmptyEnvironmentTokenDoesNotFallBackToTheStoredOne()
    {
        SeededGitea gitea;
        QVERIFY(gitea.start());
        keychainSet(gitea.url(), urlKey);
        keychainSet(SeededGitea::annToken, tokenKey);
        CliRunner cli;
        cli.environment.insert(QStringLiteral("KESTRINE_TOKEN"), QString());

        const CliResult result = cli.run({QStringLiteral("inbox")});

        QCOMPARE(result.errText(), QStringLiteral("Configure your Gitea instance in Settings.\n"));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(gitea.server().requests().isEmpty());
        QCOMPARE(stored(tokenKey), text(SeededGitea::annToken));
    }

    void loginWhileTheEnvironmentOverridesStoresTheNewValues()
    {
        keychainSet(QStringLiteral("https://stored.example"), urlKey);
        CliRunner cli;
        cli.environment.insert(QStringLiteral("KESTRINE_URL"),
                               QStringLiteral("https://env.example"));
        cli.environment.insert(QStringLiteral("KESTRINE_TOKEN"), QStringLiteral("env-token"));

        // The same values as the environment's: login still stores them.
        const CliResult result = cli.run({QStringLiteral("login"), QStringLiteral("--url"),
                                          QStringLiteral("https://env.example")},
                                         "env-token\n");

        QCOMPARE(result.exitCode, 0);
        QCOMPARE(stored(urlKey), text(QStringLiteral("https://env.example")));
        QCOMPARE(stored(tokenKey), text(QStringLiteral("env-token")));
    }
};

QTEST_GUILESS_MAIN(TestCliSettings)
#include "tst_clisettings.moc"
