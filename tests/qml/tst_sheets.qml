import QtQuick
import QtQuick.Controls
import QtTest
import Kestrine

// The merge and comment sheets over the detail screen: the CI row and merge gate, one merge
// request however often "Merge" is tapped, a failed merge, and the comment text's rules.
Item {
    id: root
    width: 390
    height: 844

    Component {
        id: screen
        StackView {
            width: root.width
            height: root.height
            initialItem: InboxView {}
        }
    }

    TestCase {
        id: test
        name: "Sheets"
        when: windowShown

        property var stack: null

        function find(parent, name) {
            return findChild(parent, name);
        }

        function init() {
            gitea.reset();
            gitea.configure();
            SettingsStore.mergeGateMode = SettingsStore.Warn;
            stack = createTemporaryObject(screen, root);
            const inbox = stack.currentItem;
            tryVerify(() => inbox.didInitialLoad && !inbox.vm.isLoading, 5000);
        }

        function openPullRequest(number) {
            const inbox = stack.get(0);
            inbox.openRow(inbox.vm.displayedRows.find(r => r.pr.number === number));
            tryCompare(stack, "depth", 2);
            tryVerify(() => !stack.busy);
            const detail = stack.currentItem;
            tryVerify(() => detail.vm.hasPr && !detail.vm.isLoading && !detail.vm.isActionsLoading, 5000);
            return detail;
        }

        function openMergeSheet(number) {
            const detail = openPullRequest(number);
            detail.openMergeSheet();
            tryVerify(() => detail.mergeSheet.opened);
            return detail;
        }

        function sheetItem(sheet, name) {
            return find(sheet.contentItem, name);
        }

        function test_mergeSheetStartsOnCreateMergeCommit() {
            const detail = openMergeSheet(7);
            const sheet = detail.mergeSheet;
            compare(sheet.title, "Merge");
            compare(sheet.method, "merge");
            verify(sheetItem(sheet, "method_merge").checked);
            compare(sheetItem(sheet, "method_merge").text, "Create merge commit");
            compare(sheetItem(sheet, "method_rebase").text, "Rebase and merge");
            compare(sheetItem(sheet, "method_squash").text, "Squash and merge");
            mouseClick(sheetItem(sheet, "method_squash"));
            compare(sheet.method, "squash");
            // Presented again, it starts over.
            sheet.close();
            tryVerify(() => !sheet.visible);
            detail.openMergeSheet();
            tryVerify(() => sheet.opened);
            compare(sheet.method, "merge");
        }

        function test_mergeSheetWithRedCI_data() {
            return [
                { tag: "block", mode: SettingsStore.Block, note: "Merging is blocked while CI is red (Settings).",
                  icon: "lock", tone: Theme.secondaryText, enabled: false },
                { tag: "warn", mode: SettingsStore.Warn, note: "CI is red — you can still merge (Settings allows it).",
                  icon: "exclamationmark.triangle", tone: Theme.orange, enabled: true }
            ];
        }

        function test_mergeSheetWithRedCI(data) {
            SettingsStore.mergeGateMode = data.mode;
            const sheet = openMergeSheet(9).mergeSheet;
            compare(sheetItem(sheet, "ciText").text, "Failing");
            compare(sheetItem(sheet, "ciIcon").symbol, "xmark.circle.fill");
            verify(Qt.colorEqual(sheetItem(sheet, "ciText").color, Theme.red));
            verify(sheetItem(sheet, "gateRow").visible);
            compare(sheetItem(sheet, "gateText").text, data.note);
            compare(sheetItem(sheet, "gateIcon").symbol, data.icon);
            verify(Qt.colorEqual(sheetItem(sheet, "gateText").color, data.tone));
            compare(sheetItem(sheet, "mergeConfirmButton").enabled, data.enabled);
        }

        function test_mergeSheetCIRow_data() {
            return [
                { tag: "passing", number: 7, text: "Passing", icon: "checkmark.circle.fill", color: Theme.green },
                { tag: "running", number: 8, text: "Running", icon: "hourglass", color: Theme.orange },
                { tag: "executing", number: 8, status: "in_progress", text: "Running", icon: "hourglass", color: Theme.orange },
                { tag: "cancelled", number: 10, text: "Unknown", icon: "questionmark.circle", color: Theme.secondaryText }
            ];
        }

        function test_mergeSheetCIRow(data) {
            // #8's run, queued or (in Gitea's word) executing: running.
            if (data.number === 8) {
                gitea.answer("GET", "/api/v1/repos/ann/tool/actions/runs", 200,
                             JSON.stringify({ total_count: 1, workflow_runs: [{ id: 43, status: data.status || "queued" }] }));
            }
            const sheet = openMergeSheet(data.number).mergeSheet;
            compare(sheetItem(sheet, "ciText").text, data.text);
            compare(sheetItem(sheet, "ciIcon").symbol, data.icon);
            verify(Qt.colorEqual(sheetItem(sheet, "ciText").color, data.color));
            verify(!sheetItem(sheet, "gateRow").visible);
            verify(sheetItem(sheet, "mergeConfirmButton").enabled);
        }

        function test_cancelledRunsShowUnknownAndNoGateRow() {
            SettingsStore.mergeGateMode = SettingsStore.Block;
            const sheet = openMergeSheet(10).mergeSheet;
            compare(sheetItem(sheet, "ciText").text, "Unknown");
            verify(!sheetItem(sheet, "gateRow").visible);
            verify(sheetItem(sheet, "mergeConfirmButton").enabled);
        }

        function test_tappingMergeTwiceQuicklySendsOneMergeRequest() {
            gitea.answer("POST", "/api/v1/repos/ann/tool/pulls/7/merge", 200, "", 500);
            const detail = openMergeSheet(7);
            const sheet = detail.mergeSheet;
            const button = sheetItem(sheet, "mergeConfirmButton");
            mouseClick(button);
            // The second tap lands where the button was; the model is asked only once either way.
            mouseClick(button);
            sheet.merge();
            verify(sheet.isMerging);
            verify(!sheetItem(sheet, "mergeCancelButton").visible);
            verify(sheetItem(sheet, "mergeProgress").visible);
            // No dismissing while merging.
            keyClick(Qt.Key_Escape);
            verify(sheet.visible);
            tryVerify(() => detail.showMergeSuccess, 5000);
            wait(100);
            compare(gitea.requestCount("POST", "/api/v1/repos/ann/tool/pulls/7/merge"), 1);
        }

        function test_failedMergeLeavesTheSheetOpenWithCancelAndMergeBack() {
            gitea.answer("POST", "/api/v1/repos/ann/tool/pulls/7/merge", 405,
                         "{\"message\":\"Please try again later\"}", 200);
            const detail = openMergeSheet(7);
            const sheet = detail.mergeSheet;
            mouseClick(sheetItem(sheet, "method_squash"));
            mouseClick(sheetItem(sheet, "mergeConfirmButton"));
            verify(sheet.isMerging);
            tryVerify(() => !sheet.isMerging, 5000);
            verify(sheet.visible);
            verify(sheetItem(sheet, "mergeCancelButton").visible);
            verify(sheetItem(sheet, "mergeConfirmButton").visible);
            verify(!sheetItem(sheet, "mergeProgress").visible);
            compare(sheet.method, "squash");
            verify(!detail.showMergeSuccess);
            // The failure is shown above the sheet, not lost under it.
            tryVerify(() => detail.errorAlert.opened);
            verify(detail.errorAlert.z > sheet.z);
            verify(detail.vm.errorMessage !== "");
        }

        function test_cancelDismissesWithoutARequest() {
            const detail = openMergeSheet(7);
            mouseClick(sheetItem(detail.mergeSheet, "mergeCancelButton"));
            tryVerify(() => !detail.mergeSheet.visible);
            compare(gitea.requestCount("POST", "/api/v1/repos/ann/tool/pulls/7/merge"), 0);
        }

        function openCommentSheet(requestChanges) {
            const detail = openPullRequest(7);
            detail.openCommentSheet(requestChanges);
            tryVerify(() => detail.commentSheet.opened);
            return detail;
        }

        function test_commentOfOnlyBlanksAndLineBreaksCannotBeSubmittedButIsCounted() {
            const sheet = openCommentSheet(false).commentSheet;
            compare(sheet.title, "Comment");
            compare(sheetItem(sheet, "commentHeading").text, "Comment");
            const editor = sheetItem(sheet, "commentEditor");
            const submit = sheetItem(sheet, "submitButton");
            compare(sheetItem(sheet, "characterCount").text, "0 characters");
            verify(!submit.enabled);
            editor.text = "  \n\t \n ";
            compare(sheetItem(sheet, "characterCount").text, "7 characters");
            verify(!submit.enabled);
            editor.text = "  \n x";
            compare(sheetItem(sheet, "characterCount").text, "5 characters");
            verify(submit.enabled);
        }

        function test_counterCountsCharactersAsAPersonSeesThem_data() {
            return [
                { tag: "thumbs up with a skin tone", text: "\u{1F44D}\u{1F3FD}", count: "1 characters" },
                { tag: "e with a combining acute accent", text: "e\u0301", count: "1 characters" },
                { tag: "flag of two regional indicators", text: "\u{1F1E9}\u{1F1EA}", count: "1 characters" },
                { tag: "family joined by zero-width joiners",
                  text: "\u{1F468}\u200D\u{1F469}\u200D\u{1F467}\u200D\u{1F466}", count: "1 characters" },
                { tag: "a sentence mixing them", text: "Cafe\u0301 \u{1F44D}\u{1F3FD} \u{1F1E9}\u{1F1EA}!",
                  count: "9 characters" }
            ];
        }

        function test_counterCountsCharactersAsAPersonSeesThem(data) {
            const sheet = openCommentSheet(false).commentSheet;
            sheetItem(sheet, "commentEditor").text = data.text;
            compare(sheetItem(sheet, "characterCount").text, data.count);
            verify(sheetItem(sheet, "submitButton").enabled);
        }

        function test_counterCountsACarriageReturnAndLineFeedOnce() {
            // The editor keeps a typed line break as "\n"; a text set on the sheet keeps "\r\n".
            const sheet = openCommentSheet(false).commentSheet;
            sheet.text = "\r\n";
            compare(sheetItem(sheet, "characterCount").text, "1 characters");
            verify(!sheetItem(sheet, "submitButton").enabled);
            sheet.text = "ok\r\n\r\n";
            compare(sheetItem(sheet, "characterCount").text, "4 characters");
        }

        function test_counterCountsTypedCharacters() {
            const sheet = openCommentSheet(false).commentSheet;
            const editor = sheetItem(sheet, "commentEditor");
            tryVerify(() => editor.activeFocus);
            keyClick(Qt.Key_Space);
            keyClick(Qt.Key_Return);
            compare(sheetItem(sheet, "characterCount").text, "2 characters");
            verify(!sheetItem(sheet, "submitButton").enabled);
            keyClick(Qt.Key_O);
            keyClick(Qt.Key_K);
            compare(editor.text, " \nok");
            compare(sheetItem(sheet, "characterCount").text, "4 characters");
            verify(sheetItem(sheet, "submitButton").enabled);
        }

        function test_commentIsSentWithoutItsOuterBlanks() {
            const detail = openCommentSheet(false);
            const sheet = detail.commentSheet;
            sheetItem(sheet, "commentEditor").text = "  \n Looks good to me. \n\n";
            mouseClick(sheetItem(sheet, "submitButton"));
            // The sheet goes at once; the detail screen shows the progress.
            tryVerify(() => !sheet.visible);
            tryVerify(() => gitea.requestCount("POST", "/api/v1/repos/ann/tool/issues/7/comments") === 1, 5000);
            compare(JSON.parse(gitea.lastBody("POST", "/api/v1/repos/ann/tool/issues/7/comments")).body,
                    "Looks good to me.");
        }

        function test_requestChangesSendsAReviewWithTheTrimmedText() {
            const detail = openCommentSheet(true);
            const sheet = detail.commentSheet;
            compare(sheet.title, "Request changes");
            compare(sheetItem(sheet, "commentHeading").text, "Request changes");
            verify(!sheetItem(sheet, "submitButton").enabled);
            sheetItem(sheet, "commentEditor").text = "\tPlease add a test. ";
            mouseClick(sheetItem(sheet, "submitButton"));
            tryVerify(() => gitea.requestCount("POST", "/api/v1/repos/ann/tool/pulls/7/reviews") === 1, 5000);
            const body = JSON.parse(gitea.lastBody("POST", "/api/v1/repos/ann/tool/pulls/7/reviews"));
            compare(body.event, "REQUEST_CHANGES");
            compare(body.body, "Please add a test.");
            // The mode goes back to comment when the sheet goes.
            tryVerify(() => !sheet.visible);
            verify(!detail.requestChangesMode);
        }

        function test_commentSheetStartsEmptyEveryTime() {
            const detail = openCommentSheet(false);
            const sheet = detail.commentSheet;
            sheetItem(sheet, "commentEditor").text = "draft";
            mouseClick(sheetItem(sheet, "commentCancelButton"));
            tryVerify(() => !sheet.visible);
            compare(gitea.requestCount("POST", "/api/v1/repos/ann/tool/issues/7/comments"), 0);
            detail.openCommentSheet(false);
            tryVerify(() => sheet.opened);
            compare(sheetItem(sheet, "commentEditor").text, "");
            compare(sheetItem(sheet, "characterCount").text, "0 characters");
        }

        function test_approveModeSendsAnApprovalWithItsText() {
            const detail = openPullRequest(7);
            const sheet = detail.commentSheet;
            sheet.mode = CommentSheet.Approve;
            sheet.open();
            tryVerify(() => sheet.opened);
            compare(sheet.title, "Approve");
            verify(!sheetItem(sheet, "submitButton").enabled);
            sheetItem(sheet, "commentEditor").text = " Ship it ";
            sheet.submit();
            tryVerify(() => gitea.requestCount("POST", "/api/v1/repos/ann/tool/pulls/7/reviews") === 1, 5000);
            const body = JSON.parse(gitea.lastBody("POST", "/api/v1/repos/ann/tool/pulls/7/reviews"));
            compare(body.event, "APPROVED");
            compare(body.body, "Ship it");
        }

        function test_reviewMenuApprovesAtOnceAndClosesAfterConfirming() {
            const detail = openPullRequest(7);
            detail.reviewMenu.open();
            tryVerify(() => detail.reviewMenu.opened);
            compare(detail.reviewMenu.itemAt(0).text, "Comment");
            compare(detail.reviewMenu.itemAt(1).text, "Approve");
            compare(detail.reviewMenu.itemAt(2).text, "Request changes");
            compare(detail.reviewMenu.itemAt(4).text, "Close");
            detail.reviewMenu.itemAt(1).triggered();
            tryVerify(() => gitea.requestCount("POST", "/api/v1/repos/ann/tool/pulls/7/reviews") === 1, 5000);
            verify(!detail.commentSheet.visible);
            compare(JSON.parse(gitea.lastBody("POST", "/api/v1/repos/ann/tool/pulls/7/reviews")).event, "APPROVED");
            tryCompare(detail.vm, "busyMessage", "", 5000);

            detail.reviewMenu.itemAt(4).triggered();
            tryVerify(() => detail.closeConfirm.opened);
            compare(detail.closeConfirm.title, "Close this PR?");
            compare(detail.closeConfirm.message, "This will close the pull request.");
            detail.closeConfirm.accept();
            tryVerify(() => gitea.requestCount("PATCH", "/api/v1/repos/ann/tool/pulls/7") === 1, 5000);
            compare(JSON.parse(gitea.lastBody("PATCH", "/api/v1/repos/ann/tool/pulls/7")).state, "closed");
            // Closed: the actions are gone.
            tryVerify(() => !detail.prIsOpen, 5000);
            verify(!find(detail, "mergeButton").visible);
        }
    }
}
