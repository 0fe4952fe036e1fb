// Credentials replaced for one process (a script's KESTRINE_URL and KESTRINE_TOKEN, the demo
// instance): the store and its clients use them, the keychain never sees them. Runs against the
// real Secret Service on the private session bus of `run-isolated --keyring`.

#include "fakegiteaserver.h"
#include "keychainhelper.h"
#include "keychainsteps.h"
#include "outcome.h"
#include "settingsstore.h"

#include <QSignalSpy>
#include <QtTest>

using namespace kestrine;
using kestrine::testing::keychainGet;
using kestrine::testing::keychainSet;
using kestrine::testing::LoadedSettingsStore;
using kestrine::testing::runToEnd;
using kestrine::testing::settled;

namespace {

const QString urlKey = QStringLiteral("instanceURL");
const QString tokenKey = QStringLiteral("token");
const QString storedURL = QStringLiteral("https://stored.example");
const QString storedToken = QStringLiteral("stored-token");

} // namespace

class TestCredentialOverride : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        keychainSet(storedURL, urlKey);
        keychainSet(storedToken, tokenKey);
        QCOMPARE(keychainGet(tokenKey), std::optional<QString>(storedToken));
    }

    void overriddenValuesAreUsedButNeverStored()
    {
        LoadedSettingsStore store;
        QSignalSpy urlChanged(&store, &SettingsStore::instanceURLChanged);
        QSignalSpy tokenChanged(&store, &SettingsStore::tokenChanged);

        store.overrideCredentials(QStringLiteral("http://override.example/"),
                                  QStringLiteral("env-token"));

        QCOMPARE(store.instanceURL(), QStringLiteral("http://override.example/"));
        QCOMPARE(store.token(), QStringLiteral("env-token"));
        QCOMPARE(store.baseURL(),
                 std::optional<QUrl>(QUrl(QStringLiteral("http://override.example"))));
        QCOMPARE(urlChanged.size(), 1);
        QCOMPARE(tokenChanged.size(), 1);
        QCOMPARE(keychainGet(urlKey), std::optional<QString>(storedURL));
        QCOMPARE(keychainGet(tokenKey), std::optional<QString>(storedToken));
        // Another store of the same process still reads what is stored.
        const LoadedSettingsStore fresh;
        QCOMPARE(fresh.instanceURL(), storedURL);
        QCOMPARE(fresh.token(), storedToken);
    }

    void clientsSendTheOverridingToken()
    {
        FakeGiteaServer server;
        QVERIFY(server.listen());
        server.route("GET", QStringLiteral("/api/v1/user"),
                     FakeResponse::json(R"({"id":1,"login":"ann"})"));
        LoadedSettingsStore store;

        store.overrideCredentials(server.baseUrl().toString(), QStringLiteral("env-token"));
        const std::optional<GiteaClient> client = store.client();
        QVERIFY(client);
        const auto outcome = runToEnd(client->currentUser());

        QVERIFY(outcome.value);
        QCOMPARE(server.requests().size(), 1);
        QCOMPARE(server.requests().first().header("Authorization"), QByteArray("token env-token"));
    }

    void anAbsentValueKeepsTheStoredOne()
    {
        LoadedSettingsStore store;
        QSignalSpy urlChanged(&store, &SettingsStore::instanceURLChanged);

        store.overrideCredentials(std::nullopt, QStringLiteral("env-token"));

        QCOMPARE(store.instanceURL(), storedURL);
        QCOMPARE(store.token(), QStringLiteral("env-token"));
        QCOMPARE(urlChanged.size(), 0);
    }

    void anEmptyOverrideLeavesTheStoreUnconfigured()
    {
        LoadedSettingsStore store;
        QVERIFY(store.isConfigured());
        QSignalSpy configuredChanged(&store, &SettingsStore::isConfiguredChanged);

        store.overrideCredentials(std::nullopt, QString());

        QVERIFY(!store.isConfigured());
        QCOMPARE(configuredChanged.size(), 1);
        QCOMPARE(keychainGet(tokenKey), std::optional<QString>(storedToken));
    }

    void settingTheOverridingValueStoresIt()
    {
        LoadedSettingsStore store;
        store.overrideCredentials(QStringLiteral("https://same.example"),
                                  QStringLiteral("same-token"));
        QSignalSpy tokenChanged(&store, &SettingsStore::tokenChanged);

        // The same texts as the override: unchanged in memory, but now they are to be kept.
        store.setInstanceURL(QStringLiteral("https://same.example"));
        store.setToken(QStringLiteral("same-token"));

        QCOMPARE(tokenChanged.size(), 0);
        settled(store);
        QCOMPARE(keychainGet(urlKey),
                 std::optional<QString>(QStringLiteral("https://same.example")));
        QCOMPARE(keychainGet(tokenKey), std::optional<QString>(QStringLiteral("same-token")));
    }

    void aSetterEndsTheOverrideOfItsValueOnly()
    {
        LoadedSettingsStore store;
        store.overrideCredentials(QStringLiteral("https://env.example"),
                                  QStringLiteral("env-token"));

        store.setToken(QStringLiteral("typed-token"));
        settled(store);

        QCOMPARE(keychainGet(tokenKey), std::optional<QString>(QStringLiteral("typed-token")));
        QCOMPARE(keychainGet(urlKey), std::optional<QString>(storedURL));
        QCOMPARE(store.instanceURL(), QStringLiteral("https://env.example"));
    }

    void logoutAfterAnOverrideClearsTheKeychain()
    {
        LoadedSettingsStore store;
        store.overrideCredentials(QStringLiteral("https://env.example"),
                                  QStringLiteral("env-token"));

        store.logout();
        settled(store);

        QCOMPARE(store.instanceURL(), QString(SettingsStore::defaultInstanceURL));
        QCOMPARE(store.token(), QString());
        QCOMPARE(keychainGet(urlKey),
                 std::optional<QString>(QString(SettingsStore::defaultInstanceURL)));
        QCOMPARE(keychainGet(tokenKey), std::optional<QString>(QString()));
    }
};

QTEST_GUILESS_MAIN(TestCredentialOverride)
#include "tst_credentialoverride.moc"
