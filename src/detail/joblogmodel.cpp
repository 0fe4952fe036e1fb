#include "joblogmodel.h"

#include "qmlrecords_p.h"
#include "settingsstore.h"

namespace kestrine {

JobLogModel::JobLogModel(QObject *parent)
    : QObject(parent)
    , SettingsUser(this, nullptr)
{}

JobLogModel::JobLogModel(SettingsStore &settings, Repository repo, qint64 runID, qint64 jobID,
                         QString jobName, QObject *parent)
    : QObject(parent)
    , SettingsUser(this, &settings)
    , m_repo(std::move(repo))
    , m_runID(runID)
    , m_jobID(jobID)
    , m_jobName(std::move(jobName))
{}

void JobLogModel::setRepo(const Repository &repo)
{
    if (m_repo == repo)
        return;
    m_repo = repo;
    emit repoChanged();
}

void JobLogModel::setRunID(qint64 runID)
{
    if (m_runID == runID)
        return;
    m_runID = runID;
    emit runIDChanged();
}

void JobLogModel::setJobID(qint64 jobID)
{
    if (m_jobID == jobID)
        return;
    m_jobID = jobID;
    emit jobIDChanged();
}

void JobLogModel::setJobName(const QString &jobName)
{
    if (m_jobName == jobName)
        return;
    m_jobName = jobName;
    emit jobNameChanged();
}

void JobLogModel::setShowShare(bool show)
{
    if (m_showShare == show)
        return;
    m_showShare = show;
    emit showShareChanged();
}

QCoro::Task<> JobLogModel::load()
{
    const std::optional<QString> log =
        co_await answerOf<QString>(configuredClient(), [this](const GiteaClient &client) {
            return client.jobLogs(m_repo.owner.login, m_repo.name, m_jobID);
        });
    if (!log)
        co_return;
    setText(*log);
    setLoading(false);
}

void JobLogModel::reload()
{
    // Runs on by itself; the QPointer check keeps it safe if the model goes first.
    load();
}

QVariant JobLogModel::qmlRepo() const
{
    return toQmlValue(m_repo);
}

void JobLogModel::setQmlRepo(const QVariant &repo)
{
    if (const auto decoded = detail::recordFromQml<Repository>(repo))
        setRepo(*decoded);
}

void JobLogModel::setText(const QString &text)
{
    if (m_text == text)
        return;
    m_text = text;
    emit textChanged();
}

} // namespace kestrine
