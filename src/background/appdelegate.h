#pragma once

#include "backgroundscheduler.h"
#include "notificationservice.h"

#include <QObject>
#include <chrono>

namespace kestrine {

/// What the app does at launch besides opening its window: it registers the background refresh,
/// whose every run first asks for the next one and then runs one pass of the background check.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    static const QString refreshTaskIdentifier;
    static constexpr std::chrono::seconds refreshInterval{900};

    AppDelegate(BackgroundScheduler &scheduler, NotificationService &service,
                QObject *parent = nullptr);

    /// Registers the refresh job; its launches go to handle().
    bool registerBackgroundTask();
    /// Asks for the next run 900 seconds from now. A refused request is dropped silently.
    void scheduleNextRefresh();
    /// One launch: schedule the next run, then run a pass; expiry abandons the pass. The launch is
    /// always reported as completed successfully.
    void handle(BackgroundTask *task);

private:
    BackgroundScheduler &m_scheduler;
    NotificationService &m_service;
};

} // namespace kestrine
