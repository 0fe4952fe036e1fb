#include "jsoncodec.h"

namespace kestrine::jsondetail {
namespace {

/// Deep enough for any answer the records read; deeper text goes to Qt's parser.
constexpr int deepestNesting = 64;
/// Longer numbers (and any with an exponent) go to Qt's parser, which decides whether they are
/// numbers it can hold.
constexpr qsizetype longestSkippedNumber = 40;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

/// The UTF-16 unit of the four hex digits at `digits`.
char16_t hexUnit(const char *digits)
{
    int unit = 0;
    for (int i = 0; i < 4; ++i) {
        const int value = hexValue(digits[i]);
        if (value < 0)
            throw NotThePlainCase{};
        unit = unit * 16 + value;
    }
    return static_cast<char16_t>(unit);
}

/// The length of the well-formed UTF-8 sequence of a non-ASCII character at `at` (shortest form,
/// no surrogates, nothing beyond U+10FFFF), or 0.
int utf8SequenceLength(const unsigned char *at, const unsigned char *end)
{
    const unsigned char lead = at[0];
    int length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xbf;
    if (lead >= 0xc2 && lead <= 0xdf) {
        length = 2;
    } else if (lead >= 0xe0 && lead <= 0xef) {
        length = 3;
        if (lead == 0xe0)
            low = 0xa0;
        else if (lead == 0xed)
            high = 0x9f;
    } else if (lead >= 0xf0 && lead <= 0xf4) {
        length = 4;
        if (lead == 0xf0)
            low = 0x90;
        else if (lead == 0xf4)
            high = 0x8f;
    } else {
        return 0;
    }
    if (end - at < length)
        return 0;
    if (at[1] < low || at[1] > high)
        return 0;
    for (int i = 2; i < length; ++i) {
        if (at[i] < 0x80 || at[i] > 0xbf)
            return 0;
    }
    return length;
}

} // namespace

char JsonCursor::peek()
{
    skipWhitespace();
    return m_next == m_end ? '\0' : *m_next;
}

void JsonCursor::skipWhitespace()
{
    while (m_next != m_end &&
           (*m_next == ' ' || *m_next == '\n' || *m_next == '\r' || *m_next == '\t'))
        ++m_next;
}

void JsonCursor::take(char token)
{
    if (peek() != token)
        throw NotThePlainCase{};
    ++m_next;
}

bool JsonCursor::takeIf(char token)
{
    if (peek() != token)
        return false;
    ++m_next;
    return true;
}

bool JsonCursor::takeNull()
{
    if (peek() != 'n')
        return false;
    takeWord("null");
    return true;
}

void JsonCursor::takeWord(QByteArrayView word)
{
    if (m_end - m_next < word.size() || QByteArrayView(m_next, word.size()) != word)
        throw NotThePlainCase{};
    m_next += word.size();
}

void JsonCursor::enter()
{
    if (++m_depth > deepestNesting)
        throw NotThePlainCase{};
}

QByteArrayView JsonCursor::stringBytes(bool *hasEscapes)
{
    take('"');
    const char *const start = m_next;
    *hasEscapes = false;
    while (m_next != m_end) {
        const auto byte = static_cast<unsigned char>(*m_next);
        if (byte == '"') {
            const QByteArrayView content(start, m_next);
            ++m_next;
            return content;
        }
        if (byte < 0x20)
            throw NotThePlainCase{};
        if (byte == '\\') {
            *hasEscapes = true;
            if (m_end - m_next < 2)
                throw NotThePlainCase{};
            switch (m_next[1]) {
            case '"':
            case '\\':
            case '/':
            case 'b':
            case 'f':
            case 'n':
            case 'r':
            case 't':
                m_next += 2;
                break;
            case 'u':
                if (m_end - m_next < 6)
                    throw NotThePlainCase{};
                hexUnit(m_next + 2);
                m_next += 6;
                break;
            default:
                throw NotThePlainCase{};
            }
        } else if (byte < 0x80) {
            ++m_next;
        } else {
            const int length = utf8SequenceLength(reinterpret_cast<const unsigned char *>(m_next),
                                                  reinterpret_cast<const unsigned char *>(m_end));
            if (length == 0)
                throw NotThePlainCase{};
            m_next += length;
        }
    }
    throw NotThePlainCase{};
}

QByteArrayView JsonCursor::key()
{
    bool hasEscapes = false;
    const QByteArrayView bytes = stringBytes(&hasEscapes);
    // An escaped key may spell a field's name; Qt's parser reads those.
    if (hasEscapes)
        throw NotThePlainCase{};
    return bytes;
}

QString JsonCursor::string()
{
    bool hasEscapes = false;
    const QByteArrayView bytes = stringBytes(&hasEscapes);
    if (!hasEscapes)
        return QString::fromUtf8(bytes);

    QString text;
    text.reserve(bytes.size());
    const char *at = bytes.data();
    const char *const end = at + bytes.size();
    const char *run = at;
    while (at != end) {
        if (*at != '\\') {
            ++at;
            continue;
        }
        text += QString::fromUtf8(QByteArrayView(run, at));
        const char escaped = at[1];
        at += 2;
        switch (escaped) {
        case 'b':
            text += u'\b';
            break;
        case 'f':
            text += u'\f';
            break;
        case 'n':
            text += u'\n';
            break;
        case 'r':
            text += u'\r';
            break;
        case 't':
            text += u'\t';
            break;
        case 'u': {
            const char16_t unit = hexUnit(at);
            at += 4;
            if (QChar::isHighSurrogate(unit)) {
                // Only a complete pair is the plain case.
                if (end - at < 6 || at[0] != '\\' || at[1] != 'u')
                    throw NotThePlainCase{};
                const char16_t low = hexUnit(at + 2);
                if (!QChar::isLowSurrogate(low))
                    throw NotThePlainCase{};
                at += 6;
                text += QChar(unit);
                text += QChar(low);
            } else if (QChar::isLowSurrogate(unit)) {
                throw NotThePlainCase{};
            } else {
                text += QChar(unit);
            }
            break;
        }
        default: // '"', '\\' and '/' stand for themselves
            text += QLatin1Char(escaped);
        }
        run = at;
    }
    text += QString::fromUtf8(QByteArrayView(run, end));
    return text;
}

bool JsonCursor::boolean()
{
    switch (peek()) {
    case 't':
        takeWord("true");
        return true;
    case 'f':
        takeWord("false");
        return false;
    default:
        throw NotThePlainCase{};
    }
}

qint64 JsonCursor::integer()
{
    const bool negative = peek() == '-';
    if (negative)
        ++m_next;
    const char *const digits = m_next;
    while (m_next != m_end && isDigit(*m_next))
        ++m_next;
    const qsizetype count = m_next - digits;
    // Up to 18 digits cannot overflow; "01" is no JSON number.
    if (count == 0 || count > 18 || (count > 1 && *digits == '0'))
        throw NotThePlainCase{};
    qint64 value = 0;
    for (const char *digit = digits; digit != m_next; ++digit)
        value = value * 10 + (*digit - '0');
    // 1.0 and 1e3 are integers to the decoder, but not the plain case.
    if (m_next != m_end && (*m_next == '.' || *m_next == 'e' || *m_next == 'E'))
        throw NotThePlainCase{};
    return negative ? -value : value;
}

void JsonCursor::skipNumber()
{
    const char *const start = m_next;
    if (m_next != m_end && *m_next == '-')
        ++m_next;
    if (m_next == m_end || !isDigit(*m_next))
        throw NotThePlainCase{};
    if (*m_next == '0') {
        ++m_next;
    } else {
        while (m_next != m_end && isDigit(*m_next))
            ++m_next;
    }
    if (m_next != m_end && *m_next == '.') {
        ++m_next;
        if (m_next == m_end || !isDigit(*m_next))
            throw NotThePlainCase{};
        while (m_next != m_end && isDigit(*m_next))
            ++m_next;
    }
    if (m_next != m_end && (*m_next == 'e' || *m_next == 'E'))
        throw NotThePlainCase{};
    if (m_next - start > longestSkippedNumber)
        throw NotThePlainCase{};
}

void JsonCursor::skipValue()
{
    bool hasEscapes = false;
    switch (peek()) {
    case '{':
        ++m_next;
        enter();
        if (!takeIf('}')) {
            do {
                stringBytes(&hasEscapes);
                take(':');
                skipValue();
            } while (takeIf(','));
            take('}');
        }
        leave();
        break;
    case '[':
        ++m_next;
        enter();
        if (!takeIf(']')) {
            do {
                skipValue();
            } while (takeIf(','));
            take(']');
        }
        leave();
        break;
    case '"':
        stringBytes(&hasEscapes);
        break;
    case 't':
        takeWord("true");
        break;
    case 'f':
        takeWord("false");
        break;
    case 'n':
        takeWord("null");
        break;
    default:
        skipNumber();
    }
}

void JsonCursor::finish()
{
    skipWhitespace();
    if (m_next != m_end)
        throw NotThePlainCase{};
}

} // namespace kestrine::jsondetail
