#include "jsoncodec.h"

#include <QJsonDocument>
#include <QJsonParseError>
#include <QLocale>
#include <limits>

namespace kestrine {

DecodeError::DecodeError(QString description)
    : m_description(std::move(description))
    , m_utf8(m_description.toUtf8())
{}

namespace jsondetail {
namespace {

const char *typeName(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Null:
        return "null";
    case QJsonValue::Bool:
        return "a boolean";
    case QJsonValue::Double:
        return "a number";
    case QJsonValue::String:
        return "a string";
    case QJsonValue::Array:
        return "an array";
    case QJsonValue::Object:
        return "an object";
    case QJsonValue::Undefined:
        break;
    }
    return "nothing";
}

QString where(const CodingPath &path)
{
    const QString rendered = path.render();
    return rendered.isEmpty() ? QStringLiteral("the top level") : rendered;
}

} // namespace

QString CodingPath::render() const
{
    QString text;
    if (parent)
        text = parent->render();
    if (key) {
        if (!text.isEmpty())
            text += u'.';
        text += QLatin1StringView(key);
    } else if (index >= 0) {
        text += u'[' + QString::number(index) + u']';
    }
    return text;
}

void throwTypeMismatch(const char *expected, const QJsonValue &found, const CodingPath &path)
{
    throw DecodeError(
        QStringLiteral("Expected %1 at %2 but found %3.")
            .arg(QLatin1StringView(expected), where(path), QLatin1StringView(typeName(found))));
}

void throwMissingKey(const CodingPath &path)
{
    throw DecodeError(QStringLiteral("No value for the required key %1.").arg(where(path)));
}

void throwNullForRequiredKey(const CodingPath &path)
{
    throw DecodeError(QStringLiteral("The required key %1 is null.").arg(where(path)));
}

void throwUndecodableDate(const QString &text)
{
    throw DecodeError(QStringLiteral("Cannot decode date string ") + text);
}

qint64 decodeInteger(const QJsonValue &value, const CodingPath &path)
{
    if (!value.isDouble())
        throwTypeMismatch("an integer", value, path);
    // toInteger() answers the fallback for anything that is not an exact 64-bit integer, so the
    // fallback itself is accepted only when the number really is that value.
    constexpr qint64 fallback = std::numeric_limits<qint64>::min();
    const qint64 integer = value.toInteger(fallback);
    if (integer == fallback && value.toDouble() != static_cast<double>(fallback))
        throwTypeMismatch("an integer", value, path);
    return integer;
}

QDateTime decodeDate(const QJsonValue &value, const CodingPath &path)
{
    if (!value.isString())
        throwTypeMismatch("a date string", value, path);
    const QString text = value.toString();
    auto instant = InternetDate::parseEither(text);
    if (!instant)
        throwUndecodableDate(text);
    return *instant;
}

QJsonValue encodeDate(const QDateTime &value, DateEncoding dates)
{
    switch (dates) {
    case DateEncoding::SecondsSinceReferenceDate:
        return QJsonValue(static_cast<double>(value.toMSecsSinceEpoch()) / 1000.0 -
                          static_cast<double>(referenceDateOffsetSeconds));
    case DateEncoding::InternetDateTime:
        return QJsonValue(InternetDate::format(value));
    }
    return {};
}

void writeString(QByteArray &out, const QString &text)
{
    static constexpr char hex[] = "0123456789abcdef";
    const auto escapeUnit = [&out](char16_t unit) {
        out += "\\u";
        for (int shift = 12; shift >= 0; shift -= 4)
            out += hex[(unit >> shift) & 0xf];
    };
    out += '"';
    // Runs without anything to escape are converted whole. Besides quotes, backslashes and
    // control characters, a surrogate without its partner is escaped, as Qt's own writer does,
    // so that it reads back as itself instead of as "?".
    const qsizetype size = text.size();
    qsizetype runStart = 0;
    for (qsizetype i = 0; i < size; ++i) {
        const char16_t unit = text.at(i).unicode();
        if (QChar::isHighSurrogate(unit) && i + 1 < size && text.at(i + 1).isLowSurrogate()) {
            ++i;
            continue;
        }
        if (unit >= 0x20 && unit != u'"' && unit != u'\\' && !QChar::isSurrogate(unit))
            continue;
        out += QStringView(text).sliced(runStart, i - runStart).toUtf8();
        runStart = i + 1;
        switch (unit) {
        case u'"':
            out += "\\\"";
            break;
        case u'\\':
            out += "\\\\";
            break;
        case u'\n':
            out += "\\n";
            break;
        case u'\t':
            out += "\\t";
            break;
        case u'\r':
            out += "\\r";
            break;
        default:
            escapeUnit(unit);
        }
    }
    out += QStringView(text).sliced(runStart).toUtf8();
    out += '"';
}

void writeDate(QByteArray &out, const QDateTime &value, DateEncoding dates)
{
    const QJsonValue encoded = encodeDate(value, dates);
    if (encoded.isString()) {
        writeString(out, encoded.toString());
        return;
    }
    // Shortest form that reads back as the same number.
    out += QByteArray::number(encoded.toDouble(), 'g', QLocale::FloatingPointShortest);
}

QJsonValue parseDocument(const QByteArray &bytes)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError) {
        throw DecodeError(QStringLiteral("The data is not valid JSON: %1 at offset %2.")
                              .arg(error.errorString())
                              .arg(error.offset));
    }
    if (document.isArray())
        return document.array();
    return document.object();
}

} // namespace jsondetail
} // namespace kestrine
