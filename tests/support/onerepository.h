#pragma once

#include "fakegiteaserver.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QUrl>

namespace kestrine::testing {

/// An open pull request as Gitea's list and single endpoints answer it, with what the app reads:
/// id, number, title and state, and a head commit when `headSha` is not null.
QJsonObject openPull(qint64 number, const QString &title, const QString &headSha = QString());

/// The instance of the app's tests that need only a few pull requests: one repository, ann/tool,
/// whose open pull requests are what `openPulls` holds at the time of each request, as a list and
/// each by its number (any other number is not found). `openPulls` must outlive the server.
void serveOneRepository(FakeGiteaServer &server, const QJsonArray &openPulls);

/// What an app started next finds saved: `instance` and `token` in the keychain (which the test
/// runs with), every repository watched and notifications off, so that the passes a test counts are
/// its own. Returns once the keychain has them.
void saveAppSettings(const QUrl &instance, const QString &token);

/// The object called `name` under `root`; the last one when there are several, as a screen pushed
/// later comes after those under it.
QObject *namedChild(QObject *root, const char *name);

} // namespace kestrine::testing
