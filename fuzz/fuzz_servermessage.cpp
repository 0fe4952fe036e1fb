// The server's message in an error body, from any bytes, and the description built from it. The
// message exists exactly when the body is a JSON object whose values are all strings and that has
// "message"; the description follows the client's rule for the status taken from the first two
// bytes: 401 and 403 say authentication failed, 409 says the branch is out of date, otherwise
// "Server error (<code>): <message>" with a non-empty message, or "Server error (<code>).".

#include "fuzzsupport.h"
#include "requestcore_p.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace kestrine;
using namespace kestrine::fuzz;

namespace {

std::optional<QString> documentedMessage(const QByteArray &body)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isObject())
        return std::nullopt;
    const QVariantMap object = document.object().toVariantMap();
    for (const QVariant &value : object) {
        if (value.typeId() != QMetaType::QString)
            return std::nullopt;
    }
    if (!object.contains(QStringLiteral("message")))
        return std::nullopt;
    return object.value(QStringLiteral("message")).toString();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    int status = 500;
    if (size >= 2) {
        status = 100 + (data[0] << 8 | data[1]) % 500;
        data += 2;
        size -= 2;
    }
    const QByteArray body = bytes(data, size);
    const std::optional<QString> message = http::serverMessage(body);
    check(message == documentedMessage(body), "the message is found exactly as documented",
          QString::fromUtf8(body));

    const QString description = APIError::httpStatus(status, message).description();
    QString expected;
    if (status == 401 || status == 403)
        expected = QStringLiteral("Authentication failed. Check your token.");
    else if (status == 409)
        expected = QStringLiteral("This branch is out of date or conflicts with the base branch. "
                                  "Update the branch and try again.");
    else if (message && !message->isEmpty())
        expected = QStringLiteral("Server error (") + QString::number(status) +
                   QStringLiteral("): ") + *message;
    else
        expected =
            QStringLiteral("Server error (") + QString::number(status) + QStringLiteral(").");
    check(description == expected, "the description follows the status rule", description);
    return 0;
}
