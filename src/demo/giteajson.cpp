#include "giteajson.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QUrl>
#include <algorithm>

namespace kestrine::sim {
namespace {

QJsonValue orNull(const QString &text)
{
    return text.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
}

QJsonValue timeOrNull(const QDateTime &time)
{
    return time.isValid() ? QJsonValue(goTime(time)) : QJsonValue(QJsonValue::Null);
}

/// Each segment of a file path percent-encoded, the slashes kept.
QString escapeSegments(const QString &path)
{
    QStringList segments = path.split(u'/');
    for (QString &segment : segments)
        segment = QString::fromLatin1(QUrl::toPercentEncoding(segment));
    return segments.join(u'/');
}

QJsonObject permissions(Access access)
{
    return {{QStringLiteral("admin"), access >= Access::Admin},
            {QStringLiteral("push"), access >= Access::Write},
            {QStringLiteral("pull"), access >= Access::Read}};
}

} // namespace

QString goTime(const QDateTime &time)
{
    return time.isValid() ? time.toUTC().toString(Qt::ISODate)
                          : QStringLiteral("0001-01-01T00:00:00Z");
}

QString stampTime(const QDateTime &time)
{
    return time.isValid() ? goTime(time) : QStringLiteral("1970-01-01T00:00:00Z");
}

QByteArray goJson(const QJsonValue &value)
{
    QByteArray json = value.isArray()
                          ? QJsonDocument(value.toArray()).toJson(QJsonDocument::Compact)
                          : QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact);
    // These characters only occur inside strings, where Go writes them as escapes. One pass, and
    // none at all when they do not occur: a large list is mostly free of them.
    const auto needsEscape = [](char c) {
        return c == '<' || c == '>' || c == '&';
    };
    if (std::none_of(json.cbegin(), json.cend(), needsEscape))
        return json;
    QByteArray escaped;
    escaped.reserve(json.size() + 64);
    for (const char c : std::as_const(json)) {
        if (!needsEscape(c)) {
            escaped += c;
            continue;
        }
        escaped += c == '<' ? "\\u003c" : c == '>' ? "\\u003e" : "\\u0026";
    }
    return escaped;
}

QByteArray errorBody(const QString &message, const QString &swaggerUrl)
{
    return goJson(
        QJsonObject{{QStringLiteral("message"), message}, {QStringLiteral("url"), swaggerUrl}});
}

QByteArray notFoundBody(const QString &swaggerUrl, const QStringList &errors,
                        const QString &message)
{
    return goJson(QJsonObject{{QStringLiteral("errors"),
                               errors.isEmpty() ? QJsonValue(QJsonValue::Null)
                                                : QJsonValue(QJsonArray::fromStringList(errors))},
                              {QStringLiteral("message"), message},
                              {QStringLiteral("url"), swaggerUrl}});
}

Renderer::Renderer(const State &state, QString rootUrl, const User *viewer)
    : m_state(state)
    , m_rootUrl(std::move(rootUrl))
    , m_viewer(viewer)
{}

QString Renderer::swaggerUrl() const
{
    return m_rootUrl + QStringLiteral("api/swagger");
}

QString Renderer::host() const
{
    return QUrl(m_rootUrl).host();
}

QString Renderer::htmlUrl(const Repository &repo) const
{
    return m_rootUrl + m_state.user(repo.ownerId)->login + u'/' + repo.name;
}

QString Renderer::apiUrl(const Repository &repo) const
{
    return m_rootUrl + QStringLiteral("api/v1/repos/") + m_state.user(repo.ownerId)->login + u'/' +
           repo.name;
}

QString Renderer::htmlUrl(const Repository &repo, const PullRequest &pull) const
{
    return htmlUrl(repo) + QStringLiteral("/pulls/") + QString::number(pull.number);
}

QJsonValue Renderer::user(qint64 id) const
{
    const User *found = m_state.user(id);
    return found ? QJsonValue(user(*found)) : QJsonValue(QJsonValue::Null);
}

QJsonObject Renderer::user(const User &user) const
{
    if (const auto known = m_users.constFind(user.id); known != m_users.cend())
        return *known;
    // What Gitea shows of a person depends on who asks: the person and site admins see the
    // private details, signed-in users the e-mail address unless it is kept private.
    const bool signedIn = m_viewer != nullptr;
    const bool authed = signedIn && (m_viewer->id == user.id || m_viewer->isAdmin);
    const QString placeholderEmail = user.login.toLower() + QStringLiteral("@noreply.") + host();
    const QByteArray emailHash =
        QCryptographicHash::hash(user.email.toLower().toUtf8(), QCryptographicHash::Md5).toHex();
    return m_users[user.id] = QJsonObject{
               {QStringLiteral("id"), user.id},
               {QStringLiteral("login"), user.login},
               {QStringLiteral("login_name"), QString()},
               {QStringLiteral("source_id"), 0},
               {QStringLiteral("full_name"), user.fullName},
               {QStringLiteral("email"),
                signedIn && (!user.keepEmailPrivate || authed) ? user.email : placeholderEmail},
               {QStringLiteral("avatar_url"),
                m_rootUrl + QStringLiteral("avatars/") + QString::fromLatin1(emailHash)},
               {QStringLiteral("html_url"), m_rootUrl + user.login},
               {QStringLiteral("language"), authed ? user.language : QString()},
               {QStringLiteral("is_admin"), authed && user.isAdmin},
               {QStringLiteral("last_login"), authed ? stampTime(user.lastLogin) : goTime({})},
               {QStringLiteral("created"), stampTime(user.created)},
               {QStringLiteral("restricted"), false},
               {QStringLiteral("active"), authed},
               {QStringLiteral("prohibit_login"), false},
               {QStringLiteral("location"), user.location},
               {QStringLiteral("website"), user.website},
               {QStringLiteral("description"), user.description},
               {QStringLiteral("visibility"), QStringLiteral("public")},
               {QStringLiteral("followers_count"), user.followers},
               {QStringLiteral("following_count"), user.following},
               {QStringLiteral("starred_repos_count"), user.starredRepos},
               {QStringLiteral("username"), user.login},
           };
}

QJsonObject Renderer::repository(const Repository &repo) const
{
    if (const auto known = m_repositories.constFind(repo.id); known != m_repositories.cend())
        return *known;
    return m_repositories[repo.id] = repository(repo, m_state.access(repo, m_viewer));
}

QJsonObject Renderer::repository(const Repository &repo, Access access) const
{
    const QString owner = m_state.user(repo.ownerId)->login;
    const QString fullName = owner + u'/' + repo.name;
    const qsizetype openPulls = std::count_if(repo.pulls.begin(), repo.pulls.end(),
                                              [](const PullRequest &p) { return !p.closed; });
    auto allows = [&repo](const char *style) {
        return repo.mergeStyles.contains(QLatin1String(style));
    };
    return {
        {QStringLiteral("id"), repo.id},
        {QStringLiteral("owner"), user(repo.ownerId)},
        {QStringLiteral("name"), repo.name},
        {QStringLiteral("full_name"), fullName},
        {QStringLiteral("description"), repo.description},
        {QStringLiteral("empty"), false},
        {QStringLiteral("private"), repo.isPrivate},
        {QStringLiteral("fork"), false},
        {QStringLiteral("template"), false},
        {QStringLiteral("parent"), QJsonValue::Null},
        {QStringLiteral("mirror"), false},
        {QStringLiteral("size"), repo.size},
        {QStringLiteral("language"), repo.language},
        {QStringLiteral("languages_url"), apiUrl(repo) + QStringLiteral("/languages")},
        {QStringLiteral("html_url"), htmlUrl(repo)},
        {QStringLiteral("url"), apiUrl(repo)},
        {QStringLiteral("link"), QString()},
        {QStringLiteral("ssh_url"), QStringLiteral("git@%1:%2.git").arg(host(), fullName)},
        {QStringLiteral("clone_url"), m_rootUrl + fullName + QStringLiteral(".git")},
        {QStringLiteral("original_url"), QString()},
        {QStringLiteral("website"), QString()},
        {QStringLiteral("stars_count"), repo.stars},
        {QStringLiteral("forks_count"), repo.forks},
        {QStringLiteral("watchers_count"), repo.watchers},
        {QStringLiteral("open_issues_count"), 0},
        {QStringLiteral("open_pr_counter"), qint64(openPulls)},
        {QStringLiteral("release_counter"), 0},
        {QStringLiteral("default_branch"), repo.defaultBranch},
        {QStringLiteral("archived"), repo.archived},
        {QStringLiteral("created_at"), stampTime(repo.createdAt)},
        {QStringLiteral("updated_at"), stampTime(repo.updatedAt)},
        {QStringLiteral("archived_at"), stampTime({})},
        {QStringLiteral("permissions"), permissions(access)},
        {QStringLiteral("has_issues"), true},
        {QStringLiteral("internal_tracker"),
         QJsonObject{{QStringLiteral("enable_time_tracker"), true},
                     {QStringLiteral("allow_only_contributors_to_track_time"), true},
                     {QStringLiteral("enable_issue_dependencies"), true}}},
        {QStringLiteral("has_wiki"), true},
        {QStringLiteral("has_pull_requests"), true},
        {QStringLiteral("has_projects"), true},
        {QStringLiteral("projects_mode"), QStringLiteral("all")},
        {QStringLiteral("has_releases"), true},
        {QStringLiteral("has_packages"), true},
        {QStringLiteral("has_actions"), true},
        {QStringLiteral("ignore_whitespace_conflicts"), false},
        {QStringLiteral("allow_merge_commits"), allows("merge")},
        {QStringLiteral("allow_rebase"), allows("rebase")},
        {QStringLiteral("allow_rebase_explicit"), allows("rebase-merge")},
        {QStringLiteral("allow_squash_merge"), allows("squash")},
        {QStringLiteral("allow_fast_forward_only_merge"), allows("fast-forward-only")},
        {QStringLiteral("allow_rebase_update"), true},
        {QStringLiteral("default_delete_branch_after_merge"), false},
        {QStringLiteral("default_merge_style"), repo.mergeStyles.value(0, QStringLiteral("merge"))},
        {QStringLiteral("default_allow_maintainer_edit"), false},
        {QStringLiteral("avatar_url"), QString()},
        {QStringLiteral("internal"), false},
        {QStringLiteral("mirror_interval"), QString()},
        {QStringLiteral("object_format_name"), QStringLiteral("sha1")},
        {QStringLiteral("mirror_updated"), goTime({})},
        {QStringLiteral("repo_transfer"), QJsonValue::Null},
        {QStringLiteral("topics"), QJsonValue::Null},
        {QStringLiteral("licenses"), QJsonValue::Null},
    };
}

QJsonObject Renderer::label(const Repository &repo, const Label &label) const
{
    return {{QStringLiteral("id"), label.id},
            {QStringLiteral("name"), label.name},
            {QStringLiteral("exclusive"), label.exclusive},
            {QStringLiteral("is_archived"), false},
            {QStringLiteral("color"), label.color},
            {QStringLiteral("description"), label.description},
            {QStringLiteral("url"),
             htmlUrl(repo) + QStringLiteral("/labels/") + QString::number(label.id)}};
}

QJsonObject Renderer::branchEnd(const Repository &repo, const QString &label, const QString &ref,
                                const QString &sha) const
{
    return {{QStringLiteral("label"), label},
            {QStringLiteral("ref"), ref},
            {QStringLiteral("sha"), sha},
            {QStringLiteral("repo_id"), repo.id},
            {QStringLiteral("repo"), repository(repo)}};
}

QJsonObject Renderer::pullRequest(const Repository &repo, const PullRequest &pull) const
{
    QJsonArray labels;
    for (const Label &l : pull.labels)
        labels.append(label(repo, l));
    QJsonArray assignees;
    for (qint64 id : pull.assigneeIds)
        assignees.append(user(id));
    QJsonArray reviewers;
    for (qint64 id : pull.reviewerIds)
        reviewers.append(user(id));
    int additions = 0;
    int deletions = 0;
    for (const ChangedFile &file : pull.files) {
        additions += file.additions;
        deletions += file.deletions;
    }
    int codeComments = 0;
    for (const Review &review : pull.reviews)
        codeComments += review.codeCommentsCount;
    const Branch *base = repo.branch(pull.baseBranch);
    const QString html = htmlUrl(repo, pull);
    const bool draft = isWorkInProgress(pull.title);
    return {
        {QStringLiteral("id"), pull.id},
        {QStringLiteral("url"), html},
        {QStringLiteral("number"), pull.number},
        {QStringLiteral("user"), user(pull.posterId)},
        {QStringLiteral("title"), pull.title},
        {QStringLiteral("body"), pull.body},
        {QStringLiteral("labels"), labels},
        {QStringLiteral("milestone"), QJsonValue::Null},
        {QStringLiteral("assignee"), pull.assigneeIds.isEmpty() ? QJsonValue(QJsonValue::Null)
                                                                : user(pull.assigneeIds.first())},
        {QStringLiteral("assignees"),
         assignees.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(assignees)},
        {QStringLiteral("requested_reviewers"), reviewers},
        {QStringLiteral("requested_reviewers_teams"), QJsonArray()},
        {QStringLiteral("state"), pull.closed ? QStringLiteral("closed") : QStringLiteral("open")},
        {QStringLiteral("draft"), draft},
        {QStringLiteral("is_locked"), false},
        {QStringLiteral("comments"), qint64(pull.comments.size())},
        {QStringLiteral("review_comments"), codeComments},
        {QStringLiteral("additions"), additions},
        {QStringLiteral("deletions"), deletions},
        {QStringLiteral("changed_files"), qint64(pull.files.size())},
        {QStringLiteral("html_url"), html},
        {QStringLiteral("diff_url"), html + QStringLiteral(".diff")},
        {QStringLiteral("patch_url"), html + QStringLiteral(".patch")},
        {QStringLiteral("mergeable"), pull.mergeable && !draft},
        {QStringLiteral("merged"), pull.merged},
        {QStringLiteral("merged_at"), timeOrNull(pull.merged ? pull.mergedAt : QDateTime())},
        {QStringLiteral("merge_commit_sha"), orNull(pull.merged ? pull.mergeCommitSha : QString())},
        {QStringLiteral("merged_by"),
         pull.merged ? user(pull.mergedById) : QJsonValue(QJsonValue::Null)},
        {QStringLiteral("allow_maintainer_edit"), pull.allowMaintainerEdit},
        {QStringLiteral("base"),
         branchEnd(repo, pull.baseBranch, pull.baseBranch, base ? base->commit : pull.mergeBase)},
        {QStringLiteral("head"), branchEnd(repo, pull.headBranch, pull.headBranch, pull.headSha)},
        {QStringLiteral("merge_base"), pull.mergeBase},
        {QStringLiteral("due_date"), QJsonValue::Null},
        {QStringLiteral("created_at"), stampTime(pull.createdAt)},
        {QStringLiteral("updated_at"), stampTime(pull.updatedAt)},
        {QStringLiteral("closed_at"), timeOrNull(pull.closed ? pull.closedAt : QDateTime())},
        {QStringLiteral("pin_order"), 0},
    };
}

QJsonObject Renderer::review(const Repository &repo, const PullRequest &pull,
                             const Review &review) const
{
    const QString pullUrl = htmlUrl(repo, pull);
    return {
        {QStringLiteral("id"), review.id},
        {QStringLiteral("user"), user(review.userId)},
        {QStringLiteral("team"), QJsonValue::Null},
        {QStringLiteral("state"), review.state},
        {QStringLiteral("body"), review.body},
        {QStringLiteral("commit_id"), review.commitId},
        {QStringLiteral("stale"), review.stale},
        {QStringLiteral("official"), review.official},
        {QStringLiteral("dismissed"), review.dismissed},
        {QStringLiteral("comments_count"), review.codeCommentsCount},
        {QStringLiteral("submitted_at"), stampTime(review.submittedAt)},
        {QStringLiteral("updated_at"), stampTime(review.updatedAt)},
        {QStringLiteral("html_url"),
         pullUrl + QStringLiteral("#issuecomment-") + QString::number(review.id)},
        {QStringLiteral("pull_request_url"), pullUrl},
    };
}

QJsonObject Renderer::comment(const Repository &repo, const PullRequest &pull,
                              const Comment &comment) const
{
    const QString pullUrl = htmlUrl(repo, pull);
    return {
        {QStringLiteral("id"), comment.id},
        {QStringLiteral("html_url"),
         pullUrl + QStringLiteral("#issuecomment-") + QString::number(comment.id)},
        {QStringLiteral("pull_request_url"), pullUrl},
        // Gitea leaves the issue address empty for a comment on a pull request.
        {QStringLiteral("issue_url"), QString()},
        {QStringLiteral("user"), user(comment.userId)},
        {QStringLiteral("original_author"), QString()},
        {QStringLiteral("original_author_id"), 0},
        {QStringLiteral("body"), comment.body},
        {QStringLiteral("assets"), QJsonArray()},
        {QStringLiteral("created_at"), stampTime(comment.createdAt)},
        {QStringLiteral("updated_at"), stampTime(comment.updatedAt)},
    };
}

QJsonObject Renderer::changedFile(const Repository &repo, const PullRequest &pull,
                                  const ChangedFile &file) const
{
    const QString path = escapeSegments(file.filename);
    QJsonObject json{
        {QStringLiteral("filename"), file.filename},
        {QStringLiteral("status"), file.status},
        {QStringLiteral("additions"), file.additions},
        {QStringLiteral("deletions"), file.deletions},
        {QStringLiteral("changes"), file.additions + file.deletions},
        {QStringLiteral("html_url"),
         htmlUrl(repo) + QStringLiteral("/src/commit/") + pull.headSha + u'/' + path},
        {QStringLiteral("contents_url"), apiUrl(repo) + QStringLiteral("/contents/") + path +
                                             QStringLiteral("?ref=") + pull.headSha},
        {QStringLiteral("raw_url"),
         htmlUrl(repo) + QStringLiteral("/raw/commit/") + pull.headSha + u'/' + path},
    };
    if (!file.previousFilename.isEmpty())
        json.insert(QStringLiteral("previous_filename"), file.previousFilename);
    return json;
}

QJsonObject Renderer::commit(const Repository &repo, const Commit &commit) const
{
    const QString commitApiUrl = apiUrl(repo) + QStringLiteral("/git/commits/") + commit.sha;
    const QJsonObject signature{{QStringLiteral("name"), commit.authorName},
                                {QStringLiteral("email"), commit.authorEmail},
                                {QStringLiteral("date"), goTime(commit.date)}};
    QJsonArray parents;
    for (const QString &parent : commit.parents) {
        parents.append(QJsonObject{
            {QStringLiteral("url"), apiUrl(repo) + QStringLiteral("/git/commits/") + parent},
            {QStringLiteral("sha"), parent},
            {QStringLiteral("created"), goTime({})}});
    }
    QJsonArray files;
    for (const CommitFile &file : commit.files) {
        files.append(QJsonObject{{QStringLiteral("filename"), file.filename},
                                 {QStringLiteral("status"), file.status}});
    }
    const QJsonValue person = commit.authorId ? user(commit.authorId) : QJsonValue::Null;
    return {
        {QStringLiteral("url"), commitApiUrl},
        {QStringLiteral("sha"), commit.sha},
        {QStringLiteral("created"), goTime(commit.date)},
        {QStringLiteral("html_url"), htmlUrl(repo) + QStringLiteral("/commit/") + commit.sha},
        {QStringLiteral("commit"),
         QJsonObject{
             {QStringLiteral("url"), commitApiUrl},
             {QStringLiteral("author"), signature},
             {QStringLiteral("committer"), signature},
             {QStringLiteral("message"), commit.message},
             // Gitea names the tree by the commit's own id here.
             {QStringLiteral("tree"),
              QJsonObject{{QStringLiteral("url"),
                           apiUrl(repo) + QStringLiteral("/git/trees/") + commit.sha},
                          {QStringLiteral("sha"), commit.sha},
                          {QStringLiteral("created"), goTime(commit.date)}}},
             {QStringLiteral("verification"),
              QJsonObject{{QStringLiteral("verified"), false},
                          {QStringLiteral("reason"), QStringLiteral("gpg.error.not_signed_commit")},
                          {QStringLiteral("signature"), QString()},
                          {QStringLiteral("signer"), QJsonValue::Null},
                          {QStringLiteral("payload"), QString()}}},
         }},
        {QStringLiteral("author"), person},
        {QStringLiteral("committer"), person},
        {QStringLiteral("parents"), parents},
        {QStringLiteral("files"), files},
        {QStringLiteral("stats"),
         QJsonObject{{QStringLiteral("total"), commit.additions + commit.deletions},
                     {QStringLiteral("additions"), commit.additions},
                     {QStringLiteral("deletions"), commit.deletions}}},
    };
}

QJsonObject Renderer::run(const Repository &repo, const Run &run) const
{
    // Gitea renders the run's repository without the caller's permissions.
    const QJsonObject repoJson = repository(repo, Access::None);
    QJsonObject json{
        {QStringLiteral("id"), run.id},
        {QStringLiteral("url"),
         apiUrl(repo) + QStringLiteral("/actions/runs/") + QString::number(run.id)},
        {QStringLiteral("html_url"),
         htmlUrl(repo) + QStringLiteral("/actions/runs/") + QString::number(run.runNumber)},
        {QStringLiteral("display_title"), run.title},
        {QStringLiteral("path"), run.workflow + QStringLiteral("@refs/heads/") + run.headBranch},
        {QStringLiteral("event"), run.event},
        {QStringLiteral("run_attempt"), run.runAttempt},
        {QStringLiteral("run_number"), run.runNumber},
        {QStringLiteral("repository_id"), repo.id},
        {QStringLiteral("head_sha"), run.headSha},
        {QStringLiteral("head_branch"), run.headBranch},
        {QStringLiteral("status"), run.status},
        {QStringLiteral("started_at"), stampTime(run.startedAt)},
        {QStringLiteral("completed_at"), stampTime(run.completedAt)},
        {QStringLiteral("actor"), user(run.actorId)},
        {QStringLiteral("trigger_actor"), user(run.actorId)},
        {QStringLiteral("repository"), repoJson},
        {QStringLiteral("head_repository"), repoJson},
    };
    if (!run.conclusion.isEmpty())
        json.insert(QStringLiteral("conclusion"), run.conclusion);
    return json;
}

QJsonObject Renderer::commitStatus(const Repository &repo, const CommitStatus &status) const
{
    return QJsonObject{
        {QStringLiteral("id"), status.id},
        {QStringLiteral("status"), status.state},
        {QStringLiteral("target_url"), status.targetUrl},
        {QStringLiteral("description"), status.description},
        {QStringLiteral("url"), apiUrl(repo) + QStringLiteral("/statuses/") + status.sha},
        {QStringLiteral("context"), status.context},
        {QStringLiteral("creator"), user(status.creatorId)},
        {QStringLiteral("created_at"), goTime(status.createdAt)},
        {QStringLiteral("updated_at"), goTime(status.createdAt)},
    };
}

QJsonObject Renderer::job(const Repository &repo, const Run &run, const Job &job) const
{
    QJsonArray steps;
    for (qsizetype i = 0; i < job.steps.size(); ++i) {
        const Step &step = job.steps.at(i);
        QJsonObject stepJson{{QStringLiteral("name"), step.name},
                             {QStringLiteral("number"), qint64(i + 1)},
                             {QStringLiteral("status"), step.status},
                             {QStringLiteral("started_at"), stampTime(step.startedAt)},
                             {QStringLiteral("completed_at"), stampTime(step.completedAt)}};
        if (!step.conclusion.isEmpty())
            stepJson.insert(QStringLiteral("conclusion"), step.conclusion);
        steps.append(stepJson);
    }
    const auto jobIndex = std::find_if(run.jobs.begin(), run.jobs.end(),
                                       [&job](const Job &j) { return j.id == job.id; }) -
                          run.jobs.begin();
    QJsonObject json{
        {QStringLiteral("id"), job.id},
        {QStringLiteral("url"),
         apiUrl(repo) + QStringLiteral("/actions/jobs/") + QString::number(job.id)},
        {QStringLiteral("html_url"), htmlUrl(repo) + QStringLiteral("/actions/runs/") +
                                         QString::number(run.runNumber) + QStringLiteral("/jobs/") +
                                         QString::number(jobIndex)},
        {QStringLiteral("run_id"), run.id},
        {QStringLiteral("run_url"),
         apiUrl(repo) + QStringLiteral("/actions/runs/") + QString::number(run.id)},
        {QStringLiteral("name"), job.name},
        {QStringLiteral("labels"), QJsonArray::fromStringList(job.labels)},
        {QStringLiteral("run_attempt"), run.runAttempt},
        {QStringLiteral("head_sha"), run.headSha},
        {QStringLiteral("head_branch"), run.headBranch},
        {QStringLiteral("status"), job.status},
        {QStringLiteral("steps"), steps},
        {QStringLiteral("created_at"), stampTime(job.createdAt)},
        {QStringLiteral("started_at"), stampTime(job.startedAt)},
        {QStringLiteral("completed_at"), stampTime(job.completedAt)},
    };
    if (!job.conclusion.isEmpty())
        json.insert(QStringLiteral("conclusion"), job.conclusion);
    if (job.runnerId != 0)
        json.insert(QStringLiteral("runner_id"), job.runnerId);
    if (!job.runnerName.isEmpty())
        json.insert(QStringLiteral("runner_name"), job.runnerName);
    return json;
}

} // namespace kestrine::sim
