#include "apierror.h"

#include <QCoreApplication>

namespace kestrine {
namespace {

// The texts in English; the log keeps them so, screens translate them (APIError context).
const char *const authenticationFailedText =
    QT_TRANSLATE_NOOP("APIError", "Authentication failed. Check your token.");
const char *const mergeConflictText =
    QT_TRANSLATE_NOOP("APIError", "This branch is out of date or conflicts with the base branch. "
                                  "Update the branch and try again.");

/// `source` in English, or in the user's language.
QString wording(const char *source, bool localized, const char *context = "APIError")
{
    return localized ? QCoreApplication::translate(context, source) : QString::fromUtf8(source);
}

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
    return describe(false);
}

QString APIError::localizedDescription() const
{
    return describe(true);
}

QString APIError::describe(bool localized) const
{
    const auto say = [localized](const char *source) {
        return wording(source, localized);
    };
    switch (m_kind) {
    case Kind::HttpStatus:
        // 401, 403 and 409 never arrive here from the client, which maps them to their own
        // cases; the texts stay as a safety net for anyone building the error by hand.
        if (m_statusCode == 401 || m_statusCode == 403)
            return say(authenticationFailedText);
        if (m_statusCode == 409)
            return say(mergeConflictText);
        // The server's message is the server's words: never translated.
        if (m_serverMessage && !m_serverMessage->isEmpty())
            return say(QT_TRANSLATE_NOOP("APIError", "Server error (%1): %2"))
                .arg(QString::number(m_statusCode), *m_serverMessage);
        return say(QT_TRANSLATE_NOOP("APIError", "Server error (%1).")).arg(m_statusCode);
    case Kind::Decoding:
        // The decoder's description names keys and types of the server's JSON: it stays as is.
        return say(QT_TRANSLATE_NOOP("APIError", "Could not parse the server response: %1"))
            .arg(m_decodingDescription);
    case Kind::InvalidURL:
        return say(QT_TRANSLATE_NOOP("APIError", "The instance URL is invalid."));
    case Kind::InvalidResponse:
        return say(QT_TRANSLATE_NOOP("APIError", "The server returned an invalid response."));
    case Kind::Unauthorized:
        return say(authenticationFailedText);
    case Kind::NotFound:
        return say(QT_TRANSLATE_NOOP("APIError", "Not found."));
    case Kind::MergeConflict:
        return say(mergeConflictText);
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

QString TransportError::localizedDescription() const
{
    // The client's own messages are marked for translation where they are made; Qt's are not in
    // the catalogue and come back as they are.
    return QCoreApplication::translate("TransportError", m_message.toUtf8().constData());
}

namespace {

QString describeError(const std::exception_ptr &error, bool localized)
{
    try {
        std::rethrow_exception(error);
    } catch (const APIError &apiError) {
        return localized ? apiError.localizedDescription() : apiError.description();
    } catch (const TransportError &transportError) {
        return localized ? transportError.localizedDescription() : transportError.description();
    } catch (const std::exception &other) {
        return QString::fromUtf8(other.what());
    } catch (...) {
    }
    return wording(QT_TRANSLATE_NOOP("APIError", "Unknown error."), localized);
}

} // namespace

QString errorDescription(const std::exception_ptr &error)
{
    return describeError(error, false);
}

QString localizedErrorDescription(const std::exception_ptr &error)
{
    return describeError(error, true);
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
