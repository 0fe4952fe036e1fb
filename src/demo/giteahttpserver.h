#pragma once

#include <QAbstractHttpServer>
#include <QByteArray>
#include <QHash>
#include <QList>
#include <QRegularExpression>
#include <QString>
#include <QUrl>
#include <functional>
#include <utility>

class QTcpServer;

namespace kestrine {

using HeaderList = QList<std::pair<QByteArray, QByteArray>>;

/// One request as the server received it.
struct HttpRequest
{
    QByteArray method;
    /// The request target, e.g. "/gitea/api/v1/repos/a/b/pulls?state=open".
    QByteArray target;
    /// The target up to "?", percent-encoded.
    QByteArray rawPath;
    /// The target after "?"; empty when there was no "?".
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
struct HttpAnswer
{
    int status = 200;
    QByteArray body;
    /// Extra header lines; "Content-Type: application/json;charset=utf-8" is added unless one is
    /// given, "Content-Length" always.
    HeaderList headers;

    static HttpAnswer json(QByteArray body, int status = 200);
    static HttpAnswer text(QByteArray body, int status = 200);
    static HttpAnswer empty(int status);

    /// The wire form: status line, headers, blank line, body.
    QByteArray wire() const;
};

/// Values of the `{name}` placeholders of the route that matched.
using RouteParams = QHash<QString, QString>;

/// A small HTTP server on 127.0.0.1 that answers from routes, with Gitea's own 404 and 405 for
/// what no route answers. The Gitea simulation installs its API on one; the demo instance is one.
class GiteaHttpServer : public QAbstractHttpServer
{
    Q_OBJECT

public:
    using Handler = std::function<HttpAnswer(const HttpRequest &, const RouteParams &)>;

    explicit GiteaHttpServer(QObject *parent = nullptr);
    ~GiteaHttpServer() override;

    /// Starts listening on 127.0.0.1 on a free port.
    bool listen();
    quint16 port() const;
    /// "http://127.0.0.1:<port>".
    QUrl baseUrl() const;

    /// Answers `method` requests whose decoded path matches `pattern`. In a pattern, "{name}"
    /// stands for one path segment and "{name*}" for the rest of the path (slashes included).
    /// Routes added later win over earlier ones, so one can override another.
    void route(QByteArray method, const QString &pattern, Handler handler);
    void clearRoutes();

protected:
    /// The socket server the connections arrive on; listen() asks for it once.
    virtual QTcpServer *makeListener();
    /// The request as the HTTP server library parsed it.
    virtual HttpRequest received(const QHttpServerRequest &request, QTcpSocket *socket);
    /// Writes the answer of the route that matches `request`.
    virtual void answer(QTcpSocket *socket, const HttpRequest &request);
    /// The answer of the newest route that matches `request`, else Gitea's 405 or 404.
    HttpAnswer dispatch(const HttpRequest &request) const;

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

    QTcpServer *m_listener = nullptr;
    QList<Route> m_routes;
};

} // namespace kestrine
