#pragma once

#include <QCoroTask>
#include <QHash>
#include <QObject>
#include <QString>
#include <functional>

namespace kestrine {

/// Where local notifications go. The background check only needs to know whether the user was
/// asked, to ask, and to post; each platform supplies its own.
class NotificationCenter
{
public:
    enum class Authorization {
        NotDetermined,
        Denied,
        Authorized,
    };

    virtual ~NotificationCenter() = default;

    virtual QCoro::Task<Authorization> authorizationStatus() = 0;
    /// Asks for alerts, sounds and badges; answers whether they were granted.
    virtual QCoro::Task<bool> requestAuthorization() = 0;
    /// Shows one notification at once, with the default sound. `identifier` is a fresh UUID text;
    /// `pullRequestKey` ("owner/name#42") names the pull request it is about, which activating the
    /// notification opens where the platform lets the app know of it. Nothing is awaited and
    /// failures are not reported.
    virtual void post(const QString &identifier, const QString &title, const QString &body,
                      const QString &pullRequestKey) = 0;

protected:
    NotificationCenter() = default;
};

/// Notifications on a Linux phone or desktop: org.freedesktop.Notifications on the session bus.
/// A desktop has no permission prompt, so "not determined" lasts until the first request, whose
/// answer is kept in the defaults store.
///
/// A phone does not present an app's own notifications while that app is in front, unless the app
/// asks for it; Kestrine does not ask. A notification server shows everything it is sent, so this
/// centre keeps that rule itself: a notification posted while the app is in front counts as
/// delivered but is not sent. What "in front" means is the app entry's to say (the background
/// layer knows no windows); without a foreground test, as in a run from the systemd timer, every
/// notification is sent.
///
/// Every notification names the app's desktop entry, so that the desktop shows Kestrine's name
/// and icon and knows which app a click on it is for. A running app also asks for activations
/// (openPullRequests()): its notifications then carry a default action, and activating one of
/// them reports its pull request. Without that, as from the systemd timer's short-lived run, a
/// notification carries no action: nobody would be there to answer it, and desktops such as
/// GNOME open a notification without one by starting the app from its desktop entry.
class FreedesktopNotificationCenter : public QObject, public NotificationCenter
{
    Q_OBJECT

public:
    /// Answers whether the app is in front of the user at this moment.
    using ForegroundTest = std::function<bool()>;

    explicit FreedesktopNotificationCenter(QObject *parent = nullptr);

    QCoro::Task<Authorization> authorizationStatus() override;
    QCoro::Task<bool> requestAuthorization() override;
    void post(const QString &identifier, const QString &title, const QString &body,
              const QString &pullRequestKey) override;

    /// Resumes once every notification posted so far has been handed to the session bus: a
    /// process that ends after a pass waits for this, or its last notifications are lost.
    QCoro::Task<> allSent();

    /// Asked at every post; an empty test means the app is never in front.
    void setForegroundTest(ForegroundTest isInForeground);

    /// From now on the notifications sent carry a default action, and activating one of them
    /// emits pullRequestActivated(). Answers false when there is no session bus to listen on.
    bool openPullRequests();

    /// The desktop entry's id, the name of the notifications' "desktop-entry" hint.
    static const QString desktopEntry;

    /// The defaults key that holds the answer of requestAuthorization().
    static const QString authorizationKey;

    /// `text` for a notification body that a server reads as markup: "&", "<" and ">" escaped.
    static QString escapedMarkup(const QString &text);

signals:
    void sendingFinished();
    /// The user activated a notification of this centre (its default action) that is about the
    /// pull request `pullRequestKey`. `activationToken` is what the server handed over for the
    /// window to come to the front with; often empty.
    void pullRequestActivated(const QString &pullRequestKey, const QString &activationToken);

private slots:
    void onActionInvoked(uint id, const QString &actionKey);
    void onActivationToken(uint id, const QString &activationToken);
    void onNotificationClosed(uint id, uint reason);

private:
    void send(const QString &identifier, const QString &title, const QString &body,
              const QString &pullRequestKey);

    ForegroundTest m_isInForeground;
    /// Posted, still waiting for the server's capabilities before it is sent.
    int m_unsent = 0;
    bool m_opensPullRequests = false;
    /// The notifications on screen that this centre sent, by the server's id: their pull requests.
    /// Every client of the server hears its signals; only these ids are this centre's.
    QHash<uint, QString> m_shown;
    /// Tokens the server sent ahead of an activation, by notification id.
    QHash<uint, QString> m_activationTokens;
};

} // namespace kestrine
