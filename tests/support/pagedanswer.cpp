#include "pagedanswer.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QUrlQuery>

namespace kestrine::testing {

FakeGiteaServer::Handler pagedAnswer(QJsonArray items, int pageSize, NextLink nextLink,
                                     int failingPage)
{
    return [items = std::move(items), pageSize, nextLink = std::move(nextLink),
            failingPage](const RecordedRequest &request, const RouteParams &) {
        const QUrlQuery query(QString::fromLatin1(request.rawQuery));
        const int page = std::max(1, query.queryItemValue(QStringLiteral("page")).toInt());
        if (page == failingPage)
            return FakeResponse::json(R"({"message":"boom"})", 500);
        const qsizetype first = qsizetype(page - 1) * pageSize;
        QJsonArray slice;
        for (qsizetype i = first; i < std::min(items.size(), first + pageSize); ++i)
            slice.append(items.at(i));
        FakeResponse response =
            FakeResponse::json(QJsonDocument(slice).toJson(QJsonDocument::Compact));
        if (first + pageSize < items.size())
            response.headers.append({QByteArrayLiteral("Link"), nextLink(request, page + 1)});
        response.headers.append(
            {QByteArrayLiteral("X-Total-Count"), QByteArray::number(items.size())});
        return response;
    };
}

FakeGiteaServer::Handler pagedAnswer(QJsonArray items, int pageSize, QByteArray linkRoot,
                                     int failingPage)
{
    return pagedAnswer(
        std::move(items), pageSize,
        [linkRoot = std::move(linkRoot)](const RecordedRequest &request, int nextPage) {
            return '<' + linkRoot + request.rawPath + "?page=" + QByteArray::number(nextPage) +
                   ">; rel=\"next\"";
        },
        failingPage);
}

QJsonArray numberedFiles(int count, int first)
{
    QJsonArray files;
    for (int i = first; i < first + count; ++i) {
        files.append(QJsonObject{{QStringLiteral("filename"), QStringLiteral("file-%1.txt").arg(i)},
                                 {QStringLiteral("status"), QStringLiteral("changed")},
                                 {QStringLiteral("additions"), i},
                                 {QStringLiteral("deletions"), 0}});
    }
    return files;
}

} // namespace kestrine::testing
