#include "app.h"
#include "terminationsignal.h"

#include <QCommandLineParser>
#include <QGuiApplication>

int main(int argc, char *argv[])
{
    kestrine::prepareApplication();
    QGuiApplication application(argc, argv);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Review and merge the pull requests of a Gitea instance."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption demo(
        QStringLiteral("demo"),
        QStringLiteral("Run against the built-in demo instance, without reading or changing your "
                       "saved settings."));
    parser.addOption(demo);
    parser.process(application);

    kestrine::KestrineApp app({.demo = parser.isSet(demo)});
    if (!app.start()) {
        qCritical("kestrine: %s", qUtf8Printable(app.errorString()));
        return 1;
    }
    // Stopped by the session or systemd: leave as through the window's close, so that the log's
    // last lines are written.
    kestrine::onTerminationSignal([] { QCoreApplication::quit(); });
    return application.exec();
}
