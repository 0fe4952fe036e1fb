// kestrine-cli: the Kestrine app's view models and services on a terminal.

#include "cli.h"
#include "translations.h"

#include <QCoreApplication>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    kestrine::i18n::installTranslations();
    // The same names as the app, so that both read and write the same settings, log and caches.
    QCoreApplication::setOrganizationName(QStringLiteral("norrum"));
    QCoreApplication::setApplicationName(QStringLiteral("kestrine"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KESTRINE_VERSION));
    return kestrine::cli::run(QCoreApplication::arguments());
}
