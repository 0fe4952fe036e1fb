// The in-memory Gitea behind the fake server: every endpoint the app calls, answered from the
// seed in tests/data/gitea/seed.json with Gitea's shapes, statuses and messages, and the state
// changing as the write endpoints are called.

#include "fakegiteaserver.h"
#include "fixtures.h"
#include "giteasimulation.h"
#include "rawanswer.h"

#include <QCoroNetworkReply>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QtTest>
#include <algorithm>

using namespace kestrine;

namespace {

// The seed's tokens.
const QByteArray annToken = "4f1c9e2d7a6b5c3d8e0f1a2b3c4d5e6f7a8b9c0d"; // owns ann/*; site admin
const QByteArray boToken = "9e8d7c6b5a4f3e2d1c0b9a8f7e6d5c4b3a291807";  // writes to ann/tool
const QByteArray cyToken = "c0ffee00c0ffee00c0ffee00c0ffee00c0ffee00";  // reads ann/tool

// Request bodies the tests send most.
const QByteArray mergeBody = "{\"Do\":\"merge\"}";
const QByteArray closeBody = "{\"state\":\"closed\"}";
const QByteArray manualMergeBody = "{\"Do\":\"manually-merged\"}";

const QString toolHead = QStringLiteral("9a8b7c6d5e4f30211223344556677889900aabbc");

using Answer = kestrine::testing::RawAnswer;

QList<int> numbersOf(const QJsonArray &pulls)
{
    QList<int> numbers;
    for (const QJsonValue &pull : pulls)
        numbers.append(pull.toObject().value(QStringLiteral("number")).toInt());
    return numbers;
}

QList<qint64> idsOf(const QJsonArray &items)
{
    QList<qint64> ids;
    for (const QJsonValue &item : items)
        ids.append(item.toObject().value(QStringLiteral("id")).toInteger());
    return ids;
}

QStringList keysMissing(const QJsonObject &expected, const QJsonObject &actual)
{
    QStringList missing;
    for (const QString &key : expected.keys()) {
        if (!actual.contains(key))
            missing.append(key);
    }
    return missing;
}

/// A seed with one user "ann" (token "t0k3n"), `repositories` repositories named repo-001...,
/// and `pulls` open pull requests in the first one.
QByteArray generatedSeed(int repositories, int pulls = 0)
{
    QJsonArray repos;
    for (int i = 1; i <= repositories; ++i) {
        QJsonObject repo{
            {QStringLiteral("owner"), QStringLiteral("ann")},
            {QStringLiteral("name"), QStringLiteral("repo-%1").arg(i, 3, 10, QChar(u'0'))}};
        QJsonArray pullList;
        for (int n = 1; i == 1 && n <= pulls; ++n) {
            pullList.append(QJsonObject{
                {QStringLiteral("user"), QStringLiteral("ann")},
                {QStringLiteral("title"), QStringLiteral("Change %1").arg(n)},
                {QStringLiteral("head"), QStringLiteral("change-%1").arg(n)},
                {QStringLiteral("created_at"), QDateTime(QDate(2024, 1, 1), QTime(0, 0), Qt::UTC)
                                                   .addSecs(60 * n)
                                                   .toString(Qt::ISODate)}});
        }
        repo.insert(QStringLiteral("pulls"), pullList);
        repos.append(repo);
    }
    const QJsonObject seed{
        {QStringLiteral("users"), QJsonArray{QJsonObject{{QStringLiteral("login"), "ann"}}}},
        {QStringLiteral("tokens"), QJsonObject{{QStringLiteral("t0k3n"), "ann"}}},
        {QStringLiteral("repositories"), repos}};
    return QJsonDocument(seed).toJson(QJsonDocument::Compact);
}

/// A seed with "ann" (token "t0k3n", a site admin), "bo" (token "b0") and "cy" (token "c0"), and
/// the public repository ann/big: pull request 1 with `reviews` reviews by bo, ids 1001 on, those
/// at the indexes in `pending` still pending; and run 7 on its head with `jobs` jobs, ids 501 on.
QByteArray seedWithLongLists(int reviews, int jobs, const QList<int> &pending = {})
{
    QJsonArray reviewList;
    for (int i = 0; i < reviews; ++i) {
        reviewList.append(
            QJsonObject{{QStringLiteral("id"), 1001 + i},
                        {QStringLiteral("user"), QStringLiteral("bo")},
                        {QStringLiteral("state"), pending.contains(i) ? QStringLiteral("PENDING")
                                                                      : QStringLiteral("COMMENT")},
                        {QStringLiteral("body"), QStringLiteral("Note %1").arg(i + 1)}});
    }
    QJsonArray jobList;
    for (int i = 0; i < jobs; ++i) {
        jobList.append(QJsonObject{{QStringLiteral("id"), 501 + i},
                                   {QStringLiteral("name"), QStringLiteral("shard %1").arg(i + 1)},
                                   {QStringLiteral("status"), QStringLiteral("completed")},
                                   {QStringLiteral("conclusion"), QStringLiteral("success")}});
    }
    const QString head = QStringLiteral("0123456789abcdef0123456789abcdef01234567");
    const QJsonObject repo{
        {QStringLiteral("owner"), QStringLiteral("ann")},
        {QStringLiteral("name"), QStringLiteral("big")},
        {QStringLiteral("pulls"),
         QJsonArray{QJsonObject{{QStringLiteral("number"), 1},
                                {QStringLiteral("user"), QStringLiteral("ann")},
                                {QStringLiteral("title"), QStringLiteral("Many of everything")},
                                {QStringLiteral("head"), QStringLiteral("many")},
                                {QStringLiteral("head_sha"), head},
                                {QStringLiteral("reviews"), reviewList}}}},
        {QStringLiteral("runs"),
         QJsonObject{{head, QJsonArray{QJsonObject{
                                {QStringLiteral("id"), 7},
                                {QStringLiteral("display_title"), QStringLiteral("Many")},
                                {QStringLiteral("head_branch"), QStringLiteral("many")},
                                {QStringLiteral("actor"), QStringLiteral("ann")},
                                {QStringLiteral("status"), QStringLiteral("completed")},
                                {QStringLiteral("conclusion"), QStringLiteral("success")},
                                {QStringLiteral("jobs"), jobList}}}}}}};
    const QJsonObject seed{
        {QStringLiteral("users"),
         QJsonArray{QJsonObject{{QStringLiteral("login"), "ann"}, {"is_admin", true}},
                    QJsonObject{{QStringLiteral("login"), "bo"}},
                    QJsonObject{{QStringLiteral("login"), "cy"}}}},
        {QStringLiteral("tokens"), QJsonObject{{"t0k3n", "ann"}, {"b0", "bo"}, {"c0", "cy"}}},
        {QStringLiteral("repositories"), QJsonArray{repo}}};
    return QJsonDocument(seed).toJson(QJsonDocument::Compact);
}

/// The targets of a "Link" header by their relation: {"next": "https://...", ...}.
QMap<QString, QString> linksOf(const QByteArray &header)
{
    static const QRegularExpression link(QStringLiteral("<([^>]*)>; rel=\"([a-z]+)\""));
    QMap<QString, QString> links;
    for (const QString &part : QString::fromUtf8(header).split(u',', Qt::SkipEmptyParts)) {
        const QRegularExpressionMatch match = link.match(part);
        if (match.hasMatch())
            links.insert(match.captured(2), match.captured(1));
    }
    return links;
}

QJsonObject seedPull(int number)
{
    const QJsonObject seed =
        QJsonDocument::fromJson(fixtures::read(QStringLiteral("gitea/seed.json"))).object();
    for (const QJsonValue &pull : seed.value(QStringLiteral("repositories"))
                                      .toArray()
                                      .first()[QStringLiteral("pulls")]
                                      .toArray()) {
        if (pull[QStringLiteral("number")].toInt() == number)
            return pull.toObject();
    }
    return {};
}

} // namespace

class TestGiteaSimulation : public QObject
{
    Q_OBJECT

private:
    FakeGiteaServer *server = nullptr;
    std::unique_ptr<GiteaSimulation> sim;
    QNetworkAccessManager nam;

    QString root() const { return sim->rootUrl(); }
    QString swagger() const { return root() + QStringLiteral("api/swagger"); }

    Answer send(const QByteArray &method, const QString &path, const QByteArray &token = annToken,
                const QByteArray &body = {},
                const QByteArray &contentType = QByteArrayLiteral("application/json"))
    {
        QNetworkRequest request(QUrl(server->baseUrl().toString() + path, QUrl::TolerantMode));
        if (!token.isEmpty())
            request.setRawHeader("Authorization", "token " + token);
        if (!body.isEmpty() && !contentType.isEmpty())
            request.setRawHeader("Content-Type", contentType);
        std::unique_ptr<QNetworkReply> reply(body.isEmpty()
                                                 ? nam.sendCustomRequest(request, method)
                                                 : nam.sendCustomRequest(request, method, body));
        QCoro::waitFor(qCoro(reply.get()).waitForFinished());
        return Answer::of(*reply);
    }

    Answer get(const QString &path, const QByteArray &token = annToken)
    {
        return send("GET", path, token);
    }

    QJsonObject pull(int number, const QString &repo = QStringLiteral("ann/tool"))
    {
        const auto [owner, name] = std::pair(repo.section(u'/', 0, 0), repo.section(u'/', 1));
        return sim->pullRequest(owner, name, number).value_or(QJsonObject());
    }

    void useSeed(const QByteArray &seed)
    {
        sim = std::make_unique<GiteaSimulation>(seed);
        QVERIFY2(sim->isValid(), qPrintable(sim->loadError()));
        sim->install(server);
    }

private slots:
    void init()
    {
        server = new FakeGiteaServer(this);
        QVERIFY(server->listen());
        useSeed(fixtures::read(QStringLiteral("gitea/seed.json")));
        sim->setClock([] { return QDateTime(QDate(2024, 6, 1), QTime(12, 0), Qt::UTC); });
    }

    void cleanup()
    {
        sim.reset();
        delete server;
        server = nullptr;
    }

    // --- The seed ---

    void brokenSeedIsRefusedWithTheReason_data()
    {
        QTest::addColumn<QByteArray>("seed");
        QTest::addColumn<QString>("reason");
        QTest::newRow("not JSON") << QByteArray("{\"users\": [") << QStringLiteral("seed: ");
        QTest::newRow("unknown owner")
            << QByteArray("{\"users\":[{\"login\":\"ann\"}],\"repositories\":[{\"owner\":\"zed\","
                          "\"name\":\"x\"}]}")
            << QStringLiteral("seed.repositories[0]: unknown user \"zed\"");
        QTest::newRow("bad date")
            << QByteArray("{\"users\":[{\"login\":\"ann\",\"created\":\"yesterday\"}]}")
            << QStringLiteral("seed.users[0]: \"created\" is not a date-time: \"yesterday\"");
        QTest::newRow("unknown review state")
            << QByteArray("{\"users\":[{\"login\":\"ann\"}],\"repositories\":[{\"owner\":\"ann\","
                          "\"name\":\"x\", "
                          "\"pulls\":[{\"user\":\"ann\",\"title\":\"t\",\"head\":\"h\",\"reviews\":"
                          "[{\"user\":\"ann\",\"state\":\"LGTM\"}]}]}]}")
            << QStringLiteral("seed.repositories[0].pulls[0].reviews[0]: \"state\" is \"LGTM\"");
        QTest::newRow("conclusion of running work")
            << QByteArray(
                   "{\"users\":[{\"login\":\"ann\"}],\"repositories\":[{\"owner\":\"ann\",\"name\":"
                   "\"x\", "
                   "\"runs\":{\"abc\":[{\"display_title\":\"t\",\"head_branch\":\"h\",\"actor\":"
                   "\"ann\", \"status\":\"in_progress\",\"conclusion\":\"success\"}]}}]}")
            << QStringLiteral("seed.repositories[0].runs.abc[0]: \"conclusion\" is only for");
        QTest::newRow("a status Gitea never sends")
            << QByteArray(
                   "{\"users\":[{\"login\":\"ann\"}],\"repositories\":[{\"owner\":\"ann\",\"name\":"
                   "\"x\", \"runs\":{\"abc\":[{\"display_title\":\"t\",\"head_branch\":\"h\","
                   "\"actor\":\"ann\", \"status\":\"running\"}]}}]}")
            << QStringLiteral("seed.repositories[0].runs.abc[0]: \"status\" is \"running\"");
        QTest::newRow("root URL without a scheme")
            << QByteArray("{\"instance\":{\"root_url\":\"git.example.org/\"}}")
            << QStringLiteral("seed.instance: \"root_url\" is not an http or https address");
        QTest::newRow("token of nobody")
            << QByteArray("{\"users\":[{\"login\":\"ann\"}],\"tokens\":{\"t\":\"bob\"}}")
            << QStringLiteral("seed.tokens: unknown user \"bob\"");
    }

    void brokenSeedIsRefusedWithTheReason()
    {
        QFETCH(QByteArray, seed);
        QFETCH(QString, reason);
        GiteaSimulation broken(seed);
        QVERIFY(!broken.isValid());
        QVERIFY2(broken.loadError().startsWith(reason), qPrintable(broken.loadError()));
        QVERIFY(broken.state().repositories.isEmpty());
    }

    void brokenSeedAnswersEveryRequestWith500()
    {
        sim = std::make_unique<GiteaSimulation>(QByteArray("[]"));
        sim->install(server);
        const Answer answer = get(QStringLiteral("/api/v1/user"));
        QCOMPARE(answer.status, 500);
        QCOMPARE(answer.message(), QStringLiteral("seed: not an object"));
    }

    void seedIsReadFromAFile()
    {
        GiteaSimulation fromFile(QStringLiteral(KESTRINE_TEST_DATA_DIR "/gitea/seed.json"));
        QVERIFY2(fromFile.isValid(), qPrintable(fromFile.loadError()));
        QCOMPARE(fromFile.state().repositories.size(), 4);
        GiteaSimulation missing(QStringLiteral("/nonexistent/seed.json"));
        QVERIFY(missing.loadError().startsWith(
            QStringLiteral("cannot read the seed /nonexistent/seed.json")));
    }

    // --- Authentication ---

    void currentUserIsTheTokensUser()
    {
        const Answer answer = get(QStringLiteral("/api/v1/user"));
        QCOMPARE(answer.status, 200);
        QCOMPARE(answer.header("Content-Type"), QByteArray("application/json;charset=utf-8"));
        const QJsonObject user = answer.object();
        QCOMPARE(user[QStringLiteral("id")].toInt(), 3);
        QCOMPARE(user[QStringLiteral("login")].toString(), QStringLiteral("ann"));
        QCOMPARE(user[QStringLiteral("full_name")].toString(), QStringLiteral("Ann Andersson"));
        QCOMPARE(user[QStringLiteral("email")].toString(), QStringLiteral("ann@example.org"));
        QCOMPARE(user[QStringLiteral("language")].toString(), QStringLiteral("en-US"));
        QCOMPARE(user[QStringLiteral("is_admin")].toBool(), true);
        QCOMPARE(user[QStringLiteral("last_login")].toString(),
                 QStringLiteral("2024-04-30T08:12:44Z"));
        QCOMPARE(user[QStringLiteral("html_url")].toString(), root() + QStringLiteral("ann"));
        const QJsonObject model =
            QJsonDocument::fromJson(fixtures::read(QStringLiteral("gitea/user.json"))).object();
        QCOMPARE(keysMissing(model, user), QStringList());
        QCOMPARE(get(QStringLiteral("/api/v1/user"), boToken).object()[QStringLiteral("login")],
                 QJsonValue(QStringLiteral("bo")));
    }

    void privateDetailsAreShownOnlyToTheUserAndToAdmins()
    {
        // cy keeps the e-mail address private: bo sees a placeholder and no private details.
        auto cyAsSeenBy = [&](const QByteArray &token) {
            return get(QStringLiteral("/api/v1/repos/ann/tool/pulls/8"), token)
                .object()[QStringLiteral("user")]
                .toObject();
        };
        const QJsonObject forBo = cyAsSeenBy(boToken);
        QCOMPARE(forBo[QStringLiteral("email")].toString(), QStringLiteral("cy@noreply.127.0.0.1"));
        QCOMPARE(forBo[QStringLiteral("last_login")].toString(),
                 QStringLiteral("0001-01-01T00:00:00Z"));
        QCOMPARE(forBo[QStringLiteral("active")].toBool(), false);
        // A site admin and cy themselves see all of it.
        const QJsonObject forAnn = cyAsSeenBy(annToken);
        QCOMPARE(forAnn[QStringLiteral("email")].toString(), QStringLiteral("cy@example.org"));
        QCOMPARE(forAnn[QStringLiteral("last_login")].toString(),
                 QStringLiteral("2024-05-02T07:40:00Z"));
        QCOMPARE(cyAsSeenBy(cyToken)[QStringLiteral("email")].toString(),
                 QStringLiteral("cy@example.org"));
        // An address that is not kept private is shown to every signed-in user.
        const QJsonObject boForCy = get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7"), cyToken)
                                        .object()[QStringLiteral("user")]
                                        .toObject();
        QCOMPARE(boForCy[QStringLiteral("email")].toString(), QStringLiteral("bo@example.org"));
        QCOMPARE(boForCy[QStringLiteral("is_admin")].toBool(), false);
    }

    void withoutATokenOnlyPublicReadsAreAnswered()
    {
        const Answer user = get(QStringLiteral("/api/v1/user"), {});
        QCOMPARE(user.status, 401);
        QCOMPARE(user.object(),
                 QJsonObject({{QStringLiteral("message"), QStringLiteral("token is required")},
                              {QStringLiteral("url"), swagger()}}));
        QCOMPARE(get(QStringLiteral("/api/v1/user/repos"), {}).status, 401);
        QCOMPARE(get(QStringLiteral("/api/v1/repos/ann/tool/pulls"), {}).status, 200);
        // A private repository does not exist for an anonymous caller.
        QCOMPARE(get(QStringLiteral("/api/v1/repos/ann/website/pulls"), {}).status, 404);
        const Answer merge =
            send("POST", QStringLiteral("/api/v1/repos/ann/tool/pulls/7/merge"), {}, mergeBody);
        QCOMPARE(merge.status, 401);
        QCOMPARE(merge.message(), QStringLiteral("token is required"));
        QCOMPARE(pull(7)[QStringLiteral("merged")].toBool(), false);
    }

    void anUnknownTokenIsRefusedEverywhere()
    {
        for (const QString &path :
             {QStringLiteral("/api/v1/user"), QStringLiteral("/api/v1/repos/ann/tool/pulls")}) {
            const Answer answer = get(path, "0000000000000000000000000000000000000000");
            QCOMPARE(answer.status, 401);
            QCOMPARE(answer.message(), QStringLiteral("user does not exist [uid: 0, name: ]"));
        }
    }

    void bearerTokensAreAcceptedToo()
    {
        QNetworkRequest request(
            QUrl(server->baseUrl().toString() + QStringLiteral("/api/v1/user")));
        request.setRawHeader("Authorization", "Bearer " + boToken);
        std::unique_ptr<QNetworkReply> reply(nam.get(request));
        QCoro::waitFor(qCoro(reply.get()).waitForFinished());
        QCOMPARE(QJsonDocument::fromJson(reply->readAll()).object()[QStringLiteral("login")],
                 QJsonValue(QStringLiteral("bo")));
    }

    void aSeedWithoutTokensAcceptsEveryRequestAsTheViewer()
    {
        useSeed("{\"users\":[{\"login\":\"dee\"},{\"login\":\"eve\"}],\"viewer\":\"eve\"}");
        const Answer answer = get(QStringLiteral("/api/v1/user"), {});
        QCOMPARE(answer.status, 200);
        QCOMPARE(answer.object()[QStringLiteral("login")].toString(), QStringLiteral("eve"));
        QCOMPARE(get(QStringLiteral("/api/v1/user"), "anything").status, 200);
    }

    // --- Repositories and paging ---

    void repositoriesOfTheUserAreListedByName()
    {
        const Answer answer = get(QStringLiteral("/api/v1/user/repos?page=1&limit=50"));
        QCOMPARE(answer.status, 200);
        const QJsonArray repos = answer.array();
        QStringList names;
        for (const QJsonValue &repo : repos)
            names.append(repo[QStringLiteral("full_name")].toString());
        // Owned and collaborated on; bo/dotfiles is someone else's.
        QCOMPARE(names, QStringList({"cy/infra", "ann/tool", "ann/website"}));
        QCOMPARE(answer.header("X-Total-Count"), QByteArray("3"));
        QVERIFY(!answer.header("Link").size());
        const QJsonObject tool = repos.at(1).toObject();
        const QJsonObject model =
            QJsonDocument::fromJson(fixtures::read(QStringLiteral("gitea/repository.json")))
                .object();
        QCOMPARE(keysMissing(model, tool), QStringList());
        QCOMPARE(tool[QStringLiteral("owner")][QStringLiteral("login")].toString(),
                 QStringLiteral("ann"));
        QCOMPARE(tool[QStringLiteral("open_pr_counter")].toInt(), 5);
        QCOMPARE(tool[QStringLiteral("clone_url")].toString(),
                 root() + QStringLiteral("ann/tool.git"));
        QCOMPARE(tool[QStringLiteral("permissions")].toObject(),
                 QJsonObject({{"admin", true}, {"push", true}, {"pull", true}}));
        QCOMPARE(repos.at(2)[QStringLiteral("private")].toBool(), true);
        QCOMPARE(get(QStringLiteral("/api/v1/user/repos"), boToken).array().size(), 3);
    }

    void sixHundredRepositoriesComeInPagesOfFifty()
    {
        useSeed(generatedSeed(600));
        QSet<QString> seen;
        for (int page = 1; page <= 12; ++page) {
            const Answer answer =
                get(QStringLiteral("/api/v1/user/repos?page=%1&limit=50").arg(page), "t0k3n");
            QCOMPARE(answer.status, 200);
            QCOMPARE(answer.array().size(), 50);
            QCOMPARE(answer.header("X-Total-Count"), QByteArray("600"));
            for (const QJsonValue &repo : answer.array())
                seen.insert(repo[QStringLiteral("name")].toString());
        }
        QCOMPARE(seen.size(), 600);
        const Answer past = get(QStringLiteral("/api/v1/user/repos?page=13&limit=50"), "t0k3n");
        QCOMPARE(past.array().size(), 0);
    }

    void linkHeaderNamesTheOtherPagesAsGiteaDoes()
    {
        useSeed(generatedSeed(600));
        const QString base = root() + QStringLiteral("api/v1/user/repos?limit=50&page=");
        auto links = [&](const QString &query) {
            return QString::fromUtf8(
                get(QStringLiteral("/api/v1/user/repos?") + query, "t0k3n").header("Link"));
        };
        QCOMPARE(
            links(QStringLiteral("page=1&limit=50")),
            QStringLiteral("<%1%2>; rel=\"next\",<%1%3>; rel=\"last\"").arg(base).arg(2).arg(12));
        QCOMPARE(links(QStringLiteral("limit=50&page=5")),
                 QStringLiteral("<%1%2>; rel=\"next\",<%1%3>; rel=\"last\",<%1%4>; rel=\"first\","
                                "<%1%5>; rel=\"prev\"")
                     .arg(base)
                     .arg(6)
                     .arg(12)
                     .arg(1)
                     .arg(4));
        QCOMPARE(
            links(QStringLiteral("page=12&limit=50")),
            QStringLiteral("<%1%2>; rel=\"first\",<%1%3>; rel=\"prev\"").arg(base).arg(1).arg(11));
        // Past the end Gitea counts from the last page.
        QCOMPARE(
            links(QStringLiteral("page=40&limit=50")),
            QStringLiteral("<%1%2>; rel=\"first\",<%1%3>; rel=\"prev\"").arg(base).arg(1).arg(11));
    }

    void limitDefaultsToThirtyAndIsCappedAtFifty()
    {
        useSeed(generatedSeed(600));
        QCOMPARE(get(QStringLiteral("/api/v1/user/repos"), "t0k3n").array().size(), 30);
        QCOMPARE(get(QStringLiteral("/api/v1/user/repos?limit=0"), "t0k3n").array().size(), 30);
        QCOMPARE(get(QStringLiteral("/api/v1/user/repos?limit=500"), "t0k3n").array().size(), 50);
        QCOMPARE(get(QStringLiteral("/api/v1/user/repos?limit=7&page=86"), "t0k3n").array().size(),
                 5);
    }

    // --- Pull requests ---

    void pullListFiltersByStateNewestFirst()
    {
        auto numbers = [&](const QString &query) {
            return numbersOf(get(QStringLiteral("/api/v1/repos/ann/tool/pulls") + query).array());
        };
        QCOMPARE(numbers(QStringLiteral("?state=open&limit=100")), QList<int>({8, 11, 9, 7, 10}));
        QCOMPARE(numbers(QStringLiteral("?state=closed")), QList<int>({6, 5}));
        QCOMPARE(numbers(QStringLiteral("?state=all")).size(), 7);
        // Gitea filters only on "open" and "closed": without a state every one is listed.
        QCOMPARE(numbers(QString()).size(), 7);
        QCOMPARE(numbers(QStringLiteral("?state=all&sort=oldest")),
                 QList<int>({5, 6, 10, 7, 9, 11, 8}));
        QCOMPARE(numbers(QStringLiteral("?state=open&sort=recentupdate")),
                 QList<int>({8, 11, 7, 9, 10}));
        QCOMPARE(get(QStringLiteral("/api/v1/repos/bo/dotfiles/pulls?state=open")).body,
                 QByteArray("[]"));
    }

    void pullListOfAHundredIsCutToFifty()
    {
        useSeed(generatedSeed(1, 60));
        const Answer answer =
            get(QStringLiteral("/api/v1/repos/ann/repo-001/pulls?state=open&limit=100"), "t0k3n");
        QCOMPARE(answer.array().size(), 50);
        QCOMPARE(answer.header("X-Total-Count"), QByteArray("60"));
        QCOMPARE(answer.array().first()[QStringLiteral("number")].toInt(), 60);
        // The other pages keep the query as sent, its keys in Go's sorted order.
        QVERIFY(answer.header("Link").contains("pulls?limit=100&page=2&state=open>; rel=\"next\""));
    }

    void pullRequestHasGiteasFullShape()
    {
        const Answer answer = get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7"));
        QCOMPARE(answer.status, 200);
        const QJsonObject pr = answer.object();
        const QJsonObject model =
            QJsonDocument::fromJson(fixtures::read(QStringLiteral("gitea/pull.json"))).object();
        QCOMPARE(keysMissing(model, pr), QStringList());
        QCOMPARE(keysMissing(model[QStringLiteral("base")].toObject(),
                             pr[QStringLiteral("base")].toObject()),
                 QStringList());
        QCOMPARE(keysMissing(model[QStringLiteral("base")][QStringLiteral("repo")].toObject(),
                             pr[QStringLiteral("base")][QStringLiteral("repo")].toObject()),
                 QStringList());
        QCOMPARE(pr[QStringLiteral("id")].toInt(), 101);
        QCOMPARE(pr[QStringLiteral("user")][QStringLiteral("login")].toString(),
                 QStringLiteral("bo"));
        QCOMPARE(pr[QStringLiteral("state")].toString(), QStringLiteral("open"));
        QCOMPARE(pr[QStringLiteral("draft")].toBool(), false);
        QCOMPARE(pr[QStringLiteral("mergeable")].toBool(), true);
        QCOMPARE(pr[QStringLiteral("merged")].toBool(), false);
        QVERIFY(pr[QStringLiteral("merged_at")].isNull());
        QVERIFY(pr[QStringLiteral("merge_commit_sha")].isNull());
        QVERIFY(pr[QStringLiteral("merged_by")].isNull());
        QVERIFY(pr[QStringLiteral("closed_at")].isNull());
        QCOMPARE(pr[QStringLiteral("created_at")].toString(),
                 QStringLiteral("2024-04-29T14:03:51Z"));
        QCOMPARE(pr[QStringLiteral("base")][QStringLiteral("ref")].toString(),
                 QStringLiteral("main"));
        QCOMPARE(pr[QStringLiteral("base")][QStringLiteral("sha")].toString(),
                 QStringLiteral("0f5e8c1b2a3d4e5f60718293a4b5c6d7e8f90123"));
        QCOMPARE(pr[QStringLiteral("base")][QStringLiteral("repo")][QStringLiteral("full_name")]
                     .toString(),
                 QStringLiteral("ann/tool"));
        QCOMPARE(pr[QStringLiteral("head")][QStringLiteral("ref")].toString(),
                 QStringLiteral("retry-upload"));
        QCOMPARE(pr[QStringLiteral("head")][QStringLiteral("sha")].toString(), toolHead);
        QCOMPARE(pr[QStringLiteral("labels")][0][QStringLiteral("color")].toString(),
                 QStringLiteral("84b6eb"));
        QCOMPARE(pr[QStringLiteral("assignees")][0][QStringLiteral("login")].toString(),
                 QStringLiteral("bo"));
        // Counts follow the changed files and the conversation.
        QCOMPARE(pr[QStringLiteral("additions")].toInt(), 30);
        QCOMPARE(pr[QStringLiteral("deletions")].toInt(), 13);
        QCOMPARE(pr[QStringLiteral("changed_files")].toInt(), 4);
        QCOMPARE(pr[QStringLiteral("comments")].toInt(), 2);
        QCOMPARE(pr[QStringLiteral("html_url")].toString(),
                 root() + QStringLiteral("ann/tool/pulls/7"));
        QCOMPARE(pr[QStringLiteral("diff_url")].toString(),
                 root() + QStringLiteral("ann/tool/pulls/7.diff"));
    }

    void draftsAndUnmergeablePullRequestsSayNotMergeable()
    {
        const QJsonObject draft = get(QStringLiteral("/api/v1/repos/ann/tool/pulls/8")).object();
        QCOMPARE(draft[QStringLiteral("draft")].toBool(), true);
        QCOMPARE(draft[QStringLiteral("mergeable")].toBool(), false);
        const QJsonObject blocked = get(QStringLiteral("/api/v1/repos/ann/tool/pulls/11")).object();
        QCOMPARE(blocked[QStringLiteral("draft")].toBool(), false);
        QCOMPARE(blocked[QStringLiteral("mergeable")].toBool(), false);
        const QJsonObject merged = get(QStringLiteral("/api/v1/repos/ann/tool/pulls/6")).object();
        QCOMPARE(merged[QStringLiteral("merged_at")].toString(),
                 QStringLiteral("2024-04-20T12:00:00Z"));
        QCOMPARE(merged[QStringLiteral("merged_by")][QStringLiteral("login")].toString(),
                 QStringLiteral("ann"));
        QCOMPARE(merged[QStringLiteral("merge_commit_sha")].toString(),
                 QStringLiteral("e3b0c44298fc1c149afbf4c8996fb92427ae41e4"));
    }

    void reviewsShowTheirStatesAndPendingOnesOnlyToTheirAuthor()
    {
        const QJsonArray reviews =
            get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7/reviews")).array();
        QStringList states;
        for (const QJsonValue &review : reviews)
            states.append(review[QStringLiteral("state")].toString());
        QCOMPARE(states, QStringList({"REQUEST_CHANGES", "APPROVED", "COMMENT"}));
        const QJsonObject first = reviews.first().toObject();
        QCOMPARE(first[QStringLiteral("stale")].toBool(), true);
        QCOMPARE(first[QStringLiteral("user")][QStringLiteral("login")].toString(),
                 QStringLiteral("ann"));
        QCOMPARE(first[QStringLiteral("submitted_at")].toString(),
                 QStringLiteral("2024-04-30T09:00:00Z"));
        QCOMPARE(first[QStringLiteral("comments_count")].toInt(), 1);
        QVERIFY(first[QStringLiteral("team")].isNull());
        QCOMPARE(first[QStringLiteral("pull_request_url")].toString(),
                 root() + QStringLiteral("ann/tool/pulls/7"));
        QVERIFY(first[QStringLiteral("html_url")].toString().contains(
            QStringLiteral("#issuecomment-201")));
        auto pendingFor = [&](const QByteArray &token) {
            return get(QStringLiteral("/api/v1/repos/ann/tool/pulls/8/reviews"), token)
                .array()
                .size();
        };
        QCOMPARE(pendingFor(cyToken), 0);
        QCOMPARE(pendingFor(boToken), 1);  // the author
        QCOMPARE(pendingFor(annToken), 1); // a site admin
    }

    void reviewsAreCountedButTheirPagesAreNotLinked()
    {
        useSeed(seedWithLongLists(40, 0));
        const QString path = QStringLiteral("/api/v1/repos/ann/big/pulls/1/reviews");
        const Answer first = get(path, "t0k3n");
        QCOMPARE(first.status, 200);
        QCOMPARE(first.array().size(), 30);
        QCOMPARE(idsOf(first.array()).first(), 1001);
        QCOMPARE(first.header("X-Total-Count"), QByteArray("40"));
        QCOMPARE(first.header("Access-Control-Expose-Headers"), QByteArray("X-Total-Count"));
        QVERIFY(!first.hasHeader("Link"));

        // The rest is asked for by number.
        const Answer second = get(path + QStringLiteral("?page=2"), "t0k3n");
        QList<qint64> rest;
        for (qint64 id = 1031; id <= 1040; ++id)
            rest.append(id);
        QCOMPARE(idsOf(second.array()), rest);
        QCOMPARE(second.header("X-Total-Count"), QByteArray("40"));
        QVERIFY(!second.hasHeader("Link"));
        const Answer past = get(path + QStringLiteral("?page=3"), "t0k3n");
        QCOMPARE(past.body, QByteArray("[]"));
        QCOMPARE(past.header("X-Total-Count"), QByteArray("40"));

        QCOMPARE(get(path + QStringLiteral("?limit=100"), "t0k3n").array().size(), 40);
        QCOMPARE(get(path + QStringLiteral("?limit=25&page=2"), "t0k3n").array().size(), 15);
    }

    void hiddenPendingReviewsStillCountAndHoldTheirPlaces()
    {
        // The reviews at indexes 4 and 31 are pending, so only bo (their author) and ann (a site
        // admin) get them; cy gets a short first page and is still told of all 32.
        useSeed(seedWithLongLists(32, 0, {4, 31}));
        const QString path = QStringLiteral("/api/v1/repos/ann/big/pulls/1/reviews");
        QCOMPARE(get(path, "t0k3n").array().size(), 30);
        const Answer first = get(path, "c0");
        QCOMPARE(first.array().size(), 29);
        QVERIFY(!idsOf(first.array()).contains(1005));
        QCOMPARE(idsOf(first.array()).last(), 1030);
        QCOMPARE(first.header("X-Total-Count"), QByteArray("32"));
        const Answer second = get(path + QStringLiteral("?page=2"), "c0");
        QCOMPARE(idsOf(second.array()), QList<qint64>({1031}));
        QCOMPARE(second.header("X-Total-Count"), QByteArray("32"));
        QCOMPARE(idsOf(get(path + QStringLiteral("?page=2"), "b0").array()),
                 QList<qint64>({1031, 1032}));
        // Anonymous readers of a public repository are told the same count.
        const Answer anonymous = get(path, QByteArray());
        QCOMPARE(anonymous.array().size(), 29);
        QCOMPARE(anonymous.header("X-Total-Count"), QByteArray("32"));
    }

    void commentsHaveGiteasShape()
    {
        const QJsonArray comments =
            get(QStringLiteral("/api/v1/repos/ann/tool/issues/7/comments")).array();
        QCOMPARE(idsOf(comments), QList<qint64>({301, 302}));
        const QJsonObject second = comments.at(1).toObject();
        QCOMPARE(second[QStringLiteral("user")][QStringLiteral("login")].toString(),
                 QStringLiteral("bo"));
        QCOMPARE(second[QStringLiteral("body")].toString(),
                 QStringLiteral("Yes, it goes through `Upload` too."));
        QCOMPARE(second[QStringLiteral("created_at")].toString(),
                 QStringLiteral("2024-04-30T09:10:00Z"));
        QCOMPARE(second[QStringLiteral("updated_at")].toString(),
                 QStringLiteral("2024-04-30T09:12:30Z"));
        QCOMPARE(second[QStringLiteral("issue_url")].toString(), QString());
        QCOMPARE(second[QStringLiteral("pull_request_url")].toString(),
                 root() + QStringLiteral("ann/tool/pulls/7"));
        QCOMPARE(second[QStringLiteral("assets")].toArray().size(), 0);
        QCOMPARE(get(QStringLiteral("/api/v1/repos/ann/tool/issues/12/comments")).status, 404);
    }

    void issueCommentsComeWholeWithTheirCount()
    {
        const Answer answer =
            get(QStringLiteral("/api/v1/repos/ann/tool/issues/7/comments?limit=1&page=2"));
        QCOMPARE(answer.status, 200);
        QCOMPARE(idsOf(answer.array()), QList<qint64>({301, 302}));
        QCOMPARE(answer.header("X-Total-Count"), QByteArray("2"));
        QVERIFY(!answer.hasHeader("Link"));
    }

    void changedFilesCarryTheirStatusesAndPages()
    {
        const Answer answer = get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7/files"));
        QStringList statuses;
        for (const QJsonValue &file : answer.array())
            statuses.append(file[QStringLiteral("status")].toString());
        QCOMPARE(statuses, QStringList({"renamed", "deleted", "added", "changed"}));
        const QJsonObject renamed = answer.array().first().toObject();
        QCOMPARE(renamed[QStringLiteral("filename")].toString(), QStringLiteral("docs/UPLOAD.md"));
        QCOMPARE(renamed[QStringLiteral("previous_filename")].toString(),
                 QStringLiteral("docs/upload.md"));
        QVERIFY(!answer.array().at(1).toObject().contains(QStringLiteral("previous_filename")));
        QVERIFY(!renamed.contains(QStringLiteral("patch")));
        const QJsonObject changed = answer.array().last().toObject();
        QCOMPARE(changed[QStringLiteral("changes")].toInt(),
                 changed[QStringLiteral("additions")].toInt() +
                     changed[QStringLiteral("deletions")].toInt());
        QCOMPARE(changed[QStringLiteral("raw_url")].toString(),
                 root() + QStringLiteral("ann/tool/raw/commit/") + toolHead +
                     QStringLiteral("/uploader/upload.go"));
        QCOMPARE(answer.header("X-Total-Count"), QByteArray("4"));
        QCOMPARE(answer.header("X-PerPage"), QByteArray("30"));
        QCOMPARE(answer.header("X-HasMore"), QByteArray("false"));
        const Answer second =
            get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7/files?limit=3&page=2"));
        QCOMPARE(second.array().size(), 1);
        QCOMPARE(second.header("X-PageCount"), QByteArray("2"));
        QCOMPARE(second.header("X-Page"), QByteArray("2"));
        QCOMPARE(
            get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7/files?limit=3")).header("X-HasMore"),
            QByteArray("true"));
    }

    void commitsHaveGiteasShape()
    {
        const QJsonArray commits =
            get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7/commits")).array();
        QCOMPARE(commits.size(), 2);
        const QJsonObject head = commits.last().toObject();
        QCOMPARE(head[QStringLiteral("sha")].toString(), toolHead);
        QCOMPARE(head[QStringLiteral("commit")][QStringLiteral("message")].toString(),
                 QStringLiteral("Drop the legacy uploader and document retries\n"));
        QCOMPARE(head[QStringLiteral("commit")][QStringLiteral("author")][QStringLiteral("name")]
                     .toString(),
                 QStringLiteral("Bo Berg"));
        QCOMPARE(head[QStringLiteral("author")][QStringLiteral("login")].toString(),
                 QStringLiteral("bo"));
        QCOMPARE(head[QStringLiteral("parents")][0][QStringLiteral("sha")].toString(),
                 commits.first()[QStringLiteral("sha")].toString());
        QCOMPARE(head[QStringLiteral("stats")][QStringLiteral("total")].toInt(), 8);
        QCOMPARE(head[QStringLiteral("files")][1][QStringLiteral("status")].toString(),
                 QStringLiteral("deleted"));
        // An author without an account here is null, as Gitea sends it.
        const QJsonObject foreign = get(QStringLiteral("/api/v1/repos/ann/tool/pulls/10/commits"))
                                        .array()
                                        .first()
                                        .toObject();
        QVERIFY(foreign[QStringLiteral("author")].isNull());
        QCOMPARE(foreign[QStringLiteral("commit")][QStringLiteral("author")][QStringLiteral("name")]
                     .toString(),
                 QStringLiteral("Cy Carlsson"));
    }

    void changedFilesAndCommitsLinkTheirPagesFromTheRequest()
    {
        const QString files = root() + QStringLiteral("api/v1/repos/ann/tool/pulls/7/files");
        const Answer first = get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7/files?limit=3"));
        QCOMPARE(first.array().size(), 3);
        QCOMPARE(
            QString::fromUtf8(first.header("Link")),
            QStringLiteral("<%1?limit=3&page=2>; rel=\"next\",<%1?limit=3&page=2>; rel=\"last\"")
                .arg(files));
        QCOMPARE(first.header("X-Total-Count"), QByteArray("4"));
        QCOMPARE(first.header("Access-Control-Expose-Headers"),
                 QByteArray("Link, X-Total-Count, X-Page, X-PerPage, X-PageCount, X-HasMore"));
        // The last page links back, and has no "next".
        const Answer last =
            get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7/files?limit=3&page=2"));
        QCOMPARE(last.array().size(), 1);
        QCOMPARE(
            QString::fromUtf8(last.header("Link")),
            QStringLiteral("<%1?limit=3&page=1>; rel=\"first\",<%1?limit=3&page=1>; rel=\"prev\"")
                .arg(files));
        // The request's other parameters stay in the links, in Go's sorted order.
        QCOMPARE(linksOf(get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7/files?"
                                            "whitespace=ignore-all&limit=2"))
                             .header("Link"))
                     .value(QStringLiteral("next")),
                 files + QStringLiteral("?limit=2&page=2&whitespace=ignore-all"));
        // A list on one page links nothing.
        QVERIFY(!get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7/files")).hasHeader("Link"));

        const QString commits = root() + QStringLiteral("api/v1/repos/ann/tool/pulls/7/commits");
        const Answer firstCommit =
            get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7/commits?limit=1"));
        QCOMPARE(firstCommit.array().size(), 1);
        QCOMPARE(firstCommit.header("X-Total-Count"), QByteArray("2"));
        const QMap<QString, QString> links = linksOf(firstCommit.header("Link"));
        QCOMPARE(links.keys(), QStringList({"last", "next"}));
        QCOMPARE(links.value(QStringLiteral("next")), commits + QStringLiteral("?limit=1&page=2"));
        const Answer lastCommit = get(links.value(QStringLiteral("next")).mid(root().size() - 1));
        QCOMPARE(lastCommit.array().first()[QStringLiteral("sha")].toString(), toolHead);
        QCOMPARE(linksOf(lastCommit.header("Link")).keys(), QStringList({"first", "prev"}));
    }

    void diffIsServedAsPlainText()
    {
        const Answer answer = get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7.diff"));
        QCOMPARE(answer.status, 200);
        QCOMPARE(answer.header("Content-Type"), QByteArray("text/plain; charset=utf-8"));
        QCOMPARE(answer.body, seedPull(7)[QStringLiteral("diff")].toString().toUtf8());
        QCOMPARE(answer.body.count("diff --git "), 4);
        QVERIFY(answer.body.contains("+++ b/uploader/retry.go\n@@ -0,0 +1,21 @@\n"));
        QCOMPARE(get(QStringLiteral("/api/v1/repos/ann/tool/pulls/70.diff")).status, 404);
    }

    // --- Actions ---

    void runsAreFilteredByHeadShaInTheirEnvelope()
    {
        const Answer answer =
            get(QStringLiteral("/api/v1/repos/ann/tool/actions/runs?head_sha=%1&limit=20")
                    .arg(toolHead));
        QCOMPARE(answer.status, 200);
        const QJsonObject envelope = answer.object();
        QCOMPARE(envelope[QStringLiteral("total_count")].toInt(), 2);
        const QJsonArray runs = envelope[QStringLiteral("workflow_runs")].toArray();
        QCOMPARE(idsOf(runs), QList<qint64>({42, 41}));
        const QJsonObject ci = runs.at(1).toObject();
        QCOMPARE(ci[QStringLiteral("status")].toString(), QStringLiteral("completed"));
        QCOMPARE(ci[QStringLiteral("conclusion")].toString(), QStringLiteral("success"));
        QCOMPARE(ci[QStringLiteral("head_sha")].toString(), toolHead);
        QCOMPARE(ci[QStringLiteral("path")].toString(),
                 QStringLiteral("ci.yml@refs/heads/retry-upload"));
        QCOMPARE(ci[QStringLiteral("run_number")].toInt(), 20);
        QCOMPARE(ci[QStringLiteral("html_url")].toString(),
                 root() + QStringLiteral("ann/tool/actions/runs/20"));
        QCOMPARE(ci[QStringLiteral("actor")][QStringLiteral("login")].toString(),
                 QStringLiteral("bo"));
        QCOMPARE(ci[QStringLiteral("repository")][QStringLiteral("full_name")].toString(),
                 QStringLiteral("ann/tool"));
        QCOMPARE(ci[QStringLiteral("completed_at")].toString(),
                 QStringLiteral("2024-05-01T10:21:47Z"));
        QVERIFY(!ci.contains(QStringLiteral("name")));

        const QJsonObject all = get(QStringLiteral("/api/v1/repos/ann/tool/actions/runs")).object();
        QCOMPARE(all[QStringLiteral("total_count")].toInt(), 5);
        const QJsonArray allRuns = all[QStringLiteral("workflow_runs")].toArray();
        QCOMPARE(idsOf(allRuns), QList<qint64>({43, 42, 41, 40, 39}));
        const QJsonObject running = allRuns.first().toObject();
        QCOMPARE(running[QStringLiteral("status")].toString(), QStringLiteral("in_progress"));
        QVERIFY(!running.contains(QStringLiteral("conclusion")));
        QCOMPARE(running[QStringLiteral("completed_at")].toString(),
                 QStringLiteral("1970-01-01T00:00:00Z"));
        QCOMPARE(allRuns.at(3)[QStringLiteral("conclusion")].toString(),
                 QStringLiteral("cancelled"));
        QCOMPARE(allRuns.at(4)[QStringLiteral("conclusion")].toString(), QStringLiteral("failure"));

        const QJsonObject limited =
            get(QStringLiteral("/api/v1/repos/ann/tool/actions/runs?limit=2&page=2")).object();
        QCOMPARE(idsOf(limited[QStringLiteral("workflow_runs")].toArray()),
                 QList<qint64>({41, 40}));
        QCOMPARE(limited[QStringLiteral("total_count")].toInt(), 5);
        QCOMPARE(get(QStringLiteral("/api/v1/repos/ann/tool/actions/runs?head_sha=ffff")).object(),
                 QJsonObject({{QStringLiteral("workflow_runs"), QJsonArray()},
                              {QStringLiteral("total_count"), 0}}));
    }

    void jobsComeInTheirEnvelope()
    {
        const QJsonObject envelope =
            get(QStringLiteral("/api/v1/repos/ann/tool/actions/runs/41/jobs")).object();
        QCOMPARE(envelope[QStringLiteral("total_count")].toInt(), 2);
        const QJsonArray jobs = envelope[QStringLiteral("jobs")].toArray();
        QCOMPARE(idsOf(jobs), QList<qint64>({101, 102}));
        const QJsonObject build = jobs.first().toObject();
        QCOMPARE(build[QStringLiteral("name")].toString(), QStringLiteral("build"));
        QCOMPARE(build[QStringLiteral("run_id")].toInt(), 41);
        QCOMPARE(build[QStringLiteral("conclusion")].toString(), QStringLiteral("success"));
        QCOMPARE(build[QStringLiteral("runner_name")].toString(), QStringLiteral("runner-a"));
        QCOMPARE(build[QStringLiteral("labels")].toArray(), QJsonArray({"ubuntu-latest"}));
        QCOMPARE(build[QStringLiteral("steps")][0][QStringLiteral("number")].toInt(), 1);
        QCOMPARE(build[QStringLiteral("head_sha")].toString(), toolHead);
        const QJsonObject queued =
            get(QStringLiteral("/api/v1/repos/ann/tool/actions/runs/43/jobs"))
                .object()[QStringLiteral("jobs")][1]
                .toObject();
        QCOMPARE(queued[QStringLiteral("status")].toString(), QStringLiteral("queued"));
        QVERIFY(!queued.contains(QStringLiteral("conclusion")));
        QVERIFY(!queued.contains(QStringLiteral("runner_name")));
        QCOMPARE(get(QStringLiteral("/api/v1/repos/ann/tool/actions/runs/9999/jobs")).status, 404);
    }

    void runsListLinksItsPagesBesideItsEnvelope()
    {
        const QString runs = root() + QStringLiteral("api/v1/repos/ann/tool/actions/runs");
        const Answer first = get(QStringLiteral("/api/v1/repos/ann/tool/actions/runs?limit=2"));
        QCOMPARE(first.status, 200);
        QCOMPARE(idsOf(first.object()[QStringLiteral("workflow_runs")].toArray()),
                 QList<qint64>({43, 42}));
        QCOMPARE(first.object()[QStringLiteral("total_count")].toInt(), 5);
        QCOMPARE(first.header("X-Total-Count"), QByteArray("5"));
        QCOMPARE(
            QString::fromUtf8(first.header("Link")),
            QStringLiteral("<%1?limit=2&page=2>; rel=\"next\",<%1?limit=2&page=3>; rel=\"last\"")
                .arg(runs));
        QCOMPARE(first.header("Access-Control-Expose-Headers"), QByteArray("Link, X-Total-Count"));

        const Answer last =
            get(QStringLiteral("/api/v1/repos/ann/tool/actions/runs?limit=2&page=3"));
        QCOMPARE(idsOf(last.object()[QStringLiteral("workflow_runs")].toArray()),
                 QList<qint64>({39}));
        const QMap<QString, QString> back = linksOf(last.header("Link"));
        QCOMPARE(back.keys(), QStringList({"first", "prev"}));
        QCOMPARE(back.value(QStringLiteral("prev")), runs + QStringLiteral("?limit=2&page=2"));

        // A filter stays in the links and counts only what it lets through.
        const Answer filtered =
            get(QStringLiteral("/api/v1/repos/ann/tool/actions/runs?limit=1&head_sha=%1")
                    .arg(toolHead));
        QCOMPARE(filtered.header("X-Total-Count"), QByteArray("2"));
        QCOMPARE(linksOf(filtered.header("Link")).value(QStringLiteral("next")),
                 runs + QStringLiteral("?head_sha=%1&limit=1&page=2").arg(toolHead));

        // All on one page: counted, not linked.
        const Answer all = get(QStringLiteral("/api/v1/repos/ann/tool/actions/runs"));
        QCOMPARE(all.header("X-Total-Count"), QByteArray("5"));
        QVERIFY(!all.hasHeader("Link"));
    }

    void jobsOfAFortyJobRunComeThirtyAndTenWithLinks()
    {
        useSeed(seedWithLongLists(0, 40));
        const QString jobs = root() + QStringLiteral("api/v1/repos/ann/big/actions/runs/7/jobs");
        const Answer first =
            get(QStringLiteral("/api/v1/repos/ann/big/actions/runs/7/jobs"), "t0k3n");
        QCOMPARE(first.status, 200);
        const QJsonArray firstJobs = first.object()[QStringLiteral("jobs")].toArray();
        QCOMPARE(firstJobs.size(), 30);
        QCOMPARE(first.object()[QStringLiteral("total_count")].toInt(), 40);
        QCOMPARE(first.header("X-Total-Count"), QByteArray("40"));
        const QMap<QString, QString> links = linksOf(first.header("Link"));
        QCOMPARE(links.keys(), QStringList({"last", "next"}));
        QCOMPARE(links.value(QStringLiteral("next")), jobs + QStringLiteral("?page=2"));
        QCOMPARE(links.value(QStringLiteral("last")), jobs + QStringLiteral("?page=2"));

        // Following "next" as a client does.
        const Answer second =
            get(links.value(QStringLiteral("next")).mid(root().size() - 1), "t0k3n");
        const QJsonArray rest = second.object()[QStringLiteral("jobs")].toArray();
        QCOMPARE(rest.size(), 10);
        QCOMPARE(second.object()[QStringLiteral("total_count")].toInt(), 40);
        QCOMPARE(second.header("X-Total-Count"), QByteArray("40"));
        const QMap<QString, QString> back = linksOf(second.header("Link"));
        QCOMPARE(back.keys(), QStringList({"first", "prev"}));
        QCOMPARE(back.value(QStringLiteral("prev")), jobs + QStringLiteral("?page=1"));
        QSet<qint64> seen;
        for (const qint64 id : idsOf(firstJobs) + idsOf(rest))
            seen.insert(id);
        QCOMPARE(seen.size(), 40);
        QVERIFY(seen.contains(501) && seen.contains(540));
    }

    void jobLogsAreRawTextOr404()
    {
        const Answer log = get(QStringLiteral("/api/v1/repos/ann/tool/actions/jobs/98/logs"));
        QCOMPARE(log.status, 200);
        QCOMPARE(log.header("Content-Type"), QByteArray("text/plain; charset=utf-8"));
        QVERIFY(log.body.contains("--- FAIL: TestUploadRetries (0.00s)\n"));
        QVERIFY(QRegularExpression(
                    QStringLiteral("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{7}Z "))
                    .match(QString::fromUtf8(log.body))
                    .hasMatch());
        const Answer notStarted =
            get(QStringLiteral("/api/v1/repos/ann/tool/actions/jobs/105/logs"));
        QCOMPARE(notStarted.status, 404);
        QCOMPARE(notStarted.object()[QStringLiteral("errors")].toArray(),
                 QJsonArray({"job not started"}));
        QCOMPARE(get(QStringLiteral("/api/v1/repos/ann/tool/actions/jobs/4242/logs")).status, 404);
        // A job of another repository is not found here.
        QCOMPARE(get(QStringLiteral("/api/v1/repos/ann/website/actions/jobs/98/logs")).status, 404);
    }

    void combinedStatusListsWhatActionsPostedForTheCommit()
    {
        const Answer answer =
            get(QStringLiteral("/api/v1/repos/ann/tool/commits/%1/status").arg(toolHead));
        QCOMPARE(answer.status, 200);
        const QJsonObject combined = answer.object();
        QCOMPARE(combined[QStringLiteral("state")].toString(), QStringLiteral("success"));
        QCOMPARE(combined[QStringLiteral("sha")].toString(), toolHead);
        QCOMPARE(combined[QStringLiteral("total_count")].toInt(), 3);
        QCOMPARE(combined[QStringLiteral("repository")][QStringLiteral("full_name")].toString(),
                 QStringLiteral("ann/tool"));
        const QJsonArray statuses = combined[QStringLiteral("statuses")].toArray();
        QCOMPARE(statuses.size(), 3);
        QStringList contexts;
        for (const QJsonValue &status : statuses)
            contexts.append(status[QStringLiteral("context")].toString());
        contexts.sort();
        QCOMPARE(contexts,
                 QStringList({"ci.yml / build (pull_request)", "ci.yml / test (pull_request)",
                              "lint.yml / lint (pull_request)"}));
        const QJsonObject build = statuses.at(0).toObject();
        QCOMPARE(build[QStringLiteral("status")].toString(), QStringLiteral("success"));
        QVERIFY(build[QStringLiteral("target_url")].toString().startsWith(
            root() + QStringLiteral("ann/tool/actions/runs/")));
        QCOMPARE(build[QStringLiteral("creator")][QStringLiteral("login")].toString(),
                 QStringLiteral("bo"));
        QCOMPARE(build[QStringLiteral("created_at")].toString(),
                 QStringLiteral("2024-05-01T10:21:00Z"));

        // A run still under way reports pending; the worst state is the combined one.
        const QJsonObject running =
            get(QStringLiteral("/api/v1/repos/ann/tool/commits/"
                               "3e1f2a4b6c8d0e9f1a2b3c4d5e6f708192a3b4c5/status"))
                .object();
        QCOMPARE(running[QStringLiteral("state")].toString(), QStringLiteral("pending"));
        QCOMPARE(running[QStringLiteral("statuses")][0][QStringLiteral("description")].toString(),
                 QStringLiteral("Waiting to run"));
    }

    void combinedStatusKeepsTheNewestOfEachContextAndPagesItsStatuses()
    {
        const QString sha = QStringLiteral("b16b00b5c0de1234567890abcdef0123456789ab");
        QJsonObject seed =
            QJsonDocument::fromJson(fixtures::read(QStringLiteral("gitea/seed.json"))).object();
        QJsonArray repositories = seed[QStringLiteral("repositories")].toArray();
        QJsonObject tool = repositories.at(0).toObject();
        const auto status = [](const char *context, const char *state, const char *at) {
            return QJsonObject{
                {QStringLiteral("context"), QLatin1String(context)},
                {QStringLiteral("status"), QLatin1String(state)},
                {QStringLiteral("creator"), QStringLiteral("cy")},
                {QStringLiteral("description"), QLatin1String(state)},
                {QStringLiteral("target_url"), QStringLiteral("https://ci.example.org/1")},
                {QStringLiteral("created_at"), QLatin1String(at)}};
        };
        tool[QStringLiteral("statuses")] = QJsonObject{
            {sha, QJsonArray{status("ci/woodpecker/build", "pending", "2024-05-01T10:00:00Z"),
                             status("ci/woodpecker/build", "failure", "2024-05-01T10:05:00Z"),
                             status("ci/woodpecker/lint", "success", "2024-05-01T10:01:00Z"),
                             status("coverage", "warning", "2024-05-01T10:02:00Z")}}};
        repositories[0] = tool;
        seed[QStringLiteral("repositories")] = repositories;
        useSeed(QJsonDocument(seed).toJson());

        const QString path = QStringLiteral("/api/v1/repos/ann/tool/commits/%1/status").arg(sha);
        const Answer all = get(path);
        QCOMPARE(all.status, 200);
        QCOMPARE(all.object()[QStringLiteral("state")].toString(), QStringLiteral("failure"));
        const QJsonArray statuses = all.object()[QStringLiteral("statuses")].toArray();
        QCOMPARE(statuses.size(), 3);
        QCOMPARE(statuses.at(0)[QStringLiteral("context")].toString(),
                 QStringLiteral("ci/woodpecker/build"));
        QCOMPARE(statuses.at(0)[QStringLiteral("status")].toString(), QStringLiteral("failure"));
        QCOMPARE(statuses.at(1)[QStringLiteral("context")].toString(), QStringLiteral("coverage"));
        QCOMPARE(statuses.at(2)[QStringLiteral("context")].toString(),
                 QStringLiteral("ci/woodpecker/lint"));
        QVERIFY(!all.hasHeader("Link"));

        const Answer first = get(path + QStringLiteral("?limit=2"));
        QCOMPARE(first.header("X-Total-Count"), QByteArray("3"));
        QCOMPARE(first.object()[QStringLiteral("statuses")].toArray().size(), 2);
        QCOMPARE(
            linksOf(first.header("Link")).value(QStringLiteral("next")),
            root() +
                QStringLiteral("api/v1/repos/ann/tool/commits/%1/status?limit=2&page=2").arg(sha));
        const QJsonArray second = get(path + QStringLiteral("?limit=2&page=2"))
                                      .object()[QStringLiteral("statuses")]
                                      .toArray();
        QCOMPARE(second.size(), 1);
        QCOMPARE(second.at(0)[QStringLiteral("context")].toString(),
                 QStringLiteral("ci/woodpecker/lint"));
    }

    void combinedStatusOfAnUnknownCommitIs404()
    {
        QCOMPARE(get(QStringLiteral("/api/v1/repos/ann/tool/commits/"
                                    "ffffffffffffffffffffffffffffffffffffffff/status"))
                     .status,
                 404);
        QCOMPARE(
            get(QStringLiteral("/api/v1/repos/ann/nothing/commits/%1/status").arg(toolHead)).status,
            404);
    }

    // --- Merging ---

    void mergeClosesThePullRequestAsMerged()
    {
        const Answer answer =
            send("POST", QStringLiteral("/api/v1/repos/ann/tool/pulls/7/merge"), annToken,
                 "{\"Do\":\"merge\",\"delete_branch_after_merge\":false}");
        QCOMPARE(answer.status, 200);
        QCOMPARE(answer.body, QByteArray());
        const QJsonObject merged = pull(7);
        QCOMPARE(merged[QStringLiteral("state")].toString(), QStringLiteral("closed"));
        QCOMPARE(merged[QStringLiteral("merged")].toBool(), true);
        QCOMPARE(merged[QStringLiteral("merged_at")].toString(),
                 QStringLiteral("2024-06-01T12:00:00Z"));
        QCOMPARE(merged[QStringLiteral("closed_at")].toString(),
                 QStringLiteral("2024-06-01T12:00:00Z"));
        QCOMPARE(merged[QStringLiteral("merged_by")][QStringLiteral("login")].toString(),
                 QStringLiteral("ann"));
        const QString commit = merged[QStringLiteral("merge_commit_sha")].toString();
        QVERIFY(QRegularExpression(QStringLiteral("^[0-9a-f]{40}$")).match(commit).hasMatch());
        QCOMPARE(merged[QStringLiteral("base")][QStringLiteral("sha")].toString(), commit);
        QVERIFY(sim->branchExists(QStringLiteral("ann"), QStringLiteral("tool"),
                                  QStringLiteral("retry-upload")));
        QVERIFY(!numbersOf(get(QStringLiteral("/api/v1/repos/ann/tool/pulls?state=open")).array())
                     .contains(7));

        const Answer again = send("POST", QStringLiteral("/api/v1/repos/ann/tool/pulls/7/merge"),
                                  annToken, mergeBody);
        QCOMPARE(again.status, 405);
        QCOMPARE(again.object(), QJsonObject({{QStringLiteral("message"), QString()},
                                              {QStringLiteral("url"), swagger()}}));
    }

    void mergeCanDeleteTheHeadBranch()
    {
        const Answer answer =
            send("POST", QStringLiteral("/api/v1/repos/ann/tool/pulls/7/merge"), boToken,
                 "{\"Do\":\"squash\",\"delete_branch_after_merge\":true}");
        QCOMPARE(answer.status, 200);
        QVERIFY(!sim->branchExists(QStringLiteral("ann"), QStringLiteral("tool"),
                                   QStringLiteral("retry-upload")));
        QCOMPARE(pull(7)[QStringLiteral("merged_by")][QStringLiteral("login")].toString(),
                 QStringLiteral("bo"));
    }

    void aFormEncodedMergeIsReadLikeJson()
    {
        QCOMPARE(send("POST", QStringLiteral("/api/v1/repos/ann/tool/pulls/7/merge"), annToken,
                      "Do=rebase&delete_branch_after_merge=true",
                      "application/x-www-form-urlencoded")
                     .status,
                 200);
        QCOMPARE(pull(7)[QStringLiteral("merged")].toBool(), true);
        QVERIFY(!sim->branchExists(QStringLiteral("ann"), QStringLiteral("tool"),
                                   QStringLiteral("retry-upload")));
    }

    void fastForwardMergeKeepsTheHeadCommit()
    {
        const QByteArray fastForward = "{\"Do\":\"fast-forward-only\"}";
        QCOMPARE(send("POST", QStringLiteral("/api/v1/repos/ann/tool/pulls/7/merge"), annToken,
                      fastForward)
                     .status,
                 200);
        QCOMPARE(pull(7)[QStringLiteral("merge_commit_sha")].toString(), toolHead);
    }

    void refusedMergesLeaveThePullRequestOpen_data()
    {
        QTest::addColumn<QByteArray>("token");
        QTest::addColumn<QString>("repo");
        QTest::addColumn<int>("number");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("message");
        const QString tool = QStringLiteral("ann/tool");
        const QByteArray merge = "{\"Do\":\"merge\"}";
        QTest::newRow("draft") << annToken << tool << 8 << merge << 405
                               << QStringLiteral("Work in progress PRs cannot be merged");
        QTest::newRow("not mergeable")
            << annToken << tool << 11 << merge << 405 << QStringLiteral("Please try again later");
        QTest::newRow("out of date")
            << annToken << tool << 9 << merge << 409 << QStringLiteral("merge push out of date");
        QTest::newRow("head moved on")
            << annToken << tool << 7 << QByteArray("{\"Do\":\"merge\",\"head_commit_id\":\"0123\"}")
            << 409 << QStringLiteral("head out of date");
        QTest::newRow("reader") << cyToken << tool << 7 << merge << 405
                                << QStringLiteral("User not allowed to merge PR");
        QTest::newRow("style not allowed")
            << annToken << QStringLiteral("ann/website") << 3 << QByteArray("{\"Do\":\"rebase\"}")
            << 405
            << QStringLiteral("rebase is not allowed an allowed merge "
                              "style for this repository");
        QTest::newRow("unknown style")
            << annToken << tool << 7 << QByteArray("{\"Do\":\"octopus\"}") << 422
            << QStringLiteral("[Do]: In");
        QTest::newRow("no style") << annToken << tool << 7
                                  << QByteArray("{\"delete_branch_after_merge\":true}") << 422
                                  << QStringLiteral("[Do]: Required");
        QTest::newRow("manual merge not allowed")
            << annToken << QStringLiteral("ann/website") << 3
            << QByteArray("{\"Do\":\"manually-merged\",\"MergeCommitID\":"
                          "\"1234567890abcdef1234567890abcdef12345678\"}")
            << 405
            << QStringLiteral("manually-merged is not allowed an allowed merge style for this "
                              "repository");
        QTest::newRow("manual without commit")
            << annToken << tool << 7 << QByteArray("{\"Do\":\"manually-merged\"}") << 409
            << QString();
    }

    void refusedMergesLeaveThePullRequestOpen()
    {
        QFETCH(QByteArray, token);
        QFETCH(QString, repo);
        QFETCH(int, number);
        QFETCH(QByteArray, body);
        QFETCH(int, status);
        QFETCH(QString, message);
        const Answer answer =
            send("POST", QStringLiteral("/api/v1/repos/%1/pulls/%2/merge").arg(repo).arg(number),
                 token, body);
        QCOMPARE(answer.status, status);
        if (!message.isEmpty())
            QCOMPARE(answer.message(), message);
        const QJsonObject after = pull(number, repo);
        QCOMPARE(after[QStringLiteral("merged")].toBool(), false);
        QCOMPARE(after[QStringLiteral("state")].toString(), QStringLiteral("open"));
    }

    void conflictingMergeAnswersGiteasConflictError()
    {
        const Answer answer = send("POST", QStringLiteral("/api/v1/repos/ann/tool/pulls/10/merge"),
                                   annToken, "{\"Do\":\"rebase\"}");
        QCOMPARE(answer.status, 409);
        const QJsonObject conflict = answer.object();
        QCOMPARE(conflict[QStringLiteral("Style")].toString(), QStringLiteral("rebase"));
        QVERIFY(conflict[QStringLiteral("StdErr")].toString().startsWith(
            QStringLiteral("CONFLICT (content): Merge conflict in CHANGELOG.md")));
    }

    void closedOrMergedOrUnknownPullRequestsAreNotMerged()
    {
        const Answer closed = send("POST", QStringLiteral("/api/v1/repos/ann/tool/pulls/5/merge"),
                                   annToken, mergeBody);
        QCOMPARE(closed.status,
                 404); // Gitea's merge endpoint treats a closed pull request as missing
        QCOMPARE(pull(5)[QStringLiteral("merged")].toBool(), false);
        const Answer merged = send("POST", QStringLiteral("/api/v1/repos/ann/tool/pulls/6/merge"),
                                   annToken, mergeBody);
        QCOMPARE(merged.status, 405);
        QCOMPARE(send("POST", QStringLiteral("/api/v1/repos/ann/tool/pulls/77/merge"), annToken,
                      mergeBody)
                     .status,
                 404);
    }

    void manualMergeRecordsTheGivenCommit()
    {
        // Without a commit Gitea answers 409 with its bare error value.
        QCOMPARE(send("POST", QStringLiteral("/api/v1/repos/ann/tool/pulls/11/merge"), annToken,
                      manualMergeBody)
                     .body,
                 QByteArray("{}"));
        const QByteArray commit = "1234567890abcdef1234567890abcdef12345678";
        const QByteArray body = "{\"Do\":\"manually-merged\",\"MergeCommitID\":\"" + commit + "\"}";
        QCOMPARE(
            send("POST", QStringLiteral("/api/v1/repos/ann/tool/pulls/11/merge"), annToken, body)
                .status,
            200);
        QCOMPARE(pull(11)[QStringLiteral("merge_commit_sha")].toString(),
                 QString::fromLatin1(commit));
    }

    void outOfDateMergeWorksAfterAnUpdate()
    {
        const QString path = QStringLiteral("/api/v1/repos/ann/tool/pulls/9");
        const QString oldHead = pull(9)[QStringLiteral("head")][QStringLiteral("sha")].toString();
        QCOMPARE(send("POST", path + QStringLiteral("/merge"), annToken, mergeBody).status, 409);
        const Answer update = send("POST", path + QStringLiteral("/update?style=merge"));
        QCOMPARE(update.status, 200);
        const QJsonObject updated = pull(9);
        QVERIFY(updated[QStringLiteral("head")][QStringLiteral("sha")].toString() != oldHead);
        QCOMPARE(updated[QStringLiteral("merge_base")].toString(),
                 updated[QStringLiteral("base")][QStringLiteral("sha")].toString());
        const QJsonArray commits = get(path + QStringLiteral("/commits")).array();
        QCOMPARE(commits.size(), 2);
        QCOMPARE(commits.last()[QStringLiteral("commit")][QStringLiteral("message")].toString(),
                 QStringLiteral("Merge branch 'main' into go-1.22"));
        QCOMPARE(commits.last()[QStringLiteral("parents")].toArray().size(), 2);
        QCOMPARE(send("POST", path + QStringLiteral("/merge"), annToken, mergeBody).status, 200);
        QCOMPARE(pull(9)[QStringLiteral("merged")].toBool(), true);
    }

    void rebaseUpdateRewritesTheCommits()
    {
        const QString path = QStringLiteral("/api/v1/repos/ann/tool/pulls/9");
        QCOMPARE(send("POST", path + QStringLiteral("/update?style=rebase")).status, 200);
        const QJsonArray commits = get(path + QStringLiteral("/commits")).array();
        QCOMPARE(commits.size(), 1);
        QCOMPARE(commits.first()[QStringLiteral("parents")][0][QStringLiteral("sha")].toString(),
                 QStringLiteral("0f5e8c1b2a3d4e5f60718293a4b5c6d7e8f90123"));
        QCOMPARE(pull(9)[QStringLiteral("head")][QStringLiteral("sha")].toString(),
                 commits.first()[QStringLiteral("sha")].toString());
    }

    void aRealConflictSurvivesTheUpdate()
    {
        const QString path = QStringLiteral("/api/v1/repos/ann/tool/pulls/10");
        const Answer update = send("POST", path + QStringLiteral("/update"));
        QCOMPARE(update.status, 409);
        QCOMPARE(update.message(), QStringLiteral("merge failed because of conflict"));
        QCOMPARE(send("POST", path + QStringLiteral("/update?style=rebase")).message(),
                 QStringLiteral("rebase failed because of conflict"));
        QCOMPARE(send("POST", path + QStringLiteral("/merge"), annToken, mergeBody).status, 409);
    }

    void updateRefusesClosedPullRequestsAndReaders()
    {
        for (int number : {5, 6}) {
            const Answer answer =
                send("POST", QStringLiteral("/api/v1/repos/ann/tool/pulls/%1/update").arg(number));
            QCOMPARE(answer.status, 422);
            QCOMPARE(answer.message(), QStringLiteral("%!s(<nil>)"));
        }
        const Answer reader =
            send("POST", QStringLiteral("/api/v1/repos/ann/tool/pulls/9/update"), cyToken);
        QCOMPARE(reader.status, 403);
        QCOMPARE(reader.body, QByteArray());
    }

    // --- Closing, reviewing, commenting ---

    void closingAndReopeningAnswersTheChangedPullRequest()
    {
        const QString path = QStringLiteral("/api/v1/repos/ann/tool/pulls/7");
        const Answer closed = send("PATCH", path, annToken, closeBody);
        QCOMPARE(closed.status, 201);
        QCOMPARE(closed.object()[QStringLiteral("state")].toString(), QStringLiteral("closed"));
        QCOMPARE(closed.object()[QStringLiteral("closed_at")].toString(),
                 QStringLiteral("2024-06-01T12:00:00Z"));
        QCOMPARE(pull(7)[QStringLiteral("state")].toString(), QStringLiteral("closed"));
        QCOMPARE(pull(7)[QStringLiteral("merged")].toBool(), false);
        const Answer reopened = send("PATCH", path, annToken, "{\"state\":\"open\"}");
        QCOMPARE(reopened.status, 201);
        QVERIFY(reopened.object()[QStringLiteral("closed_at")].isNull());
        QCOMPARE(pull(7)[QStringLiteral("state")].toString(), QStringLiteral("open"));
    }

    void aReadAskedAgainAfterAChangeSeesTheChange()
    {
        const QString path = QStringLiteral("/api/v1/repos/ann/tool/pulls/7");
        const Answer before = get(path);
        QCOMPARE(get(path).body, before.body);
        QCOMPARE(before.object()[QStringLiteral("state")].toString(), QStringLiteral("open"));
        QCOMPARE(send("PATCH", path, annToken, closeBody).status, 201);
        QCOMPARE(get(path).object()[QStringLiteral("state")].toString(), QStringLiteral("closed"));
        const QJsonArray open =
            get(QStringLiteral("/api/v1/repos/ann/tool/pulls?state=open")).array();
        for (const QJsonValue &listed : open)
            QVERIFY(listed[QStringLiteral("number")].toInt() != 7);
    }

    void theSameReadByAnotherCallerIsAnsweredForThatCaller()
    {
        const QString privatePulls = QStringLiteral("/api/v1/repos/ann/website/pulls");
        QCOMPARE(get(privatePulls, annToken).status, 200);
        QCOMPARE(get(privatePulls, {}).status, 404);
        const QString other = QStringLiteral("https://gitea.example.net/");
        const Answer here = get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7"));
        sim->setRootUrl(other);
        const Answer there = get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7"));
        QVERIFY(!here.object()[QStringLiteral("html_url")].toString().startsWith(other));
        QVERIFY(there.object()[QStringLiteral("html_url")].toString().startsWith(other));
    }

    void closingIsRefusedAsGiteaRefusesIt()
    {
        const Answer merged = send("PATCH", QStringLiteral("/api/v1/repos/ann/tool/pulls/6"),
                                   annToken, "{\"state\":\"open\"}");
        QCOMPARE(merged.status, 412);
        QCOMPARE(merged.message(),
                 QStringLiteral("cannot change state of this pull request, it was already merged"));
        // cy only reads ann/tool, but may close a pull request of their own.
        QCOMPARE(send("PATCH", QStringLiteral("/api/v1/repos/ann/tool/pulls/7"), cyToken, closeBody)
                     .status,
                 403);
        QCOMPARE(
            send("PATCH", QStringLiteral("/api/v1/repos/ann/tool/pulls/10"), cyToken, closeBody)
                .status,
            201);
        const Answer untyped = send("PATCH", QStringLiteral("/api/v1/repos/ann/tool/pulls/7"),
                                    annToken, "{\"state\":\"closed\"}", "text/plain");
        QCOMPARE(untyped.status, 422);
        QCOMPARE(untyped.message(), QStringLiteral("[]: Unsupported Content-Type"));
        QCOMPARE(pull(7)[QStringLiteral("state")].toString(), QStringLiteral("open"));
    }

    void submittedReviewsAreAppended()
    {
        const QString path = QStringLiteral("/api/v1/repos/ann/tool/pulls/7/reviews");
        const Answer approved = send("POST", path, annToken, "{\"event\":\"APPROVED\"}");
        QCOMPARE(approved.status, 200);
        const QJsonObject review = approved.object();
        QCOMPARE(review[QStringLiteral("state")].toString(), QStringLiteral("APPROVED"));
        QCOMPARE(review[QStringLiteral("user")][QStringLiteral("login")].toString(),
                 QStringLiteral("ann"));
        QCOMPARE(review[QStringLiteral("official")].toBool(), true);
        QCOMPARE(review[QStringLiteral("commit_id")].toString(), toolHead);
        QCOMPARE(review[QStringLiteral("submitted_at")].toString(),
                 QStringLiteral("2024-06-01T12:00:00Z"));
        QCOMPARE(review[QStringLiteral("id")].toInt(), 211);

        const QByteArray changes = "{\"event\":\"REQUEST_CHANGES\",\"body\":\"Needs a test.\"}";
        QCOMPARE(send("POST", path, cyToken, changes).status, 200);
        const QJsonArray reviews = get(path).array();
        QCOMPARE(idsOf(reviews), QList<qint64>({201, 204, 205, 211, 212}));
        QCOMPARE(reviews.last()[QStringLiteral("state")].toString(),
                 QStringLiteral("REQUEST_CHANGES"));
        QCOMPARE(reviews.last()[QStringLiteral("body")].toString(),
                 QStringLiteral("Needs a test."));
        QCOMPARE(sim->reviews(QStringLiteral("ann"), QStringLiteral("tool"), 7).size(), 5);
    }

    void reviewsAreRefusedAsGiteaRefusesThem_data()
    {
        QTest::addColumn<QByteArray>("token");
        QTest::addColumn<int>("number");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("message");
        QTest::newRow("changes without a body")
            << annToken << 7 << QByteArray("{\"event\":\"REQUEST_CHANGES\"}")
            << QStringLiteral("review event REQUEST_CHANGES requires a body");
        QTest::newRow("comment with a blank body")
            << annToken << 7 << QByteArray("{\"event\":\"COMMENT\",\"body\":\"  \"}")
            << QStringLiteral("review event COMMENT requires a body or a comment");
        QTest::newRow("approving one's own")
            << boToken << 7 << QByteArray("{\"event\":\"APPROVED\"}")
            << QStringLiteral("approve your own pull is not allowed");
        QTest::newRow("rejecting one's own")
            << boToken << 7 << QByteArray("{\"event\":\"REQUEST_CHANGES\",\"body\":\"x\"}")
            << QStringLiteral("reject your own pull is not allowed");
        QTest::newRow("closed") << annToken << 5
                                << QByteArray("{\"event\":\"COMMENT\",\"body\":\"late\"}")
                                << QStringLiteral("can't submit review for a closed or merged PR");
    }

    void reviewsAreRefusedAsGiteaRefusesThem()
    {
        QFETCH(QByteArray, token);
        QFETCH(int, number);
        QFETCH(QByteArray, body);
        QFETCH(QString, message);
        const QString path = QStringLiteral("/api/v1/repos/ann/tool/pulls/%1/reviews").arg(number);
        const qsizetype before =
            sim->reviews(QStringLiteral("ann"), QStringLiteral("tool"), number).size();
        const Answer answer = send("POST", path, token, body);
        QCOMPARE(answer.status, 422);
        QCOMPARE(answer.message(), message);
        QCOMPARE(sim->reviews(QStringLiteral("ann"), QStringLiteral("tool"), number).size(),
                 before);
    }

    void aReviewAnswersTheReviewRequest()
    {
        QCOMPARE(pull(11)[QStringLiteral("requested_reviewers")].toArray().size(), 1);
        const QByteArray comment = "{\"event\":\"COMMENT\",\"body\":\"Wait for #7 to land.\"}";
        QCOMPARE(send("POST", QStringLiteral("/api/v1/repos/ann/tool/pulls/11/reviews"), annToken,
                      comment)
                     .status,
                 200);
        QCOMPARE(pull(11)[QStringLiteral("requested_reviewers")].toArray().size(), 0);
    }

    void postedCommentsAreAppended()
    {
        const QString path = QStringLiteral("/api/v1/repos/ann/tool/issues/7/comments");
        const Answer created = send("POST", path, boToken, "{\"body\":\"Merging after lunch.\"}");
        QCOMPARE(created.status, 201);
        const QJsonObject comment = created.object();
        QCOMPARE(comment[QStringLiteral("id")].toInt(), 304);
        QCOMPARE(comment[QStringLiteral("user")][QStringLiteral("login")].toString(),
                 QStringLiteral("bo"));
        QCOMPARE(comment[QStringLiteral("body")].toString(),
                 QStringLiteral("Merging after lunch."));
        QCOMPARE(comment[QStringLiteral("created_at")].toString(),
                 QStringLiteral("2024-06-01T12:00:00Z"));
        QCOMPARE(idsOf(get(path).array()), QList<qint64>({301, 302, 304}));
        QCOMPARE(pull(7)[QStringLiteral("comments")].toInt(), 3);
        QCOMPARE(pull(7)[QStringLiteral("updated_at")].toString(),
                 QStringLiteral("2024-06-01T12:00:00Z"));
        QCOMPARE(sim->comments(QStringLiteral("ann"), QStringLiteral("tool"), 7).size(), 3);

        const Answer empty = send("POST", path, boToken, "{\"body\":\"\"}");
        QCOMPARE(empty.status, 422);
        QCOMPARE(empty.message(), QStringLiteral("[Body]: Required"));
        const QByteArray hello = "{\"body\":\"hello\"}";
        QCOMPARE(send("POST", QStringLiteral("/api/v1/repos/ann/tool/issues/70/comments"), boToken,
                      hello)
                     .status,
                 404);
    }

    void textIsEscapedAsGoEscapesIt()
    {
        const Answer created =
            send("POST", QStringLiteral("/api/v1/repos/ann/tool/issues/7/comments"), annToken,
                 "{\"body\":\"a <b> & c\"}");
        const QByteArray escaped = "\"body\":\"a \\u003cb\\u003e \\u0026 c\"";
        QVERIFY(created.body.contains(escaped));
        QCOMPARE(created.object()[QStringLiteral("body")].toString(), QStringLiteral("a <b> & c"));
    }

    // --- Branches and runs ---

    void branchesAreDeletedByTheirOnceEncodedName()
    {
        const QString path = QStringLiteral("/api/v1/repos/ann/tool/branches/feature/new%20ui");
        const Answer deleted = send("DELETE", path);
        QCOMPARE(deleted.status, 204);
        QCOMPARE(server->requests().last().rawPath,
                 QByteArray("/api/v1/repos/ann/tool/branches/feature/new%20ui"));
        QVERIFY(!sim->branchExists(QStringLiteral("ann"), QStringLiteral("tool"),
                                   QStringLiteral("feature/new ui")));
        const Answer again = send("DELETE", path);
        QCOMPARE(again.status, 404);
        QCOMPARE(again.object(),
                 QJsonObject({{QStringLiteral("errors"),
                               QJsonArray({"branch does not exist [name: feature/new ui]"})},
                              {QStringLiteral("message"), QStringLiteral("not found")},
                              {QStringLiteral("url"), swagger()}}));
    }

    void aTwiceEncodedBranchNameIsAnotherBranch()
    {
        QCOMPARE(
            send("DELETE", QStringLiteral("/api/v1/repos/ann/tool/branches/feature/new%2520ui"))
                .status,
            404);
        QVERIFY(sim->branchExists(QStringLiteral("ann"), QStringLiteral("tool"),
                                  QStringLiteral("feature/new ui")));
    }

    void protectedDefaultAndForeignBranchesStay()
    {
        const Answer defaultBranch =
            send("DELETE", QStringLiteral("/api/v1/repos/ann/tool/branches/main"));
        QCOMPARE(defaultBranch.status, 403);
        QCOMPARE(defaultBranch.message(), QStringLiteral("can not delete default branch"));
        const Answer protectedBranch =
            send("DELETE", QStringLiteral("/api/v1/repos/ann/tool/branches/release/1.x"));
        QCOMPARE(protectedBranch.status, 403);
        QCOMPARE(protectedBranch.message(), QStringLiteral("branch protected"));
        const Answer reader =
            send("DELETE", QStringLiteral("/api/v1/repos/ann/tool/branches/retry-upload"), cyToken);
        QCOMPARE(reader.status, 403);
        QCOMPARE(reader.message(),
                 QStringLiteral("user should have a permission to write to a repo"));
        for (const QString &branch : {QStringLiteral("main"), QStringLiteral("release/1.x"),
                                      QStringLiteral("retry-upload")})
            QVERIFY(sim->branchExists(QStringLiteral("ann"), QStringLiteral("tool"), branch));
    }

    void rerunPutsTheRunAndItsJobsBackInTheQueue()
    {
        const Answer answer =
            send("POST", QStringLiteral("/api/v1/repos/ann/tool/actions/runs/39/rerun"));
        QCOMPARE(answer.status, 201);
        const QJsonObject run = answer.object();
        QCOMPARE(run[QStringLiteral("id")].toInt(), 39);
        QCOMPARE(run[QStringLiteral("status")].toString(), QStringLiteral("queued"));
        QVERIFY(!run.contains(QStringLiteral("conclusion")));
        QCOMPARE(run[QStringLiteral("run_attempt")].toInt(), 2);
        QCOMPARE(sim->run(QStringLiteral("ann"), QStringLiteral("tool"), 39)
                     ->value(QStringLiteral("status")),
                 QJsonValue(QStringLiteral("queued")));
        for (const QJsonValue &job : sim->jobs(QStringLiteral("ann"), QStringLiteral("tool"), 39)) {
            QCOMPARE(job[QStringLiteral("status")].toString(), QStringLiteral("queued"));
            QVERIFY(!job.toObject().contains(QStringLiteral("conclusion")));
            QCOMPARE(job[QStringLiteral("steps")].toArray().size(), 0);
        }
        QCOMPARE(get(QStringLiteral("/api/v1/repos/ann/tool/actions/jobs/98/logs")).status, 404);
    }

    void rerunIsRefusedForRunningUnknownAndForeignRuns()
    {
        const Answer running =
            send("POST", QStringLiteral("/api/v1/repos/ann/tool/actions/runs/43/rerun"));
        QCOMPARE(running.status, 400);
        QCOMPARE(running.message(), QStringLiteral("this workflow run is not done"));
        QCOMPARE(
            send("POST", QStringLiteral("/api/v1/repos/ann/tool/actions/runs/9999/rerun")).status,
            404);
        QCOMPARE(
            send("POST", QStringLiteral("/api/v1/repos/ann/tool/actions/runs/41/rerun"), cyToken)
                .status,
            403);
        QCOMPARE(sim->run(QStringLiteral("ann"), QStringLiteral("tool"), 41)
                     ->value(QStringLiteral("conclusion")),
                 QJsonValue(QStringLiteral("success")));
    }

    // --- Errors, archives and the path prefix ---

    void notFoundAnswersHaveGiteasShape()
    {
        const QJsonObject plain{{QStringLiteral("errors"), QJsonValue::Null},
                                {QStringLiteral("message"), QStringLiteral("not found")},
                                {QStringLiteral("url"), swagger()}};
        for (const QString &path :
             {QStringLiteral("/api/v1/repos/ann/nothing/pulls"),
              QStringLiteral("/api/v1/repos/ann/tool/pulls/404"),
              QStringLiteral("/api/v1/repos/ann/tool/actions/runs/404/jobs")}) {
            const Answer answer = get(path);
            QCOMPARE(answer.status, 404);
            QCOMPARE(answer.object(), plain);
            QVERIFY(answer.body.contains("\"errors\":null"));
        }
        const Answer owner = get(QStringLiteral("/api/v1/repos/nobody/tool/pulls"));
        QCOMPARE(owner.status, 404);
        QCOMPARE(owner.message(), QStringLiteral("GetUserByName"));
        QCOMPARE(owner.object()[QStringLiteral("errors")].toArray(),
                 QJsonArray({"user redirect does not exist [name: nobody]"}));
        // A private repository is as missing as an unknown one to someone without access.
        QCOMPARE(get(QStringLiteral("/api/v1/repos/ann/website/pulls"), cyToken).object(), plain);
        QCOMPARE(get(QStringLiteral("/api/v1/repos/ann/website/pulls/3")).status, 200);
    }

    void anArchivedRepositoryIsReadOnly()
    {
        QCOMPARE(get(QStringLiteral("/api/v1/repos/cy/infra/pulls/2")).status, 200);
        const Answer comment =
            send("POST", QStringLiteral("/api/v1/repos/cy/infra/issues/2/comments"), annToken,
                 "{\"body\":\"ping\"}");
        QCOMPARE(comment.status, 423);
        QCOMPARE(comment.message(), QStringLiteral("<Repository 21:cy/infra> is archived"));
        QCOMPARE(sim->comments(QStringLiteral("cy"), QStringLiteral("infra"), 2).size(), 0);
    }

    void anInstanceBelowASubPathAnswersThere()
    {
        sim = std::make_unique<GiteaSimulation>(fixtures::read(QStringLiteral("gitea/seed.json")));
        sim->install(server, QStringLiteral("/gitea/"));
        QCOMPARE(sim->rootUrl(), server->baseUrl().toString() + QStringLiteral("/gitea/"));
        QCOMPARE(get(QStringLiteral("/api/v1/user")).status, 404);
        const Answer answer = get(QStringLiteral("/gitea/api/v1/user/repos?limit=1"));
        QCOMPARE(answer.status, 200);
        QCOMPARE(answer.header("Link").left(answer.header("Link").indexOf(',')),
                 "<" + sim->rootUrl().toUtf8() + "api/v1/user/repos?limit=1&page=2>; rel=\"next\"");
        QCOMPARE(answer.array().first()[QStringLiteral("html_url")].toString(),
                 server->baseUrl().toString() + QStringLiteral("/gitea/cy/infra"));
        QCOMPARE(get(QStringLiteral("/gitea/api/v1/repos/ann/nothing/pulls"))
                     .object()[QStringLiteral("url")]
                     .toString(),
                 server->baseUrl().toString() + QStringLiteral("/gitea/api/swagger"));
    }

    void linksAndAddressesNameTheConfiguredRootUrl()
    {
        // A Gitea behind a proxy: requests come in on the test server, yet everything the
        // instance writes names its ROOT_URL.
        sim->setRootUrl(QStringLiteral("https://proxy.example:8443/git/"));
        QCOMPARE(sim->rootUrl(), QStringLiteral("https://proxy.example:8443/git/"));
        const Answer files = get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7/files?limit=3"));
        QCOMPARE(files.status, 200);
        QCOMPARE(linksOf(files.header("Link")).value(QStringLiteral("next")),
                 QStringLiteral("https://proxy.example:8443/git/api/v1/repos/ann/tool/pulls/7/"
                                "files?limit=3&page=2"));
        const Answer runs = get(QStringLiteral("/api/v1/repos/ann/tool/actions/runs?limit=2"));
        QVERIFY(runs.header("Link").startsWith(
            "<https://proxy.example:8443/git/api/v1/repos/ann/tool/actions/runs?limit=2&page=2>"));
        QCOMPARE(get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7"))
                     .object()[QStringLiteral("html_url")]
                     .toString(),
                 QStringLiteral("https://proxy.example:8443/git/ann/tool/pulls/7"));
        QCOMPARE(get(QStringLiteral("/api/v1/repos/ann/tool/pulls/404"))
                     .object()[QStringLiteral("url")]
                     .toString(),
                 QStringLiteral("https://proxy.example:8443/git/api/swagger"));
        QCOMPARE(
            sim->pullRequest(QStringLiteral("ann"), QStringLiteral("tool"), 7)
                ->value(QStringLiteral("base"))[QStringLiteral("repo")][QStringLiteral("ssh_url")]
                .toString(),
            QStringLiteral("git@proxy.example:ann/tool.git"));
        // Reloading the seed keeps the configuration, as a restart keeps app.ini.
        QVERIFY(sim->loadSeed(fixtures::read(QStringLiteral("gitea/seed.json"))));
        QCOMPARE(sim->rootUrl(), QStringLiteral("https://proxy.example:8443/git/"));

        // Kept as Gitea keeps it: one trailing "/", no default port.
        sim->setRootUrl(QStringLiteral("https://proxy.example:8443/git"));
        QCOMPARE(sim->rootUrl(), QStringLiteral("https://proxy.example:8443/git/"));
        sim->setRootUrl(QStringLiteral("https://git.example.org:443//"));
        QCOMPARE(sim->rootUrl(), QStringLiteral("https://git.example.org/"));
        sim->setRootUrl(QStringLiteral("http://git.example.org:80"));
        QCOMPARE(sim->rootUrl(), QStringLiteral("http://git.example.org/"));
        // Unset, the instance names the address it listens on again.
        sim->setRootUrl(QString());
        QCOMPARE(sim->rootUrl(), server->baseUrl().toString() + u'/');
        QVERIFY(get(QStringLiteral("/api/v1/repos/ann/tool/pulls/7/files?limit=3"))
                    .header("Link")
                    .startsWith("<" + server->baseUrl().toString().toUtf8() + "/api/v1/"));
    }

    void theSeedCanNameTheRootUrl()
    {
        QJsonObject seed =
            QJsonDocument::fromJson(fixtures::read(QStringLiteral("gitea/seed.json"))).object();
        seed.insert(QStringLiteral("instance"),
                    QJsonObject{{QStringLiteral("root_url"),
                                 QStringLiteral("https://git.example.org/sub")}});
        useSeed(QJsonDocument(seed).toJson(QJsonDocument::Compact));
        QCOMPARE(sim->rootUrl(), QStringLiteral("https://git.example.org/sub/"));
        QCOMPARE(linksOf(get(QStringLiteral("/api/v1/user/repos?limit=1")).header("Link"))
                     .value(QStringLiteral("next")),
                 QStringLiteral("https://git.example.org/sub/api/v1/user/repos?limit=1&page=2"));
        // Set in code, ROOT_URL wins over the seed's.
        sim->setRootUrl(QStringLiteral("https://proxy.example/"));
        QCOMPARE(sim->rootUrl(), QStringLiteral("https://proxy.example/"));
    }

    void theRoutesGoWithTheSimulation()
    {
        QCOMPARE(get(QStringLiteral("/api/v1/user")).status, 200);
        sim.reset();
        QCOMPARE(get(QStringLiteral("/api/v1/user")).status, 404);
    }
};

QTEST_GUILESS_MAIN(TestGiteaSimulation)
#include "tst_giteasimulation.moc"
