#pragma once

#include "settingsstore.h"

#include <QPointer>
#include <QtQml/qqmlparserstatus.h>
#include <optional>

QT_BEGIN_NAMESPACE
class QQmlEngine;
QT_END_NAMESPACE

namespace kestrine {

class LogStore;

/// How what QML creates finds the settings and the log of the program that runs it: the program
/// makes both once at its entry and installs them on its QML engine before loading anything. The
/// SettingsStore and LogStore singletons of that engine are these instances, and the view models
/// created in its documents use them (see SettingsUser). Nothing here makes a store.
namespace QmlServices {

/// Makes `settings` and `log` the ones of `engine`. They must outlive what the engine creates.
void install(QQmlEngine &engine, SettingsStore &settings, LogStore &log);

/// What install() gave `engine`; null when nothing was installed.
SettingsStore *settings(const QQmlEngine *engine);
LogStore *log(const QQmlEngine *engine);

} // namespace QmlServices

/// For a view model or helper that QML creates as well as C++: it works with the settings its C++
/// creator hands it, or, when a QML document made it, with those installed on that document's
/// engine, found as QML begins to set it up. Until then it has none and acts as unconfigured.
///
/// A class that uses it derives from it beside QObject and declares Q_INTERFACES(QQmlParserStatus).
class SettingsUser : public QQmlParserStatus
{
public:
    /// The settings in use; null when there are none (yet).
    SettingsStore *settings() const { return m_settings; }

protected:
    /// `self` is the QObject that derives from this; `settings` may be null for QML to fill in.
    SettingsUser(QObject *self, SettingsStore *settings);
    ~SettingsUser() override;

    /// A fresh client of the settings (SettingsStore::client()); nothing without settings.
    std::optional<GiteaClient> configuredClient() const;
    /// Writes a line to the settings' log, when there is one.
    void log(LogLevel level, const QString &message) const;

    /// Called once QML has given the object its settings.
    virtual void settingsFound() {}

    void classBegin() override;
    void componentComplete() override {}

private:
    QObject *m_self;
    QPointer<SettingsStore> m_settings;
};

} // namespace kestrine
