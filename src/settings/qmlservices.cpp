#include "qmlservices.h"

#include "logstore.h"

#include <QQmlEngine>
#include <QtQml/qqml.h>

namespace kestrine {
namespace {

// Dynamic properties of the engine object: they go with the engine, and each engine has its own.
constexpr const char *settingsProperty = "kestrineSettings";
constexpr const char *logProperty = "kestrineLog";

template <class T>
T *installed(const QQmlEngine *engine, const char *property)
{
    if (!engine)
        return nullptr;
    return qobject_cast<T *>(engine->property(property).value<QObject *>());
}

} // namespace

void QmlServices::install(QQmlEngine &engine, SettingsStore &settings, LogStore &log)
{
    engine.setProperty(settingsProperty, QVariant::fromValue<QObject *>(&settings));
    engine.setProperty(logProperty, QVariant::fromValue<QObject *>(&log));
}

SettingsStore *QmlServices::settings(const QQmlEngine *engine)
{
    return installed<SettingsStore>(engine, settingsProperty);
}

LogStore *QmlServices::log(const QQmlEngine *engine)
{
    return installed<LogStore>(engine, logProperty);
}

SettingsUser::SettingsUser(QObject *self, SettingsStore *settings)
    : m_self(self)
    , m_settings(settings)
{}

SettingsUser::~SettingsUser() = default;

std::optional<GiteaClient> SettingsUser::configuredClient() const
{
    return m_settings ? m_settings->client() : std::nullopt;
}

void SettingsUser::log(LogLevel level, const QString &message) const
{
    if (m_settings && m_settings->log())
        m_settings->log()->log(level, message);
}

void SettingsUser::classBegin()
{
    if (m_settings)
        return;
    m_settings = QmlServices::settings(qmlEngine(m_self));
    if (m_settings)
        settingsFound();
}

} // namespace kestrine
