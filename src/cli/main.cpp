// kestrine-cli: the Kestrine app's view models and services on a terminal.

#include "cli.h"
#include "logstore.h"
#include "terminationsignal.h"

#include <QCoreApplication>
#include <csignal>
#include <cstdio>
#include <cstdlib>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    // The same names as the app, so that both read and write the same settings, log and caches.
    QCoreApplication::setOrganizationName(QStringLiteral("norrum"));
    QCoreApplication::setApplicationName(QStringLiteral("kestrine"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KESTRINE_VERSION));
    // Stopped by systemd (the background check's service) or kill: the command is cut short, but
    // the lines it logged are written first. The exit status is the one of a process SIGTERM
    // ended; nothing unwinds, as the command's coroutines would resume into a gone session.
    kestrine::onTerminationSignal([] {
        kestrine::LogStore::shared()->flush();
        std::fflush(stdout);
        std::fflush(stderr);
        std::_Exit(128 + SIGTERM);
    });
    return kestrine::cli::run(QCoreApplication::arguments());
}
