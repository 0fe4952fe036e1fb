// The simulation's read endpoints, each answering as the Gitea handler of the same route does.

#include "giteaendpoints_p.h"
#include "giteapaging.h"

#include <QJsonArray>
#include <QSet>
#include <algorithm>
#include <functional>

namespace kestrine::sim {
namespace {

Page pageOf(const Call &call)
{
    return Page::fromQuery(call.query(), call.state.defaultPagingNum, call.state.maxResponseItems);
}

/// "Link" and "X-Total-Count" for `page` of a list of `total` items, linking this request's own
/// address below ROOT_URL.
HeaderList linkHeaders(const Call &call, qint64 total, const Page &page)
{
    return pagingHeaders(total, page, call.json.rootUrl(), call.relativePath,
                         call.request.rawQuery);
}

/// A paged list with "Link" and "X-Total-Count", as Gitea sends repositories and pull requests.
template <class Item, class Render>
HttpAnswer pagedList(const Call &call, const QList<Item> &all, Render render,
                     bool withPageCounts = false)
{
    const Page page = pageOf(call);
    QJsonArray items;
    for (const auto &item : page.of(all))
        items.append(render(item));
    HttpAnswer response = call.answer(items);
    response.headers = linkHeaders(call, all.size(), page);
    if (withPageCounts)
        addPageCountHeaders(response.headers, all.size(), page);
    return response;
}

/// Gitea's sort orders for pull request lists ("oldest", "recentupdate", "leastupdate");
/// anything else is its default, newest first. Ties go by creation, then by id.
std::function<bool(const PullRequest *, const PullRequest *)> pullOrder(const QString &sort)
{
    const bool byUpdate = sort.endsWith(QLatin1String("update"));
    const bool ascending = sort == QLatin1String("oldest") || sort == QLatin1String("leastupdate");
    return [byUpdate, ascending](const PullRequest *a, const PullRequest *b) {
        auto key = [byUpdate](const PullRequest *p) {
            return std::tuple(byUpdate ? p->updatedAt : p->createdAt, p->createdAt, p->id);
        };
        return ascending ? key(a) < key(b) : key(b) < key(a);
    };
}

/// A list that Gitea counts but links no pages of: the items with "X-Total-Count".
HttpAnswer countedList(const Call &call, const QJsonArray &items, qint64 total)
{
    HttpAnswer response = call.answer(items);
    response.headers = totalCountHeaders(total);
    return response;
}

} // namespace

bool reviewVisible(const Review &review, const User *viewer)
{
    return review.state != QLatin1String("PENDING") ||
           (viewer && (viewer->isAdmin || viewer->id == review.userId));
}

QList<const Review *> visibleReviews(const PullRequest &pull, const User *viewer)
{
    QList<const Review *> visible;
    for (const Review &review : pull.reviews) {
        if (reviewVisible(review, viewer))
            visible.append(&review);
    }
    return visible;
}

HttpAnswer currentUser(Call &call)
{
    return call.answer(call.json.user(*call.doer));
}

HttpAnswer listMyRepos(Call &call)
{
    // The repositories the user owns or collaborates on, by name as Gitea's search orders them.
    QList<const Repository *> mine;
    for (const Repository &repo : call.state.repositories) {
        if (repo.ownerId == call.doer->id || repo.collaborators.contains(call.doer->id))
            mine.append(&repo);
    }
    std::stable_sort(mine.begin(), mine.end(), [](const Repository *a, const Repository *b) {
        const int byName = a->name.compare(b->name, Qt::CaseInsensitive);
        return byName != 0 ? byName < 0 : a->id < b->id;
    });
    return pagedList(call, mine, [&call](const Repository *r) { return call.json.repository(*r); });
}

HttpAnswer listPulls(Call &call)
{
    // Only "open" and "closed" filter; a missing or other state lists all, as Gitea's query does.
    const QString state = call.query().queryItemValue(QStringLiteral("state")).trimmed();
    QList<const PullRequest *> pulls;
    for (const PullRequest &pull : call.repo->pulls) {
        if ((state == QLatin1String("open") && pull.closed) ||
            (state == QLatin1String("closed") && !pull.closed))
            continue;
        pulls.append(&pull);
    }
    std::stable_sort(pulls.begin(), pulls.end(),
                     pullOrder(call.query().queryItemValue(QStringLiteral("sort")).trimmed()));
    return pagedList(call, pulls, [&call](const PullRequest *p) {
        return call.json.pullRequest(*call.repo, *p);
    });
}

HttpAnswer getPull(Call &call)
{
    const PullRequest *pull = call.pull();
    return pull ? call.answer(call.json.pullRequest(*call.repo, *pull)) : call.notFound();
}

HttpAnswer pullDiff(Call &call)
{
    const PullRequest *pull = call.pull();
    if (!pull)
        return call.notFound();
    // Gitea streams `git diff` without naming a type; Go's sniffing then says plain UTF-8 text.
    return HttpAnswer{200, pull->diff, {{"Content-Type", "text/plain; charset=utf-8"}}};
}

HttpAnswer listReviews(Call &call)
{
    const PullRequest *pull = call.pull();
    if (!pull)
        return call.notFound();
    // Gitea cuts the page from all the pull request's reviews and counts them all, and only then
    // drops the pending ones the doer may not see: a page can hold fewer than its limit with more
    // to come, and X-Total-Count counts reviews this doer never gets. It links no pages here (only
    // the count is set), so the next page is found by asking for page=2, 3, ... until one is empty.
    QJsonArray reviews;
    for (const Review &review : pageOf(call).of(pull->reviews)) {
        if (reviewVisible(review, call.doer))
            reviews.append(call.json.review(*call.repo, *pull, review));
    }
    return countedList(call, reviews, pull->reviews.size());
}

HttpAnswer listComments(Call &call)
{
    const PullRequest *pull = call.pull();
    if (!pull)
        return call.notFound();
    // Gitea reads no `page` or `limit` here: the whole list comes at once, with its count.
    QJsonArray comments;
    for (const Comment &comment : pull->comments)
        comments.append(call.json.comment(*call.repo, *pull, comment));
    return countedList(call, comments, pull->comments.size());
}

HttpAnswer listFiles(Call &call)
{
    const PullRequest *pull = call.pull();
    if (!pull)
        return call.notFound();
    return pagedList(
        call, pull->files,
        [&](const ChangedFile &file) { return call.json.changedFile(*call.repo, *pull, file); },
        true);
}

HttpAnswer listCommits(Call &call)
{
    const PullRequest *pull = call.pull();
    if (!pull)
        return call.notFound();
    return pagedList(
        call, pull->commits,
        [&call](const Commit &commit) { return call.json.commit(*call.repo, commit); }, true);
}

HttpAnswer listRuns(Call &call)
{
    const QUrlQuery query = call.query();
    const QString headSha = query.queryItemValue(QStringLiteral("head_sha"));
    const QString branch = query.queryItemValue(QStringLiteral("branch"));
    const QString event = query.queryItemValue(QStringLiteral("event"));
    QList<const Run *> runs;
    for (auto run = call.repo->runs.crbegin(); run != call.repo->runs.crend(); ++run) {
        if ((headSha.isEmpty() || run->headSha == headSha) &&
            (branch.isEmpty() || run->headBranch == branch) &&
            (event.isEmpty() || run->event == event))
            runs.append(&*run);
    }
    const Page page = pageOf(call);
    QJsonArray items;
    for (const Run *run : page.of(runs))
        items.append(call.json.run(*call.repo, *run));
    HttpAnswer response =
        call.answer(QJsonObject{{QStringLiteral("workflow_runs"), items},
                                {QStringLiteral("total_count"), qint64(runs.size())}});
    // As Gitea's development line answers. Gitea 1.25 and 1.26 send only the envelope's
    // total_count, without "Link" and "X-Total-Count".
    response.headers = linkHeaders(call, runs.size(), page);
    return response;
}

HttpAnswer listJobs(Call &call)
{
    const Run *run = call.repo->run(call.params.value(QStringLiteral("run")).toLongLong());
    if (!run)
        return call.notFound();
    const Page page = pageOf(call);
    QJsonArray items;
    for (const Job &job : page.of(run->jobs))
        items.append(call.json.job(*call.repo, *run, job));
    HttpAnswer response =
        call.answer(QJsonObject{{QStringLiteral("jobs"), items},
                                {QStringLiteral("total_count"), qint64(run->jobs.size())}});
    // As for the runs: the headers come from Gitea's development line; 1.25 and 1.26 send only
    // the envelope's total_count.
    response.headers = linkHeaders(call, run->jobs.size(), page);
    return response;
}

namespace {

/// The status Gitea Actions posts for one job of a run: its context is "workflow / job (event)",
/// its target the job's page in the run.
CommitStatus actionsStatus(const Call &call, const Run &run, qsizetype jobIndex)
{
    const Job &job = run.jobs.at(jobIndex);
    CommitStatus status;
    status.id = job.id;
    status.sha = run.headSha;
    status.context = QStringLiteral("%1 / %2 (%3)").arg(run.workflow, job.name, run.event);
    if (job.status != u"completed")
        status.state = QStringLiteral("pending");
    else if (job.conclusion == u"failure")
        status.state = QStringLiteral("failure");
    else if (job.conclusion == u"cancelled")
        status.state = QStringLiteral("error");
    else
        status.state = QStringLiteral("success");
    status.description = job.status == u"completed" ? QStringLiteral("Has been completed")
                                                    : QStringLiteral("Waiting to run");
    status.targetUrl = call.json.htmlUrl(*call.repo) +
                       QStringLiteral("/actions/runs/%1/jobs/%2").arg(run.runNumber).arg(jobIndex);
    status.creatorId = run.actorId;
    status.createdAt = job.createdAt.isValid() ? job.createdAt : run.createdAt;
    return status;
}

/// Gitea's combined state: the worst of the statuses, "" without any.
QString combinedState(const QList<CommitStatus> &statuses)
{
    const QStringList worstFirst{QStringLiteral("error"), QStringLiteral("failure"),
                                 QStringLiteral("warning"), QStringLiteral("pending"),
                                 QStringLiteral("success")};
    for (const QString &state : worstFirst) {
        for (const CommitStatus &status : statuses) {
            if (status.state == state)
                return state;
        }
    }
    return {};
}

bool isKnownCommit(const Repository &repo, const QString &sha)
{
    const auto pullHas = [&sha](const PullRequest &pull) {
        return pull.headSha == sha || pull.mergeBase == sha ||
               std::any_of(pull.commits.cbegin(), pull.commits.cend(),
                           [&sha](const Commit &c) { return c.sha == sha; });
    };
    return std::any_of(repo.pulls.cbegin(), repo.pulls.cend(), pullHas) ||
           std::any_of(repo.branches.cbegin(), repo.branches.cend(),
                       [&sha](const Branch &b) { return b.commit == sha; });
}

} // namespace

HttpAnswer combinedStatus(Call &call)
{
    const QString sha = call.params.value(QStringLiteral("ref"));
    if (!isKnownCommit(*call.repo, sha))
        return call.notFound();
    // The latest status of each context, newest first, as Gitea lists them.
    QList<CommitStatus> statuses;
    for (const Run &run : call.repo->runs) {
        for (qsizetype i = 0; run.headSha == sha && i < run.jobs.size(); ++i)
            statuses.append(actionsStatus(call, run, i));
    }
    for (const CommitStatus &status : call.repo->statuses) {
        if (status.sha == sha)
            statuses.append(status);
    }
    std::stable_sort(
        statuses.begin(), statuses.end(),
        [](const CommitStatus &a, const CommitStatus &b) { return a.createdAt > b.createdAt; });
    QSet<QString> seenContexts;
    statuses.removeIf([&seenContexts](const CommitStatus &status) {
        const bool older = seenContexts.contains(status.context);
        seenContexts.insert(status.context);
        return older;
    });
    const Page page = pageOf(call);
    QJsonArray items;
    for (const CommitStatus &status : page.of(statuses))
        items.append(call.json.commitStatus(*call.repo, status));
    HttpAnswer response = call.answer(QJsonObject{
        {QStringLiteral("state"), combinedState(statuses)},
        {QStringLiteral("sha"), sha},
        {QStringLiteral("total_count"), qint64(statuses.size())},
        {QStringLiteral("statuses"), items},
        {QStringLiteral("repository"), call.json.repository(*call.repo)},
        {QStringLiteral("commit_url"),
         call.json.apiUrl(*call.repo) + QStringLiteral("/git/commits/") + sha},
        {QStringLiteral("url"), call.json.apiUrl(*call.repo) + QStringLiteral("/commits/") + sha +
                                    QStringLiteral("/status")},
    });
    response.headers = linkHeaders(call, statuses.size(), page);
    return response;
}

HttpAnswer jobLogs(Call &call)
{
    const auto found = call.repo->job(call.params.value(QStringLiteral("job")).toLongLong());
    if (!found)
        return call.notFound();
    const auto [run, job] = *found;
    if (!job->log)
        return call.notFound({QStringLiteral("job not started")});
    const QByteArray filename =
        QStringLiteral("%1-%2-%3.log").arg(run->workflow, job->name).arg(job->id).toUtf8();
    return HttpAnswer{200,
                      *job->log,
                      {{"Content-Type", "text/plain; charset=utf-8"},
                       {"Content-Disposition", "attachment; filename=\"" + filename + '"'}}};
}

} // namespace kestrine::sim
