#pragma once

#include "qmlservices.h"

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

namespace kestrine::ui {

/// The list behind the monitored repositories screen: every repository the saved settings' token
/// can reach, sorted by full name (plain, case-sensitive order).
class MonitoredReposLoader : public QObject, public SettingsUser
{
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    QML_ELEMENT
    /// Repositories in QML form (JSON keys: "full_name", ...).
    Q_PROPERTY(QVariantList repos READ repos NOTIFY reposChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    /// "" when there is no error.
    Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY errorMessageChanged)

public:
    /// For QML; the settings are its engine's.
    explicit MonitoredReposLoader(QObject *parent = nullptr);
    explicit MonitoredReposLoader(SettingsStore &settings, QObject *parent = nullptr);

    const QVariantList &repos() const { return m_repos; }
    bool isLoading() const { return m_isLoading; }
    const QString &errorMessage() const { return m_errorMessage; }

    Q_INVOKABLE void reload();
    QCoro::Task<> load();

signals:
    void reposChanged();
    void isLoadingChanged();
    void errorMessageChanged();

private:
    void setLoading(bool loading);
    void setErrorMessage(const QString &message);

    QVariantList m_repos;
    bool m_isLoading = false;
    QString m_errorMessage;
};

} // namespace kestrine::ui
