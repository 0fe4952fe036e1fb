#pragma once

#include "httpsession.h"
#include "logsink.h"
#include "records.h"

#include <QCoroTask>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <chrono>
#include <optional>

namespace kestrine {

/// How much of a list arrived when the page bound stopped fetching before the server's last page.
struct ListCut
{
    /// The items that arrived.
    qsizetype shown = 0;
    /// How many the server said there are in all, when it said so.
    std::optional<qint64> total;

    bool operator==(const ListCut &) const = default;
};

/// A list the server hands out page by page, with every page fetched up to the bound.
template <class T>
struct PagedList
{
    QList<T> items;
    /// Set only when the bound stopped the fetch while the server still named a further page.
    std::optional<ListCut> cut;
};

/// The one way the app talks to a Gitea server: an immutable, cheap-to-copy value holding the
/// instance URL, the access token, the HTTP session and the log that every request writes one
/// line to. Build a fresh one for each piece of work (the settings hand them out), so that a
/// changed setting takes effect on the next call.
class GiteaClient
{
public:
    /// How many pages of one list are fetched at most: a server that always names a next page
    /// must not keep the client busy forever.
    static constexpr int maxListPages = 100;
    /// How long a transfer may stall before it fails.
    static constexpr std::chrono::milliseconds defaultTimeout{30000};

    /// `instanceURL` has no trailing "/". `log` may be null (then nothing is logged). A `log`
    /// that is also a QObject (the app's log store) may go away before a request it was given to
    /// ends: from then on nothing is written to it.
    /// `timeout` is there for tests that must not wait half a minute for a silent server.
    GiteaClient(QUrl instanceURL, QString token, HttpSession *session, LogSink *log,
                std::chrono::milliseconds timeout = defaultTimeout);

    const QUrl &instanceURL() const { return m_instanceURL; }
    const QString &token() const { return m_token; }
    HttpSession *session() const { return m_session; }
    /// Null when none was given, or once a log that is a QObject is gone.
    LogSink *log() const { return m_logObject.isNull() && m_logIsObject ? nullptr : m_log; }
    std::chrono::milliseconds timeout() const { return m_timeout; }

    // The Gitea endpoints the app uses. Each fails with APIError or TransportError as the request
    // core describes, leaves one log line per request, and neither catches nor retries anything.
    // `owner` and `repo` are inserted into paths as given (a repository's owner login and name).
    //
    // The lists returned as PagedList are asked for once without a query, as a server that holds
    // them on one page expects; when the answer names a further page (a "Link" header with
    // rel="next", or a total count larger than what arrived), each further page is one more
    // request to the same endpoint at the instance URL, never to the host a link names. A failing
    // page fails the whole list.

    /// The repositories the token can see, 50 a page, at most 10 pages (500 repositories): a
    /// failing page fails the whole call.
    QCoro::Task<QList<Repository>> repos() const;
    /// One page of at most 100 open pull requests; there is no paging here on purpose.
    QCoro::Task<QList<PullRequest>> pullRequests(QString owner, QString repo) const;
    QCoro::Task<PullRequest> pullRequest(QString owner, QString repo, qint64 number) const;
    QCoro::Task<PRUser> currentUser() const;
    QCoro::Task<PagedList<PullReview>> reviews(QString owner, QString repo, qint64 number) const;
    QCoro::Task<QList<IssueComment>> comments(QString owner, QString repo, qint64 number) const;
    QCoro::Task<PagedList<ChangedFile>> changedFiles(QString owner, QString repo,
                                                     qint64 number) const;
    QCoro::Task<PagedList<PRCommit>> commits(QString owner, QString repo, qint64 number) const;
    /// The pull request's unified diff as text; a body that is not UTF-8 is an invalid response.
    QCoro::Task<QString> diff(QString owner, QString repo, qint64 number) const;
    /// The Actions runs of one head commit (at most 20).
    QCoro::Task<QList<ActionRun>> runs(QString owner, QString repo, QString sha) const;
    QCoro::Task<PagedList<ActionJob>> jobs(QString owner, QString repo, qint64 runID) const;
    /// A job's raw log as text; a body that is not UTF-8 is an invalid response.
    QCoro::Task<QString> jobLogs(QString owner, QString repo, qint64 jobID) const;
    /// The latest status of each context on commit `sha` (GET commits/{sha}/status), every page.
    QCoro::Task<PagedList<CommitStatus>> commitStatuses(QString owner, QString repo,
                                                        QString sha) const;
    QCoro::Task<> rerun(QString owner, QString repo, qint64 runID) const;
    /// `method` is Gitea's "Do" value: "merge", "rebase" or "squash".
    QCoro::Task<> merge(QString owner, QString repo, qint64 number, QString method,
                        bool deleteBranchAfterMerge) const;
    /// `state` is "closed" or "open".
    QCoro::Task<> setState(QString owner, QString repo, qint64 number, QString state) const;
    /// `state` is the app's choice: "approved", "changes", or anything else for a comment.
    QCoro::Task<PullReview> submitReview(QString owner, QString repo, qint64 number, QString state,
                                         std::optional<QString> comment) const;
    QCoro::Task<IssueComment> postComment(QString owner, QString repo, qint64 number,
                                          QString body) const;
    /// Brings the head branch up to date with its base.
    QCoro::Task<> updateBranch(QString owner, QString repo, qint64 number) const;
    QCoro::Task<> deleteBranch(QString owner, QString repo, QString branch) const;

    /// A copy whose requests are cancelled when `scope` is destroyed: a screen's model passes
    /// itself (or a per-load child) so that leaving the screen abandons its requests. A cancelled
    /// request fails with a TransportError that `isCancellation()`, and is never logged.
    GiteaClient cancelledWith(QObject *scope) const;
    QObject *cancellationScope() const { return m_cancellationScope; }
    /// True once the scope given to cancelledWith() is gone.
    bool isCancelled() const { return m_hasCancellationScope && !m_cancellationScope; }

    /// The process-wide HTTP session of the main thread, created on first use.
    static HttpSession *sharedSession();

private:
    QUrl m_instanceURL;
    QString m_token;
    QPointer<HttpSession> m_session;
    LogSink *m_log;
    // The log as a QObject, when it is one: a request still answered after the screens and the
    // stores went away (the shared session outlives them) finds it gone.
    QPointer<QObject> m_logObject;
    bool m_logIsObject = false;
    std::chrono::milliseconds m_timeout;
    QPointer<QObject> m_cancellationScope;
    bool m_hasCancellationScope = false;
};

} // namespace kestrine
