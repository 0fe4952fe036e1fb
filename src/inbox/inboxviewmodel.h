#pragma once

#include "inboxcache.h"
#include "prrow.h"
#include "qmlservices.h"

#include <QCoreApplication>
#include <QCoroTask>
#include <QObject>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>
#include <optional>

namespace kestrine {

/// The model behind the inbox: the open pull requests of every watched repository in one list,
/// newest update first. One instance per inbox screen, main thread only.
class InboxViewModel : public QObject, public SettingsUser
{
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT

    /// Kept for the screens' sake but never filled: the screen lists displayedRows.
    Q_PROPERTY(QVariantList rows READ rowsForQml NOTIFY rowsChanged)
    Q_PROPERTY(QVariantList displayedRows READ displayedRowsForQml NOTIFY displayedRowsChanged)
    Q_PROPERTY(int count READ count NOTIFY displayedRowsChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    /// The alert text; empty when there is nothing to show.
    Q_PROPERTY(QString errorMessage READ errorText NOTIFY errorMessageChanged)

public:
    /// What the inbox says when no instance or token is set, or the instance URL does not parse.
    static QString notConfiguredText()
    {
        return QCoreApplication::translate("InboxViewModel",
                                           "Configure your Gitea instance in Settings.");
    }

    /// For QML: the settings are its engine's.
    explicit InboxViewModel(QObject *parent = nullptr);
    explicit InboxViewModel(SettingsStore &settings, QObject *parent = nullptr);
    /// A model over a given cache file instead of the one in the caches directory.
    InboxViewModel(SettingsStore &settings, InboxCache cache, QObject *parent = nullptr);

    const QList<PRRow> &rows() const { return m_rows; }
    const QList<PRRow> &displayedRows() const { return m_displayedRows; }
    int count() const { return int(m_displayedRows.size()); }
    bool isLoading() const { return m_isLoading; }
    const std::optional<QString> &errorMessage() const { return m_errorMessage; }
    const InboxCache &cache() const { return m_cache; }

    /// Loads every watched repository's open pull requests. Never throws: outcomes land in
    /// displayedRows, errorMessage, isLoading and the log.
    QCoro::Task<> load();
    /// load() for the screen, which does not wait for it.
    Q_INVOKABLE void reload();
    /// The user dismissed the alert.
    Q_INVOKABLE void dismissError();

    QVariantList rowsForQml() const;
    QVariantList displayedRowsForQml() const;
    QString errorText() const { return m_errorMessage.value_or(QString()); }

signals:
    void rowsChanged();
    void displayedRowsChanged();
    void isLoadingChanged();
    void errorMessageChanged();

private:
    InboxViewModel(SettingsStore *settings, InboxCache cache, QObject *parent);

    void setDisplayedRows(QList<PRRow> rows);
    void setLoading(bool loading);
    void setErrorMessage(std::optional<QString> message);
    void showCachedRows();

    QList<PRRow> m_rows;
    QList<PRRow> m_displayedRows;
    bool m_isLoading = false;
    std::optional<QString> m_errorMessage;
    InboxCache m_cache;
};

} // namespace kestrine
