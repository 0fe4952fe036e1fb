#include "requestcore_p.h"

#include <QCoroNetworkReply>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkReply>
#include <memory>

namespace kestrine::http {
namespace {

const QString arrow = QStringLiteral(" \u2192 ");

QByteArray percentEncoded(const QString &text)
{
    // Everything but the unreserved characters, so that blanks, "&", "=", "+" and "#" in a name
    // or value reach the server as data and not as query syntax.
    return QUrl::toPercentEncoding(text);
}

/// Reply codes that QNetworkReply derives from an HTTP status it did receive. Those answers are
/// mapped by their status; every other error means no complete HTTP answer arrived.
bool isHttpStatusError(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::NoError:
    case QNetworkReply::ContentAccessDenied:
    case QNetworkReply::ContentOperationNotPermittedError:
    case QNetworkReply::ContentNotFoundError:
    case QNetworkReply::AuthenticationRequiredError:
    case QNetworkReply::ContentReSendError:
    case QNetworkReply::ContentConflictError:
    case QNetworkReply::ContentGoneError:
    case QNetworkReply::UnknownContentError:
    case QNetworkReply::ProtocolInvalidOperationError:
    case QNetworkReply::InternalServerError:
    case QNetworkReply::OperationNotImplementedError:
    case QNetworkReply::ServiceUnavailableError:
    case QNetworkReply::UnknownServerError:
        return true;
    default:
        return false;
    }
}

constexpr const char *cancelledByScopeProperty = "kestrineCancelledByScope";

struct DeleteLater
{
    void operator()(QObject *object) const { object->deleteLater(); }
};

void writeLog(const GiteaClient &client, LogLevel level, const QString &line)
{
    if (client.log())
        client.log()->log(level, line);
}

} // namespace

QUrl requestURL(const QUrl &instanceURL, const QString &path,
                const std::optional<QueryItems> &query)
{
    QUrl url = instanceURL;
    QString basePath = url.path(QUrl::FullyEncoded);
    if (!basePath.endsWith(u'/'))
        basePath += u'/';
    // Tolerant mode escapes what a path cannot hold (blanks, "#", "?") and keeps escapes that are
    // already there, so a path segment that was percent-encoded by its caller is encoded once.
    url.setPath(basePath + QStringLiteral("api/v1/") + path, QUrl::TolerantMode);

    if (query && !query->isEmpty()) {
        QByteArray encoded = url.query(QUrl::FullyEncoded).toUtf8();
        for (const auto &[name, value] : *query) {
            if (!encoded.isEmpty())
                encoded += '&';
            encoded += percentEncoded(name) + '=' + percentEncoded(value);
        }
        url.setQuery(QString::fromLatin1(encoded), QUrl::StrictMode);
    }
    return url;
}

QNetworkRequest buildRequest(const GiteaClient &client, const QString &path,
                             const std::optional<QueryItems> &query, bool hasBody)
{
    QNetworkRequest request(requestURL(client.instanceURL(), path, query));
    request.setRawHeader(QByteArrayLiteral("Authorization"),
                         QByteArrayLiteral("token ") + client.token().toUtf8());
    request.setRawHeader(QByteArrayLiteral("Accept"), QByteArrayLiteral("application/json"));
    request.setHeader(QNetworkRequest::UserAgentHeader,
                      QByteArrayLiteral("Kestrine/" KESTRINE_VERSION));
    request.setTransferTimeout(static_cast<int>(client.timeout().count()));
    // The token must never follow a redirect to another scheme, host or port.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::SameOriginRedirectPolicy);
    if (hasBody)
        request.setHeader(QNetworkRequest::ContentTypeHeader,
                          QByteArrayLiteral("application/json"));
    return request;
}

std::optional<QString> serverMessage(const QByteArray &body)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isObject())
        return std::nullopt;
    const QJsonObject object = document.object();
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        if (!it->isString())
            return std::nullopt;
    }
    const auto message = object.constFind(QLatin1StringView("message"));
    if (message == object.constEnd())
        return std::nullopt;
    return message->toString();
}

QString withoutToken(QString text, const QString &token)
{
    // A text shorter than a real token (Gitea's are 40 characters) cannot be told from ordinary
    // words: masking a one-letter test token would garble every message and protect nothing.
    constexpr qsizetype shortestMaskedToken = 8;
    if (token.size() >= shortestMaskedToken)
        text.replace(token, QStringLiteral("[token]"));
    return text;
}

QByteArray Response::header(QByteArrayView name) const
{
    for (const auto &[headerName, value] : headers) {
        if (name.compare(headerName, Qt::CaseInsensitive) == 0)
            return value;
    }
    return {};
}

QCoro::Task<QByteArray> request(GiteaClient client, QString path, QByteArray method,
                                std::optional<QueryItems> query, std::optional<QByteArray> body)
{
    const Response response = co_await exchange(
        std::move(client), std::move(path), std::move(method), std::move(query), std::move(body));
    co_return response.body;
}

QCoro::Task<Response> exchange(GiteaClient client, QString path, QByteArray method,
                               std::optional<QueryItems> query, std::optional<QByteArray> body)
{
    if (client.isCancelled())
        throw TransportError(QNetworkReply::OperationCanceledError,
                             QStringLiteral("Operation canceled"));
    HttpSession *session = client.session();
    if (!session)
        throw TransportError(
            QNetworkReply::UnknownNetworkError,
            QStringLiteral(QT_TRANSLATE_NOOP("TransportError", "The HTTP session is gone.")));

    const QNetworkRequest networkRequest = buildRequest(client, path, query, body.has_value());
    std::unique_ptr<QNetworkReply, DeleteLater> reply(session->send(networkRequest, method, body));

    // A reply stopped by its transfer timeout reports the same code as one we abort on purpose,
    // so the abort marks the reply to tell the two apart.
    if (QObject *scope = client.cancellationScope()) {
        QObject::connect(scope, &QObject::destroyed, reply.get(), [replyPointer = reply.get()] {
            replyPointer->setProperty(cancelledByScopeProperty, true);
            replyPointer->abort();
        });
    }

    co_await qCoro(reply.get()).waitForFinished();

    const QString logPrefix = QString::fromLatin1(method) + u' ' + path + arrow;
    const QVariant statusAttribute = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    const QNetworkReply::NetworkError error = reply->error();

    if (!statusAttribute.isValid() || !isHttpStatusError(error)) {
        if (error == QNetworkReply::OperationCanceledError &&
            !reply->property(cancelledByScopeProperty).toBool())
            throw TransportError(
                QNetworkReply::TimeoutError,
                QStringLiteral(QT_TRANSLATE_NOOP("TransportError", "The request timed out.")));
        if (error != QNetworkReply::NoError)
            throw TransportError(error, reply->errorString());
        writeLog(client, LogLevel::Error, logPrefix + QStringLiteral("invalid response"));
        throw APIError::invalidResponse();
    }

    const int status = statusAttribute.toInt();
    const QByteArray responseBody = reply->readAll();
    if (status >= 200 && status <= 299) {
        writeLog(client, LogLevel::Info, logPrefix + QString::number(status));
        // Qt joins repeated headers of one name with ", ", the list form a "Link" header takes.
        co_return Response{responseBody, reply->url(), reply->rawHeaderPairs()};
    }
    if (status == 401 || status == 403) {
        writeLog(client, LogLevel::Error,
                 logPrefix + QString::number(status) + QStringLiteral(" unauthorized"));
        throw APIError::unauthorized();
    }
    if (status == 404) {
        writeLog(client, LogLevel::Error, logPrefix + QStringLiteral("404 not found"));
        throw APIError::notFound();
    }
    if (status == 409) {
        writeLog(client, LogLevel::Warn, logPrefix + QStringLiteral("409 conflict"));
        throw APIError::mergeConflict();
    }
    std::optional<QString> message = serverMessage(responseBody);
    if (message)
        message = withoutToken(*message, client.token());
    // Without a message the line ends in the blank after the status, as it always has.
    writeLog(client, LogLevel::Error,
             logPrefix + QString::number(status) + u' ' + message.value_or(QString()));
    throw APIError::httpStatus(status, message);
}

} // namespace kestrine::http
