#include "giteapaging.h"

#include <algorithm>
#include <map>

namespace kestrine::sim {
namespace {

int formInt(const QUrlQuery &query, const QString &key)
{
    // Gitea reads a form number with strconv.Atoi: anything that is not a number is 0.
    bool ok = false;
    const int value = query.queryItemValue(key, QUrl::FullyDecoded).toInt(&ok);
    return ok ? value : 0;
}

/// A query as Go's url.Values holds it: decoded keys, in byte order, each with its values.
using GoValues = std::map<QByteArray, QList<QByteArray>>;

QByteArray goUnescape(QByteArray text)
{
    return QByteArray::fromPercentEncoding(text.replace('+', ' '));
}

GoValues parseGoQuery(const QByteArray &rawQuery)
{
    GoValues values;
    for (const QByteArray &pair : rawQuery.split('&')) {
        if (pair.isEmpty())
            continue;
        const qsizetype equals = pair.indexOf('=');
        const QByteArray key = goUnescape(equals < 0 ? pair : pair.left(equals));
        values[key].append(equals < 0 ? QByteArray() : goUnescape(pair.mid(equals + 1)));
    }
    return values;
}

QByteArray goQueryEscape(const QByteArray &text)
{
    return text.toPercentEncoding().replace("%20", "+");
}

/// url.Values.Encode: keys sorted, "k=v" pairs joined by "&".
QByteArray encodeGoQuery(const GoValues &values)
{
    QList<QByteArray> pairs;
    for (const auto &[key, list] : values) {
        for (const QByteArray &value : list)
            pairs.append(goQueryEscape(key) + '=' + goQueryEscape(value));
    }
    return pairs.join('&');
}

} // namespace

Page Page::fromQuery(const QUrlQuery &query, int defaultSize, int maxSize)
{
    Page page;
    page.number = std::max(formInt(query, QStringLiteral("page")), 1);
    const int limit = formInt(query, QStringLiteral("limit"));
    page.size = limit <= 0 ? defaultSize : std::min(limit, maxSize);
    return page;
}

HeaderList pagingHeaders(qint64 total, const Page &page, const QString &rootUrl,
                         const QByteArray &path, const QByteArray &rawQuery)
{
    // Gitea's paginator: the current page is clamped into 1..pages.
    const qint64 pages = (total + page.size - 1) / page.size;
    const qint64 current = std::max<qint64>(std::min<qint64>(page.number, pages), 1);
    const bool hasNext = current * page.size < total;
    const GoValues query = parseGoQuery(rawQuery);
    auto link = [&](qint64 target, const char *rel) {
        GoValues withPage = query;
        withPage[QByteArrayLiteral("page")] = {QByteArray::number(target)};
        return '<' + rootUrl.toUtf8() + path + '?' + encodeGoQuery(withPage) + ">; rel=\"" + rel +
               '"';
    };
    QList<QByteArray> links;
    if (hasNext) {
        links.append(link(current + 1, "next"));
        links.append(link(pages, "last"));
    }
    if (current > 1) {
        links.append(link(1, "first"));
        links.append(link(current - 1, "prev"));
    }

    HeaderList headers;
    if (!links.isEmpty())
        headers.append({QByteArrayLiteral("Link"), links.join(',')});
    headers.append({QByteArrayLiteral("X-Total-Count"), QByteArray::number(total)});
    headers.append({QByteArrayLiteral("Access-Control-Expose-Headers"),
                    links.isEmpty() ? QByteArrayLiteral("X-Total-Count")
                                    : QByteArrayLiteral("Link, X-Total-Count")});
    return headers;
}

HeaderList totalCountHeaders(qint64 total)
{
    return {
        {QByteArrayLiteral("X-Total-Count"), QByteArray::number(total)},
        {QByteArrayLiteral("Access-Control-Expose-Headers"), QByteArrayLiteral("X-Total-Count")}};
}

void addPageCountHeaders(HeaderList &headers, qint64 total, const Page &page)
{
    const qint64 pageCount = (total + page.size - 1) / page.size;
    headers.append({QByteArrayLiteral("X-Page"), QByteArray::number(page.number)});
    headers.append({QByteArrayLiteral("X-PerPage"), QByteArray::number(page.size)});
    headers.append({QByteArrayLiteral("X-PageCount"), QByteArray::number(pageCount)});
    headers.append({QByteArrayLiteral("X-HasMore"), page.number < pageCount ? "true" : "false"});
    for (auto &[name, value] : headers) {
        if (name == "Access-Control-Expose-Headers")
            value += ", X-Page, X-PerPage, X-PageCount, X-HasMore";
    }
}

} // namespace kestrine::sim
