#include "giteaseed.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QUrl>
#include <algorithm>
#include <cmath>

namespace kestrine::sim {
namespace {

const QStringList reviewStates{QStringLiteral("APPROVED"), QStringLiteral("PENDING"),
                               QStringLiteral("COMMENT"), QStringLiteral("REQUEST_CHANGES"),
                               QStringLiteral("REQUEST_REVIEW")};
const QStringList fileStatuses{QStringLiteral("added"),   QStringLiteral("deleted"),
                               QStringLiteral("renamed"), QStringLiteral("copied"),
                               QStringLiteral("changed"), QStringLiteral("unchanged")};
const QStringList runStatuses{QStringLiteral("queued"), QStringLiteral("waiting"),
                              QStringLiteral("in_progress"), QStringLiteral("completed")};
const QStringList commitStates{QStringLiteral("pending"), QStringLiteral("success"),
                               QStringLiteral("error"), QStringLiteral("failure"),
                               QStringLiteral("warning")};
const QStringList conclusions{QStringLiteral("success"), QStringLiteral("failure"),
                              QStringLiteral("cancelled"), QStringLiteral("skipped")};

struct SeedError
{
    QString message;
};

[[noreturn]] void refuse(const QString &where, const QString &problem)
{
    throw SeedError{where + QStringLiteral(": ") + problem};
}

QString indexed(const QString &where, QLatin1String key, qsizetype index)
{
    return QStringLiteral("%1.%2[%3]").arg(where, key).arg(index);
}

QJsonObject asObject(const QJsonValue &value, const QString &where)
{
    if (!value.isObject())
        refuse(where, QStringLiteral("not an object"));
    return value.toObject();
}

/// The typed reading of one seed object, with `where` naming it in error messages.
class Fields
{
public:
    Fields(QJsonObject object, QString where)
        : m_object(std::move(object))
        , m_where(std::move(where))
    {}

    const QString &where() const { return m_where; }
    bool has(QLatin1String key) const
    {
        const QJsonValue value = m_object.value(key);
        return !value.isUndefined() && !value.isNull();
    }

    QString text(QLatin1String key, const QString &fallback = {}) const
    {
        if (!has(key))
            return fallback;
        const QJsonValue value = m_object.value(key);
        if (!value.isString())
            problem(key, QStringLiteral("is not a string"));
        return value.toString();
    }

    QString requiredText(QLatin1String key) const
    {
        const QString value = text(key);
        if (value.isEmpty())
            problem(key, QStringLiteral("is missing"));
        return value;
    }

    QString oneOf(QLatin1String key, const QStringList &allowed, const QString &fallback) const
    {
        const QString value = text(key, fallback);
        if (!allowed.contains(value))
            problem(key, QStringLiteral("is \"%1\", not one of %2")
                             .arg(value, allowed.join(QStringLiteral(", "))));
        return value;
    }

    bool flag(QLatin1String key, bool fallback = false) const
    {
        if (!has(key))
            return fallback;
        const QJsonValue value = m_object.value(key);
        if (!value.isBool())
            problem(key, QStringLiteral("is not true or false"));
        return value.toBool();
    }

    qint64 integer(QLatin1String key, qint64 fallback = 0) const
    {
        if (!has(key))
            return fallback;
        const QJsonValue value = m_object.value(key);
        const double number = value.toDouble(0.5);
        if (!value.isDouble() || std::floor(number) != number)
            problem(key, QStringLiteral("is not a whole number"));
        return static_cast<qint64>(number);
    }

    /// A date-time such as "2024-05-01T10:20:30Z" or "...+02:00", kept in UTC; invalid when absent.
    QDateTime date(QLatin1String key) const
    {
        static const QRegularExpression shape(QStringLiteral(
            "^\\d{4}-\\d{2}-\\d{2}T\\d{2}:\\d{2}:\\d{2}(\\.\\d+)?(Z|[+-]\\d{2}:\\d{2})$"));
        if (!has(key))
            return {};
        const QString value = text(key);
        const QDateTime parsed = QDateTime::fromString(value, Qt::ISODateWithMs);
        if (!shape.match(value).hasMatch() || !parsed.isValid())
            problem(key, QStringLiteral("is not a date-time: \"%1\"").arg(value));
        return parsed.toUTC();
    }

    QJsonArray list(QLatin1String key) const
    {
        if (!has(key))
            return {};
        const QJsonValue value = m_object.value(key);
        if (!value.isArray())
            problem(key, QStringLiteral("is not a list"));
        return value.toArray();
    }

    QStringList strings(QLatin1String key) const
    {
        QStringList result;
        for (const QJsonValue &value : list(key)) {
            if (!value.isString())
                problem(key, QStringLiteral("holds something that is not a string"));
            result.append(value.toString());
        }
        return result;
    }

    QJsonObject object(QLatin1String key) const
    {
        return has(key) ? asObject(m_object.value(key), m_where + u'.' + key) : QJsonObject();
    }

    /// Each element of the list under `key` as a Fields of its own.
    QList<Fields> children(QLatin1String key) const
    {
        QList<Fields> result;
        const QJsonArray array = list(key);
        for (qsizetype i = 0; i < array.size(); ++i) {
            const QString where = indexed(m_where, key, i);
            result.append(Fields(asObject(array.at(i), where), where));
        }
        return result;
    }

    [[noreturn]] void problem(QLatin1String key, const QString &what) const
    {
        refuse(m_where, QStringLiteral("\"%1\" %2").arg(key, what));
    }

private:
    QJsonObject m_object;
    QString m_where;
};

/// Gives every item without an id (0) the next free one after the largest given.
template <class Item>
void assignIds(const QList<Item *> &items, qint64 Item::*id)
{
    qint64 next = 1;
    for (const Item *item : items)
        next = std::max(next, item->*id + 1);
    for (Item *item : items) {
        if (item->*id == 0)
            item->*id = next++;
    }
}

template <class Item, class Number>
void assignNumbers(QList<Item> &items, Number Item::*number)
{
    Number next = 1;
    for (const Item &item : items)
        next = std::max(next, Number(item.*number + 1));
    for (Item &item : items) {
        if (item.*number == 0)
            item.*number = next++;
    }
}

class SeedReader
{
public:
    State read(const QByteArray &json)
    {
        QJsonParseError parseError;
        const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
        if (parseError.error != QJsonParseError::NoError)
            refuse(QStringLiteral("seed"), parseError.errorString());
        if (!document.isObject())
            refuse(QStringLiteral("seed"), QStringLiteral("not an object"));
        const Fields seed(document.object(), QStringLiteral("seed"));

        readUsers(seed);
        readTokens(seed);
        readInstance(seed);
        for (const Fields &repository : seed.children(QLatin1String("repositories")))
            m_state.repositories.append(readRepository(repository));
        finish();
        return std::move(m_state);
    }

private:
    void readUsers(const Fields &seed)
    {
        for (const Fields &f : seed.children(QLatin1String("users"))) {
            User user;
            user.id = f.integer(QLatin1String("id"));
            user.login = f.requiredText(QLatin1String("login"));
            if (m_state.user(user.login))
                f.problem(QLatin1String("login"), QStringLiteral("is used twice"));
            user.fullName = f.text(QLatin1String("full_name"));
            user.email =
                f.text(QLatin1String("email"), user.login + QStringLiteral("@example.org"));
            user.language = f.text(QLatin1String("language"));
            user.location = f.text(QLatin1String("location"));
            user.website = f.text(QLatin1String("website"));
            user.description = f.text(QLatin1String("description"));
            user.isAdmin = f.flag(QLatin1String("is_admin"));
            user.keepEmailPrivate = f.flag(QLatin1String("keep_email_private"));
            user.created = f.date(QLatin1String("created"));
            user.lastLogin = f.date(QLatin1String("last_login"));
            user.followers = int(f.integer(QLatin1String("followers_count")));
            user.following = int(f.integer(QLatin1String("following_count")));
            user.starredRepos = int(f.integer(QLatin1String("starred_repos_count")));
            m_state.users.append(user);
        }
        QList<User *> users;
        for (User &user : m_state.users)
            users.append(&user);
        assignIds(users, &User::id);
    }

    void readTokens(const Fields &seed)
    {
        const QJsonObject tokens = seed.object(QLatin1String("tokens"));
        for (auto it = tokens.begin(); it != tokens.end(); ++it) {
            const QString where = QStringLiteral("seed.tokens");
            if (!it.value().isString())
                refuse(where,
                       QStringLiteral("the token \"%1\" does not name a user").arg(it.key()));
            m_state.tokens.insert(it.key(), userId(it.value().toString(), where));
        }
        const QString viewer = seed.text(QLatin1String("viewer"));
        if (!viewer.isEmpty())
            m_state.defaultViewerId = userId(viewer, seed.where());
        else if (!m_state.users.isEmpty())
            m_state.defaultViewerId = m_state.users.first().id;
    }

    void readInstance(const Fields &seed)
    {
        const Fields instance(seed.object(QLatin1String("instance")),
                              QStringLiteral("seed.instance"));
        m_state.defaultPagingNum = int(instance.integer(QLatin1String("default_paging_num"), 30));
        m_state.maxResponseItems = int(instance.integer(QLatin1String("max_response_items"), 50));
        if (m_state.defaultPagingNum < 1 || m_state.maxResponseItems < 1)
            refuse(instance.where(), QStringLiteral("page sizes must be at least 1"));
        const QString rootUrl = instance.text(QLatin1String("root_url"));
        if (!rootUrl.isEmpty()) {
            // Gitea refuses to start with a ROOT_URL it cannot build links from.
            const QUrl url(rootUrl, QUrl::StrictMode);
            if (!url.isValid() || url.host().isEmpty() ||
                (url.scheme() != QLatin1String("http") && url.scheme() != QLatin1String("https")))
                instance.problem(
                    QLatin1String("root_url"),
                    QStringLiteral("is not an http or https address: \"%1\"").arg(rootUrl));
            m_state.rootUrl = normalizedRootUrl(rootUrl);
        }
    }

    qint64 userId(const QString &login, const QString &where) const
    {
        const User *user = m_state.user(login);
        if (!user)
            refuse(where, QStringLiteral("unknown user \"%1\"").arg(login));
        return user->id;
    }

    qint64 userRef(const Fields &f, QLatin1String key) const
    {
        return userId(f.requiredText(key), f.where());
    }

    QList<qint64> userRefs(const Fields &f, QLatin1String key) const
    {
        QList<qint64> ids;
        for (const QString &login : f.strings(key))
            ids.append(userId(login, f.where()));
        return ids;
    }

    Repository readRepository(const Fields &f)
    {
        Repository repo;
        repo.id = f.integer(QLatin1String("id"));
        repo.ownerId = userRef(f, QLatin1String("owner"));
        repo.name = f.requiredText(QLatin1String("name"));
        if (m_state.repository(m_state.user(repo.ownerId)->login, repo.name))
            f.problem(QLatin1String("name"), QStringLiteral("is used twice for one owner"));
        repo.description = f.text(QLatin1String("description"));
        repo.defaultBranch = f.text(QLatin1String("default_branch"), QStringLiteral("main"));
        repo.language = f.text(QLatin1String("language"));
        repo.isPrivate = f.flag(QLatin1String("private"));
        repo.archived = f.flag(QLatin1String("archived"));
        repo.size = int(f.integer(QLatin1String("size")));
        repo.stars = int(f.integer(QLatin1String("stars_count")));
        repo.forks = int(f.integer(QLatin1String("forks_count")));
        repo.watchers = int(f.integer(QLatin1String("watchers_count")));
        repo.createdAt = f.date(QLatin1String("created_at"));
        repo.updatedAt = f.date(QLatin1String("updated_at"));
        readCollaborators(f, repo);
        repo.mergeStyles = f.has(QLatin1String("merge_styles"))
                               ? f.strings(QLatin1String("merge_styles"))
                               : mergeStyleNames();
        for (const QString &style : std::as_const(repo.mergeStyles)) {
            if (!mergeStyleNames().contains(style))
                f.problem(QLatin1String("merge_styles"),
                          QStringLiteral("names an unknown style \"%1\"").arg(style));
        }
        for (const Fields &b : f.children(QLatin1String("branches"))) {
            repo.branches.append({b.requiredText(QLatin1String("name")),
                                  b.text(QLatin1String("commit")),
                                  b.flag(QLatin1String("protected"))});
        }
        for (const Fields &pull : f.children(QLatin1String("pulls")))
            repo.pulls.append(readPull(pull, repo));
        readRuns(f, repo);
        readStatuses(f, repo);
        return repo;
    }

    void readCollaborators(const Fields &f, Repository &repo) const
    {
        static const QHash<QString, Access> levels{{QStringLiteral("read"), Access::Read},
                                                   {QStringLiteral("write"), Access::Write},
                                                   {QStringLiteral("admin"), Access::Admin}};
        const QJsonObject collaborators = f.object(QLatin1String("collaborators"));
        for (auto it = collaborators.begin(); it != collaborators.end(); ++it) {
            const QString where = f.where() + QStringLiteral(".collaborators");
            const Access level = levels.value(it.value().toString(), Access::None);
            if (level == Access::None)
                refuse(where, QStringLiteral("\"%1\" is not read, write or admin").arg(it.key()));
            repo.collaborators.insert(userId(it.key(), where), level);
        }
    }

    PullRequest readPull(const Fields &f, const Repository &repo) const
    {
        PullRequest pull;
        pull.id = f.integer(QLatin1String("id"));
        pull.number = int(f.integer(QLatin1String("number")));
        if (pull.number != 0 && repo.pull(pull.number))
            f.problem(QLatin1String("number"), QStringLiteral("is used twice"));
        pull.posterId = userRef(f, QLatin1String("user"));
        pull.title = f.requiredText(QLatin1String("title"));
        pull.body = f.text(QLatin1String("body"));
        pull.baseBranch = f.text(QLatin1String("base"), repo.defaultBranch);
        pull.headBranch = f.requiredText(QLatin1String("head"));
        pull.headSha =
            f.text(QLatin1String("head_sha"), derivedSha(repo.name + u':' + pull.headBranch));
        pull.mergeBase = f.text(QLatin1String("merge_base"));
        const QString state =
            f.oneOf(QLatin1String("state"), {QStringLiteral("open"), QStringLiteral("closed")},
                    QStringLiteral("open"));
        pull.closed = state == QLatin1String("closed");
        pull.mergeable = f.flag(QLatin1String("mergeable"), true);
        pull.behindBase = f.flag(QLatin1String("behind_base"));
        pull.conflicting = f.flag(QLatin1String("conflicting"));
        pull.allowMaintainerEdit = f.flag(QLatin1String("allow_maintainer_edit"));
        pull.createdAt = f.date(QLatin1String("created_at"));
        pull.updatedAt = f.date(QLatin1String("updated_at"));
        if (!pull.updatedAt.isValid())
            pull.updatedAt = pull.createdAt;
        pull.closedAt = f.date(QLatin1String("closed_at"));
        readMerge(f, pull);
        for (const Fields &l : f.children(QLatin1String("labels"))) {
            pull.labels.append(
                {l.integer(QLatin1String("id")), l.requiredText(QLatin1String("name")),
                 l.text(QLatin1String("color"), QStringLiteral("e11d21")),
                 l.text(QLatin1String("description")), l.flag(QLatin1String("exclusive"))});
        }
        pull.assigneeIds = userRefs(f, QLatin1String("assignees"));
        pull.reviewerIds = userRefs(f, QLatin1String("requested_reviewers"));
        for (const Fields &r : f.children(QLatin1String("reviews")))
            pull.reviews.append(readReview(r, pull));
        for (const Fields &c : f.children(QLatin1String("comments"))) {
            const QDateTime created = c.date(QLatin1String("created_at"));
            const QDateTime updated = c.date(QLatin1String("updated_at"));
            pull.comments.append({c.integer(QLatin1String("id")), userRef(c, QLatin1String("user")),
                                  c.requiredText(QLatin1String("body")), created,
                                  updated.isValid() ? updated : created});
        }
        for (const Fields &file : f.children(QLatin1String("files")))
            pull.files.append(readFile(file));
        for (const Fields &commit : f.children(QLatin1String("commits")))
            pull.commits.append(readCommit(commit));
        pull.diff = f.text(QLatin1String("diff")).toUtf8();
        return pull;
    }

    void readMerge(const Fields &f, PullRequest &pull) const
    {
        pull.merged = f.flag(QLatin1String("merged"));
        if (!pull.merged)
            return;
        if (!pull.closed)
            f.problem(QLatin1String("merged"), QStringLiteral("needs \"state\": \"closed\""));
        pull.mergedById = userRef(f, QLatin1String("merged_by"));
        pull.mergedAt = f.date(QLatin1String("merged_at"));
        if (!pull.mergedAt.isValid())
            pull.mergedAt = pull.closedAt.isValid() ? pull.closedAt : pull.updatedAt;
        if (!pull.closedAt.isValid())
            pull.closedAt = pull.mergedAt;
        pull.mergeCommitSha = f.text(QLatin1String("merge_commit_sha"),
                                     derivedSha(pull.headSha + QStringLiteral(":merged")));
    }

    Review readReview(const Fields &f, const PullRequest &pull) const
    {
        Review review;
        review.id = f.integer(QLatin1String("id"));
        review.userId = userRef(f, QLatin1String("user"));
        review.state = f.oneOf(QLatin1String("state"), reviewStates, QStringLiteral("COMMENT"));
        review.body = f.text(QLatin1String("body"));
        review.commitId = f.text(QLatin1String("commit_id"), pull.headSha);
        review.stale = f.flag(QLatin1String("stale"));
        review.official = f.flag(QLatin1String("official"));
        review.dismissed = f.flag(QLatin1String("dismissed"));
        review.codeCommentsCount = int(f.integer(QLatin1String("comments_count")));
        review.submittedAt = f.date(QLatin1String("submitted_at"));
        review.updatedAt = f.date(QLatin1String("updated_at"));
        if (!review.updatedAt.isValid())
            review.updatedAt = review.submittedAt;
        return review;
    }

    ChangedFile readFile(const Fields &f) const
    {
        ChangedFile file;
        file.filename = f.requiredText(QLatin1String("filename"));
        file.status = f.oneOf(QLatin1String("status"), fileStatuses, QStringLiteral("changed"));
        file.previousFilename = f.text(QLatin1String("previous_filename"));
        if (file.status == QLatin1String("renamed") && file.previousFilename.isEmpty())
            f.problem(QLatin1String("previous_filename"), QStringLiteral("is needed for a rename"));
        file.additions = int(f.integer(QLatin1String("additions")));
        file.deletions = int(f.integer(QLatin1String("deletions")));
        return file;
    }

    Commit readCommit(const Fields &f) const
    {
        Commit commit;
        commit.sha = f.requiredText(QLatin1String("sha"));
        commit.message = f.requiredText(QLatin1String("message"));
        const QString author = f.requiredText(QLatin1String("author"));
        if (const User *user = m_state.user(author)) {
            commit.authorId = user->id;
            commit.authorName = user->fullName.isEmpty() ? user->login : user->fullName;
            commit.authorEmail = user->email;
        } else {
            // Someone without an account here: Gitea then sends null for the user objects.
            commit.authorName = author;
            commit.authorEmail = f.text(QLatin1String("author_email"));
        }
        commit.date = f.date(QLatin1String("date"));
        commit.parents = f.strings(QLatin1String("parents"));
        for (const Fields &file : f.children(QLatin1String("files"))) {
            commit.files.append(
                {file.requiredText(QLatin1String("filename")),
                 file.oneOf(QLatin1String("status"), fileStatuses, QStringLiteral("changed"))});
        }
        commit.additions = int(f.integer(QLatin1String("additions")));
        commit.deletions = int(f.integer(QLatin1String("deletions")));
        return commit;
    }

    /// Reads `key` of `f`, an object of lists by commit sha, handing each item to `read` with
    /// its sha.
    template <class Read>
    static void readBySha(const Fields &f, QLatin1String key, Read read)
    {
        const QJsonObject bySha = f.object(key);
        for (auto it = bySha.begin(); it != bySha.end(); ++it) {
            const QString where = f.where() + u'.' + key + u'.' + it.key();
            if (!it.value().isArray())
                refuse(where, QStringLiteral("not a list"));
            const QJsonArray items = it.value().toArray();
            for (qsizetype i = 0; i < items.size(); ++i) {
                const QString itemWhere = QStringLiteral("%1[%2]").arg(where).arg(i);
                read(Fields(asObject(items.at(i), itemWhere), itemWhere), it.key());
            }
        }
    }

    void readRuns(const Fields &f, Repository &repo) const
    {
        readBySha(f, QLatin1String("runs"), [&](const Fields &run, const QString &sha) {
            repo.runs.append(readRun(run, sha));
        });
    }

    /// "statuses": {sha: [{context, status, description, target_url, creator, created_at}]}.
    void readStatuses(const Fields &f, Repository &repo) const
    {
        readBySha(f, QLatin1String("statuses"), [&](const Fields &s, const QString &sha) {
            CommitStatus status;
            status.sha = sha;
            status.context = s.requiredText(QLatin1String("context"));
            status.state =
                s.oneOf(QLatin1String("status"), commitStates, QStringLiteral("success"));
            status.description = s.text(QLatin1String("description"));
            status.targetUrl = s.text(QLatin1String("target_url"));
            status.creatorId = userRef(s, QLatin1String("creator"));
            status.createdAt = s.date(QLatin1String("created_at"));
            status.id = repo.statuses.size() + 1;
            repo.statuses.append(status);
        });
    }

    Run readRun(const Fields &f, const QString &headSha) const
    {
        Run run;
        run.id = f.integer(QLatin1String("id"));
        run.runNumber = int(f.integer(QLatin1String("run_number")));
        run.workflow = f.text(QLatin1String("workflow"), QStringLiteral("ci.yml"));
        run.title = f.requiredText(QLatin1String("display_title"));
        run.event = f.text(QLatin1String("event"), QStringLiteral("pull_request"));
        run.headSha = headSha;
        run.headBranch = f.requiredText(QLatin1String("head_branch"));
        readStatus(f, run.status, run.conclusion);
        run.actorId = userRef(f, QLatin1String("actor"));
        run.runAttempt = int(f.integer(QLatin1String("run_attempt"), 1));
        run.createdAt = f.date(QLatin1String("created_at"));
        run.startedAt = f.date(QLatin1String("started_at"));
        run.completedAt = f.date(QLatin1String("completed_at"));
        for (const Fields &job : f.children(QLatin1String("jobs")))
            run.jobs.append(readJob(job));
        return run;
    }

    Job readJob(const Fields &f) const
    {
        Job job;
        job.id = f.integer(QLatin1String("id"));
        job.name = f.requiredText(QLatin1String("name"));
        job.labels = f.has(QLatin1String("labels")) ? f.strings(QLatin1String("labels"))
                                                    : QStringList{QStringLiteral("ubuntu-latest")};
        readStatus(f, job.status, job.conclusion);
        job.runnerId = f.integer(QLatin1String("runner_id"));
        job.runnerName = f.text(QLatin1String("runner_name"));
        job.createdAt = f.date(QLatin1String("created_at"));
        job.startedAt = f.date(QLatin1String("started_at"));
        job.completedAt = f.date(QLatin1String("completed_at"));
        for (const Fields &s : f.children(QLatin1String("steps"))) {
            Step step;
            step.name = s.requiredText(QLatin1String("name"));
            readStatus(s, step.status, step.conclusion);
            step.startedAt = s.date(QLatin1String("started_at"));
            step.completedAt = s.date(QLatin1String("completed_at"));
            job.steps.append(step);
        }
        if (f.has(QLatin1String("log")))
            job.log = f.text(QLatin1String("log")).toUtf8();
        return job;
    }

    /// A status and, exactly when it is "completed", a conclusion.
    static void readStatus(const Fields &f, QString &status, QString &conclusion)
    {
        status = f.oneOf(QLatin1String("status"), runStatuses, QStringLiteral("completed"));
        if (status == QLatin1String("completed"))
            conclusion = f.oneOf(QLatin1String("conclusion"), conclusions, QString());
        else if (f.has(QLatin1String("conclusion")))
            f.problem(QLatin1String("conclusion"), QStringLiteral("is only for completed work"));
    }

    /// Ids and numbers the seed left out, and the branches it implies.
    void finish()
    {
        QList<Repository *> repos;
        QList<PullRequest *> pulls;
        QList<Label *> labels;
        QList<Review *> reviews;
        QList<Comment *> comments;
        QList<Run *> runs;
        QList<Job *> jobs;
        for (Repository &repo : m_state.repositories) {
            repos.append(&repo);
            for (PullRequest &pull : repo.pulls) {
                pulls.append(&pull);
                for (Label &label : pull.labels)
                    labels.append(&label);
                for (Review &review : pull.reviews)
                    reviews.append(&review);
                for (Comment &comment : pull.comments)
                    comments.append(&comment);
            }
            for (Run &run : repo.runs) {
                runs.append(&run);
                for (Job &job : run.jobs)
                    jobs.append(&job);
            }
        }
        assignIds(repos, &Repository::id);
        assignIds(pulls, &PullRequest::id);
        assignIds(labels, &Label::id);
        assignIds(reviews, &Review::id);
        assignIds(comments, &Comment::id);
        assignIds(runs, &Run::id);
        assignIds(jobs, &Job::id);
        for (const Review *review : reviews)
            m_state.nextReviewId = std::max(m_state.nextReviewId, review->id + 1);
        for (const Comment *comment : comments)
            m_state.nextCommentId = std::max(m_state.nextCommentId, comment->id + 1);
        for (Repository &repo : m_state.repositories)
            finishRepository(repo);
    }

    void finishRepository(Repository &repo) const
    {
        const QString fullName = m_state.user(repo.ownerId)->login + u'/' + repo.name;
        auto ensureBranch = [&repo](const QString &name, const QString &commit) {
            Branch *branch = repo.branch(name);
            if (!branch)
                repo.branches.append({name, commit, false});
            else if (branch->commit.isEmpty())
                branch->commit = commit;
        };
        ensureBranch(repo.defaultBranch, derivedSha(fullName + u':' + repo.defaultBranch));
        assignNumbers(repo.pulls, &PullRequest::number);
        for (PullRequest &pull : repo.pulls) {
            ensureBranch(pull.baseBranch, derivedSha(fullName + u':' + pull.baseBranch));
            if (!pull.merged)
                ensureBranch(pull.headBranch, pull.headSha);
            if (pull.mergeBase.isEmpty())
                pull.mergeBase = repo.branch(pull.baseBranch)->commit;
        }
        std::sort(repo.runs.begin(), repo.runs.end(),
                  [](const Run &a, const Run &b) { return a.id < b.id; });
        assignNumbers(repo.runs, &Run::runNumber);
    }

    State m_state;
};

} // namespace

SeedResult readSeed(const QByteArray &json)
{
    try {
        return {SeedReader().read(json), {}};
    } catch (const SeedError &error) {
        return {std::nullopt, error.message};
    }
}

} // namespace kestrine::sim
