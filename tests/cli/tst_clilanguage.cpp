// kestrine-cli in the user's language: German under LANG=de_DE.UTF-8 (help, usage errors, the
// inbox's errors, show), English under C, POSIX or a language without a catalogue, byte for byte
// the same; and what is data (the --json records, the stored log) the same in every language.

#include "clirun.h"
#include "clitestcase.h"
#include "seededgitea.h"

#include <QtTest>

using namespace kestrine::testing;

namespace {

const QString tool = QStringLiteral("ann/tool");
const QString german = QStringLiteral("de_DE.UTF-8");

} // namespace

class TestCliLanguage : public CliTestCase
{
    Q_OBJECT

private:
    /// Runs `arguments` with exactly these locale variables (LANG, LANGUAGE, LC_ALL, LC_MESSAGES;
    /// the others unset), in the same home as every other run of the test.
    CliResult runIn(const QStringList &arguments, const QList<std::pair<QString, QString>> &locale)
    {
        const QProcessEnvironment saved = cli->environment;
        for (const char *name : {"LANG", "LANGUAGE", "LC_ALL", "LC_MESSAGES"})
            cli->environment.remove(QString::fromLatin1(name));
        for (const auto &[name, value] : locale)
            cli->environment.insert(name, value);
        const CliResult result = cli->run(arguments);
        cli->environment = saved;
        return result;
    }

    CliResult runInGerman(const QStringList &arguments)
    {
        return runIn(arguments, {{QStringLiteral("LANG"), german}});
    }

private slots:
    void init() { QVERIFY(startFresh()); }

    void cleanup() { stop(); }

    void helpIsGerman()
    {
        const CliResult result = runInGerman({QStringLiteral("--help")});
        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.err.isEmpty());
        const QString help = result.outText();
        QVERIFY2(help.startsWith(QStringLiteral("Aufruf: kestrine-cli [--demo] BEFEHL [ARGUMENTE]\n"
                                                "\n"
                                                "Kestrine im Terminal: der Posteingang, ")),
                 qPrintable(help));
        QVERIFY(help.contains(QStringLiteral("\n\nBefehle:\n  login ")));
        QVERIFY(help.contains(
            QStringLiteral("\n  show             Einen Pull-Request mit Diskussion, Dateien und "
                           "Checks ausgeben\n")));
        QVERIFY(help.contains(QStringLiteral("\n\nOptionen:\n  --demo ")));
        QVERIFY(help.contains(QStringLiteral("\n\nUmgebung:\n  KESTRINE_URL ")));
        QVERIFY(help.endsWith(QStringLiteral("2 die Befehlszeile war falsch.\n")));

        const CliResult show = runInGerman({QStringLiteral("show"), QStringLiteral("--help")});
        QVERIFY2(show.outText().startsWith(
                     QStringLiteral("Aufruf: kestrine-cli show BESITZER/REPO NUMMER [--json]\n"
                                    "\n"
                                    "Einen Pull-Request mit Diskussion, Dateien und Checks "
                                    "ausgeben\n"
                                    "\n"
                                    "Lädt den Pull-Request wie sein Detailbildschirm")),
                 qPrintable(show.outText()));
        QVERIFY(show.outText().endsWith(
            QStringLiteral("\nOptionen:\n  --json  {pr, ciStatus, reviews, comments, files, "
                           "commits, runs, jobs, cut} als JSON ausgeben\n")));
    }

    void usageErrorsAreGerman_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("error");
        QTest::newRow("unknown command") << QStringList{"frobnicate"}
                                         << "kestrine-cli: unbekannter Befehl frobnicate\n"
                                            "Der Aufruf steht in 'kestrine-cli --help'.\n";
        QTest::newRow("missing number") << QStringList{"show", "ann/tool"}
                                        << "kestrine-cli: NUMMER fehlt\n"
                                           "Der Aufruf steht in 'kestrine-cli show --help'.\n";
        QTest::newRow("not a number") << QStringList{"show", "ann/tool", "x"}
                                      << "kestrine-cli: NUMMER ist eine positive ganze Zahl\n"
                                         "Der Aufruf steht in 'kestrine-cli show --help'.\n";
        QTest::newRow("wrong setting") << QStringList{"settings", "mergeGateMode", "maybe"}
                                       << "kestrine-cli: mergeGateMode ist warn oder block\n"
                                          "Der Aufruf steht in 'kestrine-cli settings --help'.\n";
    }

    void usageErrorsAreGerman()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, error);
        const CliResult result = runInGerman(arguments);
        QCOMPARE(result.exitCode, 2);
        QCOMPARE(result.errText(), error);
    }

    void inboxErrorsAreGermanAndTheLogEnglish()
    {
        const CliResult unconfigured = runInGerman({QStringLiteral("inbox")});
        QCOMPARE(unconfigured.exitCode, 1);
        QCOMPARE(unconfigured.errText(),
                 QStringLiteral("Richte deine Gitea-Instanz in den Einstellungen ein.\n"));

        login(QStringLiteral("0000000000000000000000000000000000000000"));
        const CliResult refused = runInGerman({QStringLiteral("inbox")});
        QCOMPARE(refused.exitCode, 1);
        QCOMPARE(refused.errText(),
                 QStringLiteral("Anmeldung fehlgeschlagen. Prüfe dein Token.\n"));
        QCOMPARE(
            cli->storedLogLines(),
            (QStringList{
                QStringLiteral("ERROR GET user/repos → 401 unauthorized"),
                QStringLiteral("ERROR Inbox load failed: Authentication failed. Check your token."),
            }));
    }

    void showIsGermanAroundTheServersWords()
    {
        login(SeededGitea::annToken);
        const CliResult result = runInGerman({QStringLiteral("show"), tool, QStringLiteral("7")});
        QCOMPARE(result.errText(), QString());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outText(),
                 QStringLiteral("Add retry to the release uploader\n"
                                "ann/tool#7 · offen · CI erfolgreich · Änderungen\n") +
                     gitea->url() +
                     QStringLiteral("/ann/tool/pulls/7\n"
                                    "\n"
                                    "## Why\n"
                                    "\n"
                                    "Uploads fail on flaky networks.\n"
                                    "\n"
                                    "- retry 3 times\n"
                                    "- back off\n"
                                    "\n"
                                    "```go\n"
                                    "for i := 0; i < 3; i++ {}\n"
                                    "```\n"
                                    "\n"
                                    "Reviews\n"
                                    "  🔴 ann hat Änderungen angefordert\n"
                                    "    Please back off between attempts.\n"
                                    "  ✅ cy hat genehmigt\n"
                                    "  💬 ann hat ein Review abgegeben\n"
                                    "    Looks good now, one question about the pause.\n"
                                    "Kommentare\n"
                                    "  ann 2024-04-30T08:45:00Z\n"
                                    "    Could this also cover the checksum upload?\n"
                                    "  bo 2024-04-30T09:10:00Z\n"
                                    "    Yes, it goes through `Upload` too.\n"
                                    "\n"
                                    "Dateien\n"
                                    "  → docs/UPLOAD.md  +1 −1\n"
                                    "  － uploader/legacy.go  +0 −6\n"
                                    "  ＋ uploader/retry.go  +21 −0\n"
                                    "  ✎ uploader/upload.go  +8 −6\n"
                                    "\n"
                                    "Checks\n"
                                    "  erfolgreich  Workflow  (Lauf 42)\n"
                                    "    erfolgreich  lint  (Job 103)\n"
                                    "  erfolgreich  Workflow  (Lauf 41)\n"
                                    "    erfolgreich  build  (Job 101)\n"
                                    "    erfolgreich  test  (Job 102)\n"));
    }

    void jsonAndTheInboxRowsAreTheSameInEveryLanguage()
    {
        login(SeededGitea::annToken);
        for (const QStringList &arguments :
             {QStringList{QStringLiteral("show"), tool, QStringLiteral("7"),
                          QStringLiteral("--json")},
              QStringList{QStringLiteral("inbox"), QStringLiteral("--json")},
              QStringList{QStringLiteral("inbox")},
              QStringList{QStringLiteral("settings"), QStringLiteral("--json")}}) {
            const CliResult english = cli->run(arguments);
            const CliResult inGerman = runInGerman(arguments);
            QCOMPARE(english.exitCode, 0);
            QVERIFY2(!english.out.isEmpty(), qPrintable(arguments.join(u' ')));
            QCOMPARE(inGerman.out, english.out);
        }
    }

    void englishUnlessTheMessagesLocaleNamesACatalogue_data()
    {
        QTest::addColumn<QStringList>("locale");
        QTest::addColumn<bool>("isGerman");
        QTest::newRow("C") << QStringList{"LANG=C"} << false;
        QTest::newRow("POSIX") << QStringList{"LANG=POSIX"} << false;
        QTest::newRow("nothing set") << QStringList{} << false;
        QTest::newRow("an unknown language") << QStringList{"LANG=xx_YY.UTF-8"} << false;
        QTest::newRow("a language without a catalogue") << QStringList{"LANG=fr_FR.UTF-8"} << false;
        QTest::newRow("American English") << QStringList{"LANG=en_US.UTF-8"} << false;
        // As with gettext, LANGUAGE does not turn the C locale into another language.
        QTest::newRow("C with LANGUAGE=de") << QStringList{"LANG=C", "LANGUAGE=de"} << false;
        QTest::newRow("LC_ALL=C over German")
            << QStringList{"LANG=de_DE.UTF-8", "LC_ALL=C"} << false;
        QTest::newRow("LC_MESSAGES German")
            << QStringList{"LANG=C.UTF-8", "LC_MESSAGES=de_DE.UTF-8"} << true;
        QTest::newRow("German first in LANGUAGE")
            << QStringList{"LANG=fr_FR.UTF-8", "LANGUAGE=de:fr"} << true;
    }

    void englishUnlessTheMessagesLocaleNamesACatalogue()
    {
        QFETCH(QStringList, locale);
        QFETCH(bool, isGerman);
        login(SeededGitea::annToken);
        QList<std::pair<QString, QString>> variables;
        for (const QString &assignment : locale)
            variables.append({assignment.section(u'=', 0, 0), assignment.section(u'=', 1)});
        // The test's own runs are English (C.UTF-8); German runs are the reference for German.
        for (const QStringList &arguments :
             {QStringList{QStringLiteral("--help")},
              QStringList{QStringLiteral("show"), tool, QStringLiteral("7")},
              QStringList{QStringLiteral("show"), tool}}) {
            const CliResult expected = isGerman ? runInGerman(arguments) : cli->run(arguments);
            const CliResult result = runIn(arguments, variables);
            QCOMPARE(result.exitCode, expected.exitCode);
            QCOMPARE(result.out, expected.out);
            QCOMPARE(result.err, expected.err);
        }
        const CliResult help = runIn({QStringLiteral("--help")}, variables);
        QCOMPARE(help.outText().startsWith(QStringLiteral("Aufruf: ")), isGerman);
        QCOMPARE(help.outText().startsWith(QStringLiteral("Usage: ")), !isGerman);
    }
};

QTEST_GUILESS_MAIN(TestCliLanguage)
#include "tst_clilanguage.moc"
