#pragma once

#include "logsink.h"

#include <QNetworkAccessManager>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <chrono>

namespace kestrine {

/// The one way the app talks to a Gitea server: an immutable, cheap-to-copy value holding the
/// instance URL, the access token, the HTTP session and the log that every request writes one
/// line to. Build a fresh one for each piece of work (the settings hand them out), so that a
/// changed setting takes effect on the next call.
class GiteaClient
{
public:
    /// How long a transfer may stall before it fails.
    static constexpr std::chrono::milliseconds defaultTimeout{30000};

    /// `instanceURL` has no trailing "/". `log` may be null (then nothing is logged).
    /// `timeout` is there for tests that must not wait half a minute for a silent server.
    GiteaClient(QUrl instanceURL, QString token, QNetworkAccessManager *session, LogSink *log,
                std::chrono::milliseconds timeout = defaultTimeout);

    const QUrl &instanceURL() const { return m_instanceURL; }
    const QString &token() const { return m_token; }
    QNetworkAccessManager *session() const { return m_session; }
    LogSink *log() const { return m_log; }
    std::chrono::milliseconds timeout() const { return m_timeout; }

    /// A copy whose requests are cancelled when `scope` is destroyed: a screen's model passes
    /// itself (or a per-load child) so that leaving the screen abandons its requests. A cancelled
    /// request fails with a TransportError that `isCancellation()`, and is never logged.
    GiteaClient cancelledWith(QObject *scope) const;
    QObject *cancellationScope() const { return m_cancellationScope; }
    /// True once the scope given to cancelledWith() is gone.
    bool isCancelled() const { return m_hasCancellationScope && !m_cancellationScope; }

    /// The process-wide HTTP session of the main thread, created on first use.
    static QNetworkAccessManager *sharedSession();

private:
    QUrl m_instanceURL;
    QString m_token;
    QPointer<QNetworkAccessManager> m_session;
    LogSink *m_log;
    std::chrono::milliseconds m_timeout;
    QPointer<QObject> m_cancellationScope;
    bool m_hasCancellationScope = false;
};

} // namespace kestrine
