#pragma once

// The one strict JSON layer between Gitea's answers and the app's records.
//
// Every record lists its fields once, in a table of (JSON key, member pointer) returned by a
// static `fields()` function. Decoding, encoding and hashing all walk that same table, so a key
// is spelled in exactly one place. Rules: a missing required key fails, `null` means absent,
// a value of the wrong JSON type fails (an integer field rejects 1.5 and "1"), unknown keys are
// ignored.

#include "dates.h"

#include <QByteArray>
#include <QDateTime>
#include <QHashFunctions>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QString>
#include <QVariant>
#include <exception>
#include <optional>
#include <tuple>
#include <type_traits>

namespace kestrine {

/// Why bytes or a JSON value could not become the expected record.
class DecodeError : public std::exception
{
public:
    explicit DecodeError(QString description);
    const QString &description() const { return m_description; }
    const char *what() const noexcept override { return m_utf8.constData(); }

private:
    QString m_description;
    QByteArray m_utf8;
};

/// How dates are written when records are encoded. Decoding only ever accepts date strings.
enum class DateEncoding {
    SecondsSinceReferenceDate, ///< a JSON number: seconds since 2001-01-01 00:00:00 UTC
    InternetDateTime,          ///< a string such as "2024-05-01T10:20:30Z"
};

/// One row of a record's field table.
template <class Record, class Member>
struct Field
{
    using MemberType = Member;

    const char *key;
    Member Record::*member;
};

template <class Record, class Member>
constexpr Field<Record, Member> field(const char *key, Member Record::*member)
{
    return {key, member};
}

/// A record is a type with a field table.
template <class T>
concept JsonRecord = requires
{
    T::fields();
};

namespace jsondetail {

template <class T>
struct OptionalTraits : std::false_type
{};
template <class T>
struct OptionalTraits<std::optional<T>> : std::true_type
{
    using Value = T;
};

template <class T>
struct ListTraits : std::false_type
{};
template <class T>
struct ListTraits<QList<T>> : std::true_type
{
    using Element = T;
};

/// Where in the document a value sits; rendered only when decoding fails.
struct CodingPath
{
    const CodingPath *parent = nullptr;
    const char *key = nullptr;
    qsizetype index = -1;

    QString render() const;
};

[[noreturn]] void throwTypeMismatch(const char *expected, const QJsonValue &found,
                                    const CodingPath &path);
[[noreturn]] void throwMissingKey(const CodingPath &path);
[[noreturn]] void throwNullForRequiredKey(const CodingPath &path);
[[noreturn]] void throwUndecodableDate(const QString &text);

qint64 decodeInteger(const QJsonValue &value, const CodingPath &path);
QDateTime decodeDate(const QJsonValue &value, const CodingPath &path);
QJsonValue encodeDate(const QDateTime &value, DateEncoding dates);

template <class T>
T decodeValue(const QJsonValue &value, const CodingPath &path);

template <JsonRecord T>
T decodeRecord(const QJsonObject &object, const CodingPath &path)
{
    T record{};
    std::apply(
        [&](const auto &...fields) {
            (
                [&](const auto &f) {
                    using Member = std::remove_cvref_t<decltype(record.*(f.member))>;
                    const CodingPath fieldPath{&path, f.key};
                    const auto it = object.constFind(QLatin1StringView(f.key));
                    if constexpr (OptionalTraits<Member>::value) {
                        if (it == object.constEnd() || it->isNull())
                            return;
                        record.*(f.member) =
                            decodeValue<typename OptionalTraits<Member>::Value>(*it, fieldPath);
                    } else {
                        if (it == object.constEnd())
                            throwMissingKey(fieldPath);
                        if (it->isNull())
                            throwNullForRequiredKey(fieldPath);
                        record.*(f.member) = decodeValue<Member>(*it, fieldPath);
                    }
                }(fields),
                ...);
        },
        T::fields());
    return record;
}

template <class T>
T decodeValue(const QJsonValue &value, const CodingPath &path)
{
    if constexpr (std::is_same_v<T, bool>) {
        if (!value.isBool())
            throwTypeMismatch("a boolean", value, path);
        return value.toBool();
    } else if constexpr (std::is_same_v<T, qint64>) {
        return decodeInteger(value, path);
    } else if constexpr (std::is_same_v<T, QString>) {
        if (!value.isString())
            throwTypeMismatch("a string", value, path);
        return value.toString();
    } else if constexpr (std::is_same_v<T, QDateTime>) {
        return decodeDate(value, path);
    } else if constexpr (ListTraits<T>::value) {
        if (!value.isArray())
            throwTypeMismatch("an array", value, path);
        const QJsonArray array = value.toArray();
        T list;
        list.reserve(array.size());
        for (qsizetype i = 0; i < array.size(); ++i) {
            const CodingPath elementPath{&path, nullptr, i};
            list.append(decodeValue<typename ListTraits<T>::Element>(array.at(i), elementPath));
        }
        return list;
    } else if constexpr (JsonRecord<T>) {
        if (!value.isObject())
            throwTypeMismatch("an object", value, path);
        return decodeRecord<T>(value.toObject(), path);
    } else {
        static_assert(sizeof(T) == 0, "no JSON mapping for this type");
    }
}

template <class T>
QJsonValue encodeValue(const T &value, DateEncoding dates);

/// Calls `visit(key, value)` for every field of `record` that holds a value, in the table's
/// order: what encoding writes.
template <JsonRecord T, class Visit>
void forEachPresentField(const T &record, Visit &&visit)
{
    std::apply(
        [&](const auto &...fields) {
            (
                [&](const auto &f) {
                    using Member = std::remove_cvref_t<decltype(record.*(f.member))>;
                    const auto &member = record.*(f.member);
                    if constexpr (OptionalTraits<Member>::value) {
                        if (member)
                            visit(f.key, *member);
                    } else {
                        visit(f.key, member);
                    }
                }(fields),
                ...);
        },
        T::fields());
}

template <JsonRecord T>
QJsonObject encodeRecord(const T &record, DateEncoding dates)
{
    QJsonObject object;
    forEachPresentField(record, [&](const char *key, const auto &value) {
        object.insert(QLatin1StringView(key), encodeValue(value, dates));
    });
    return object;
}

template <class T>
QJsonValue encodeValue(const T &value, DateEncoding dates)
{
    if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, qint64> ||
                  std::is_same_v<T, QString>) {
        return QJsonValue(value);
    } else if constexpr (std::is_same_v<T, QDateTime>) {
        return encodeDate(value, dates);
    } else if constexpr (ListTraits<T>::value) {
        QJsonArray array;
        for (const auto &element : value)
            array.append(encodeValue(element, dates));
        return array;
    } else if constexpr (JsonRecord<T>) {
        return encodeRecord(value, dates);
    } else {
        static_assert(sizeof(T) == 0, "no JSON mapping for this type");
    }
}

// The same encoding written straight into JSON text, without building the JSON objects first:
// for the large files the app writes. Keys are plain ASCII names and are written as they are.

void writeString(QByteArray &out, const QString &text);
void writeDate(QByteArray &out, const QDateTime &value, DateEncoding dates);

template <class T>
void writeValue(QByteArray &out, const T &value, DateEncoding dates);

template <JsonRecord T>
void writeRecord(QByteArray &out, const T &record, DateEncoding dates)
{
    out += '{';
    bool first = true;
    forEachPresentField(record, [&](const char *key, const auto &value) {
        if (!first)
            out += ',';
        first = false;
        out += '"';
        out += key;
        out += "\":";
        writeValue(out, value, dates);
    });
    out += '}';
}

template <class T>
void writeValue(QByteArray &out, const T &value, DateEncoding dates)
{
    if constexpr (std::is_same_v<T, bool>) {
        out += value ? "true" : "false";
    } else if constexpr (std::is_same_v<T, qint64>) {
        out += QByteArray::number(value);
    } else if constexpr (std::is_same_v<T, QString>) {
        writeString(out, value);
    } else if constexpr (std::is_same_v<T, QDateTime>) {
        writeDate(out, value, dates);
    } else if constexpr (ListTraits<T>::value) {
        out += '[';
        for (qsizetype i = 0; i < value.size(); ++i) {
            if (i > 0)
                out += ',';
            writeValue(out, value.at(i), dates);
        }
        out += ']';
    } else if constexpr (JsonRecord<T>) {
        writeRecord(out, value, dates);
    } else {
        static_assert(sizeof(T) == 0, "no JSON mapping for this type");
    }
}

QJsonValue parseDocument(const QByteArray &bytes);

} // namespace jsondetail
} // namespace kestrine

#include "jsonreader_p.h"

namespace kestrine {

/// Decodes `bytes` (a JSON document) as `T`: a record or a list. Throws DecodeError. The plain
/// case is read by the quick reader, everything else through Qt's parser; both give the same.
template <class T>
T decodeJson(const QByteArray &bytes)
{
    if (std::optional<T> quick = jsondetail::tryReadJson<T>(bytes))
        return std::move(*quick);
    const jsondetail::CodingPath root;
    return jsondetail::decodeValue<T>(jsondetail::parseDocument(bytes), root);
}

/// decodeJson(bytes), or nothing where it would throw: for callers that need no reason, which are
/// then spared Qt's parser on a text the quick reader already knows the decoder refuses.
template <class T>
std::optional<T> tryDecodeJson(const QByteArray &bytes)
{
    using Outcome = typename jsondetail::QuickReading<T>::Outcome;
    jsondetail::QuickReading<T> quick = jsondetail::readQuickly<T>(bytes);
    if (quick.outcome == Outcome::Read)
        return std::move(quick.value);
    if (quick.outcome == Outcome::Refused)
        return std::nullopt;
    try {
        const jsondetail::CodingPath root;
        return jsondetail::decodeValue<T>(jsondetail::parseDocument(bytes), root);
    } catch (const DecodeError &) {
        return std::nullopt;
    }
}

/// Decodes an already parsed JSON value as `T`. Throws DecodeError.
template <class T>
T decodeJson(const QJsonValue &value)
{
    const jsondetail::CodingPath root;
    return jsondetail::decodeValue<T>(value, root);
}

/// Encodes a record or a list with the same keys that decoding reads; absent fields are left out.
template <class T>
QJsonValue encodeJson(const T &value, DateEncoding dates = DateEncoding::SecondsSinceReferenceDate)
{
    return jsondetail::encodeValue(value, dates);
}

/// The compact JSON text of encodeJson(value, dates), written directly: the same document at a
/// fraction of the time and memory, for files of thousands of records.
template <class T>
QByteArray writeJson(const T &value, DateEncoding dates = DateEncoding::SecondsSinceReferenceDate)
{
    QByteArray out;
    jsondetail::writeValue(out, value, dates);
    return out;
}

/// A record or list as QML sees it: JavaScript objects and arrays with the JSON keys, absent fields
/// left out and dates as "2024-05-01T10:20:30Z" texts (which `new Date(text)` reads).
template <class T>
QVariant toQmlValue(const T &value)
{
    return encodeJson(value, DateEncoding::InternetDateTime).toVariant();
}

/// Hashes every field of the table, so equal records hash equally. Only the one-argument form
/// is declared: Qt derives the seeded one from it, and declaring both would be ambiguous.
template <JsonRecord T>
size_t qHash(const T &record) noexcept
{
    QtPrivate::QHashCombine combine;
    size_t seed = 0;
    std::apply(
        [&](const auto &...fields) {
            (
                [&](const auto &f) {
                    const auto &member = record.*(f.member);
                    using Member = std::remove_cvref_t<decltype(member)>;
                    if constexpr (jsondetail::OptionalTraits<Member>::value) {
                        seed = combine(seed, member.has_value());
                        if (member)
                            seed = combine(seed, *member);
                    } else {
                        seed = combine(seed, member);
                    }
                }(fields),
                ...);
        },
        T::fields());
    return seed;
}

} // namespace kestrine
