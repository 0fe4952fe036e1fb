#pragma once

// The simulation's endpoints (giteareads.cpp, giteawrites.cpp) and the one request they serve.
// GiteaSimulation has already done what Gitea's middleware does before an endpoint runs: the
// token is checked, the repository is found and readable, sign-in is there where required.

#include "giteahttpserver.h"
#include "giteajson.h"
#include "giteastate.h"

#include <QDateTime>
#include <QJsonObject>
#include <QUrlQuery>
#include <optional>
#include <variant>

namespace kestrine::sim {

/// One request on its way through the simulation, with the means to answer it in Gitea's words.
struct Call
{
    const HttpRequest &request;
    const RouteParams &params;
    State &state;
    /// The signed-in user; null for an anonymous request.
    const User *doer;
    /// The repository of a route below repos/{owner}/{repo}, else null.
    Repository *repo;
    Renderer json;
    QDateTime now;
    /// The request path below the instance's root, without its leading "/" (for "Link").
    QByteArray relativePath;

    QUrlQuery query() const;
    Access access() const;
    /// The pull request that {index} names in this repository, or null.
    PullRequest *pull() const;

    HttpAnswer answer(const QJsonValue &body, int status = 200) const;
    HttpAnswer error(int status, const QString &message) const;
    HttpAnswer notFound(const QStringList &errors = {}) const;

    /// The request body as Gitea's form binding reads it: JSON when the Content-Type says so,
    /// form fields for a url-encoded form, otherwise the 422 that Gitea answers.
    std::variant<QJsonObject, HttpAnswer> bind() const;
};

/// A body field the way Go's JSON decoder finds it: the exact key first, else one that differs
/// only in letter case.
QJsonValue bodyField(const QJsonObject &body, const QString &key);
/// A string field; anything else reads as empty.
QString bodyText(const QJsonObject &body, const QString &key);
/// A boolean field (a form sends it as "true" or "on").
bool bodyFlag(const QJsonObject &body, const QString &key);

using Endpoint = HttpAnswer (*)(Call &call);
/// An endpoint that reads the request body.
using BodyEndpoint = HttpAnswer (*)(Call &call, const QJsonObject &body);

/// `endpoint` behind Gitea's form binding, which answers a body it cannot bind before the
/// endpoint runs.
template <BodyEndpoint endpoint>
HttpAnswer withBody(Call &call)
{
    const auto bound = call.bind();
    if (const auto *refused = std::get_if<HttpAnswer>(&bound))
        return *refused;
    return endpoint(call, std::get<QJsonObject>(bound));
}

HttpAnswer currentUser(Call &call);
HttpAnswer listMyRepos(Call &call);
HttpAnswer listPulls(Call &call);
HttpAnswer getPull(Call &call);
HttpAnswer pullDiff(Call &call);
HttpAnswer listReviews(Call &call);
HttpAnswer listComments(Call &call);
HttpAnswer listFiles(Call &call);
HttpAnswer listCommits(Call &call);
HttpAnswer listRuns(Call &call);
HttpAnswer listJobs(Call &call);
HttpAnswer jobLogs(Call &call);
/// GET commits/{ref}/status: the statuses of other CI and those Actions posts for each job.
HttpAnswer combinedStatus(Call &call);

HttpAnswer mergePull(Call &call, const QJsonObject &body);
HttpAnswer updatePull(Call &call);
HttpAnswer editPull(Call &call, const QJsonObject &body);
HttpAnswer createReview(Call &call, const QJsonObject &body);
HttpAnswer createComment(Call &call, const QJsonObject &body);
HttpAnswer deleteBranch(Call &call);
HttpAnswer rerunRun(Call &call);

/// Whether `viewer` may see `review`: a pending one only its author and site admins may.
bool reviewVisible(const Review &review, const User *viewer);
/// The reviews of a pull request that `viewer` may see.
QList<const Review *> visibleReviews(const PullRequest &pull, const User *viewer);

} // namespace kestrine::sim
