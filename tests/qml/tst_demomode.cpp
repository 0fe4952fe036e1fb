// `kestrine --demo` as the app runs it: the window opens on the demo inbox, and using the app —
// loading, saving settings, opening a pull request — leaves the user's keychain, defaults file
// and caches exactly as they were. Runs against the real Secret Service of run-isolated --keyring
// and the private XDG folders, filled as an earlier normal run would have left them.

#include "app.h"
#include "demoinstance.h"
#include "giteaclient.h"
#include "keychainhelper.h"
#include "keychainsteps.h"
#include "logstore.h"
#include "notificationpass.h"
#include "onerepository.h"
#include "outcome.h"
#include "secretserviceprobe.h"
#include "settingsstore.h"
#include "storagemode.h"
#include "testfiles.h"

#include <QDir>
#include <QNetworkReply>
#include <QQuickItem>
#include <QQuickWindow>
#include <QStandardPaths>
#include <QtTest>
#include <optional>

using namespace kestrine;
using kestrine::testing::appSecret;
using kestrine::testing::keychainSet;
using kestrine::testing::namedChild;
using kestrine::testing::readFile;
using kestrine::testing::runToEnd;
using kestrine::testing::userDefaultsPath;
using kestrine::testing::writeFile;

namespace {

const QString savedURL = QStringLiteral("https://git.example.org");
const QString savedToken = QStringLiteral("saved-token-0123");
const QByteArray savedDefaults =
    R"({"monitoredRepos": ["team/app"], "notificationsEnabled": false})"
    "\n";
const QByteArray savedInbox = "[]";

QString userCacheFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
           QStringLiteral("/norrum/kestrine");
}

} // namespace

class TestDemoMode : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        keychainSet(savedURL, QString(SettingsStore::instanceURLKey));
        keychainSet(savedToken, QString(SettingsStore::tokenKey));
        QVERIFY(writeFile(userDefaultsPath(), savedDefaults));
        QVERIFY(writeFile(userCacheFolder() + QStringLiteral("/inbox.json"), savedInbox));
    }

    void theDemoOpensOnItsInboxAndLeavesTheUsersStoresAlone()
    {
        std::optional<KestrineApp> running;
        KestrineApp &app = running.emplace(AppOptions{.demo = true});
        QVERIFY2(runToEnd(app.start()).value.value_or(false), qPrintable(app.errorString()));
        QVERIFY(Storage::isEphemeral());
        QVERIFY(app.demo());

        // One window, at phone size, on the inbox; the settings point at the demo instance.
        QQuickWindow *window = app.window();
        QVERIFY(window);
        QCOMPARE(window->size(), QSize(390, 844));
        QCOMPARE(app.engine().rootObjects().size(), 1);
        QCOMPARE(app.settings()->instanceURL(), app.demo()->url().toString());
        QVERIFY(NotificationPass::installed());
        QObject *inbox = namedChild(window, "inboxView");
        QVERIFY(inbox);
        QObject *model = inbox->property("vm").value<QObject *>();
        QTRY_VERIFY_WITH_TIMEOUT(model->property("count").toInt() >= 5, 5000);
        QTRY_VERIFY(!model->property("isLoading").toBool());

        // Use it: change and save settings through the settings screen, open a pull request.
        QMetaObject::invokeMethod(inbox, "openSettings");
        QObject *settings = nullptr;
        QTRY_VERIFY((settings = namedChild(window, "settingsView")));
        settings->setProperty("mergeGateMode", int(MergeGateMode::Block));
        settings->setProperty("notificationsEnabled", true);
        settings->setProperty("monitoredRepos", QStringList{QStringLiteral("norrum/harbor")});
        QMetaObject::invokeMethod(settings, "save");
        QCOMPARE(app.settings()->mergeGateMode(), MergeGateMode::Block);
        QCOMPARE(app.settings()->token(), app.demo()->token());
        QMetaObject::invokeMethod(model, "reload");
        QTRY_VERIFY(!model->property("isLoading").toBool());
        QCOMPARE(model->property("count").toInt(), 3);
        const QVariant row = model->property("displayedRows").toList().value(0);
        QMetaObject::invokeMethod(inbox, "openRow", Q_ARG(QVariant, row));
        QObject *detail = nullptr;
        QTRY_VERIFY((detail = namedChild(window, "prDetailView")));
        QObject *detailModel = detail->property("vm").value<QObject *>();
        QTRY_VERIFY_WITH_TIMEOUT(detailModel->property("hasPr").toBool(), 5000);
        QVERIFY(app.log()->count() > 5);

        // The user's own stores hold what they held before.
        QCOMPARE(appSecret(QStringLiteral("instanceURL")), savedURL.toUtf8());
        QCOMPARE(appSecret(QStringLiteral("token")), savedToken.toUtf8());
        QCOMPARE(readFile(userDefaultsPath()), savedDefaults);
        const QStringList cacheFiles = QDir(userCacheFolder()).entryList(QDir::Files);
        QCOMPARE(cacheFiles, QStringList{QStringLiteral("inbox.json")});
        QCOMPARE(readFile(userCacheFolder() + QStringLiteral("/inbox.json")), savedInbox);

        // Closed with requests under way, the app lets them end: none of their replies is left.
        QMetaObject::invokeMethod(detailModel, "reload");
        QMetaObject::invokeMethod(model, "reload");
        QVERIFY(!GiteaClient::sharedSession()->findChildren<QNetworkReply *>().isEmpty());
        running.reset();
        QCOMPARE(GiteaClient::sharedSession()->findChildren<QNetworkReply *>().size(), 0);
    }
};

QTEST_MAIN(TestDemoMode)
#include "tst_demomode.moc"
