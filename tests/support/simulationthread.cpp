#include "simulationthread.h"

#include "fakegiteaserver.h"
#include "giteasimulation.h"

#include <pthread.h>

namespace kestrine::testing {

SimulationThread::SimulationThread(const QByteArray &seed, std::chrono::milliseconds answerDelay,
                                   const std::function<void(FakeGiteaServer &)> &addRoutes)
{
    m_context.moveToThread(&m_thread);
    m_thread.start();
    QMetaObject::invokeMethod(
        &m_context,
        [&] {
            m_server = new FakeGiteaServer();
            m_simulation = new GiteaSimulation(seed);
            m_simulation->install(m_server);
            if (addRoutes)
                addRoutes(*m_server);
            m_server->setAnswerDelay(answerDelay);
            if (m_server->listen())
                m_url = m_server->baseUrl().toString();
            pthread_getcpuclockid(pthread_self(), &m_clock);
        },
        Qt::BlockingQueuedConnection);
}

SimulationThread::~SimulationThread()
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

double SimulationThread::cpuSeconds() const
{
    timespec time = {};
    clock_gettime(m_clock, &time);
    return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}

int SimulationThread::connections()
{
    int count = 0;
    QMetaObject::invokeMethod(
        &m_context, [this, &count] { count = m_server->connectionCount(); },
        Qt::BlockingQueuedConnection);
    return count;
}

} // namespace kestrine::testing
