#pragma once

// How GiteaClient fetches a list that the server hands out page by page. Not part of the API
// layer's public surface.

#include "giteaclient.h"
#include "requestcore_p.h"

#include <QByteArray>
#include <QCoroTask>
#include <QString>
#include <functional>
#include <optional>

namespace kestrine::http {

/// What one page held, as its reader found it.
struct PageContent
{
    qsizetype items = 0;
    /// The total a server wrote into the body (Gitea's envelopes carry "total_count").
    std::optional<qint64> total;
};

/// Decodes one page's body and keeps its items; throws as decoding does.
using PageReader = std::function<PageContent(const QByteArray &body)>;

/// The list's size that the answer's "X-Total-Count" header announces, when it holds a whole number
/// above zero.
std::optional<qint64> totalCountHeader(const Response &response);

/// GETs `path` without a query, then every further page the answers name, up to
/// GiteaClient::maxListPages requests, handing each body to `read` in order. The next page is the
/// one the "Link" header's rel="next" names (its `page`, and its `limit` when it has one), asked
/// at the instance URL; without a "Link" header, while fewer items arrived than the "X-Total-Count"
/// header (or else the body's total) announces, the next page number, until a page comes back
/// empty. Answers the cut when the bound stopped it, nothing when the list is complete.
QCoro::Task<std::optional<ListCut>> getPages(GiteaClient client, QString path, PageReader read);

} // namespace kestrine::http
