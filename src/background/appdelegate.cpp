#include "appdelegate.h"

#include <QPointer>

namespace kestrine {
namespace {

QCoro::Task<> runPassAndComplete(QPointer<NotificationService> service, QPointer<QObject> scope,
                                 QPointer<BackgroundTask> task)
{
    if (service && scope)
        co_await service->poll(scope);
    if (task)
        task->setTaskCompleted(true);
}

} // namespace

const QString AppDelegate::refreshTaskIdentifier = QStringLiteral("com.norrum.kestrine.refresh");

AppDelegate::AppDelegate(BackgroundScheduler &scheduler, NotificationService &service,
                         QObject *parent)
    : QObject(parent)
    , m_scheduler(scheduler)
    , m_service(service)
{}

bool AppDelegate::registerBackgroundTask()
{
    return m_scheduler.registerTask(refreshTaskIdentifier,
                                    [this](BackgroundTask *task) { handle(task); });
}

void AppDelegate::scheduleNextRefresh()
{
    m_scheduler.submit(refreshTaskIdentifier,
                       QDateTime::currentDateTimeUtc().addSecs(refreshInterval.count()));
}

void AppDelegate::handle(BackgroundTask *task)
{
    scheduleNextRefresh();
    // The pass's requests live as long as this scope; expiry deletes it, which abandons them.
    auto *scope = new QObject(task);
    runPassAndComplete(&m_service, scope, task);
    task->setExpirationHandler([scope = QPointer<QObject>(scope)] { delete scope.data(); });
}

} // namespace kestrine
