// kestrine-cli open against the simulated Gitea of the seed: which address reaches the program
// that opens web pages, which never does, and what the command says when that program is missing
// or fails. The programs here stand in for xdg-open and a browser: they only write down what they
// were given.

#include "clirun.h"
#include "clitestcase.h"
#include "seededgitea.h"

#include <QDir>
#include <QFile>
#include <QJsonValue>
#include <QTemporaryDir>
#include <QtTest>

using namespace kestrine;
using namespace kestrine::testing;

namespace {

const QString tool = QStringLiteral("ann/tool");

} // namespace

class TestCliOpen : public CliTestCase
{
    Q_OBJECT

private:
    /// Folders for the stand-in programs: `withOpener` holds xdg-open, `empty` nothing.
    std::unique_ptr<QTemporaryDir> programs;

    QString withOpener() const { return programs->filePath(QStringLiteral("with-opener")); }
    QString empty() const { return programs->filePath(QStringLiteral("empty")); }
    /// Where the stand-ins write their arguments, one a line.
    QString record() const { return programs->filePath(QStringLiteral("opened.txt")); }

    /// Writes an executable shell script at `path` that writes each of its arguments on a line of
    /// record() and exits with `exitCode`.
    void writeStandIn(const QString &path, int exitCode = 0) const
    {
        QFile script(path);
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write(QStringLiteral("#!/bin/sh\n"
                                    "for argument in \"$@\"; do printf '%s\\n' \"$argument\"; "
                                    "done > '%1'\n"
                                    "exit %2\n")
                         .arg(record())
                         .arg(exitCode)
                         .toUtf8());
        script.close();
        QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }

    /// What the stand-in was given; empty when it never ran.
    QStringList opened() const
    {
        QFile file(record());
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
    }

    /// The CLI's PATH is `folder` alone: no xdg-open of the machine can stand in.
    void searchOnly(const QString &folder)
    {
        cli->environment.insert(QStringLiteral("PATH"), folder);
    }

private slots:
    void init()
    {
        QVERIFY(startFresh());
        login(SeededGitea::annToken);
        programs = std::make_unique<QTemporaryDir>();
        QVERIFY(programs->isValid());
        QVERIFY(QDir(programs->path()).mkpath(QStringLiteral("with-opener")));
        QVERIFY(QDir(programs->path()).mkpath(QStringLiteral("empty")));
        writeStandIn(withOpener() + QStringLiteral("/xdg-open"));
        searchOnly(withOpener());
    }

    void cleanup()
    {
        programs.reset();
        stop();
    }

    void openHandsThePagesAddressToXdgOpen()
    {
        const QString page = gitea->url() + QStringLiteral("/ann/tool/pulls/7");
        QCOMPARE(gitea->simulation()
                     .pullRequest(QStringLiteral("ann"), QStringLiteral("tool"), 7)
                     ->value(QStringLiteral("html_url"))
                     .toString(),
                 page);

        const CliResult result = cli->run({QStringLiteral("open"), tool, QStringLiteral("7")});

        QCOMPARE(result.errText(), QString());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(result.outText(), QStringLiteral("Opening ") + page + u'\n');
        QCOMPARE(opened(), QStringList{page});
        // It loaded the pull request as the detail screen does, and asked for nothing else.
        QCOMPARE(gitea->requestLines().first(),
                 QStringLiteral("GET /api/v1/repos/ann/tool/pulls/7"));
        QVERIFY(gitea->requestLines().filter(QStringLiteral("POST")).isEmpty());
    }

    void openTakesTheAddressTheServerWrites()
    {
        // Behind a proxy Gitea writes its page addresses from its ROOT_URL.
        gitea->simulation().setRootUrl(QStringLiteral("https://git.example.org/"));

        const CliResult result = cli->run({QStringLiteral("open"), tool, QStringLiteral("7")});

        QCOMPARE(result.exitCode, 0);
        QCOMPARE(opened(), QStringList{QStringLiteral("https://git.example.org/ann/tool/pulls/7")});
    }

    void openUsesBrowserWhereThereIsNoXdgOpen()
    {
        const QString browser = programs->filePath(QStringLiteral("browser"));
        writeStandIn(browser);
        searchOnly(empty());
        cli->environment.insert(QStringLiteral("BROWSER"),
                                QStringLiteral("\"%1\" --new-tab %s").arg(browser));
        const QString page = gitea->url() + QStringLiteral("/ann/tool/pulls/7");

        const CliResult result = cli->run({QStringLiteral("open"), tool, QStringLiteral("7")});

        QCOMPARE(result.errText(), QString());
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(opened(), (QStringList{QStringLiteral("--new-tab"), page}));

        // Without "%s" the address comes last.
        QVERIFY(QFile::remove(record()));
        cli->environment.insert(QStringLiteral("BROWSER"), browser);
        QCOMPARE(cli->run({QStringLiteral("open"), tool, QStringLiteral("7")}).exitCode, 0);
        QCOMPARE(opened(), QStringList{page});
    }

    void xdgOpenComesBeforeBrowser()
    {
        // As for the app's own links: the desktop's opener first.
        cli->environment.insert(QStringLiteral("BROWSER"), QStringLiteral("/bin/false"));
        const CliResult result = cli->run({QStringLiteral("open"), tool, QStringLiteral("7")});
        QCOMPARE(result.exitCode, 0);
        QCOMPARE(opened(), QStringList{gitea->url() + QStringLiteral("/ann/tool/pulls/7")});
    }

    void anAddressThatIsNoWebPageIsNeverHandedOn_data()
    {
        QTest::addColumn<QJsonValue>("htmlUrl");
        QTest::addColumn<QString>("error");
        const QString refused = QStringLiteral(
            "Not opening ann/tool#7: its address on the server is not an http or https address.\n");
        QTest::newRow("javascript") << QJsonValue(QStringLiteral("javascript:alert(1)")) << refused;
        QTest::newRow("file") << QJsonValue(QStringLiteral("file:///etc/passwd")) << refused;
        QTest::newRow("custom scheme")
            << QJsonValue(QStringLiteral("kestrine-evil://run")) << refused;
        QTest::newRow("relative") << QJsonValue(QStringLiteral("/ann/tool/pulls/7")) << refused;
        QTest::newRow("absent") << QJsonValue(QJsonValue::Undefined)
                                << QStringLiteral("Cannot open ann/tool#7: the server gave no "
                                                  "address for its page.\n");
        QTest::newRow("null") << QJsonValue(QJsonValue::Null)
                              << QStringLiteral("Cannot open ann/tool#7: the server gave no "
                                                "address for its page.\n");
    }

    void anAddressThatIsNoWebPageIsNeverHandedOn()
    {
        QFETCH(QJsonValue, htmlUrl);
        QFETCH(QString, error);
        gitea->answerPullRequestWith(QStringLiteral("ann"), QStringLiteral("tool"), 7,
                                     QStringLiteral("html_url"), htmlUrl);
        // Not even to a browser named in the environment.
        cli->environment.insert(QStringLiteral("BROWSER"),
                                withOpener() + QStringLiteral("/xdg-open"));

        const CliResult result = cli->run({QStringLiteral("open"), tool, QStringLiteral("7")});

        QCOMPARE(result.errText(), error);
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.isEmpty());
        QVERIFY(!QFile::exists(record()));
    }

    void aFailingOpenerFailsTheCommand()
    {
        const QString opener = withOpener() + QStringLiteral("/xdg-open");
        writeStandIn(opener, 4);

        const CliResult result = cli->run({QStringLiteral("open"), tool, QStringLiteral("7")});

        QCOMPARE(
            result.errText(),
            QStringLiteral("Cannot open ann/tool#7: %1 failed (exit status 4).\n").arg(opener));
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(opened().size(), 1);
    }

    void withoutAnyOpenerItSaysWhatIsMissing()
    {
        searchOnly(empty());
        cli->environment.remove(QStringLiteral("BROWSER"));

        const CliResult result = cli->run({QStringLiteral("open"), tool, QStringLiteral("7")});

        QCOMPARE(result.errText(), QStringLiteral("Cannot open ann/tool#7: there is no xdg-open "
                                                  "(Debian package xdg-utils) and BROWSER is not "
                                                  "set.\n"));
        QCOMPARE(result.exitCode, 1);
    }

    void aBrowserThatCannotStartFailsTheCommand()
    {
        searchOnly(empty());
        const QString missing = programs->filePath(QStringLiteral("no-such-browser"));
        cli->environment.insert(QStringLiteral("BROWSER"), missing);

        const CliResult result = cli->run({QStringLiteral("open"), tool, QStringLiteral("7")});

        QVERIFY2(result.errText().startsWith(
                     QStringLiteral("Cannot open ann/tool#7: %1 did not start (").arg(missing)),
                 qPrintable(result.errText()));
        QCOMPARE(result.exitCode, 1);
    }

    void aMissingPullRequestOpensNothing()
    {
        const CliResult result = cli->run({QStringLiteral("open"), tool, QStringLiteral("99")});

        QCOMPARE(result.errText(), QStringLiteral("Not found.\n"));
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.out.isEmpty());
        QVERIFY(!QFile::exists(record()));
    }
};

QTEST_GUILESS_MAIN(TestCliOpen)
#include "tst_cliopen.moc"
