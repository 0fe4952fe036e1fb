#include "connectiontester.h"

#include "apierror.h"
#include "giteaclient.h"
#include "settingsstore.h"

#include <QCoreApplication>
#include <QPointer>

namespace kestrine::ui {
namespace {

/// The instance URL as the client takes it: the same rule as the saved settings' base URL, so a
/// test and the app after "Save" talk to the same address.
std::optional<QUrl> baseURL(const QString &text)
{
    QString trimmed = text;
    if (trimmed.endsWith(u'/'))
        trimmed.chop(1);
    const QUrl url(trimmed, QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty() || url.host().isEmpty())
        return std::nullopt;
    return url;
}

} // namespace

ConnectionTester::ConnectionTester(QObject *parent)
    : QObject(parent)
    , SettingsUser(this, nullptr)
{}

ConnectionTester::ConnectionTester(SettingsStore &settings, QObject *parent)
    : QObject(parent)
    , SettingsUser(this, &settings)
{}

void ConnectionTester::test(const QString &instanceURL, const QString &token)
{
    run(instanceURL, token);
}

void ConnectionTester::clearResult()
{
    setResult(false, false, QString());
}

QCoro::Task<> ConnectionTester::run(QString instanceURL, QString token)
{
    setTesting(true);
    clearResult();

    const std::optional<QUrl> url = baseURL(instanceURL.trimmed());
    if (!url) {
        setResult(true, false, QCoreApplication::translate("ConnectionTester", "Invalid URL"));
        setTesting(false);
        co_return;
    }

    delete m_scope;
    m_scope = new QObject(this);
    QObject *scope = m_scope;
    const GiteaClient client = GiteaClient(*url, token, GiteaClient::sharedSession(),
                                           settings() ? settings()->log() : nullptr)
                                   .cancelledWith(scope);
    const QPointer<ConnectionTester> self(this);
    try {
        const PRUser user = co_await client.currentUser();
        if (!self || self->m_scope != scope)
            co_return;
        setResult(true, true, user.login);
    } catch (...) {
        const std::exception_ptr error = std::current_exception();
        // A newer test (or the screen going away) cancelled this one: it has nothing to say.
        if (!self || self->m_scope != scope || isCancellation(error))
            co_return;
        setResult(true, false, localizedErrorDescription(error));
    }
    setTesting(false);
}

void ConnectionTester::setTesting(bool testing)
{
    if (m_testing == testing)
        return;
    m_testing = testing;
    emit testingChanged();
}

void ConnectionTester::setResult(bool hasResult, bool succeeded, const QString &text)
{
    if (m_hasResult == hasResult && m_succeeded == succeeded && m_resultText == text)
        return;
    m_hasResult = hasResult;
    m_succeeded = succeeded;
    m_resultText = text;
    emit resultChanged();
}

} // namespace kestrine::ui
