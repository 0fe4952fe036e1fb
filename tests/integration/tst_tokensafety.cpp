// The token goes to the keychain and into the "Authorization" header, and nowhere else. A whole
// session against the Gitea simulation (inbox load with its notification pass, a pull request's
// detail with its diff and job log, comments, a review, a re-run, a merge, a closed pull request,
// the log shared to the clipboard and saved to a file) runs with a server that also echoes the
// token back in an error message and in a date. Afterwards every file under the test's HOME and
// XDG directories is searched for the token, as bytes, as UTF-16 and inside base64 (the defaults
// store keeps the log as base64); so are every Qt message printed, every notification posted,
// every error shown and the clipboard. Only the keychain's own files may hold it.

#include "background.h"
#include "defaultsstore.h"
#include "detail.h"
#include "fakegiteaserver.h"
#include "giteasimulation.h"
#include "inbox.h"
#include "keychainsteps.h"
#include "logstore.h"
#include "outcome.h"
#include "requestcore_p.h"
#include "shareservice.h"
#include "teststores.h"

#include <QDirIterator>
#include <QFile>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QtTest>

using namespace kestrine;
using kestrine::testing::LoadedSettingsStore;
using kestrine::testing::runToEnd;

namespace {

// Ann's token in tests/data/gitea/seed.json.
const QString token = QStringLiteral("4f1c9e2d7a6b5c3d8e0f1a2b3c4d5e6f7a8b9c0d");

QStringList capturedMessages;
QtMessageHandler previousHandler = nullptr;

void captureMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    capturedMessages.append(message);
    if (previousHandler)
        previousHandler(type, context, message);
}

/// Answers everything the background check asks for; keeps what it posts.
class RecordingCenter : public NotificationCenter
{
public:
    QCoro::Task<Authorization> authorizationStatus() override
    {
        co_return Authorization::Authorized;
    }
    QCoro::Task<bool> requestAuthorization() override { co_return true; }
    void post(const QString &, const QString &title, const QString &body, const QString &) override
    {
        posts.append(title + u'\n' + body);
    }
    QStringList posts;
};

/// The forms in which the token could sit in a file: its UTF-8 bytes, UTF-16 in either byte
/// order, and the parts of base64 text that only the token's own bytes decide, for each of the
/// three alignments it can have inside a longer base64 text.
QList<QByteArray> tokenForms()
{
    const QByteArray bytes = token.toUtf8();
    QList<QByteArray> forms{
        bytes, QByteArray(reinterpret_cast<const char *>(token.utf16()), token.size() * 2)};
    QByteArray bigEndian;
    for (QChar c : token) {
        bigEndian += char(c.unicode() >> 8);
        bigEndian += char(c.unicode() & 0xff);
    }
    forms.append(bigEndian);
    for (int offset = 0; offset < 3; ++offset) {
        const QByteArray encoded = (QByteArray(offset, '\0') + bytes).toBase64();
        const qsizetype firstGroup = (offset + 2) / 3;
        const qsizetype endGroup = (offset + bytes.size()) / 3;
        forms.append(encoded.mid(firstGroup * 4, (endGroup - firstGroup) * 4));
    }
    return forms;
}

bool holdsToken(const QByteArray &data)
{
    for (const QByteArray &form : tokenForms()) {
        if (data.contains(form))
            return true;
    }
    return false;
}

} // namespace

class TestTokenSafety : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<kestrine::testing::TestStores> stores;
    FakeGiteaServer *server = nullptr;
    GiteaSimulation *simulation = nullptr;
    RecordingCenter center;
    NotificationService *service = nullptr;
    QStringList shownErrors;

    static QString seedPath() { return QStringLiteral(KESTRINE_TEST_DATA_DIR "/gitea/seed.json"); }

    /// The folders the app may write to; run-isolated makes them all fresh for this test.
    static QStringList writableRoots()
    {
        QStringList roots{QDir::homePath()};
        for (const char *name : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME",
                                 "XDG_STATE_HOME", "XDG_RUNTIME_DIR"}) {
            const QString path = qEnvironmentVariable(name);
            if (!path.isEmpty())
                roots.append(path);
        }
        return roots;
    }

    /// The keychain's own store, where the token belongs.
    static QString keyringFolder()
    {
        return qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/keyrings");
    }

    void keep(const std::optional<QString> &error)
    {
        if (error)
            shownErrors.append(*error);
    }

private slots:
    void initTestCase()
    {
        previousHandler = qInstallMessageHandler(captureMessage);
        QVERIFY2(qEnvironmentVariable("HOME").startsWith(QDir::tempPath()),
                 "run this test through tests/run-isolated");

        server = new FakeGiteaServer(this);
        QVERIFY(server->listen());
        simulation = new GiteaSimulation(seedPath());
        QVERIFY2(simulation->isValid(), qPrintable(simulation->loadError()));
        simulation->install(server);

        // A server that echoes the request's own header in an error message, as a proxy's error
        // page may, and one that puts it where a date belongs.
        server->route("GET", QStringLiteral("/api/v1/repos/cy/infra/pulls"),
                      [](const RecordedRequest &request, const RouteParams &) {
                          const QJsonObject body{
                              {"message", "upstream refused Authorization: " +
                                              QString::fromUtf8(request.header("Authorization"))}};
                          return FakeResponse::json(QJsonDocument(body).toJson(), 502);
                      });
        server->route("GET", QStringLiteral("/api/v1/repos/ann/website/pulls"),
                      [](const RecordedRequest &request, const RouteParams &) {
                          const QJsonObject pull{
                              {"id", 1},
                              {"number", 3},
                              {"title", "x"},
                              {"state", "open"},
                              {"updated_at", QString::fromUtf8(request.header("Authorization"))}};
                          return FakeResponse::json(QJsonDocument(QJsonArray{pull}).toJson());
                      });

        stores = std::make_unique<kestrine::testing::TestStores>();
        SettingsStore *settings = &stores->settings;
        settings->setInstanceURL(server->baseUrl().toString());
        settings->setToken(token);
        settings->setMonitoredRepos({});
        settings->setNotificationsEnabled(true);
        service = new NotificationService(stores->settings, center, this);
        NotificationPass::install(service);
    }

    void cleanupTestCase()
    {
        NotificationPass::install(nullptr);
        qInstallMessageHandler(previousHandler);
        delete simulation;
        simulation = nullptr;
    }

    void aWholeSessionLeavesTheTokenOnlyInTheKeychain()
    {
        // The keychain holds the token: a store loaded afresh reads it back.
        QTRY_COMPARE_WITH_TIMEOUT(LoadedSettingsStore().token(), token, 10000);

        // The inbox, and the notification pass it starts.
        InboxViewModel inbox(stores->settings);
        runToEnd(inbox.load());
        QVERIFY(!inbox.displayedRows().isEmpty());
        keep(inbox.errorMessage());
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(NotificationState::defaultFilePath()), 10000);
        QVERIFY(runToEnd(service->poll()).value.has_value());

        // One pull request's detail, its first file's diff and a job's log, then the actions.
        const Repository tool = [&] {
            for (const PRRow &row : inbox.displayedRows()) {
                if (row.repo.fullName == u"ann/tool")
                    return row.repo;
            }
            return Repository{};
        }();
        QCOMPARE(tool.fullName, QStringLiteral("ann/tool"));
        PRDetailViewModel detail(stores->settings, tool, 7);
        runToEnd(detail.load());
        QVERIFY(detail.hasPr());
        QVERIFY(!detail.files().isEmpty());
        QVERIFY(!detail.runs().isEmpty());
        keep(detail.errorMessage());

        DiffModel diff(stores->settings, tool, 7, detail.files().first());
        runToEnd(diff.load());
        keep(diff.errorMessage());
        const qint64 runID = detail.runs().first().id;
        const QList<ActionJob> jobs = detail.jobs().value(runID);
        QVERIFY(!jobs.isEmpty());
        JobLogModel log(stores->settings, tool, runID, jobs.first().id, jobs.first().name);
        runToEnd(log.load());
        keep(log.errorMessage());

        runToEnd(detail.postComment(QStringLiteral("Looks fine to me.")));
        runToEnd(detail.submitReview(QStringLiteral("approved"), QStringLiteral("Ship it")));
        runToEnd(detail.rerun(runID));
        runToEnd(detail.merge(QStringLiteral("squash")));
        keep(detail.errorMessage());
        PRDetailViewModel other(stores->settings, tool, 8);
        runToEnd(other.load());
        runToEnd(other.setState(QStringLiteral("closed")));
        keep(other.errorMessage());

        // The server did get the token, on every request, in its header and only there.
        QVERIFY(server->requests().size() > 20);
        for (const RecordedRequest &request : server->requests()) {
            QCOMPARE(request.header("Authorization"), "token " + token.toUtf8());
            QVERIFY2(!holdsToken(request.target + request.body), request.target.constData());
        }

        // The echoes reached the log, without the token.
        const QString logText = stores->log.text();
        QVERIFY2(logText.contains(QStringLiteral(
                     "GET repos/cy/infra/pulls \u2192 502 upstream refused Authorization: "
                     "token [token]")),
                 qPrintable(logText));
        QVERIFY2(logText.contains(QStringLiteral("Cannot decode date string token [token]")),
                 qPrintable(logText));
        QVERIFY(logText.contains(QStringLiteral("POST repos/ann/tool/pulls/7/reviews")));

        // Shared: copied to the clipboard and saved where the share sheet saves.
        ui::ShareService share;
        share.copyText(logText);
        QCOMPARE(share.clipboardText(), logText);
        const QUrl saved = QUrl::fromLocalFile(share.defaultFolder().toLocalFile() +
                                               QStringLiteral("/kestrine-log.txt"));
        QCOMPARE(share.saveText(logText, saved), QString());

        // Nothing the user sees or shares holds the token.
        QVERIFY(!holdsToken(share.clipboardText().toUtf8()));
        for (const QString &text : shownErrors + center.posts + capturedMessages)
            QVERIFY2(!holdsToken(text.toUtf8()), qPrintable(text));
        QVERIFY(!center.posts.isEmpty());

        // Nor any file under the test's home and XDG folders, but the keychain's own, once the
        // log's last lines are written as at exit.
        stores->log.flush();
        defaultsStore().sync();
        QStringList searched;
        QStringList holding;
        for (const QString &root : writableRoots()) {
            QDirIterator files(root, QDir::Files | QDir::Hidden | QDir::System,
                               QDirIterator::Subdirectories);
            while (files.hasNext()) {
                const QString path = files.next();
                if (path.startsWith(keyringFolder() + u'/') || searched.contains(path))
                    continue;
                searched.append(path);
                QFile file(path);
                if (!file.open(QIODevice::ReadOnly))
                    continue;
                if (holdsToken(file.readAll()))
                    holding.append(path);
            }
        }
        QVERIFY2(holding.isEmpty(), qPrintable(holding.join(u'\n')));

        // The search did cover what the session wrote: the settings and the log, both caches,
        // and the saved log.
        const QStringList expected = {defaultsStore().fileName(), InboxCache().filePath(),
                                      NotificationState::defaultFilePath(), saved.toLocalFile()};
        for (const QString &path : expected)
            QVERIFY2(searched.contains(path), qPrintable(path + u'\n' + searched.join(u'\n')));
        const QVariant storedLog = defaultsStore().value(LogStore::persistKey);
        QVERIFY(storedLog.toByteArray().contains("upstream refused"));
        QVERIFY(!holdsToken(storedLog.toByteArray()));
    }

    // The forms searched for are found where they are: the search above can fail.
    void theSearchFindsTheTokenInEveryForm()
    {
        QVERIFY(holdsToken("x" + token.toUtf8() + "y"));
        for (int prefix = 0; prefix < 3; ++prefix)
            QVERIFY(holdsToken((QByteArray(prefix, 'p') + "Bearer " + token.toUtf8()).toBase64()));
        const QString wide = QStringLiteral("<") + token + u'>';
        QVERIFY(
            holdsToken(QByteArray(reinterpret_cast<const char *>(wide.utf16()), wide.size() * 2)));
        QVERIFY(!holdsToken(token.left(39).toUtf8()));
    }

    // The client's own rule, alone: no text it builds from an answer keeps the token.
    void textFromTheServerLosesTheToken()
    {
        QCOMPARE(
            http::withoutToken(QStringLiteral("a ") + token + QStringLiteral(" b ") + token, token),
            QStringLiteral("a [token] b [token]"));
        QCOMPARE(http::withoutToken(QStringLiteral("token "), QString()), QStringLiteral("token "));
        // A one-letter token, as tests use, must not garble the server's words.
        QCOMPARE(http::withoutToken(QStringLiteral("not allowed"), QStringLiteral("t")),
                 QStringLiteral("not allowed"));
        QCOMPARE(http::withoutToken(QStringLiteral("x 12345678 y"), QStringLiteral("12345678")),
                 QStringLiteral("x [token] y"));
    }
};

int main(int argc, char **argv)
{
    // The clipboard needs a GUI application; run-isolated picks the offscreen platform.
    QGuiApplication app(argc, argv);
    TestTokenSafety test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_tokensafety.moc"
