#include "weblinks.h"

namespace kestrine {
namespace {

/// A cursor over one header value; every read stops at the end of the text.
class Scanner
{
public:
    explicit Scanner(QByteArrayView text)
        : m_text(text)
    {}

    bool atEnd() const { return m_position >= m_text.size(); }
    char peek() const { return atEnd() ? '\0' : m_text.at(m_position); }
    void advance() { ++m_position; }

    /// Optional white space: blanks and tabs.
    void skipBlanks()
    {
        while (!atEnd() && (peek() == ' ' || peek() == '\t'))
            advance();
    }

    /// Consumes `c` when it comes next.
    bool take(char c)
    {
        if (atEnd() || peek() != c)
            return false;
        advance();
        return true;
    }

    /// The characters up to `end` (not included), which is consumed; nothing when `end` never
    /// comes.
    std::optional<QByteArrayView> takeUntil(char end)
    {
        const qsizetype found = m_text.indexOf(end, m_position);
        if (found < 0)
            return std::nullopt;
        const QByteArrayView part = m_text.sliced(m_position, found - m_position);
        m_position = found + 1;
        return part;
    }

    /// A token (RFC 9110's tchar): empty when none starts here.
    QByteArrayView takeToken()
    {
        const qsizetype start = m_position;
        while (!atEnd() && isTokenCharacter(peek()))
            advance();
        return m_text.sliced(start, m_position - start);
    }

    /// A quoted string with its backslash escapes undone; the opening quote comes next. Nothing
    /// when the closing quote is missing.
    std::optional<QByteArray> takeQuoted()
    {
        if (!take('"'))
            return std::nullopt;
        QByteArray value;
        while (!atEnd()) {
            const char c = peek();
            advance();
            if (c == '"')
                return value;
            if (c == '\\') {
                if (atEnd())
                    return std::nullopt;
                value += peek();
                advance();
                continue;
            }
            value += c;
        }
        return std::nullopt;
    }

    /// Skips the rest of a malformed element, up to and past the next comma outside quotes.
    void skipElement()
    {
        bool quoted = false;
        while (!atEnd()) {
            const char c = peek();
            advance();
            if (quoted && c == '\\') {
                if (!atEnd())
                    advance();
            } else if (c == '"') {
                quoted = !quoted;
            } else if (c == ',' && !quoted) {
                return;
            }
        }
    }

private:
    static bool isTokenCharacter(char c)
    {
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'))
            return true;
        return QByteArrayView("!#$%&'*+-.^_`|~").contains(c);
    }

    QByteArrayView m_text;
    qsizetype m_position = 0;
};

/// The parameters of one link after its "<…>", up to the comma that ends the element. False when
/// they do not follow the grammar.
bool readParameters(Scanner &scanner, WebLink &link)
{
    bool seenRel = false;
    for (;;) {
        scanner.skipBlanks();
        if (scanner.atEnd() || scanner.take(','))
            return true;
        if (!scanner.take(';'))
            return false;
        scanner.skipBlanks();
        const QString name = QString::fromLatin1(scanner.takeToken()).toLower();
        if (name.isEmpty())
            return false;
        scanner.skipBlanks();
        QByteArray value;
        if (scanner.take('=')) {
            scanner.skipBlanks();
            if (scanner.peek() == '"') {
                const std::optional<QByteArray> quoted = scanner.takeQuoted();
                if (!quoted)
                    return false;
                value = *quoted;
            } else {
                value = scanner.takeToken().toByteArray();
                if (value.isEmpty())
                    return false;
            }
        }
        if (name == u"rel" && !seenRel) {
            seenRel = true;
            // Relation types are separated by blanks.
            link.relations = QString::fromUtf8(value.replace('\t', ' '))
                                 .toLower()
                                 .split(u' ', Qt::SkipEmptyParts);
        } else if (name == u"anchor") {
            link.hasAnchor = true;
        }
    }
}

bool readsBackAsItself(const QUrl &target, const QUrl &base)
{
    const QByteArray written = target.toEncoded();
    const QUrl reread = base.resolved(QUrl(QString::fromLatin1(written), QUrl::StrictMode));
    return reread.isValid() && reread.toEncoded() == written;
}

} // namespace

QList<WebLink> parseLinkHeader(QByteArrayView value, const QUrl &base)
{
    QList<WebLink> links;
    Scanner scanner(value);
    for (;;) {
        scanner.skipBlanks();
        while (scanner.take(',')) // empty list elements are allowed
            scanner.skipBlanks();
        if (scanner.atEnd())
            return links;
        if (!scanner.take('<')) {
            scanner.skipElement();
            continue;
        }
        const std::optional<QByteArrayView> reference = scanner.takeUntil('>');
        if (!reference)
            return links;
        const QUrl target(QString::fromUtf8(reference->trimmed()), QUrl::StrictMode);
        WebLink link;
        const bool wellFormed = readParameters(scanner, link);
        if (!wellFormed) {
            scanner.skipElement();
            continue;
        }
        link.target = base.resolved(target);
        // Checked after resolving too: a reference can be valid on its own and yet resolve into
        // an address QUrl refuses, or into one that does not read back as itself (odd dot
        // segments after a scheme, "https:.///host"). Such a link names no page we could ask for.
        if (!target.isValid() || !link.target.isValid() || !readsBackAsItself(link.target, base))
            continue;
        links.append(std::move(link));
    }
}

std::optional<QUrl> linkTarget(const QList<WebLink> &links, const QString &relation)
{
    for (const WebLink &link : links) {
        if (!link.hasAnchor && link.relations.contains(relation))
            return link.target;
    }
    return std::nullopt;
}

bool isWebPage(const QUrl &url)
{
    if (!url.isValid() || url.isRelative())
        return false;
    // QUrl keeps schemes lower-cased, so "HTTPS:" is "https" here.
    const QString scheme = url.scheme();
    return (scheme == u"http" || scheme == u"https") && !url.host().isEmpty();
}

std::optional<QUrl> webPage(const std::optional<QString> &address)
{
    if (!address)
        return std::nullopt;
    QUrl url(*address);
    if (!isWebPage(url))
        return std::nullopt;
    return url;
}

} // namespace kestrine
