#include "fakegiteaserver.h"

#include <QElapsedTimer>
#include <QHttpServerRequest>
#include <QPointer>
#include <QQueue>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <utility>

namespace kestrine {
namespace {

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

FakeResponse FakeResponse::json(QByteArray body, int status)
{
    return FakeResponse{HttpAnswer::json(std::move(body), status)};
}

FakeResponse FakeResponse::text(QByteArray body, int status)
{
    return FakeResponse{HttpAnswer::text(std::move(body), status)};
}

FakeResponse FakeResponse::empty(int status)
{
    return FakeResponse{HttpAnswer::empty(status)};
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
    return response.raw ? *response.raw : response.wire();
}

FakeGiteaServer::FakeGiteaServer(QObject *parent)
    : GiteaHttpServer(parent)
    , m_recorder(new RawRecorder(this))
{}

FakeGiteaServer::~FakeGiteaServer() = default;

QTcpServer *FakeGiteaServer::makeListener()
{
    return m_recorder;
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
    GiteaHttpServer::route(
        std::move(method), pattern,
        [this, handler = std::move(handler)](const HttpRequest &request,
                                             const RouteParams &params) -> HttpAnswer {
            m_scripted = handler(request, params);
            return *m_scripted;
        });
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

int FakeGiteaServer::connectionCount() const
{
    return m_recorder->connectionCount();
}

HttpRequest FakeGiteaServer::received(const QHttpServerRequest &request, QTcpSocket *socket)
{
    // Seen on the wire first, always; what the library parsed is only a fallback.
    std::optional<RecordedRequest> recorded = m_recorder->takeNext(socket);
    return recorded ? *std::move(recorded) : GiteaHttpServer::received(request, socket);
}

void FakeGiteaServer::answer(QTcpSocket *socket, const HttpRequest &request)
{
    QElapsedTimer sinceArrival;
    sinceArrival.start();
    m_requests.append(request);
    emit requestRecorded(request);
    m_scripted.reset();
    FakeResponse response{dispatch(request)};
    if (m_scripted)
        response = *std::exchange(m_scripted, std::nullopt);
    respond(socket, response, std::chrono::milliseconds(sinceArrival.elapsed()));
}

void FakeGiteaServer::respond(QTcpSocket *socket, const FakeResponse &response,
                              std::chrono::milliseconds sinceArrival)
{
    if (response.delivery == FakeResponse::Delivery::Never)
        return;
    const std::chrono::milliseconds delay = std::max(response.delay, m_answerDelay) - sinceArrival;
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
