#pragma once

// What the inbox tests share: the test's settings signed in to the fake Gitea server with every
// repository watched and notifications off, and no inbox cache left over from an earlier test.

#include "fakegiteaserver.h"
#include "inboxcache.h"
#include "teststores.h"

#include <QFile>
#include <QJsonObject>

namespace kestrine::testing {

/// A repository as Gitea lists it: `owner`/`name`, with `id`.
inline QJsonObject repoJson(const QString &owner, const QString &name, qint64 id)
{
    return {{QStringLiteral("id"), id},
            {QStringLiteral("name"), name},
            {QStringLiteral("full_name"), owner + u'/' + name},
            {QStringLiteral("owner"),
             QJsonObject{{QStringLiteral("id"), 1}, {QStringLiteral("login"), owner}}}};
}

inline void prepareInbox(TestStores &stores, const FakeGiteaServer &server)
{
    stores.signIn(server.baseUrl(), QStringLiteral("t0ken"));
    stores.settings.setMonitoredRepos({});
    stores.settings.setNotificationsEnabled(false);
    // A load an earlier test left running may still be writing its rows: let it land first, so
    // that it cannot bring the file back.
    InboxCache::writerThread()->waitForDone();
    QFile::remove(InboxCache().filePath());
}

} // namespace kestrine::testing
