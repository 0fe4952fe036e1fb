#pragma once

#include <QByteArray>
#include <QNetworkReply>
#include <QString>
#include <exception>
#include <optional>

namespace kestrine {

/// The one error type of server access. Its description is what the log says; screens show it in
/// the user's language.
class APIError : public std::exception
{
public:
    enum class Kind {
        HttpStatus,
        Decoding,
        InvalidURL,
        InvalidResponse,
        Unauthorized,
        NotFound,
        MergeConflict,
    };

    static APIError httpStatus(int code, std::optional<QString> message = std::nullopt);
    static APIError decoding(QString description);
    static APIError invalidURL();
    static APIError invalidResponse();
    static APIError unauthorized();
    static APIError notFound();
    static APIError mergeConflict();

    Kind kind() const { return m_kind; }
    /// The HTTP status of an `HttpStatus` error, 0 otherwise.
    int statusCode() const { return m_statusCode; }
    /// The server's message of an `HttpStatus` error, if it sent one.
    const std::optional<QString> &serverMessage() const { return m_serverMessage; }
    /// The decoder's description of a `Decoding` error.
    const QString &decodingDescription() const { return m_decodingDescription; }

    /// In English, as the log has it.
    QString description() const;
    /// The same in the user's language, as screens and kestrine-cli show it.
    QString localizedDescription() const;
    const char *what() const noexcept override { return m_what.constData(); }

    bool operator==(const APIError &other) const;

private:
    QString describe(bool localized) const;

    explicit APIError(Kind kind, int statusCode = 0, std::optional<QString> serverMessage = {},
                      QString decodingDescription = {});

    Kind m_kind;
    int m_statusCode;
    std::optional<QString> m_serverMessage;
    QString m_decodingDescription;
    QByteArray m_what;
};

/// A failure of the network stack itself (no connection, timeout, TLS, cancellation), passed to
/// callers as it came and never written to the log by the client. Its message is Qt's, in English,
/// or one of the client's own (a timeout), which the user's language has words for.
class TransportError : public std::exception
{
public:
    TransportError(QNetworkReply::NetworkError code, QString message);

    QNetworkReply::NetworkError code() const { return m_code; }
    const QString &message() const { return m_message; }
    /// The request was abandoned because its screen went away: never shown, never logged.
    bool isCancellation() const { return m_code == QNetworkReply::OperationCanceledError; }

    QString description() const { return m_message; }
    /// The client's own messages in the user's language; Qt's as they are.
    QString localizedDescription() const;
    const char *what() const noexcept override { return m_what.constData(); }

private:
    QNetworkReply::NetworkError m_code;
    QString m_message;
    QByteArray m_what;
};

/// The description of a failure caught as `std::current_exception()`, in English, for the log: an
/// APIError's or TransportError's own text, or what any other exception says.
QString errorDescription(const std::exception_ptr &error);
/// The same in the user's language, for screens and kestrine-cli.
QString localizedErrorDescription(const std::exception_ptr &error);

/// Whether the failure is a request abandoned because its screen went away.
bool isCancellation(const std::exception_ptr &error);

} // namespace kestrine
