#include "inboxviewmodel.h"

#include "apierror.h"
#include "notificationpass.h"
#include "repositoryselection.h"
#include "settingsstore.h"

#include <QCoreApplication>
#include <QCoroFuture>
#include <QCoroTimer>
#include <QPointer>
#include <algorithm>
#include <chrono>
#include <coroutine>
#include <memory>
#include <variant>

namespace kestrine {
namespace {

/// How many repositories' pull request lists are asked for in one turn of the event loop.
constexpr qsizetype requestsPerTurn = 16;

/// What one repository's request came back with.
using RepositoryOutcome = std::variant<QList<PRRow>, QString>;

/// Gathers the repositories' outcomes in the order they finish, and wakes the load once all are
/// in. (Awaiting a signal that may fire twice in one event-loop turn is unsafe with the QCoro in
/// use, so the children hand their outcomes over directly.)
class OutcomeCollector
{
public:
    explicit OutcomeCollector(qsizetype expected)
        : m_expected(expected)
    {}

    void add(RepositoryOutcome outcome)
    {
        m_outcomes.append(std::move(outcome));
        if (isComplete() && m_waiter)
            std::exchange(m_waiter, {}).resume();
    }

    bool isComplete() const { return m_outcomes.size() >= m_expected; }
    QList<RepositoryOutcome> &outcomes() { return m_outcomes; }

    /// Awaitable: resumes the awaiting coroutine when the last outcome is added.
    auto allAdded()
    {
        struct Awaiter
        {
            OutcomeCollector *collector;
            bool await_ready() const noexcept { return collector->isComplete(); }
            void await_suspend(std::coroutine_handle<> waiter) noexcept
            {
                collector->m_waiter = waiter;
            }
            void await_resume() const noexcept {}
        };
        return Awaiter{this};
    }

private:
    qsizetype m_expected;
    QList<RepositoryOutcome> m_outcomes;
    std::coroutine_handle<> m_waiter;
};

/// One repository's open pull requests as rows, or the failure's description (in English: it goes
/// only to the log).
QCoro::Task<> fetchRepository(GiteaClient client, Repository repo,
                              std::shared_ptr<OutcomeCollector> collector)
{
    RepositoryOutcome outcome;
    try {
        const QList<PullRequest> pulls = co_await client.pullRequests(repo.owner.login, repo.name);
        QList<PRRow> rows;
        rows.reserve(pulls.size());
        for (const PullRequest &pr : pulls)
            rows.append(PRRow{repo, pr});
        outcome = std::move(rows);
    } catch (...) {
        outcome = errorDescription(std::current_exception());
    }
    collector->add(std::move(outcome));
}

QCoro::Task<> runNotificationPass(NotificationPass *pass)
{
    co_await pass->poll();
}

} // namespace

InboxViewModel::InboxViewModel(QObject *parent)
    : InboxViewModel(nullptr, InboxCache(), parent)
{}

InboxViewModel::InboxViewModel(SettingsStore &settings, QObject *parent)
    : InboxViewModel(&settings, InboxCache(), parent)
{}

InboxViewModel::InboxViewModel(SettingsStore &settings, InboxCache cache, QObject *parent)
    : InboxViewModel(&settings, std::move(cache), parent)
{}

InboxViewModel::InboxViewModel(SettingsStore *settings, InboxCache cache, QObject *parent)
    : QObject(parent)
    , SettingsUser(this, settings)
    , m_cache(std::move(cache))
{}

QCoro::Task<> InboxViewModel::load()
{
    const SettingsStore *settings = this->settings();
    const std::optional<GiteaClient> configured = configuredClient();
    if (!configured || !settings->isConfigured()) {
        setErrorMessage(notConfiguredText());
        co_return;
    }
    const QPointer<InboxViewModel> self(this);
    const GiteaClient client = configured->cancelledWith(this);

    // The first repository page is on its way (a task runs until it first waits) while the
    // cache, megabytes for a large instance, is read and shown.
    QCoro::Task<QList<Repository>> firstRequest = client.repos();
    if (m_displayedRows.isEmpty()) {
        if (auto cached = m_cache.read(); cached && !cached->isEmpty())
            setDisplayedRows(std::move(*cached));
    }
    setLoading(true);
    setErrorMessage(std::nullopt);

    QList<Repository> repositories;
    std::exception_ptr reposFailure;
    try {
        repositories = co_await std::move(firstRequest);
    } catch (...) {
        reposFailure = std::current_exception();
    }
    if (!self)
        co_return;
    if (reposFailure) {
        // The log says it in English, the alert in the user's language.
        log(LogLevel::Error,
            QStringLiteral("Inbox load failed: ") + errorDescription(reposFailure));
        setErrorMessage(localizedErrorDescription(reposFailure));
        if (m_displayedRows.isEmpty())
            setDisplayedRows(m_cache.read().value_or(QList<PRRow>()));
        setLoading(false);
        co_return;
    }

    const QList<Repository> selected = selectRepositories(repositories, settings->monitoredRepos());
    log(LogLevel::Info,
        QStringLiteral("Inbox: %1/%2 repos").arg(selected.size()).arg(repositories.size()));

    // Every repository's request starts before any answer is awaited; answers are taken in the
    // order they arrive.
    // The last child resumes this coroutine from inside its own call, so the children share the
    // collector's ownership.
    const auto collector = std::make_shared<OutcomeCollector>(selected.size());
    for (qsizetype i = 0; i < selected.size(); ++i) {
        // Starting a request takes the main thread about 40 µs; 200 in one go would hold input
        // and drawing for 8 ms. Between batches, a zero timer lets what waits go first.
        if (i > 0 && i % requestsPerTurn == 0) {
            co_await QCoro::sleepFor(std::chrono::milliseconds(0));
            if (!self)
                co_return;
        }
        fetchRepository(client, selected.at(i), collector);
    }
    co_await collector->allAdded();
    if (!self)
        co_return;

    QList<PRRow> combined;
    QStringList failures;
    for (RepositoryOutcome &outcome : collector->outcomes()) {
        if (auto *rows = std::get_if<QList<PRRow>>(&outcome))
            combined.append(std::move(*rows));
        else
            failures.append(std::get<QString>(outcome));
    }
    if (!failures.isEmpty()) {
        log(LogLevel::Warn, QStringLiteral("Inbox: %1 repo(s) failed: %2")
                                .arg(failures.size())
                                .arg(failures.join(QStringLiteral("; "))));
    }

    // Newest update first; a row without an update time counts as the earliest time there is.
    std::stable_sort(combined.begin(), combined.end(), [](const PRRow &a, const PRRow &b) {
        const qint64 left = a.pr.updatedAt ? a.pr.updatedAt->toMSecsSinceEpoch()
                                           : std::numeric_limits<qint64>::min();
        const qint64 right = b.pr.updatedAt ? b.pr.updatedAt->toMSecsSinceEpoch()
                                            : std::numeric_limits<qint64>::min();
        return left > right;
    });

    setDisplayedRows(combined);

    if (combined.isEmpty() && !failures.isEmpty()) {
        setErrorMessage(QCoreApplication::translate(
            "InboxViewModel", "Couldn't load any PRs (%n repo(s) failed). Check the Logs screen.",
            nullptr, int(failures.size())));
    }
    if (settings->notificationsEnabled()) {
        if (NotificationPass *pass = NotificationPass::installed())
            runNotificationPass(pass);
    }
    // Written once the rows are shown and the notification pass has sent its first request, so
    // that neither waits for the file, and on a worker thread, so that the screen does not either.
    // The load ends when the file is written.
    co_await m_cache.writeInBackground(combined);
    if (!self)
        co_return;
    setLoading(false);
}

void InboxViewModel::reload()
{
    load();
}

void InboxViewModel::dismissError()
{
    setErrorMessage(std::nullopt);
}

QVariantList InboxViewModel::rowsForQml() const
{
    return toQmlValue(m_rows).toList();
}

QVariantList InboxViewModel::displayedRowsForQml() const
{
    return toQmlValue(m_displayedRows).toList();
}

void InboxViewModel::setDisplayedRows(QList<PRRow> rows)
{
    // Replaced, never merged; the screen is told even when the list stayed the same, since a
    // completed load is news of its own.
    m_displayedRows = std::move(rows);
    emit displayedRowsChanged();
}

void InboxViewModel::setLoading(bool loading)
{
    if (m_isLoading == loading)
        return;
    m_isLoading = loading;
    emit isLoadingChanged();
}

void InboxViewModel::setErrorMessage(std::optional<QString> message)
{
    if (m_errorMessage == message)
        return;
    m_errorMessage = std::move(message);
    emit errorMessageChanged();
}

} // namespace kestrine
