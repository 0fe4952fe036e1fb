#include "app.h"

#include "appdelegate.h"
#include "backgroundscheduler.h"
#include "demoinstance.h"
#include "logstore.h"
#include "notificationcenter.h"
#include "notificationpass.h"
#include "notificationservice.h"
#include "qmlservices.h"
#include "settingsstore.h"
#include "storagemode.h"
#include "translations.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QPointer>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QtQml/qqmlextensionplugin.h>

// The screens are a static QML module linked into this library.
Q_IMPORT_QML_PLUGIN(KestrinePlugin)

namespace kestrine {

const QUrl KestrineApp::mainQml(QStringLiteral("qrc:/qt/qml/Kestrine/Main.qml"));

void prepareApplication()
{
    QCoreApplication::setOrganizationName(QStringLiteral("norrum"));
    QCoreApplication::setApplicationName(QStringLiteral("kestrine"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("norrum.com"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KESTRINE_VERSION));
    QQuickStyle::setStyle(QStringLiteral("Material"));
}

KestrineApp::KestrineApp(AppOptions options)
    : m_options(options)
    , m_service(ApplicationService::busName(m_options.demo))
    , m_pendingOpen(m_options.open)
{
    QObject::connect(&m_service, &ApplicationService::activationRequested, &m_service,
                     [this](const QString &token) { activate(token); });
    QObject::connect(&m_service, &ApplicationService::pullRequestRequested, &m_service,
                     [this](const PullRequestReference &reference, const QString &token) {
                         openPullRequest(reference, token);
                     });
    // The screens speak the user's language; main() has done this already when it read the
    // command line, the test harnesses and the screenshot tool have not.
    i18n::installTranslations();
}

KestrineApp::AbortedRequestsDrain::~AbortedRequestsDrain()
{
    // Every object that could be resumed is gone by now, so the coroutines only see their owners
    // missing and return. Only what is already queued is delivered, without turning an event loop
    // again; a few rounds, for events that queue others, but bounded, so that a stream of events
    // cannot hold up the exit.
    constexpr int rounds = 8;
    for (int round = 0; round < rounds; ++round) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

KestrineApp::~KestrineApp()
{
    // The inbox must not start a pass of a service that is going away.
    if (NotificationPass::installed() == m_notificationService.get())
        NotificationPass::install(nullptr);
}

QCoro::Task<bool> KestrineApp::start()
{
    // The demo's private storage has to be chosen before any store is opened.
    if (m_options.demo && !startDemo())
        co_return false;

    // 1. The log and the settings, loaded now: the ones of the whole app, which the screens find on
    // the engine.
    m_log = std::make_unique<LogStore>();
    m_settings = std::make_unique<SettingsStore>(m_log.get());
    QmlServices::install(m_engine, *m_settings, *m_log);
    // Nothing reads the credentials before they are in.
    co_await m_settings->load();
    SettingsStore *settings = m_settings.get();
    if (m_demo) {
        settings->setInstanceURL(m_demo->url().toString());
        settings->setToken(m_demo->token());
    }

    // 2. The background task.
    registerBackgroundTask();

    // 3. The window, on the inbox.
    m_engine.load(mainQml);
    QQuickWindow *const shown = window();
    if (!shown) {
        m_error = QCoreApplication::translate("KestrineApp", "The window could not be created.");
        co_return false;
    }
    // The app is in front while its window is on screen and active; a phone would not show the
    // app's own notifications then, and neither does the app here. Both are asked: not every
    // platform takes the focus from a window that it hides. The first pass can only end after
    // start() has returned, so none is posted before this is in place.
    m_notificationCenter->setForegroundTest([window = QPointer<QQuickWindow>(shown)] {
        return window && window->isExposed() && window->isActive();
    });
    if (m_pendingOpen)
        openPullRequest(*std::exchange(m_pendingOpen, std::nullopt));
    co_return true;
}

ApplicationService::Claim KestrineApp::claimBusName()
{
    return m_service.claim();
}

std::optional<QString> KestrineApp::handOver(const QVariantMap &platformData) const
{
    return ApplicationService::handOver(m_service.name(), m_options.open, platformData);
}

void KestrineApp::releaseBusName()
{
    m_service.release();
}

void KestrineApp::activate(const QString &activationToken)
{
    QQuickWindow *const shown = window();
    // A window that is still being built comes up in front by itself.
    if (!shown)
        return;
    // Qt's Wayland shell, where it supports xdg-activation, takes the token for the next
    // activation from the environment (and removes it there). Elsewhere it means nothing, and
    // would only be passed on to the programs the app starts.
    if (!activationToken.isEmpty() && QGuiApplication::platformName().startsWith(u"wayland"))
        qputenv("XDG_ACTIVATION_TOKEN", activationToken.toUtf8());
    if (shown->visibility() == QWindow::Minimized)
        shown->showNormal();
    else
        shown->show();
    // Activation raises the window as well (_NET_ACTIVE_WINDOW on X11, xdg-activation on
    // Wayland); raise() on its own is not supported everywhere and would only warn there.
    shown->requestActivate();
}

void KestrineApp::openPullRequest(const PullRequestReference &reference,
                                  const QString &activationToken)
{
    QQuickWindow *const shown = window();
    if (!shown) {
        m_pendingOpen = reference;
        return;
    }
    activate(activationToken);
    // The screens take the repository as the record's QML form, as an inbox row has it.
    QMetaObject::invokeMethod(shown, "openPullRequest", Q_ARG(QVariant, toQmlValue(reference.repo)),
                              Q_ARG(QVariant, QVariant::fromValue(reference.number)));
}

QQuickWindow *KestrineApp::window() const
{
    const QList<QObject *> roots = m_engine.rootObjects();
    return roots.isEmpty() ? nullptr : qobject_cast<QQuickWindow *>(roots.constFirst());
}

bool KestrineApp::startDemo()
{
    if (!Storage::useEphemeral()) {
        m_error = QCoreApplication::translate(
            "DemoInstance", "The demo needs private storage, and none could be set up.");
        return false;
    }
    m_demo =
        std::make_unique<DemoInstance>(m_options.demoServer ? m_options.demoServer() : nullptr);
    if (!m_demo->start()) {
        m_error = m_demo->errorString();
        m_demo.reset();
        return false;
    }
    return true;
}

void KestrineApp::registerBackgroundTask()
{
    m_notificationCenter = std::make_unique<FreedesktopNotificationCenter>();
    m_notificationService =
        std::make_unique<NotificationService>(*m_settings, *m_notificationCenter);
    // The same check also runs after every inbox load while notifications are on.
    NotificationPass::install(m_notificationService.get());
    m_scheduler = std::make_unique<InProcessScheduler>();
    m_delegate = std::make_unique<AppDelegate>(*m_scheduler, *m_notificationService);
    m_delegate->registerBackgroundTask();
    // A notification the user activates leads to its pull request.
    if (m_notificationCenter->openPullRequests()) {
        QObject::connect(
            m_notificationCenter.get(), &FreedesktopNotificationCenter::pullRequestActivated,
            m_notificationCenter.get(), [this](const QString &key, const QString &activationToken) {
                if (const auto reference = PullRequestReference::parse(key))
                    openPullRequest(*reference, activationToken);
            });
    }
}

} // namespace kestrine
