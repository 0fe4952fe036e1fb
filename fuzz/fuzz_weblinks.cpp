// The "Link" header of a paged answer, from any bytes. Every link read has a valid target and
// relation types that are lower case, non-empty and free of blanks; and the links written back in
// the header's own grammar read the same again, so nothing depends on how the server spelled them.

#include "fuzzsupport.h"
#include "weblinks.h"

using namespace kestrine;
using namespace kestrine::fuzz;

namespace {

const QUrl base(QStringLiteral("https://git.example.org/api/v1/repos/o/r/pulls/7/files?page=1"));

QByteArray quoted(const QString &text)
{
    QByteArray escaped = text.toUtf8();
    escaped.replace('\\', "\\\\").replace('"', "\\\"");
    return '"' + escaped + '"';
}

/// The links in the header's grammar: targets fully encoded, so they hold no ">" of their own.
QByteArray written(const QList<WebLink> &links)
{
    QList<QByteArray> parts;
    for (const WebLink &link : links) {
        QByteArray part =
            '<' + link.target.toEncoded() + ">; rel=" + quoted(link.relations.join(u' '));
        if (link.hasAnchor)
            part += "; anchor=\"#\"";
        parts.append(part);
    }
    return parts.join(", ");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray header = bytes(data, size);
    const QList<WebLink> links = parseLinkHeader(header, base);
    for (const WebLink &link : links) {
        check(link.target.isValid(), "every target is a valid URL", link.target.toString());
        for (const QString &relation : link.relations) {
            check(!relation.isEmpty() && relation == relation.toLower() &&
                      !relation.contains(u' ') && !relation.contains(u'\t'),
                  "relation types are lower case words", relation);
        }
    }

    const QList<WebLink> again = parseLinkHeader(written(links), base);
    check(again.size() == links.size(), "written links read back as many",
          QString::fromUtf8(written(links)));
    for (qsizetype i = 0; i < links.size(); ++i) {
        check(again.at(i).relations == links.at(i).relations &&
                  again.at(i).hasAnchor == links.at(i).hasAnchor,
              "written links keep their relations", QString::fromUtf8(written(links)));
        check(again.at(i).target.toEncoded() == links.at(i).target.toEncoded(),
              "written links keep their targets", QString::fromUtf8(written(links)));
    }
    return 0;
}
