#pragma once

// Records handed back from QML. Not part of the public interface.

#include "jsoncodec.h"

#include <QJSValue>
#include <QJsonValue>
#include <QVariant>
#include <optional>

namespace kestrine::detail {

/// `value` (a record in the QML form toQmlValue gives, as a QJSValue or a QVariantMap) decoded
/// as `T`; nothing when it is not one.
template <JsonRecord T>
std::optional<T> recordFromQml(const QVariant &value)
{
    const QVariant plain = value.metaType() == QMetaType::fromType<QJSValue>()
                               ? value.value<QJSValue>().toVariant()
                               : value;
    try {
        return decodeJson<T>(QJsonValue::fromVariant(plain));
    } catch (const DecodeError &) {
        return std::nullopt;
    }
}

} // namespace kestrine::detail
