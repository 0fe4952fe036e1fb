#pragma once

// Addresses on the web: the "Link" header of an HTTP answer (RFC 8288), through which the pages of
// a list a server hands out piece by piece name each other, and which addresses a server sends may
// be handed to a browser at all.

#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <optional>

namespace kestrine {

/// One link of a "Link" header.
struct WebLink
{
    /// The target, resolved against the address of the answer that carried it.
    QUrl target;
    /// The relation types of its first "rel" parameter, in lower case ("next", "last"…).
    QStringList relations;
    /// True when the link has an "anchor" parameter: it then speaks of another resource than the
    /// answer it came with.
    bool hasAnchor = false;

    bool operator==(const WebLink &) const = default;
};

/// The links of a "Link" header value, in order. Several headers of that name may be joined
/// with commas into one value. An element that does not follow the grammar (no "<…>", a
/// parameter that is neither a token nor a quoted string, an unterminated quote) is left out;
/// the elements around it still count. Parameter names and relation types are compared without
/// regard to letter case; a repeated "rel" counts only the first time.
QList<WebLink> parseLinkHeader(QByteArrayView value, const QUrl &base);

/// The target of the first link with relation type `relation` that has no anchor.
std::optional<QUrl> linkTarget(const QList<WebLink> &links, const QString &relation);

/// True for an absolute `http` or `https` URL with a host: a page a browser shows. Addresses come
/// from servers and from text strangers wrote; any other scheme (`file:`, `javascript:`, a custom
/// one) would have the desktop open a local file or start another program.
bool isWebPage(const QUrl &url);
/// `address` as a URL when it names a web page (see isWebPage); nothing when it is absent or names
/// anything else.
std::optional<QUrl> webPage(const std::optional<QString> &address);

} // namespace kestrine
