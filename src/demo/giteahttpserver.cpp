#include "giteahttpserver.h"

#include <QHostAddress>
#include <QHttpServerRequest>
#include <QMetaEnum>
#include <QTcpServer>
#include <QTcpSocket>

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

QByteArray HttpRequest::header(QByteArrayView name) const
{
    for (const auto &[key, value] : headers) {
        if (QByteArrayView(key).compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return {};
}

bool HttpRequest::hasHeader(QByteArrayView name) const
{
    for (const auto &header : headers) {
        if (QByteArrayView(header.first).compare(name, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

QString HttpRequest::path() const
{
    return QUrl::fromPercentEncoding(rawPath);
}

HttpAnswer HttpAnswer::json(QByteArray body, int status)
{
    return HttpAnswer{status, std::move(body), {}};
}

HttpAnswer HttpAnswer::text(QByteArray body, int status)
{
    return HttpAnswer{status, std::move(body), {{"Content-Type", "text/plain;charset=utf-8"}}};
}

HttpAnswer HttpAnswer::empty(int status)
{
    return HttpAnswer{status, {}, {}};
}

QByteArray HttpAnswer::wire() const
{
    QByteArray wire =
        "HTTP/1.1 " + QByteArray::number(status) + ' ' + reasonPhrase(status) + "\r\n";
    bool hasContentType = false;
    for (const auto &[name, value] : headers) {
        hasContentType |= name.compare("content-type", Qt::CaseInsensitive) == 0;
        wire += name + ": " + value + "\r\n";
    }
    const bool withBody = hasBodyAllowed(status);
    if (!hasContentType && withBody)
        wire += "Content-Type: application/json;charset=utf-8\r\n";
    if (withBody)
        wire += "Content-Length: " + QByteArray::number(body.size()) + "\r\n";
    wire += "\r\n";
    if (withBody)
        wire += body;
    return wire;
}

GiteaHttpServer::GiteaHttpServer(QObject *parent)
    : QAbstractHttpServer(parent)
{}

GiteaHttpServer::~GiteaHttpServer() = default;

bool GiteaHttpServer::listen()
{
    if (!m_listener)
        m_listener = makeListener();
    if (!m_listener->listen(QHostAddress::LocalHost, 0))
        return false;
    bind(m_listener);
    return true;
}

QTcpServer *GiteaHttpServer::makeListener()
{
    return new QTcpServer(this);
}

quint16 GiteaHttpServer::port() const
{
    return m_listener ? m_listener->serverPort() : 0;
}

QUrl GiteaHttpServer::baseUrl() const
{
    QUrl url;
    url.setScheme(QStringLiteral("http"));
    url.setHost(QStringLiteral("127.0.0.1"));
    url.setPort(port());
    return url;
}

void GiteaHttpServer::route(QByteArray method, const QString &pattern, Handler handler)
{
    Route route;
    route.method = std::move(method);
    route.pattern = compilePattern(pattern, &route.names);
    route.handler = std::move(handler);
    m_routes.append(std::move(route));
}

void GiteaHttpServer::clearRoutes()
{
    m_routes.clear();
}

HttpAnswer GiteaHttpServer::dispatch(const HttpRequest &request) const
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
        return HttpAnswer::json(R"({"message":"method not allowed"})", 405);
    return HttpAnswer::json(R"({"message":"not found"})", 404);
}

HttpRequest GiteaHttpServer::received(const QHttpServerRequest &request, QTcpSocket *)
{
    HttpRequest received;
    received.method = QByteArray(QMetaEnum::fromType<QHttpServerRequest::Method>().valueToKey(
                                     int(request.method())))
                          .toUpper();
    received.target = request.url().toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority);
    received.rawPath = request.url().path(QUrl::FullyEncoded).toUtf8();
    received.rawQuery = request.url().query(QUrl::FullyEncoded).toUtf8();
    received.hasQuery = request.url().hasQuery();
    received.headers = request.headers();
    received.body = request.body();
    return received;
}

void GiteaHttpServer::answer(QTcpSocket *socket, const HttpRequest &request)
{
    socket->write(dispatch(request).wire());
}

bool GiteaHttpServer::handleRequest(const QHttpServerRequest &request, QTcpSocket *socket)
{
    answer(socket, received(request, socket));
    return true;
}

void GiteaHttpServer::missingHandler(const QHttpServerRequest &, QTcpSocket *socket)
{
    socket->write(HttpAnswer::json(R"({"message":"not found"})", 404).wire());
}

} // namespace kestrine
