#include "onerepository.h"

#include "outcome.h"
#include "settingsstore.h"

#include <QJsonDocument>

namespace kestrine::testing {

QJsonObject openPull(qint64 number, const QString &title, const QString &headSha)
{
    QJsonObject object{{QStringLiteral("id"), 100 + number},
                       {QStringLiteral("number"), number},
                       {QStringLiteral("title"), title},
                       {QStringLiteral("state"), QStringLiteral("open")}};
    if (!headSha.isNull())
        object.insert(QStringLiteral("head"),
                      QJsonObject{{QStringLiteral("ref"), QStringLiteral("topic")},
                                  {QStringLiteral("sha"), headSha}});
    return object;
}

void serveOneRepository(FakeGiteaServer &server, const QJsonArray &openPulls)
{
    server.route("GET", QStringLiteral("/api/v1/user/repos"),
                 FakeResponse::json(
                     R"([{"id":1,"name":"tool","full_name":"ann/tool","owner":{"login":"ann"}}])"));
    server.route("GET", QStringLiteral("/api/v1/repos/ann/tool/pulls"),
                 [&openPulls](const RecordedRequest &, const RouteParams &) {
                     return FakeResponse::json(
                         QJsonDocument(openPulls).toJson(QJsonDocument::Compact));
                 });
    server.route("GET", QStringLiteral("/api/v1/repos/ann/tool/pulls/{number}"),
                 [&openPulls](const RecordedRequest &, const RouteParams &params) {
                     for (const QJsonValue &open : openPulls) {
                         if (QString::number(open[QStringLiteral("number")].toInteger()) ==
                             params[QStringLiteral("number")])
                             return FakeResponse::json(QJsonDocument(open.toObject()).toJson());
                     }
                     return FakeResponse::json(R"({"message":"not found"})", 404);
                 });
}

void saveAppSettings(const QUrl &instance, const QString &token)
{
    SettingsStore saved;
    SettingsStore *settings = &saved;
    settings->setInstanceURL(instance.toString());
    settings->setToken(token);
    settings->setMonitoredRepos({});
    settings->setNotificationsEnabled(false);
    runToEnd(saved.settle());
}

QObject *namedChild(QObject *root, const char *name)
{
    const QList<QObject *> all = root->findChildren<QObject *>(QString::fromLatin1(name));
    return all.isEmpty() ? nullptr : all.constLast();
}

} // namespace kestrine::testing
