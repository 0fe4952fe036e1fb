#include "jsoncodec.h"

#include <QJsonDocument>
#include <QJsonParseError>
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
