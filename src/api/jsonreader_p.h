#pragma once

// The quick way from a server's JSON text to records, included by jsoncodec.h only.
//
// Qt's parser builds a JSON object for every value of a document, and most of what Gitea sends is
// never read: a pull request carries its head and base repositories in full, and the records keep
// a few of their keys. This reader walks the text once, fills the fields of the table as it meets
// their keys and checks the rest only for being well-formed JSON.
//
// It takes only the plain case. Anything else (text that is not strictly valid JSON, a duplicate
// key, a number that is not a plain integer, a string with an unpaired surrogate) makes it give
// up, and decodeJson() then decodes through Qt's parser, which either gives the same record or the
// exact error it always gave. So this reader only ever needs to be stricter than Qt, never as
// lenient. Well-formed text that the decoder certainly refuses (a value of the wrong type, a
// missing key) is read to its end and reported as refused, for callers that need no reason.

#include <QByteArrayView>
#include <cstddef>
#include <utility>

namespace kestrine::jsondetail {

/// Why the reader gave up; never leaves tryReadJson().
struct NotThePlainCase
{};

/// A position in JSON text, and the reading of its tokens.
class JsonCursor
{
public:
    JsonCursor(const char *begin, const char *end)
        : m_next(begin)
        , m_end(end)
    {}

    /// The first character of the next value (after whitespace), or '\0' at the end.
    char peek();
    /// Skips whitespace and takes `token`; gives up on anything else.
    void take(char token);
    /// Skips whitespace and takes `token` when it is next.
    bool takeIf(char token);
    /// A literal null is next (it is taken), or something else (nothing is taken).
    bool takeNull();
    /// An object key without escapes; its bytes are valid UTF-8.
    QByteArrayView key();
    QString string();
    bool boolean();
    qint64 integer();
    /// Skips one well-formed value of any kind.
    void skipValue();
    /// Only whitespace may remain.
    void finish();

    /// The value here is well-formed but not what the decoder takes for the field: reading goes
    /// on past it, so that the whole text is known to be well-formed, and the outcome is refusal.
    void refuseValue()
    {
        m_refused = true;
        skipValue();
    }
    /// Marks the text as one the decoder refuses, for a reason found outside a value.
    void refuse() { m_refused = true; }
    bool refused() const { return m_refused; }

    /// Nesting guard: entered before an object or array is read, left after it.
    void enter();
    void leave() { --m_depth; }

private:
    void skipWhitespace();
    /// The raw bytes of a string's content up to its closing quote, with `hasEscapes` set when
    /// a backslash occurs. Validates the UTF-8 and rejects control characters.
    QByteArrayView stringBytes(bool *hasEscapes);
    void skipNumber();
    void takeWord(QByteArrayView word);

    const char *m_next;
    const char *m_end;
    int m_depth = 0;
    bool m_refused = false;
};

template <class T>
void readInto(JsonCursor &cursor, T &value);

template <class Field>
using MemberOf = typename Field::MemberType;

template <JsonRecord T, std::size_t... I>
constexpr quint64 requiredFieldsMask(std::index_sequence<I...>)
{
    using Fields = decltype(T::fields());
    return (0ULL | ... |
            (OptionalTraits<MemberOf<std::tuple_element_t<I, Fields>>>::value ? 0ULL : 1ULL << I));
}

/// Reads the value of field I into `record` when `key` names it.
template <std::size_t I, class T, class F>
bool readFieldIfNamed(JsonCursor &cursor, T &record, const F &field, QByteArrayView key,
                      quint64 &seen)
{
    if (key != QByteArrayView(field.key))
        return false;
    // Which of two equal keys counts is Qt's affair.
    if (seen & (1ULL << I))
        throw NotThePlainCase{};
    seen |= 1ULL << I;
    auto &member = record.*(field.member);
    using Member = std::remove_cvref_t<decltype(member)>;
    if constexpr (OptionalTraits<Member>::value) {
        if (cursor.takeNull())
            return true;
        member.emplace();
        readInto(cursor, *member);
    } else {
        readInto(cursor, member);
    }
    return true;
}

template <JsonRecord T, std::size_t... I>
bool readNamedField(JsonCursor &cursor, T &record, QByteArrayView key, quint64 &seen,
                    std::index_sequence<I...>)
{
    const auto fields = T::fields();
    return (readFieldIfNamed<I>(cursor, record, std::get<I>(fields), key, seen) || ...);
}

template <JsonRecord T>
void readRecordInto(JsonCursor &cursor, T &record)
{
    constexpr std::size_t count = std::tuple_size_v<decltype(T::fields())>;
    static_assert(count <= 64, "the reader tracks at most 64 fields a record");
    constexpr auto indices = std::make_index_sequence<count>();
    cursor.take('{');
    cursor.enter();
    quint64 seen = 0;
    if (!cursor.takeIf('}')) {
        do {
            const QByteArrayView key = cursor.key();
            cursor.take(':');
            if (!readNamedField(cursor, record, key, seen, indices))
                cursor.skipValue();
        } while (cursor.takeIf(','));
        cursor.take('}');
    }
    cursor.leave();
    constexpr quint64 required = requiredFieldsMask<T>(indices);
    if ((seen & required) != required)
        cursor.refuse();
}

template <class T>
void readInto(JsonCursor &cursor, T &value)
{
    const char first = cursor.peek();
    if constexpr (std::is_same_v<T, bool>) {
        if (first != 't' && first != 'f')
            return cursor.refuseValue();
        value = cursor.boolean();
    } else if constexpr (std::is_same_v<T, qint64>) {
        if (first != '-' && (first < '0' || first > '9'))
            return cursor.refuseValue();
        value = cursor.integer();
    } else if constexpr (std::is_same_v<T, QString>) {
        if (first != '"')
            return cursor.refuseValue();
        value = cursor.string();
    } else if constexpr (std::is_same_v<T, QDateTime>) {
        if (first != '"')
            return cursor.refuseValue();
        const std::optional<QDateTime> instant = InternetDate::parseEither(cursor.string());
        if (!instant)
            return cursor.refuse();
        value = *instant;
    } else if constexpr (ListTraits<T>::value) {
        if (first != '[')
            return cursor.refuseValue();
        cursor.take('[');
        cursor.enter();
        if (!cursor.takeIf(']')) {
            do {
                readInto(cursor, value.emplace_back());
            } while (cursor.takeIf(','));
            cursor.take(']');
        }
        cursor.leave();
    } else if constexpr (JsonRecord<T>) {
        if (first != '{')
            return cursor.refuseValue();
        readRecordInto(cursor, value);
    } else {
        static_assert(sizeof(T) == 0, "no JSON mapping for this type");
    }
}

/// The larger documents are left to Qt's parser and its limits; no answer the app reads is near.
inline constexpr qsizetype largestQuickRead = 16 * 1024 * 1024;

/// What the quick reader made of a text.
template <class T>
struct QuickReading
{
    enum class Outcome {
        /// `value` is what decoding through Qt's parser gives.
        Read,
        /// The text is well-formed JSON that the decoder certainly refuses (a value of the wrong
        /// type, a missing required key, an undecodable date); Qt's parser would say which
        /// reason it meets first.
        Refused,
        /// Not the plain case: only Qt's parser can tell.
        GaveUp,
    };
    Outcome outcome = Outcome::GaveUp;
    T value{};
};

template <class T>
QuickReading<T> readQuickly(const QByteArray &bytes)
{
    using Outcome = typename QuickReading<T>::Outcome;
    if (bytes.size() > largestQuickRead)
        return {};
    try {
        JsonCursor cursor(bytes.constBegin(), bytes.constEnd());
        QuickReading<T> reading;
        readInto(cursor, reading.value);
        cursor.finish();
        reading.outcome = cursor.refused() ? Outcome::Refused : Outcome::Read;
        return reading;
    } catch (const NotThePlainCase &) {
        return {};
    }
}

/// `bytes` read as `T` the quick way, or nothing when the reader could not read them.
template <class T>
std::optional<T> tryReadJson(const QByteArray &bytes)
{
    QuickReading<T> reading = readQuickly<T>(bytes);
    if (reading.outcome != QuickReading<T>::Outcome::Read)
        return std::nullopt;
    return std::move(reading.value);
}

} // namespace kestrine::jsondetail
