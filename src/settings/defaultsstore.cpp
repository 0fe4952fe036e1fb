#include "defaultsstore.h"

#include "storagemode.h"

#include <QIODevice>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <cmath>
#include <limits>
#include <memory>

namespace kestrine {
namespace {

// Byte arrays have no JSON type of their own; they travel as a one-member object with this key.
const QString dataTag = QStringLiteral("$data");

QJsonValue toJson(const QVariant &value);

QJsonArray toJsonArray(const QVariantList &list)
{
    QJsonArray array;
    for (const QVariant &item : list)
        array.append(toJson(item));
    return array;
}

template <typename Map>
QJsonObject toJsonObject(const Map &map)
{
    QJsonObject object;
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        object.insert(it.key(), toJson(it.value()));
    return object;
}

QJsonValue toJson(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        return QJsonValue(QJsonValue::Null);
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::QString:
        return value.toString();
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::LongLong:
        return value.toLongLong();
    case QMetaType::ULong:
    case QMetaType::ULongLong: {
        // Beyond qint64 the JSON reader cannot give an integer back anyway.
        const qulonglong unsignedValue = value.toULongLong();
        if (unsignedValue <= qulonglong(std::numeric_limits<qint64>::max()))
            return qint64(unsignedValue);
        return double(unsignedValue);
    }
    case QMetaType::Float:
    case QMetaType::Double:
        return value.toDouble();
    case QMetaType::QByteArray:
        return QJsonObject{{dataTag, QString::fromLatin1(value.toByteArray().toBase64())}};
    case QMetaType::QStringList:
    case QMetaType::QVariantList:
        return toJsonArray(value.toList());
    case QMetaType::QVariantMap:
        return toJsonObject(value.toMap());
    case QMetaType::QVariantHash:
        return toJsonObject(value.toHash());
    default:
        // Anything else (URLs, dates, UUIDs, ...) as Qt's own JSON conversion renders it.
        return QJsonValue::fromVariant(value);
    }
}

QVariant fromJson(const QJsonValue &value);

QVariant fromJsonObject(const QJsonObject &object)
{
    if (object.size() == 1 && object.contains(dataTag) && object.value(dataTag).isString()) {
        auto decoded = QByteArray::fromBase64Encoding(object.value(dataTag).toString().toLatin1(),
                                                      QByteArray::AbortOnBase64DecodingErrors);
        if (decoded)
            return *decoded;
        // Not base64 after all: keep the object as it stands rather than lose it.
    }
    QVariantMap map;
    for (auto it = object.constBegin(); it != object.constEnd(); ++it)
        map.insert(it.key(), fromJson(it.value()));
    return map;
}

QVariant fromJson(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        return {};
    case QJsonValue::Bool:
        return value.toBool();
    case QJsonValue::String:
        return value.toString();
    case QJsonValue::Double: {
        // JSON has one number type. Whole numbers come back as qint64, whether the file spells
        // them "3" or "3.0"; everything else stays double.
        const QVariant number = value.toVariant();
        if (number.typeId() == QMetaType::LongLong)
            return number;
        const double d = value.toDouble();
        constexpr double int64Bound = 9223372036854775808.0; // 2^63
        if (std::isfinite(d) && d == std::trunc(d) && d >= -int64Bound && d < int64Bound)
            return qint64(d);
        return d;
    }
    case QJsonValue::Array: {
        QVariantList list;
        const QJsonArray array = value.toArray();
        for (const QJsonValue &item : array)
            list.append(fromJson(item));
        return list;
    }
    case QJsonValue::Object:
        return fromJsonObject(value.toObject());
    }
    return {};
}

bool readJsonFile(QIODevice &device, QSettings::SettingsMap &map)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(device.readAll(), &error);
    // A damaged file reads as empty; QSettings then reports FormatError and the next write
    // replaces the file with what is in memory.
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return false;
    const QJsonObject object = document.object();
    for (auto it = object.constBegin(); it != object.constEnd(); ++it)
        map.insert(it.key(), fromJson(it.value()));
    return true;
}

bool writeJsonFile(QIODevice &device, const QSettings::SettingsMap &map)
{
    QJsonObject object;
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        object.insert(it.key(), toJson(it.value()));
    const QByteArray bytes = QJsonDocument(object).toJson(QJsonDocument::Indented);
    return device.write(bytes) == bytes.size();
}

} // namespace

QSettings::Format jsonSettingsFormat()
{
    static const QSettings::Format format =
        QSettings::registerFormat(QStringLiteral("json"), readJsonFile, writeJsonFile);
    return format;
}

namespace {

std::unique_ptr<QSettings> openDefaultsStore()
{
    // From here on the storage mode is fixed: this store keeps the file it opened.
    Storage::markDefaultsOpened();
    if (Storage::isEphemeral()) {
        return std::make_unique<QSettings>(
            Storage::ephemeralDirectory() + QStringLiteral("/kestrine.json"), jsonSettingsFormat());
    }
    return std::make_unique<QSettings>(jsonSettingsFormat(), QSettings::UserScope,
                                       QStringLiteral("norrum"), QStringLiteral("kestrine"));
}

} // namespace

QSettings &defaultsStore()
{
    static const std::unique_ptr<QSettings> store = openDefaultsStore();
    return *store;
}

} // namespace kestrine
