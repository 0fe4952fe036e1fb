// The built-in demo instance: its seed loads, its times are moved to the present, and the app's
// own client can sign in and read what the screens show.

#include "demoinstance.h"
#include "giteaclient.h"
#include "outcome.h"
#include "rawanswer.h"
#include "weblinks.h"

#include <QCoroNetworkReply>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QtTest>

using namespace kestrine;
using kestrine::testing::runToEnd;

namespace {

/// Every "...Z" time text in the seed, in document order.
void collectTimes(const QJsonValue &value, QList<QDateTime> &times)
{
    if (value.isString()) {
        const QString text = value.toString();
        if (text.size() == 20 && text.endsWith(u'Z') && text.at(10) == u'T')
            times.append(QDateTime::fromString(text, Qt::ISODate));
    } else if (value.isArray()) {
        for (const QJsonValue &item : value.toArray())
            collectTimes(item, times);
    } else if (value.isObject()) {
        const QJsonObject object = value.toObject();
        for (auto it = object.begin(); it != object.end(); ++it)
            collectTimes(it.value(), times);
    }
}

QList<QDateTime> timesOf(const QByteArray &seed)
{
    QList<QDateTime> times;
    collectTimes(QJsonDocument::fromJson(seed).object(), times);
    return times;
}

using Answer = kestrine::testing::RawAnswer;

/// A raw request to the demo instance as its user, `pathAndQuery` below its address.
Answer get(const DemoInstance &demo, const QString &pathAndQuery)
{
    QNetworkAccessManager session;
    QNetworkRequest request(QUrl(demo.url().toString() + pathAndQuery, QUrl::TolerantMode));
    request.setRawHeader("Authorization", "token " + demo.token().toUtf8());
    std::unique_ptr<QNetworkReply> reply(session.get(request));
    QCoro::waitFor(qCoro(reply.get()).waitForFinished());
    return Answer::of(*reply);
}

/// The target of the `rel` link in a "Link" header; empty when there is none.
QString linkTo(const QByteArray &header, const char *rel)
{
    const std::optional<QUrl> target =
        linkTarget(parseLinkHeader(header, QUrl()), QString::fromLatin1(rel));
    return target ? target->toString(QUrl::FullyEncoded) : QString();
}

} // namespace

class TestDemoInstance : public QObject
{
    Q_OBJECT

private slots:
    void theSeedMovesEveryTimeBySameAmount()
    {
        const QDateTime now = QDateTime::currentDateTimeUtc();
        const QList<QDateTime> original = timesOf(DemoInstance::seed(DemoInstance::referenceTime));
        const QList<QDateTime> moved = timesOf(DemoInstance::seed(now));
        QVERIFY(original.size() > 50);
        QCOMPARE(moved.size(), original.size());
        const qint64 shift = DemoInstance::referenceTime.secsTo(now);
        for (qsizetype i = 0; i < original.size(); ++i)
            QCOMPARE(original.at(i).secsTo(moved.at(i)), shift);
        // Nothing in the sample data lies in the future of its "now".
        for (const QDateTime &time : original)
            QVERIFY2(time <= DemoInstance::referenceTime, qPrintable(time.toString(Qt::ISODate)));
    }

    void startsAndServesTheSampleData()
    {
        DemoInstance demo;
        QVERIFY2(demo.start(), qPrintable(demo.errorString()));
        QCOMPARE(demo.url().host(), QStringLiteral("127.0.0.1"));
        QVERIFY(!demo.url().path().endsWith(u'/'));
        QVERIFY(!demo.token().isEmpty());

        HttpSession session;
        const GiteaClient client(demo.url(), demo.token(), &session, nullptr);
        const auto user = runToEnd(client.currentUser());
        QVERIFY(user.value);
        QCOMPARE(user.value->login, QStringLiteral("maja"));

        const auto repos = runToEnd(client.repos());
        QVERIFY(repos.value);
        QVERIFY(repos.value->size() >= 5);

        const auto pulls =
            runToEnd(client.pullRequests(QStringLiteral("norrum"), QStringLiteral("harbor")));
        QVERIFY(pulls.value);
        QVERIFY(pulls.value->size() >= 3);
        // Moved to the present: the newest pull request was updated minutes ago, not in 2024.
        QDateTime newest;
        for (const PullRequest &pr : *pulls.value) {
            if (pr.updatedAt && (!newest.isValid() || *pr.updatedAt > newest))
                newest = *pr.updatedAt;
        }
        const qint64 age = newest.secsTo(QDateTime::currentDateTimeUtc());
        QVERIFY2(age >= 0 && age < 3600, qPrintable(QString::number(age)));

        // Runs that pass, fail and are under way, and a job log with colour codes.
        QSet<QString> outcomes;
        for (const PullRequest &pr : *pulls.value) {
            const auto runs =
                runToEnd(client.runs(QStringLiteral("norrum"), QStringLiteral("harbor"),
                                     pr.head.value_or(Branch{}).sha.value_or(QString())));
            QVERIFY(runs.value);
            for (const ActionRun &run : *runs.value)
                outcomes.insert(run.conclusion.value_or(run.status.value_or(QString())));
        }
        QVERIFY(outcomes.contains(QStringLiteral("success")));
        QVERIFY(outcomes.contains(QStringLiteral("failure")));
        QVERIFY(outcomes.contains(QStringLiteral("in_progress")));
        const auto log =
            runToEnd(client.jobLogs(QStringLiteral("norrum"), QStringLiteral("harbor"), 1181));
        QVERIFY(log.value);
        QVERIFY(log.value->contains(QStringLiteral("\x1b[31m")));

        const auto diff =
            runToEnd(client.diff(QStringLiteral("norrum"), QStringLiteral("harbor"), 142));
        QVERIFY(diff.value);
        QVERIFY(diff.value->contains(QStringLiteral("+++ b/fetcher/fetcher.go")));
    }

    void theTranslationsPullRequestHasTwoPagesOfFiles()
    {
        DemoInstance demo;
        QVERIFY2(demo.start(), qPrintable(demo.errorString()));
        const QString pull = QStringLiteral("/api/v1/repos/norrum/kestrel-web/pulls/64");

        const Answer first = get(demo, pull + QStringLiteral("/files"));
        QCOMPARE(first.status, 200);
        const QJsonArray firstPage = QJsonDocument::fromJson(first.body).array();
        QCOMPARE(firstPage.size(), 30);
        const qsizetype total = first.header("X-Total-Count").toInt();
        QVERIFY2(total > 30 && total <= 40, first.header("X-Total-Count").constData());
        const QString next = linkTo(first.header("Link"), "next");
        QVERIFY2(next.startsWith(demo.url().toString() + pull + QStringLiteral("/files?")),
                 qPrintable(next));

        const Answer second = get(demo, next.mid(demo.url().toString().size()));
        QCOMPARE(second.status, 200);
        const QJsonArray secondPage = QJsonDocument::fromJson(second.body).array();
        QCOMPARE(firstPage.size() + secondPage.size(), total);
        QVERIFY(linkTo(second.header("Link"), "next").isEmpty());

        // What the pull request says of itself agrees, and its diff has a section for each file.
        const QJsonObject pr = QJsonDocument::fromJson(get(demo, pull).body).object();
        QCOMPARE(pr.value(QStringLiteral("changed_files")).toInteger(), total);
        const QByteArray diff = get(demo, pull + QStringLiteral(".diff")).body;
        QCOMPARE(diff.count("diff --git "), total);
        QSet<QString> names;
        for (const QJsonArray &page : {firstPage, secondPage}) {
            for (const QJsonValue &file : page) {
                const QByteArray name = file[QStringLiteral("filename")].toString().toUtf8();
                names.insert(QString::fromUtf8(name));
                QVERIFY2(diff.contains("diff --git a/" + name + " b/" + name + '\n'),
                         name.constData());
            }
        }
        QCOMPARE(names.size(), total);
    }

    void oneRunIsStillInProgress()
    {
        DemoInstance demo;
        QVERIFY2(demo.start(), qPrintable(demo.errorString()));
        const QString repo = QStringLiteral("/api/v1/repos/norrum/harbor");
        const QJsonObject pr =
            QJsonDocument::fromJson(get(demo, repo + QStringLiteral("/pulls/145")).body).object();
        const QString head = pr[QStringLiteral("head")][QStringLiteral("sha")].toString();
        const QJsonArray runs =
            QJsonDocument::fromJson(
                get(demo, repo + QStringLiteral("/actions/runs?head_sha=") + head).body)
                .object()[QStringLiteral("workflow_runs")]
                .toArray();
        QCOMPARE(runs.size(), 1);
        const QJsonObject run = runs.first().toObject();
        QCOMPARE(run[QStringLiteral("status")].toString(), QStringLiteral("in_progress"));
        QVERIFY(!run.contains(QStringLiteral("conclusion")));

        const QJsonArray jobs =
            QJsonDocument::fromJson(
                get(demo, repo + QStringLiteral("/actions/runs/%1/jobs")
                                     .arg(run[QStringLiteral("id")].toInteger()))
                    .body)
                .object()[QStringLiteral("jobs")]
                .toArray();
        QStringList states;
        for (const QJsonValue &job : jobs) {
            states.append(job[QStringLiteral("status")].toString() + u'/' +
                          job[QStringLiteral("conclusion")].toString());
        }
        QCOMPARE(states, QStringList({"completed/success", "in_progress/", "queued/"}));
        // The running job's log so far can be read.
        const Answer log = get(demo, repo + QStringLiteral("/actions/jobs/%1/logs")
                                                .arg(jobs.at(1)[QStringLiteral("id")].toInteger()));
        QCOMPARE(log.status, 200);
        QVERIFY(!log.body.contains("Job succeeded"));
    }

    void runsAndJobsSayOnlyWhatGiteaSays()
    {
        // Gitea's own words for where a run or job stands: "running" is never one of them.
        DemoInstance demo;
        QVERIFY2(demo.start(), qPrintable(demo.errorString()));
        const QStringList statuses{QStringLiteral("queued"), QStringLiteral("waiting"),
                                   QStringLiteral("in_progress"), QStringLiteral("completed")};
        QSet<QString> seen;
        int jobCount = 0;
        for (const QString &repo : {QStringLiteral("harbor"), QStringLiteral("kestrel-web"),
                                    QStringLiteral("infra"), QStringLiteral("docs")}) {
            const QString base = QStringLiteral("/api/v1/repos/norrum/") + repo;
            const QJsonArray runs =
                QJsonDocument::fromJson(get(demo, base + QStringLiteral("/actions/runs")).body)
                    .object()[QStringLiteral("workflow_runs")]
                    .toArray();
            for (const QJsonValue &run : runs) {
                seen.insert(run[QStringLiteral("status")].toString());
                const QJsonArray jobs =
                    QJsonDocument::fromJson(
                        get(demo, base + QStringLiteral("/actions/runs/%1/jobs")
                                             .arg(run[QStringLiteral("id")].toInteger()))
                            .body)
                        .object()[QStringLiteral("jobs")]
                        .toArray();
                for (const QJsonValue &job : jobs) {
                    seen.insert(job[QStringLiteral("status")].toString());
                    for (const QJsonValue &step : job[QStringLiteral("steps")].toArray())
                        seen.insert(step[QStringLiteral("status")].toString());
                    ++jobCount;
                }
            }
        }
        QVERIFY(jobCount > 10);
        for (const QString &status : seen)
            QVERIFY2(statuses.contains(status), qPrintable(status));
        QVERIFY(seen.contains(QStringLiteral("in_progress")));
    }

    void refusesAStrangerToken()
    {
        DemoInstance demo;
        QVERIFY(demo.start());
        HttpSession session;
        const GiteaClient client(demo.url(), QStringLiteral("not-the-demo-token"), &session,
                                 nullptr);
        const auto user = runToEnd(client.currentUser());
        QVERIFY(!user.value);
    }
};

QTEST_GUILESS_MAIN(TestDemoInstance)
#include "tst_demoinstance.moc"
