// The actions on a pull request (merge with its single update-and-retry, close and reopen,
// reviews, comments, re-runs) and the merge gate, against the fake Gitea server.

#include "apierror.h"
#include "detailfixture.h"
#include "outcome.h"
#include "prdetailviewmodel.h"

#include <QtTest>

using namespace kestrine;
using namespace kestrine::testing;

namespace {

const QString merging = QString::fromUtf8("Merging\xE2\x80\xA6");
const QString updatingBranch = QString::fromUtf8("Updating branch\xE2\x80\xA6");
const QString updating = QString::fromUtf8("Updating\xE2\x80\xA6");
const QString submitting = QString::fromUtf8("Submitting\xE2\x80\xA6");
const QString posting = QString::fromUtf8("Posting\xE2\x80\xA6");
const QString rerunning = QString::fromUtf8("Re-running job\xE2\x80\xA6");

const QString mergePath = pullPath + QStringLiteral("/merge");
const QString updatePath = pullPath + QStringLiteral("/update");

QJsonObject jsonBody(const RecordedRequest &request)
{
    return QJsonDocument::fromJson(request.body).object();
}

FakeResponse delayed(FakeResponse response, int milliseconds)
{
    response.delay = std::chrono::milliseconds(milliseconds);
    return response;
}

/// Every busyMessage the model shows, in order ("" for none).
class BusyRecorder
{
public:
    explicit BusyRecorder(PRDetailViewModel *model)
    {
        QObject::connect(model, &PRDetailViewModel::busyMessageChanged, model,
                         [this, model] { seen << model->busyMessage().value_or(QString()); });
    }
    QStringList seen;
};

} // namespace

class TestPRDetailActions : public DetailTestCase
{
    Q_OBJECT

private:
    /// A model that has loaded pull request 7; the server's record starts empty after it.
    std::unique_ptr<PRDetailViewModel> loadedModel()
    {
        auto model = std::make_unique<PRDetailViewModel>(stores->settings, annApp(), 7);
        runToEnd(model->load());
        server->clearRequests();
        stores->log.clear();
        return model;
    }

    /// Merges answer 409 `conflicts` times, then 200.
    void serveMerge(int conflicts, int *calls)
    {
        server->route("POST", mergePath,
                      [conflicts, calls](const RecordedRequest &, const RouteParams &) {
                          ++*calls;
                          if (*calls <= conflicts)
                              return FakeResponse::json(R"({"message":"head out of date"})", 409);
                          return FakeResponse::empty(200);
                      });
    }

private slots:
    void init()
    {
        QVERIFY(startServer());
        serveDefaults(*server);
        server->route("POST", updatePath, FakeResponse::empty(200));
        server->route("DELETE", apiRoot + QStringLiteral("/branches/{branch*}"),
                      FakeResponse::empty(204));
        stores->settings.setDeleteBranchAfterMerge(false);
        stores->settings.setMergeGateMode(MergeGateMode::Warn);
        stores->log.clear();
    }

    void cleanup() { stopServer(); }

    void conflictUpdateAndSecondConflictFailAfterTwoMergesAndOneUpdate()
    {
        int merges = 0;
        serveMerge(99, &merges);
        const auto model = loadedModel();
        BusyRecorder busy(model.get());

        const auto outcome = runToEnd(model->merge(QStringLiteral("merge")));
        QCOMPARE(outcome.value, false);
        QCOMPARE(model->errorMessage(), APIError::mergeConflict().description());
        QCOMPARE(*model->errorMessage(),
                 QStringLiteral("This branch is out of date or conflicts with the base branch. "
                                "Update the branch and try again."));
        QCOMPARE(server->requests("POST", mergePath).size(), 2);
        QCOMPARE(server->requests("POST", updatePath).size(), 1);
        QCOMPARE(requestLog(*server), (QStringList{"POST /pulls/7/merge", "POST /pulls/7/update",
                                                   "POST /pulls/7/merge"}));
        QCOMPARE(busy.seen, (QStringList{merging, updatingBranch, merging, QString()}));
        QVERIFY(!model->busyMessage());
    }

    void directMergeWithBranchDeletionSendsTheFlagThenOneDeleteOfTheHeadRef()
    {
        server->route("GET", pullPath,
                      FakeResponse::json(pullJson(
                          QStringLiteral("Fix the parser"),
                          head(QStringLiteral("feature/big fix"), QStringLiteral("abc123")))));
        stores->settings.setDeleteBranchAfterMerge(true);
        int merges = 0;
        serveMerge(0, &merges);
        const auto model = loadedModel();
        server->route("GET", pullPath,
                      FakeResponse::json(pullJson(
                          QStringLiteral("Fix the parser"),
                          head(QStringLiteral("feature/big fix"), QStringLiteral("abc123")),
                          QStringLiteral("closed"))));
        BusyRecorder busy(model.get());

        QCOMPARE(runToEnd(model->merge(QStringLiteral("squash"))).value, true);
        QCOMPARE(requestLog(*server),
                 (QStringList{"POST /pulls/7/merge", "DELETE /branches/feature/big fix",
                              "GET /pulls/7"}));
        const RecordedRequest &mergeRequest = server->requests().at(0);
        QCOMPARE(jsonBody(mergeRequest),
                 (QJsonObject{{"Do", "squash"}, {"delete_branch_after_merge", true}}));
        // Percent-encoded once: the blank is escaped, the slash kept.
        QCOMPARE(server->requests().at(1).rawPath,
                 QByteArray("/api/v1/repos/ann/app/branches/feature/big%20fix"));
        QCOMPARE(model->pr()->state, QStringLiteral("closed"));
        QVERIFY(!model->errorMessage());
        QCOMPARE(busy.seen, (QStringList{merging, QString()}));
    }

    void mergeThatNeededTheUpdateSendsNoBranchDeletion()
    {
        stores->settings.setDeleteBranchAfterMerge(true);
        int merges = 0;
        serveMerge(1, &merges);
        const auto model = loadedModel();
        BusyRecorder busy(model.get());

        QCOMPARE(runToEnd(model->merge(QStringLiteral("rebase"))).value, true);
        QCOMPARE(requestLog(*server), (QStringList{"POST /pulls/7/merge", "POST /pulls/7/update",
                                                   "POST /pulls/7/merge", "GET /pulls/7"}));
        QCOMPARE(jsonBody(server->requests().at(2)),
                 (QJsonObject{{"Do", "rebase"}, {"delete_branch_after_merge", true}}));
        QCOMPARE(busy.seen, (QStringList{merging, updatingBranch, merging, QString()}));
        QVERIFY(!model->errorMessage());
    }

    void retryReadsTheDeletionSettingAfresh()
    {
        int merges = 0;
        serveMerge(1, &merges);
        const auto model = loadedModel();
        server->route("POST", updatePath, [this](const RecordedRequest &, const RouteParams &) {
            stores->settings.setDeleteBranchAfterMerge(true);
            return FakeResponse::empty(200);
        });
        QCOMPARE(runToEnd(model->merge(QStringLiteral("merge"))).value, true);
        const QList<RecordedRequest> mergeRequests = server->requests("POST", mergePath);
        QCOMPARE(jsonBody(mergeRequests.at(0)).value("delete_branch_after_merge").toBool(), false);
        QCOMPARE(jsonBody(mergeRequests.at(1)).value("delete_branch_after_merge").toBool(), true);
    }

    void withDeletionOffTheMergeSendsTheFlagFalseAndNoDelete()
    {
        int merges = 0;
        serveMerge(0, &merges);
        const auto model = loadedModel();
        QCOMPARE(runToEnd(model->merge(QStringLiteral("merge"))).value, true);
        QCOMPARE(requestLog(*server), (QStringList{"POST /pulls/7/merge", "GET /pulls/7"}));
        QCOMPARE(jsonBody(server->requests().at(0)),
                 (QJsonObject{{"Do", "merge"}, {"delete_branch_after_merge", false}}));
    }

    void failingBranchDeletionIsIgnored()
    {
        stores->settings.setDeleteBranchAfterMerge(true);
        int merges = 0;
        serveMerge(0, &merges);
        server->route("DELETE", apiRoot + QStringLiteral("/branches/{branch*}"),
                      FakeResponse::json(R"({"message":"protected"})", 403));
        const auto model = loadedModel();
        QCOMPARE(runToEnd(model->merge(QStringLiteral("merge"))).value, true);
        QVERIFY(!model->errorMessage());
        QVERIFY(model->pr());
        QCOMPARE(server->requests("DELETE", apiRoot + QStringLiteral("/branches/feature/x")).size(),
                 1);
    }

    void successfulMergeWithFailingRefetchLeavesPrAbsentAndReturnsTrue()
    {
        int merges = 0;
        serveMerge(0, &merges);
        const auto model = loadedModel();
        QVERIFY(model->pr());
        server->route("GET", pullPath, FakeResponse::json(R"({"message":"boom"})", 500));
        QSignalSpy prChanged(model.get(), &PRDetailViewModel::prChanged);

        QCOMPARE(runToEnd(model->merge(QStringLiteral("merge"))).value, true);
        QVERIFY(!model->pr());
        QCOMPARE(prChanged.count(), 1);
        QVERIFY(!model->errorMessage());
        QVERIFY(!model->busyMessage());
    }

    void otherMergeFailureShowsItsDescriptionWithoutRetry()
    {
        server->route("POST", mergePath, FakeResponse::json(R"({"message":"not allowed"})", 405));
        const auto model = loadedModel();
        QCOMPARE(runToEnd(model->merge(QStringLiteral("merge"))).value, false);
        QCOMPARE(model->errorMessage(), QStringLiteral("Server error (405): not allowed"));
        QCOMPARE(requestLog(*server), QStringList{"POST /pulls/7/merge"});
        QVERIFY(!model->busyMessage());
    }

    void failedBranchUpdateEndsTheMergeWithItsError()
    {
        int merges = 0;
        serveMerge(99, &merges);
        server->route("POST", updatePath, FakeResponse::json(R"({"message":"locked"})", 423));
        const auto model = loadedModel();
        BusyRecorder busy(model.get());
        QCOMPARE(runToEnd(model->merge(QStringLiteral("merge"))).value, false);
        QCOMPARE(model->errorMessage(), QStringLiteral("Server error (423): locked"));
        QCOMPARE(requestLog(*server), (QStringList{"POST /pulls/7/merge", "POST /pulls/7/update"}));
        QCOMPARE(busy.seen, (QStringList{merging, updatingBranch, QString()}));
    }

    void mergeWithoutClientReturnsFalseAndDoesNothing()
    {
        const auto model = loadedModel();
        stores->settings.overrideCredentials(QString(), std::nullopt);
        QSignalSpy busy(model.get(), &PRDetailViewModel::busyMessageChanged);
        QCOMPARE(runToEnd(model->merge(QStringLiteral("merge"))).value, false);
        QCOMPARE(busy.count(), 0);
        QVERIFY(server->requests().isEmpty());
    }

    void startMergeReportsTheOutcomeBySignal()
    {
        int merges = 0;
        serveMerge(0, &merges);
        const auto model = loadedModel();
        QSignalSpy finished(model.get(), &PRDetailViewModel::mergeFinished);
        model->startMerge(QStringLiteral("merge"));
        QVERIFY(finished.wait());
        QCOMPARE(finished.first().first().toBool(), true);

        server->route("POST", mergePath, FakeResponse::json(R"({"message":"no"})", 405));
        model->startMerge(QStringLiteral("merge"));
        QVERIFY(finished.wait());
        QCOMPARE(finished.at(1).first().toBool(), false);
    }

    void reloadDuringAMergeDoesNotAbortIt()
    {
        server->route("POST", mergePath, delayed(FakeResponse::empty(200), 300));
        const auto model = loadedModel();
        QSignalSpy finished(model.get(), &PRDetailViewModel::mergeFinished);
        model->startMerge(QStringLiteral("merge"));
        QTRY_COMPARE(server->requests("POST", mergePath).size(), 1);
        model->reload();
        QVERIFY(finished.wait());
        QCOMPARE(finished.first().first().toBool(), true);
        QVERIFY(!model->errorMessage());
    }

    void closingPatchesTheStateAndRefetches()
    {
        server->route("PATCH", pullPath, FakeResponse::json(pullJson()));
        const auto model = loadedModel();
        server->route(
            "GET", pullPath,
            FakeResponse::json(pullJson(QStringLiteral("Fix the parser"),
                                        head(QStringLiteral("feature/x"), QStringLiteral("abc123")),
                                        QStringLiteral("closed"))));
        BusyRecorder busy(model.get());
        QVERIFY(runToEnd(model->setState(QStringLiteral("closed"))).value);
        QCOMPARE(requestLog(*server), (QStringList{"PATCH /pulls/7", "GET /pulls/7"}));
        QCOMPARE(jsonBody(server->requests().at(0)), (QJsonObject{{"state", "closed"}}));
        QCOMPARE(model->pr()->state, QStringLiteral("closed"));
        QCOMPARE(busy.seen, (QStringList{updating, QString()}));
    }

    void failedStateChangeShowsItsDescription()
    {
        server->route("PATCH", pullPath, FakeResponse::json(R"({"message":"x"})", 403));
        const auto model = loadedModel();
        QVERIFY(runToEnd(model->setState(QStringLiteral("open"))).value);
        QCOMPARE(model->errorMessage(), QStringLiteral("Authentication failed. Check your token."));
        QCOMPARE(requestLog(*server), QStringList{"PATCH /pulls/7"});
        QVERIFY(model->pr());
        QVERIFY(!model->busyMessage());
    }

    void approvingTwiceLeavesOneReviewOfThatUserAtTheEnd()
    {
        server->route("GET", pullPath + QStringLiteral("/reviews"),
                      FakeResponse::json(compact(QJsonArray{
                          review(1, QStringLiteral("COMMENT"), QStringLiteral("ann")),
                          review(2, QStringLiteral("APPROVED"), QStringLiteral("bob"))})));
        int posted = 0;
        server->route("POST", pullPath + QStringLiteral("/reviews"),
                      [&posted](const RecordedRequest &, const RouteParams &) {
                          ++posted;
                          return FakeResponse::json(compact(review(
                              100 + posted, QStringLiteral("APPROVED"), QStringLiteral("ann"))));
                      });
        const auto model = loadedModel();
        BusyRecorder busy(model.get());

        QVERIFY(runToEnd(model->submitReview(QStringLiteral("approved"), std::nullopt)).value);
        QVERIFY(runToEnd(model->submitReview(QStringLiteral("approved"), std::nullopt)).value);
        QCOMPARE(model->reviews().size(), 2);
        QCOMPARE(model->reviews().at(0).id, qint64(2));
        QCOMPARE(model->reviews().at(1).id, qint64(102));
        QCOMPARE(model->reviews().at(1).user->login, QStringLiteral("ann"));
        QCOMPARE(jsonBody(server->requests().at(0)), (QJsonObject{{"event", "APPROVED"}}));
        // Patched locally: no refetch of the review list.
        QCOMPARE(requestLog(*server),
                 (QStringList{"POST /pulls/7/reviews", "POST /pulls/7/reviews"}));
        QCOMPARE(busy.seen, (QStringList{submitting, QString(), submitting, QString()}));
    }

    void requestingChangesSendsTheCommentWithTheEvent()
    {
        server->route("POST", pullPath + QStringLiteral("/reviews"),
                      FakeResponse::json(compact(
                          review(5, QStringLiteral("REQUEST_CHANGES"), QStringLiteral("ann")))));
        const auto model = loadedModel();
        QVERIFY(runToEnd(model->submitReview(QStringLiteral("changes"), QStringLiteral("Fix it")))
                    .value);
        QCOMPARE(jsonBody(server->requests().at(0)),
                 (QJsonObject{{"event", "REQUEST_CHANGES"}, {"body", "Fix it"}}));
        QCOMPARE(model->reviewState(), ReviewState::Approved);
        QCOMPARE(model->reviews().last().id, qint64(5));
    }

    void reviewWithoutUserReplacesTheOtherReviewsWithoutUser()
    {
        server->route("GET", pullPath + QStringLiteral("/reviews"),
                      FakeResponse::json(compact(
                          QJsonArray{review(1, QStringLiteral("COMMENT"), QString()),
                                     review(2, QStringLiteral("COMMENT"), QStringLiteral("bob")),
                                     review(3, QStringLiteral("COMMENT"), QString())})));
        server->route("POST", pullPath + QStringLiteral("/reviews"),
                      FakeResponse::json(compact(review(9, QStringLiteral("COMMENT"), QString()))));
        const auto model = loadedModel();
        QVERIFY(
            runToEnd(model->submitReview(QStringLiteral("comment"), QStringLiteral("hm"))).value);
        QCOMPARE(model->reviews().size(), 2);
        QCOMPARE(model->reviews().at(0).id, qint64(2));
        QCOMPARE(model->reviews().at(1).id, qint64(9));
    }

    void submitReviewWhilePostingDoesNothing()
    {
        server->route("POST", apiRoot + QStringLiteral("/issues/7/comments"),
                      delayed(FakeResponse::json(compact(comment(8, QStringLiteral("hi")))), 300));
        const auto model = loadedModel();
        model->startPostComment(QStringLiteral("hi"));
        QCOMPARE(model->busyMessage(), posting);

        QVERIFY(runToEnd(model->submitReview(QStringLiteral("approved"), std::nullopt)).value);
        QCOMPARE(model->busyMessage(), posting);
        QTRY_VERIFY(!model->busyMessage());
        QCOMPARE(requestLog(*server), QStringList{"POST /issues/7/comments"});
        QCOMPARE(model->comments().last().id, qint64(8));
    }

    void postCommentWhileSubmittingStillRuns()
    {
        server->route("POST", pullPath + QStringLiteral("/reviews"),
                      delayed(FakeResponse::json(compact(
                                  review(4, QStringLiteral("APPROVED"), QStringLiteral("ann")))),
                              300));
        server->route("POST", apiRoot + QStringLiteral("/issues/7/comments"),
                      FakeResponse::json(compact(comment(8, QStringLiteral("also")))));
        const auto model = loadedModel();
        model->startSubmitReview(QStringLiteral("approved"));
        QCOMPARE(model->busyMessage(), submitting);

        QVERIFY(runToEnd(model->postComment(QStringLiteral("also"))).value);
        QCOMPARE(model->comments().size(), 2);
        QCOMPARE(model->comments().last().id, qint64(8));
        QCOMPARE(
            jsonBody(
                server->requests("POST", apiRoot + QStringLiteral("/issues/7/comments")).first()),
            (QJsonObject{{"body", "also"}}));
        QTRY_COMPARE(model->reviews().last().id, qint64(4));
        QVERIFY(!model->busyMessage());
    }

    void failedCommentShowsItsErrorAndALaterSuccessKeepsIt()
    {
        server->route("POST", apiRoot + QStringLiteral("/issues/7/comments"),
                      FakeResponse::json(R"({"message":"boom"})", 500));
        const auto model = loadedModel();
        BusyRecorder busy(model.get());
        QVERIFY(runToEnd(model->postComment(QStringLiteral("x"))).value);
        QCOMPARE(model->errorMessage(), QStringLiteral("Server error (500): boom"));
        QCOMPARE(model->comments().size(), 1);

        server->route("POST", apiRoot + QStringLiteral("/issues/7/comments"),
                      FakeResponse::json(compact(comment(8, QStringLiteral("y")))));
        QVERIFY(runToEnd(model->postComment(QStringLiteral("y"))).value);
        QCOMPARE(model->comments().size(), 2);
        QCOMPARE(model->errorMessage(), QStringLiteral("Server error (500): boom"));
        QCOMPARE(busy.seen, (QStringList{posting, QString(), posting, QString()}));
        model->clearErrorMessage();
        QVERIFY(!model->errorMessage());
    }

    void undecodableReviewAnswerIsAFailure()
    {
        server->route("POST", pullPath + QStringLiteral("/reviews"), FakeResponse::json("[]"));
        const auto model = loadedModel();
        QVERIFY(runToEnd(model->submitReview(QStringLiteral("approved"), std::nullopt)).value);
        QVERIFY(model->errorMessage());
        QVERIFY(model->errorMessage()->startsWith(u"Could not parse the server response: "));
        QCOMPARE(model->reviews().size(), 1);
        QVERIFY(!model->busyMessage());
    }

    void rerunReloadsRunsAndJobs()
    {
        server->route("POST", apiRoot + QStringLiteral("/actions/runs/11/rerun"),
                      FakeResponse::empty(201));
        const auto model = loadedModel();
        server->route("GET", apiRoot + QStringLiteral("/actions/runs"),
                      FakeResponse::json(runsJson({run(12, QStringLiteral("failure"))})));
        BusyRecorder busy(model.get());
        QSignalSpy actionsLoading(model.get(), &PRDetailViewModel::isActionsLoadingChanged);

        QVERIFY(runToEnd(model->rerun(11)).value);
        QCOMPARE(requestLog(*server),
                 (QStringList{"POST /actions/runs/11/rerun", "GET /actions/runs",
                              "GET /actions/runs/12/jobs"}));
        QCOMPARE(model->runs().first().id, qint64(12));
        QCOMPARE(model->jobs().keys(), (QList<qint64>{11, 12}));
        QCOMPARE(busy.seen, (QStringList{rerunning, QString()}));
        QCOMPARE(actionsLoading.count(), 2);
    }

    void rerunOnAServerWithoutItShowsNotFound()
    {
        const auto model = loadedModel();
        QVERIFY(runToEnd(model->rerun(11)).value);
        QCOMPARE(model->errorMessage(), QStringLiteral("Not found."));
        QCOMPARE(requestLog(*server), QStringList{"POST /actions/runs/11/rerun"});
        QVERIFY(!model->busyMessage());
    }

    void rerunPassesAnEmptyHeadShaOn()
    {
        server->route("GET", pullPath,
                      FakeResponse::json(pullJson(QStringLiteral("Empty sha"),
                                                  head(QStringLiteral("feature/x"), QString("")))));
        server->route("POST", apiRoot + QStringLiteral("/actions/runs/11/rerun"),
                      FakeResponse::empty(204));
        const auto model = loadedModel();
        QVERIFY(runToEnd(model->rerun(11)).value);
        QCOMPARE(requestLog(*server).mid(0, 2),
                 (QStringList{"POST /actions/runs/11/rerun", "GET /actions/runs"}));
        QCOMPARE(server->requests().at(1).rawQuery, QByteArray("head_sha=&limit=20"));
    }

    void redCiInBlockModeDisablesMergeAndWarnModeEnablesItWithoutReload()
    {
        server->route("GET", apiRoot + QStringLiteral("/actions/runs"),
                      FakeResponse::json(runsJson({run(11, QStringLiteral("failure"))})));
        stores->settings.setMergeGateMode(MergeGateMode::Block);
        const auto model = loadedModel();
        QCOMPARE(model->ciStatus(), CIStatus::Failure);
        QVERIFY(!model->mergeAllowed());
        QCOMPARE(model->mergeGate().noteIcon, QStringLiteral("lock"));
        QSignalSpy gateChanged(model.get(), &PRDetailViewModel::mergeGateChanged);

        stores->settings.setMergeGateMode(MergeGateMode::Warn);
        QVERIFY(model->mergeAllowed());
        QCOMPARE(model->property("mergeAllowed").toBool(), true);
        QCOMPARE(model->mergeGate().noteIcon, QStringLiteral("exclamationmark.triangle"));
        QCOMPARE(gateChanged.count(), 1);
        QVERIFY(server->requests().isEmpty());

        stores->settings.setMergeGateMode(MergeGateMode::Block);
        QVERIFY(!model->mergeAllowed());
        QCOMPARE(gateChanged.count(), 2);
    }

    void gateFollowsTheRunsAsTheyLoad()
    {
        stores->settings.setMergeGateMode(MergeGateMode::Block);
        const auto model = loadedModel();
        QVERIFY(model->mergeAllowed());
        server->route("GET", apiRoot + QStringLiteral("/actions/runs"),
                      FakeResponse::json(runsJson({run(11, QStringLiteral("failure"))})));
        QSignalSpy gateChanged(model.get(), &PRDetailViewModel::mergeGateChanged);
        QVERIFY(runToEnd(model->load()).value);
        QVERIFY(!model->mergeAllowed());
        QCOMPARE(gateChanged.count(), 1);
    }

    void mergeItselfNeverRefusesOnCiGrounds()
    {
        server->route("GET", apiRoot + QStringLiteral("/actions/runs"),
                      FakeResponse::json(runsJson({run(11, QStringLiteral("failure"))})));
        stores->settings.setMergeGateMode(MergeGateMode::Block);
        int merges = 0;
        serveMerge(0, &merges);
        const auto model = loadedModel();
        QCOMPARE(runToEnd(model->merge(QStringLiteral("merge"))).value, true);
        QCOMPARE(merges, 1);
    }

    void destroyingTheModelDuringAMergeEndsItSilently()
    {
        server->route("POST", mergePath, delayed(FakeResponse::empty(200), 300));
        auto *model = new PRDetailViewModel(stores->settings, annApp(), 7);
        runToEnd(model->load());
        server->clearRequests();
        stores->log.clear();
        const QPointer<PRDetailViewModel> watch(model);
        connect(server, &FakeGiteaServer::requestRecorded, model, &QObject::deleteLater);
        QCOMPARE(runToEnd(model->merge(QStringLiteral("merge"))).value, false);
        QVERIFY(!watch);
        QTest::qWait(500);
        QVERIFY(stores->log.entries().isEmpty());
        QCOMPARE(requestLog(*server), QStringList{"POST /pulls/7/merge"});
    }
};

QTEST_GUILESS_MAIN(TestPRDetailActions)
#include "tst_prdetailactions.moc"
