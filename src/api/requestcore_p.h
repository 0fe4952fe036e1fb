#pragma once

// How GiteaClient forms a request, maps the answer and decodes it. Not part of the API layer's
// public surface: the rest of the app calls the client's endpoint operations only.

#include "apierror.h"
#include "giteaclient.h"
#include "jsoncodec.h"

#include <QByteArray>
#include <QCoroTask>
#include <QList>
#include <QNetworkRequest>
#include <QString>
#include <QUrl>
#include <optional>
#include <utility>

namespace kestrine::http {

using QueryItems = QList<std::pair<QString, QString>>;

/// instance URL + "api/v1" + `path`, then the query items in order (none: no "?").
QUrl requestURL(const QUrl &instanceURL, const QString &path,
                const std::optional<QueryItems> &query);

/// The request with every header the client sends.
QNetworkRequest buildRequest(const GiteaClient &client, const QString &path,
                             const std::optional<QueryItems> &query, bool hasBody);

/// The server's message from an error body: a JSON object whose values are all strings and that
/// has the key "message". Anything else has no message.
std::optional<QString> serverMessage(const QByteArray &body);

/// `text` from a server's answer with every occurrence of `token` replaced by "[token]". A server
/// (or a proxy's error page) may echo the request's headers back; what the client makes of its
/// answer goes to the log, which the user shares, and to the screen, so it never carries the
/// token. Tokens shorter than 8 characters are left alone: they are no secret worth the name, and
/// masking them would garble ordinary words ("t" in "not allowed").
QString withoutToken(QString text, const QString &token);

/// A 2xx answer.
struct Response
{
    QByteArray body;
    /// Where the answer came from, after any redirect followed: the base of relative links.
    QUrl url;
    QList<std::pair<QByteArray, QByteArray>> headers;

    /// The value of the header `name` (case-insensitive); null when absent.
    QByteArray header(QByteArrayView name) const;
};

/// Sends one request and answers the 2xx response. Fails with APIError for every other
/// HTTP outcome (after writing its log line) and with TransportError, unlogged, when no HTTP
/// answer arrived. `path` has no leading "/" and is logged as given.
QCoro::Task<Response> exchange(GiteaClient client, QString path, QByteArray method,
                               std::optional<QueryItems> query = std::nullopt,
                               std::optional<QByteArray> body = std::nullopt);

/// exchange(), for callers that need only the body.
QCoro::Task<QByteArray> request(GiteaClient client, QString path, QByteArray method,
                                std::optional<QueryItems> query = std::nullopt,
                                std::optional<QByteArray> body = std::nullopt);

/// The body decoded as `T`; a decoding failure becomes APIError::decoding, whose description
/// (which may quote the body, e.g. an undecodable date) never carries `token`.
template <class T>
T decodeBody(const QByteArray &bytes, const QString &token)
{
    try {
        return decodeJson<T>(bytes);
    } catch (const DecodeError &error) {
        throw APIError::decoding(withoutToken(error.description(), token));
    }
}

/// GET `path` and decode the body as `T`. Logs nothing beyond the request's own line.
template <class T>
QCoro::Task<T> get(GiteaClient client, QString path, std::optional<QueryItems> query = std::nullopt)
{
    const QString token = client.token();
    const QByteArray bytes = co_await request(std::move(client), std::move(path),
                                              QByteArrayLiteral("GET"), std::move(query));
    co_return decodeBody<T>(bytes, token);
}

} // namespace kestrine::http
