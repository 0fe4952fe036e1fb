#include "backgroundscheduler.h"

namespace kestrine {

BackgroundTask::BackgroundTask(QString identifier, QObject *parent)
    : QObject(parent)
    , m_identifier(std::move(identifier))
{}

void BackgroundTask::setExpirationHandler(std::function<void()> handler)
{
    m_expirationHandler = std::move(handler);
}

void BackgroundTask::setTaskCompleted(bool success)
{
    if (m_completed)
        return;
    m_completed = true;
    emit completed(success);
}

void BackgroundTask::expire()
{
    if (!m_completed && m_expirationHandler)
        m_expirationHandler();
}

struct InProcessScheduler::Job
{
    LaunchHandler handler;
    QTimer launchTimer;
    QDateTime nextLaunch;
};

InProcessScheduler::InProcessScheduler(QObject *parent)
    : InProcessScheduler(Timing(), parent)
{}

InProcessScheduler::InProcessScheduler(Timing timing, QObject *parent)
    : QObject(parent)
    , m_timing(timing)
{}

InProcessScheduler::~InProcessScheduler() = default;

bool InProcessScheduler::registerTask(const QString &identifier, LaunchHandler handler)
{
    if (m_jobs.contains(identifier))
        return false;
    auto job = std::make_shared<Job>();
    job->handler = std::move(handler);
    job->launchTimer.setSingleShot(true);
    connect(&job->launchTimer, &QTimer::timeout, this, [this, identifier] { launch(identifier); });
    m_jobs.insert(identifier, job);
    submit(identifier, QDateTime::currentDateTimeUtc().addMSecs(m_timing.firstLaunchDelay.count()));
    return true;
}

bool InProcessScheduler::submit(const QString &identifier, const QDateTime &earliestBegin)
{
    const auto job = m_jobs.value(identifier);
    if (!job)
        return false;
    job->nextLaunch = earliestBegin;
    const qint64 wait = std::max<qint64>(0, QDateTime::currentDateTimeUtc().msecsTo(earliestBegin));
    job->launchTimer.start(std::chrono::milliseconds(wait));
    return true;
}

QDateTime InProcessScheduler::nextLaunch(const QString &identifier) const
{
    const auto job = m_jobs.value(identifier);
    return job && job->launchTimer.isActive() ? job->nextLaunch : QDateTime();
}

void InProcessScheduler::launch(const QString &identifier)
{
    const auto job = m_jobs.value(identifier);
    if (!job)
        return;
    job->nextLaunch = QDateTime();
    auto *task = new BackgroundTask(identifier, this);
    auto *deadline = new QTimer(task);
    deadline->setSingleShot(true);
    connect(deadline, &QTimer::timeout, task, &BackgroundTask::expire);
    connect(task, &BackgroundTask::completed, task, &QObject::deleteLater);
    deadline->start(m_timing.runTimeLimit);
    emit launched(identifier);
    job->handler(task);
}

} // namespace kestrine
