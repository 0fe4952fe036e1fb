#pragma once

#include "notificationpass.h"
#include "notificationservice.h"

#include <QCoroTask>
#include <QObject>
#include <memory>

namespace kestrine::cli {

/// The background check as a command-line run has it: one NotificationService posting to the
/// desktop's notification server, installed as the pass that the inbox starts after a load.
///
/// A run must not end while a pass is under way, nor before the notifications it posted have
/// left the process (the session bus connection sends from a thread of its own), so the check
/// counts its passes and settle() waits for both.
class BackgroundCheck : public QObject, public NotificationPass
{
    Q_OBJECT

public:
    /// Checks the instance of `settings`.
    explicit BackgroundCheck(SettingsStore &settings, QObject *parent = nullptr);
    ~BackgroundCheck() override;

    /// One pass of the notification service; answers the number of notifications posted.
    QCoro::Task<int> poll() override;

    /// Returns once no pass is running and every notification posted has reached the bus.
    QCoro::Task<> settle();

signals:
    void passesFinished();

private:
    class PostingCenter;

    std::unique_ptr<PostingCenter> m_center;
    NotificationService m_service;
    int m_runningPasses = 0;
};

} // namespace kestrine::cli
