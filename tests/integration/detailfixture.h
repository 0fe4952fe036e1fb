#pragma once

// What the pull request detail tests share: pull request 7 of "ann/app" served by the fake Gitea
// server, with each endpoint answered by a small JSON document that a test can replace, and the
// test's settings pointed at that server.

#include "fakegiteaserver.h"
#include "records.h"
#include "teststores.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQmlEngine>
#include <QStringList>
#include <memory>

namespace kestrine::testing {

inline const QString apiRoot = QStringLiteral("/api/v1/repos/ann/app");
inline const QString pullPath = apiRoot + QStringLiteral("/pulls/7");

inline QByteArray compact(const QJsonValue &value)
{
    return value.isArray() ? QJsonDocument(value.toArray()).toJson(QJsonDocument::Compact)
                           : QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact);
}

inline QJsonObject user(const QString &login)
{
    return {{QStringLiteral("login"), login}};
}

/// A head branch with a ref and, unless `sha` is null, a sha.
inline QJsonObject head(const QString &ref, const QString &sha)
{
    QJsonObject branch{{QStringLiteral("ref"), ref}};
    if (!sha.isNull())
        branch.insert(QStringLiteral("sha"), sha);
    return branch;
}

/// Pull request 7; `headBranch` is left out when it is empty.
inline QByteArray pullJson(const QString &title = QStringLiteral("Fix the parser"),
                           const QJsonObject &headBranch = head(QStringLiteral("feature/x"),
                                                                QStringLiteral("abc123")),
                           const QString &state = QStringLiteral("open"))
{
    QJsonObject pull{{QStringLiteral("id"), 700},
                     {QStringLiteral("number"), 7},
                     {QStringLiteral("title"), title},
                     {QStringLiteral("state"), state},
                     {QStringLiteral("user"), user(QStringLiteral("ann"))}};
    if (!headBranch.isEmpty())
        pull.insert(QStringLiteral("head"), headBranch);
    return compact(pull);
}

inline QJsonObject review(qint64 id, const QString &state, const QString &login)
{
    QJsonObject object{{QStringLiteral("id"), id}, {QStringLiteral("state"), state}};
    if (!login.isNull())
        object.insert(QStringLiteral("user"), user(login));
    return object;
}

inline QJsonObject comment(qint64 id, const QString &body)
{
    return {{QStringLiteral("id"), id},
            {QStringLiteral("body"), body},
            {QStringLiteral("user"), user(QStringLiteral("bob"))}};
}

inline QJsonObject run(qint64 id, const QString &conclusion)
{
    return {{QStringLiteral("id"), id},
            {QStringLiteral("status"), QStringLiteral("completed")},
            {QStringLiteral("conclusion"), conclusion}};
}

inline QByteArray runsJson(const QJsonArray &runs)
{
    return compact(QJsonObject{{QStringLiteral("workflow_runs"), runs},
                               {QStringLiteral("total_count"), runs.size()}});
}

inline QByteArray jobsJson(qint64 firstJobID, const QString &name)
{
    const QJsonArray jobs{QJsonObject{{QStringLiteral("id"), firstJobID},
                                      {QStringLiteral("name"), name},
                                      {QStringLiteral("status"), QStringLiteral("completed")},
                                      {QStringLiteral("conclusion"), QStringLiteral("success")}}};
    return compact(
        QJsonObject{{QStringLiteral("jobs"), jobs}, {QStringLiteral("total_count"), jobs.size()}});
}

inline Repository annApp()
{
    Repository repo;
    repo.id = 1;
    repo.name = QStringLiteral("app");
    repo.fullName = QStringLiteral("ann/app");
    repo.owner.login = QStringLiteral("ann");
    return repo;
}

/// Serves a complete pull request 7: the pull request, one comment, one review, one file, one
/// commit, one successful run (11) and its job.
inline void serveDefaults(FakeGiteaServer &server)
{
    server.route("GET", pullPath, FakeResponse::json(pullJson()));
    server.route("GET", apiRoot + QStringLiteral("/issues/7/comments"),
                 FakeResponse::json(compact(QJsonArray{comment(1, QStringLiteral("Looks good"))})));
    server.route("GET", pullPath + QStringLiteral("/reviews"),
                 FakeResponse::json(compact(
                     QJsonArray{review(1, QStringLiteral("APPROVED"), QStringLiteral("bob"))})));
    server.route("GET", pullPath + QStringLiteral("/files"),
                 FakeResponse::json(R"([{"filename":"a.c","status":"changed","additions":1,)"
                                    R"("deletions":1}])"));
    server.route("GET", pullPath + QStringLiteral("/commits"),
                 FakeResponse::json(R"([{"sha":"abc123"}])"));
    server.route("GET", apiRoot + QStringLiteral("/actions/runs"),
                 FakeResponse::json(runsJson({run(11, QStringLiteral("success"))})));
    server.route("GET", apiRoot + QStringLiteral("/actions/runs/{run}/jobs"),
                 [](const RecordedRequest &, const RouteParams &params) {
                     const qint64 runID = params.value(QStringLiteral("run")).toLongLong();
                     return FakeResponse::json(jobsJson(runID * 10, QStringLiteral("build")));
                 });
}

/// Points the test's settings at `server` with a token, in memory only.
inline void configureSettings(TestStores &stores, const FakeGiteaServer &server)
{
    stores.signIn(server.baseUrl(), QStringLiteral("t"));
}

/// Detail tests: each test starts with fresh stores and a fresh server with no routes, the
/// settings signed in to that server and the log empty.
class DetailTestCase : public QObject
{
protected:
    std::unique_ptr<TestStores> stores;
    FakeGiteaServer *server = nullptr;

    /// For a test's init(); false when the server could not listen.
    [[nodiscard]] bool startServer()
    {
        stores = std::make_unique<TestStores>();
        server = new FakeGiteaServer(this);
        if (!server->listen())
            return false;
        configureSettings(*stores, *server);
        stores->log.clear();
        return true;
    }

    /// For a test's cleanup().
    void stopServer()
    {
        delete server;
        server = nullptr;
        stores.reset();
    }
};

/// Sets `model` up as a QML document of `engine` does for the models it creates: the model finds
/// the settings installed on that engine.
inline void setUpAsQmlDoes(QObject &model, QQmlParserStatus &status, QQmlEngine &engine)
{
    QQmlEngine::setContextForObject(&model, engine.rootContext());
    status.classBegin();
    status.componentComplete();
}

/// The paths of the recorded requests, in arrival order, without the "/api/v1/repos/ann/app"
/// prefix, e.g. "GET /pulls/7".
inline QStringList requestLog(const FakeGiteaServer &server)
{
    QStringList lines;
    for (const RecordedRequest &request : server.requests()) {
        QString path = request.path();
        if (path.startsWith(apiRoot))
            path = path.mid(apiRoot.size());
        lines.append(QString::fromLatin1(request.method) + u' ' + path);
    }
    return lines;
}

} // namespace kestrine::testing
