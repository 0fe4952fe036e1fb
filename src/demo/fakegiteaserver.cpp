#include "fakegiteaserver.h"

#include <QHostAddress>
#include <QHttpServerRequest>
#include <QPointer>
#include <QQueue>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

namespace kestrine {
namespace {

QByteArray reasonPhrase(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 201:
        return "Created";
    case 204:
        return "No Content";
    case 301:
        return "Moved Permanently";
    case 302:
        return "Found";
    case 304:
        return "Not Modified";
    case 400:
        return "Bad Request";
    case 401:
        return "Unauthorized";
    case 403:
        return "Forbidden";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    case 409:
        return "Conflict";
    case 422:
        return "Unprocessable Entity";
    case 423:
        return "Locked";
    case 500:
        return "Internal Server Error";
    case 502:
        return "Bad Gateway";
    case 503:
        return "Service Unavailable";
    default:
        return "Status";
    }
}

bool hasBodyAllowed(int status)
{
    return !(status < 200 || status == 204 || status == 304);
}

/// Splits complete HTTP/1.1 requests off the front of a connection's byte stream.
class RequestStreamParser
{
public:
    /// Appends bytes and returns every request that is now complete.
    QList<RecordedRequest> feed(const QByteArray &bytes)
    {
        m_buffer += bytes;
        QList<RecordedRequest> complete;
        while (auto request = takeOne())
            complete.append(std::move(*request));
        return complete;
    }

private:
    std::optional<RecordedRequest> takeOne()
    {
        const qsizetype headerEnd = m_buffer.indexOf("\r\n\r\n");
        if (headerEnd < 0)
            return std::nullopt;
        const QList<QByteArray> lines = m_buffer.left(headerEnd).split('\n');
        RecordedRequest request;
        const QList<QByteArray> requestLine = lines.value(0).trimmed().split(' ');
        request.method = requestLine.value(0);
        request.target = requestLine.value(1);
        const qsizetype question = request.target.indexOf('?');
        request.hasQuery = question >= 0;
        request.rawPath = request.hasQuery ? request.target.left(question) : request.target;
        request.rawQuery = request.hasQuery ? request.target.mid(question + 1) : QByteArray();
        qsizetype contentLength = 0;
        for (qsizetype i = 1; i < lines.size(); ++i) {
            QByteArray line = lines.at(i);
            if (line.endsWith('\r'))
                line.chop(1);
            const qsizetype colon = line.indexOf(':');
            if (colon <= 0)
                continue;
            const QByteArray name = line.left(colon);
            // Only the blank after the colon goes: a trailing blank is kept, because what a
            // client sent is what a test wants to see.
            QByteArray value = line.mid(colon + 1);
            while (value.startsWith(' ') || value.startsWith('\t'))
                value.remove(0, 1);
            request.headers.append({name, value});
            if (name.compare("content-length", Qt::CaseInsensitive) == 0)
                contentLength = value.trimmed().toLongLong();
        }
        const qsizetype bodyStart = headerEnd + 4;
        if (m_buffer.size() < bodyStart + contentLength)
            return std::nullopt;
        request.body = m_buffer.mid(bodyStart, contentLength);
        m_buffer.remove(0, bodyStart + contentLength);
        return request;
    }

    QByteArray m_buffer;
};

QRegularExpression compilePattern(const QString &pattern, QStringList *names)
{
    static const QRegularExpression placeholder(
        QStringLiteral("\\{([A-Za-z_][A-Za-z0-9_]*)(\\*?)\\}"));
    QString regex = QStringLiteral("^");
    qsizetype last = 0;
    auto it = placeholder.globalMatch(pattern);
    while (it.hasNext()) {
        const auto match = it.next();
        regex += QRegularExpression::escape(pattern.mid(last, match.capturedStart() - last));
        names->append(match.captured(1));
        regex += match.captured(2).isEmpty() ? QStringLiteral("([^/]+)") : QStringLiteral("(.+)");
        last = match.capturedEnd();
    }
    regex += QRegularExpression::escape(pattern.mid(last)) + u'$';
    return QRegularExpression(regex);
}

} // namespace

/// Accepts the connections and reads along on each socket before the HTTP server does: it peeks
/// at the bytes (leaving them for the server to read) and keeps the requests as sent.
class FakeGiteaServer::RawRecorder : public QTcpServer
{
public:
    explicit RawRecorder(QObject *parent)
        : QTcpServer(parent)
    {}

    int connectionCount() const { return m_connections; }

    /// The oldest request read on `socket` that the HTTP server has not handled yet.
    std::optional<RecordedRequest> takeNext(QTcpSocket *socket)
    {
        auto it = m_pending.find(socket);
        if (it == m_pending.end() || it->isEmpty())
            return std::nullopt;
        return it->dequeue();
    }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        auto *socket = new QTcpSocket(this);
        if (!socket->setSocketDescriptor(descriptor)) {
            delete socket;
            return;
        }
        ++m_connections;
        // Connected before the HTTP server connects its own reader, so this runs first and
        // still sees the bytes.
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
            const QByteArray bytes = socket->peek(socket->bytesAvailable());
            for (auto &request : m_parsers[socket].feed(bytes))
                m_pending[socket].enqueue(std::move(request));
        });
        connect(socket, &QObject::destroyed, this, [this, socket] {
            m_parsers.remove(socket);
            m_pending.remove(socket);
        });
        addPendingConnection(socket);
    }

private:
    QHash<QTcpSocket *, RequestStreamParser> m_parsers;
    QHash<QTcpSocket *, QQueue<RecordedRequest>> m_pending;
    int m_connections = 0;
};

QByteArray RecordedRequest::header(QByteArrayView name) const
{
    for (const auto &[key, value] : headers) {
        if (QByteArrayView(key).compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return {};
}

bool RecordedRequest::hasHeader(QByteArrayView name) const
{
    for (const auto &header : headers) {
        if (QByteArrayView(header.first).compare(name, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

QString RecordedRequest::path() const
{
    return QUrl::fromPercentEncoding(rawPath);
}

FakeResponse FakeResponse::json(QByteArray body, int status)
{
    return FakeResponse{status, std::move(body), {}, {}};
}

FakeResponse FakeResponse::text(QByteArray body, int status)
{
    return FakeResponse{
        status, std::move(body), {{"Content-Type", "text/plain;charset=utf-8"}}, {}};
}

FakeResponse FakeResponse::empty(int status)
{
    return FakeResponse{status, {}, {}, {}};
}

FakeResponse FakeResponse::rawBytes(QByteArray wire, Delivery delivery)
{
    FakeResponse response;
    response.raw = std::move(wire);
    response.delivery = delivery;
    return response;
}

FakeResponse FakeResponse::never()
{
    FakeResponse response;
    response.delivery = Delivery::Never;
    return response;
}

QByteArray serializeResponse(const FakeResponse &response)
{
    if (response.raw)
        return *response.raw;
    QByteArray wire = "HTTP/1.1 " + QByteArray::number(response.status) + ' ' +
                      reasonPhrase(response.status) + "\r\n";
    bool hasContentType = false;
    for (const auto &[name, value] : response.headers) {
        hasContentType |= name.compare("content-type", Qt::CaseInsensitive) == 0;
        wire += name + ": " + value + "\r\n";
    }
    const bool withBody = hasBodyAllowed(response.status);
    if (!hasContentType && withBody)
        wire += "Content-Type: application/json;charset=utf-8\r\n";
    if (withBody)
        wire += "Content-Length: " + QByteArray::number(response.body.size()) + "\r\n";
    wire += "\r\n";
    if (withBody)
        wire += response.body;
    return wire;
}

FakeGiteaServer::FakeGiteaServer(QObject *parent)
    : QAbstractHttpServer(parent)
    , m_recorder(new RawRecorder(this))
{}

FakeGiteaServer::~FakeGiteaServer() = default;

bool FakeGiteaServer::listen()
{
    if (!m_recorder->listen(QHostAddress::LocalHost, 0))
        return false;
    bind(m_recorder);
    return true;
}

quint16 FakeGiteaServer::port() const
{
    return m_recorder->serverPort();
}

QUrl FakeGiteaServer::baseUrl() const
{
    QUrl url;
    url.setScheme(QStringLiteral("http"));
    url.setHost(QStringLiteral("127.0.0.1"));
    url.setPort(port());
    return url;
}

void FakeGiteaServer::route(QByteArray method, const QString &pattern, FakeResponse response)
{
    route(std::move(method), pattern,
          [response = std::move(response)](const RecordedRequest &, const RouteParams &) {
              return response;
          });
}

void FakeGiteaServer::route(QByteArray method, const QString &pattern, Handler handler)
{
    Route route;
    route.method = std::move(method);
    route.pattern = compilePattern(pattern, &route.names);
    route.handler = std::move(handler);
    m_routes.append(std::move(route));
}

void FakeGiteaServer::clearRoutes()
{
    m_routes.clear();
}

QList<RecordedRequest> FakeGiteaServer::requests(QByteArrayView method, const QString &path) const
{
    QList<RecordedRequest> matching;
    for (const auto &request : m_requests) {
        if (request.method == method && request.path() == path)
            matching.append(request);
    }
    return matching;
}

FakeResponse FakeGiteaServer::dispatch(const RecordedRequest &request) const
{
    const QString path = request.path();
    bool pathKnown = false;
    for (auto route = m_routes.crbegin(); route != m_routes.crend(); ++route) {
        const QRegularExpressionMatch match = route->pattern.match(path);
        if (!match.hasMatch())
            continue;
        pathKnown = true;
        if (route->method != request.method)
            continue;
        RouteParams params;
        for (qsizetype i = 0; i < route->names.size(); ++i)
            params.insert(route->names.at(i), match.captured(i + 1));
        return route->handler(request, params);
    }
    // Gitea's router answers an unknown method on a known path with 405, an unknown path with
    // 404; both with its usual JSON error body.
    if (pathKnown)
        return FakeResponse::json(R"({"message":"method not allowed"})", 405);
    return FakeResponse::json(R"({"message":"not found"})", 404);
}

bool FakeGiteaServer::handleRequest(const QHttpServerRequest &request, QTcpSocket *socket)
{
    std::optional<RecordedRequest> recorded = m_recorder->takeNext(socket);
    if (!recorded) {
        // Not seen on the wire (should not happen): fall back to what the library parsed.
        recorded.emplace();
        recorded->target = request.url().toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority);
        recorded->rawPath = request.url().path(QUrl::FullyEncoded).toUtf8();
        recorded->rawQuery = request.url().query(QUrl::FullyEncoded).toUtf8();
        recorded->hasQuery = request.url().hasQuery();
        recorded->headers = request.headers();
        recorded->body = request.body();
    }
    m_requests.append(*recorded);
    emit requestRecorded(*recorded);
    respond(socket, dispatch(*recorded));
    return true;
}

void FakeGiteaServer::missingHandler(const QHttpServerRequest &, QTcpSocket *socket)
{
    respond(socket, FakeResponse::json(R"({"message":"not found"})", 404));
}

int FakeGiteaServer::connectionCount() const
{
    return m_recorder->connectionCount();
}

void FakeGiteaServer::respond(QTcpSocket *socket, const FakeResponse &response)
{
    if (response.delivery == FakeResponse::Delivery::Never)
        return;
    const std::chrono::milliseconds delay = std::max(response.delay, m_answerDelay);
    if (delay.count() <= 0) {
        deliver(socket, response);
        return;
    }
    QTimer::singleShot(delay, this, [this, socket = QPointer<QTcpSocket>(socket), response] {
        if (socket)
            deliver(socket, response);
    });
}

namespace {

/// Feeds a socket the pieces of a long answer whenever less than a few pieces wait in its buffer,
/// then closes the connection if asked to. Lives as long as the socket.
class PieceWriter : public QObject
{
public:
    PieceWriter(QTcpSocket *socket, std::function<QByteArray()> pieces, bool closeWhenDone)
        : QObject(socket)
        , m_socket(socket)
        , m_pieces(std::move(pieces))
        , m_closeWhenDone(closeWhenDone)
    {
        connect(socket, &QTcpSocket::bytesWritten, this, &PieceWriter::topUp);
        topUp();
    }

private:
    void topUp()
    {
        constexpr qint64 buffered = 4 * 1024 * 1024;
        while (m_pieces && m_socket->bytesToWrite() < buffered) {
            const QByteArray piece = m_pieces();
            if (piece.isEmpty()) {
                m_pieces = nullptr;
                if (m_closeWhenDone)
                    m_socket->disconnectFromHost();
                return;
            }
            m_socket->write(piece);
        }
    }

    QTcpSocket *m_socket;
    std::function<QByteArray()> m_pieces;
    bool m_closeWhenDone;
};

} // namespace

void FakeGiteaServer::deliver(QTcpSocket *socket, const FakeResponse &response)
{
    socket->write(serializeResponse(response));
    const bool close = response.delivery == FakeResponse::Delivery::CloseAfterWriting;
    if (response.morePieces)
        new PieceWriter(socket, response.morePieces, close);
    else if (close)
        socket->disconnectFromHost();
}

} // namespace kestrine
