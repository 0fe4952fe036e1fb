#pragma once

// Gitea's paging of list answers: the `page` and `limit` query parameters, with the server's
// default and cap, and the "Link" and "X-Total-Count" headers that describe the other pages.

#include "giteahttpserver.h"

#include <QList>
#include <QUrlQuery>

namespace kestrine::sim {

/// One page of a list, as Gitea reads `page` (from 1) and `limit`: a missing or non-positive
/// limit means DEFAULT_PAGING_NUM, a larger one than MAX_RESPONSE_ITEMS is cut down to it.
struct Page
{
    int number = 1;
    int size = 30;

    static Page fromQuery(const QUrlQuery &query, int defaultSize, int maxSize);

    template <class T>
    QList<T> of(const QList<T> &all) const
    {
        return all.mid(qsizetype(number - 1) * size, size);
    }
};

/// The headers Gitea adds to a paged list: "Link" (next, last, first and prev pages, as far as
/// they exist, each the requested address with its `page` replaced), "X-Total-Count", and the
/// "Access-Control-Expose-Headers" naming them. `rootUrl` ends in "/"; `path` is the request
/// path below the instance's root, without its leading "/".
HeaderList pagingHeaders(qint64 total, const Page &page, const QString &rootUrl,
                         const QByteArray &path, const QByteArray &rawQuery);

/// The header Gitea adds where it counts a list but links no pages (a pull request's reviews):
/// "X-Total-Count", and the "Access-Control-Expose-Headers" naming it.
HeaderList totalCountHeaders(qint64 total);

/// The further headers of the commit and changed-file lists: "X-Page", "X-PerPage",
/// "X-PageCount" and "X-HasMore", appended to `headers` and to the exposed header names.
void addPageCountHeaders(HeaderList &headers, qint64 total, const Page &page);

} // namespace kestrine::sim
