#pragma once

#include "qmlservices.h"
#include "records.h"
#include "requestprogress.h"

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <QVariant>
#include <QtQml/qqmlregistration.h>
#include <optional>

namespace kestrine {

/// The raw log of one Actions job, for the job log screen: the text exactly as the server sends
/// it (escape sequences, timestamps and all), with no size cap.
class JobLogModel : public QObject, public SettingsUser, public RequestProgress<JobLogModel>
{
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT
    Q_PROPERTY(QVariant repo READ qmlRepo WRITE setQmlRepo NOTIFY repoChanged)
    /// The run the job belongs to; the log request does not need it.
    Q_PROPERTY(qint64 runID READ runID WRITE setRunID NOTIFY runIDChanged)
    Q_PROPERTY(qint64 jobID READ jobID WRITE setJobID NOTIFY jobIDChanged)
    Q_PROPERTY(QString jobName READ jobName WRITE setJobName NOTIFY jobNameChanged)
    Q_PROPERTY(QString text READ text NOTIFY textChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    /// "" when there is no error.
    Q_PROPERTY(QString errorMessage READ qmlErrorMessage NOTIFY errorMessageChanged)
    /// The share sheet is presented.
    Q_PROPERTY(bool showShare READ showShare WRITE setShowShare NOTIFY showShareChanged)

public:
    /// For QML, which sets the rest afterwards; the settings are its engine's.
    explicit JobLogModel(QObject *parent = nullptr);
    JobLogModel(SettingsStore &settings, Repository repo, qint64 runID, qint64 jobID,
                QString jobName, QObject *parent = nullptr);

    const Repository &repo() const { return m_repo; }
    void setRepo(const Repository &repo);
    qint64 runID() const { return m_runID; }
    void setRunID(qint64 runID);
    qint64 jobID() const { return m_jobID; }
    void setJobID(qint64 jobID);
    const QString &jobName() const { return m_jobName; }
    void setJobName(const QString &jobName);

    const QString &text() const { return m_text; }
    bool showShare() const { return m_showShare; }
    void setShowShare(bool show);

    /// Fetches the log. On failure the text shown so far stays (the screen shows the error over
    /// it). Never throws.
    QCoro::Task<> load();
    Q_INVOKABLE void reload();

    QVariant qmlRepo() const;
    void setQmlRepo(const QVariant &repo);

signals:
    void repoChanged();
    void runIDChanged();
    void jobIDChanged();
    void jobNameChanged();
    void textChanged();
    void isLoadingChanged();
    void errorMessageChanged();
    void showShareChanged();

private:
    void setText(const QString &text);

    Repository m_repo;
    qint64 m_runID = 0;
    qint64 m_jobID = 0;
    QString m_jobName;
    QString m_text;
    bool m_showShare = false;
};

} // namespace kestrine
