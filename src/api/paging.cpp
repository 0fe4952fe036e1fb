#include "paging_p.h"
#include "requestcore_p.h"
#include "weblinks.h"

#include <QUrlQuery>

namespace kestrine::http {
namespace {

/// The page to ask for next: its number and, when the server's link names one, its size.
struct NextPage
{
    qint64 number = 0;
    std::optional<qint64> limit;
};

/// A whole number above zero written in plain digits; nothing for anything else.
std::optional<qint64> positiveNumber(QStringView text)
{
    if (text.isEmpty() || text.size() > 18)
        return std::nullopt;
    for (const QChar c : text) {
        if (c < u'0' || c > u'9')
            return std::nullopt;
    }
    const qint64 value = text.toLongLong();
    return value > 0 ? std::optional(value) : std::nullopt;
}

/// The list's size as the server announced it: its "X-Total-Count" header, else the total its
/// body carried.
std::optional<qint64> announcedTotal(const Response &response, const PageContent &content)
{
    if (!response.header("X-Total-Count").isNull())
        return totalCountHeader(response);
    return content.total;
}

/// Only the page number and size are taken from a link: Gitea writes its links with its
/// configured root URL, which may name a host the user never reached it by, and the token goes
/// only to the instance the user configured.
std::optional<NextPage> linkedPage(const QUrl &target, qint64 currentPage)
{
    const QUrlQuery query(target);
    const std::optional<qint64> number =
        positiveNumber(query.queryItemValue(QStringLiteral("page"), QUrl::FullyDecoded));
    // A "next" that does not move forward would ask for the same items again.
    if (!number || *number <= currentPage)
        return std::nullopt;
    return NextPage{
        *number, positiveNumber(query.queryItemValue(QStringLiteral("limit"), QUrl::FullyDecoded))};
}

std::optional<NextPage> nextPage(const Response &response, qint64 currentPage,
                                 const PageContent &content, qsizetype received)
{
    const QList<WebLink> links = parseLinkHeader(response.header("Link"), response.url);
    if (!links.isEmpty()) {
        // A server that links its pages says where the list ends: on a page without "next".
        const std::optional<QUrl> next = linkTarget(links, QStringLiteral("next"));
        return next ? linkedPage(*next, currentPage) : std::nullopt;
    }
    // Some lists carry only a count (Gitea's reviews; a run's jobs before the newer servers).
    const std::optional<qint64> total = announcedTotal(response, content);
    if (total && received < *total && content.items > 0)
        return NextPage{currentPage + 1, std::nullopt};
    return std::nullopt;
}

} // namespace

std::optional<qint64> totalCountHeader(const Response &response)
{
    return positiveNumber(QString::fromLatin1(response.header("X-Total-Count").trimmed()));
}

QCoro::Task<std::optional<ListCut>> getPages(GiteaClient client, QString path, PageReader read)
{
    Response response = co_await exchange(client, path, QByteArrayLiteral("GET"));
    qint64 page = 1;
    qsizetype received = 0;
    for (int requests = 1;; ++requests) {
        const PageContent content = read(response.body);
        received += content.items;
        const std::optional<NextPage> next = nextPage(response, page, content, received);
        if (!next)
            co_return std::nullopt;
        if (requests >= GiteaClient::maxListPages)
            co_return ListCut{received, announcedTotal(response, content)};

        QueryItems query{{QStringLiteral("page"), QString::number(next->number)}};
        if (next->limit)
            query.append({QStringLiteral("limit"), QString::number(*next->limit)});
        response = co_await exchange(client, path, QByteArrayLiteral("GET"), std::move(query));
        page = next->number;
    }
}

} // namespace kestrine::http
