#include "settingsstore.h"

#include "defaultsstore.h"
#include "keychainhelper.h"
#include "qmlservices.h"

#include <QCoreApplication>
#include <QCoroSignal>
#include <QJSEngine>
#include <QPointer>
#include <QVariant>

namespace kestrine {
namespace {

// A mode is stored as its label in English; the settings screen shows it translated (labelOf).
const QString warnLabel =
    QStringLiteral(QT_TRANSLATE_NOOP("SettingsStore", "Warn on red (allow merge with confirm)"));
const QString blockLabel =
    QStringLiteral(QT_TRANSLATE_NOOP("SettingsStore", "Block merge when CI is red"));

/// A stored value read as a bool the way the platforms' defaults stores read one: a bool as it
/// is, a number as "not zero", a string "true" or "yes" (any case) or one holding a non-zero
/// integer as true; anything else, absence included, as false.
bool storedBool(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return value.toDouble() != 0;
    case QMetaType::QString: {
        const QString text = value.toString().trimmed();
        if (text.compare(u"true", Qt::CaseInsensitive) == 0 ||
            text.compare(u"yes", Qt::CaseInsensitive) == 0)
            return true;
        bool isNumber = false;
        const qlonglong number = text.toLongLong(&isNumber);
        return isNumber && number != 0;
    }
    default:
        return false;
    }
}

/// A stored value when it is an array whose every element is a string; else nothing. (Values
/// written in this process come back as QStringList, values read from the file as a QVariantList.)
std::optional<QStringList> storedStringArray(const QVariant &value)
{
    if (value.typeId() == QMetaType::QStringList)
        return value.toStringList();
    if (value.typeId() != QMetaType::QVariantList)
        return std::nullopt;
    QStringList strings;
    const QVariantList items = value.toList();
    strings.reserve(items.size());
    for (const QVariant &item : items) {
        if (item.typeId() != QMetaType::QString)
            return std::nullopt;
        strings.append(item.toString());
    }
    return strings;
}

void writeDefault(QAnyStringView key, const QVariant &value)
{
    QSettings &store = defaultsStore();
    store.setValue(key, value);
    store.sync();
}

} // namespace

QString mergeGateModeLabel(MergeGateMode mode)
{
    switch (mode) {
    case MergeGateMode::Warn:
        return warnLabel;
    case MergeGateMode::Block:
        return blockLabel;
    }
    return warnLabel;
}

MergeGateMode mergeGateModeFromLabel(const QString &label)
{
    return label == blockLabel ? MergeGateMode::Block : MergeGateMode::Warn;
}

SettingsStore::SettingsStore(LogSink *log, QObject *parent)
    : QObject(parent)
    , m_log(log)
{
    // The in-memory flag, then the defaults store; the credentials follow in load(). Nothing is
    // written back, so a value that was never set stays unset.
    m_inboxNeedsRefresh = false;
    m_instanceURL = QString(defaultInstanceURL);

    const QSettings &defaults = defaultsStore();
    // Only our own label text selects Block: a damaged or foreign value is the safe default, Warn.
    const QVariant mode = defaults.value(mergeGateModeKey);
    m_mergeGateMode = mode.typeId() == QMetaType::QString ? mergeGateModeFromLabel(mode.toString())
                                                          : MergeGateMode::Warn;
    m_deleteBranchAfterMerge = storedBool(defaults.value(deleteBranchAfterMergeKey));
    m_monitoredRepos = storedStringArray(defaults.value(monitoredReposKey)).value_or(QStringList());
    // Unlike deleteBranchAfterMerge, notifications stay off unless a real bool says otherwise: a
    // stray string must not switch on background notifications.
    const QVariant notifications = defaults.value(notificationsEnabledKey);
    m_notificationsEnabled =
        notifications.typeId() == QMetaType::Bool ? notifications.toBool() : false;
}

SettingsStore *SettingsStore::create(QQmlEngine *qmlEngine, QJSEngine *)
{
    SettingsStore *store = QmlServices::settings(qmlEngine);
    if (!store) {
        qCritical("SettingsStore: no settings were installed on this QML engine.");
        return nullptr;
    }
    QJSEngine::setObjectOwnership(store, QJSEngine::CppOwnership);
    return store;
}

QCoro::Task<> SettingsStore::load()
{
    const QPointer<SettingsStore> self(this);
    const std::optional<QString> instanceURL =
        co_await KeychainHelper::get(QString(instanceURLKey));
    if (!self)
        co_return;
    const std::optional<QString> token = co_await KeychainHelper::get(QString(tokenKey));
    if (!self)
        co_return;
    if (!m_instanceURLAssigned)
        updateInstanceURL(instanceURL.value_or(QString(defaultInstanceURL)));
    if (!m_tokenAssigned)
        updateToken(token.value_or(QString()));
    if (!m_loaded) {
        m_loaded = true;
        emit loadedChanged();
    }
}

QCoro::Task<> SettingsStore::settle()
{
    if (m_writing)
        co_await qCoro(this, &SettingsStore::writesSettled);
}

void SettingsStore::persist(QLatin1StringView key, std::optional<QString> value)
{
    m_pendingWrites.push_back({QString(key), std::move(value)});
    if (!m_writing)
        writePending();
}

QCoro::Task<> SettingsStore::writePending()
{
    // One at a time, in order: a delete-then-add of one value must not interleave with the next
    // one's, or two quick changes could land in the wrong order.
    const QPointer<SettingsStore> self(this);
    m_writing = true;
    while (!m_pendingWrites.empty()) {
        const KeychainWrite write = std::move(m_pendingWrites.front());
        m_pendingWrites.pop_front();
        if (write.value)
            co_await KeychainHelper::set(*write.value, write.key);
        else
            co_await KeychainHelper::remove(write.key);
        if (!self)
            co_return;
    }
    m_writing = false;
    emit writesSettled();
}

void SettingsStore::updateInstanceURL(const QString &instanceURL)
{
    if (m_instanceURL == instanceURL)
        return;
    const bool wasConfigured = isConfigured();
    m_instanceURL = instanceURL;
    emit instanceURLChanged();
    if (isConfigured() != wasConfigured)
        emit isConfiguredChanged();
}

void SettingsStore::setInstanceURL(const QString &instanceURL)
{
    // An overridden value is not what the keychain holds, so setting the same text again must
    // still write it.
    if (m_instanceURL == instanceURL && !m_instanceURLOverridden)
        return;
    m_instanceURLOverridden = false;
    m_instanceURLAssigned = true;
    updateInstanceURL(instanceURL);
    persist(instanceURLKey, m_instanceURL);
}

void SettingsStore::updateToken(const QString &token)
{
    if (m_token == token)
        return;
    const bool wasConfigured = isConfigured();
    m_token = token;
    emit tokenChanged();
    if (isConfigured() != wasConfigured)
        emit isConfiguredChanged();
}

void SettingsStore::setToken(const QString &token)
{
    if (m_token == token && !m_tokenOverridden)
        return;
    m_tokenOverridden = false;
    m_tokenAssigned = true;
    updateToken(token);
    persist(tokenKey, m_token);
}

void SettingsStore::setMergeGateMode(MergeGateMode mode)
{
    if (m_mergeGateMode == mode)
        return;
    m_mergeGateMode = mode;
    emit mergeGateModeChanged();
    writeDefault(mergeGateModeKey, mergeGateModeLabel(m_mergeGateMode));
}

void SettingsStore::setDeleteBranchAfterMerge(bool enabled)
{
    if (m_deleteBranchAfterMerge == enabled)
        return;
    m_deleteBranchAfterMerge = enabled;
    emit deleteBranchAfterMergeChanged();
    writeDefault(deleteBranchAfterMergeKey, m_deleteBranchAfterMerge);
}

void SettingsStore::setMonitoredRepos(const QStringList &repos)
{
    if (m_monitoredRepos == repos)
        return;
    m_monitoredRepos = repos;
    emit monitoredReposChanged();
    writeDefault(monitoredReposKey, m_monitoredRepos);
}

void SettingsStore::setInboxNeedsRefresh(bool needsRefresh)
{
    if (m_inboxNeedsRefresh == needsRefresh)
        return;
    m_inboxNeedsRefresh = needsRefresh;
    emit inboxNeedsRefreshChanged();
}

void SettingsStore::setNotificationsEnabled(bool enabled)
{
    if (m_notificationsEnabled == enabled)
        return;
    m_notificationsEnabled = enabled;
    emit notificationsEnabledChanged();
    writeDefault(notificationsEnabledKey, m_notificationsEnabled);
}

bool SettingsStore::isConfigured() const
{
    return !m_instanceURL.isEmpty() && !m_token.isEmpty();
}

std::optional<QUrl> SettingsStore::baseURL() const
{
    QString text = m_instanceURL;
    if (text.endsWith(u'/'))
        text.chop(1);
    // QUrl is lenient: in its default mode it repairs almost any text into some URL, and even a
    // strictly parsed plain word is a valid relative URL. A base for API requests has to be an
    // absolute URL with a host, so strict parsing and a scheme and a host are all required.
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty() || url.host().isEmpty())
        return std::nullopt;
    return url;
}

std::optional<GiteaClient> SettingsStore::client() const
{
    const std::optional<QUrl> url = baseURL();
    if (!url)
        return std::nullopt;
    return GiteaClient(*url, m_token, GiteaClient::sharedSession(), m_log);
}

QString SettingsStore::labelOf(MergeGateMode mode)
{
    return QCoreApplication::translate("SettingsStore",
                                       mergeGateModeLabel(mode).toUtf8().constData());
}

void SettingsStore::logout()
{
    persist(instanceURLKey, std::nullopt);
    persist(tokenKey, std::nullopt);
    // Written back even when the values did not change: the items were just deleted, and the
    // keychain is to hold the default URL and an empty token afterwards.
    m_instanceURLOverridden = false;
    m_instanceURLAssigned = true;
    updateInstanceURL(QString(defaultInstanceURL));
    persist(instanceURLKey, m_instanceURL);
    m_tokenOverridden = false;
    m_tokenAssigned = true;
    updateToken(QString());
    persist(tokenKey, m_token);
}

void SettingsStore::overrideCredentials(const std::optional<QString> &instanceURL,
                                        const std::optional<QString> &token)
{
    if (instanceURL) {
        m_instanceURLOverridden = true;
        m_instanceURLAssigned = true;
        updateInstanceURL(*instanceURL);
    }
    if (token) {
        m_tokenOverridden = true;
        m_tokenAssigned = true;
        updateToken(*token);
    }
}

} // namespace kestrine
