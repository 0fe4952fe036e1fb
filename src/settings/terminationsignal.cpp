#include "terminationsignal.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace kestrine {
namespace {

// The handler may only write to a descriptor; the event loop reads the other end.
int signalPipe[2] = {-1, -1};

void writeToPipe(int)
{
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[0], &byte, 1);
}

} // namespace

void onTerminationSignal(std::function<void()> react)
{
    if (signalPipe[0] >= 0 || ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalPipe) != 0)
        return;
    auto *notifier =
        new QSocketNotifier(signalPipe[1], QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier,
                     [notifier, react = std::move(react)] {
                         char byte = 0;
                         [[maybe_unused]] const ssize_t read = ::read(signalPipe[1], &byte, 1);
                         notifier->setEnabled(false);
                         react();
                     });

    struct sigaction action = {};
    action.sa_handler = writeToPipe;
    sigemptyset(&action.sa_mask);
    // SA_RESETHAND: the second SIGTERM finds the default action again and ends the process.
    action.sa_flags = SA_RESTART | SA_RESETHAND;
    ::sigaction(SIGTERM, &action, nullptr);
}

} // namespace kestrine
