#pragma once

#include "fakegiteaserver.h"

#include <QByteArray>
#include <QJsonArray>

namespace kestrine::testing {

/// A route that answers with `items` `pageSize` a page, as Gitea pages a list: the page from the
/// query's `page` (from 1); each page but the last names the next in a "Link" header written with
/// `linkRoot` and the request's path (say another host, as a Gitea behind a proxy writes its
/// links); every page carries "X-Total-Count". Page `failingPage` answers 500 "boom" instead.
FakeGiteaServer::Handler pagedAnswer(QJsonArray items, int pageSize, QByteArray linkRoot,
                                     int failingPage = 0);

/// `count` changed files "file-1.txt", "file-2.txt"… with as many additions as their number.
QJsonArray numberedFiles(int count);

} // namespace kestrine::testing
