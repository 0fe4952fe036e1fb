#include "giteasimulation.h"

#include "giteaendpoints_p.h"
#include "giteajson.h"
#include "giteaseed.h"

#include <QFile>

namespace kestrine {
namespace {

/// What has to hold before an endpoint runs, as Gitea's route middleware checks it.
enum class Guard {
    /// Anyone who may see the repository (anonymous on a public one).
    None,
    /// A signed-in user (Gitea's reqToken).
    Token,
    /// A signed-in user, on a repository that is not archived.
    TokenNotArchived,
};

/// The token of an "Authorization: token <t>" or "Authorization: Bearer <t>" header.
std::optional<QString> presentedToken(const HttpRequest &request)
{
    const QList<QByteArray> parts = request.header("Authorization").simplified().split(' ');
    if (parts.size() != 2 || (parts.first() != "token" && parts.first().toLower() != "bearer"))
        return std::nullopt;
    return QString::fromUtf8(parts.last());
}

/// Each of `items` in its JSON form.
template <class Items, class Render>
QJsonArray rendered(const Items &items, Render render)
{
    QJsonArray result;
    for (const auto &item : items)
        result.append(render(item));
    return result;
}

} // namespace

struct GiteaSimulation::Route
{
    QByteArray method;
    /// Below ".../api/v1".
    QString pattern;
    sim::Endpoint endpoint;
    /// Below repos/{owner}/{repo}: the repository must exist and be visible.
    bool inRepository;
    Guard guard;
};

const QList<GiteaSimulation::Route> &GiteaSimulation::routes()
{
    using namespace sim;
    const QString pulls = QStringLiteral("/repos/{owner}/{repo}/pulls/{index}");
    const QString actions = QStringLiteral("/repos/{owner}/{repo}/actions");
    // Later routes win when patterns overlap, so "{index}.diff" comes after "{index}".
    static const QList<Route> table{
        {"GET", QStringLiteral("/user"), currentUser, false, Guard::Token},
        {"GET", QStringLiteral("/user/repos"), listMyRepos, false, Guard::Token},
        {"GET", QStringLiteral("/repos/{owner}/{repo}/pulls"), listPulls, true, Guard::None},
        {"GET", pulls, getPull, true, Guard::None},
        {"PATCH", pulls, withBody<editPull>, true, Guard::TokenNotArchived},
        {"GET", QStringLiteral("/repos/{owner}/{repo}/pulls/{index}.diff"), pullDiff, true,
         Guard::None},
        {"GET", pulls + QStringLiteral("/reviews"), listReviews, true, Guard::None},
        {"POST", pulls + QStringLiteral("/reviews"), withBody<createReview>, true,
         Guard::TokenNotArchived},
        {"GET", pulls + QStringLiteral("/files"), listFiles, true, Guard::None},
        {"GET", pulls + QStringLiteral("/commits"), listCommits, true, Guard::None},
        {"POST", pulls + QStringLiteral("/merge"), withBody<mergePull>, true,
         Guard::TokenNotArchived},
        {"POST", pulls + QStringLiteral("/update"), updatePull, true, Guard::TokenNotArchived},
        {"GET", QStringLiteral("/repos/{owner}/{repo}/issues/{index}/comments"), listComments, true,
         Guard::None},
        {"POST", QStringLiteral("/repos/{owner}/{repo}/issues/{index}/comments"),
         withBody<createComment>, true, Guard::TokenNotArchived},
        {"DELETE", QStringLiteral("/repos/{owner}/{repo}/branches/{branch*}"), deleteBranch, true,
         Guard::TokenNotArchived},
        {"GET", actions + QStringLiteral("/runs"), listRuns, true, Guard::None},
        {"GET", actions + QStringLiteral("/runs/{run}/jobs"), listJobs, true, Guard::None},
        {"POST", actions + QStringLiteral("/runs/{run}/rerun"), rerunRun, true,
         Guard::TokenNotArchived},
        {"GET", actions + QStringLiteral("/jobs/{job}/logs"), jobLogs, true, Guard::None},
        {"GET", QStringLiteral("/repos/{owner}/{repo}/commits/{ref}/status"), combinedStatus, true,
         Guard::None},
    };
    return table;
}

GiteaSimulation::GiteaSimulation(const QByteArray &seedJson)
{
    loadSeed(seedJson);
}

GiteaSimulation::GiteaSimulation(const QString &seedPath)
{
    QFile file(seedPath);
    if (file.open(QIODevice::ReadOnly))
        loadSeed(file.readAll());
    else
        m_loadError =
            QStringLiteral("cannot read the seed %1: %2").arg(seedPath, file.errorString());
}

GiteaSimulation::~GiteaSimulation()
{
    // The server's routes call into this object: they must not outlive it.
    if (m_server)
        m_server->clearRoutes();
}

bool GiteaSimulation::loadSeed(const QByteArray &seedJson)
{
    sim::SeedResult result = sim::readSeed(seedJson);
    m_state = result.state ? std::move(*result.state) : sim::State();
    m_loadError = result.error;
    m_readAnswers.clear();
    return isValid();
}

void GiteaSimulation::install(GiteaHttpServer *server, const QString &pathPrefix)
{
    m_server = server;
    m_pathPrefix = pathPrefix.endsWith(u'/') ? pathPrefix.chopped(1) : pathPrefix;
    const QString api = m_pathPrefix + QStringLiteral("/api/v1");
    for (const Route &route : routes()) {
        server->route(route.method, api + route.pattern,
                      [this, &route](const HttpRequest &request, const RouteParams &params) {
                          return answer(route, request, params);
                      });
    }
}

QString GiteaSimulation::rootUrl() const
{
    if (!m_rootUrl.isEmpty())
        return m_rootUrl;
    if (!m_state.rootUrl.isEmpty())
        return m_state.rootUrl;
    // Without a server, Gitea's own default ROOT_URL.
    const QString origin =
        m_server ? m_server->baseUrl().toString() : QStringLiteral("http://localhost:3000");
    return origin + m_pathPrefix + u'/';
}

void GiteaSimulation::setRootUrl(const QString &rootUrl)
{
    m_rootUrl = sim::normalizedRootUrl(rootUrl);
    m_readAnswers.clear();
}

void GiteaSimulation::setClock(std::function<QDateTime()> clock)
{
    m_clock = std::move(clock);
    m_readAnswers.clear();
}

QDateTime GiteaSimulation::now() const
{
    // Gitea keeps times in whole seconds.
    return m_clock ? m_clock().toUTC()
                   : QDateTime::fromSecsSinceEpoch(QDateTime::currentSecsSinceEpoch(), Qt::UTC);
}

const sim::User *GiteaSimulation::viewer() const
{
    return m_state.user(m_state.defaultViewerId);
}

HttpAnswer GiteaSimulation::answer(const Route &route, const HttpRequest &request,
                                   const RouteParams &params)
{
    // A read changes nothing, and the same read of the same state renders the same bytes, so it
    // is answered from the last rendering until something changes the state. A large inbox asks
    // for hundreds of lists a load; rendering each anew made the simulation slower than the
    // clients it serves. Who asks and under which ROOT_URL are part of the question.
    if (request.method != "GET") {
        m_readAnswers.clear();
        return serve(route, request, params);
    }
    const QByteArray question =
        request.target + '\n' + request.header("Authorization") + '\n' + rootUrl().toUtf8();
    if (const auto known = m_readAnswers.constFind(question); known != m_readAnswers.cend())
        return *known;
    HttpAnswer response = serve(route, request, params);
    constexpr qsizetype rememberedReads = 4096;
    if (m_readAnswers.size() >= rememberedReads)
        m_readAnswers.clear();
    m_readAnswers.insert(question, response);
    return response;
}

HttpAnswer GiteaSimulation::serve(const Route &route, const HttpRequest &request,
                                  const RouteParams &params)
{
    const QString root = rootUrl();
    const QString swagger = root + QStringLiteral("api/swagger");
    auto refuse = [&swagger](int status, const QString &message) {
        return HttpAnswer::json(sim::errorBody(message, swagger), status);
    };
    if (!isValid())
        return refuse(500, m_loadError);

    // A token that belongs to nobody is refused outright; no token at all is an anonymous call.
    const sim::User *doer = nullptr;
    if (m_state.tokens.isEmpty()) {
        doer = viewer();
    } else if (const std::optional<QString> token = presentedToken(request)) {
        const auto holder = m_state.tokens.constFind(*token);
        if (holder == m_state.tokens.constEnd())
            return refuse(401, QStringLiteral("user does not exist [uid: 0, name: ]"));
        doer = m_state.user(*holder);
    }

    sim::Repository *repo = nullptr;
    if (route.inRepository) {
        repo = m_state.repository(params.value(QStringLiteral("owner")),
                                  params.value(QStringLiteral("repo")));
        if (!repo || m_state.access(*repo, doer) == sim::Access::None)
            return refuseUnknownRepository(params, swagger);
    }
    if (route.guard != Guard::None && !doer)
        return refuse(401, QStringLiteral("token is required"));
    if (route.guard == Guard::TokenNotArchived && repo->archived) {
        return refuse(423, QStringLiteral("<Repository %1:%2/%3> is archived")
                               .arg(repo->id)
                               .arg(m_state.user(repo->ownerId)->login, repo->name));
    }

    sim::Call call{request, params,
                   m_state, doer,
                   repo,    sim::Renderer(m_state, root, doer),
                   now(),   request.rawPath.mid(m_pathPrefix.toUtf8().size() + 1)};
    return route.endpoint(call);
}

HttpAnswer GiteaSimulation::refuseUnknownRepository(const RouteParams &params,
                                                    const QString &swagger) const
{
    // An unknown owner is named in Gitea's answer; an unknown or hidden repository is not.
    const QString owner = params.value(QStringLiteral("owner"));
    if (!m_state.user(owner)) {
        return HttpAnswer::json(
            sim::notFoundBody(
                swagger,
                {QStringLiteral("user redirect does not exist [name: %1]").arg(owner.toLower())},
                QStringLiteral("GetUserByName")),
            404);
    }
    return HttpAnswer::json(sim::notFoundBody(swagger), 404);
}

sim::Renderer GiteaSimulation::renderer() const
{
    return sim::Renderer(m_state, rootUrl(), viewer());
}

std::pair<const sim::Repository *, const sim::PullRequest *>
GiteaSimulation::findPull(const QString &owner, const QString &repo, int number) const
{
    const sim::Repository *found = m_state.repository(owner, repo);
    return {found, found ? found->pull(number) : nullptr};
}

std::pair<const sim::Repository *, const sim::Run *>
GiteaSimulation::findRun(const QString &owner, const QString &repo, qint64 runId) const
{
    const sim::Repository *found = m_state.repository(owner, repo);
    return {found, found ? found->run(runId) : nullptr};
}

std::optional<QJsonObject> GiteaSimulation::pullRequest(const QString &owner, const QString &repo,
                                                        int number) const
{
    const auto [r, pull] = findPull(owner, repo, number);
    return pull ? std::optional(renderer().pullRequest(*r, *pull)) : std::nullopt;
}

QJsonArray GiteaSimulation::reviews(const QString &owner, const QString &repo, int number) const
{
    const auto [r, pull] = findPull(owner, repo, number);
    if (!pull)
        return {};
    return rendered(sim::visibleReviews(*pull, viewer()), [&](const sim::Review *review) {
        return renderer().review(*r, *pull, *review);
    });
}

QJsonArray GiteaSimulation::comments(const QString &owner, const QString &repo, int number) const
{
    const auto [r, pull] = findPull(owner, repo, number);
    if (!pull)
        return {};
    return rendered(pull->comments, [&](const sim::Comment &comment) {
        return renderer().comment(*r, *pull, comment);
    });
}

bool GiteaSimulation::branchExists(const QString &owner, const QString &repo,
                                   const QString &branch) const
{
    const sim::Repository *r = m_state.repository(owner, repo);
    return r && r->branch(branch);
}

std::optional<QJsonObject> GiteaSimulation::run(const QString &owner, const QString &repo,
                                                qint64 runId) const
{
    const auto [r, found] = findRun(owner, repo, runId);
    return found ? std::optional(renderer().run(*r, *found)) : std::nullopt;
}

QJsonArray GiteaSimulation::jobs(const QString &owner, const QString &repo, qint64 runId) const
{
    const auto [r, found] = findRun(owner, repo, runId);
    if (!found)
        return {};
    return rendered(found->jobs,
                    [&](const sim::Job &job) { return renderer().job(*r, *found, job); });
}

} // namespace kestrine
