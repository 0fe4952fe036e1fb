#pragma once

#include "giteahttpserver.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <chrono>
#include <functional>
#include <optional>

namespace kestrine {

/// A request as the fake server kept it: byte for byte as it arrived on the wire.
using RecordedRequest = HttpRequest;

/// What a scripted route answers: an answer as the demo's server gives it, or one that no
/// well-behaved server gives.
struct FakeResponse : HttpAnswer
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

    /// How long after the request arrived the answer leaves (at once when making it took longer).
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

/// The demo's Gitea server as tests script it: it keeps every request byte for byte (the HTTP
/// server library normalises what it hands over, so the raw bytes are read from the socket as
/// they arrive), counts connections, and its scripted routes may answer late, with bytes of their
/// own, piece by piece or never.
class FakeGiteaServer : public GiteaHttpServer
{
    Q_OBJECT

public:
    using Handler = std::function<FakeResponse(const RecordedRequest &, const RouteParams &)>;

    explicit FakeGiteaServer(QObject *parent = nullptr);
    ~FakeGiteaServer() override;

    /// Like GiteaHttpServer::route(), with the faults of a FakeResponse.
    void route(QByteArray method, const QString &pattern, FakeResponse response);
    void route(QByteArray method, const QString &pattern, Handler handler);

    /// Every answer leaves at least this long after its request arrived, as over a slow network.
    /// The time the server spends making an answer counts towards it, as it would on a server
    /// of its own: a hundred requests arriving together are answered together.
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
    QTcpServer *makeListener() override;
    HttpRequest received(const QHttpServerRequest &request, QTcpSocket *socket) override;
    void answer(QTcpSocket *socket, const HttpRequest &request) override;

private:
    void respond(QTcpSocket *socket, const FakeResponse &response,
                 std::chrono::milliseconds sinceArrival);
    void deliver(QTcpSocket *socket, const FakeResponse &response);

    class RawRecorder;
    RawRecorder *m_recorder;
    QList<RecordedRequest> m_requests;
    /// The route table is the demo server's, which hands on plain answers: a scripted route
    /// leaves its whole response here, for answer() to deliver with its faults.
    std::optional<FakeResponse> m_scripted;
    std::chrono::milliseconds m_answerDelay{0};
};

/// The wire form of an answer: `raw` when it is set, else status line, headers, blank line, body.
QByteArray serializeResponse(const FakeResponse &response);

} // namespace kestrine
