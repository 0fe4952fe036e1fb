#include "apierror.h"

namespace kestrine {
namespace {

const QString authenticationFailedText = QStringLiteral("Authentication failed. Check your token.");
const QString mergeConflictText =
    QStringLiteral("This branch is out of date or conflicts with the base branch. Update the "
                   "branch and try again.");

} // namespace

APIError::APIError(Kind kind, int statusCode, std::optional<QString> serverMessage,
                   QString decodingDescription)
    : m_kind(kind)
    , m_statusCode(statusCode)
    , m_serverMessage(std::move(serverMessage))
    , m_decodingDescription(std::move(decodingDescription))
    , m_what(description().toUtf8())
{}

APIError APIError::httpStatus(int code, std::optional<QString> message)
{
    return APIError(Kind::HttpStatus, code, std::move(message));
}

APIError APIError::decoding(QString description)
{
    return APIError(Kind::Decoding, 0, std::nullopt, std::move(description));
}

APIError APIError::invalidURL()
{
    return APIError(Kind::InvalidURL);
}

APIError APIError::invalidResponse()
{
    return APIError(Kind::InvalidResponse);
}

APIError APIError::unauthorized()
{
    return APIError(Kind::Unauthorized);
}

APIError APIError::notFound()
{
    return APIError(Kind::NotFound);
}

APIError APIError::mergeConflict()
{
    return APIError(Kind::MergeConflict);
}

QString APIError::description() const
{
    switch (m_kind) {
    case Kind::HttpStatus:
        // 401, 403 and 409 never arrive here from the client, which maps them to their own
        // cases; the texts stay as a safety net for anyone building the error by hand.
        if (m_statusCode == 401 || m_statusCode == 403)
            return authenticationFailedText;
        if (m_statusCode == 409)
            return mergeConflictText;
        if (m_serverMessage && !m_serverMessage->isEmpty())
            return QStringLiteral("Server error (%1): %2")
                .arg(QString::number(m_statusCode), *m_serverMessage);
        return QStringLiteral("Server error (%1).").arg(m_statusCode);
    case Kind::Decoding:
        return QStringLiteral("Could not parse the server response: ") + m_decodingDescription;
    case Kind::InvalidURL:
        return QStringLiteral("The instance URL is invalid.");
    case Kind::InvalidResponse:
        return QStringLiteral("The server returned an invalid response.");
    case Kind::Unauthorized:
        return authenticationFailedText;
    case Kind::NotFound:
        return QStringLiteral("Not found.");
    case Kind::MergeConflict:
        return mergeConflictText;
    }
    return {};
}

bool APIError::operator==(const APIError &other) const
{
    return m_kind == other.m_kind && m_statusCode == other.m_statusCode &&
           m_serverMessage == other.m_serverMessage &&
           m_decodingDescription == other.m_decodingDescription;
}

TransportError::TransportError(QNetworkReply::NetworkError code, QString message)
    : m_code(code)
    , m_message(std::move(message))
    , m_what(m_message.toUtf8())
{}

QString errorDescription(const std::exception_ptr &error)
{
    try {
        std::rethrow_exception(error);
    } catch (const APIError &apiError) {
        return apiError.description();
    } catch (const TransportError &transportError) {
        return transportError.description();
    } catch (const std::exception &other) {
        return QString::fromUtf8(other.what());
    } catch (...) {
    }
    return QStringLiteral("Unknown error.");
}

bool isCancellation(const std::exception_ptr &error)
{
    try {
        std::rethrow_exception(error);
    } catch (const TransportError &transportError) {
        return transportError.isCancellation();
    } catch (...) {
    }
    return false;
}

} // namespace kestrine
