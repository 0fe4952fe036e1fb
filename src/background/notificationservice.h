#pragma once

#include "giteaclient.h"
#include "notificationcenter.h"
#include "notificationpass.h"
#include "notificationstate.h"
#include "settingsstore.h"
#include "summaries.h"

#include <QObject>

namespace kestrine {

/// The background check: tells the user, by local notifications, about pull requests it has not
/// announced before and about changes of the CI summary of those it knows. Its memory between
/// passes is the notification state file; it holds no state of its own.
class NotificationService : public QObject, public NotificationPass
{
    Q_OBJECT

public:
    /// A service that checks the instance of `settings` while they have notifications on.
    NotificationService(SettingsStore &settings, NotificationCenter &center,
                        QObject *parent = nullptr);
    /// A service that keeps its memory in `stateFilePath` instead of the caches directory.
    NotificationService(SettingsStore &settings, NotificationCenter &center, QString stateFilePath,
                        QObject *parent = nullptr);

    /// One whole pass; answers the number of notifications posted (0 when it stops early). It is
    /// abandoned when the service is destroyed.
    QCoro::Task<int> poll() override;
    /// A pass whose requests are abandoned when `cancellationScope` is destroyed; an abandoned
    /// pass stops where it is and leaves the state file as it was.
    QCoro::Task<int> poll(QObject *cancellationScope);

    const QString &stateFilePath() const { return m_stateFilePath; }

    /// "New PR", or "CI " + the word for a summary ("running", "passed", "failed", "cancelled",
    /// "updated").
    static QString newPullRequestTitle();
    static QString ciTitle(CIStatus::Value status);
    /// "<title> — <owner/name>".
    static QString body(const PullRequest &pr, const Repository &repo);

private:
    QCoro::Task<CIStatus::Value> ciStatus(PullRequest pr, Repository repo, GiteaClient client);
    void fire(const QString &title, const QString &body, const QString &pullRequestKey);

    SettingsStore &m_settings;
    NotificationCenter &m_center;
    QString m_stateFilePath;
};

} // namespace kestrine
