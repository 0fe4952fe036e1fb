import QtQuick
import QtQuick.Controls
import QtTest
import Kestrine

// The pull request detail screen in German (the test runs with LANG=de_DE.UTF-8): the tab bar, the
// review menu and its confirmations, the conversation with its times, the checks and the files
// tab's notice.
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
        name: "DetailScreenGerman"
        when: windowShown

        property var stack: null

        function find(parent, name) {
            return findChild(parent, name);
        }

        // findChildren by object name, depth first.
        function findAll(parent, name) {
            const found = [];
            const visit = item => {
                if (!item)
                    return;
                if (item.objectName === name)
                    found.push(item);
                const children = item.children || [];
                for (let i = 0; i < children.length; ++i)
                    visit(children[i]);
            };
            visit(parent);
            return found;
        }

        function init() {
            gitea.reset();
            gitea.configure();
            SettingsStore.mergeGateMode = SettingsStore.Warn;
            SettingsStore.inboxNeedsRefresh = false;
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

        function showTab(detail, index) {
            detail.selectTab(index);
            waitForItemPolished(find(detail, "tabContent"));
            wait(50);
        }

        function test_tabsAreGermanAndKeepTheirNames() {
            const detail = openPullRequest(7);
            const titles = [];
            for (const name of ["Overview", "Conversation", "Files", "Checks"])
                titles.push(find(detail, "tab_" + name).text);
            compare(titles, ["Übersicht", "Diskussion", "Dateien", "Checks"]);
            mouseClick(find(detail, "tab_Files"));
            compare(detail.selectedTab, 2);
        }

        function test_reviewMenuAndCloseConfirmationAreGerman() {
            const detail = openPullRequest(7);
            compare(find(detail, "reviewButton").Accessible.name, "Review");
            compare(find(detail, "mergeButton").Accessible.name, "Mergen");
            compare(find(detail.reviewMenu, "commentItem").text, "Kommentieren");
            compare(find(detail.reviewMenu, "approveItem").text, "Genehmigen");
            compare(find(detail.reviewMenu, "requestChangesItem").text, "Änderungen anfordern");
            compare(find(detail.reviewMenu, "closeItem").text, "Schließen");
            detail.closeConfirm.open();
            tryVerify(() => detail.closeConfirm.opened);
            compare(detail.closeConfirm.title, "Diesen PR schließen?");
            compare(detail.closeConfirm.message, "Der Pull-Request wird geschlossen.");
            compare(detail.closeConfirm.acceptText, "Schließen");
            compare(detail.closeConfirm.rejectText, "Abbrechen");
            detail.closeConfirm.reject();
        }

        function test_conversationIsGermanAroundTheServersWords() {
            const twoHoursAgo = new Date(Date.now() - 2 * 3600 * 1000 - 60 * 1000).toISOString();
            gitea.answer("GET", "/api/v1/repos/ann/tool/pulls/7/reviews", 200, JSON.stringify([
                { id: 1, state: "APPROVED", body: "Fine by me." },
                { id: 2, state: "REQUEST_CHANGES", user: { login: "bo" } },
                { id: 3, state: "COMMENT", user: { login: "cy" }, body: "Hm." }
            ]));
            gitea.answer("GET", "/api/v1/repos/ann/tool/issues/7/comments", 200, JSON.stringify([
                { id: 11, user: { login: "ann" }, body: "Dated", created_at: twoHoursAgo }
            ]));
            const detail = openPullRequest(7);
            showTab(detail, 1);
            const tab = find(detail, "conversationTab");
            compare(find(tab, "reviewsHeading").text, "Reviews");
            const lines = findAll(tab, "reviewLine").map(item => item.text);
            compare(lines, ["✅ unbekannt hat genehmigt", "🔴 bo hat Änderungen angefordert",
                            "💬 cy hat ein Review abgegeben"]);
            const card = findAll(tab, "commentCard")[0];
            compare(find(card, "commentTime").text, "vor 2 Stunden");
            // The comment is the server's text: untranslated.
            compare(find(card, "commentBody").text, "Dated");
        }

        function test_checksAndTheRerunConfirmationAreGerman() {
            const detail = openPullRequest(9);
            showTab(detail, 3);
            const card = find(detail, "runCard_39");
            compare(find(card, "runName").text, "Workflow");
            const rerun = find(find(card, "jobRow_98"), "rerunButton");
            compare(rerun.text, "Neu starten");
            mouseClick(rerun);
            tryVerify(() => detail.rerunConfirm.opened);
            compare(detail.rerunConfirm.title, "Workflow neu starten?");
            compare(detail.rerunConfirm.message, "„Workflow“ neu starten?");
            compare(detail.rerunConfirm.acceptText, "Neu starten");
            detail.rerunConfirm.reject();
            tryVerify(() => !detail.rerunConfirm.visible);
        }

        function test_noRunsAndTheFilesNoticeAreGerman() {
            const files = [];
            for (let i = 1; i <= 120; ++i)
                files.push({ filename: "file-" + i + ".txt", status: "changed", additions: i, deletions: 0 });
            gitea.answerPaged("/api/v1/repos/ann/tool/pulls/7/files", JSON.stringify(files), 1);
            gitea.answer("GET", "/api/v1/repos/ann/tool/actions/runs", 200,
                         JSON.stringify({ total_count: 0, workflow_runs: [] }));
            const detail = openPullRequest(7);
            showTab(detail, 3);
            compare(find(detail, "noRuns").text, "Keine Workflow-Läufe für diesen Head-Commit.");
            showTab(detail, 2);
            const list = find(detail, "fileList");
            tryCompare(list, "count", 100, 10000);
            list.positionViewAtEnd();
            tryVerify(() => find(list, "filesCutNotice") !== null);
            compare(find(list, "filesCutNotice").text, "Die ersten 100 von 120 werden angezeigt.");
        }

        function test_copiedLinkAndTheMergedOverlayAreGerman() {
            const detail = openPullRequest(7);
            detail.copyWebLink();
            compare(find(detail, "detailToast").text, "Link kopiert");
            compare(find(detail.mergedOverlay.contentItem, "mergedText").text, "Gemergt");
        }
    }
}
