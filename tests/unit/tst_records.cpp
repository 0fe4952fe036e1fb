// The records' JSON mapping: strict decoding, identities, the date rule, encoding and hashing.

#include "fixtures.h"
#include "records.h"

#include <QSet>
#include <QtTest>

using namespace kestrine;

namespace {

QString decodeFailure(auto decodeCall)
{
    try {
        decodeCall();
    } catch (const DecodeError &error) {
        return error.description();
    }
    return QString();
}

template <class T>
QString failureOf(const QByteArray &json)
{
    return decodeFailure([&] { decodeJson<T>(json); });
}

const QByteArray minimalPull = R"({"id":1,"number":2,"title":"t","state":"open"})";

} // namespace

class TestRecords : public QObject
{
    Q_OBJECT

private slots:
    void nullBodyMissingLabelsAndNullMergedDecodeAsAbsent()
    {
        const auto pull = decodeJson<PullRequest>(QByteArray(
            R"({"id":1,"number":2,"title":"t","state":"open","body":null,"merged":null})"));
        QVERIFY(!pull.body);
        QVERIFY(!pull.labels);
        QVERIFY(!pull.merged);
        QCOMPARE(pull.title, QStringLiteral("t"));
    }

    void pullRequestWithoutTitleFailsAndSoDoesItsList()
    {
        const QByteArray untitled = R"({"id":1,"number":2,"state":"open"})";
        QVERIFY(!failureOf<PullRequest>(untitled).isEmpty());
        const QString listFailure =
            failureOf<QList<PullRequest>>("[" + minimalPull + "," + untitled + "]");
        QVERIFY(listFailure.contains(QStringLiteral("title")));
        QVERIFY2(listFailure.contains(QStringLiteral("[1]")), qPrintable(listFailure));
    }

    void requiredKeyThatIsNullFails()
    {
        QVERIFY(!failureOf<PullRequest>(R"({"id":1,"number":2,"title":null,"state":"open"})")
                     .isEmpty());
    }

    void snakeCaseFullNameIsIgnoredCamelCaseIsRead()
    {
        const auto server =
            decodeJson<PRUser>(QByteArray(R"({"id":1,"login":"ann","full_name":"Ann A."})"));
        QCOMPARE(server.login, QStringLiteral("ann"));
        QCOMPARE(server.id, 1);
        QVERIFY(!server.fullName);
        const auto own = decodeJson<PRUser>(QByteArray(R"({"login":"ann","fullName":"Ann A."})"));
        QCOMPARE(own.fullName, QStringLiteral("Ann A."));
        QVERIFY(!own.id);
        const auto owner = decodeJson<Owner>(QByteArray(R"({"login":"ann","fullName":"Ann A."})"));
        QCOMPARE(owner.fullName, QStringLiteral("Ann A."));
    }

    void datesDecodeWithAndWithoutFraction()
    {
        const auto whole = decodeJson<PullRequest>(QByteArray(
            R"({"id":1,"number":2,"title":"t","state":"open","created_at":"2024-05-01T10:20:30Z"})"));
        const auto fractional = decodeJson<PullRequest>(QByteArray(
            R"({"id":1,"number":2,"title":"t","state":"open","created_at":"2024-05-01T10:20:30.5Z"})"));
        QCOMPARE(whole.createdAt->toMSecsSinceEpoch() + 500,
                 fractional.createdAt->toMSecsSinceEpoch());
    }

    void dateOnlyFailsWithCannotDecodeDateString()
    {
        QCOMPARE(failureOf<PullRequest>(
                     R"({"id":1,"number":2,"title":"t","state":"open","created_at":"2024-05-01"})"),
                 QStringLiteral("Cannot decode date string 2024-05-01"));
        QCOMPARE(failureOf<QList<IssueComment>>(R"([{"id":1,"created_at":"yesterday"}])"),
                 QStringLiteral("Cannot decode date string yesterday"));
    }

    void dateThatIsNotAStringFails()
    {
        QVERIFY(!failureOf<ActionJob>(R"({"id":1,"name":"n","status":"s","started_at":1714558830})")
                     .isEmpty());
    }

    void wrongJsonTypesFail_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("fractional id")
            << QByteArray(R"({"id":1.5,"number":2,"title":"t","state":"open"})");
        QTest::newRow("id as text")
            << QByteArray(R"({"id":"1","number":2,"title":"t","state":"open"})");
        QTest::newRow("title as number")
            << QByteArray(R"({"id":1,"number":2,"title":5,"state":"open"})");
        QTest::newRow("draft as text")
            << QByteArray(R"({"id":1,"number":2,"title":"t","state":"open","draft":"true"})");
        QTest::newRow("labels as object")
            << QByteArray(R"({"id":1,"number":2,"title":"t","state":"open","labels":{}})");
        QTest::newRow("user as text")
            << QByteArray(R"({"id":1,"number":2,"title":"t","state":"open","user":"ann"})");
        QTest::newRow("label without name")
            << QByteArray(R"({"id":1,"number":2,"title":"t","state":"open","labels":[{"id":3}]})");
        QTest::newRow("huge id") << QByteArray(
            R"({"id":1e300,"number":2,"title":"t","state":"open"})");
    }

    void wrongJsonTypesFail()
    {
        QFETCH(QByteArray, json);
        QVERIFY(!failureOf<PullRequest>(json).isEmpty());
    }

    void wrongTypeFailureNamesWhereItHappened()
    {
        const QString failure = failureOf<QList<PullRequest>>(
            "[" + minimalPull +
            R"(,{"id":1,"number":2,"title":"t","state":"open","user":{"login":7}}])");
        QVERIFY2(failure.contains(QStringLiteral("[1].user.login")), qPrintable(failure));
    }

    void unknownKeysAreIgnoredAndLargeIdsStayExact()
    {
        const auto pull = decodeJson<PullRequest>(QByteArray(
            R"({"id":9007199254740993,"number":2,"title":"t","state":"open","pin_order":0,"milestone":{"id":1}})"));
        QCOMPARE(pull.id, Q_INT64_C(9007199254740993));
    }

    void notJsonOrWrongTopLevelFails()
    {
        QVERIFY(!failureOf<QList<PullRequest>>("").isEmpty());
        QVERIFY(!failureOf<QList<PullRequest>>("{").isEmpty());
        QVERIFY(!failureOf<QList<PullRequest>>(minimalPull).isEmpty());
        QVERIFY(!failureOf<PullRequest>("[" + minimalPull + "]").isEmpty());
    }

    void commitIdentityPrefersShaThenInnerShaThenAuthorAndMessageHash()
    {
        QCOMPARE(decodeJson<PRCommit>(QByteArray(R"({"sha":"abc","commit":{"sha":"def"}})")).id(),
                 QStringLiteral("abc"));
        QCOMPARE(decodeJson<PRCommit>(QByteArray(R"({"commit":{"sha":"def"}})")).id(),
                 QStringLiteral("def"));
        QCOMPARE(decodeJson<PRCommit>(QByteArray(R"({"author":{"name":"Bo"}})")).id(),
                 QStringLiteral("Bo-0"));
        QCOMPARE(decodeJson<PRCommit>(QByteArray(R"({})")).id(), QStringLiteral("-0"));

        const auto withMessage = decodeJson<PRCommit>(
            QByteArray(R"({"author":{"name":"Bo"},"commit":{"message":"Fix"}})"));
        QCOMPARE(withMessage.id(), QStringLiteral("Bo-%1").arg(qHash(QStringLiteral("Fix"))));
        QCOMPARE(withMessage.id(), PRCommit(withMessage).id());
        const auto otherMessage = decodeJson<PRCommit>(
            QByteArray(R"({"author":{"name":"Bo"},"commit":{"message":"Add"}})"));
        QVERIFY(withMessage.id() != otherMessage.id());
    }

    void changedFilesWithTheSameNameHaveTheSameIdentity()
    {
        const auto files = decodeJson<QList<ChangedFile>>(QByteArray(
            R"([{"filename":"a.go","status":"changed","additions":1,"deletions":0},
                {"filename":"a.go","status":"deleted","additions":0,"deletions":9}])"));
        QCOMPARE(files[0].id(), files[1].id());
        QVERIFY(files[0] != files[1]);
    }

    void realShapedPullRequestListDecodes()
    {
        const auto pulls = decodeJson<QList<PullRequest>>(fixtures::pullRequestList(100));
        QCOMPARE(pulls.size(), 100);
        const PullRequest &first = pulls.first();
        QCOMPARE(first.id, 1000);
        QCOMPARE(first.number, 1);
        QCOMPARE(first.state, QStringLiteral("open"));
        QCOMPARE(first.user->login, QStringLiteral("ann"));
        QVERIFY(!first.user->fullName); // Gitea sends "full_name", which is not read
        QCOMPARE(first.labels->first().name, QStringLiteral("enhancement"));
        QCOMPARE(first.labels->first().color, QStringLiteral("84b6eb"));
        QCOMPARE(first.assignees->first().login, QStringLiteral("bo"));
        QCOMPARE(first.head->ref, QStringLiteral("retry-upload"));
        QCOMPARE(first.head->sha, QStringLiteral("9a8b7c6d5e4f30211223344556677889900aabbc"));
        QCOMPARE(first.base->label, QStringLiteral("main"));
        QCOMPARE(first.mergeable, true);
        QCOMPARE(first.merged, false);
        QCOMPARE(first.draft, true);
        QCOMPARE(first.diffURL, QStringLiteral("https://git.example.org/ann/tool/pulls/7.diff"));
        QCOMPARE(first.updatedAt->toString(Qt::ISODate), QStringLiteral("2024-05-01T10:20:30Z"));
        QVERIFY(first.body->startsWith(QStringLiteral("## Why")));
        QCOMPARE(pulls.last().number, 100);
    }

    void repositoryDecodesFromGiteasShape()
    {
        const auto repo =
            decodeJson<Repository>(fixtures::read(QStringLiteral("gitea/repository.json")));
        QCOMPARE(repo.fullName, QStringLiteral("ann/tool"));
        QCOMPARE(repo.name, QStringLiteral("tool"));
        QCOMPARE(repo.owner.login, QStringLiteral("ann"));
        QCOMPARE(repo.isPrivate, false);
        QCOMPARE(repo.defaultBranch, QStringLiteral("main"));
        QVERIFY(!failureOf<Repository>(R"({"id":1,"name":"x","full_name":"a/x"})").isEmpty());
    }

    void reviewsRunsAndJobsDecodeFromGiteasShape()
    {
        const auto review = decodeJson<PullReview>(QByteArray(
            R"({"id":9,"user":{"id":5,"login":"bo"},"team":null,"state":"REQUEST_CHANGES","body":"",
                "commit_id":"9a8b","stale":false,"official":true,"dismissed":false,"comments_count":1,
                "submitted_at":"2024-05-01T09:00:00+02:00","updated_at":"2024-05-01T09:00:00+02:00"})"));
        QCOMPARE(review.state, QStringLiteral("REQUEST_CHANGES"));
        QCOMPARE(review.submittedAt->toString(Qt::ISODate), QStringLiteral("2024-05-01T07:00:00Z"));

        const auto run = decodeJson<ActionRun>(QByteArray(
            R"({"id":41,"display_title":"Add retry","path":"ci.yml@refs/pull/7/head","event":"pull_request",
                "run_attempt":1,"run_number":12,"head_sha":"9a8b","head_branch":"retry-upload",
                "status":"completed","conclusion":"failure","started_at":"2024-05-01T10:00:00Z",
                "completed_at":"2024-05-01T10:04:00Z"})"));
        QVERIFY(!run.name); // Gitea 1.25 sends no "name"
        QCOMPARE(run.conclusion, QStringLiteral("failure"));
        QVERIFY(!run.createdAt);

        const auto job = decodeJson<ActionJob>(QByteArray(
            R"({"id":77,"run_id":41,"name":"test","labels":["ubuntu-latest"],"status":"in_progress",
                "conclusion":null,"steps":[],"started_at":"2024-05-01T10:00:05Z","completed_at":null})"));
        QCOMPARE(job.status, QStringLiteral("in_progress"));
        QVERIFY(!job.conclusion);
        QVERIFY(!job.completedAt);
    }

    void encodingWritesTheSameKeysAndLeavesAbsentFieldsOut()
    {
        PullRequest pull;
        pull.id = 1;
        pull.number = 2;
        pull.title = QStringLiteral("t");
        pull.state = QStringLiteral("open");
        pull.user = PRUser{5, QStringLiteral("bo"), QStringLiteral("Bo Berg")};
        const QJsonObject object = encodeJson(pull).toObject();
        QCOMPARE(object.keys(), (QStringList{"id", "number", "state", "title", "user"}));
        QCOMPARE(object.value(QStringLiteral("user")).toObject().value(QStringLiteral("fullName")),
                 QJsonValue(QStringLiteral("Bo Berg")));
    }

    void encodedRecordsDecodeBackEqualWithStringDates()
    {
        auto pulls = decodeJson<QList<PullRequest>>(fixtures::pullRequestList(5));
        pulls[0].user->fullName = QStringLiteral("Ann Andersson");
        const QJsonValue encoded = encodeJson(pulls, DateEncoding::InternetDateTime);
        QCOMPARE(decodeJson<QList<PullRequest>>(encoded), pulls);
    }

    void defaultDateEncodingIsSecondsSince2001AndDoesNotDecodeBack()
    {
        IssueComment comment;
        comment.id = 1;
        comment.createdAt =
            QDateTime::fromString(QStringLiteral("2001-01-01T00:01:40.5Z"), Qt::ISODateWithMs);
        const QJsonValue encoded = encodeJson(comment);
        QCOMPARE(encoded.toObject().value(QStringLiteral("created_at")).toDouble(), 100.5);
        QVERIFY(!decodeFailure([&] { decodeJson<IssueComment>(encoded); }).isEmpty());
    }

    void writtenJsonIsTheEncodedDocument_data()
    {
        QTest::addColumn<int>("dateEncoding");
        QTest::newRow("seconds since 2001") << int(DateEncoding::SecondsSinceReferenceDate);
        QTest::newRow("date texts") << int(DateEncoding::InternetDateTime);
    }

    void writtenJsonIsTheEncodedDocument()
    {
        QFETCH(int, dateEncoding);
        const auto dates = DateEncoding(dateEncoding);
        auto pulls = decodeJson<QList<PullRequest>>(fixtures::pullRequestList(4));
        // Texts a stranger wrote: quotes, backslashes, every control character, "</script>",
        // emoji, right-to-left text, surrogates without their partners and a NUL.
        QString hostile =
            QStringLiteral("\"quoted\" back\\slash </script> \U0001F600 \u05D0\u05D1 ");
        for (char16_t c = 0; c < 0x20; ++c)
            hostile += QChar(c);
        hostile += QChar(0xD800);
        hostile += QChar(0x7F);
        hostile += QChar(0xDC00);
        hostile += QChar(0xD800);
        hostile += u'x';
        pulls[0].title = hostile;
        pulls[1].body = hostile;
        pulls[1].user->fullName = QString();
        pulls[2].body.reset();
        pulls[2].updatedAt =
            QDateTime::fromString(QStringLiteral("2001-01-01T00:01:40.125Z"), Qt::ISODateWithMs);
        pulls[3].mergeable = false;

        const QByteArray written = writeJson(pulls, dates);
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(written, &error);
        QCOMPARE(error.error, QJsonParseError::NoError);
        QCOMPARE(QJsonValue(document.array()), encodeJson(pulls, dates));
        if (dates == DateEncoding::InternetDateTime)
            QCOMPARE(decodeJson<QList<PullRequest>>(written).at(1).body, pulls.at(1).body);
    }

    void writtenJsonOfNothingIsAnEmptyList()
    {
        QCOMPARE(writeJson(QList<PullRequest>()), QByteArray("[]"));
        QCOMPARE(writeJson(PRUser{5, QStringLiteral("bo"), std::nullopt}),
                 QByteArray(R"({"id":5,"login":"bo"})"));
    }

    void qmlValueUsesTheJsonKeysAndDateTexts()
    {
        const auto pull =
            decodeJson<PullRequest>(fixtures::read(QStringLiteral("gitea/pull.json")));
        const QVariantMap value = toQmlValue(pull).toMap();
        QCOMPARE(value.value(QStringLiteral("title")).toString(), pull.title);
        QCOMPARE(value.value(QStringLiteral("number")).toLongLong(), 7);
        QCOMPARE(value.value(QStringLiteral("updated_at")).toString(),
                 QStringLiteral("2024-05-01T10:20:30Z"));
        QCOMPARE(
            value.value(QStringLiteral("user")).toMap().value(QStringLiteral("login")).toString(),
            QStringLiteral("ann"));
        QVERIFY(!value.contains(QStringLiteral("patch_url")) || pull.patchURL);
        QCOMPARE(toQmlValue(QList<PullRequest>{pull, pull}).toList().size(), 2);
    }

    void equalRecordsHashEquallyAndDifferentOnesAreToldApart()
    {
        const auto pulls = decodeJson<QList<PullRequest>>(fixtures::pullRequestList(3));
        PullRequest copy = pulls[1];
        QCOMPARE(copy, pulls[1]);
        QCOMPARE(qHash(copy), qHash(pulls[1]));
        copy.title += u'!';
        QVERIFY(copy != pulls[1]);
        const QSet<PullRequest> set{pulls[0], pulls[1], pulls[2], pulls[1]};
        QCOMPARE(set.size(), 3);
        QVERIFY(!set.contains(copy));
    }
};

QTEST_GUILESS_MAIN(TestRecords)
#include "tst_records.moc"
