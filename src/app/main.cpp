#include "app.h"
#include "settingsstore.h"
#include "terminationsignal.h"
#include "translations.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QTimer>
#include <cstdio>
#include <optional>

namespace {

/// A wrong command line: what is wrong on standard error, and status 2, as kestrine-cli has it.
/// The message names options, never a value typed (it might be a token in the wrong place).
int usageError(const QString &message)
{
    std::fprintf(stderr, "kestrine: %s\n%s\n", qUtf8Printable(message),
                 qUtf8Printable(QCoreApplication::translate(
                     "KestrineApp", "Try 'kestrine --help' for more information.")));
    return 2;
}

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
    // From here on a new start opens a window of its own rather than asking this one, which is
    // going away.
    app->releaseBusName();
    if (kestrine::SettingsStore *settings = app->settings())
        co_await settings->settle();
    QCoreApplication::quit();
}

/// The app's command line: its options, on one parser.
struct CommandLine
{
    QCommandLineParser parser;
    const QCommandLineOption demo{
        QStringLiteral("demo"),
        QCoreApplication::translate("KestrineApp",
                                    "Run against the built-in demo instance, without reading or "
                                    "changing your saved settings.")};
    const QCommandLineOption open{
        QStringLiteral("open"),
        QCoreApplication::translate("KestrineApp",
                                    "Show this pull request, such as ann/tool#7, on top of the "
                                    "inbox; when Kestrine already runs, its window shows it."),
        kestrine::PullRequestReference::syntax()};

    CommandLine()
    {
        parser.setApplicationDescription(QCoreApplication::translate(
            "KestrineApp",
            "Review and merge the pull requests of a Gitea instance.\n\n"
            "Kestrine has one window: started while it runs, it brings that window to the front\n"
            "instead of opening another, and exits with status 0. The demo is an app of its own\n"
            "in that respect; it and your own can run side by side."));
        parser.addHelpOption();
        parser.addVersionOption();
        parser.addOption(demo);
        parser.addOption(open);
    }

    /// The pull request of --open; nothing when it is not given or not one.
    std::optional<kestrine::PullRequestReference> reference() const
    {
        return parser.isSet(open) ? kestrine::PullRequestReference::parse(parser.value(open))
                                  : std::nullopt;
    }

    bool hasBadReference() const { return parser.isSet(open) && !reference(); }
};

/// Whether this start ends at its command line: the help, the version, or what is wrong with it.
/// It then opens no window, so it needs no display to say so (a terminal over SSH, help2man).
bool endsAtTheCommandLine(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    CommandLine line;
    if (!line.parser.parse(arguments))
        return true;
    return line.parser.isSet(QStringLiteral("help")) ||
           line.parser.isSet(QStringLiteral("help-all")) ||
           line.parser.isSet(QStringLiteral("version")) || line.hasBadReference();
}

} // namespace

int main(int argc, char *argv[])
{
    kestrine::prepareApplication();
    if (endsAtTheCommandLine(argc, argv))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // For the window already running, should this start only bring it to the front.
    const QVariantMap launchPlatformData = kestrine::ApplicationService::launchPlatformData();
    QGuiApplication application(argc, argv);
    kestrine::i18n::installTranslations();

    CommandLine line;
    QCommandLineParser &parser = line.parser;
    if (!parser.parse(application.arguments()))
        return usageError(parser.errorText());
    // The command line is good: this shows the help or the version, and exits, when asked to.
    parser.process(application);

    if (line.hasBadReference()) {
        return usageError(
            QCoreApplication::translate("KestrineApp", "--open takes %1, such as ann/tool#7")
                .arg(kestrine::PullRequestReference::syntax()));
    }

    kestrine::KestrineApp app({.demo = parser.isSet(line.demo), .open = line.reference()});
    if (app.claimBusName() == kestrine::ApplicationService::Claim::AlreadyRunning) {
        if (const std::optional<QString> failure = app.handOver(launchPlatformData)) {
            qCritical("kestrine: %s",
                      qUtf8Printable(QCoreApplication::translate(
                                         "KestrineApp", "Kestrine is already running but could "
                                                        "not be brought to the front: %1")
                                         .arg(*failure)));
            return 1;
        }
        return 0;
    }
    QTimer::singleShot(0, &application, [&app] { launch(&app); });
    // Closing the window leaves through leave(), as does a stop by the session or systemd, so that
    // the credentials and the log's last lines are written.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QObject::connect(&application, &QGuiApplication::lastWindowClosed, &application,
                     [&app] { leave(&app); });
    kestrine::onTerminationSignal([&app] { leave(&app); });
    return application.exec();
}
