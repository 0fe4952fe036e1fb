// The program in German (run with LANG=de_DE.UTF-8): the texts of the view models, the summaries
// and the screens' helpers come from the German catalogue, and what goes to the diagnostic log
// stays English, also when the same failure is on screen in German. (Times in German are
// tst_relativetime_de's.)

#include "apierror.h"
#include "detailfixture.h"
#include "inbox.h"
#include "inboxfixture.h"
#include "listcut.h"
#include "mergegate.h"
#include "outcome.h"
#include "prdetailviewmodel.h"
#include "translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>
#include <QtTest>

using namespace kestrine;
using namespace kestrine::testing;

class TestGermanTexts : public DetailTestCase
{
    Q_OBJECT

private slots:
    void initTestCase() { QCOMPARE(i18n::installTranslations(), QStringLiteral("de")); }

    void cleanup() { stopServer(); }

    void failureTextsAreGermanOnScreenAndEnglishInTheLog()
    {
        const APIError unauthorized = APIError::unauthorized();
        QCOMPARE(unauthorized.localizedDescription(),
                 QStringLiteral("Anmeldung fehlgeschlagen. Prüfe dein Token."));
        QCOMPARE(unauthorized.description(),
                 QStringLiteral("Authentication failed. Check your token."));
        QCOMPARE(APIError::httpStatus(502, QStringLiteral("bad gateway")).localizedDescription(),
                 QStringLiteral("Serverfehler (502): bad gateway"));
        const auto timeout = std::make_exception_ptr(
            TransportError(QNetworkReply::TimeoutError, QStringLiteral("The request timed out.")));
        QCOMPARE(localizedErrorDescription(timeout),
                 QStringLiteral("Zeitüberschreitung bei der Anfrage."));
        QCOMPARE(errorDescription(timeout), QStringLiteral("The request timed out."));
    }

    void qtsOwnCatalogueLeavesTheNetworkStackEnglish()
    {
        // Qt's words on screen are German (its command-line help, its dialogs' buttons)...
        QCOMPARE(QCoreApplication::translate("QCommandLineParser",
                                             "Displays help on commandline options."),
                 QStringLiteral("Zeigt Hilfe zu den Kommandozeilenoptionen an."));
        // ...but not its network messages, which become failure texts the log keeps, although
        // Qt's catalogue has German for them.
        QTranslator qtCatalogue;
        QVERIFY(qtCatalogue.load(QLocale(), QStringLiteral("qt"), QStringLiteral("_"),
                                 QLibraryInfo::path(QLibraryInfo::TranslationsPath)));
        QCOMPARE(qtCatalogue.translate("QAbstractSocket", "Connection refused"),
                 QStringLiteral("Verbindung verweigert"));
        QCOMPARE(QCoreApplication::translate("QAbstractSocket", "Connection refused"),
                 QStringLiteral("Connection refused"));
        QCOMPARE(QCoreApplication::translate("QHttp", "Host %1 not found"),
                 QStringLiteral("Host %1 not found"));
    }

    void inboxFailureIsGermanInTheAlertAndEnglishInTheLog()
    {
        QVERIFY(startServer());
        prepareInbox(*stores, *server);
        server->route("GET", QStringLiteral("/api/v1/user/repos"),
                      FakeResponse::json(R"({"message":"token is required"})", 401));
        InboxViewModel model(stores->settings);
        runToEnd(model.load());
        QCOMPARE(model.errorMessage(),
                 QStringLiteral("Anmeldung fehlgeschlagen. Prüfe dein Token."));
        QVERIFY(stores->lines(LogLevel::Error)
                    .contains(QStringLiteral(
                        "Inbox load failed: Authentication failed. Check your token.")));
    }

    void inboxWhoseRepositoriesAllFailSaysSoWithGermanPlurals_data()
    {
        QTest::addColumn<int>("failing");
        QTest::addColumn<QString>("alert");
        QTest::newRow("one") << 1
                             << "Es konnten keine PRs geladen werden (1 Repository "
                                "fehlgeschlagen). Sieh im Protokoll nach.";
        QTest::newRow("three") << 3
                               << "Es konnten keine PRs geladen werden (3 Repositories "
                                  "fehlgeschlagen). Sieh im Protokoll nach.";
    }

    void inboxWhoseRepositoriesAllFailSaysSoWithGermanPlurals()
    {
        QFETCH(int, failing);
        QFETCH(QString, alert);
        QVERIFY(startServer());
        prepareInbox(*stores, *server);
        QJsonArray repos;
        for (int i = 1; i <= failing; ++i) {
            const QString name = QStringLiteral("r%1").arg(i);
            repos.append(repoJson(QStringLiteral("ann"), name, i));
            server->route("GET", QStringLiteral("/api/v1/repos/ann/%1/pulls").arg(name),
                          FakeResponse::json(R"({"message":"boom"})", 500));
        }
        server->route("GET", QStringLiteral("/api/v1/user/repos"),
                      FakeResponse::json(compact(repos)));
        InboxViewModel model(stores->settings);
        runToEnd(model.load());
        QCOMPARE(model.errorMessage(), alert);
        const QStringList warnings = stores->lines(LogLevel::Warn);
        QCOMPARE(warnings.size(), 1);
        QVERIFY2(
            warnings.first().startsWith(
                QStringLiteral("Inbox: %1 repo(s) failed: Server error (500): boom").arg(failing)),
            qPrintable(warnings.first()));
    }

    void pullRequestFailureIsGermanOnScreenAndEnglishInTheLog()
    {
        QVERIFY(startServer());
        server->route("GET", pullPath, FakeResponse::json(R"({"message":"gone"})", 404));
        PRDetailViewModel model(stores->settings, annApp(), 7);
        runToEnd(model.load());
        QCOMPARE(model.errorMessage(), QStringLiteral("Nicht gefunden."));
        QVERIFY(stores->lines(LogLevel::Error)
                    .contains(QStringLiteral("PR 7: load failed: Not found.")));
    }

    void summariesAreGerman()
    {
        QCOMPARE(ReviewState::badgeText(ReviewState::Approved), QStringLiteral("Genehmigt"));
        QCOMPARE(ReviewState::badgeText(ReviewState::ChangesRequested),
                 QStringLiteral("Änderungen"));
        QCOMPARE(ReviewState::badgeText(ReviewState::NeedsReview), QStringLiteral("Review nötig"));
        PullReview review;
        review.state = QStringLiteral("REQUEST_CHANGES");
        const ReviewVerdict verdict = ReviewVerdict::of(review);
        QCOMPARE(verdict.line(QStringLiteral("alice")),
                 QStringLiteral("🔴 alice hat Änderungen angefordert"));
        // The word of the data stays English.
        QCOMPARE(verdict.verb, QStringLiteral("requested changes"));
        QCOMPARE(authorName(std::nullopt), QStringLiteral("unbekannt"));
        QCOMPARE(runDisplayName(ActionRun{}), QStringLiteral("Workflow"));
    }

    void mergeTextsAreGerman()
    {
        QCOMPARE(mergeGate(CIStatus::Failure, MergeGateMode::Block).noteText,
                 QStringLiteral("Mergen ist gesperrt, solange CI rot ist (Einstellungen)."));
        QStringList labels;
        for (const MergeMethod &method : mergeMethods())
            labels.append(method.value + u'=' + method.label);
        QCOMPARE(labels, (QStringList{QStringLiteral("merge=Merge-Commit erstellen"),
                                      QStringLiteral("rebase=Rebasen und mergen"),
                                      QStringLiteral("squash=Squashen und mergen")}));
        QCOMPARE(listCutNotice({3000, 3120}),
                 QStringLiteral("Die ersten 3000 von 3120 werden angezeigt."));
    }

    void mergeGateModeIsStoredInEnglishAndShownInGerman()
    {
        QCOMPARE(mergeGateModeLabel(MergeGateMode::Block),
                 QStringLiteral("Block merge when CI is red"));
        QCOMPARE(SettingsStore::labelOf(MergeGateMode::Block),
                 QStringLiteral("Merge bei rotem CI sperren"));
        QCOMPARE(mergeGateModeFromLabel(mergeGateModeLabel(MergeGateMode::Block)),
                 MergeGateMode::Block);
    }
};

QTEST_GUILESS_MAIN(TestGermanTexts)
#include "tst_germantexts.moc"
