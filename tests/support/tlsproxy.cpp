#include "tlsproxy.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QHostAddress>
#include <QLocalSocket>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>

namespace kestrine::testing {
namespace {

// One configuration for every certificate the openssl command makes, so that neither the
// machine's openssl.cnf nor openssl's defaults decide what the certificates say. The authority
// signs certificates and nothing else; the server's certificate is good for TLS servers at
// 127.0.0.1 and localhost.
const char opensslConfiguration[] = R"([req]
distinguished_name = name
prompt = no

[name]
CN = unused

[authority]
basicConstraints = critical, CA:TRUE
keyUsage = critical, keyCertSign, cRLSign
subjectKeyIdentifier = hash

[server]
basicConstraints = critical, CA:FALSE
keyUsage = critical, digitalSignature
extendedKeyUsage = serverAuth
subjectAltName = IP:127.0.0.1, DNS:localhost
subjectKeyIdentifier = hash
authorityKeyIdentifier = keyid
)";

// The fields of each access log line, split at blanks: the request target is last because it
// is the only one a client writes.
const char accessLogFormat[] = "$connection $server_protocol $status $request_method $request_uri";

// nginx is up in a fraction of a second on an idle machine, in seconds on one busy with a
// parallel build.
constexpr int startSeconds = 20;
constexpr int portAttempts = 5;

/// A port of 127.0.0.1 that was free a moment ago: nginx may still lose it to another program
/// before it binds, which launch() notices.
quint16 freePort()
{
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHost, 0))
        return 0;
    const quint16 port = probe.serverPort();
    probe.close();
    return port;
}

QString nginxProgram()
{
    // Debian installs it to /usr/sbin, which an ordinary user's PATH often leaves out.
    const QString found = QStandardPaths::findExecutable(QStringLiteral("nginx"));
    if (!found.isEmpty())
        return found;
    return QStandardPaths::findExecutable(QStringLiteral("nginx"),
                                          {QStringLiteral("/usr/sbin"), QStringLiteral("/sbin")});
}

/// Runs the openssl command in `folder`; on failure, says why in `failure`.
bool runOpenssl(const QString &folder, const QStringList &arguments, QString *failure)
{
    QProcess openssl;
    openssl.setWorkingDirectory(folder);
    openssl.setProcessChannelMode(QProcess::MergedChannels);
    openssl.start(QStringLiteral("openssl"), arguments);
    if (!openssl.waitForFinished(20000) || openssl.exitStatus() != QProcess::NormalExit ||
        openssl.exitCode() != 0) {
        *failure = QStringLiteral("openssl %1 failed (is the openssl package installed?): %2 %3")
                       .arg(arguments.value(0), QString::fromLocal8Bit(openssl.readAll()),
                            openssl.errorString());
        return false;
    }
    return true;
}

bool writeFile(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(contents) == contents.size();
}

} // namespace

TlsProxy::TlsProxy(QUrl upstream, Http2 http2)
    : m_upstream(std::move(upstream))
    , m_http2(http2)
{
    m_nginx.setProcessChannelMode(QProcess::MergedChannels);
}

TlsProxy::~TlsProxy()
{
    if (m_nginx.state() == QProcess::NotRunning)
        return;
    // SIGTERM is nginx's fast shutdown: open connections are closed, the pid file removed.
    m_nginx.terminate();
    if (!m_nginx.waitForFinished(5000)) {
        m_nginx.kill();
        m_nginx.waitForFinished(5000);
    }
}

QString TlsProxy::path(const QString &name) const
{
    return m_dir.filePath(name);
}

bool TlsProxy::start()
{
    if (!m_dir.isValid()) {
        m_failure = QStringLiteral("no temporary folder: ") + m_dir.errorString();
        return false;
    }
    if (m_upstream.scheme() != QLatin1String("http") || m_upstream.host().isEmpty() ||
        m_upstream.port() <= 0 || !(m_upstream.path().isEmpty() || m_upstream.path() == u"/")) {
        // A path in proxy_pass would make nginx rewrite (and re-encode) every request target.
        m_failure = QStringLiteral("the upstream must be http://host:port, without a path: ") +
                    m_upstream.toString();
        return false;
    }
    // nginx reads these paths inside its configuration, where "$" starts a variable; a Unix
    // socket's address holds at most 107 bytes.
    static const QRegularExpression unsafe(QStringLiteral(R"([$"\\\s;{}#'])"));
    if (m_dir.path().contains(unsafe) ||
        path(QStringLiteral("status.sock")).toUtf8().size() > 100) {
        m_failure = QStringLiteral("the temporary folder's path does not fit in nginx's "
                                   "configuration: ") +
                    m_dir.path();
        return false;
    }
    if (!makeCertificates())
        return false;

    for (int attempt = 0; attempt < portAttempts; ++attempt) {
        const quint16 port = freePort();
        if (port == 0) {
            m_failure = QStringLiteral("no free port on 127.0.0.1");
            return false;
        }
        if (!writeConfiguration(port))
            return false;
        bool portTaken = false;
        if (launch(port, &portTaken)) {
            m_port = port;
            return true;
        }
        if (!portTaken)
            return false;
    }
    return false;
}

bool TlsProxy::makeCertificates()
{
    const QString folder = m_dir.path();
    if (!writeFile(path(QStringLiteral("openssl.cnf")), opensslConfiguration)) {
        m_failure = QStringLiteral("cannot write openssl.cnf");
        return false;
    }
    // Each step is one openssl command line, its words split at blanks. P-256 keys, as the
    // quickest to make; two days, as nothing outlives a test run.
    const char *const steps[] = {
        "req -x509 -config openssl.cnf -extensions authority -newkey ec -pkeyopt "
        "ec_paramgen_curve:prime256v1 -nodes -keyout ca.key -out ca.pem -days 2 "
        "-subj /CN=Kestrine-throwaway-test-CA",
        "req -new -config openssl.cnf -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes "
        "-keyout server.key -out server.csr -subj /CN=127.0.0.1",
        "x509 -req -in server.csr -CA ca.pem -CAkey ca.key -CAcreateserial -days 2 "
        "-extfile openssl.cnf -extensions server -out server.pem",
    };
    for (const char *step : steps) {
        if (!runOpenssl(folder, QString::fromLatin1(step).split(u' '), &m_failure))
            return false;
    }
    const QList<QSslCertificate> authorities =
        QSslCertificate::fromPath(path(QStringLiteral("ca.pem")));
    if (authorities.size() != 1 || authorities.first().isNull()) {
        m_failure = QStringLiteral("Qt cannot read the authority's certificate");
        return false;
    }
    m_caCertificate = authorities.first();
    return true;
}

bool TlsProxy::writeConfiguration(quint16 port)
{
    const QString dir = m_dir.path();
    const QString listen = QStringLiteral("127.0.0.1:%1 ssl%2")
                               .arg(port)
                               .arg(m_http2 == Http2::On ? QStringLiteral(" http2") : QString());
    const QString upstream = QStringLiteral("%1:%2").arg(m_upstream.host()).arg(m_upstream.port());
    // No "user": without a master process nginx never switches user, and as an ordinary user the
    // directive only earns a warning. Every file nginx writes is in the folder. The upstream
    // keeps idle connections for reuse, as a proxy in front of a real Gitea does; requests and
    // answers pass unchanged, the client's Host included.
    const QString configuration =
        QStringLiteral(R"(daemon off;
master_process off;
pid "%1/nginx.pid";
error_log stderr;

events {
    worker_connections 2048;
}

http {
    client_body_temp_path "%1/client_body";
    proxy_temp_path "%1/proxy";
    fastcgi_temp_path "%1/fastcgi";
    uwsgi_temp_path "%1/uwsgi";
    scgi_temp_path "%1/scgi";

    log_format kestrine '%2';
    access_log "%1/access.log" kestrine;

    upstream origin {
        server %3;
        keepalive 256;
        keepalive_requests 100000;
    }

    server {
        listen %4;
        ssl_certificate "%1/server.pem";
        ssl_certificate_key "%1/server.key";
        ssl_protocols TLSv1.2 TLSv1.3;
        keepalive_requests 100000;
        keepalive_timeout 300s;
        http2_max_concurrent_streams 128;

        location / {
            proxy_pass http://origin;
            proxy_http_version 1.1;
            proxy_set_header Connection "";
            proxy_set_header Host $http_host;
        }
    }

    # The proxy's own questions, apart from the clients' port and log.
    server {
        listen "unix:%1/status.sock";
        access_log off;
        location / {
            stub_status;
        }
    }
}
)")
            .arg(dir, QString::fromLatin1(accessLogFormat), upstream, listen);
    if (!writeFile(path(QStringLiteral("nginx.conf")), configuration.toUtf8())) {
        m_failure = QStringLiteral("cannot write nginx.conf");
        return false;
    }
    return true;
}

bool TlsProxy::launch(quint16 port, bool *portTaken)
{
    const QString program = nginxProgram();
    if (program.isEmpty()) {
        m_failure = QStringLiteral("nginx is not installed (Debian: nginx-light)");
        return false;
    }
    const QString dir = m_dir.path();
    m_ownConnections = 0;
    // -e: nginx opens its compiled-in error log before it reads the configuration, and only root
    // may write that one.
    m_nginx.start(program, {QStringLiteral("-p"), dir, QStringLiteral("-c"),
                            path(QStringLiteral("nginx.conf")), QStringLiteral("-e"),
                            QStringLiteral("stderr")});
    if (!m_nginx.waitForStarted(10000)) {
        m_failure = QStringLiteral("nginx did not start: ") + m_nginx.errorString();
        return false;
    }

    const QDeadlineTimer deadline{std::chrono::seconds(startSeconds)};
    while (!deadline.hasExpired()) {
        // Waiting for its end is the pause between tries, and catches a configuration that
        // nginx refuses or a port someone else took in the meantime.
        if (m_nginx.waitForFinished(25)) {
            const QString output = QString::fromLocal8Bit(m_nginx.readAll());
            *portTaken = output.contains(QStringLiteral("Address already in use"));
            m_failure = QStringLiteral("nginx ended at start: ") + output;
            return false;
        }
        QTcpSocket probe;
        probe.connectToHost(QHostAddress::LocalHost, port);
        if (!probe.waitForConnected(1000))
            continue;
        ++m_ownConnections;
        probe.abort();
        // The port takes connections; the answer on the status socket shows that nginx is past
        // its start and handling events.
        if (!askStatus().isEmpty())
            return true;
    }
    m_failure = QStringLiteral("nginx did not accept connections within %1 s: ").arg(startSeconds) +
                QString::fromLocal8Bit(m_nginx.readAll());
    m_nginx.kill();
    m_nginx.waitForFinished(5000);
    return false;
}

QByteArray TlsProxy::askStatus() const
{
    QLocalSocket socket;
    socket.connectToServer(path(QStringLiteral("status.sock")));
    if (!socket.waitForConnected(2000))
        return {};
    ++m_ownConnections;
    socket.write("GET / HTTP/1.0\r\nHost: status\r\n\r\n");
    QByteArray answer;
    const QDeadlineTimer deadline{std::chrono::seconds(5)};
    // HTTP/1.0: nginx closes the connection after the answer.
    while (socket.state() == QLocalSocket::ConnectedState && !deadline.hasExpired()) {
        socket.waitForReadyRead(int(deadline.remainingTime()));
        answer += socket.readAll();
    }
    answer += socket.readAll();
    if (!answer.startsWith("HTTP/1.1 200") && !answer.startsWith("HTTP/1.0 200"))
        return {};
    return answer.mid(answer.indexOf("\r\n\r\n") + 4);
}

QUrl TlsProxy::url() const
{
    if (m_port == 0)
        return {};
    return QUrl(QStringLiteral("https://127.0.0.1:%1").arg(m_port));
}

QList<TlsProxy::LoggedRequest> TlsProxy::requests() const
{
    QList<LoggedRequest> requests;
    if (m_port == 0)
        return requests;
    // nginx has written the line of every request it finished before it answers this.
    askStatus();
    QFile log(path(QStringLiteral("access.log")));
    if (!log.open(QIODevice::ReadOnly))
        return requests;
    for (const QByteArray &line : log.readAll().split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() < 5)
            continue;
        LoggedRequest request;
        request.connection = fields[0].toLongLong();
        request.protocol = QString::fromLatin1(fields[1]);
        request.status = fields[2].toInt();
        request.method = QString::fromLatin1(fields[3]);
        request.target = QString::fromLatin1(fields.mid(4).join(' '));
        requests.append(request);
    }
    return requests;
}

int TlsProxy::clientConnections() const
{
    QSet<qint64> connections;
    for (const LoggedRequest &request : requests())
        connections.insert(request.connection);
    return int(connections.size());
}

QSet<QString> TlsProxy::protocols() const
{
    QSet<QString> protocols;
    for (const LoggedRequest &request : requests())
        protocols.insert(request.protocol);
    return protocols;
}

int TlsProxy::acceptedConnections() const
{
    // stub_status:
    //   Active connections: 1
    //   server accepts handled requests
    //    4 4 7
    //   Reading: 0 Writing: 1 Waiting: 0
    // "accepts" counts every connection, the status questions' (this one included) among them.
    const QByteArray status = askStatus();
    static const QRegularExpression counters(
        QStringLiteral(R"(server accepts handled requests\s+(\d+)\s+(\d+)\s+(\d+))"));
    const QRegularExpressionMatch match = counters.match(QString::fromLatin1(status));
    if (!match.hasMatch())
        return -1;
    return match.captured(1).toInt() - m_ownConnections;
}

TrustedInProcess::TrustedInProcess(const QSslCertificate &ca)
    : m_before(QSslConfiguration::defaultConfiguration())
{
    QSslConfiguration trusting = m_before;
    trusting.addCaCertificate(ca);
    QSslConfiguration::setDefaultConfiguration(trusting);
}

TrustedInProcess::~TrustedInProcess()
{
    QSslConfiguration::setDefaultConfiguration(m_before);
}

} // namespace kestrine::testing
