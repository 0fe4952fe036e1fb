#pragma once

#include <QAbstractHttpServer>
#include <QByteArray>
#include <QHash>
#include <QList>
#include <QRegularExpression>
#include <QString>
#include <QUrl>
#include <chrono>
#include <functional>
#include <optional>
#include <utility>

class QTcpServer;

namespace kestrine {

using HeaderList = QList<std::pair<QByteArray, QByteArray>>;

/// One request exactly as it arrived on the wire.
struct RecordedRequest
{
    QByteArray method;
    /// The request target as sent, e.g. "/gitea/api/v1/repos/a/b/pulls?state=open".
    QByteArray target;
    /// The target up to "?", still percent-encoded as sent.
    QByteArray rawPath;
    /// The target after "?", as sent; empty when there was no "?".
    QByteArray rawQuery;
    bool hasQuery = false;
    /// Header lines in the order sent.
    HeaderList headers;
    QByteArray body;

    /// The value of the first header with this name (case-insensitive); null when absent.
    QByteArray header(QByteArrayView name) const;
    bool hasHeader(QByteArrayView name) const;
    /// `rawPath` with its percent-escapes decoded.
    QString path() const;
};

/// What a route answers.
struct FakeResponse
{
    /// How the answer leaves the server.
    enum class Delivery {
        /// Written whole; the connection stays open for further requests.
        Complete,
        /// Written, then the connection is closed: with a `raw` answer shorter than its
        /// Content-Length, a server that goes away in the middle of the body.
        CloseAfterWriting,
        /// Nothing is ever written, and the connection stays open: a server that hangs.
        Never,
    };

    int status = 200;
    QByteArray body;
    /// Extra header lines; "Content-Type: application/json;charset=utf-8" is added unless one is
    /// given, "Content-Length" always.
    HeaderList headers;
    /// How long to wait before answering.
    std::chrono::milliseconds delay{0};
    /// Bytes written exactly as given instead of the status line, headers and body made from the
    /// fields above: for answers no well-behaved server gives.
    std::optional<QByteArray> raw = std::nullopt;
    Delivery delivery = Delivery::Complete;
    /// Further bytes after the answer, asked for piece by piece while the socket drains, until a
    /// piece is empty: a body of hundreds of megabytes without holding it in memory. The answer's
    /// headers (a `raw` answer) must announce its length.
    std::function<QByteArray()> morePieces = nullptr;

    static FakeResponse json(QByteArray body, int status = 200);
    static FakeResponse text(QByteArray body, int status = 200);
    static FakeResponse empty(int status);
    /// The bytes of `wire`, as they are.
    static FakeResponse rawBytes(QByteArray wire, Delivery delivery = Delivery::CloseAfterWriting);
    static FakeResponse never();
};

/// Values of the `{name}` placeholders of the route that matched.
using RouteParams = QHash<QString, QString>;

/// A small HTTP server on 127.0.0.1 that behaves like as much of Gitea as a test scripts. It keeps
/// every request byte for byte (the HTTP server library normalises what it hands over, so the
/// raw bytes are recorded from the socket as they arrive) and answers from scripted routes.
class FakeGiteaServer : public QAbstractHttpServer
{
    Q_OBJECT

public:
    using Handler = std::function<FakeResponse(const RecordedRequest &, const RouteParams &)>;

    explicit FakeGiteaServer(QObject *parent = nullptr);
    ~FakeGiteaServer() override;

    /// Starts listening on 127.0.0.1 on a free port.
    bool listen();
    quint16 port() const;
    /// "http://127.0.0.1:<port>".
    QUrl baseUrl() const;

    /// Answers `method` requests whose decoded path matches `pattern`. In a pattern, "{name}"
    /// stands for one path segment and "{name*}" for the rest of the path (slashes included).
    /// Routes added later win over earlier ones, so a test can override a default.
    void route(QByteArray method, const QString &pattern, FakeResponse response);
    void route(QByteArray method, const QString &pattern, Handler handler);
    void clearRoutes();

    /// Every answer waits at least this long before it leaves, as over a slow network.
    void setAnswerDelay(std::chrono::milliseconds delay) { m_answerDelay = delay; }
    /// How many connections the server accepted so far.
    int connectionCount() const;

    const QList<RecordedRequest> &requests() const { return m_requests; }
    /// The requests with this method and decoded path, in arrival order.
    QList<RecordedRequest> requests(QByteArrayView method, const QString &path) const;
    void clearRequests() { m_requests.clear(); }

signals:
    void requestRecorded(const kestrine::RecordedRequest &request);

protected:
    bool handleRequest(const QHttpServerRequest &request, QTcpSocket *socket) override;
    void missingHandler(const QHttpServerRequest &request, QTcpSocket *socket) override;

private:
    struct Route
    {
        QByteArray method;
        QRegularExpression pattern;
        QStringList names;
        Handler handler;
    };

    FakeResponse dispatch(const RecordedRequest &request) const;
    void respond(QTcpSocket *socket, const FakeResponse &response);
    void deliver(QTcpSocket *socket, const FakeResponse &response);

    class RawRecorder;
    RawRecorder *m_recorder;
    QList<Route> m_routes;
    QList<RecordedRequest> m_requests;
    std::chrono::milliseconds m_answerDelay{0};
};

/// The wire form of an answer: status line, headers, blank line, body; `raw` when it is set.
QByteArray serializeResponse(const FakeResponse &response);

} // namespace kestrine
