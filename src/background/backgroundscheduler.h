#pragma once

#include <QDateTime>
#include <QHash>
#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>
#include <memory>

namespace kestrine {

/// One launch of a registered background job. The job must call setTaskCompleted() when it is
/// done; if its time runs out first, the expiration handler is called so that it can stop.
class BackgroundTask : public QObject
{
    Q_OBJECT

public:
    BackgroundTask(QString identifier, QObject *parent = nullptr);

    const QString &identifier() const { return m_identifier; }
    void setExpirationHandler(std::function<void()> handler);
    void setTaskCompleted(bool success);
    bool isCompleted() const { return m_completed; }

    /// Called by the scheduler when the task's time is up.
    void expire();

signals:
    void completed(bool success);

private:
    QString m_identifier;
    std::function<void()> m_expirationHandler;
    bool m_completed = false;
};

/// The periodic background refresh: a job registered under an identifier, launched by the
/// platform at some time after the earliest begin date that the app last submitted.
class BackgroundScheduler
{
public:
    using LaunchHandler = std::function<void(BackgroundTask *task)>;

    virtual ~BackgroundScheduler() = default;
    virtual bool registerTask(const QString &identifier, LaunchHandler handler) = 0;
    /// Asks for the job to run again, not before `earliestBegin`. Answers false when refused.
    virtual bool submit(const QString &identifier, const QDateTime &earliestBegin) = 0;

protected:
    BackgroundScheduler() = default;
};

/// The scheduler while the app runs: it launches each registered job once by itself shortly after
/// start-up, then again at each submitted earliest begin date. A launch that does not complete in
/// time is expired. (Checks while the app is closed come from a systemd user timer running the
/// command-line companion.)
class InProcessScheduler : public QObject, public BackgroundScheduler
{
    Q_OBJECT

public:
    struct Timing
    {
        /// The first, unrequested launch after registration.
        std::chrono::milliseconds firstLaunchDelay{std::chrono::seconds(5)};
        /// How long a launch may run before it is expired.
        std::chrono::milliseconds runTimeLimit{std::chrono::seconds(30)};
    };

    explicit InProcessScheduler(QObject *parent = nullptr);
    InProcessScheduler(Timing timing, QObject *parent = nullptr);
    ~InProcessScheduler() override;

    bool registerTask(const QString &identifier, LaunchHandler handler) override;
    bool submit(const QString &identifier, const QDateTime &earliestBegin) override;

    /// The pending earliest begin of a job's next launch; invalid when none is pending.
    QDateTime nextLaunch(const QString &identifier) const;

signals:
    void launched(const QString &identifier);

private:
    struct Job;
    void launch(const QString &identifier);

    Timing m_timing;
    QHash<QString, std::shared_ptr<Job>> m_jobs;
};

} // namespace kestrine
