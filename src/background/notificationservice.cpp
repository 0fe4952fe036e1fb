#include "notificationservice.h"

#include "apierror.h"
#include "prrow.h"
#include "repositoryselection.h"
#include "settingsstore.h"

#include <QCoreApplication>
#include <QPointer>
#include <QUuid>

namespace kestrine {
namespace {

/// Thrown inside a pass when its scope went away, to leave it without saving anything.
struct PassAbandoned
{};

} // namespace

NotificationService::NotificationService(SettingsStore &settings, NotificationCenter &center,
                                         QObject *parent)
    : NotificationService(settings, center, NotificationState::defaultFilePath(), parent)
{}

NotificationService::NotificationService(SettingsStore &settings, NotificationCenter &center,
                                         QString stateFilePath, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_center(center)
    , m_stateFilePath(std::move(stateFilePath))
{}

QCoro::Task<int> NotificationService::poll()
{
    // The service is the scope of the passes the inbox starts: when it goes away, so do their
    // requests.
    return poll(this);
}

QCoro::Task<int> NotificationService::poll(QObject *cancellationScope)
{
    const SettingsStore *settings = &m_settings;
    const std::optional<GiteaClient> configured = settings->client();
    if (!settings->isConfigured() || !settings->notificationsEnabled() || !configured)
        co_return 0;
    const QPointer<NotificationService> self(this);
    const GiteaClient client =
        cancellationScope ? configured->cancelledWith(cancellationScope) : *configured;

    // The user's answer does not matter here: refused notifications simply do not show.
    if (co_await m_center.authorizationStatus() == NotificationCenter::Authorization::NotDetermined)
        co_await m_center.requestAuthorization();
    if (!self || client.isCancelled())
        co_return 0;

    QList<Repository> repositories;
    try {
        repositories = co_await client.repos();
    } catch (...) {
        co_return 0;
    }
    if (!self)
        co_return 0;
    const QList<Repository> selected = selectRepositories(repositories, settings->monitoredRepos());

    NotificationState state = NotificationState::load(m_stateFilePath);
    if (selected.isEmpty()) {
        state.save(m_stateFilePath);
        co_return 0;
    }

    int count = 0;
    try {
        for (const Repository &repo : selected) {
            QList<PullRequest> pulls;
            try {
                pulls = co_await client.pullRequests(repo.owner.login, repo.name);
            } catch (...) {
                if (isCancellation(std::current_exception()))
                    throw PassAbandoned();
                // A repository that cannot be listed counts as one without open pull requests.
            }
            if (!self)
                throw PassAbandoned();

            QSet<QString> listedKeys;
            for (const PullRequest &pr : pulls) {
                const QString key = PRRow::pullRequestKey(repo, pr);
                listedKeys.insert(key);
                if (!state.announcedNewPRs.contains(key)) {
                    state.announcedNewPRs.insert(key);
                    fire(newPullRequestTitle(), body(pr, repo), key);
                    ++count;
                    continue;
                }
                const CIStatus::Value status = co_await ciStatus(pr, repo, client);
                if (!self || client.isCancelled())
                    throw PassAbandoned();
                const QString name = CIStatus::name(status);
                const auto stored = state.ciStatusByPR.constFind(key);
                if (stored == state.ciStatusByPR.cend()) {
                    state.ciStatusByPR.insert(key, name);
                } else if (*stored != name) {
                    state.ciStatusByPR.insert(key, name);
                    fire(ciTitle(status), body(pr, repo), key);
                    ++count;
                }
            }

            const QString prefix = repo.fullName + u'#';
            for (auto it = state.announcedNewPRs.begin(); it != state.announcedNewPRs.end();) {
                if (it->startsWith(prefix) && !listedKeys.contains(*it)) {
                    state.ciStatusByPR.remove(*it);
                    it = state.announcedNewPRs.erase(it);
                } else {
                    ++it;
                }
            }
        }
    } catch (const PassAbandoned &) {
        co_return count;
    }

    state.save(m_stateFilePath);
    co_return count;
}

QCoro::Task<CIStatus::Value> NotificationService::ciStatus(PullRequest pr, Repository repo,
                                                           GiteaClient client)
{
    if (!pr.head || !pr.head->sha || pr.head->sha->isEmpty())
        co_return CIStatus::Unknown;
    try {
        co_return CIStatus::from(co_await client.runs(repo.owner.login, repo.name, *pr.head->sha));
    } catch (...) {
        // A failed request reads as "nothing to go by", which may itself be news.
        co_return CIStatus::from({});
    }
}

void NotificationService::fire(const QString &title, const QString &body,
                               const QString &pullRequestKey)
{
    m_center.post(QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper(), title, body,
                  pullRequestKey);
}

QString NotificationService::newPullRequestTitle()
{
    return QCoreApplication::translate("NotificationService", "New PR");
}

QString NotificationService::ciTitle(CIStatus::Value status)
{
    switch (status) {
    case CIStatus::Running:
        return QCoreApplication::translate("NotificationService", "CI running");
    case CIStatus::Success:
        return QCoreApplication::translate("NotificationService", "CI passed");
    case CIStatus::Failure:
        return QCoreApplication::translate("NotificationService", "CI failed");
    case CIStatus::Cancelled:
        return QCoreApplication::translate("NotificationService", "CI cancelled");
    case CIStatus::Unknown:
        break;
    }
    return QCoreApplication::translate("NotificationService", "CI updated");
}

QString NotificationService::body(const PullRequest &pr, const Repository &repo)
{
    //: A notification's text: %1 is the pull request's title, %2 its repository's full name.
    return QCoreApplication::translate("NotificationService", "%1 — %2")
        .arg(pr.title, repo.fullName);
}

} // namespace kestrine
