#pragma once

// GiteaSimulation: a small in-memory Gitea that answers on a GiteaHttpServer the way a real
// instance answers the endpoints Kestrine calls, for tests and for the built-in demo instance.
//
// The state comes from a seed, a JSON document:
//
//   {
//     "instance": {"default_paging_num": 30, "max_response_items": 50,       optional
//                  "root_url": "https://git.example.org/"},     optional, see rootUrl()
//     "users": [{"login": "ann", "id": 3, "full_name": "Ann Andersson", "email": "...",
//                "is_admin": false, "keep_email_private": false, "created": "<time>",
//                "last_login": "<time>", "language": "en-US", "location": "", "website": "",
//                "description": "", "followers_count": 0, "following_count": 0,
//                "starred_repos_count": 0}],                           only "login" required
//     "tokens": {"<token>": "<login>"},                                 optional, see below
//     "viewer": "<login>",                              optional, default the first user
//     "repositories": [{
//       "owner": "<login>", "name": "tool", "id": 12, "description": "", "private": false,
//       "archived": false, "default_branch": "main", "language": "Go", "size": 0,
//       "stars_count": 0, "forks_count": 0, "watchers_count": 0,
//       "created_at": "<time>", "updated_at": "<time>",
//       "collaborators": {"<login>": "read" | "write" | "admin"},
//       "merge_styles": ["merge", "rebase", "rebase-merge", "squash", "fast-forward-only",
//                        "manually-merged"],               the allowed ones; default all
//       "branches": [{"name": "main", "commit": "<sha>", "protected": true}],
//       "pulls": [{
//         "number": 7, "id": 101, "user": "<login>", "title": "...", "body": "...",
//         "base": "main", "head": "retry-upload", "head_sha": "<sha>", "merge_base": "<sha>",
//         "state": "open" | "closed", "created_at", "updated_at", "closed_at": "<time>",
//         "merged": false, "merged_by": "<login>", "merged_at": "<time>",
//         "merge_commit_sha": "<sha>",                    the merge fields only when merged
//         "mergeable": true,        false: Gitea's conflict check failed, merging answers 405
//         "behind_base": false,     true: merging answers 409 until an update brings it along
//         "conflicting": false,     true: merging and updating answer 409 (a real conflict)
//         "allow_maintainer_edit": false,
//         "labels": [{"id": 4, "name": "bug", "color": "ee0701", "description": "",
//                     "exclusive": false}],
//         "assignees": ["<login>"], "requested_reviewers": ["<login>"],
//         "reviews": [{"id", "user", "state": "APPROVED" | "PENDING" | "COMMENT" |
//                      "REQUEST_CHANGES" | "REQUEST_REVIEW", "body", "commit_id",
//                      "submitted_at", "updated_at", "stale", "official", "dismissed",
//                      "comments_count"}],
//         "comments": [{"id", "user", "body", "created_at", "updated_at"}],
//         "files": [{"filename", "status": "added" | "deleted" | "renamed" | "copied" |
//                    "changed" | "unchanged", "previous_filename" (for renames),
//                    "additions", "deletions"}],
//         "commits": [{"sha", "author": "<login or a name>", "author_email", "message",
//                      "date", "parents": ["<sha>"], "additions", "deletions",
//                      "files": [{"filename", "status"}]}],
//         "diff": "diff --git a/... (the unified diff Gitea serves as <number>.diff)"
//       }],
//       "runs": {"<head sha>": [{
//         "id": 31, "run_number": 12, "workflow": "ci.yml", "display_title": "...",
//         "event": "pull_request", "head_branch": "retry-upload", "actor": "<login>",
//         "status": "queued" | "waiting" | "in_progress" | "completed",
//         "conclusion": "success" | "failure" | "cancelled" | "skipped",   when completed
//         "run_attempt": 1, "created_at", "started_at", "completed_at": "<time>",
//         "jobs": [{"id", "name", "labels": ["ubuntu-latest"], "status", "conclusion",
//                   "runner_id", "runner_name", "created_at", "started_at", "completed_at",
//                   "steps": [{"name", "status", "conclusion", "started_at",
//                              "completed_at"}],
//                   "log": "raw log text; without it the log answers 404"}]
//       }]}
//     }]
//   }
//
// Times look like "2024-05-01T10:20:30Z" (an offset such as "+02:00" is accepted and turned into
// UTC). Ids and numbers may be left out: they are then numbered on from the largest given.
// A pull request is a draft when its title starts with "WIP:" or "[WIP]", as in Gitea. The
// default branch, every base branch and the head branch of every pull request not yet merged
// exist even when "branches" does not list them.
//
// Authentication: when "tokens" lists any, a request must carry "Authorization: token <t>" (or
// "Bearer <t>") to be signed in as that token's user. Without one it is anonymous, as on a
// real server: it may read public repositories, and anything that needs a user answers 401
// {"message": "token is required"}; an unknown token is refused everywhere with 401. With no
// tokens in the seed, every request is signed in as the viewer.
//
// Gitea's answers are followed as its API handlers give them (routers/api/v1): paging with
// `page` and `limit` (default 30, at most 50, Gitea's own settings), "Link" and
// "X-Total-Count" headers (a pull request's reviews get only "X-Total-Count"; an issue's
// comments come whole, unpaged), 404 bodies {"errors": null, "message": "not found", "url": ...},
// and the status and message of every refusal. Where it matters, the endpoint's comment in
// giteareads.cpp or giteawrites.cpp says which case answers what.

#include "giteahttpserver.h"
#include "giteajson.h"
#include "giteastate.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QPointer>
#include <QString>
#include <functional>
#include <optional>

namespace kestrine {

class GiteaSimulation
{
public:
    /// A simulation of the seed in `seedJson`; see isValid() for whether it could be read.
    explicit GiteaSimulation(const QByteArray &seedJson);
    /// A simulation of the seed in the file at `seedPath`.
    explicit GiteaSimulation(const QString &seedPath);
    ~GiteaSimulation();
    GiteaSimulation(const GiteaSimulation &) = delete;
    GiteaSimulation &operator=(const GiteaSimulation &) = delete;

    /// Replaces the whole state by the seed's. On failure the state is empty and every request
    /// is answered with 500 and the reason.
    bool loadSeed(const QByteArray &seedJson);
    bool isValid() const { return m_loadError.isEmpty(); }
    /// Why the seed could not be read, e.g. `seed.repositories[0].pulls[1]: unknown user "zed"`.
    QString loadError() const { return m_loadError; }

    /// Answers Gitea's API under `pathPrefix` + "/api/v1" on `server` (a prefix such as
    /// "/gitea" stands for an instance below a sub-path). The routes stay with the server; they
    /// are removed again when the simulation is destroyed first.
    void install(GiteaHttpServer *server, const QString &pathPrefix = {});
    /// The instance's ROOT_URL, with a trailing "/": the one set with setRootUrl(), else the
    /// seed's "instance.root_url", else the server's address and the prefix. Gitea writes every
    /// address it renders with it (html_url, clone_url, the "Link" header, the swagger url of its
    /// errors) whatever address the request came in by.
    QString rootUrl() const;
    /// Configures ROOT_URL, as app.ini does; a trailing "/" is added when missing. A Gitea behind
    /// a proxy or under another name has one that names a host the client never talks to. An
    /// empty one goes back to the seed's or the server's. It outlasts loadSeed().
    void setRootUrl(const QString &rootUrl);
    /// Where "now" comes from for merges, reviews and comments (default: the current UTC time).
    void setClock(std::function<QDateTime()> clock);

    // The current state, rendered as Gitea renders it for the seed's viewer; absent or empty
    // when the repository, pull request or run does not exist.
    std::optional<QJsonObject> pullRequest(const QString &owner, const QString &repo,
                                           int number) const;
    QJsonArray reviews(const QString &owner, const QString &repo, int number) const;
    QJsonArray comments(const QString &owner, const QString &repo, int number) const;
    bool branchExists(const QString &owner, const QString &repo, const QString &branch) const;
    std::optional<QJsonObject> run(const QString &owner, const QString &repo, qint64 runId) const;
    QJsonArray jobs(const QString &owner, const QString &repo, qint64 runId) const;
    const sim::State &state() const { return m_state; }

private:
    struct Route;
    static const QList<Route> &routes();

    HttpAnswer answer(const Route &route, const HttpRequest &request, const RouteParams &params);
    HttpAnswer serve(const Route &route, const HttpRequest &request, const RouteParams &params);
    HttpAnswer refuseUnknownRepository(const RouteParams &params, const QString &swagger) const;
    const sim::User *viewer() const;
    sim::Renderer renderer() const;
    std::pair<const sim::Repository *, const sim::PullRequest *>
    findPull(const QString &owner, const QString &repo, int number) const;
    std::pair<const sim::Repository *, const sim::Run *>
    findRun(const QString &owner, const QString &repo, qint64 runId) const;
    QDateTime now() const;

    sim::State m_state;
    QString m_loadError;
    QPointer<GiteaHttpServer> m_server;
    QString m_pathPrefix;
    QString m_rootUrl;
    std::function<QDateTime()> m_clock;
    /// The answers to reads since the state last changed, by request target, credentials and
    /// ROOT_URL.
    QHash<QByteArray, HttpAnswer> m_readAnswers;
};

} // namespace kestrine
