#pragma once

#include "pullrequestreference.h"

#include <QDBusContext>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>
#include <optional>

namespace kestrine {

/// The running app on the session bus: a well-known name, and under it the standard
/// org.freedesktop.Application interface, through which a second start of `kestrine`, a
/// launcher or a script reaches the one window instead of opening another.
///
/// - Activate: brings the window to the front.
/// - ActivateAction "open-pull-request" with one text parameter, "owner/name#42": the same, on
///   that pull request's detail screen.
/// - Open: refused; the app opens no files or addresses.
///
/// The interface and the name (the desktop entry's id) are the ones a desktop expects of an app
/// whose entry says DBusActivatable, should the entry ever say so.
class ApplicationService : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    enum class Claim {
        /// This process holds the name: it is the one app.
        Owned,
        /// Another process holds it.
        AlreadyRunning,
        /// There is no session bus: nothing to be found by, and nothing to find.
        NoBus,
    };

    /// The user's app is known by its desktop entry's id. The demo goes by a name of its own: it
    /// runs on private, temporary storage against a built-in server, so it and the user's app can
    /// run side by side without either touching the other's data, and a start of one must never
    /// bring up the other.
    static QString busName(bool demo);
    /// The object path the interface's conventions derive from `busName`: "/com/norrum/kestrine".
    static QString objectPath(const QString &busName);
    static const QString interfaceName;
    /// The action that opens a pull request; its parameter is the text "owner/name#42".
    static const QString openPullRequestAction;

    explicit ApplicationService(QString busName, QObject *parent = nullptr);
    ~ApplicationService() override;

    /// Serves the interface and asks for the name, without queueing behind another owner. The
    /// interface is served before the name is taken, so a second start that finds the name can
    /// always call it, even while this app is still starting.
    Claim claim();
    /// Gives the name up, so that the next start opens a new window, while this process still
    /// has something to finish before it ends.
    void release();

    const QString &name() const { return m_busName; }

    /// What a process started by a launcher hands on to the app it asks to come to the front: the
    /// launcher's tokens for the window to come forward, from XDG_ACTIVATION_TOKEN (Wayland) and
    /// DESKTOP_STARTUP_ID (X11). Read before the QGuiApplication exists: Qt takes the X11 one out
    /// of the environment as it connects to the display.
    static QVariantMap launchPlatformData();

    /// Asks the app that holds `busName` to come to the front, on `open` when given, handing it
    /// `platformData`. Nothing on success, else why it failed.
    static std::optional<QString> handOver(const QString &busName,
                                           const std::optional<PullRequestReference> &open,
                                           const QVariantMap &platformData);

public slots:
    Q_SCRIPTABLE void Activate(const QVariantMap &platformData);
    Q_SCRIPTABLE void Open(const QStringList &uris, const QVariantMap &platformData);
    Q_SCRIPTABLE void ActivateAction(const QString &actionName, const QVariantList &parameter,
                                     const QVariantMap &platformData);

signals:
    /// To the front, with the token that lets the window come there (often empty).
    void activationRequested(const QString &activationToken);
    /// To the front, on `reference`.
    void pullRequestRequested(const kestrine::PullRequestReference &reference,
                              const QString &activationToken);

private:
    QString m_busName;
    bool m_registered = false;
    bool m_owned = false;
};

} // namespace kestrine
