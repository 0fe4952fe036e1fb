// Reading the "Link" header of a paged answer: the grammar of links, parameters and relation
// types, and which links count as the next page. And which addresses a server sends name a web
// page that a browser may be given.

#include "weblinks.h"

#include <QtTest>

using namespace kestrine;

namespace {

const QUrl base(QStringLiteral("https://git.example.org/api/v1/repos/o/r/pulls/7/files"));

QStringList targets(const QList<WebLink> &links)
{
    QStringList urls;
    for (const WebLink &link : links)
        urls.append(link.target.toString());
    return urls;
}

} // namespace

class TestWebLinks : public QObject
{
    Q_OBJECT

private slots:
    void giteasHeaderGivesEachLinkWithItsRelation()
    {
        const QList<WebLink> links = parseLinkHeader(
            "<https://git.example.org/api/v1/repos/o/r/pulls/7/files?limit=30&page=2>; "
            "rel=\"next\",<https://git.example.org/api/v1/repos/o/r/pulls/7/files?limit=30&page=3>;"
            " rel=\"last\"",
            base);
        QCOMPARE(links.size(), 2);
        QCOMPARE(links.at(0).relations, QStringList{QStringLiteral("next")});
        QCOMPARE(links.at(1).relations, QStringList{QStringLiteral("last")});
        QCOMPARE(linkTarget(links, QStringLiteral("next"))->query(),
                 QStringLiteral("limit=30&page=2"));
        QCOMPARE(linkTarget(links, QStringLiteral("last"))->query(),
                 QStringLiteral("limit=30&page=3"));
        QVERIFY(!linkTarget(links, QStringLiteral("prev")));
    }

    void relativeTargetsAreResolvedAgainstTheAnswersAddress()
    {
        const QList<WebLink> links =
            parseLinkHeader("<?page=2>; rel=next, </api/v1/x?page=9>; rel=last", base);
        QCOMPARE(targets(links),
                 (QStringList{QStringLiteral(
                                  "https://git.example.org/api/v1/repos/o/r/pulls/7/files?page=2"),
                              QStringLiteral("https://git.example.org/api/v1/x?page=9")}));
    }

    void oneLinkMayHaveSeveralRelationTypesInAnyCase()
    {
        const QList<WebLink> links = parseLinkHeader("<?page=3>; REL=\"Next  LAST\"", base);
        QCOMPARE(links.size(), 1);
        QCOMPARE(links.first().relations,
                 (QStringList{QStringLiteral("next"), QStringLiteral("last")}));
        QVERIFY(linkTarget(links, QStringLiteral("last")));
    }

    void quotedParametersMayHoldCommasSemicolonsAndEscapes()
    {
        const QList<WebLink> links = parseLinkHeader(
            "<?page=2>; title=\"a, b; \\\"c\\\"\"; rel=next, <?page=5>; rel=last", base);
        QCOMPARE(links.size(), 2);
        QCOMPARE(linkTarget(links, QStringLiteral("next"))->query(), QStringLiteral("page=2"));
        QCOMPARE(linkTarget(links, QStringLiteral("last"))->query(), QStringLiteral("page=5"));
    }

    void onlyTheFirstRelParameterCounts()
    {
        const QList<WebLink> links = parseLinkHeader("<?page=2>; rel=prev; rel=next", base);
        QCOMPARE(links.first().relations, QStringList{QStringLiteral("prev")});
        QVERIFY(!linkTarget(links, QStringLiteral("next")));
    }

    void aLinkWithAnAnchorIsNotAboutThisAnswer()
    {
        const QList<WebLink> links = parseLinkHeader(
            "<?page=9>; rel=next; anchor=\"https://elsewhere.example/\", <?page=2>; rel=next",
            base);
        QCOMPARE(links.size(), 2);
        QVERIFY(links.first().hasAnchor);
        QCOMPARE(linkTarget(links, QStringLiteral("next"))->query(), QStringLiteral("page=2"));
    }

    void malformedElementsAreLeftOutAndTheRestStillCount_data()
    {
        QTest::addColumn<QByteArray>("header");
        QTest::addColumn<QStringList>("queries");
        QTest::newRow("no angle brackets")
            << QByteArray("https://x/?page=7; rel=next, <?page=2>; rel=next")
            << QStringList{QStringLiteral("page=2")};
        QTest::newRow("parameter without name")
            << QByteArray("<?page=7>; =next, <?page=2>; rel=next")
            << QStringList{QStringLiteral("page=2")};
        QTest::newRow("garbage after the target")
            << QByteArray("<?page=7> rel=next, <?page=2>; rel=next")
            << QStringList{QStringLiteral("page=2")};
        QTest::newRow("empty elements")
            << QByteArray(" , ,<?page=2>; rel=next,, ") << QStringList{QStringLiteral("page=2")};
        QTest::newRow("unterminated target")
            << QByteArray("<?page=2>; rel=next, <?page=3") << QStringList{QStringLiteral("page=2")};
        QTest::newRow("unterminated quote") << QByteArray("<?page=2>; rel=\"next") << QStringList{};
        QTest::newRow("empty header") << QByteArray() << QStringList{};
    }

    void malformedElementsAreLeftOutAndTheRestStillCount()
    {
        QFETCH(QByteArray, header);
        QFETCH(QStringList, queries);
        QStringList found;
        for (const WebLink &link : parseLinkHeader(header, base))
            found.append(link.target.query());
        QCOMPARE(found, queries);
    }

    void aReferenceThatResolvesIntoNoValidAddressIsLeftOut()
    {
        // Found by fuzz_weblinks: each reference is a valid URL on its own.
        const QByteArray header =
            "<" + QByteArray(110, 'h') +
            "ttps:/les?pagles?page=3>; rel=\"last\",<ht/git.example.org/api/v1/relos/s?page=1>; "
            "rel=\"first\",<https:..///git.example.org/api/v1/repos/o/r/pulls/7/files?page=1>; "
            "rel=\"prev\"";
        const QList<WebLink> links = parseLinkHeader(header, base);
        QVERIFY(!links.isEmpty());
        QVERIFY(links.size() < 3);
        for (const WebLink &link : links)
            QVERIFY2(link.target.isValid(), qPrintable(link.target.toString()));
    }

    void aTargetThatDoesNotReadBackAsItselfIsLeftOut()
    {
        // Found by fuzz_weblinks: dot segments right after the scheme resolve into an address
        // that, written out and read again, is another one.
        const QList<WebLink> links = parseLinkHeader(
            "<https:.///git.example.org/api/v0//ample.orgpi/>; rel=\"next\", <?page=2>; rel=next",
            base);
        QCOMPARE(links.size(), 1);
        QCOMPARE(linkTarget(links, QStringLiteral("next"))->query(), QStringLiteral("page=2"));
    }

    void parameterWithoutValueIsAccepted()
    {
        const QList<WebLink> links = parseLinkHeader("<?page=2>; crossorigin; rel=next", base);
        QCOMPARE(links.size(), 1);
        QVERIFY(linkTarget(links, QStringLiteral("next")));
    }

    void onlyAbsoluteHttpAndHttpsAddressesAreWebPages_data()
    {
        QTest::addColumn<bool>("present");
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("page");

        QTest::newRow("gitea's") << true << "https://git.example.org/ann/tool/pulls/7"
                                 << "https://git.example.org/ann/tool/pulls/7";
        QTest::newRow("http with a port") << true << "http://127.0.0.1:3000/ann/tool/pulls/7"
                                          << "http://127.0.0.1:3000/ann/tool/pulls/7";
        QTest::newRow("upper-case scheme") << true << "HTTPS://git.example.org/a/b/pulls/1"
                                           << "https://git.example.org/a/b/pulls/1";
        QTest::newRow("under a prefix") << true << "https://example.org/git/ann/tool/pulls/7"
                                        << "https://example.org/git/ann/tool/pulls/7";
        QTest::newRow("absent") << false << QString() << QString();
        // Addresses that are no web page, or no address at all.
        const auto refused = [](const char *name, const char *address) {
            QTest::newRow(name) << true << QString::fromUtf8(address) << QString();
        };
        refused("empty", "");
        refused("javascript", "javascript:alert(1)");
        refused("file", "file:///etc/passwd");
        refused("upper-case file", "FILE:///etc/passwd");
        refused("mail", "mailto:ann@example.org");
        refused("custom scheme", "kestrine-evil://run");
        refused("ssh", "ssh://git@example.org/ann/tool");
        refused("relative", "/ann/tool/pulls/7");
        refused("scheme-relative", "//git.example.org/ann/tool/pulls/7");
        refused("no host", "https:///ann/tool/pulls/7");
        refused("blank before the scheme", " https://git.example.org/x");
    }

    void onlyAbsoluteHttpAndHttpsAddressesAreWebPages()
    {
        QFETCH(bool, present);
        QFETCH(QString, address);
        QFETCH(QString, page);
        const std::optional<QUrl> url = webPage(present ? std::optional(address) : std::nullopt);
        QCOMPARE(url.has_value(), !page.isEmpty());
        if (url) {
            QVERIFY(isWebPage(*url));
            QCOMPARE(url->toString(QUrl::FullyEncoded), page);
        }
    }
};

QTEST_GUILESS_MAIN(TestWebLinks)
#include "tst_weblinks.moc"
