// KeychainHelper against the real store: gnome-keyring's Secret Service on the private session bus
// that `run-isolated --keyring` starts for this test. What the store holds is checked twice:
// through KeychainHelper, and straight over D-Bus with SecretServiceProbe.

#include "childrun.h"
#include "keychainhelper.h"
#include "keychainsteps.h"
#include "optionalprinting.h"
#include "secretserviceprobe.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>
#include <memory>
#include <qt6keychain/keychain.h>

using namespace kestrine;
using kestrine::testing::ChildResult;
using kestrine::testing::environmentWithoutABus;
using kestrine::testing::keychainGet;
using kestrine::testing::keychainRemove;
using kestrine::testing::keychainSet;
using kestrine::testing::runChild;
using kestrine::testing::SecretServiceProbe;
using namespace std::chrono_literals;

namespace {

const std::optional<QString> nothing = std::nullopt;

std::optional<QString> text(const QString &value)
{
    return value;
}

std::optional<QByteArray> bytes(const QByteArray &value)
{
    return value;
}

const QString service = QString(KeychainHelper::service);
const QString tokenKey = QStringLiteral("token");
const QString urlKey = QStringLiteral("instanceURL");
const QString otherKey = QStringLiteral("test.other");

// Child modes: the test binary runs itself with one of these as its first argument.
constexpr char noServiceChild[] = "--without-secret-service";
constexpr char lateServiceChild[] = "--with-late-secret-service";

qsizetype itemCount(const QString &key)
{
    const auto items = SecretServiceProbe::items(service, key);
    return items ? items->size() : -1;
}

/// The secret of the one item under `key`; nothing unless there is exactly one.
std::optional<QByteArray> onlySecret(const QString &key)
{
    const auto items = SecretServiceProbe::items(service, key);
    if (!items || items->size() != 1)
        return std::nullopt;
    return SecretServiceProbe::secret(items->first());
}

std::optional<QDBusObjectPath> onlyItem(const QString &key)
{
    const auto items = SecretServiceProbe::items(service, key);
    if (!items || items->size() != 1)
        return std::nullopt;
    return items->first();
}

/// Writes `bytes` as QtKeychain's binary data (stored base64, with the attribute type=base64):
/// an item of another kind than KeychainHelper writes, under the same (service, account).
bool writeBinaryItem(const QString &key, const QByteArray &bytes)
{
    QKeychain::WritePasswordJob job(service);
    job.setAutoDelete(false);
    job.setKey(key);
    job.setBinaryData(bytes);
    QEventLoop loop;
    QObject::connect(&job, &QKeychain::Job::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(5s, &loop, &QEventLoop::quit);
    job.start();
    loop.exec();
    return job.error() == QKeychain::NoError;
}

QJsonValue jsonOf(const std::optional<QString> &value)
{
    return value ? QJsonValue(*value) : QJsonValue(QJsonValue::Null);
}

qint64 millisecondsOf(QElapsedTimer &timer)
{
    const qint64 elapsed = timer.elapsed();
    timer.restart();
    return elapsed;
}

/// Child: every operation once, on a session bus address where nothing listens. Prints what it
/// saw and how long each step took as one JSON object.
int runWithoutSecretService(const QString &key)
{
    QElapsedTimer total;
    total.start();
    QElapsedTimer step;
    step.start();
    QJsonObject result;
    result.insert("firstGet", jsonOf(keychainGet(key)));
    result.insert("firstGetMs", millisecondsOf(step));
    keychainSet(QStringLiteral("written without a store"), key);
    result.insert("setMs", millisecondsOf(step));
    result.insert("getAfterSet", jsonOf(keychainGet(key)));
    result.insert("getAfterSetMs", millisecondsOf(step));
    keychainSet(QString(), key);
    result.insert("setEmptyMs", millisecondsOf(step));
    keychainRemove(key);
    result.insert("removeMs", millisecondsOf(step));
    result.insert("totalMs", total.elapsed());
    QTextStream(stdout) << QJsonDocument(result).toJson(QJsonDocument::Compact) << Qt::endl;
    return 0;
}

/// A Secret Service that takes `delay` to answer its first message (with an error) and answers
/// every later one at once (with an error too): a store that hangs for longer than a keychain
/// job may take, then comes back.
class LateSecretService : public QDBusVirtualObject
{
public:
    explicit LateSecretService(std::chrono::milliseconds delay)
        : m_delay(delay)
    {}

    QString introspect(const QString &) const override { return {}; }

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        ++m_received;
        const QDBusMessage error = message.createErrorReply(
            QDBusError::Failed, QStringLiteral("this store answers late and never helps"));
        if (m_received > 1) {
            connection.send(error);
            return true;
        }
        QTimer::singleShot(m_delay, this, [this, connection, error] {
            QDBusConnection(connection).send(error);
            m_lateAnswerSent = true;
        });
        return true;
    }

    int received() const { return m_received; }
    bool lateAnswerSent() const { return m_lateAnswerSent; }

private:
    std::chrono::milliseconds m_delay;
    int m_received = 0;
    bool m_lateAnswerSent = false;
};

/// Child, on a session bus of its own: owns org.freedesktop.secrets with LateSecretService, reads
/// a key (which must give up after the job timeout), waits until the late answer has reached the
/// abandoned job, then reads again (which must not wait behind it). Prints one JSON object.
int runWithLateSecretService()
{
    constexpr auto lateBy = KeychainHelper::jobTimeout + 4s;
    LateSecretService store(lateBy);
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerVirtualObject(QStringLiteral("/org/freedesktop/secrets"), &store,
                                   QDBusConnection::SubPath) ||
        !bus.registerService(QStringLiteral("org.freedesktop.secrets"))) {
        QTextStream(stderr) << "cannot own org.freedesktop.secrets: " << bus.lastError().message()
                            << Qt::endl;
        return 2;
    }

    QJsonObject result;
    QElapsedTimer step;
    step.start();
    result.insert("firstGet", jsonOf(keychainGet(tokenKey)));
    result.insert("firstGetMs", millisecondsOf(step));
    result.insert("messagesBeforeTimeout", store.received());

    // Let the late answer arrive and the abandoned job see it, plus a margin for libsecret's
    // follow-up calls, which are answered at once.
    QEventLoop wait;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &wait, [&] {
        if (store.lateAnswerSent())
            QTimer::singleShot(1s, &wait, &QEventLoop::quit);
    });
    poll.start(50ms);
    QTimer::singleShot(lateBy + 5s, &wait, &QEventLoop::quit);
    wait.exec();
    poll.stop();
    result.insert("lateAnswerSent", store.lateAnswerSent());

    step.restart();
    result.insert("secondGet", jsonOf(keychainGet(tokenKey)));
    result.insert("secondGetMs", millisecondsOf(step));
    result.insert("messages", store.received());
    QTextStream(stdout) << QJsonDocument(result).toJson(QJsonDocument::Compact) << Qt::endl;
    return 0;
}

} // namespace

class TestKeychainHelper : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // The real store has to be there, or every check below would pass against nothing.
        const auto items = SecretServiceProbe::items(service);
        QVERIFY2(items.has_value(),
                 qPrintable(QStringLiteral("no Secret Service on the session bus (run this test "
                                           "through tests/run-isolated --keyring): ") +
                            SecretServiceProbe::lastError()));
    }

    void init()
    {
        // Start every case from an empty store, removing items straight over D-Bus so that no
        // case depends on the code under test for its clean slate.
        const auto items = SecretServiceProbe::items(service);
        QVERIFY(items.has_value());
        for (const QDBusObjectPath &item : *items)
            QVERIFY2(SecretServiceProbe::deleteItem(item),
                     qPrintable(SecretServiceProbe::lastError()));
        QCOMPARE(SecretServiceProbe::items(service)->size(), 0);
    }

    void serviceIsTheAppIdentifier() { QCOMPARE(service, QStringLiteral("com.norrum.kestrine")); }

    void getOfANeverWrittenKeyGivesNothing() { QCOMPARE(keychainGet(tokenKey), nothing); }

    void setThenGetGivesTheValue()
    {
        keychainSet(QStringLiteral("3f2a9c0d1e"), tokenKey);
        QCOMPARE(keychainGet(tokenKey), text(QStringLiteral("3f2a9c0d1e")));
    }

    void itemIsStoredUnderTheAppServiceWithTheKeyAsAccount()
    {
        keychainSet(QStringLiteral("https://git.example.org"), urlKey);
        QCOMPARE(itemCount(urlKey), 1);
        QCOMPARE(itemCount(tokenKey), 0);
        QCOMPARE(SecretServiceProbe::items(QStringLiteral("com.example.other"), urlKey)->size(), 0);
        QCOMPARE(onlySecret(urlKey), bytes(QByteArray("https://git.example.org")));
    }

    void valueIsStoredAsItsUtf8Bytes()
    {
        const QString value = QStringLiteral("gr\u00fc\u00dfe \u2713 \U0001D11E end");
        keychainSet(value, tokenKey);
        QCOMPARE(onlySecret(tokenKey), bytes(value.toUtf8()));
        QCOMPARE(keychainGet(tokenKey), text(value));
    }

    void leadingByteOrderMarkIsKeptAsPartOfTheValue()
    {
        const QString value = QStringLiteral("\uFEFFtoken");
        keychainSet(value, tokenKey);
        QCOMPARE(onlySecret(tokenKey), bytes(QByteArray("\xEF\xBB\xBFtoken")));
        QCOMPARE(keychainGet(tokenKey), text(value));
    }

    void emptyValueIsAnEmptyItemThatReadsBackAsEmptyText()
    {
        keychainSet(QString(), tokenKey);
        // An item exists, and its secret has zero bytes...
        QCOMPARE(itemCount(tokenKey), 1);
        QCOMPARE(onlySecret(tokenKey), bytes(QByteArray()));
        // ...and it reads back as "", which is not the same as no item.
        const std::optional<QString> value = keychainGet(tokenKey);
        QVERIFY(value.has_value());
        QVERIFY(value->isEmpty());
    }

    void emptyValueReplacesAnEarlierValue()
    {
        keychainSet(QStringLiteral("old"), tokenKey);
        keychainSet(QStringLiteral(""), tokenKey);
        QCOMPARE(itemCount(tokenKey), 1);
        QCOMPARE(keychainGet(tokenKey), text(QString()));
        QVERIFY(keychainGet(tokenKey).has_value());
    }

    void twoSetsLeaveExactlyOneItemHoldingTheSecondValue()
    {
        keychainSet(QStringLiteral("first"), tokenKey);
        keychainSet(QStringLiteral("second"), tokenKey);
        QCOMPARE(itemCount(tokenKey), 1);
        QCOMPARE(SecretServiceProbe::items(service)->size(), 1);
        QCOMPARE(onlySecret(tokenKey), bytes(QByteArray("second")));
        QCOMPARE(keychainGet(tokenKey), text(QStringLiteral("second")));
    }

    void setAddsANewItemInsteadOfUpdatingTheOldOne()
    {
        keychainSet(QStringLiteral("first"), tokenKey);
        const std::optional<QDBusObjectPath> first = onlyItem(tokenKey);
        QVERIFY(first.has_value());
        keychainSet(QStringLiteral("second"), tokenKey);
        const std::optional<QDBusObjectPath> second = onlyItem(tokenKey);
        QVERIFY(second.has_value());
        // An update in place would keep the item's object; delete-then-add makes a new one.
        QVERIFY2(first->path() != second->path(), qPrintable(first->path()));
    }

    void setDeletesAnItemOfAnotherKindUnderTheSameKey()
    {
        // An item the store would not replace by itself (its attributes differ from what
        // KeychainHelper writes): only the delete step removes it.
        QVERIFY(writeBinaryItem(tokenKey, QByteArray("left over")));
        QCOMPARE(itemCount(tokenKey), 1);
        keychainSet(QStringLiteral("fresh"), tokenKey);
        QCOMPARE(itemCount(tokenKey), 1);
        QCOMPARE(onlySecret(tokenKey), bytes(QByteArray("fresh")));
        QCOMPARE(keychainGet(tokenKey), text(QStringLiteral("fresh")));
    }

    void itemWhoseBytesAreNotUtf8ReadsAsNothing()
    {
        QVERIFY(writeBinaryItem(tokenKey, QByteArray("\xff\xfe\xc3", 3)));
        QCOMPARE(itemCount(tokenKey), 1);
        QCOMPARE(keychainGet(tokenKey), nothing);
    }

    void removeDeletesTheItem()
    {
        keychainSet(QStringLiteral("value"), tokenKey);
        QCOMPARE(itemCount(tokenKey), 1);
        keychainRemove(tokenKey);
        QCOMPARE(itemCount(tokenKey), 0);
        QCOMPARE(keychainGet(tokenKey), nothing);
    }

    void removeOfANeverWrittenKeyDoesNothing()
    {
        keychainSet(QStringLiteral("kept"), otherKey);
        keychainRemove(tokenKey);
        QCOMPARE(itemCount(tokenKey), 0);
        QCOMPARE(keychainGet(tokenKey), nothing);
        // The store is as before, and still answers.
        QCOMPARE(SecretServiceProbe::items(service)->size(), 1);
        QCOMPARE(keychainGet(otherKey), text(QStringLiteral("kept")));
        keychainSet(QStringLiteral("after"), tokenKey);
        QCOMPARE(keychainGet(tokenKey), text(QStringLiteral("after")));
    }

    void keysAreIndependent()
    {
        keychainSet(QStringLiteral("https://git.example.org"), urlKey);
        keychainSet(QStringLiteral("abc"), tokenKey);
        QCOMPARE(keychainGet(urlKey), text(QStringLiteral("https://git.example.org")));
        QCOMPARE(keychainGet(tokenKey), text(QStringLiteral("abc")));
        keychainRemove(tokenKey);
        QCOMPARE(keychainGet(urlKey), text(QStringLiteral("https://git.example.org")));
        QCOMPARE(keychainGet(tokenKey), nothing);
    }

    void withoutASecretServiceReadsGiveNothingAndWritesFailSilentlyAndFast()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QProcessEnvironment environment = environmentWithoutABus(dir.path());

        const ChildResult child =
            runChild(QCoreApplication::applicationFilePath(),
                     {QString::fromLatin1(noServiceChild), tokenKey}, environment);
        QVERIFY2(child.finished, "the keychain calls hung without a Secret Service");
        QVERIFY2(child.exitCode == 0, qPrintable(child.stderrText));
        const QJsonObject out = child.output;
        qInfo().noquote() << "without a Secret Service:"
                          << QJsonDocument(out).toJson(QJsonDocument::Compact)
                          << "- whole child process" << child.wallMs << "ms";
        QVERIFY2(out.contains("totalMs"), qPrintable(child.stderrText));
        QVERIFY(out.value("firstGet").isNull());
        QVERIFY(out.value("getAfterSet").isNull());
        QCOMPARE_LT(out.value("totalMs").toInteger(), 10000);
        QCOMPARE_LT(child.wallMs, 10000);
        // The child's write went nowhere, least of all into this session's store.
        QCOMPARE(keychainGet(tokenKey), nothing);
    }

    void storeThatAnswersLateCannotHangACall()
    {
        const QString runSession =
            QStandardPaths::findExecutable(QStringLiteral("dbus-run-session"));
        QVERIFY2(!runSession.isEmpty(), "dbus-run-session is missing (package dbus-bin)");
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));

        const ChildResult child =
            runChild(runSession,
                     {QStringLiteral("--"), QCoreApplication::applicationFilePath(),
                      QString::fromLatin1(lateServiceChild)},
                     environment);
        QVERIFY2(child.finished, "the child hung");
        QVERIFY2(child.exitCode == 0, qPrintable(child.stderrText));
        const QJsonObject out = child.output;
        qInfo().noquote() << "late store:" << QJsonDocument(out).toJson(QJsonDocument::Compact);
        QVERIFY2(out.contains("secondGetMs"), qPrintable(child.stderrText));

        // The store was asked, did not answer in time, and the read gave up at the timeout.
        QCOMPARE_GE(out.value("messagesBeforeTimeout").toInteger(), 1);
        QVERIFY(out.value("firstGet").isNull());
        const qint64 timeoutMs = KeychainHelper::jobTimeout.count();
        // (The timeout is a coarse timer, which may fire up to 5 % early.)
        QCOMPARE_GE(out.value("firstGetMs").toInteger(), timeoutMs * 9 / 10);
        QCOMPARE_LT(out.value("firstGetMs").toInteger(), timeoutMs + 2000);

        // The late answer came after that, and a later read neither waits for the abandoned job
        // nor crashes on it: the child got this far and exited normally.
        QVERIFY(out.value("lateAnswerSent").toBool());
        QVERIFY(out.value("secondGet").isNull());
        QCOMPARE_LT(out.value("secondGetMs").toInteger(), 3000);
        QCOMPARE_GT(out.value("messages").toInteger(),
                    out.value("messagesBeforeTimeout").toInteger());
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc >= 3 && qstrcmp(argv[1], noServiceChild) == 0)
        return runWithoutSecretService(QString::fromLocal8Bit(argv[2]));
    if (argc >= 2 && qstrcmp(argv[1], lateServiceChild) == 0)
        return runWithLateSecretService();
    TestKeychainHelper test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_keychainhelper.moc"
