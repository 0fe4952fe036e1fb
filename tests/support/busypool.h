#pragma once

#include <QSemaphore>
#include <QThreadPool>

namespace kestrine::testing {

/// Keeps the one thread left in a thread pool busy until release(), so that work handed to the
/// pool meanwhile waits in its queue: a test can then see that the work did not run on the
/// calling thread, and act while it waits. The pool gets its thread count back afterwards.
class BusyPool
{
public:
    explicit BusyPool(QThreadPool *pool)
        : m_pool(pool)
        , m_previousMaxThreads(pool->maxThreadCount())
    {
        m_pool->setMaxThreadCount(1);
        m_pool->start([this] {
            m_busy.release();
            m_released.acquire();
        });
        m_busy.acquire();
    }

    ~BusyPool()
    {
        release();
        m_pool->waitForDone();
        m_pool->setMaxThreadCount(m_previousMaxThreads);
    }

    BusyPool(const BusyPool &) = delete;
    BusyPool &operator=(const BusyPool &) = delete;

    /// Lets the pool's thread go on to the work that waits.
    void release()
    {
        if (!m_wasReleased) {
            m_wasReleased = true;
            m_released.release();
        }
    }

private:
    QThreadPool *m_pool;
    int m_previousMaxThreads;
    QSemaphore m_busy;
    QSemaphore m_released;
    bool m_wasReleased = false;
};

} // namespace kestrine::testing
