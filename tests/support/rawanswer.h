#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <algorithm>

namespace kestrine::testing {

/// What a server answered to a request a test sent by hand: status, body and headers as they
/// came.
struct RawAnswer
{
    int status = 0;
    QByteArray body;
    QList<QNetworkReply::RawHeaderPair> headers;

    /// The finished reply's answer.
    static RawAnswer of(QNetworkReply &reply)
    {
        return {reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), reply.readAll(),
                reply.rawHeaderPairs()};
    }

    /// The value of the header `name` (case-insensitive); null when absent.
    QByteArray header(const QByteArray &name) const
    {
        for (const auto &[key, value] : headers) {
            if (key.compare(name, Qt::CaseInsensitive) == 0)
                return value;
        }
        return {};
    }
    bool hasHeader(const QByteArray &name) const
    {
        return std::any_of(headers.begin(), headers.end(), [&name](const auto &header) {
            return header.first.compare(name, Qt::CaseInsensitive) == 0;
        });
    }
    QJsonObject object() const { return QJsonDocument::fromJson(body).object(); }
    QJsonArray array() const { return QJsonDocument::fromJson(body).array(); }
    QString message() const { return object().value(QStringLiteral("message")).toString(); }
};

} // namespace kestrine::testing
