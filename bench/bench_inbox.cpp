// How long the inbox takes to load from a large instance, against what the network allows.
//
// The real InboxViewModel loads, in this process, from the Gitea simulation serving R repositories
// with P open pull requests each, every answer held back D ms as over a slow network. The server
// runs on a thread of its own, so that its work is not counted as the client's. The bound is what
// no client can beat: the repository pages one after another, then one round of pull request
// lists. Each case prints the median load time of three loads, the bound, their ratio, the
// client's processor time (this process minus the server's thread) and the connections opened.
//
// Plain HTTP/1.1 only for now; the HTTPS and HTTP/2 cases through a local TLS proxy are still to
// come.

#include "fakegiteaserver.h"
#include "giteasimulation.h"
#include "inboxviewmodel.h"
#include "settingsstore.h"
#include "storagemode.h"

#include <QCoreApplication>
#include <QCoroTask>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <pthread.h>

using namespace kestrine;

namespace {

const QString token = QStringLiteral("b3nch");

struct Case
{
    int repositories;
    int pullsEach;
    int delayMs;
};

QByteArray seed(int repositories, int pullsEach)
{
    QJsonArray repos;
    for (int r = 1; r <= repositories; ++r) {
        QJsonArray pulls;
        for (int n = 1; n <= pullsEach; ++n) {
            const QString time = QDateTime(QDate(2024, 1, 1), QTime(0, 0), Qt::UTC)
                                     .addSecs(r * 3600 + n * 60)
                                     .toString(Qt::ISODate);
            pulls.append(QJsonObject{
                {"user", "ann"},
                {"title", QStringLiteral("Change %1 of repository %2").arg(n).arg(r)},
                {"body", QStringLiteral("Why this change is needed, in a paragraph or two.")},
                {"head", QStringLiteral("change-%1").arg(n)},
                {"created_at", time},
                {"updated_at", time}});
        }
        repos.append(QJsonObject{{"owner", "ann"},
                                 {"name", QStringLiteral("repo-%1").arg(r, 3, 10, QChar(u'0'))},
                                 {"pulls", pulls}});
    }
    return QJsonDocument(QJsonObject{{"users", QJsonArray{QJsonObject{{"login", "ann"}}}},
                                     {"tokens", QJsonObject{{token, "ann"}}},
                                     {"repositories", repos}})
        .toJson(QJsonDocument::Compact);
}

double cpuSeconds(clockid_t clock)
{
    timespec time = {};
    clock_gettime(clock, &time);
    return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}

/// The simulation on a thread of its own.
class ServerThread
{
public:
    explicit ServerThread(const Case &c)
    {
        m_context.moveToThread(&m_thread);
        m_thread.start();
        QMetaObject::invokeMethod(
            &m_context,
            [this, c] {
                m_server = new FakeGiteaServer();
                m_simulation = new GiteaSimulation(seed(c.repositories, c.pullsEach));
                m_simulation->install(m_server);
                m_server->setAnswerDelay(std::chrono::milliseconds(c.delayMs));
                m_server->listen();
                m_url = m_server->baseUrl().toString();
                pthread_getcpuclockid(pthread_self(), &m_clock);
            },
            Qt::BlockingQueuedConnection);
    }

    ~ServerThread()
    {
        QMetaObject::invokeMethod(
            &m_context,
            [this] {
                delete m_simulation;
                delete m_server;
            },
            Qt::BlockingQueuedConnection);
        m_thread.quit();
        m_thread.wait();
    }

    QString url() const { return m_url; }
    double cpuSeconds() const { return ::cpuSeconds(m_clock); }
    int connections()
    {
        int count = 0;
        QMetaObject::invokeMethod(
            &m_context, [this, &count] { count = m_server->connectionCount(); },
            Qt::BlockingQueuedConnection);
        return count;
    }

private:
    QThread m_thread;
    QObject m_context;
    FakeGiteaServer *m_server = nullptr;
    GiteaSimulation *m_simulation = nullptr;
    QString m_url;
    clockid_t m_clock = CLOCK_THREAD_CPUTIME_ID;
};

qint64 median(QList<qint64> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

void run(const Case &c)
{
    ServerThread server(c);
    SettingsStore::shared()->overrideCredentials(server.url(), token);

    // The repository pages one after another (a full last page asks for one more), then one
    // round of pull request lists.
    const int repositoryPages = std::min(10, c.repositories / 50 + 1);
    const qint64 boundMs = qint64(repositoryPages + 1) * c.delayMs;

    constexpr int loads = 3;
    QList<qint64> times;
    double clientCpu = 0;
    int rows = 0;
    for (int i = 0; i < loads; ++i) {
        InboxViewModel model;
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
    std::printf("%4d repos x %2d PRs, %2d ms/request, HTTP/1.1: load %5lld ms, bound %4lld ms, "
                "%5.1f x bound; client CPU %4.0f ms a load; %d rows; %d connections in %d loads\n",
                c.repositories, c.pullsEach, c.delayMs, static_cast<long long>(loadMs),
                static_cast<long long>(boundMs),
                boundMs > 0 ? double(loadMs) / double(boundMs) : 0.0, clientCpu * 1000 / loads,
                rows, server.connections(), loads);
    std::fflush(stdout);
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
    for (const Case &c : {Case{200, 20, 50}, Case{500, 20, 50}, Case{200, 20, 0}})
        run(c);
    return 0;
}
