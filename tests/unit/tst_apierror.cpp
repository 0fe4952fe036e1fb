// The texts screens show for each kind of server failure.

#include "apierror.h"

#include <QtTest>

using namespace kestrine;

class TestAPIError : public QObject
{
    Q_OBJECT

private slots:
    void eachCaseDescribesItselfWithItsText_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("description");
        const QString conflict = QStringLiteral(
            "This branch is out of date or conflicts with the base branch. Update the branch and "
            "try again.");
        QTest::newRow("decoding") << 0 << "Could not parse the server response: broken";
        QTest::newRow("invalidURL") << 1 << "The instance URL is invalid.";
        QTest::newRow("invalidResponse") << 2 << "The server returned an invalid response.";
        QTest::newRow("unauthorized") << 3 << "Authentication failed. Check your token.";
        QTest::newRow("notFound") << 4 << "Not found.";
        QTest::newRow("mergeConflict") << 5 << conflict;
    }

    void eachCaseDescribesItselfWithItsText()
    {
        QFETCH(int, index);
        QFETCH(QString, description);
        const APIError errors[] = {APIError::decoding(QStringLiteral("broken")),
                                   APIError::invalidURL(),
                                   APIError::invalidResponse(),
                                   APIError::unauthorized(),
                                   APIError::notFound(),
                                   APIError::mergeConflict()};
        QCOMPARE(errors[index].description(), description);
        QCOMPARE(QString::fromUtf8(errors[index].what()), description);
    }

    void httpStatusDescriptionFollowsItsRulesInOrder_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("message");
        QTest::addColumn<bool>("hasMessage");
        QTest::addColumn<QString>("description");
        const QString auth = QStringLiteral("Authentication failed. Check your token.");
        const QString conflict = QStringLiteral(
            "This branch is out of date or conflicts with the base branch. Update the branch and "
            "try again.");
        QTest::newRow("401 with message") << 401 << "nope" << true << auth;
        QTest::newRow("403") << 403 << "" << false << auth;
        QTest::newRow("409 with message") << 409 << "conflict" << true << conflict;
        QTest::newRow("422 with message")
            << 422 << "Merge conflict" << true << "Server error (422): Merge conflict";
        QTest::newRow("500 without message") << 500 << "" << false << "Server error (500).";
        QTest::newRow("500 with empty message") << 500 << "" << true << "Server error (500).";
        QTest::newRow("message with placeholders")
            << 502 << "%1 %2" << true << "Server error (502): %1 %2";
    }

    void httpStatusDescriptionFollowsItsRulesInOrder()
    {
        QFETCH(int, status);
        QFETCH(QString, message);
        QFETCH(bool, hasMessage);
        QFETCH(QString, description);
        const auto error = APIError::httpStatus(status, hasMessage ? std::optional<QString>(message)
                                                                   : std::nullopt);
        QCOMPARE(error.kind(), APIError::Kind::HttpStatus);
        QCOMPARE(error.description(), description);
    }

    void errorsCompareWithTheirPayloads()
    {
        QCOMPARE(APIError::httpStatus(500, QStringLiteral("a")),
                 APIError::httpStatus(500, QStringLiteral("a")));
        QVERIFY(!(APIError::httpStatus(500, QStringLiteral("a")) ==
                  APIError::httpStatus(500, QStringLiteral("b"))));
        QVERIFY(!(APIError::httpStatus(500) == APIError::httpStatus(500, QString())));
        QVERIFY(!(APIError::httpStatus(500) == APIError::httpStatus(502)));
        QVERIFY(
            !(APIError::decoding(QStringLiteral("x")) == APIError::decoding(QStringLiteral("y"))));
        QVERIFY(!(APIError::notFound() == APIError::unauthorized()));
        QCOMPARE(APIError::notFound(), APIError::notFound());
    }

    void transportErrorKeepsCodeAndMessageAndKnowsCancellation()
    {
        const TransportError refused(QNetworkReply::ConnectionRefusedError,
                                     QStringLiteral("Connection refused"));
        QCOMPARE(refused.code(), QNetworkReply::ConnectionRefusedError);
        QCOMPARE(refused.description(), QStringLiteral("Connection refused"));
        QVERIFY(!refused.isCancellation());
        QVERIFY(TransportError(QNetworkReply::OperationCanceledError, QString()).isCancellation());
    }
};

QTEST_GUILESS_MAIN(TestAPIError)
#include "tst_apierror.moc"
