// How long the inbox takes to load from a large instance, against what the network allows, over
// plain HTTP/1.1 and over HTTPS with HTTP/1.1 or HTTP/2.
//
// The real InboxViewModel loads, in this process, from the Gitea simulation serving R repositories
// with P open pull requests each, every answer held back D ms as over a slow network. The server
// runs on a thread of its own, so that its work is not counted as the client's. HTTPS goes through
// a local nginx (TlsProxy) with a certificate authority made for the run, which only this process
// trusts; nginx offers HTTP/2 by ALPN or not, and talks kept-alive HTTP/1.1 to the server.
//
// The bound is the goals' yardstick: the repository pages one after another, then one round of
// pull request lists. Since the client asks for the pages it knows of together, it can beat that;
// the floor is what no client can beat: the first page, the others together, then one round of
// pull request lists. Each case prints the median load time of three loads, the bound, their
// ratio, the same against the floor, the client's processor time (this process minus the server's
// thread; nginx is a process of its own), the rows shown, the protocol the requests really went
// over and the client connections opened in the three loads. For HTTPS both come from nginx's
// access log, for plain HTTP the connections are the server's count. Arguments, if any, pick the
// cases whose line contains each of them.

#include "fixtures.h"
#include "giteaclient.h"
#include "inboxviewmodel.h"
#include "simulationthread.h"
#include "storagemode.h"
#include "teststores.h"
#include "tlsproxy.h"

#include <QCoreApplication>
#include <QCoroTask>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <optional>

using namespace kestrine;
using kestrine::testing::SimulationThread;
using kestrine::testing::TestStores;
using kestrine::testing::TlsProxy;
using kestrine::testing::TrustedInProcess;

namespace {

const QString token = QStringLiteral("b3nch");

enum class Transport {
    Plain,
    /// HTTPS through nginx, which offers no HTTP/2.
    TlsHttp1,
    /// HTTPS through nginx, which offers HTTP/2 and HTTP/1.1.
    TlsHttp2,
};

struct Case
{
    int repositories;
    int pullsEach;
    int delayMs;
    Transport transport;
};

const char *transportName(Transport transport)
{
    switch (transport) {
    case Transport::Plain:
        return "http";
    case Transport::TlsHttp1:
        return "https, nginx h1";
    case Transport::TlsHttp2:
        return "https, nginx h2";
    }
    return "";
}

/// "200 repos x 20 PRs, 50 ms/request, https, nginx h2": what a case's line starts with.
QString caseLabel(const Case &c)
{
    return QString::asprintf("%4d repos x %2d PRs, %2d ms/request, %-15s", c.repositories,
                             c.pullsEach, c.delayMs, transportName(c.transport));
}

double cpuSeconds(clockid_t clock)
{
    timespec time = {};
    clock_gettime(clock, &time);
    return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}

qint64 median(QList<qint64> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

/// The loads of one case, its figures printed as one line; false when it could not run.
bool run(const Case &c)
{
    SimulationThread server(fixtures::largeInstanceSeed(c.repositories, c.pullsEach, token),
                            std::chrono::milliseconds(c.delayMs));
    std::optional<TlsProxy> proxy;
    std::optional<TrustedInProcess> trusted;
    QString instance = server.url();
    if (c.transport != Transport::Plain) {
        proxy.emplace(QUrl(server.url()), c.transport == Transport::TlsHttp2
                                              ? TlsProxy::Http2::On
                                              : TlsProxy::Http2::Off);
        if (!proxy->start()) {
            std::fprintf(stderr, "bench_inbox: no TLS proxy: %s\n", qPrintable(proxy->failure()));
            return false;
        }
        trusted.emplace(proxy->caCertificate());
        instance = proxy->url().toString();
    }
    TestStores stores;
    stores.settings.overrideCredentials(instance, token);

    // The repository pages one after another (a full last page asks for one more), then one
    // round of pull request lists.
    const int repositoryPages = std::min(10, c.repositories / 50 + 1);
    const qint64 boundMs = qint64(repositoryPages + 1) * c.delayMs;
    // The first page, the pages it announces all at once, one round of pull request lists.
    const qint64 floorMs = qint64(repositoryPages > 1 ? 3 : 2) * c.delayMs;

    constexpr int loads = 3;
    QList<qint64> times;
    double clientCpu = 0;
    int rows = 0;
    for (int i = 0; i < loads; ++i) {
        InboxViewModel model(stores.settings);
        const double processBefore = cpuSeconds(CLOCK_PROCESS_CPUTIME_ID);
        const double serverBefore = server.cpuSeconds();
        QElapsedTimer timer;
        timer.start();
        QCoro::waitFor(model.load());
        times.append(timer.elapsed());
        clientCpu += (cpuSeconds(CLOCK_PROCESS_CPUTIME_ID) - processBefore) -
                     (server.cpuSeconds() - serverBefore);
        rows = int(model.displayedRows().size());
    }
    const qint64 loadMs = median(times);

    // What the requests really went over: plain HTTP here is always HTTP/1.1; through nginx, what
    // its log says the client negotiated.
    QString protocol = QStringLiteral("HTTP/1.1");
    int connections = 0;
    if (proxy) {
        QStringList protocols = proxy->protocols().values();
        protocols.sort();
        protocol = protocols.join(u'+');
        connections = proxy->clientConnections();
    } else {
        connections = server.connections();
    }
    const auto ratio = [loadMs](qint64 ms) {
        return ms > 0 ? double(loadMs) / double(ms) : 0.0;
    };
    std::printf("%s %-8s: load %5lld ms, bound %4lld ms, %4.1f x bound, floor %4lld ms, %4.1f x "
                "floor; client CPU %4.0f ms a load; %5d rows; %3d connections in %d loads\n",
                qPrintable(caseLabel(c)), qPrintable(protocol), static_cast<long long>(loadMs),
                static_cast<long long>(boundMs), ratio(boundMs), static_cast<long long>(floorMs),
                ratio(floorMs), clientCpu * 1000 / loads, rows, connections, loads);
    std::fflush(stdout);
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    // Never the user's settings, log, caches or keychain.
    if (!Storage::useEphemeral()) {
        std::fprintf(stderr, "bench_inbox: no private storage folder\n");
        return 1;
    }
    QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("norrum"));
    QCoreApplication::setApplicationName(QStringLiteral("kestrine-bench"));
    std::printf("bench_inbox: the inbox of a large instance, against the network's bound\n");
    const Case cases[] = {
        {200, 20, 50, Transport::Plain},    {200, 20, 50, Transport::TlsHttp1},
        {200, 20, 50, Transport::TlsHttp2}, {500, 20, 50, Transport::Plain},
        {500, 20, 50, Transport::TlsHttp2}, {200, 20, 0, Transport::Plain},
        {200, 20, 0, Transport::TlsHttp2},
    };
    // Any arguments pick the cases whose line contains each of them ("500 repos" "h2"), for
    // profiling one case at a time.
    const QStringList wanted = application.arguments().mid(1);
    bool allRan = true;
    for (const Case &c : cases) {
        const QString label = caseLabel(c);
        if (std::all_of(wanted.begin(), wanted.end(),
                        [&](const QString &part) { return label.contains(part); }))
            allRan = run(c) && allRan;
    }
    // Qt 6.4 closes the TLS connections a session still holds from its network thread as that
    // thread ends, and looks up the TLS backend on the way, which fails with a warning once the
    // application object is gone: the session goes first.
    delete GiteaClient::sharedSession();
    return allRan ? 0 : 1;
}
