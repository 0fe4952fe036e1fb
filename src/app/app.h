#pragma once

#include "applicationservice.h"
#include "pullrequestreference.h"

#include <QCoroTask>
#include <QObject>
#include <QQmlApplicationEngine>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

class QQuickWindow;

namespace kestrine {

class AppDelegate;
class DemoInstance;
class FreedesktopNotificationCenter;
class GiteaHttpServer;
class InProcessScheduler;
class LogStore;
class NotificationService;
class SettingsStore;

/// How the app was asked to start.
struct AppOptions
{
    /// Run against the built-in demo instance, on private, temporary storage: the user's keychain,
    /// settings, log and caches are neither read nor written.
    bool demo = false;
    /// Makes the server the demo instance answers on; a plain one when unset. The screenshot tour
    /// gives one that can hold answers back, to show the screens that wait for the server.
    std::function<std::unique_ptr<GiteaHttpServer>()> demoServer = nullptr;
    /// The pull request to show on top of the inbox once the window is up.
    std::optional<PullRequestReference> open = std::nullopt;
};

/// The app entry: it creates the log and the settings, the one instance of each that everything of
/// the app works with (the screens find them on the QML engine), registers the background task and
/// opens the one window on the inbox, in that order. While that window is on screen and active the
/// app is in front, and the notifications of its background check are not shown. Everything it
/// creates lives as long as this object; create it after the QGuiApplication and destroy it before.
///
/// There is one window per user session (one for the demo besides): the app that claimBusName()
/// finds already running is asked to come to the front instead (ApplicationService), and a
/// notification of the background check that the user activates brings the window to the front
/// on its pull request.
class KestrineApp
{
public:
    explicit KestrineApp(AppOptions options);
    ~KestrineApp();
    KestrineApp(const KestrineApp &) = delete;
    KestrineApp &operator=(const KestrineApp &) = delete;

    /// Starts the app, once the settings have read the credentials; false, with errorString(),
    /// when it cannot (the demo instance cannot start, the window cannot be built). Runs on the
    /// application's event loop.
    QCoro::Task<bool> start();
    QString errorString() const { return m_error; }

    QQmlApplicationEngine &engine() { return m_engine; }
    /// The window, once started.
    QQuickWindow *window() const;
    /// The app's log and settings, once started.
    LogStore *log() const { return m_log.get(); }
    SettingsStore *settings() const { return m_settings.get(); }
    /// The demo instance in demo mode; null otherwise.
    DemoInstance *demo() const { return m_demo.get(); }

    /// Claims the app's name on the session bus (ApplicationService::busName), before start():
    /// AlreadyRunning means that another process is the app, which handOver() then brings to the
    /// front. Without a claim, or without a bus, the app runs alone and nothing can reach it.
    ApplicationService::Claim claimBusName();
    /// Brings the app that holds the name to the front, on the pull request of the options'
    /// `open` when given, as a second start does, handing it `platformData`
    /// (ApplicationService::launchPlatformData()). Nothing on success, else why it failed.
    std::optional<QString> handOver(const QVariantMap &platformData) const;
    /// Gives the name up, once the app is on its way out: a start from now on opens a new window.
    void releaseBusName();

    /// Brings the window to the front: shown again if hidden or minimised, and activated, with
    /// `activationToken` when the desktop handed one over.
    void activate(const QString &activationToken = {});
    /// Brings the window to the front on `reference`'s detail screen, on top of the inbox, so that
    /// going back returns to the inbox; before the window is up, once it is.
    void openPullRequest(const PullRequestReference &reference,
                         const QString &activationToken = {});

    /// The one window's QML document.
    static const QUrl mainQml;

private:
    /// Destroyed last, after everything else of the app: a request aborted as its screen or pass
    /// went away resumes its coroutine on the next turn of the event loop, which after the app
    /// never comes. Delivering what is queued lets those coroutines end and free what they hold.
    struct AbortedRequestsDrain
    {
        AbortedRequestsDrain() = default;
        AbortedRequestsDrain(const AbortedRequestsDrain &) = delete;
        AbortedRequestsDrain &operator=(const AbortedRequestsDrain &) = delete;
        ~AbortedRequestsDrain();
    };

    bool startDemo();
    void registerBackgroundTask();

    // After the drain: an answer it delivers may still leave its line, which the log then
    // writes as it goes.
    std::unique_ptr<LogStore> m_log;
    AbortedRequestsDrain m_drain;
    AppOptions m_options;
    QString m_error;
    ApplicationService m_service;
    /// Asked for before the window was up.
    std::optional<PullRequestReference> m_pendingOpen;
    std::unique_ptr<DemoInstance> m_demo;
    // Before everything that works with it.
    std::unique_ptr<SettingsStore> m_settings;
    std::unique_ptr<FreedesktopNotificationCenter> m_notificationCenter;
    std::unique_ptr<NotificationService> m_notificationService;
    std::unique_ptr<InProcessScheduler> m_scheduler;
    std::unique_ptr<AppDelegate> m_delegate;
    // Last: the window goes first, while everything it shows still exists.
    QQmlApplicationEngine m_engine;
};

/// Sets the application's names (organisation "norrum", application "kestrine", domain
/// "norrum.com"), which also name its settings and cache folders, and the Material style with its
/// configuration. Call before the QGuiApplication is created.
void prepareApplication();

} // namespace kestrine
