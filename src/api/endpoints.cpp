// The Gitea endpoints behind GiteaClient's operations. Each member hands a copy of the client to
// a free coroutine, so a request stays valid even when the client it was called on is gone.

#include "giteaclient.h"
#include "paging_p.h"
#include "requestcore_p.h"
#include "workerthread.h"

#include <QCoroFuture>
#include <QFuture>
#include <QJsonDocument>
#include <QStringDecoder>
#include <QThreadPool>
#include <QtConcurrent/QtConcurrentRun>
#include <optional>

namespace kestrine {
namespace {

using http::QueryItems;

constexpr int repositoriesPerPage = 50;
constexpr int maxRepositoryPages = 10;

/// Gitea wraps some lists in an object, e.g. {"workflow_runs": [...], "total_count": 3}. An absent
/// or null list is an empty one.
template <class Item, const char *Key>
struct ListEnvelope
{
    using List = QList<Item>;
    std::optional<List> items;
    /// The size of the whole list, over all pages.
    std::optional<qint64> totalCount;

    static constexpr auto fields()
    {
        return std::tuple{field(Key, &ListEnvelope::items),
                          field("total_count", &ListEnvelope::totalCount)};
    }
};

constexpr char workflowRunsKey[] = "workflow_runs";
constexpr char jobsKey[] = "jobs";
constexpr char statusesKey[] = "statuses";
using RunsEnvelope = ListEnvelope<ActionRun, workflowRunsKey>;
using JobsEnvelope = ListEnvelope<ActionJob, jobsKey>;
/// The combined status of a commit: its "state", "sha" and "repository" are not read.
using CombinedStatusEnvelope = ListEnvelope<CommitStatus, statusesKey>;

struct MergeBody
{
    QString method;
    bool deleteBranchAfterMerge = false;

    static constexpr auto fields()
    {
        return std::tuple{field("Do", &MergeBody::method),
                          field("delete_branch_after_merge", &MergeBody::deleteBranchAfterMerge)};
    }
};

struct StateBody
{
    QString state;

    static constexpr auto fields() { return std::tuple{field("state", &StateBody::state)}; }
};

struct ReviewBody
{
    QString event;
    std::optional<QString> body;

    static constexpr auto fields()
    {
        return std::tuple{field("event", &ReviewBody::event), field("body", &ReviewBody::body)};
    }
};

struct CommentBody
{
    QString body;

    static constexpr auto fields() { return std::tuple{field("body", &CommentBody::body)}; }
};

template <JsonRecord T>
QByteArray jsonBody(const T &body)
{
    return QJsonDocument(encodeJson(body).toObject()).toJson(QJsonDocument::Compact);
}

QString repoPath(const QString &owner, const QString &repo)
{
    return QStringLiteral("repos/") + owner + u'/' + repo;
}

QString pullPath(const QString &owner, const QString &repo, qint64 number)
{
    return repoPath(owner, repo) + QStringLiteral("/pulls/") + QString::number(number);
}

QString issuePath(const QString &owner, const QString &repo, qint64 number)
{
    return repoPath(owner, repo) + QStringLiteral("/issues/") + QString::number(number);
}

QString runPath(const QString &owner, const QString &repo, qint64 runID)
{
    return repoPath(owner, repo) + QStringLiteral("/actions/runs/") + QString::number(runID);
}

QString reviewEvent(const QString &state)
{
    if (state == u"approved")
        return QStringLiteral("APPROVED");
    if (state == u"changes")
        return QStringLiteral("REQUEST_CHANGES");
    return QStringLiteral("COMMENT");
}

/// Branch names may hold "/" (kept: it is allowed in a path) as well as blanks, "#" or "%",
/// which are escaped here once; the URL builder keeps existing escapes as they are.
QString encodedBranch(const QString &branch)
{
    return QString::fromLatin1(
        QUrl::toPercentEncoding(branch, QByteArrayLiteral("!$&'()*+,;=:@/")));
}

/// `bytes` as UTF-8 text; nothing when they are not UTF-8.
std::optional<QString> utf8Text(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

QCoro::Task<http::Response> repositoryPage(GiteaClient client, int page)
{
    const QueryItems query{{QStringLiteral("page"), QString::number(page)},
                           {QStringLiteral("limit"), QString::number(repositoriesPerPage)}};
    co_return co_await http::exchange(std::move(client), QStringLiteral("user/repos"), "GET",
                                      query);
}

/// The last page that the walk of fetchRepos() asks for when the list holds `total` repositories:
/// every full page and the one after it, which comes back short (or empty), within the bound.
int lastPageFor(qint64 total)
{
    return int(std::min<qint64>(maxRepositoryPages, total / repositoriesPerPage + 1));
}

QCoro::Task<QList<Repository>> fetchRepos(GiteaClient client)
{
    // The walk goes page by page and stops at the first short one. A full first page with
    // "X-Total-Count" (Gitea sends it) says which pages the walk will reach, and those are asked
    // for at once: a user with 500 repositories waits two round trips instead of ten. The walk
    // itself is unchanged, so a list that grew or shrank between pages ends as it would have; a
    // page asked for ahead that the walk does not reach is dropped, its failure included.
    std::vector<QCoro::Task<http::Response>> ahead;
    QList<Repository> all;
    for (int page = 1; page <= maxRepositoryPages; ++page) {
        // (Not one conditional expression with an await in each branch: GCC 12 miscompiles it.)
        http::Response response;
        if (const auto aheadIndex = std::size_t(page - 2); aheadIndex < ahead.size())
            response = co_await std::move(ahead[aheadIndex]);
        else
            response = co_await repositoryPage(client, page);
        const auto pageItems = http::decodeBody<QList<Repository>>(response.body, client.token());
        all.append(pageItems);
        if (pageItems.size() < repositoriesPerPage)
            break;
        if (page == 1) {
            const int lastPage = lastPageFor(http::totalCountHeader(response).value_or(0));
            for (int next = 2; next <= lastPage; ++next)
                ahead.push_back(repositoryPage(client, next));
        }
    }
    co_return all;
}

template <class T>
QCoro::Task<T> fetch(GiteaClient client, QString path, std::optional<QueryItems> query = {})
{
    co_return co_await http::get<T>(std::move(client), std::move(path), std::move(query));
}

/// Texts from this size on are decoded on textDecoder(): a 20 MB diff takes 20 ms to decode,
/// more than a frame of the screen waiting for it.
constexpr qsizetype decodeAsideFromBytes = 1 << 20;

/// The one thread that decodes large texts.
QThreadPool &textDecoder()
{
    static WorkerThread pool;
    return pool;
}

/// The body as text; a body that is not UTF-8 is an invalid response.
QCoro::Task<QString> fetchText(GiteaClient client, QString path)
{
    QByteArray bytes = co_await http::request(std::move(client), std::move(path), "GET");
    std::optional<QString> text;
    if (bytes.size() < decodeAsideFromBytes) {
        text = utf8Text(bytes);
    } else {
        QFuture<std::optional<QString>> decoding =
            QtConcurrent::run(&textDecoder(), &utf8Text, std::move(bytes));
        text = co_await decoding;
    }
    if (!text)
        throw APIError::invalidResponse();
    co_return std::move(*text);
}

/// Every page of a list answered as a plain JSON array.
template <class T>
QCoro::Task<PagedList<T>> fetchPages(GiteaClient client, QString path)
{
    PagedList<T> list;
    const QString token = client.token();
    list.cut = co_await http::getPages(
        std::move(client), std::move(path), [&list, &token](const QByteArray &body) {
            const auto page = http::decodeBody<QList<T>>(body, token);
            list.items.append(page);
            return http::PageContent{page.size(), std::nullopt};
        });
    co_return list;
}

/// Every page of a list answered in an envelope, whose total counts the pages still to come
/// where the server sends no paging headers.
template <class Envelope>
QCoro::Task<PagedList<typename Envelope::List::value_type>> fetchEnvelopePages(GiteaClient client,
                                                                               QString path)
{
    PagedList<typename Envelope::List::value_type> list;
    const QString token = client.token();
    list.cut = co_await http::getPages(
        std::move(client), std::move(path), [&list, &token](const QByteArray &body) {
            const auto envelope = http::decodeBody<Envelope>(body, token);
            const auto page = envelope.items.value_or(typename Envelope::List());
            list.items.append(page);
            return http::PageContent{page.size(), envelope.totalCount};
        });
    co_return list;
}

template <class Envelope>
QCoro::Task<typename Envelope::List> fetchEnvelope(GiteaClient client, QString path,
                                                   std::optional<QueryItems> query)
{
    const Envelope envelope =
        co_await http::get<Envelope>(std::move(client), std::move(path), std::move(query));
    co_return envelope.items.value_or(typename Envelope::List());
}

QCoro::Task<> send(GiteaClient client, QString path, QByteArray method,
                   std::optional<QByteArray> body = std::nullopt)
{
    co_await http::request(std::move(client), std::move(path), std::move(method), std::nullopt,
                           std::move(body));
}

template <class T>
QCoro::Task<T> sendAndDecode(GiteaClient client, QString path, QByteArray body)
{
    const QString token = client.token();
    const QByteArray bytes =
        co_await http::request(std::move(client), std::move(path), "POST", std::nullopt, body);
    co_return http::decodeBody<T>(bytes, token);
}

} // namespace

QCoro::Task<QList<Repository>> GiteaClient::repos() const
{
    return fetchRepos(*this);
}

QCoro::Task<QList<PullRequest>> GiteaClient::pullRequests(QString owner, QString repo) const
{
    return fetch<QList<PullRequest>>(*this, repoPath(owner, repo) + QStringLiteral("/pulls"),
                                     QueryItems{{QStringLiteral("state"), QStringLiteral("open")},
                                                {QStringLiteral("limit"), QStringLiteral("100")}});
}

QCoro::Task<PullRequest> GiteaClient::pullRequest(QString owner, QString repo, qint64 number) const
{
    return fetch<PullRequest>(*this, pullPath(owner, repo, number));
}

QCoro::Task<PRUser> GiteaClient::currentUser() const
{
    return fetch<PRUser>(*this, QStringLiteral("user"));
}

QCoro::Task<PagedList<PullReview>> GiteaClient::reviews(QString owner, QString repo,
                                                        qint64 number) const
{
    return fetchPages<PullReview>(*this,
                                  pullPath(owner, repo, number) + QStringLiteral("/reviews"));
}

QCoro::Task<QList<IssueComment>> GiteaClient::comments(QString owner, QString repo,
                                                       qint64 number) const
{
    return fetch<QList<IssueComment>>(*this,
                                      issuePath(owner, repo, number) + QStringLiteral("/comments"));
}

QCoro::Task<PagedList<ChangedFile>> GiteaClient::changedFiles(QString owner, QString repo,
                                                              qint64 number) const
{
    return fetchPages<ChangedFile>(*this, pullPath(owner, repo, number) + QStringLiteral("/files"));
}

QCoro::Task<PagedList<PRCommit>> GiteaClient::commits(QString owner, QString repo,
                                                      qint64 number) const
{
    return fetchPages<PRCommit>(*this, pullPath(owner, repo, number) + QStringLiteral("/commits"));
}

QCoro::Task<QString> GiteaClient::diff(QString owner, QString repo, qint64 number) const
{
    return fetchText(*this, pullPath(owner, repo, number) + QStringLiteral(".diff"));
}

QCoro::Task<QList<ActionRun>> GiteaClient::runs(QString owner, QString repo, QString sha) const
{
    return fetchEnvelope<RunsEnvelope>(*this,
                                       repoPath(owner, repo) + QStringLiteral("/actions/runs"),
                                       QueryItems{{QStringLiteral("head_sha"), sha},
                                                  {QStringLiteral("limit"), QStringLiteral("20")}});
}

QCoro::Task<PagedList<ActionJob>> GiteaClient::jobs(QString owner, QString repo, qint64 runID) const
{
    return fetchEnvelopePages<JobsEnvelope>(*this,
                                            runPath(owner, repo, runID) + QStringLiteral("/jobs"));
}

QCoro::Task<PagedList<CommitStatus>> GiteaClient::commitStatuses(QString owner, QString repo,
                                                                 QString sha) const
{
    return fetchEnvelopePages<CombinedStatusEnvelope>(*this, repoPath(owner, repo) +
                                                                 QStringLiteral("/commits/") + sha +
                                                                 QStringLiteral("/status"));
}

QCoro::Task<QString> GiteaClient::jobLogs(QString owner, QString repo, qint64 jobID) const
{
    return fetchText(*this, repoPath(owner, repo) + QStringLiteral("/actions/jobs/") +
                                QString::number(jobID) + QStringLiteral("/logs"));
}

QCoro::Task<> GiteaClient::rerun(QString owner, QString repo, qint64 runID) const
{
    return send(*this, runPath(owner, repo, runID) + QStringLiteral("/rerun"), "POST");
}

QCoro::Task<> GiteaClient::merge(QString owner, QString repo, qint64 number, QString method,
                                 bool deleteBranchAfterMerge) const
{
    return send(*this, pullPath(owner, repo, number) + QStringLiteral("/merge"), "POST",
                jsonBody(MergeBody{std::move(method), deleteBranchAfterMerge}));
}

QCoro::Task<> GiteaClient::setState(QString owner, QString repo, qint64 number, QString state) const
{
    return send(*this, pullPath(owner, repo, number), "PATCH",
                jsonBody(StateBody{std::move(state)}));
}

QCoro::Task<PullReview> GiteaClient::submitReview(QString owner, QString repo, qint64 number,
                                                  QString state,
                                                  std::optional<QString> comment) const
{
    return sendAndDecode<PullReview>(*this,
                                     pullPath(owner, repo, number) + QStringLiteral("/reviews"),
                                     jsonBody(ReviewBody{reviewEvent(state), std::move(comment)}));
}

QCoro::Task<IssueComment> GiteaClient::postComment(QString owner, QString repo, qint64 number,
                                                   QString body) const
{
    return sendAndDecode<IssueComment>(*this,
                                       issuePath(owner, repo, number) + QStringLiteral("/comments"),
                                       jsonBody(CommentBody{std::move(body)}));
}

QCoro::Task<> GiteaClient::updateBranch(QString owner, QString repo, qint64 number) const
{
    return send(*this, pullPath(owner, repo, number) + QStringLiteral("/update"), "POST");
}

QCoro::Task<> GiteaClient::deleteBranch(QString owner, QString repo, QString branch) const
{
    return send(*this, repoPath(owner, repo) + QStringLiteral("/branches/") + encodedBranch(branch),
                "DELETE");
}

} // namespace kestrine
