import QtQuick
import QtQuick.Controls
import QtTest
import Kestrine

// The inbox screen: what it shows in each state, its pull-to-refresh, the settings sheet and its
// reload after a merge, the search field over its list, and the rows and badges.
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

        // The search field, focused by a tap as a finger would.
        function focusSearch(inbox) {
            const field = find(inbox, "inboxSearchField");
            verify(field.visible);
            mouseClick(field);
            verify(field.activeFocus);
            return field;
        }

        // Types `text` into the focused field a key at a time.
        function type(text) {
            for (const character of text)
                keyClick(character);
        }

        // The numbers of the rows the list shows, in order.
        function listedNumbers(inbox) {
            const list = find(inbox, "inboxList");
            const numbers = [];
            for (let i = 0; i < list.count; ++i) {
                list.positionViewAtIndex(i, ListView.Contain);
                const item = list.itemAtIndex(i);
                verify(item, "row " + i + " was not built");
                numbers.push(item.row.pr.number);
            }
            list.positionViewAtBeginning();
            return numbers;
        }

        // The numbers of the displayed rows whose repository is `fullName`, in the list's order.
        function numbersOf(inbox, fullName) {
            return inbox.vm.displayedRows.filter(row => row.repo.full_name === fullName)
                                         .map(row => row.pr.number);
        }

        function test_searchFieldIsAtTheTopOfTheListAndNamed() {
            const inbox = openInbox();
            const field = find(inbox, "inboxSearchField");
            const list = find(inbox, "inboxList");
            verify(field.visible);
            compare(field.text, "");
            compare(field.placeholderText, "Search");
            compare(field.Accessible.name, "Search pull requests");
            verify(!find(field, "searchClearButton").visible);
            compare(find(field, "searchClearButton").Accessible.name, "Clear search");
            // Above the list, within the screen's width.
            const fieldBottom = field.mapToItem(inbox, 0, field.height).y;
            verify(fieldBottom <= list.mapToItem(inbox, 0, 0).y, fieldBottom);
            const left = field.mapToItem(inbox, 0, 0).x;
            verify(left >= 8 && left + field.width <= inbox.width - 8, left + " " + field.width);
        }

        function test_searchFiltersTheRowsAsYouTypeWithoutARequest() {
            const inbox = openInbox();
            const all = inbox.vm.displayedRows.map(row => row.pr.number);
            compare(all.length, 7);
            const before = gitea.totalRequestCount();
            const field = focusSearch(inbox);

            // A repository's name, a key at a time: "t" still finds titles too.
            type("to");
            verify(listedNumbers(inbox).length < all.length);
            type("ol");
            compare(field.text, "tool");
            compare(listedNumbers(inbox), numbersOf(inbox, "ann/tool"));
            verify(find(field, "searchClearButton").visible);

            // A title's word, in another case.
            field.clear();
            type("PRIVACY");
            compare(listedNumbers(inbox), [3]);

            // The number, with its "#" and without.
            field.clear();
            type("#2");
            compare(listedNumbers(inbox), [2]);
            field.clear();
            type("10");
            compare(listedNumbers(inbox), [10]);

            // Several words, each in a field of its own: the title, the repository, the number.
            field.clear();
            type("the infra #2");
            compare(listedNumbers(inbox), [2]);
            field.clear();
            type("upload #11");
            compare(listedNumbers(inbox), [11]);
            field.clear();
            type("ann/tool upload");
            compare(listedNumbers(inbox), numbersOf(inbox, "ann/tool").filter(n => n === 7 || n === 11));

            // The × gives every row back.
            mouseClick(find(field, "searchClearButton"));
            compare(field.text, "");
            verify(!find(field, "searchClearButton").visible);
            compare(listedNumbers(inbox), all);

            wait(200);
            compare(gitea.totalRequestCount(), before);
            verify(!inbox.vm.isLoading);
            compare(inbox.vm.count, all.length);
        }

        function test_searchIgnoresAccentsBothWays() {
            gitea.answer("GET", "/api/v1/repos/ann/tool/pulls", 200, JSON.stringify([
                { id: 901, number: 31, title: "Crème brûlée for the café", state: "open",
                  updated_at: "2024-06-02T10:00:00Z" },
                { id: 902, number: 32, title: "Cafe opening hours", state: "open",
                  updated_at: "2024-06-01T10:00:00Z" },
                { id: 903, number: 33, title: "Coffee", state: "open",
                  updated_at: "2024-05-30T10:00:00Z" }
            ]));
            const inbox = openInbox();
            const field = focusSearch(inbox);
            type("cafe");
            compare(listedNumbers(inbox), [31, 32]);
            field.clear();
            type("creme");
            compare(listedNumbers(inbox), [31]);
            // An accented letter as an input method hands it over, in capitals.
            field.clear();
            field.insert(0, "CAFÉ");
            compare(listedNumbers(inbox), [31, 32]);
            field.clear();
            field.insert(0, "brûlée crème");
            compare(listedNumbers(inbox), [31]);
        }

        function test_aSearchThatMatchesNothingSaysSo() {
            const inbox = openInbox();
            const before = gitea.totalRequestCount();
            const field = focusSearch(inbox);
            const noMatches = find(inbox, "noMatchesState");
            verify(!noMatches.visible);
            type("zzz");
            compare(find(inbox, "inboxList").count, 0);
            compare(inbox.content, "list");
            verify(noMatches.visible);
            // Curly quotes: U+201C before, U+201D after.
            compare(noMatches.title, "No matches for \u201czzz\u201d");
            verify(!find(inbox, "noOpenPRsState").visible);
            verify(!find(inbox, "emptyScroll").visible);
            // The text as typed, without the spaces around it.
            type("  ");
            compare(noMatches.title, "No matches for “zzz”");
            field.clear();
            type(" login  zzz ");
            compare(noMatches.title, "No matches for “login  zzz”");

            // The list under it can still be pulled down to reload; the search stays.
            pullDown(find(inbox, "inboxList"));
            tryVerify(() => gitea.totalRequestCount() > before, 5000);
            tryVerify(() => !inbox.vm.isLoading, 5000);
            verify(noMatches.visible);
            compare(field.text, " login  zzz ");

            mouseClick(find(field, "searchClearButton"));
            verify(!noMatches.visible);
            compare(find(inbox, "inboxList").count, inbox.vm.count);
        }

        function test_noOpenPRsKeepsItsMeaningWhateverIsTyped() {
            SettingsStore.monitoredRepos = ["bo/dotfiles"];
            const inbox = openInbox();
            compare(inbox.content, "empty");
            const field = focusSearch(inbox);
            type("zzz");
            compare(inbox.content, "empty");
            verify(find(inbox, "noOpenPRsState").visible);
            verify(!find(inbox, "noMatchesState").visible);
            // While the first load runs with nothing to show, the search says nothing either.
            SettingsStore.monitoredRepos = [];
            gitea.answer("GET", "/api/v1/user/repos", 200, "[]", 800);
            inbox.vm.reload();
            tryVerify(() => inbox.vm.isLoading);
            verify(!find(inbox, "noMatchesState").visible);
            tryVerify(() => !inbox.vm.isLoading, 5000);
            compare(field.text, "zzz");
        }

        function test_theSearchStaysWhenALoadBringsNewRows() {
            const inbox = openInbox();
            const field = focusSearch(inbox);
            type("tool");
            const tool = numbersOf(inbox, "ann/tool");
            compare(listedNumbers(inbox), tool);
            gitea.answer("GET", "/api/v1/repos/ann/tool/pulls", 200, JSON.stringify([
                { id: 904, number: 40, title: "A new tool change", state: "open",
                  updated_at: "2024-07-01T10:00:00Z" }
            ]));
            inbox.vm.reload();
            tryVerify(() => !inbox.vm.isLoading, 5000);
            tryCompare(find(inbox, "inboxList"), "count", 1);
            compare(listedNumbers(inbox), [40]);
            compare(field.text, "tool");
        }

        function test_openingARowPutsTheKeyboardAwayAndKeepsTheSearch() {
            const inbox = openInbox();
            const field = focusSearch(inbox);
            type("privacy");
            const list = find(inbox, "inboxList");
            compare(list.count, 1);
            mouseClick(list.itemAtIndex(0));
            const stack = inbox.StackView.view;
            tryCompare(stack, "depth", 2);
            verify(!field.activeFocus);
            compare(stack.currentItem.prNumber, 3);
            tryVerify(() => !stack.busy);
            stack.pop();
            tryVerify(() => !stack.busy);
            compare(field.text, "privacy");
            compare(list.count, 1);
        }

        function test_draggingTheListPutsTheKeyboardAway() {
            const inbox = openInbox();
            const field = focusSearch(inbox);
            type("the");
            const list = find(inbox, "inboxList");
            verify(list.count > 3);
            const x = list.width / 2;
            mousePress(list, x, 300);
            for (let step = 1; step <= 6; ++step)
                mouseMove(list, x, 300 - step * 20, 16);
            mouseRelease(list, x, 180, Qt.LeftButton, Qt.NoModifier, 16);
            verify(!field.activeFocus);
            compare(field.text, "the");
        }

        function test_escapeClearsAndTheFindKeyFocusesTheField() {
            const inbox = openInbox();
            const field = find(inbox, "inboxSearchField");
            verify(!field.activeFocus);
            keySequence(StandardKey.Find);
            tryVerify(() => field.activeFocus);
            type("tool");
            verify(find(inbox, "inboxList").count < inbox.vm.count);
            keyClick(Qt.Key_Escape);
            compare(field.text, "");
            compare(find(inbox, "inboxList").count, inbox.vm.count);
        }

        function test_notConfiguredHidesTheSearch() {
            const inbox = openInbox();
            verify(find(inbox, "inboxSearchField").visible);
            SettingsStore.token = "";
            verify(!find(inbox, "inboxSearchField").visible);
            verify(!find(inbox, "noMatchesState").visible);
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
