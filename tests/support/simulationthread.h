#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QThread>
#include <chrono>
#include <ctime>
#include <functional>

namespace kestrine {
class FakeGiteaServer;
class GiteaSimulation;
} // namespace kestrine

namespace kestrine::testing {

/// The Gitea simulation of `seed` answering on a thread of its own, so that a benchmark counts
/// neither its work as the client's nor the client's as its. `addRoutes` runs on that thread
/// after the simulation is installed, for routes of the benchmark's own (later routes win).
class SimulationThread
{
public:
    explicit SimulationThread(const QByteArray &seed,
                              std::chrono::milliseconds answerDelay = std::chrono::milliseconds(0),
                              const std::function<void(FakeGiteaServer &)> &addRoutes = {});
    ~SimulationThread();
    SimulationThread(const SimulationThread &) = delete;
    SimulationThread &operator=(const SimulationThread &) = delete;

    /// "http://127.0.0.1:<port>"; empty when the server could not listen.
    QString url() const { return m_url; }
    /// The processor time the server's thread has used so far.
    double cpuSeconds() const;
    /// How many connections the server has accepted so far.
    int connections();

private:
    QThread m_thread;
    QObject m_context;
    FakeGiteaServer *m_server = nullptr;
    GiteaSimulation *m_simulation = nullptr;
    QString m_url;
    clockid_t m_clock = CLOCK_THREAD_CPUTIME_ID;
};

} // namespace kestrine::testing
