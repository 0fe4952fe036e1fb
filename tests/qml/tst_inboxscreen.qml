import QtQuick
import QtQuick.Controls
import QtTest
import Kestrine

// The inbox screen: what it shows in each state, its pull-to-refresh, the settings sheet and its
// reload after a merge, and the rows and badges.
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

    Component {
        id: rowView
        PRRowView {
            width: 390
        }
    }

    Component {
        id: circle
        CICircle {}
    }

    Component {
        id: badge
        ReviewBadge {}
    }

    TestCase {
        id: test
        name: "InboxScreen"
        when: windowShown

        function find(parent, name) {
            return findChild(parent, name);
        }

        // A fresh inbox screen on a fresh stack; waits for its first load to end.
        function openInbox() {
            const stack = createTemporaryObject(screen, root);
            verify(stack);
            const inbox = stack.currentItem;
            tryVerify(() => inbox.didInitialLoad);
            tryVerify(() => !inbox.vm.isLoading, 5000);
            return inbox;
        }

        // Drags the content of `flickable` 240 points down and lets go, as a finger would.
        function pullDown(flickable) {
            const x = flickable.width / 2;
            mousePress(flickable, x, 40);
            for (let step = 1; step <= 12; ++step)
                mouseMove(flickable, x, 40 + step * 20, 16);
            mouseRelease(flickable, x, 280, Qt.LeftButton, Qt.NoModifier, 16);
        }

        function repoListRequests() {
            return gitea.requestCount("GET", "/api/v1/user/repos");
        }

        function init() {
            gitea.reset();
            gitea.configure();
            SettingsStore.monitoredRepos = [];
            SettingsStore.inboxNeedsRefresh = false;
        }

        function test_listShowsTheOpenPullRequestsNewestFirst() {
            const inbox = openInbox();
            compare(inbox.content, "list");
            const rows = inbox.vm.displayedRows;
            verify(rows.length >= 6);
            for (let i = 1; i < rows.length; ++i)
                verify(new Date(rows[i - 1].pr.updated_at) >= new Date(rows[i].pr.updated_at));
            compare(find(inbox, "inboxList").count, rows.length);
            verify(find(inbox, "inboxList").visible);
            verify(!find(inbox, "notConfiguredState").visible);
        }

        // ann/tool answers with `count` open pull requests, one a minute from 2024-01-01 on.
        function serveManyPulls(count) {
            const pulls = [];
            for (let n = 1; n <= count; ++n) {
                const minutes = String(n % 60).padStart(2, "0");
                const hours = String(Math.floor(n / 60)).padStart(2, "0");
                pulls.push({ id: 5000 + n, number: n, title: "Change " + n, state: "open",
                             draft: n % 4 === 0,
                             updated_at: "2024-01-01T" + hours + ":" + minutes + ":00Z" });
            }
            gitea.answer("GET", "/api/v1/repos/ann/tool/pulls", 200, JSON.stringify(pulls));
        }

        // Every row the list has built shows the displayed row at its place.
        function compareBuiltRows(list, rows) {
            let built = 0;
            for (let i = 0; i < list.count; ++i) {
                const item = list.itemAtIndex(i);
                if (!item)
                    continue;
                compare(JSON.stringify(item.row), JSON.stringify(rows[i]));
                compare(find(item, "rowNumber").text, "#" + rows[i].pr.number);
                compare(find(item, "rowTitle").text, rows[i].pr.title);
                compare(find(item, "rowDraft").visible, rows[i].pr.draft === true);
                ++built;
            }
            return built;
        }

        function test_listRowsAreTheDisplayedRowsInOrderAfterScrollingToo() {
            serveManyPulls(90);
            const inbox = openInbox();
            const list = find(inbox, "inboxList");
            const rows = inbox.vm.displayedRows;
            verify(rows.length > 90);
            compare(list.count, rows.length);
            verify(compareBuiltRows(list, rows) > 3);
            // Rows scrolled away are reused for the rows coming into view.
            list.positionViewAtEnd();
            tryVerify(() => list.itemAtIndex(list.count - 1) !== null);
            verify(!list.itemAtIndex(0));
            verify(compareBuiltRows(list, rows) > 3);
            list.positionViewAtIndex(45, ListView.Center);
            tryVerify(() => list.itemAtIndex(45) !== null);
            verify(compareBuiltRows(list, rows) > 3);
            list.positionViewAtBeginning();
            tryVerify(() => list.itemAtIndex(0) !== null);
            verify(compareBuiltRows(list, rows) > 3);
        }

        function test_tappingARowOpensItsPullRequest() {
            const inbox = openInbox();
            const list = find(inbox, "inboxList");
            const row = inbox.vm.displayedRows[1];
            mouseClick(list.itemAtIndex(1));
            const stack = inbox.StackView.view;
            tryCompare(stack, "depth", 2);
            compare(stack.currentItem.prNumber, row.pr.number);
            compare(stack.currentItem.repo.full_name, row.repo.full_name);
            tryVerify(() => !stack.busy);
        }

        function test_notConfiguredShowsItsPlaceholderWhateverTheRowsHold() {
            const inbox = openInbox();
            verify(inbox.vm.count > 0);
            SettingsStore.token = "";
            compare(inbox.content, "notConfigured");
            verify(find(inbox, "notConfiguredState").visible);
            verify(!find(inbox, "inboxList").visible);
            verify(!find(inbox, "emptyScroll").visible);
            // The rows are still there; the screen does not show them.
            verify(inbox.vm.count > 0);
            compare(find(inbox, "notConfiguredState").title, "Not configured");
            compare(find(inbox, "notConfiguredState").description,
                    "Add your Gitea instance and token in Settings.");
        }

        function test_firstLoadWithoutConfigurationRaisesTheAlert() {
            SettingsStore.token = "";
            const stack = createTemporaryObject(screen, root);
            const inbox = stack.currentItem;
            tryVerify(() => inbox.didInitialLoad);
            tryVerify(() => inbox.errorAlert.visible);
            compare(inbox.errorAlert.title, "Error");
            compare(inbox.errorAlert.message, "Configure your Gitea instance in Settings.");
            // Dismissing the alert clears the message.
            inbox.errorAlert.close();
            tryCompare(inbox.vm, "errorMessage", "");
        }

        function test_emptyResultShowsNoOpenPRsAndCanBePulledDown() {
            SettingsStore.monitoredRepos = ["bo/dotfiles"];
            const inbox = openInbox();
            compare(inbox.vm.count, 0);
            compare(inbox.content, "empty");
            const scroll = find(inbox, "emptyScroll");
            verify(scroll.visible);
            compare(find(inbox, "noOpenPRsState").title, "No open PRs");
            verify(scroll.height >= 400);

            const before = repoListRequests();
            pullDown(scroll);
            tryVerify(() => repoListRequests() === before + 1, 5000);
            tryVerify(() => !inbox.vm.isLoading);
            compare(inbox.content, "empty");
        }

        function test_pullingTheListReloadsAndTheIndicatorStaysUntilTheLoadEnds() {
            const inbox = openInbox();
            const list = find(inbox, "inboxList");
            const refresh = find(inbox, "listRefresh");
            // The repository list answers late, so the load is seen running.
            gitea.answer("GET", "/api/v1/user/repos", 200, "[]", 800);
            const before = repoListRequests();
            pullDown(list);
            tryVerify(() => inbox.vm.isLoading);
            verify(refresh.refreshing);
            tryVerify(() => !inbox.vm.isLoading, 5000);
            verify(!refresh.refreshing);
            compare(repoListRequests(), before + 1);
        }

        function test_comingBackFromADetailScreenDoesNotLoadAgain() {
            const inbox = openInbox();
            const before = repoListRequests();
            inbox.openRow(inbox.vm.displayedRows[0]);
            const stack = inbox.StackView.view;
            tryCompare(stack, "depth", 2);
            tryVerify(() => !stack.busy);
            stack.pop();
            tryVerify(() => !stack.busy);
            wait(200);
            compare(repoListRequests(), before);
        }

        function test_closingSettingsWithoutTheRefreshFlagDoesNotReload() {
            const inbox = openInbox();
            const before = repoListRequests();
            inbox.openSettings();
            tryVerify(() => inbox.settingsSheet.opened);
            inbox.settingsSheet.close();
            tryVerify(() => !inbox.settingsSheet.visible);
            wait(200);
            compare(repoListRequests(), before);
            verify(!inbox.vm.isLoading);
        }

        function test_closingSettingsAfterAMergeReloadsOnceAndClearsTheFlag() {
            const inbox = openInbox();
            const before = repoListRequests();
            SettingsStore.inboxNeedsRefresh = true;
            // Raising the flag alone loads nothing.
            wait(100);
            compare(repoListRequests(), before);
            inbox.openSettings();
            tryVerify(() => inbox.settingsSheet.opened);
            inbox.settingsSheet.close();
            tryVerify(() => repoListRequests() === before + 1);
            verify(!SettingsStore.inboxNeedsRefresh);
        }

        function test_pullRequestWithoutDraftShowsNoDraftMarker_data() {
            return [
                { tag: "absent", pr: { number: 3, title: "Update", state: "open" }, shown: false },
                { tag: "false", pr: { number: 3, title: "Update", state: "open", draft: false }, shown: false },
                { tag: "true", pr: { number: 3, title: "Update", state: "open", draft: true }, shown: true }
            ];
        }

        function test_pullRequestWithoutDraftShowsNoDraftMarker(data) {
            const row = createTemporaryObject(rowView, root, {
                row: { repo: { id: 1, name: "site", full_name: "ann/site", owner: { login: "ann" } }, pr: data.pr }
            });
            verify(row);
            compare(find(row, "rowDraft").visible, data.shown);
            compare(find(row, "rowNumber").text, "#3");
            compare(find(row, "rowRepository").text, "ann/site");
            // No update time, no time.
            verify(!find(row, "rowTime").visible);
        }

        function test_rowShowsItsUpdateTimeRelativeToNow() {
            const updated = new Date(Date.now() - 2 * 3600 * 1000 - 60000).toISOString();
            const row = createTemporaryObject(rowView, root, {
                row: { repo: { id: 1, name: "site", full_name: "ann/site", owner: { login: "ann" } },
                       pr: { number: 42, title: "A", state: "open", updated_at: updated.replace(/\.\d+Z$/, "Z") } }
            });
            verify(find(row, "rowTime").visible);
            compare(find(row, "rowTime").text, "2 hr. ago");
        }

        function test_ciCircleColours_data() {
            return [
                { tag: "running", status: CIStatus.Running, color: Theme.orange, opacity: 1 },
                { tag: "success", status: CIStatus.Success, color: Theme.green, opacity: 1 },
                { tag: "failure", status: CIStatus.Failure, color: Theme.red, opacity: 1 },
                { tag: "cancelled", status: CIStatus.Cancelled, color: Theme.grey, opacity: 1 },
                { tag: "unknown", status: CIStatus.Unknown, color: Theme.grey, opacity: 0.5 }
            ];
        }

        function test_ciCircleColours(data) {
            const item = createTemporaryObject(circle, root, { status: data.status });
            compare(item.width, 10);
            compare(item.height, 10);
            verify(Qt.colorEqual(Qt.rgba(item.color.r, item.color.g, item.color.b, 1), data.color));
            fuzzyCompare(item.color.a, data.opacity, 0.01);
        }

        function test_reviewBadgeTexts_data() {
            return [
                { tag: "approved", state: ReviewState.Approved, text: "Approved", color: Theme.green },
                { tag: "changes", state: ReviewState.ChangesRequested, text: "Changes", color: Theme.red },
                { tag: "needsReview", state: ReviewState.NeedsReview, text: "Needs review", color: Theme.orange },
                { tag: "unknown", state: ReviewState.Unknown, text: "", color: Theme.grey },
                { tag: "not a state", state: 42, text: "", color: Theme.grey }
            ];
        }

        function test_reviewBadgeTexts(data) {
            const item = createTemporaryObject(badge, root, { state: data.state });
            compare(item.text, data.text);
            verify(Qt.colorEqual(item.tone, data.color));
            fuzzyCompare(item.color.a, 0.15, 0.01);
        }
    }
}
