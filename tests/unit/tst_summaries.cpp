// The CI and review summaries shared by the inbox, the detail screen and the background check,
// and the words one review, run or author is shown with on the screen and by kestrine-cli.

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

QList<CommitStatus> statuses(std::initializer_list<const char *> states)
{
    QList<CommitStatus> list;
    for (const char *state : states) {
        CommitStatus status;
        status.id = list.size() + 1;
        status.status = QString::fromLatin1(state);
        list.append(status);
    }
    return list;
}

CommitStatus targeting(const QString &targetUrl)
{
    CommitStatus status;
    status.status = QStringLiteral("success");
    status.targetUrl = targetUrl;
    return status;
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

    void statusesWithAFailureOrErrorFailWhateverElseTheyHold()
    {
        QCOMPARE(CIStatus::fromStatuses(statuses({"success", "pending", "failure"})),
                 CIStatus::Failure);
        QCOMPARE(CIStatus::fromStatuses(statuses({"error", "success"})), CIStatus::Failure);
        QCOMPARE(CIStatus::fromStatuses(statuses({"warning", "FAILURE"})), CIStatus::Failure);
    }

    void statusesWithAPendingOneAndNoFailureAreRunning()
    {
        QCOMPARE(CIStatus::fromStatuses(statuses({"success", "pending"})), CIStatus::Running);
        QCOMPARE(CIStatus::fromStatuses(statuses({"warning", "Pending"})), CIStatus::Running);
    }

    void statusesThatAllSucceededOrWarnedSucceed()
    {
        QCOMPARE(CIStatus::fromStatuses(statuses({"success"})), CIStatus::Success);
        QCOMPARE(CIStatus::fromStatuses(statuses({"success", "warning"})), CIStatus::Success);
        QCOMPARE(CIStatus::fromStatuses(statuses({"warning"})), CIStatus::Success);
    }

    void noStatusesOrAWordNoCISendsTellNothing()
    {
        QCOMPARE(CIStatus::fromStatuses({}), CIStatus::Unknown);
        QCOMPARE(CIStatus::fromStatuses(statuses({"success", "skipped"})), CIStatus::Unknown);
        QCOMPARE(CIStatus::fromStatuses({CommitStatus{}}), CIStatus::Unknown);
    }

    void oneStatusCircleIsGreenRedOrangeOrGrey()
    {
        const QList<CommitStatus> all =
            statuses({"success", "failure", "error", "pending", "warning", "skipped"});
        QList<CIStatus::Value> circles;
        for (const CommitStatus &status : all)
            circles.append(CIStatus::forStatus(status));
        const QList<CIStatus::Value> expected{CIStatus::Success, CIStatus::Failure,
                                              CIStatus::Failure, CIStatus::Running,
                                              CIStatus::Running, CIStatus::Unknown};
        QCOMPARE(circles, expected);
    }

    void actionsOwnStatusesAreToldByTheirPathWhateverTheHost()
    {
        Repository repo;
        repo.owner.login = QStringLiteral("ann");
        repo.name = QStringLiteral("tool");
        const QList<CommitStatus> all{
            // Actions, written with another host than the one typed, and under a sub-path.
            targeting(QStringLiteral("https://git.internal:3000/ann/tool/actions/runs/12/jobs/0")),
            targeting(QStringLiteral("https://example.org/gitea/Ann/Tool/actions/runs/3")),
            // Other CI, and look-alikes that are not this repository's Actions pages.
            targeting(QStringLiteral("https://ci.example.org/ann/tool/123")),
            targeting(QStringLiteral("https://git.example.org/bob/tool/actions/runs/4")),
            targeting(QStringLiteral("https://git.example.org/xann/tool/actions/runs/5")),
            targeting(QStringLiteral("https://ci.example.org/?next=/ann/tool/actions/runs/6")),
            CommitStatus{},
        };
        const QList<CommitStatus> others = CIStatus::otherThanActions(all, repo);
        QCOMPARE(others, all.mid(2));
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

    void reviewBadgeHasAWordForEveryStateButUnknown()
    {
        QCOMPARE(ReviewState::badgeText(ReviewState::Approved), QStringLiteral("Approved"));
        QCOMPARE(ReviewState::badgeText(ReviewState::ChangesRequested), QStringLiteral("Changes"));
        QCOMPARE(ReviewState::badgeText(ReviewState::NeedsReview), QStringLiteral("Needs review"));
        QCOMPARE(ReviewState::badgeText(ReviewState::Unknown), QString());
    }

    void reviewVerdictGivesEachStateItsEmojiAndVerb_data()
    {
        QTest::addColumn<QString>("state");
        QTest::addColumn<int>("verdict");
        QTest::addColumn<QString>("line");
        QTest::newRow("approved") << "APPROVED" << int(ReviewState::Approved) << "✅ alice approved";
        QTest::newRow("approved, lower case")
            << "approved" << int(ReviewState::Approved) << "✅ alice approved";
        QTest::newRow("changes requested")
            << "REQUEST_CHANGES" << int(ReviewState::ChangesRequested)
            << "🔴 alice requested changes";
        QTest::newRow("comment") << "COMMENT" << int(ReviewState::NeedsReview)
                                 << "💬 alice reviewed";
        QTest::newRow("pending") << "PENDING" << int(ReviewState::NeedsReview)
                                 << "💬 alice reviewed";
        QTest::newRow("empty") << "" << int(ReviewState::NeedsReview) << "💬 alice reviewed";
    }

    void reviewVerdictGivesEachStateItsEmojiAndVerb()
    {
        QFETCH(QString, state);
        QFETCH(int, verdict);
        QFETCH(QString, line);
        const ReviewVerdict found = ReviewVerdict::of(PullReview{1, state, {}, {}, {}});
        QCOMPARE(int(found.state), verdict);
        QCOMPARE(found.line(QStringLiteral("alice")), line);
        QCOMPARE(found.emoji + QStringLiteral(" alice ") + found.verb, line);
    }

    void authorWithoutAUserIsUnknown()
    {
        QCOMPARE(authorName(std::nullopt), QStringLiteral("unknown"));
        PRUser bo;
        bo.login = QStringLiteral("bo");
        QCOMPARE(authorName(bo), QStringLiteral("bo"));
        // An empty login is what the server sent, not an absent user.
        QCOMPARE(authorName(PRUser()), QString());
    }

    void runWithoutANameIsCalledWorkflow()
    {
        ActionRun unnamed = concluded("success");
        QCOMPARE(runDisplayName(unnamed), QStringLiteral("workflow"));
        unnamed.name = QStringLiteral("build");
        QCOMPARE(runDisplayName(unnamed), QStringLiteral("build"));
        unnamed.name = QString();
        QCOMPARE(runDisplayName(unnamed), QString());
    }
};

QTEST_GUILESS_MAIN(TestSummaries)
#include "tst_summaries.moc"
