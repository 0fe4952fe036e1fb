#pragma once

// What every fuzz target shares: how a broken invariant stops the run, and walks over a record's
// field table that find and normalise its dates.

#include "jsoncodec.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <type_traits>

namespace kestrine::fuzz {

/// A broken invariant: says which, and aborts so that libFuzzer keeps the input as a crash.
[[noreturn]] inline void fail(const char *invariant, const QString &detail = {})
{
    std::fprintf(stderr, "invariant broken: %s\n%s\n", invariant, qUtf8Printable(detail));
    std::abort();
}

inline void check(bool holds, const char *invariant, const QString &detail = {})
{
    if (!holds)
        fail(invariant, detail);
}

inline QByteArray bytes(const uint8_t *data, size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(data), qsizetype(size));
}

/// Calls `visit` on every date inside `value`, through the same field tables the codec walks.
template <class T, class Visitor>
void forEachDate(T &value, Visitor &&visit)
{
    if constexpr (std::is_same_v<std::remove_const_t<T>, QDateTime>) {
        visit(value);
    } else if constexpr (jsondetail::OptionalTraits<std::remove_const_t<T>>::value) {
        if (value)
            forEachDate(*value, visit);
    } else if constexpr (jsondetail::ListTraits<std::remove_const_t<T>>::value) {
        for (auto &element : value)
            forEachDate(element, visit);
    } else if constexpr (JsonRecord<std::remove_const_t<T>>) {
        std::apply(
            [&](const auto &...fields) { (forEachDate(value.*(fields.member), visit), ...); },
            std::remove_const_t<T>::fields());
    }
}

template <class T>
bool containsDate(const T &value)
{
    bool found = false;
    forEachDate(value, [&](const QDateTime &) { found = true; });
    return found;
}

/// The record as it reads back after dates were written as texts, which keep whole seconds only.
template <class T>
T withWholeSecondDates(T value)
{
    forEachDate(value, [](QDateTime &date) { date = date.addMSecs(-date.time().msec()); });
    return value;
}

/// Decodes `json` as `T`, or nothing when it does not decode. A refusal must say why.
template <class T>
std::optional<T> tryDecode(const QJsonValue &json)
{
    try {
        return decodeJson<T>(json);
    } catch (const DecodeError &error) {
        check(!error.description().isEmpty(), "a decoding failure has a description");
        return std::nullopt;
    }
}

template <class T>
std::optional<T> tryDecode(const QByteArray &json)
{
    try {
        return decodeJson<T>(json);
    } catch (const DecodeError &error) {
        check(!error.description().isEmpty(), "a decoding failure has a description");
        return std::nullopt;
    }
}

} // namespace kestrine::fuzz
