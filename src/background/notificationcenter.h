#pragma once

#include <QCoroTask>
#include <QObject>
#include <QString>

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
    /// Shows one notification at once, with the default sound. `identifier` is a fresh UUID text.
    /// Nothing is awaited and failures are not reported.
    virtual void post(const QString &identifier, const QString &title, const QString &body) = 0;

protected:
    NotificationCenter() = default;
};

/// Notifications on a Linux phone or desktop: org.freedesktop.Notifications on the session bus.
/// A desktop has no permission prompt, so "not determined" lasts until the first request, whose
/// answer is kept in the defaults store.
class FreedesktopNotificationCenter : public QObject, public NotificationCenter
{
    Q_OBJECT

public:
    explicit FreedesktopNotificationCenter(QObject *parent = nullptr);

    QCoro::Task<Authorization> authorizationStatus() override;
    QCoro::Task<bool> requestAuthorization() override;
    void post(const QString &identifier, const QString &title, const QString &body) override;

    /// The defaults key that holds the answer of requestAuthorization().
    static const QString authorizationKey;
};

} // namespace kestrine
