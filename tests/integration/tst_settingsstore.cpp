// SettingsStore over the real stores: the keychain is gnome-keyring's Secret Service on the private
// session bus of `run-isolated --keyring`, the defaults store is the JSON file under the private
// XDG_CONFIG_HOME. Clients built by the store send real requests to the fake Gitea server.

#include "childrun.h"
#include "defaultsstore.h"
#include "fakegiteaserver.h"
#include "fixtures.h"
#include "keychainhelper.h"
#include "keychainsteps.h"
#include "logstore.h"
#include "optionalprinting.h"
#include "outcome.h"
#include "qmlservices.h"
#include "secretserviceprobe.h"
#include "settingsstore.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJSEngine>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaEnum>
#include <QMetaProperty>
#include <QProcess>
#include <QQmlEngine>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace kestrine;
using kestrine::testing::ChildResult;
using kestrine::testing::environmentWithoutABus;
using kestrine::testing::keychainGet;
using kestrine::testing::keychainSet;
using kestrine::testing::LoadedSettingsStore;
using kestrine::testing::runChild;
using kestrine::testing::runToEnd;
using kestrine::testing::SecretServiceProbe;
using kestrine::testing::settled;

namespace {

const QString service = QString(KeychainHelper::service);
const QString urlKey = QStringLiteral("instanceURL");
const QString tokenKey = QStringLiteral("token");
const QString modeKey = QStringLiteral("mergeGateMode");
const QString deleteBranchKey = QStringLiteral("deleteBranchAfterMerge");
const QString reposKey = QStringLiteral("monitoredRepos");
const QString notificationsKey = QStringLiteral("notificationsEnabled");
const QStringList defaultsKeys{modeKey, deleteBranchKey, reposKey, notificationsKey};

const QString warnLabel = QStringLiteral("Warn on red (allow merge with confirm)");
const QString blockLabel = QStringLiteral("Block merge when CI is red");

const std::optional<QString> nothing = std::nullopt;
const std::optional<QUrl> noURL = std::nullopt;

std::optional<QString> text(const QString &value)
{
    return value;
}

// Child modes: the test binary runs itself with one of these as its first argument.
constexpr char writeChild[] = "--write-settings";
constexpr char printChild[] = "--print-settings";
constexpr char offlineChild[] = "--settings-without-keychain";

/// Puts `value` under `key` in the defaults store, as an earlier run would have left it; an
/// invalid QVariant removes the key. The types are those the JSON file reads back as: bool,
/// QString, qint64, double, QVariantList.
void storeDefault(const QString &key, const QVariant &value)
{
    if (value.isValid())
        defaultsStore().setValue(key, value);
    else
        defaultsStore().remove(key);
    defaultsStore().sync();
}

QJsonObject defaultsFile()
{
    QFile file(defaultsStore().fileName());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
}

qsizetype itemCount(const QString &key)
{
    const auto items = SecretServiceProbe::items(service, key);
    return items ? items->size() : -1;
}

QJsonObject describe(const SettingsStore &store)
{
    return QJsonObject{
        {"instanceURL", store.instanceURL()},
        {"token", store.token()},
        {"mergeGateMode", mergeGateModeLabel(store.mergeGateMode())},
        {"deleteBranchAfterMerge", store.deleteBranchAfterMerge()},
        {"monitoredRepos", QJsonArray::fromStringList(store.monitoredRepos())},
        {"inboxNeedsRefresh", store.inboxNeedsRefresh()},
        {"notificationsEnabled", store.notificationsEnabled()},
        {"isConfigured", store.isConfigured()},
    };
}

void print(const QJsonObject &object)
{
    QTextStream(stdout) << QJsonDocument(object).toJson(QJsonDocument::Compact) << Qt::endl;
}

/// Child: sets every property through a store of its own, then exits.
int writeSettings()
{
    LoadedSettingsStore store;
    store.setInstanceURL(QStringLiteral("https://git.example.org/gitea/"));
    store.setToken(QStringLiteral("tok-123"));
    store.setMergeGateMode(MergeGateMode::Block);
    store.setDeleteBranchAfterMerge(true);
    store.setMonitoredRepos({QStringLiteral("ann/tool"), QStringLiteral("bob/site")});
    store.setInboxNeedsRefresh(true);
    store.setNotificationsEnabled(true);
    // As a program does before it ends: the keychain writes land first.
    settled(store);
    return 0;
}

/// Child: prints what a store loads.
int printSettings()
{
    const LoadedSettingsStore store;
    print(describe(store));
    return 0;
}

/// Child, without any D-Bus session: loads, changes both credentials, and loads again.
int settingsWithoutKeychain()
{
    QElapsedTimer timer;
    timer.start();
    LoadedSettingsStore store;
    const QJsonObject loaded = describe(store);
    store.setInstanceURL(QStringLiteral("https://offline.example.org"));
    store.setToken(QStringLiteral("offline-token"));
    const QJsonObject changed = describe(store);
    settled(store);
    const LoadedSettingsStore reloaded;
    print(QJsonObject{{"loaded", loaded},
                      {"changed", changed},
                      {"reloaded", describe(reloaded)},
                      {"ms", timer.elapsed()}});
    return 0;
}

/// This program run again in `mode`.
ChildResult
runChild(const char *mode,
         const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment())
{
    return runChild(QCoreApplication::applicationFilePath(), {QString::fromLatin1(mode)},
                    environment);
}

} // namespace

class TestSettingsStore : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(SecretServiceProbe::items(service).has_value(),
                 qPrintable(QStringLiteral("no Secret Service on the session bus (run this test "
                                           "through tests/run-isolated --keyring): ") +
                            SecretServiceProbe::lastError()));
        const QString defaultsPath = defaultsStore().fileName();
        if (QFile::exists(defaultsPath))
            QFAIL(qPrintable(defaultsPath + QStringLiteral(" exists already: run this test "
                                                           "through tests/run-isolated")));
    }

    void init()
    {
        // A fresh install for every case: no keychain items of the app, no settings keys.
        const auto items = SecretServiceProbe::items(service);
        QVERIFY(items.has_value());
        for (const QDBusObjectPath &item : *items)
            QVERIFY(SecretServiceProbe::deleteItem(item));
        for (const QString &key : defaultsKeys)
            defaultsStore().remove(key);
        defaultsStore().sync();
        QCOMPARE(SecretServiceProbe::items(service)->size(), 0);
    }

    // --- The interface as QML and the rest of the app see it ---

    void mergeGateModeLabelsAreTheUserVisibleTexts()
    {
        QCOMPARE(mergeGateModeLabel(MergeGateMode::Warn), warnLabel);
        QCOMPARE(mergeGateModeLabel(MergeGateMode::Block), blockLabel);
        QCOMPARE(SettingsStore::labelOf(MergeGateMode::Block), blockLabel);
        QCOMPARE(mergeGateModeFromLabel(blockLabel), MergeGateMode::Block);
        QCOMPARE(mergeGateModeFromLabel(warnLabel), MergeGateMode::Warn);
        QCOMPARE(mergeGateModeFromLabel(QStringLiteral("block")), MergeGateMode::Warn);
    }

    void mergeGateModeIsARegisteredEnumWithWarnFirst()
    {
        const QMetaEnum modes = QMetaEnum::fromType<MergeGateMode>();
        QVERIFY(modes.isValid());
        QCOMPARE(modes.keyCount(), 2);
        QCOMPARE(modes.key(0), "Warn");
        QCOMPARE(modes.key(1), "Block");
        QCOMPARE(modes.value(0), int(MergeGateMode::Warn));
    }

    void propertiesAreDeclaredInOrderWithChangeSignals()
    {
        const QMetaObject &meta = SettingsStore::staticMetaObject;
        QStringList names;
        for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
            const QMetaProperty property = meta.property(i);
            names.append(QString::fromLatin1(property.name()));
            QVERIFY2(property.hasNotifySignal(), property.name());
            const QByteArray name(property.name());
            QCOMPARE(property.isWritable(), name != "isConfigured" && name != "loaded");
        }
        QCOMPARE(names,
                 (QStringList{"instanceURL", "token", "mergeGateMode", "deleteBranchAfterMerge",
                              "monitoredRepos", "inboxNeedsRefresh", "notificationsEnabled",
                              "isConfigured", "loaded"}));
    }

    void defaultInstanceURLIsAnHttpsURL()
    {
        const QUrl url(QString(SettingsStore::defaultInstanceURL), QUrl::StrictMode);
        QVERIFY(url.isValid());
        QCOMPARE(url.scheme(), QStringLiteral("https"));
        QVERIFY(!url.host().isEmpty());
        QCOMPARE(QString(SettingsStore::defaultInstanceURL), QStringLiteral("https://gitea.com"));
    }

    void qmlSingletonIsTheStoreInstalledOnTheEngine()
    {
        LogStore log;
        SettingsStore store(&log);
        QQmlEngine engine;
        QmlServices::install(engine, store, log);
        QCOMPARE(SettingsStore::create(&engine, &engine), &store);
        QCOMPARE(QJSEngine::objectOwnership(&store), QJSEngine::CppOwnership);

        QQmlEngine bare;
        QTest::ignoreMessage(QtCriticalMsg,
                             "SettingsStore: no settings were installed on this QML engine.");
        QCOMPARE(SettingsStore::create(&bare, &bare), nullptr);
    }

    // --- Loading ---

    void freshInstallLoadsTheDefaults()
    {
        const LoadedSettingsStore store;
        QCOMPARE(store.instanceURL(), QString(SettingsStore::defaultInstanceURL));
        QCOMPARE(store.token(), QString());
        QVERIFY(!store.isConfigured());
        QCOMPARE(store.mergeGateMode(), MergeGateMode::Warn);
        QVERIFY(!store.deleteBranchAfterMerge());
        QVERIFY(store.monitoredRepos().isEmpty());
        QVERIFY(!store.inboxNeedsRefresh());
        QVERIFY(!store.notificationsEnabled());
        QCOMPARE(store.baseURL(), std::optional<QUrl>(QUrl(QStringLiteral("https://gitea.com"))));
    }

    void loadingWritesNothingBack()
    {
        const LoadedSettingsStore store;
        QCOMPARE(SecretServiceProbe::items(service)->size(), 0);
        defaultsStore().sync();
        for (const QString &key : defaultsKeys)
            QVERIFY2(!defaultsStore().contains(key), qPrintable(key));
        const QJsonObject file = defaultsFile();
        for (const QString &key : defaultsKeys)
            QVERIFY2(!file.contains(key), qPrintable(key));
    }

    void credentialsLoadFromTheKeychain()
    {
        keychainSet(QStringLiteral("https://git.example.org"), urlKey);
        keychainSet(QStringLiteral("abc123"), tokenKey);
        const LoadedSettingsStore store;
        QCOMPARE(store.instanceURL(), QStringLiteral("https://git.example.org"));
        QCOMPARE(store.token(), QStringLiteral("abc123"));
        QVERIFY(store.isConfigured());
    }

    void storedEmptyInstanceURLLoadsAsEmptyNotAsTheDefault()
    {
        keychainSet(QString(), urlKey);
        keychainSet(QStringLiteral("abc123"), tokenKey);
        const LoadedSettingsStore store;
        QCOMPARE(store.instanceURL(), QString());
        QVERIFY(!store.isConfigured());
        QCOMPARE(store.baseURL(), noURL);
        QVERIFY(!store.client().has_value());
    }

    void mergeGateModeLoadsBlockOnlyFromTheExactLabel_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<MergeGateMode>("expected");
        QTest::newRow("block label") << QVariant(blockLabel) << MergeGateMode::Block;
        QTest::newRow("warn label") << QVariant(warnLabel) << MergeGateMode::Warn;
        QTest::newRow("\"block\"") << QVariant(QStringLiteral("block")) << MergeGateMode::Warn;
        QTest::newRow("\"Block\"") << QVariant(QStringLiteral("Block")) << MergeGateMode::Warn;
        QTest::newRow("label in lower case")
            << QVariant(blockLabel.toLower()) << MergeGateMode::Warn;
        QTest::newRow("label with a trailing blank")
            << QVariant(blockLabel + u' ') << MergeGateMode::Warn;
        QTest::newRow("empty string") << QVariant(QString()) << MergeGateMode::Warn;
        QTest::newRow("bool true") << QVariant(true) << MergeGateMode::Warn;
        QTest::newRow("number 1") << QVariant(qint64(1)) << MergeGateMode::Warn;
        QTest::newRow("array holding the label")
            << QVariant(QVariantList{blockLabel}) << MergeGateMode::Warn;
        QTest::newRow("absent") << QVariant() << MergeGateMode::Warn;
    }

    void mergeGateModeLoadsBlockOnlyFromTheExactLabel()
    {
        QFETCH(QVariant, stored);
        QFETCH(MergeGateMode, expected);
        storeDefault(modeKey, stored);
        QCOMPARE(LoadedSettingsStore().mergeGateMode(), expected);
    }

    void deleteBranchAfterMergeLoadsTheStoredBool_data()
    {
        // A bool is read as the platforms' defaults stores read one (numbers and the strings
        // "true"/"yes" count); anything else, and nothing, is false.
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<bool>("expected");
        QTest::newRow("true") << QVariant(true) << true;
        QTest::newRow("false") << QVariant(false) << false;
        QTest::newRow("absent") << QVariant() << false;
        QTest::newRow("number 1") << QVariant(qint64(1)) << true;
        QTest::newRow("number 0") << QVariant(qint64(0)) << false;
        QTest::newRow("\"true\"") << QVariant(QStringLiteral("true")) << true;
        QTest::newRow("\"YES\"") << QVariant(QStringLiteral("YES")) << true;
        QTest::newRow("\"false\"") << QVariant(QStringLiteral("false")) << false;
        QTest::newRow("\"no\"") << QVariant(QStringLiteral("no")) << false;
        QTest::newRow("\"maybe\"") << QVariant(QStringLiteral("maybe")) << false;
        QTest::newRow("array") << QVariant(QVariantList{true}) << false;
    }

    void deleteBranchAfterMergeLoadsTheStoredBool()
    {
        QFETCH(QVariant, stored);
        QFETCH(bool, expected);
        storeDefault(deleteBranchKey, stored);
        QCOMPARE(LoadedSettingsStore().deleteBranchAfterMerge(), expected);
    }

    void monitoredReposLoadOnlyFromAnArrayOfStrings_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<QStringList>("expected");
        const QStringList two{QStringLiteral("ann/tool"), QStringLiteral("bob/site")};
        QTest::newRow("array of strings") << QVariant(QVariantList{two[0], two[1]}) << two;
        QTest::newRow("string list") << QVariant(two) << two;
        QTest::newRow("empty array") << QVariant(QVariantList{}) << QStringList();
        QTest::newRow("array with a number")
            << QVariant(QVariantList{two[0], qint64(3)}) << QStringList();
        QTest::newRow("array with a bool") << QVariant(QVariantList{true, two[1]}) << QStringList();
        QTest::newRow("array with an array")
            << QVariant(QVariantList{two[0], QVariantList{two[1]}}) << QStringList();
        QTest::newRow("one string") << QVariant(two[0]) << QStringList();
        QTest::newRow("bool") << QVariant(true) << QStringList();
        QTest::newRow("absent") << QVariant() << QStringList();
    }

    void monitoredReposLoadOnlyFromAnArrayOfStrings()
    {
        QFETCH(QVariant, stored);
        QFETCH(QStringList, expected);
        storeDefault(reposKey, stored);
        QCOMPARE(LoadedSettingsStore().monitoredRepos(), expected);
    }

    void notificationsEnabledLoadsOnlyFromARealBool_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<bool>("expected");
        QTest::newRow("true") << QVariant(true) << true;
        QTest::newRow("false") << QVariant(false) << false;
        QTest::newRow("absent") << QVariant() << false;
        QTest::newRow("string \"true\"") << QVariant(QStringLiteral("true")) << false;
        QTest::newRow("number 1") << QVariant(qint64(1)) << false;
        QTest::newRow("array") << QVariant(QVariantList{true}) << false;
    }

    void notificationsEnabledLoadsOnlyFromARealBool()
    {
        QFETCH(QVariant, stored);
        QFETCH(bool, expected);
        storeDefault(notificationsKey, stored);
        QCOMPARE(LoadedSettingsStore().notificationsEnabled(), expected);
    }

    void inboxNeedsRefreshStartsFalseAndIsNeverStored()
    {
        LoadedSettingsStore store;
        QVERIFY(!store.inboxNeedsRefresh());
        store.setInboxNeedsRefresh(true);
        QVERIFY(store.inboxNeedsRefresh());
        QVERIFY(!LoadedSettingsStore().inboxNeedsRefresh());
        QVERIFY(!defaultsStore().contains(QStringLiteral("inboxNeedsRefresh")));
        QVERIFY(!defaultsFile().contains(QStringLiteral("inboxNeedsRefresh")));
        QCOMPARE(SecretServiceProbe::items(service)->size(), 0);
    }

    // --- Writing ---

    void credentialsAreWrittenToTheKeychainOnChange()
    {
        LoadedSettingsStore store;
        store.setInstanceURL(QStringLiteral("https://git.example.org"));
        store.setToken(QStringLiteral("abc123"));
        settled(store);
        QCOMPARE(keychainGet(urlKey), text(QStringLiteral("https://git.example.org")));
        QCOMPARE(keychainGet(tokenKey), text(QStringLiteral("abc123")));
        QCOMPARE(itemCount(urlKey), 1);
        QCOMPARE(itemCount(tokenKey), 1);
        // Nothing of them in the plain defaults file.
        QVERIFY(!defaultsFile().contains(urlKey));
        QVERIFY(!defaultsFile().contains(tokenKey));
    }

    void clearingTheTokenWritesAnEmptyItem()
    {
        LoadedSettingsStore store;
        store.setToken(QStringLiteral("abc123"));
        store.setToken(QString());
        settled(store);
        QCOMPARE(itemCount(tokenKey), 1);
        QCOMPARE(keychainGet(tokenKey), text(QString()));
        QCOMPARE(LoadedSettingsStore().token(), QString());
    }

    void defaultsAreWrittenWithTheirJsonTypesOnChange()
    {
        LoadedSettingsStore store;
        store.setMergeGateMode(MergeGateMode::Block);
        store.setDeleteBranchAfterMerge(true);
        store.setMonitoredRepos({QStringLiteral("ann/tool"), QStringLiteral("bob/site")});
        store.setNotificationsEnabled(true);

        // On disk already, each in its own JSON type.
        const QJsonObject file = defaultsFile();
        QCOMPARE(file.value(modeKey), QJsonValue(blockLabel));
        QCOMPARE(file.value(deleteBranchKey), QJsonValue(true));
        QCOMPARE(file.value(reposKey), QJsonValue(QJsonArray{"ann/tool", "bob/site"}));
        QCOMPARE(file.value(notificationsKey), QJsonValue(true));

        store.setMergeGateMode(MergeGateMode::Warn);
        store.setDeleteBranchAfterMerge(false);
        store.setMonitoredRepos({});
        store.setNotificationsEnabled(false);
        const QJsonObject after = defaultsFile();
        QCOMPARE(after.value(modeKey), QJsonValue(warnLabel));
        QCOMPARE(after.value(deleteBranchKey), QJsonValue(false));
        QCOMPARE(after.value(reposKey), QJsonValue(QJsonArray{}));
        QCOMPARE(after.value(notificationsKey), QJsonValue(false));
    }

    void aStoreLoadsWhatAnotherWrote()
    {
        LoadedSettingsStore writer;
        writer.setInstanceURL(QStringLiteral("https://git.example.org"));
        writer.setToken(QStringLiteral("abc123"));
        writer.setMergeGateMode(MergeGateMode::Block);
        writer.setDeleteBranchAfterMerge(true);
        writer.setMonitoredRepos({QStringLiteral("ann/tool")});
        writer.setNotificationsEnabled(true);
        writer.setInboxNeedsRefresh(true);
        settled(writer);

        const LoadedSettingsStore reader;
        QCOMPARE(describe(reader), (QJsonObject{
                                       {"instanceURL", "https://git.example.org"},
                                       {"token", "abc123"},
                                       {"mergeGateMode", blockLabel},
                                       {"deleteBranchAfterMerge", true},
                                       {"monitoredRepos", QJsonArray{"ann/tool"}},
                                       {"inboxNeedsRefresh", false},
                                       {"notificationsEnabled", true},
                                       {"isConfigured", true},
                                   }));
    }

    void settersNotifyOnlyOnChange()
    {
        LoadedSettingsStore store;
        QSignalSpy url(&store, &SettingsStore::instanceURLChanged);
        QSignalSpy token(&store, &SettingsStore::tokenChanged);
        QSignalSpy mode(&store, &SettingsStore::mergeGateModeChanged);
        QSignalSpy deleteBranch(&store, &SettingsStore::deleteBranchAfterMergeChanged);
        QSignalSpy repos(&store, &SettingsStore::monitoredReposChanged);
        QSignalSpy refresh(&store, &SettingsStore::inboxNeedsRefreshChanged);
        QSignalSpy notifications(&store, &SettingsStore::notificationsEnabledChanged);

        // The values it already has: no signal.
        store.setInstanceURL(QString(SettingsStore::defaultInstanceURL));
        store.setToken(QString());
        store.setToken(QStringLiteral(""));
        store.setMergeGateMode(MergeGateMode::Warn);
        store.setDeleteBranchAfterMerge(false);
        store.setMonitoredRepos({});
        store.setInboxNeedsRefresh(false);
        store.setNotificationsEnabled(false);
        for (const QSignalSpy *spy :
             {&url, &token, &mode, &deleteBranch, &repos, &refresh, &notifications})
            QCOMPARE(spy->count(), 0);

        // New values: one signal each, and none when the same value comes again.
        for (int round = 0; round < 2; ++round) {
            store.setInstanceURL(QStringLiteral("https://git.example.org"));
            store.setToken(QStringLiteral("abc"));
            store.setMergeGateMode(MergeGateMode::Block);
            store.setDeleteBranchAfterMerge(true);
            store.setMonitoredRepos({QStringLiteral("ann/tool")});
            store.setInboxNeedsRefresh(true);
            store.setNotificationsEnabled(true);
        }
        for (const QSignalSpy *spy :
             {&url, &token, &mode, &deleteBranch, &repos, &refresh, &notifications})
            QCOMPARE(spy->count(), 1);
        QCOMPARE(store.monitoredRepos(), QStringList{QStringLiteral("ann/tool")});
    }

    void unchangedValuesAreNotRewritten()
    {
        LoadedSettingsStore store;
        store.setToken(QStringLiteral("abc"));
        settled(store);
        const auto before = SecretServiceProbe::items(service, tokenKey);
        QVERIFY(before && before->size() == 1);
        store.setToken(QStringLiteral("abc"));
        settled(store);
        // A write would have replaced the item with a new one.
        const auto after = SecretServiceProbe::items(service, tokenKey);
        QVERIFY(after && after->size() == 1);
        QCOMPARE(after->first().path(), before->first().path());
    }

    void observersHearOfAChangeBeforeItIsStored()
    {
        LoadedSettingsStore store;
        std::optional<QString> tokenInKeychain = QStringLiteral("not looked at");
        QVariant modeInDefaults = QStringLiteral("not looked at");
        QString tokenSeen;
        connect(&store, &SettingsStore::tokenChanged, this, [&] {
            tokenSeen = store.token();
            tokenInKeychain = keychainGet(tokenKey);
        });
        connect(&store, &SettingsStore::mergeGateModeChanged, this,
                [&] { modeInDefaults = defaultsStore().value(modeKey); });

        store.setToken(QStringLiteral("abc"));
        store.setMergeGateMode(MergeGateMode::Block);

        QCOMPARE(tokenSeen, QStringLiteral("abc"));
        QCOMPARE(tokenInKeychain, nothing);
        QVERIFY(!modeInDefaults.isValid());
        settled(store);
        QCOMPARE(keychainGet(tokenKey), text(QStringLiteral("abc")));
        QCOMPARE(defaultsStore().value(modeKey), QVariant(blockLabel));
    }

    // --- Derived values ---

    void isConfiguredNeedsAURLAndATokenWithoutTrimming()
    {
        LoadedSettingsStore store;
        QSignalSpy configured(&store, &SettingsStore::isConfiguredChanged);
        QVERIFY(!store.isConfigured());

        store.setToken(QStringLiteral("abc"));
        QVERIFY(store.isConfigured());
        QCOMPARE(configured.count(), 1);

        // Changes that keep the answer do not notify.
        store.setToken(QStringLiteral("def"));
        store.setInstanceURL(QStringLiteral("https://git.example.org"));
        QCOMPARE(configured.count(), 1);

        store.setInstanceURL(QString());
        QVERIFY(!store.isConfigured());
        QCOMPARE(configured.count(), 2);

        // Blanks are text.
        store.setInstanceURL(QStringLiteral(" "));
        QVERIFY(store.isConfigured());
        QCOMPARE(configured.count(), 3);
        store.setToken(QStringLiteral("  "));
        QVERIFY(store.isConfigured());
        QCOMPARE(configured.count(), 3);

        store.setToken(QString());
        QVERIFY(!store.isConfigured());
        QCOMPARE(configured.count(), 4);
    }

    void baseURLDropsOneTrailingSlash_data()
    {
        QTest::addColumn<QString>("instanceURL");
        QTest::addColumn<QString>("expected");
        QTest::newRow("host and slash") << "https://git.example.org/"
                                        << "https://git.example.org";
        QTest::newRow("host only") << "https://git.example.org"
                                   << "https://git.example.org";
        QTest::newRow("sub path and slash") << "https://example.org/gitea/"
                                            << "https://example.org/gitea";
        QTest::newRow("two slashes keep one") << "https://example.org/gitea//"
                                              << "https://example.org/gitea/";
        QTest::newRow("port") << "http://127.0.0.1:3000/"
                              << "http://127.0.0.1:3000";
        QTest::newRow("international host")
            << QStringLiteral("https://b\u00fccher.example/") << "https://xn--bcher-kva.example";
    }

    void baseURLDropsOneTrailingSlash()
    {
        QFETCH(QString, instanceURL);
        QFETCH(QString, expected);
        LoadedSettingsStore store;
        store.setInstanceURL(instanceURL);
        const std::optional<QUrl> base = store.baseURL();
        QVERIFY(base.has_value());
        QCOMPARE(base->toString(QUrl::FullyEncoded), expected);
    }

    void baseURLIsAbsentForTextThatIsNoAbsoluteURL_data()
    {
        QTest::addColumn<QString>("instanceURL");
        QTest::newRow("words with spaces") << "not a url with spaces";
        QTest::newRow("empty") << "";
        QTest::newRow("one slash") << "/";
        QTest::newRow("two slashes") << "//";
        QTest::newRow("host without scheme") << "git.example.org";
        QTest::newRow("scheme only") << "https://";
        QTest::newRow("no host") << "https:///gitea";
        QTest::newRow("blank in host") << "https://git example.org";
        QTest::newRow("blank in path") << "https://git.example.org/my gitea";
        QTest::newRow("port out of range") << "https://git.example.org:99999";
        QTest::newRow("unclosed IPv6 bracket") << "http://[::1";
        QTest::newRow("bad percent escape") << "https://git.example.org/%zz";
        QTest::newRow("missing scheme name") << "://git.example.org";
        QTest::newRow("mail address") << "mailto:ann@example.org";
        QTest::newRow("blank") << " ";
    }

    void baseURLIsAbsentForTextThatIsNoAbsoluteURL()
    {
        QFETCH(QString, instanceURL);
        LoadedSettingsStore store;
        store.setInstanceURL(instanceURL);
        QCOMPARE(store.baseURL(), noURL);
        QVERIFY(!store.client().has_value());
    }

    void clientCarriesBaseURLTokenSharedSessionAndLog()
    {
        LogStore log;
        SettingsStore store(&log);
        store.setInstanceURL(QStringLiteral("https://git.example.org/gitea/"));
        store.setToken(QStringLiteral("abc123"));
        const std::optional<GiteaClient> client = store.client();
        QVERIFY(client.has_value());
        QCOMPARE(client->instanceURL(), QUrl(QStringLiteral("https://git.example.org/gitea")));
        QCOMPARE(client->token(), QStringLiteral("abc123"));
        QCOMPARE(client->session(), GiteaClient::sharedSession());
        QCOMPARE(client->log(), static_cast<LogSink *>(&log));
    }

    void clientFollowsTheCurrentSettings()
    {
        LoadedSettingsStore store;
        store.setInstanceURL(QStringLiteral("https://one.example.org"));
        store.setToken(QStringLiteral("first"));
        const GiteaClient before = *store.client();
        store.setInstanceURL(QStringLiteral("https://two.example.org"));
        store.setToken(QStringLiteral("second"));
        const std::optional<GiteaClient> after = store.client();
        QVERIFY(after.has_value());
        QCOMPARE(before.instanceURL(), QUrl(QStringLiteral("https://one.example.org")));
        QCOMPARE(after->instanceURL(), QUrl(QStringLiteral("https://two.example.org")));
        QCOMPARE(after->token(), QStringLiteral("second"));
    }

    void clientExistsWithAnEmptyToken()
    {
        const LoadedSettingsStore store;
        QVERIFY(!store.isConfigured());
        const std::optional<GiteaClient> client = store.client();
        QVERIFY(client.has_value());
        QCOMPARE(client->instanceURL(), QUrl(QStringLiteral("https://gitea.com")));
        QCOMPARE(client->token(), QString());
    }

    void textThatIsNoURLGivesNoClientWhileConfigured()
    {
        LoadedSettingsStore store;
        store.setInstanceURL(QStringLiteral("not a url with spaces"));
        store.setToken(QStringLiteral("abc123"));
        QVERIFY(store.isConfigured());
        QCOMPARE(store.baseURL(), noURL);
        QVERIFY(!store.client().has_value());
    }

    void clientRequestsGoUnderTheInstancePathWithoutADoubledSlash_data()
    {
        QTest::addColumn<QString>("instancePath");
        QTest::addColumn<QByteArray>("expectedPath");
        QTest::newRow("root with slash") << "/" << QByteArray("/api/v1/user");
        QTest::newRow("root without slash") << "" << QByteArray("/api/v1/user");
        QTest::newRow("sub path with slash") << "/gitea/" << QByteArray("/gitea/api/v1/user");
        QTest::newRow("sub path with two slashes")
            << "/gitea//" << QByteArray("/gitea/api/v1/user");
    }

    void clientRequestsGoUnderTheInstancePathWithoutADoubledSlash()
    {
        QFETCH(QString, instancePath);
        QFETCH(QByteArray, expectedPath);
        FakeGiteaServer server;
        QVERIFY(server.listen());
        server.route("GET", QString::fromLatin1(expectedPath),
                     FakeResponse::json(fixtures::read(QStringLiteral("gitea/user.json"))));

        LoadedSettingsStore store;
        store.setInstanceURL(server.baseUrl().toString() + instancePath);
        store.setToken(QStringLiteral("abc123"));
        const std::optional<GiteaClient> client = store.client();
        QVERIFY(client.has_value());

        const auto outcome = runToEnd(client->currentUser());
        QVERIFY2(!outcome.error, "the request did not reach the expected path");
        QCOMPARE(outcome.value->login, QStringLiteral("ann"));
        QCOMPARE(server.requests().size(), 1);
        const RecordedRequest &request = server.requests().first();
        QCOMPARE(request.rawPath, expectedPath);
        QVERIFY(!request.rawPath.contains("//"));
        QCOMPARE(request.header("Authorization"), QByteArray("token abc123"));
    }

    // --- Logout ---

    void logoutResetsTheCredentialsAndKeepsTheOtherSettings()
    {
        LoadedSettingsStore store;
        store.setInstanceURL(QStringLiteral("https://git.example.org"));
        store.setToken(QStringLiteral("abc123"));
        store.setMergeGateMode(MergeGateMode::Block);
        store.setDeleteBranchAfterMerge(true);
        store.setMonitoredRepos({QStringLiteral("ann/tool")});
        store.setNotificationsEnabled(true);
        QSignalSpy url(&store, &SettingsStore::instanceURLChanged);
        QSignalSpy token(&store, &SettingsStore::tokenChanged);
        QSignalSpy configured(&store, &SettingsStore::isConfiguredChanged);

        store.logout();
        settled(store);

        QCOMPARE(store.instanceURL(), QString(SettingsStore::defaultInstanceURL));
        QCOMPARE(store.token(), QString());
        QVERIFY(!store.isConfigured());
        QCOMPARE(url.count(), 1);
        QCOMPARE(token.count(), 1);
        QCOMPARE(configured.count(), 1);

        // The keychain holds exactly the default URL and an empty token.
        QCOMPARE(keychainGet(urlKey), text(QString(SettingsStore::defaultInstanceURL)));
        QCOMPARE(keychainGet(tokenKey), text(QString()));
        QCOMPARE(itemCount(urlKey), 1);
        QCOMPARE(itemCount(tokenKey), 1);

        // The defaults values stay, in memory and stored.
        QCOMPARE(store.mergeGateMode(), MergeGateMode::Block);
        QVERIFY(store.deleteBranchAfterMerge());
        QCOMPARE(store.monitoredRepos(), QStringList{QStringLiteral("ann/tool")});
        QVERIFY(store.notificationsEnabled());
        const LoadedSettingsStore reloaded;
        QCOMPARE(describe(reloaded), (QJsonObject{
                                         {"instanceURL", "https://gitea.com"},
                                         {"token", ""},
                                         {"mergeGateMode", blockLabel},
                                         {"deleteBranchAfterMerge", true},
                                         {"monitoredRepos", QJsonArray{"ann/tool"}},
                                         {"inboxNeedsRefresh", false},
                                         {"notificationsEnabled", true},
                                         {"isConfigured", false},
                                     }));
    }

    void logoutWritesTheDefaultsEvenWhenTheyAreAlreadyInMemory()
    {
        // A fresh install: nothing stored, and the store already holds the default URL and "".
        LoadedSettingsStore store;
        QSignalSpy url(&store, &SettingsStore::instanceURLChanged);
        QSignalSpy token(&store, &SettingsStore::tokenChanged);
        store.logout();
        settled(store);
        QCOMPARE(url.count(), 0);
        QCOMPARE(token.count(), 0);
        QCOMPARE(keychainGet(urlKey), text(QString(SettingsStore::defaultInstanceURL)));
        QCOMPARE(keychainGet(tokenKey), text(QString()));
        QCOMPARE(itemCount(urlKey), 1);
        QCOMPARE(itemCount(tokenKey), 1);
    }

    // --- Across processes ---

    void settingsSurviveARestart()
    {
        const ChildResult writer = runChild(writeChild);
        QVERIFY2(writer.finished && writer.exitCode == 0, qPrintable(writer.stderrText));
        const ChildResult reader = runChild(printChild);
        QVERIFY2(reader.finished && reader.exitCode == 0, qPrintable(reader.stderrText));
        QCOMPARE(reader.output, (QJsonObject{
                                    {"instanceURL", "https://git.example.org/gitea/"},
                                    {"token", "tok-123"},
                                    {"mergeGateMode", blockLabel},
                                    {"deleteBranchAfterMerge", true},
                                    {"monitoredRepos", QJsonArray{"ann/tool", "bob/site"}},
                                    {"inboxNeedsRefresh", false},
                                    {"notificationsEnabled", true},
                                    {"isConfigured", true},
                                }));
        // And this process sees the same through its own store.
        defaultsStore().sync();
        QCOMPARE(describe(LoadedSettingsStore()), reader.output);
    }

    void withoutAKeychainWritesFailSilentlyAndValuesStayInMemory()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QProcessEnvironment environment = environmentWithoutABus(dir.path());

        const ChildResult child = runChild(offlineChild, environment);
        QVERIFY2(child.finished, "the store hung without a keychain");
        QVERIFY2(child.exitCode == 0, qPrintable(child.stderrText));
        const QJsonObject out = child.output;
        qInfo().noquote() << "without a keychain:" << out.value("ms").toInteger() << "ms";
        QCOMPARE(out.value("loaded").toObject().value("instanceURL"),
                 QJsonValue("https://gitea.com"));
        QCOMPARE(out.value("loaded").toObject().value("token"), QJsonValue(""));
        QCOMPARE(out.value("changed").toObject().value("instanceURL"),
                 QJsonValue("https://offline.example.org"));
        QCOMPARE(out.value("changed").toObject().value("token"), QJsonValue("offline-token"));
        QCOMPARE(out.value("changed").toObject().value("isConfigured"), QJsonValue(true));
        // Nothing was stored: a new store starts from the defaults again.
        QCOMPARE(out.value("reloaded").toObject().value("instanceURL"),
                 QJsonValue("https://gitea.com"));
        QCOMPARE(out.value("reloaded").toObject().value("token"), QJsonValue(""));
        QCOMPARE_LT(out.value("ms").toInteger(), 10000);
        // And nothing reached this session's keychain.
        QCOMPARE(SecretServiceProbe::items(service)->size(), 0);
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc >= 2 && qstrcmp(argv[1], writeChild) == 0)
        return writeSettings();
    if (argc >= 2 && qstrcmp(argv[1], printChild) == 0)
        return printSettings();
    if (argc >= 2 && qstrcmp(argv[1], offlineChild) == 0)
        return settingsWithoutKeychain();
    TestSettingsStore test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_settingsstore.moc"
