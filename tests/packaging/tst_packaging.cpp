// The desktop integration: what `make install` puts where, and whether desktop-file-validate,
// appstreamcli and systemd-analyze accept the installed files.

#include "installtools.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace kestrine::testing;

namespace {

const QString appID = QStringLiteral("com.norrum.kestrine");

/// Installs the "desktop" component into a staging folder under `prefix`.
QStringList install(const QTemporaryDir &staging, const QString &prefix)
{
    return installInto(staging.path(), prefix, QStringLiteral("desktop"));
}

} // namespace

class TestPackaging : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir staging;
    QString prefix = QStringLiteral("/usr");

    QString installed(const QString &path) const { return staging.path() + prefix + u'/' + path; }

private slots:
    void initTestCase()
    {
        QVERIFY(staging.isValid());
        QVERIFY(!install(staging, prefix).isEmpty());
    }

    void installPutsEveryFileInPlace_data()
    {
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<QString>("unitDirectory");
        QTest::newRow("system") << "/usr"
                                << "/usr/lib/systemd/user";
        QTest::newRow("local") << "/usr/local"
                               << "/usr/local/lib/systemd/user";
        // Under a home prefix the units go where the user's systemd looks: $XDG_DATA_HOME.
        QTest::newRow("home") << "/home/ann/.local"
                              << "/home/ann/.local/share/systemd/user";
    }

    void installPutsEveryFileInPlace()
    {
        QFETCH(QString, prefix);
        QFETCH(QString, unitDirectory);
        QTemporaryDir root;

        const QStringList files = install(root, prefix);

        QStringList expected{
            prefix.mid(1) + QStringLiteral("/share/applications/com.norrum.kestrine.desktop"),
            prefix.mid(1) +
                QStringLiteral("/share/icons/hicolor/scalable/apps/com.norrum.kestrine.svg"),
            prefix.mid(1) + QStringLiteral("/share/metainfo/com.norrum.kestrine.metainfo.xml"),
            unitDirectory.mid(1) + QStringLiteral("/kestrine-check.service"),
            unitDirectory.mid(1) + QStringLiteral("/kestrine-check.timer"),
        };
        expected.sort();
        QCOMPARE(files, expected);
        // The service runs the kestrine-cli installed under this very prefix.
        const QString service =
            readText(root.path() + unitDirectory + QStringLiteral("/kestrine-check.service"));
        QCOMPARE(iniValue(service, QStringLiteral("ExecStart")),
                 prefix + QStringLiteral("/bin/kestrine-cli check"));
    }

    void desktopEntryIsValid()
    {
        const QString desktopFile =
            installed(QStringLiteral("share/applications/com.norrum.kestrine.desktop"));
        const QString validator =
            QStandardPaths::findExecutable(QStringLiteral("desktop-file-validate"));
        QVERIFY2(!validator.isEmpty(),
                 "desktop-file-validate is missing (Debian package desktop-file-utils)");

        const ToolResult result = runTool(validator, {desktopFile});

        QCOMPARE(result.output, QString());
        QCOMPARE(result.exitCode, 0);
        // It starts the app and shows the icon installed beside it.
        const QString entry = readText(desktopFile);
        QCOMPARE(iniValue(entry, QStringLiteral("Exec")), QStringLiteral("kestrine"));
        QCOMPARE(iniValue(entry, QStringLiteral("Icon")), appID);
        QVERIFY(QFile::exists(installed(QStringLiteral("share/icons/hicolor/scalable/apps/") +
                                        appID + QStringLiteral(".svg"))));
    }

    void appStreamMetadataIsValid()
    {
        const QString metainfo =
            installed(QStringLiteral("share/metainfo/com.norrum.kestrine.metainfo.xml"));
        const QString validator = QStandardPaths::findExecutable(QStringLiteral("appstreamcli"));
        QVERIFY2(!validator.isEmpty(), "appstreamcli is missing (Debian package appstream)");

        const ToolResult result =
            runTool(validator, {QStringLiteral("validate"), QStringLiteral("--no-net"),
                                QStringLiteral("--no-color"), metainfo});

        QVERIFY2(result.exitCode == 0, qPrintable(result.output));
        // Not even a warning or a hint.
        QVERIFY2(result.output.contains(QStringLiteral("Validation was successful")),
                 qPrintable(result.output));
        QVERIFY2(!result.output.contains(QRegularExpression(QStringLiteral("^[EWI]: "),
                                                            QRegularExpression::MultilineOption)),
                 qPrintable(result.output));
        // The component is the desktop entry's, by the same id.
        const QString text = readText(metainfo);
        QVERIFY(text.contains(QStringLiteral("<id>com.norrum.kestrine</id>")));
        QVERIFY(text.contains(QStringLiteral(
            "<launchable type=\"desktop-id\">com.norrum.kestrine.desktop</launchable>")));
    }

    void timerRunsTheCheckEveryFifteenMinutes()
    {
        const QString timer =
            readText(installed(QStringLiteral("lib/systemd/user/kestrine-check.timer")));
        QCOMPARE(iniValue(timer, QStringLiteral("Unit")), QStringLiteral("kestrine-check.service"));
        QCOMPARE(iniValue(timer, QStringLiteral("OnUnitActiveSec")), QStringLiteral("15min"));
        QCOMPARE(iniValue(timer, QStringLiteral("WantedBy")), QStringLiteral("timers.target"));
        const QString service =
            readText(installed(QStringLiteral("lib/systemd/user/kestrine-check.service")));
        QCOMPARE(iniValue(service, QStringLiteral("Type")), QStringLiteral("oneshot"));
    }

    void systemdAcceptsTheUnits()
    {
        const QString analyze = QStandardPaths::findExecutable(QStringLiteral("systemd-analyze"));
        if (analyze.isEmpty())
            QSKIP("systemd-analyze is not installed");
        // systemd checks that ExecStart names an executable, so the verified copy runs the
        // kestrine-cli of this build; everything else is the installed text.
        QTemporaryDir units;
        const QString unitDir = installed(QStringLiteral("lib/systemd/user"));
        QString service = readText(unitDir + QStringLiteral("/kestrine-check.service"));
        service.replace(QStringLiteral("ExecStart=/usr/bin/kestrine-cli"),
                        QStringLiteral("ExecStart=" KESTRINE_CLI_PATH));
        QVERIFY(service.contains(QStringLiteral(KESTRINE_CLI_PATH)));
        QFile serviceCopy(units.filePath(QStringLiteral("kestrine-check.service")));
        QVERIFY(serviceCopy.open(QIODevice::WriteOnly));
        serviceCopy.write(service.toUtf8());
        serviceCopy.close();
        QVERIFY(QFile::copy(unitDir + QStringLiteral("/kestrine-check.timer"),
                            units.filePath(QStringLiteral("kestrine-check.timer"))));
        // A user manager needs a runtime directory, even one that only checks files.
        QTemporaryDir runtime;
        QFile::setPermissions(runtime.path(),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime.path());

        const ToolResult result = runTool(analyze,
                                          {QStringLiteral("verify"), QStringLiteral("--user"),
                                           units.filePath(QStringLiteral("kestrine-check.service")),
                                           units.filePath(QStringLiteral("kestrine-check.timer"))},
                                          environment);

        if (result.output.contains(QStringLiteral("Failed to initialize manager")))
            QSKIP(qPrintable(QStringLiteral("systemd-analyze cannot check units here: ") +
                             result.output));
        // Unknown keys and other mistakes are only warned about, so any output counts.
        QCOMPARE(result.output, QString());
        QCOMPARE(result.exitCode, 0);
    }
};

QTEST_GUILESS_MAIN(TestPackaging)
#include "tst_packaging.moc"
