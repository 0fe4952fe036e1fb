#pragma once

#include "giteaclient.h"

#include <QCoroTask>
#include <QLatin1StringView>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QtQml/qqmlregistration.h>
#include <deque>
#include <optional>

QT_BEGIN_NAMESPACE
class QQmlEngine;
class QJSEngine;
QT_END_NAMESPACE

namespace kestrine {

/// The user's configuration: which Gitea instance to talk to and with which token, how merging
/// behaves while CI is red, whether the head branch goes after a merge, which repositories the
/// inbox watches, and whether background notifications are on.
///
/// Each value is persisted the moment it changes: the instance URL and the token in the keychain
/// (KeychainHelper, keys "instanceURL" and "token"), the rest in the defaults store under keys of
/// the same names as the properties. Observers are notified first, then the value is written.
/// Keychain writes run in the background, one after another in the order they were asked for;
/// settle() waits for them. Persistence failures are silent: a keychain write that fails leaves the
/// new value in memory and the stored one as it was.
///
/// The defaults store is read when the store is made; the credentials come from the keychain in
/// load(), which the program awaits at its entry before anything reads them. Until then the
/// instance URL is the default one and the token empty.
///
/// The program makes one at its entry and hands it to what it creates (view models take it in
/// their constructor, or from their QML engine: see QmlServices). Main thread only.
class SettingsStore : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

    Q_PROPERTY(QString instanceURL READ instanceURL WRITE setInstanceURL NOTIFY instanceURLChanged)
    Q_PROPERTY(QString token READ token WRITE setToken NOTIFY tokenChanged)
    Q_PROPERTY(kestrine::SettingsStore::MergeGateMode mergeGateMode READ mergeGateMode WRITE
                   setMergeGateMode NOTIFY mergeGateModeChanged)
    Q_PROPERTY(bool deleteBranchAfterMerge READ deleteBranchAfterMerge WRITE
                   setDeleteBranchAfterMerge NOTIFY deleteBranchAfterMergeChanged)
    Q_PROPERTY(QStringList monitoredRepos READ monitoredRepos WRITE setMonitoredRepos NOTIFY
                   monitoredReposChanged)
    Q_PROPERTY(bool inboxNeedsRefresh READ inboxNeedsRefresh WRITE setInboxNeedsRefresh NOTIFY
                   inboxNeedsRefreshChanged)
    Q_PROPERTY(bool notificationsEnabled READ notificationsEnabled WRITE setNotificationsEnabled
                   NOTIFY notificationsEnabledChanged)
    Q_PROPERTY(bool isConfigured READ isConfigured NOTIFY isConfiguredChanged)
    /// The credentials have been read from the keychain.
    Q_PROPERTY(bool loaded READ isLoaded NOTIFY loadedChanged)

public:
    /// What the merge action does while CI is red. In QML: SettingsStore.Warn, SettingsStore.Block.
    enum class MergeGateMode {
        /// A red pull request can be merged after a confirmation.
        Warn,
        /// No merge while CI is red.
        Block,
    };
    Q_ENUM(MergeGateMode)

    /// The instance used when none is stored, and again after logout().
    static constexpr QLatin1StringView defaultInstanceURL{"https://gitea.com"};

    /// Keychain keys.
    static constexpr QLatin1StringView instanceURLKey{"instanceURL"};
    static constexpr QLatin1StringView tokenKey{"token"};
    /// Defaults store keys.
    static constexpr QLatin1StringView mergeGateModeKey{"mergeGateMode"};
    static constexpr QLatin1StringView deleteBranchAfterMergeKey{"deleteBranchAfterMerge"};
    static constexpr QLatin1StringView monitoredReposKey{"monitoredRepos"};
    static constexpr QLatin1StringView notificationsEnabledKey{"notificationsEnabled"};

    /// A store over what the defaults store holds now, its credentials not yet read (see load());
    /// loading writes nothing back. Its clients write their lines to `log` (none when null).
    explicit SettingsStore(LogSink *log = nullptr, QObject *parent = nullptr);

    /// The QML singleton is the store the program installed on the engine (QmlServices); C++
    /// keeps ownership.
    static SettingsStore *create(QQmlEngine *qmlEngine, QJSEngine *jsEngine);

    /// Where this store's clients, and the models that work with it, write their lines; may be
    /// null.
    LogSink *log() const { return m_log; }

    /// Reads the instance URL and the token from the keychain. A credential set or overridden
    /// meanwhile keeps its newer value. Sets `loaded` at the end.
    QCoro::Task<> load();
    bool isLoaded() const { return m_loaded; }

    /// Returns once every keychain write asked for so far has been carried out.
    QCoro::Task<> settle();

    const QString &instanceURL() const { return m_instanceURL; }
    void setInstanceURL(const QString &instanceURL);

    const QString &token() const { return m_token; }
    void setToken(const QString &token);

    MergeGateMode mergeGateMode() const { return m_mergeGateMode; }
    void setMergeGateMode(MergeGateMode mode);

    bool deleteBranchAfterMerge() const { return m_deleteBranchAfterMerge; }
    void setDeleteBranchAfterMerge(bool enabled);

    /// Full names ("owner/name") of the repositories the inbox watches; empty means all that the
    /// token can see.
    const QStringList &monitoredRepos() const { return m_monitoredRepos; }
    void setMonitoredRepos(const QStringList &repos);

    /// Raised to ask the inbox to reload (after a merge, for example). In memory only; false at
    /// every start.
    bool inboxNeedsRefresh() const { return m_inboxNeedsRefresh; }
    void setInboxNeedsRefresh(bool needsRefresh);

    bool notificationsEnabled() const { return m_notificationsEnabled; }
    void setNotificationsEnabled(bool enabled);

    /// Both the instance URL and the token are non-empty; blanks count as text.
    bool isConfigured() const;

    /// The instance URL without one trailing "/" (a text ending in "//" keeps one), as a URL;
    /// nothing when that text is not a valid absolute URL with a scheme and a host.
    std::optional<QUrl> baseURL() const;

    /// A fresh client for one piece of work: baseURL(), the token, the shared HTTP session and
    /// log(). Nothing without a baseURL(); an empty token still gives a client.
    std::optional<GiteaClient> client() const;

    /// The label of a mode as the settings screen shows it: mergeGateModeLabel in the user's
    /// language.
    Q_INVOKABLE static QString labelOf(kestrine::SettingsStore::MergeGateMode mode);

    /// Signs out: deletes both keychain items, then sets the instance URL back to the default and
    /// the token to "", writing both to the keychain even when they did not change. The defaults
    /// store values stay as they are.
    Q_INVOKABLE void logout();

    /// Replaces the instance URL and/or the token for the rest of this process without writing
    /// either to the keychain: for credentials that come from the environment of one run (a
    /// script's KESTRINE_URL and KESTRINE_TOKEN) or from the built-in demo instance. An absent
    /// value keeps the current one. Observers are notified as for any change. A later setter or
    /// logout() ends the override of what it sets and persists as usual, even when the new value
    /// equals the overriding one.
    void overrideCredentials(const std::optional<QString> &instanceURL,
                             const std::optional<QString> &token);

signals:
    void instanceURLChanged();
    void tokenChanged();
    void mergeGateModeChanged();
    void deleteBranchAfterMergeChanged();
    void monitoredReposChanged();
    void inboxNeedsRefreshChanged();
    void notificationsEnabledChanged();
    void isConfiguredChanged();
    void loadedChanged();
    /// The last pending keychain write is done.
    void writesSettled();

private:
    /// One keychain write: `value` under `key`, or a deletion when there is no value.
    struct KeychainWrite
    {
        QString key;
        std::optional<QString> value;
    };
    /// Queues a keychain write behind those still pending.
    void persist(QLatin1StringView key, std::optional<QString> value);
    QCoro::Task<> writePending();

    // Assign and notify, without persisting; the setters and logout() persist.
    void updateInstanceURL(const QString &instanceURL);
    void updateToken(const QString &token);

    LogSink *m_log = nullptr;
    QString m_instanceURL;
    QString m_token;
    // The in-memory value came from overrideCredentials(), so the keychain holds something else.
    bool m_instanceURLOverridden = false;
    bool m_tokenOverridden = false;
    // Given a value since the store was made, so that load() keeps it.
    bool m_instanceURLAssigned = false;
    bool m_tokenAssigned = false;
    bool m_loaded = false;
    std::deque<KeychainWrite> m_pendingWrites;
    bool m_writing = false;
    MergeGateMode m_mergeGateMode = MergeGateMode::Warn;
    bool m_deleteBranchAfterMerge = false;
    QStringList m_monitoredRepos;
    bool m_inboxNeedsRefresh = false;
    bool m_notificationsEnabled = false;
};

using MergeGateMode = SettingsStore::MergeGateMode;

/// The user-visible label of a mode in English, which is also how it is stored:
/// "Warn on red (allow merge with confirm)" or "Block merge when CI is red".
QString mergeGateModeLabel(MergeGateMode mode);

/// The mode whose label is exactly `label`; any other text gives Warn.
MergeGateMode mergeGateModeFromLabel(const QString &label);

} // namespace kestrine
