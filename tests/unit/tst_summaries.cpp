// The CI and review summaries shared by the inbox, the detail screen and the background check.

#include "summaries.h"

#include <QtTest>

using namespace kestrine;

namespace {

ActionRun run(const char *status, const char *conclusion)
{
    ActionRun r;
    if (status)
        r.status = QString::fromLatin1(status);
    if (conclusion)
        r.conclusion = QString::fromLatin1(conclusion);
    return r;
}

ActionRun concluded(const char *conclusion)
{
    return run("completed", conclusion);
}

ActionJob job(const char *status, const char *conclusion)
{
    ActionJob j;
    j.status = QString::fromLatin1(status);
    if (conclusion)
        j.conclusion = QString::fromLatin1(conclusion);
    return j;
}

QList<PullReview> reviews(std::initializer_list<const char *> states)
{
    QList<PullReview> list;
    for (const char *state : states)
        list.append(PullReview{list.size() + 1, QString::fromLatin1(state), {}, {}, {}});
    return list;
}

} // namespace

class TestSummaries : public QObject
{
    Q_OBJECT

private slots:
    void firstDecidingRunWinsAndSuccessNeedsNoDecidingRun()
    {
        QCOMPARE(CIStatus::from({concluded("success"), concluded("failure")}), CIStatus::Failure);
        QCOMPARE(CIStatus::from({concluded("failure"), concluded("success")}), CIStatus::Failure);
        QCOMPARE(CIStatus::from({concluded("success"), concluded("skipped")}), CIStatus::Success);
        QCOMPARE(CIStatus::from({concluded("skipped")}), CIStatus::Unknown);
        QCOMPARE(CIStatus::from({}), CIStatus::Unknown);
    }

    void inProgressIsGiteasWordForARunningRunOrJob()
    {
        // Gitea reports an executing run or job as "in_progress", never as "running".
        QCOMPARE(CIStatus::from({run("in_progress", nullptr)}), CIStatus::Running);
        QCOMPARE(CIStatus::from({concluded("success"), run("IN_PROGRESS", nullptr)}),
                 CIStatus::Running);
        QCOMPARE(CIStatus::from({run("In_Progress", nullptr), concluded("failure")}),
                 CIStatus::Running);
        QCOMPARE(CIStatus::forRun(run("in_progress", "failure")), CIStatus::Running);
        QCOMPARE(CIStatus::forJob(job("in_progress", nullptr)), CIStatus::Running);
        QCOMPARE(CIStatus::forJob(job("In_Progress", "success")), CIStatus::Running);
    }

    void jobInProgressHasNotRunAndHasNoLog()
    {
        QVERIFY(!CIStatus::jobHasRun(job("in_progress", "success")));
        QVERIFY(!CIStatus::jobHasRun(job("IN_PROGRESS", "failure")));
        QVERIFY(!CIStatus::jobHasRun(job("running", "success")));
        QVERIFY(!CIStatus::jobHasRun(job("queued", "success")));
        QVERIFY(!CIStatus::jobHasRun(job("waiting", "failure")));
        QVERIFY(!CIStatus::jobHasRun(job("requested", "success")));
        QVERIFY(!CIStatus::jobHasRun(job("completed", nullptr)));
        QVERIFY(CIStatus::jobHasRun(job("completed", "success")));
        // Still failed, so it can be re-run, while it shows no log.
        QVERIFY(CIStatus::jobFailed(job("waiting", "failure")));
        QVERIFY(CIStatus::jobFailed(job("completed", "CANCELLED")));
        QVERIFY(!CIStatus::jobFailed(job("completed", "skipped")));
    }

    void runStillWaitingInAnyLetterCaseIsRunning()
    {
        QCOMPARE(CIStatus::from({run("Waiting", nullptr)}), CIStatus::Running);
        QCOMPARE(CIStatus::from({run("QUEUED", nullptr), concluded("failure")}), CIStatus::Running);
        QCOMPARE(CIStatus::from({concluded("cancelled"), run("running", nullptr)}),
                 CIStatus::Cancelled);
        QCOMPARE(CIStatus::forRun(run("waiting", nullptr)), CIStatus::Running);
    }

    void waitingJobWithoutConclusionIsUnknownNotRunning()
    {
        QCOMPARE(CIStatus::forJob(job("waiting", nullptr)), CIStatus::Unknown);
        QCOMPARE(CIStatus::forJob(job("waiting", "success")), CIStatus::Success);
        QCOMPARE(CIStatus::forJob(job("Running", "failure")), CIStatus::Running);
        QCOMPARE(CIStatus::forJob(job("queued", nullptr)), CIStatus::Running);
        QCOMPARE(CIStatus::forJob(job("completed", "skipped")), CIStatus::Unknown);
    }

    void upperCaseCancelledConclusionIsCancelled()
    {
        QCOMPARE(CIStatus::from({concluded("CANCELLED")}), CIStatus::Cancelled);
        QCOMPARE(CIStatus::forRun(concluded("CANCELLED")), CIStatus::Cancelled);
        QCOMPARE(CIStatus::forJob(job("completed", "CANCELLED")), CIStatus::Cancelled);
    }

    void runWithoutStatusOrConclusionDecidesNothing()
    {
        QCOMPARE(CIStatus::from({run(nullptr, nullptr)}), CIStatus::Unknown);
        QCOMPARE(CIStatus::from({run(nullptr, nullptr), concluded("success")}), CIStatus::Success);
        QCOMPARE(CIStatus::forRun(run(nullptr, "failure")), CIStatus::Failure);
        // The in-progress test goes first, so a stale conclusion does not count.
        QCOMPARE(CIStatus::forRun(run("running", "success")), CIStatus::Running);
    }

    void earliestDecidingReviewWins()
    {
        QCOMPARE(ReviewState::from(reviews({"COMMENT", "APPROVED", "REQUEST_CHANGES"})),
                 ReviewState::Approved);
        QCOMPARE(ReviewState::from(reviews({"REQUEST_CHANGES", "APPROVED"})),
                 ReviewState::ChangesRequested);
        QCOMPARE(ReviewState::from(reviews({"COMMENT"})), ReviewState::NeedsReview);
        QCOMPARE(ReviewState::from(reviews({"PENDING", "REQUEST_REVIEW"})),
                 ReviewState::NeedsReview);
        QCOMPARE(ReviewState::from({}), ReviewState::Unknown);
    }

    void lowerCaseApprovedStillApproves()
    {
        QCOMPARE(ReviewState::from(reviews({"approved"})), ReviewState::Approved);
        QCOMPARE(ReviewState::from(reviews({"comment", "request_changes"})),
                 ReviewState::ChangesRequested);
    }

    void statusNamesRoundTrip()
    {
        const QStringList names{"running", "success", "failure", "cancelled", "unknown"};
        for (const QString &name : names)
            QCOMPARE(CIStatus::name(*CIStatus::fromName(name)), name);
        QCOMPARE(CIStatus::name(CIStatus::Failure), QStringLiteral("failure"));
        QVERIFY(!CIStatus::fromName(QStringLiteral("Failure")));
        QVERIFY(!CIStatus::fromName(QString()));
    }
};

QTEST_GUILESS_MAIN(TestSummaries)
#include "tst_summaries.moc"
