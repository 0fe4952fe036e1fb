#include "notificationstate.h"

#include "cachedirectory.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace kestrine {
namespace {

const QString announcedKey = QStringLiteral("announcedNewPRs");
const QString statusesKey = QStringLiteral("ciStatusByPR");

} // namespace

QString NotificationState::defaultFilePath()
{
    return cacheDirectory() + QStringLiteral("/notification-state.json");
}

NotificationState NotificationState::load(const QString &filePath)
{
    QFile file(filePath);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return fromJson(file.readAll());
}

void NotificationState::save(const QString &filePath) const
{
    QFile file(filePath);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(toJson());
}

QByteArray NotificationState::toJson() const
{
    QJsonArray announced;
    for (const QString &key : announcedNewPRs)
        announced.append(key);
    QJsonObject statuses;
    for (auto it = ciStatusByPR.cbegin(); it != ciStatusByPR.cend(); ++it)
        statuses.insert(it.key(), it.value());
    return QJsonDocument(QJsonObject{{announcedKey, announced}, {statusesKey, statuses}})
        .toJson(QJsonDocument::Compact);
}

NotificationState NotificationState::fromJson(const QByteArray &json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject())
        return {};
    const QJsonObject object = document.object();
    const QJsonValue announced = object.value(announcedKey);
    const QJsonValue statuses = object.value(statusesKey);
    if (!announced.isArray() || !statuses.isObject())
        return {};

    NotificationState state;
    for (const QJsonValue &key : announced.toArray()) {
        if (!key.isString())
            return {};
        state.announcedNewPRs.insert(key.toString());
    }
    const QJsonObject statusObject = statuses.toObject();
    for (auto it = statusObject.constBegin(); it != statusObject.constEnd(); ++it) {
        if (!it.value().isString())
            return {};
        state.ciStatusByPR.insert(it.key(), it.value().toString());
    }
    return state;
}

} // namespace kestrine
