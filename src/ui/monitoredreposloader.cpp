#include "monitoredreposloader.h"

#include "apierror.h"
#include "giteaclient.h"
#include "jsoncodec.h"
#include "notconfigured.h"
#include "settingsstore.h"

#include <QPointer>
#include <algorithm>

namespace kestrine::ui {

MonitoredReposLoader::MonitoredReposLoader(QObject *parent)
    : QObject(parent)
    , SettingsUser(this, nullptr)
{}

MonitoredReposLoader::MonitoredReposLoader(SettingsStore &settings, QObject *parent)
    : QObject(parent)
    , SettingsUser(this, &settings)
{}

void MonitoredReposLoader::reload()
{
    load();
}

QCoro::Task<> MonitoredReposLoader::load()
{
    setLoading(true);
    setErrorMessage(QString());

    // The saved settings, not what the settings screen holds unsaved.
    const std::optional<GiteaClient> configured = configuredClient();
    if (!configured || !settings()->isConfigured()) {
        setErrorMessage(notConfiguredMessage());
        setLoading(false);
        co_return;
    }
    // Leaving the screen deletes this object, which cancels the request.
    const GiteaClient client = configured->cancelledWith(this);
    const QPointer<MonitoredReposLoader> self(this);
    try {
        QList<Repository> repos = co_await client.repos();
        if (!self)
            co_return;
        std::stable_sort(repos.begin(), repos.end(), [](const Repository &a, const Repository &b) {
            return QString::compare(a.fullName, b.fullName, Qt::CaseSensitive) < 0;
        });
        QVariantList list;
        list.reserve(repos.size());
        for (const Repository &repo : std::as_const(repos))
            list.append(toQmlValue(repo));
        m_repos = list;
        emit reposChanged();
    } catch (...) {
        const std::exception_ptr error = std::current_exception();
        if (!self || isCancellation(error))
            co_return;
        setErrorMessage(localizedErrorDescription(error));
    }
    setLoading(false);
}

void MonitoredReposLoader::setLoading(bool loading)
{
    if (m_isLoading == loading)
        return;
    m_isLoading = loading;
    emit isLoadingChanged();
}

void MonitoredReposLoader::setErrorMessage(const QString &message)
{
    if (m_errorMessage == message)
        return;
    m_errorMessage = message;
    emit errorMessageChanged();
}

} // namespace kestrine::ui
