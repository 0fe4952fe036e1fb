#include "app.h"
#include "settingsstore.h"
#include "terminationsignal.h"
#include "translations.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QTimer>

namespace {

/// Starts the app once the event loop runs; a start that fails ends the loop with status 1.
QCoro::Task<> launch(kestrine::KestrineApp *app)
{
    if (!co_await app->start()) {
        qCritical("kestrine: %s", qUtf8Printable(app->errorString()));
        QCoreApplication::exit(1);
    }
}

/// Ends the event loop once the settings' keychain writes are done: a credential saved just before
/// the window closed must not be left half written (deleted, not yet added again).
QCoro::Task<> leave(kestrine::KestrineApp *app)
{
    if (kestrine::SettingsStore *settings = app->settings())
        co_await settings->settle();
    QCoreApplication::quit();
}

} // namespace

int main(int argc, char *argv[])
{
    kestrine::prepareApplication();
    QGuiApplication application(argc, argv);
    kestrine::i18n::installTranslations();

    QCommandLineParser parser;
    parser.setApplicationDescription(QCoreApplication::translate(
        "KestrineApp", "Review and merge the pull requests of a Gitea instance."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption demo(
        QStringLiteral("demo"),
        QCoreApplication::translate("KestrineApp",
                                    "Run against the built-in demo instance, without reading or "
                                    "changing your saved settings."));
    parser.addOption(demo);
    parser.process(application);

    kestrine::KestrineApp app({.demo = parser.isSet(demo)});
    QTimer::singleShot(0, &application, [&app] { launch(&app); });
    // Closing the window leaves through leave(), as does a stop by the session or systemd, so that
    // the credentials and the log's last lines are written.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QObject::connect(&application, &QGuiApplication::lastWindowClosed, &application,
                     [&app] { leave(&app); });
    kestrine::onTerminationSignal([&app] { leave(&app); });
    return application.exec();
}
