#pragma once

// The tour of the app's scenes: every screen and state, driven through the running app against
// its built-in demo instance, then the same screens with texts a stranger wrote. `make screenshots`
// saves each scene as a PNG file; the scenes test walks the same tour and fails on any message
// that means something on screen is broken.

#include <QString>
#include <QStringList>
#include <QVariant>
#include <functional>

class QObject;
class QQuickWindow;

namespace kestrine {

struct AppOptions;
class DemoInstance;
class LogStore;
class SettingsStore;
class FakeGiteaServer;
class KestrineApp;

namespace testing {
class StrangerHost;
}

class Tour
{
public:
    /// How to start an app for the tour: in demo mode, with a demo instance whose answers the
    /// tour can hold back, to show the screens that wait for the server.
    static AppOptions appOptions();

    /// A tour of `app`, started with appOptions(). Scenes are saved as PNG files into `folder` when
    /// it is not empty; only those named in `only` are saved when it is not empty.
    Tour(KestrineApp &app, QString folder = {}, QStringList only = {});

    /// Called with each scene's name once it is on screen, before it is saved.
    void onScene(std::function<void(const QString &scene, QQuickWindow *window)> inspect)
    {
        m_inspect = std::move(inspect);
    }

    /// Walks every scene: the demo instance's, then the hostile ones with their addresses at
    /// `stranger`.
    void run(testing::StrangerHost &stranger);

    /// The scenes shown, in order, and the files written.
    QStringList scenes() const { return m_scenes; }
    QStringList writtenFiles() const { return m_written; }
    /// What went wrong on the tour itself: an object it looked for and did not find, a method it
    /// could not call, a file it could not write. Empty after a good tour.
    QStringList failures() const { return m_failures; }

private:
    friend struct TourSteps;

    QQuickWindow *window() const;
    DemoInstance &demo() const;
    /// The app's settings and log.
    SettingsStore &settings() const;
    LogStore &log() const;
    /// The demo instance's server, which appOptions() made one that tests script.
    FakeGiteaServer &server() const;

    /// Lets events and animations run for `ms` milliseconds.
    static void settle(int ms = 450);
    /// Waits until `done` holds, for at most `ms` milliseconds; false when it never did.
    static bool waitFor(const std::function<bool()> &done, int ms = 8000);

    /// The object called `name` anywhere under the window; the newest visible one when there are
    /// several (pushed screens come after the ones under them).
    QObject *find(const QString &name);
    QVariant call(const QString &object, const char *method, const QVariantList &args = {});
    void fail(const QString &what);

    bool wanted(const QString &name) const { return m_only.isEmpty() || m_only.contains(name); }
    void shoot(const QString &name);

    KestrineApp &m_app;
    QString m_folder;
    QStringList m_only;
    QStringList m_scenes;
    QStringList m_written;
    QStringList m_failures;
    std::function<void(const QString &, QQuickWindow *)> m_inspect;
};

} // namespace kestrine
