// Ephemeral storage, the mode of the demo instance: nothing the user keeps is read or written.
// Runs against the real Secret Service of `run-isolated --keyring`, with the real defaults file
// and caches directory under the private XDG folders, all filled as an earlier run of the app
// would have left them.

#include "cachedirectory.h"
#include "childrun.h"
#include "defaultsstore.h"
#include "inboxcache.h"
#include "keychainhelper.h"
#include "keychainsteps.h"
#include "logstore.h"
#include "secretserviceprobe.h"
#include "settingsstore.h"
#include "storagemode.h"
#include "testfiles.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QtTest>

using namespace kestrine;
using kestrine::testing::appSecret;
using kestrine::testing::ChildResult;
using kestrine::testing::keychainSet;
using kestrine::testing::LoadedSettingsStore;
using kestrine::testing::readFile;
using kestrine::testing::runChild;
using kestrine::testing::userDefaultsPath;
using kestrine::testing::writeFile;

namespace {

constexpr char tooLateChild[] = "--ephemeral-after-defaults";
constexpr char folderChild[] = "--print-ephemeral-folder";

const QString savedURL = QStringLiteral("https://git.example.org");
const QString savedToken = QStringLiteral("saved-token-0123");
const QByteArray savedDefaults =
    R"({"mergeGateMode": "Block merge when CI is red", "monitoredRepos": ["team/app"],)"
    R"( "notificationsEnabled": true, "kestrine.log.entries": {"$data": "W10="}})"
    "\n";
const QByteArray savedInbox = "[]";

QString userCachePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
           QStringLiteral("/norrum/kestrine/inbox.json");
}

/// Runs this test program as a child in `mode`; what it prints is {"answer": ...}.
ChildResult runInChild(const char *mode)
{
    return runChild(QCoreApplication::applicationFilePath(), {QString::fromLatin1(mode)},
                    QProcessEnvironment::systemEnvironment());
}

} // namespace

class TestEphemeralStorage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // What an earlier, normal run left behind; written before this process chooses a mode.
        QVERIFY(!Storage::isEphemeral());
        keychainSet(savedURL, QString(SettingsStore::instanceURLKey));
        keychainSet(savedToken, QString(SettingsStore::tokenKey));
        QCOMPARE(appSecret(QStringLiteral("instanceURL")), savedURL.toUtf8());
        QCOMPARE(appSecret(QStringLiteral("token")), savedToken.toUtf8());
        QVERIFY(writeFile(userDefaultsPath(), savedDefaults));
        QVERIFY(writeFile(userCachePath(), savedInbox));
    }

    void switchingBeforeAnyStoreIsOpenedWorks()
    {
        QVERIFY(Storage::useEphemeral());
        QVERIFY(Storage::isEphemeral());
        const QString folder = Storage::ephemeralDirectory();
        QVERIFY(QDir(folder).exists());
        QVERIFY(!folder.startsWith(QDir::homePath()));
        // Asking again is harmless.
        QVERIFY(Storage::useEphemeral());
        QCOMPARE(Storage::ephemeralDirectory(), folder);
    }

    void settingsStartFromDefaultsWithoutTheUsersValues()
    {
        LoadedSettingsStore store;
        QCOMPARE(store.instanceURL(), QString(SettingsStore::defaultInstanceURL));
        QCOMPARE(store.token(), QString());
        QCOMPARE(store.mergeGateMode(), MergeGateMode::Warn);
        QCOMPARE(store.monitoredRepos(), QStringList());
        QCOMPARE(store.notificationsEnabled(), false);
        QVERIFY(!store.isConfigured());
    }

    void changedSettingsStayInThisProcess()
    {
        LoadedSettingsStore store;
        store.setInstanceURL(QStringLiteral("http://127.0.0.1:3000"));
        store.setToken(QStringLiteral("demo-token"));
        store.setMergeGateMode(MergeGateMode::Block);
        store.setMonitoredRepos({QStringLiteral("norrum/harbor")});
        store.setNotificationsEnabled(true);
        store.logout();
        store.setToken(QStringLiteral("second-token"));

        // Read back by a fresh store: the process remembers them...
        LoadedSettingsStore again;
        QCOMPARE(again.instanceURL(), QString(SettingsStore::defaultInstanceURL));
        QCOMPARE(again.token(), QStringLiteral("second-token"));
        QCOMPARE(again.mergeGateMode(), MergeGateMode::Block);
        QCOMPARE(again.monitoredRepos(), QStringList{QStringLiteral("norrum/harbor")});
        QCOMPARE(again.notificationsEnabled(), true);

        // ...while the user's keychain and defaults file hold what they held.
        QCOMPARE(appSecret(QStringLiteral("instanceURL")), savedURL.toUtf8());
        QCOMPARE(appSecret(QStringLiteral("token")), savedToken.toUtf8());
        QCOMPARE(readFile(userDefaultsPath()), savedDefaults);
        QVERIFY(defaultsStore().fileName().startsWith(Storage::ephemeralDirectory()));
    }

    void logAndCachesGoToThePrivateFolder()
    {
        LogStore log;
        log.log(LogLevel::Info, QStringLiteral("GET user/repos → 200"));
        log.clear();
        log.log(LogLevel::Error, QStringLiteral("PR 7 failed"));
        QVERIFY(cacheDirectory().startsWith(Storage::ephemeralDirectory()));
        InboxCache().write({});
        QVERIFY(QFile::exists(cacheDirectory() + QStringLiteral("/inbox.json")));

        QCOMPARE(readFile(userDefaultsPath()), savedDefaults);
        QCOMPARE(readFile(userCachePath()), savedInbox);
        // The log is kept where the settings are, so a new log of this process reads it back
        // once it is written.
        log.flush();
        QCOMPARE(LogStore().count(), 1);
    }

    void tooLateOnceTheDefaultsStoreIsOpen()
    {
        const ChildResult child = runInChild(tooLateChild);
        QVERIFY2(child.exitCode == 0, qPrintable(child.stderrText));
        QCOMPARE(child.output.value("answer").toString(), QStringLiteral("refused"));
    }

    void thePrivateFolderGoesWithTheProcess()
    {
        const ChildResult child = runInChild(folderChild);
        QVERIFY2(child.exitCode == 0, qPrintable(child.stderrText));
        const QString folder = child.output.value("answer").toString();
        QVERIFY(!folder.isEmpty());
        QVERIFY2(!QDir(folder).exists(), qPrintable(folder));
    }
};

/// What a child tells its parent, as the last line of its output.
void printAnswer(const QString &answer)
{
    const QJsonObject line{{QStringLiteral("answer"), answer}};
    printf("%s\n", QJsonDocument(line).toJson(QJsonDocument::Compact).constData());
}

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc >= 2 && qstrcmp(argv[1], tooLateChild) == 0) {
        defaultsStore().value(QStringLiteral("mergeGateMode"));
        const bool switched = Storage::useEphemeral();
        printAnswer(switched || Storage::isEphemeral() ? "switched" : "refused");
        return 0;
    }
    if (argc >= 2 && qstrcmp(argv[1], folderChild) == 0) {
        if (!Storage::useEphemeral())
            return 1;
        // Use it, so that there is something to remove.
        LoadedSettingsStore().setMergeGateMode(MergeGateMode::Block);
        printAnswer(Storage::ephemeralDirectory());
        return 0;
    }
    TestEphemeralStorage test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_ephemeralstorage.moc"
