// How long decoding a full page of pull requests takes: 100 pull requests shaped like Gitea's own
// answer, every field included (most of which the records ignore). And the way back: encoding the
// records through JSON objects, against writing the same document's text directly.

#include "fixtures.h"
#include "records.h"

#include <QJsonDocument>
#include <QtTest>

using namespace kestrine;

class BenchDecode : public QObject
{
    Q_OBJECT

private:
    QByteArray page = fixtures::pullRequestList(100);

private slots:
    void initTestCase() { qInfo("page size: %lld bytes", static_cast<long long>(page.size())); }

    void parseJsonOnly()
    {
        QBENCHMARK
        {
            const QJsonDocument document = QJsonDocument::fromJson(page);
            QVERIFY(document.isArray());
        }
    }

    void decodePullRequestPage()
    {
        QBENCHMARK
        {
            const auto pulls = decodeJson<QList<PullRequest>>(page);
            QCOMPARE(pulls.size(), 100);
        }
    }

    /// The same page through Qt's parser, the way every answer was decoded before the quick reader
    /// and the way any answer outside the plain case still is.
    void decodePullRequestPageThroughQt()
    {
        QBENCHMARK
        {
            const jsondetail::CodingPath root;
            const auto pulls =
                jsondetail::decodeValue<QList<PullRequest>>(jsondetail::parseDocument(page), root);
            QCOMPARE(pulls.size(), 100);
        }
    }

    /// Pull requests as the inbox cache's writer leaves them, with numeric dates, which its reader
    /// refuses by design: the quick reader knows it in one pass, Qt's parser builds the whole
    /// document first.
    void refuseNumericDates()
    {
        const QByteArray cached = writeJson(decodeJson<QList<PullRequest>>(page));
        QBENCHMARK
        {
            QVERIFY(!tryDecodeJson<QList<PullRequest>>(cached));
        }
    }

    void refuseNumericDatesThroughQt()
    {
        const QByteArray cached = writeJson(decodeJson<QList<PullRequest>>(page));
        QBENCHMARK
        {
            try {
                const jsondetail::CodingPath root;
                jsondetail::decodeValue<QList<PullRequest>>(jsondetail::parseDocument(cached),
                                                            root);
                QFAIL("numeric dates were taken");
            } catch (const DecodeError &) {
            }
        }
    }

    void encodePullRequestPage()
    {
        const auto pulls = decodeJson<QList<PullRequest>>(page);
        QBENCHMARK
        {
            const QByteArray bytes = QJsonDocument(encodeJson(pulls).toArray()).toJson();
            QVERIFY(!bytes.isEmpty());
        }
    }

    void writePullRequestPage()
    {
        const auto pulls = decodeJson<QList<PullRequest>>(page);
        QBENCHMARK
        {
            const QByteArray bytes = writeJson(pulls);
            QVERIFY(!bytes.isEmpty());
        }
    }
};

QTEST_GUILESS_MAIN(BenchDecode)
#include "bench_decode.moc"
