#pragma once

#include "giteahttpserver.h"
#include "giteasimulation.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QUrl>
#include <memory>

namespace kestrine {

/// The built-in demo instance: a Gitea that lives inside the app's own process, on 127.0.0.1,
/// serving the sample data compiled into the app (demo-seed.json: a small team's repositories
/// with open pull requests, reviews, comments, diffs, and CI runs that pass, fail and run).
///
/// The seed's times are written around a fixed moment, referenceTime; start() moves every one of
/// them forward by the same amount so that this moment is the current time, and the inbox reads
/// "25 min. ago" rather than a date long past.
class DemoInstance
{
public:
    /// The moment the seed's times are written around.
    static const QDateTime referenceTime;

    /// An instance that answers on `server` once started; on a plain one when none is given.
    explicit DemoInstance(std::unique_ptr<GiteaHttpServer> server = nullptr);
    ~DemoInstance();
    DemoInstance(const DemoInstance &) = delete;
    DemoInstance &operator=(const DemoInstance &) = delete;

    /// Starts answering on a free port of 127.0.0.1. False, with errorString(), when the seed
    /// cannot be read or no port can be opened.
    bool start();
    bool isRunning() const { return m_running; }
    QString errorString() const { return m_error; }

    /// The instance URL to configure: "http://127.0.0.1:<port>", without a trailing "/".
    QUrl url() const;
    /// A token of the demo user, accepted by the instance.
    QString token() const { return m_token; }

    GiteaHttpServer &server() { return *m_server; }
    GiteaSimulation *simulation() { return m_simulation.get(); }

    /// The compiled-in seed with every time moved so that referenceTime becomes `now`.
    static QByteArray seed(const QDateTime &now);

private:
    std::unique_ptr<GiteaHttpServer> m_server;
    std::unique_ptr<GiteaSimulation> m_simulation;
    QString m_token;
    QString m_error;
    bool m_running = false;
};

} // namespace kestrine
