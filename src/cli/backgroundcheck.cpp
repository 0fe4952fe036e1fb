#include "backgroundcheck.h"

#include <QCoroSignal>
#include <QDBusConnection>
#include <QDBusMessage>

namespace kestrine::cli {

/// The desktop's notification centre, remembering whether anything was posted through it.
class BackgroundCheck::PostingCenter : public FreedesktopNotificationCenter
{
public:
    void post(const QString &identifier, const QString &title, const QString &body,
              const QString &pullRequestKey) override
    {
        FreedesktopNotificationCenter::post(identifier, title, body, pullRequestKey);
        m_hasPosted = true;
    }
    bool hasPosted() const { return m_hasPosted; }

private:
    bool m_hasPosted = false;
};

namespace {

/// Posting only queues a message for the bus connection's own thread. A blocking call queued
/// behind it returns once the bus has answered, and the bus answers in order, so everything
/// posted before has left by then.
void flushSessionBus()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    bus.call(QDBusMessage::createMethodCall(
                 QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                 QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping")),
             QDBus::Block, 5000);
}

} // namespace

BackgroundCheck::BackgroundCheck(SettingsStore &settings, QObject *parent)
    : QObject(parent)
    , m_center(std::make_unique<PostingCenter>())
    , m_service(settings, *m_center)
{
    NotificationPass::install(this);
}

BackgroundCheck::~BackgroundCheck()
{
    if (NotificationPass::installed() == this)
        NotificationPass::install(nullptr);
}

QCoro::Task<int> BackgroundCheck::poll()
{
    ++m_runningPasses;
    const int posted = co_await m_service.poll();
    if (--m_runningPasses == 0)
        emit passesFinished();
    co_return posted;
}

QCoro::Task<> BackgroundCheck::settle()
{
    if (m_runningPasses > 0)
        co_await qCoro(this, &BackgroundCheck::passesFinished);
    co_await m_center->allSent();
    if (m_center->hasPosted())
        flushSessionBus();
}

} // namespace kestrine::cli
