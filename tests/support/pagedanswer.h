#pragma once

#include "fakegiteaserver.h"

#include <QByteArray>
#include <QJsonArray>
#include <functional>

namespace kestrine::testing {

/// The "Link" header value a page gives for the page after it, from the request and that page's
/// number.
using NextLink = std::function<QByteArray(const RecordedRequest &request, int nextPage)>;

/// A route that answers with `items` `pageSize` a page, as Gitea pages a list: the page from the
/// query's `page` (from 1); each page but the last names the next in a "Link" header that
/// `nextLink` writes; every page carries "X-Total-Count". Page `failingPage` answers 500 "boom"
/// instead.
FakeGiteaServer::Handler pagedAnswer(QJsonArray items, int pageSize, NextLink nextLink,
                                     int failingPage = 0);

/// pagedAnswer() whose links name `linkRoot` and the request's path (say another host, as a Gitea
/// behind a proxy writes its links) with the next page as the only query.
FakeGiteaServer::Handler pagedAnswer(QJsonArray items, int pageSize, QByteArray linkRoot,
                                     int failingPage = 0);

/// `count` changed files "file-<first>.txt", "file-<first + 1>.txt"… with as many additions as
/// their number.
QJsonArray numberedFiles(int count, int first = 1);

} // namespace kestrine::testing
