#pragma once

#include <QList>
#include <QProcess>
#include <QSet>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QString>
#include <QTemporaryDir>
#include <QUrl>

namespace kestrine::testing {

/// HTTPS in front of a plain HTTP server of a test: a real nginx on 127.0.0.1, started by this
/// process, unprivileged, with a certificate authority made for this one run.
///
/// Everything lives in a temporary folder: the authority and the server certificate (for
/// 127.0.0.1 and localhost, made with the openssl command), nginx's configuration, its temporary
/// files, its pid file and its access log. nginx runs in the foreground without a master process,
/// so it never switches user, whoever runs it. It forwards every request unchanged (Host
/// included) over kept-alive HTTP/1.1 connections to the upstream, and every answer with its
/// headers ("Link", "X-Total-Count", ...) to the client.
///
/// The access log is what tells which connections and protocols the client used: nginx writes
/// one line per request as the request ends, unbuffered. Before reading it, the proxy asks nginx
/// for its counters on a private Unix socket: nginx handles one event at a time, so once that
/// answer is in, every request whose answer the client has is in the log.
///
/// Nothing here trusts the authority: see TrustedInProcess.
class TlsProxy
{
public:
    enum class Http2 {
        /// TLS offers only HTTP/1.1.
        Off,
        /// TLS offers "h2" (then "http/1.1") by ALPN, up to 128 streams at once on a connection.
        On,
    };

    /// One request as nginx logged it.
    struct LoggedRequest
    {
        /// nginx's serial number of the client connection that carried it.
        qint64 connection = 0;
        /// "HTTP/1.1", "HTTP/2.0", ...
        QString protocol;
        int status = 0;
        QString method;
        /// The request target as the client sent it.
        QString target;
    };

    /// A proxy for `upstream`, an origin such as "http://127.0.0.1:8080" (without a path).
    explicit TlsProxy(QUrl upstream, Http2 http2 = Http2::On);
    /// Stops nginx: SIGTERM, then SIGKILL when it has not ended within five seconds.
    ~TlsProxy();
    TlsProxy(const TlsProxy &) = delete;
    TlsProxy &operator=(const TlsProxy &) = delete;

    /// Makes the certificates, starts nginx on a free port and returns once it accepts
    /// connections. On failure, failure() says why and nothing is left running.
    bool start();
    QString failure() const { return m_failure; }

    /// "https://127.0.0.1:<port>"; empty before start() succeeded.
    QUrl url() const;
    /// The authority that issued the proxy's certificate.
    QSslCertificate caCertificate() const { return m_caCertificate; }

    /// Every request nginx has logged so far, oldest first.
    QList<LoggedRequest> requests() const;
    /// How many distinct client connections carried the logged requests.
    int clientConnections() const;
    /// The protocols of the logged requests.
    QSet<QString> protocols() const;
    /// How many client connections nginx accepted on the TLS port, whether or not a request came
    /// over them (the proxy's own probes not counted); -1 when nginx did not say.
    int acceptedConnections() const;

private:
    bool makeCertificates();
    bool writeConfiguration(quint16 port);
    bool launch(quint16 port, bool *portTaken);
    /// nginx's counters (stub_status); empty when it did not answer.
    QByteArray askStatus() const;
    QString path(const QString &name) const;

    QUrl m_upstream;
    Http2 m_http2;
    QTemporaryDir m_dir;
    QProcess m_nginx;
    quint16 m_port = 0;
    QSslCertificate m_caCertificate;
    QString m_failure;
    // Connections the proxy opened itself: the readiness probe and each status question.
    mutable int m_ownConnections = 0;
};

/// Trusts a certificate authority for TLS in this process alone, while it lives: the process's
/// default SSL configuration, which every request that sets none of its own uses, gets `ca`,
/// and the configuration from before comes back at the end. Nothing reaches the system's store
/// or any other process.
class TrustedInProcess
{
public:
    explicit TrustedInProcess(const QSslCertificate &ca);
    ~TrustedInProcess();
    TrustedInProcess(const TrustedInProcess &) = delete;
    TrustedInProcess &operator=(const TrustedInProcess &) = delete;

private:
    QSslConfiguration m_before;
};

} // namespace kestrine::testing
