import QtQuick
import QtQuick.Controls
import QtTest
import Kestrine

// The pull request detail screen: its toolbar for open and closed pull requests, the merge gate
// on its merge button, the swipe on the tab bar, the checks and files tabs, the conversation, and
// the confirmation after a merge.
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
        name: "DetailScreen"
        when: windowShown

        property var stack: null

        function find(parent, name) {
            return findChild(parent, name);
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

        // Opens pull request `number` of ann/tool from the inbox and waits until it has loaded.
        function openPullRequest(number) {
            const inbox = stack.get(0);
            const rows = inbox.vm.displayedRows;
            let row = rows.find(r => r.pr.number === number);
            if (!row) {
                // Not in the inbox (closed): the same repository, that number.
                const any = rows.find(r => r.repo.full_name === "ann/tool");
                row = { repo: any.repo, pr: { number: number } };
            }
            inbox.openRow(row);
            tryCompare(stack, "depth", 2);
            tryVerify(() => !stack.busy);
            const detail = stack.currentItem;
            tryVerify(() => detail.vm.hasPr && !detail.vm.isLoading && !detail.vm.isActionsLoading, 5000);
            return detail;
        }

        // `count` changed files named file-1.txt, file-2.txt…
        function manyFiles(count) {
            const files = [];
            for (let i = 1; i <= count; ++i)
                files.push({ filename: "file-" + i + ".txt", status: "changed", additions: i, deletions: 0 });
            return files;
        }

        // Shows tab `index` and lets the screen lay it out before anything is tapped on it.
        function showTab(detail, index) {
            detail.selectTab(index);
            waitForItemPolished(find(detail, "tabContent"));
            wait(50);
        }

        // Drags across the tab bar by `dx` points (negative: to the left) and lets go.
        function swipe(detail, dx) {
            const bar = detail.tabBar;
            const x = bar.width / 2;
            const y = bar.height / 2;
            const steps = 8;
            mousePress(bar, x, y);
            for (let i = 1; i <= steps; ++i)
                mouseMove(bar, x + dx * i / steps, y, 16);
            mouseRelease(bar, x + dx, y, Qt.LeftButton, Qt.NoModifier, 16);
            wait(50);
        }

        function test_openPullRequestOffersMergeAndTheReviewMenu() {
            const detail = openPullRequest(7);
            verify(detail.prIsOpen);
            compare(find(stack, "backButton") !== null, true);
            verify(find(detail, "mergeButton").visible);
            verify(find(detail, "mergeButton").enabled);
            verify(find(detail, "reviewButton").visible);
            compare(detail.header.title, "#7");
            compare(find(detail, "prTitle").text, "Add retry to the release uploader");
            compare(find(detail, "prReference").text, "ann/tool#7");
        }

        // The pull request 7 of ann/tool the server sends, with `htmlUrl` for its page's address
        // (left out when undefined).
        function answerWithAddress(htmlUrl) {
            const pr = gitea.pullRequest("ann", "tool", 7);
            if (htmlUrl === undefined)
                delete pr.html_url;
            else
                pr.html_url = htmlUrl;
            gitea.answer("GET", "/api/v1/repos/ann/tool/pulls/7", 200, JSON.stringify(pr));
        }

        // Presses `item` in its middle and lets go after a long press. The release's time stamp is
        // what tells a long press from a tap, so it must come that much later, not only be sent
        // later.
        function holdAndRelease(item) {
            mousePress(item);
            mouseRelease(item, item.width / 2, item.height / 2, Qt.LeftButton, Qt.NoModifier,
                         Qt.styleHints.mousePressAndHoldInterval + 300);
        }

        function test_headerLinkOpensThePullRequestsPage() {
            const detail = openPullRequest(7);
            const page = gitea.pullRequest("ann", "tool", 7).html_url;
            compare(page, gitea.url + "/ann/tool/pulls/7");
            compare(detail.vm.webUrl, page);
            const link = find(detail, "prReferenceLink");
            verify(link.isLink);
            verify(find(detail, "prReference").font.underline);
            verify(find(detail, "prReferenceLinkMark").visible);
            compare(link.Accessible.role, Accessible.Link);
            compare(gitea.openedLinks(), []);

            mouseClick(find(detail, "prReference"));
            compare(gitea.openedLinks(), [page]);
            // A tap opens, it does not copy.
            verify(!detail.toast.shown);
            // The arrow after the text is part of the link.
            mouseClick(find(detail, "prReferenceLinkMark"));
            compare(gitea.openedLinks(), [page, page]);
        }

        function test_headerLinkFollowsTheAddressTheServerWrites() {
            // Behind a proxy, Gitea writes its ROOT_URL into every address it sends.
            answerWithAddress("https://git.example.org/ann/tool/pulls/7");
            const detail = openPullRequest(7);
            mouseClick(find(detail, "prReference"));
            compare(gitea.openedLinks(), ["https://git.example.org/ann/tool/pulls/7"]);
        }

        function test_headerLinkOfAnAddressThatIsNoWebPageDoesNothing_data() {
            return [
                { tag: "javascript", htmlUrl: "javascript:alert(1)" },
                { tag: "file", htmlUrl: "file:///etc/passwd" },
                { tag: "custom scheme", htmlUrl: "kestrine-evil://run" },
                { tag: "mail", htmlUrl: "mailto:ann@example.org" },
                { tag: "relative", htmlUrl: "/ann/tool/pulls/7" },
                { tag: "null", htmlUrl: null },
                { tag: "absent", htmlUrl: undefined }
            ];
        }

        function test_headerLinkOfAnAddressThatIsNoWebPageDoesNothing(data) {
            answerWithAddress(data.htmlUrl);
            ShareService.copyText("what was there before");
            const detail = openPullRequest(7);
            compare(detail.vm.webUrl, "");
            const reference = find(detail, "prReference");
            // Plain text, as before there were links: no underline, no arrow.
            compare(reference.text, "ann/tool#7");
            verify(!reference.font.underline);
            verify(!find(detail, "prReferenceLinkMark").visible);
            compare(find(detail, "prReferenceLink").Accessible.role, Accessible.StaticText);

            mouseClick(reference);
            mouseClick(reference, reference.width / 2, reference.height / 2, Qt.RightButton);
            holdAndRelease(reference);
            // Nor does calling the screen's functions do anything.
            detail.openWebPage();
            detail.copyWebLink();
            compare(gitea.openedLinks(), []);
            compare(ShareService.clipboardText(), "what was there before");
            verify(!detail.toast.shown);
        }

        function test_rightClickOnTheHeaderLinkCopiesIt() {
            ShareService.copyText("what was there before");
            const detail = openPullRequest(7);
            const reference = find(detail, "prReference");
            mouseClick(reference, reference.width / 2, reference.height / 2, Qt.RightButton);
            compare(ShareService.clipboardText(), detail.vm.webUrl);
            compare(ShareService.clipboardText(), gitea.url + "/ann/tool/pulls/7");
            compare(gitea.openedLinks(), []);
            // A note says so, and goes again after a moment.
            const toast = detail.toast;
            tryVerify(() => toast.shown && toast.opacity === 1);
            compare(find(toast, "toastText").text, "Link copied");
            compare(toast.Accessible.name, "Link copied");
            tryVerify(() => !toast.shown && !toast.visible, toast.duration + 2000);
        }

        function test_longPressOnTheHeaderLinkCopiesIt() {
            ShareService.copyText("what was there before");
            const detail = openPullRequest(7);
            const reference = find(detail, "prReference");
            holdAndRelease(reference);
            compare(ShareService.clipboardText(), gitea.url + "/ann/tool/pulls/7");
            // Held, not tapped: nothing was opened.
            compare(gitea.openedLinks(), []);
            tryVerify(() => detail.toast.shown);
            compare(detail.toast.text, "Link copied");
        }

        function test_headerLinkReachesBeyondItsSmallText() {
            // A caption is a small target for a finger; a tap just under it still counts.
            const detail = openPullRequest(7);
            const reference = find(detail, "prReference");
            mouseClick(reference, reference.width / 2, reference.height + 4);
            compare(gitea.openedLinks(), [gitea.url + "/ann/tool/pulls/7"]);
        }

        function test_closedOrMergedPullRequestHasNoMergeButtonAndNoReviewMenu() {
            const detail = openPullRequest(6);
            verify(!detail.prIsOpen);
            verify(!find(detail, "mergeButton").visible);
            verify(!find(detail, "reviewButton").visible);
            // The tabs still work...
            showTab(detail, 2);
            compare(find(detail, "tabContent").currentIndex, 2);
            verify(find(detail, "fileList").visible);
            // ...and so does pulling down.
            const before = gitea.requestCount("GET", "/api/v1/repos/ann/tool/pulls/6");
            const overview = find(detail, "overviewTab");
            showTab(detail, 0);
            const flick = overview.flickable;
            mousePress(flick, flick.width / 2, 40);
            for (let step = 1; step <= 12; ++step)
                mouseMove(flick, flick.width / 2, 40 + step * 20, 16);
            mouseRelease(flick, flick.width / 2, 280, Qt.LeftButton, Qt.NoModifier, 16);
            tryVerify(() => gitea.requestCount("GET", "/api/v1/repos/ann/tool/pulls/6") === before + 1, 5000);
        }

        // Pull request `number` of ann/tool answers with a title of three or more lines.
        function answerWithALongTitle(number) {
            const pr = gitea.pullRequest("ann", "tool", number);
            pr.title = "A title long enough to take three lines of the header, on a phone and on a "
                       + "desktop alike: it names the change, the reason for it, the parts of the "
                       + "tool it touches and every ticket that it closes";
            gitea.answer("GET", "/api/v1/repos/ann/tool/pulls/" + number, 200, JSON.stringify(pr));
        }

        // The colours of `item`'s area of the detail screen as drawn, every other pixel.
        function pixelsOf(detail, item) {
            const image = grabImage(detail);
            const origin = item.mapToItem(detail, 0, 0);
            const pixels = [];
            for (let y = Math.ceil(origin.y); y < origin.y + item.height - 1; y += 2) {
                for (let x = Math.ceil(origin.x); x < origin.x + item.width - 1; x += 2)
                    pixels.push(String(image.pixel(x, y)));
            }
            return pixels;
        }

        function test_scrolledTabContentStaysBelowTheHeader_data() {
            const tabs = ["overviewTab", "conversationTab", "filesTab", "checksTab"];
            const sizes = [{ name: "phone", width: 390, height: 844 },
                           { name: "desktop", width: 1024, height: 700 }];
            const rows = [];
            for (const size of sizes) {
                for (let tab = 0; tab < tabs.length; ++tab)
                    rows.push({ tag: size.name + " " + tabs[tab], tab: tab, name: tabs[tab],
                                width: size.width, height: size.height });
            }
            return rows;
        }

        function test_scrolledTabContentStaysBelowTheHeader(data) {
            root.width = data.width;
            root.height = data.height;
            answerWithALongTitle(7);
            const detail = openPullRequest(7);
            verify(find(detail, "prTitle").lineCount >= 3, find(detail, "prTitle").lineCount);
            showTab(detail, data.tab);
            const header = find(detail, "prHeader");
            const before = pixelsOf(detail, header);
            // The tab's content scrolled up by more than the header is high, as far as a finger
            // could drag it.
            const flick = find(detail, data.name).flickable;
            const contentY = flick.contentY;
            flick.contentY = contentY + header.height + 100;
            verify(flick.contentY > contentY);
            waitForRendering(detail);
            const after = pixelsOf(detail, header);
            verify(before.length > 1000);
            compare(after.filter((pixel, i) => pixel !== before[i]).length, 0);
            root.width = 390;
            root.height = 844;
        }

        function test_anEmptyFilesTabCanStillBePulledDownToReload() {
            gitea.answer("GET", "/api/v1/repos/ann/tool/pulls/7/files", 200, "[]");
            const detail = openPullRequest(7);
            showTab(detail, 2);
            compare(detail.vm.filesModel.count, 0);
            verify(find(detail, "noFiles").visible);
            compare(find(detail, "noFiles").text, "No changed files.");
            const list = find(detail, "fileList");
            verify(list.visible);
            const loads = gitea.requestCount("GET", "/api/v1/repos/ann/tool/pulls/7");
            mousePress(list, list.width / 2, 40);
            for (let step = 1; step <= 12; ++step)
                mouseMove(list, list.width / 2, 40 + step * 20, 16);
            mouseRelease(list, list.width / 2, 280, Qt.LeftButton, Qt.NoModifier, 16);
            tryVerify(() => gitea.requestCount("GET", "/api/v1/repos/ann/tool/pulls/7") === loads + 1,
                      5000);
            tryVerify(() => !detail.vm.isLoading);
            verify(find(detail, "noFiles").visible);
        }

        function test_mergeButtonWithRedCI_data() {
            return [
                { tag: "block", mode: SettingsStore.Block, enabled: false },
                { tag: "warn", mode: SettingsStore.Warn, enabled: true }
            ];
        }

        function test_mergeButtonWithRedCI(data) {
            SettingsStore.mergeGateMode = data.mode;
            const detail = openPullRequest(9);
            compare(detail.vm.ciStatus, CIStatus.Failure);
            const merge = find(detail, "mergeButton");
            verify(merge.visible);
            compare(merge.enabled, data.enabled);
        }

        function test_switchingTheModeChangesTheMergeButtonWithoutReloading() {
            SettingsStore.mergeGateMode = SettingsStore.Block;
            const detail = openPullRequest(9);
            const loads = gitea.requestCount("GET", "/api/v1/repos/ann/tool/pulls/9");
            verify(!find(detail, "mergeButton").enabled);
            SettingsStore.mergeGateMode = SettingsStore.Warn;
            verify(find(detail, "mergeButton").enabled);
            compare(gitea.requestCount("GET", "/api/v1/repos/ann/tool/pulls/9"), loads);
        }

        function test_reviewMenuIsDisabledWhileAnActionRuns() {
            const detail = openPullRequest(7);
            gitea.answer("POST", "/api/v1/repos/ann/tool/pulls/7/reviews", 500, "{\"message\":\"no\"}", 600);
            detail.approve();
            tryCompare(detail.vm, "busyMessage", "Submitting…");
            verify(!find(detail, "reviewButton").enabled);
            tryVerify(() => detail.busyOverlay.visible);
            compare(find(detail.busyOverlay.contentItem, "busyText").text, "Submitting…");
            tryCompare(detail.vm, "busyMessage", "", 5000);
            verify(find(detail, "reviewButton").enabled);
            tryVerify(() => !detail.busyOverlay.visible);
            // The failure reaches the error alert.
            tryVerify(() => detail.errorAlert.visible);
            compare(detail.errorAlert.title, "Error");
            detail.errorAlert.close();
            tryCompare(detail.vm, "errorMessage", "");
        }

        function test_busyOverlayTakesEveryTouch() {
            const detail = openPullRequest(7);
            gitea.answer("POST", "/api/v1/repos/ann/tool/pulls/7/reviews", 500, "{}", 800);
            detail.approve();
            tryVerify(() => detail.busyOverlay.opened);
            // A tap on a tab beneath the layer does not reach it.
            mouseClick(find(detail, "tab_Files"));
            compare(detail.currentTab, 0);
            tryCompare(detail.vm, "busyMessage", "", 5000);
        }

        function test_leftSwipeOfMoreThan40GoesFromOverviewToConversation() {
            const detail = openPullRequest(7);
            compare(detail.selectedTab, -1);
            swipe(detail, -41);
            compare(detail.selectedTab, 1);
            compare(find(detail, "tabContent").currentIndex, 1);
            swipe(detail, -80);
            compare(detail.selectedTab, 2);
            swipe(detail, 60);
            compare(detail.selectedTab, 1);
        }

        function test_rightSwipeOnOverviewDoesNothing() {
            const detail = openPullRequest(7);
            swipe(detail, 80);
            compare(detail.currentTab, 0);
            compare(detail.tabBar.lastSwipe, 80);
        }

        function test_leftSwipeOnChecksDoesNothing() {
            const detail = openPullRequest(7);
            showTab(detail, 3);
            swipe(detail, -80);
            compare(detail.currentTab, 3);
            compare(detail.tabBar.lastSwipe, -80);
        }

        function test_swipeOfExactly40DoesNothing_data() {
            return [{ tag: "left", dx: -40 }, { tag: "right", dx: 40 }];
        }

        function test_swipeOfExactly40DoesNothing(data) {
            const detail = openPullRequest(7);
            showTab(detail, 1);
            swipe(detail, data.dx);
            // The swipe was seen, at exactly 40, and did nothing.
            compare(detail.tabBar.lastSwipe, data.dx);
            compare(detail.currentTab, 1);
        }

        function test_tappingATabSelectsIt() {
            const detail = openPullRequest(7);
            mouseClick(find(detail, "tab_Checks"));
            compare(detail.selectedTab, 3);
            mouseClick(find(detail, "tab_Overview"));
            compare(detail.selectedTab, 0);
        }

        function test_runWithoutANameShowsWorkflowInItsCardAndTheRerunMessage() {
            const detail = openPullRequest(9);
            showTab(detail, 3);
            const card = find(detail, "runCard_39");
            verify(card);
            compare(find(card, "runName").text, "workflow");
            const rerun = find(find(card, "jobRow_98"), "rerunButton");
            verify(rerun.visible);
            mouseClick(rerun);
            tryVerify(() => detail.rerunConfirm.opened);
            compare(detail.rerunConfirm.title, "Re-run workflow?");
            compare(detail.rerunConfirm.message, "Re-run \"workflow\"?");
            detail.rerunConfirm.reject();
            tryVerify(() => !detail.rerunConfirm.visible);
            compare(detail.showRerunConfirm, null);
            compare(gitea.requestCount("POST", "/api/v1/repos/ann/tool/actions/runs/39/rerun"), 0);
        }

        function test_rerunMessageNamesANamedRunAndConfirmingReRunsIt() {
            gitea.answer("GET", "/api/v1/repos/ann/tool/actions/runs", 200,
                         JSON.stringify({ total_count: 1, workflow_runs: [
                             { id: 39, name: "build", status: "completed", conclusion: "failure" }] }));
            const detail = openPullRequest(9);
            showTab(detail, 3);
            const card = find(detail, "runCard_39");
            compare(find(card, "runName").text, "build");
            mouseClick(find(find(card, "jobRow_98"), "rerunButton"));
            tryVerify(() => detail.rerunConfirm.opened);
            compare(detail.rerunConfirm.message, "Re-run \"build\"?");
            detail.rerunConfirm.accept();
            tryVerify(() => gitea.requestCount("POST", "/api/v1/repos/ann/tool/actions/runs/39/rerun") === 1, 5000);
        }

        function test_waitingJobThatFailedOffersRerunButNoLogs() {
            gitea.answer("GET", "/api/v1/repos/ann/tool/actions/runs/39/jobs", 200,
                         JSON.stringify({ total_count: 1, jobs: [
                             { id: 98, name: "test", status: "waiting", conclusion: "failure" }] }));
            const detail = openPullRequest(9);
            showTab(detail, 3);
            const row = find(detail, "jobRow_98");
            verify(row);
            compare(find(row, "jobStatus").status, CIStatus.Failure);
            verify(find(row, "rerunButton").visible);
            verify(!find(row, "logsButton").visible);
        }

        function test_executingRunAndJobShowOrangeCirclesAndNoLogs() {
            // Gitea's word for an executing run or job is "in_progress".
            gitea.answer("GET", "/api/v1/repos/ann/tool/actions/runs", 200,
                         JSON.stringify({ total_count: 1, workflow_runs: [
                             { id: 39, status: "in_progress" }] }));
            gitea.answer("GET", "/api/v1/repos/ann/tool/actions/runs/39/jobs", 200,
                         JSON.stringify({ total_count: 2, jobs: [
                             { id: 97, name: "build", status: "completed", conclusion: "success" },
                             { id: 98, name: "test", status: "in_progress", conclusion: "success" }] }));
            const detail = openPullRequest(9);
            tryCompare(detail.vm, "ciStatus", CIStatus.Running);
            const header = find(detail, "headerCI");
            compare(header.status, CIStatus.Running);
            verify(Qt.colorEqual(header.color, Theme.orange));
            showTab(detail, 3);
            const card = find(detail, "runCard_39");
            verify(card);
            verify(Qt.colorEqual(find(card, "runStatus").color, Theme.orange));
            const executing = find(detail, "jobRow_98");
            compare(find(executing, "jobStatus").status, CIStatus.Running);
            verify(Qt.colorEqual(find(executing, "jobStatus").color, Theme.orange));
            verify(!find(executing, "logsButton").visible);
            verify(!find(executing, "rerunButton").visible);
            verify(find(find(detail, "jobRow_97"), "logsButton").visible);
        }

        function test_finishedJobsOfferTheirLogs() {
            const detail = openPullRequest(9);
            showTab(detail, 3);
            const passed = find(detail, "jobRow_97");
            verify(find(passed, "logsButton").visible);
            verify(!find(passed, "rerunButton").visible);
            mouseClick(find(passed, "logsButton"));
            tryCompare(stack, "depth", 3);
            compare(stack.currentItem.objectName, "jobLogsView");
            compare(stack.currentItem.jobID, 97);
            compare(stack.currentItem.jobName, "build");
        }

        // The combined status of `sha` of ann/tool as Gitea sends it, with `statuses` in it.
        function answerStatuses(sha, statuses) {
            const numbered = statuses.map((s, i) => Object.assign({ id: i + 1, creator: { login: "ci" } }, s));
            gitea.answer("GET", "/api/v1/repos/ann/tool/commits/" + sha + "/status", 200,
                         JSON.stringify({ state: "pending", sha: sha, total_count: numbered.length,
                                          statuses: numbered }));
        }

        // Pull request 11 of ann/tool has no Actions runs; its head commit is this one.
        readonly property string noRunsSha: "b16b00b5c0de1234567890abcdef0123456789ab"

        function test_commitStatusesCardSitsBelowNoWorkflowRuns() {
            answerStatuses(noRunsSha, [
                { context: "ci/woodpecker/pr/build", status: "failure", description: "3 tests failed",
                  target_url: "https://ci.example.org/repos/4/pipeline/17" },
                { context: "ci/woodpecker/pr/lint", status: "pending", description: "Running" },
                // What Actions posts itself, written with another host than the instance's.
                { context: "build / test (pull_request)", status: "success",
                  target_url: "https://git.example.org/ann/tool/actions/runs/5/jobs/0" }
            ]);
            const detail = openPullRequest(11);
            tryCompare(detail.vm.statusesModel, "count", 2, 5000);
            showTab(detail, 3);
            const noRuns = find(detail, "noRuns");
            const card = find(detail, "statusesCard");
            verify(noRuns.visible);
            verify(card.visible);
            verify(card.y >= noRuns.y + noRuns.height, "the card is below the no-runs text");
            const failed = find(card, "statusRow_0");
            compare(find(failed, "statusContext").text, "ci/woodpecker/pr/build");
            compare(find(failed, "statusDescription").text, "3 tests failed");
            const pending = find(card, "statusRow_1");
            compare(find(pending, "statusContext").text, "ci/woodpecker/pr/lint");
            verify(!find(card, "statusRow_2"), "the status Actions posted is left out");
        }

        function test_commitStatusCirclesUseTheirColours_data() {
            return [
                { tag: "success", state: "success", colour: Theme.green },
                { tag: "failure", state: "failure", colour: Theme.red },
                { tag: "error", state: "error", colour: Theme.red },
                { tag: "pending", state: "pending", colour: Theme.orange },
                { tag: "warning", state: "warning", colour: Theme.orange },
                { tag: "unknown word", state: "skipped", colour: Theme.alpha(Theme.grey, 0.5) }
            ];
        }

        function test_commitStatusCirclesUseTheirColours(data) {
            answerStatuses(noRunsSha, [{ context: "ci/drone", status: data.state }]);
            const detail = openPullRequest(11);
            tryCompare(detail.vm.statusesModel, "count", 1, 5000);
            showTab(detail, 3);
            const circle = find(find(detail, "statusRow_0"), "statusCircle");
            verify(Qt.colorEqual(circle.color, data.colour), "" + circle.color);
        }

        function test_commitStatusDetailsOnlyForWebPages_data() {
            return [
                { tag: "https", url: "https://ci.example.org/build/1", shown: true },
                { tag: "http", url: "http://jenkins.lan:8080/job/tool/12/", shown: true },
                { tag: "javascript", url: "javascript:alert(1)", shown: false },
                { tag: "file", url: "file:///etc/passwd", shown: false },
                { tag: "relative", url: "/builds/1", shown: false },
                { tag: "none", url: "", shown: false }
            ];
        }

        function test_commitStatusDetailsOnlyForWebPages(data) {
            answerStatuses(noRunsSha, [{ context: "ci/jenkins", status: "success", target_url: data.url }]);
            const detail = openPullRequest(11);
            tryCompare(detail.vm.statusesModel, "count", 1, 5000);
            showTab(detail, 3);
            const details = find(find(detail, "statusRow_0"), "statusDetailsButton");
            compare(details.visible, data.shown);
            if (data.shown) {
                compare(details.text, "Details");
                mouseClick(details);
                compare(gitea.openedLinks(), [data.url]);
            }
        }

        function test_commitStatusesCardSitsBelowTheRuns() {
            answerStatuses("7c0ffee5a1b2c3d4e5f60718293a4b5c6d7e8f90",
                           [{ context: "coverage/codecov", status: "success", description: "84% (+0.6%)" }]);
            const detail = openPullRequest(9);
            tryCompare(detail.vm.statusesModel, "count", 1, 5000);
            showTab(detail, 3);
            const card = find(detail, "statusesCard");
            const run = find(detail, "runCard_39");
            verify(!find(detail, "noRuns").visible);
            verify(card.visible);
            verify(card.y >= run.y + run.height, "the card is below the runs");
            // The runs decide the summary when there are any.
            compare(detail.vm.ciStatus, CIStatus.Failure);
        }

        function test_noCommitStatusesCardWithoutStatuses() {
            gitea.answer("GET", "/api/v1/repos/ann/tool/commits/" + noRunsSha + "/status", 404,
                         JSON.stringify({ message: "Not Found" }));
            const detail = openPullRequest(11);
            showTab(detail, 3);
            tryVerify(() => gitea.requestCount("GET", "/api/v1/repos/ann/tool/commits/" + noRunsSha + "/status") === 1, 5000);
            wait(50);
            verify(find(detail, "noRuns").visible);
            verify(!find(detail, "statusesCard").visible);
            compare(detail.vm.ciStatus, CIStatus.Unknown);
        }

        function test_pullingTheChecksTabRefreshesCommitStatuses() {
            answerStatuses(noRunsSha, [{ context: "ci/woodpecker/pr/build", status: "pending" }]);
            const detail = openPullRequest(11);
            tryCompare(detail.vm, "ciStatus", CIStatus.Running, 5000);
            showTab(detail, 3);
            answerStatuses(noRunsSha, [{ context: "ci/woodpecker/pr/build", status: "failure" }]);
            find(find(detail, "checksTab"), "tabPullToRefresh").trigger();
            tryCompare(detail.vm, "ciStatus", CIStatus.Failure, 5000);
            verify(Qt.colorEqual(find(find(detail, "statusRow_0"), "statusCircle").color, Theme.red));
            verify(Qt.colorEqual(find(detail, "headerCI").color, Theme.red));
        }

        function test_fileStatusMarksAreCaseSensitive() {
            gitea.answer("GET", "/api/v1/repos/ann/tool/pulls/7/files", 200, JSON.stringify([
                { filename: "Added.txt", status: "Added", additions: 1, deletions: 0 },
                { filename: "added.txt", status: "added", additions: 2, deletions: 0 },
                { filename: "removed.txt", status: "removed", additions: 0, deletions: 3 },
                { filename: "deleted.txt", status: "deleted", additions: 0, deletions: 2 },
                { filename: "Deleted.txt", status: "Deleted", additions: 0, deletions: 2 },
                { filename: "renamed.txt", status: "renamed", additions: 0, deletions: 0 },
                { filename: "changed.txt", status: "changed", additions: 4, deletions: 5 },
                { filename: "nostatus.txt", additions: 0, deletions: 0 }
            ]));
            const detail = openPullRequest(7);
            showTab(detail, 2);
            const expected = { "Added.txt": "✎", "added.txt": "＋", "removed.txt": "－",
                               "deleted.txt": "－", "Deleted.txt": "✎",
                               "renamed.txt": "→", "changed.txt": "✎", "nostatus.txt": "✎" };
            const list = find(detail, "fileList");
            tryCompare(list, "count", 8);
            for (const name in expected) {
                const row = find(list, "fileRow_" + name);
                verify(row, name);
                compare(find(row, "statusMark").text, expected[name], name);
            }
            const changed = find(list, "fileRow_changed.txt");
            compare(find(changed, "additions").text, "+4");
            compare(find(changed, "deletions").text, "\u22125");
        }

        function test_deletedFileOfTheSeedShowsTheRemovedMark() {
            // Gitea calls a removed file "deleted".
            const detail = openPullRequest(7);
            showTab(detail, 2);
            const list = find(detail, "fileList");
            tryVerify(() => list.count > 0);
            const row = find(list, "fileRow_uploader/legacy.go");
            verify(row);
            compare(find(row, "statusMark").text, "－");
        }

        function test_everyPageOfTheChangedFilesIsListed() {
            gitea.answerPaged("/api/v1/repos/ann/tool/pulls/7/files", JSON.stringify(manyFiles(75)), 30);
            const detail = openPullRequest(7);
            showTab(detail, 2);
            const list = find(detail, "fileList");
            tryCompare(list, "count", 75, 5000);
            compare(gitea.requestCount("GET", "/api/v1/repos/ann/tool/pulls/7/files"), 3);
            list.positionViewAtEnd();
            tryVerify(() => find(list, "fileRow_file-75.txt") !== null);
            compare(find(list, "filesCutNotice"), null);
            // The links named the proxy's host; every page was asked at the instance.
            compare(gitea.strangerContacts, 0);
        }

        function test_filesCutAtThePageBoundSaySoBelowTheList() {
            gitea.answerPaged("/api/v1/repos/ann/tool/pulls/7/files", JSON.stringify(manyFiles(120)), 1);
            const detail = openPullRequest(7);
            showTab(detail, 2);
            const list = find(detail, "fileList");
            tryCompare(list, "count", 100, 10000);
            list.positionViewAtEnd();
            tryVerify(() => find(list, "filesCutNotice") !== null);
            const notice = find(list, "filesCutNotice");
            compare(notice.text, "Showing the first 100 of 120.");
            verify(notice.visible);
        }

        function test_tappingAFileOpensItsDiff() {
            const detail = openPullRequest(7);
            showTab(detail, 2);
            const row = find(detail, "fileRow_uploader/retry.go");
            mouseClick(row);
            tryCompare(stack, "depth", 3);
            compare(stack.currentItem.objectName, "diffView");
            compare(stack.currentItem.filename, "uploader/retry.go");
            compare(stack.currentItem.diff.filename, "uploader/retry.go");
            // Coming back loads the pull request again.
            const loads = gitea.requestCount("GET", "/api/v1/repos/ann/tool/pulls/7");
            stack.pop();
            tryVerify(() => gitea.requestCount("GET", "/api/v1/repos/ann/tool/pulls/7") === loads + 1);
        }

        function test_reviewWithoutAUserShowsUnknownAsAuthor() {
            gitea.answer("GET", "/api/v1/repos/ann/tool/pulls/7/reviews", 200, JSON.stringify([
                { id: 1, state: "APPROVED", body: "Fine by me." },
                { id: 2, state: "REQUEST_CHANGES", user: { login: "bo" } },
                { id: 3, state: "COMMENT", user: { login: "cy" }, body: "Hm." }
            ]));
            const detail = openPullRequest(7);
            showTab(detail, 1);
            const tab = find(detail, "conversationTab");
            const lines = [];
            for (const item of findAll(tab, "reviewLine"))
                lines.push(item.text);
            compare(lines, ["✅ unknown approved", "🔴 bo requested changes", "💬 cy reviewed"]);
        }

        // Reloads the open pull request and waits until every list of it has come back.
        function reloadAndWait(detail) {
            const loads = gitea.requestCount("GET", "/api/v1/repos/ann/tool/pulls/7/reviews");
            detail.vm.reload();
            tryVerify(() => gitea.requestCount("GET", "/api/v1/repos/ann/tool/pulls/7/reviews") === loads + 1,
                      5000);
            tryVerify(() => !detail.vm.isLoading && !detail.vm.isActionsLoading, 5000);
            waitForItemPolished(find(detail, "tabContent"));
        }

        // `after` holds the very objects of `before`, in order: none was made anew.
        function verifySameObjects(after, before) {
            compare(after.length, before.length);
            for (let i = 0; i < before.length; ++i)
                verify(after[i] === before[i], "object " + i + " was made anew");
        }

        function answerConversation(reviews, comments) {
            gitea.answer("GET", "/api/v1/repos/ann/tool/pulls/7/reviews", 200, JSON.stringify(reviews));
            gitea.answer("GET", "/api/v1/repos/ann/tool/issues/7/comments", 200, JSON.stringify(comments));
        }

        function test_reloadKeepsTheConversationsRowsAndChangesOnlyWhatChanged() {
            const reviews = [
                { id: 1, state: "APPROVED", user: { login: "ann" }, body: "Fine by me." },
                { id: 2, state: "COMMENT", user: { login: "bo" }, body: "Hm." }
            ];
            const comments = [
                { id: 11, user: { login: "ann" }, body: "First", created_at: "2024-05-01T10:00:00Z" },
                { id: 12, user: { login: "bo" }, body: "Second", created_at: "2024-05-01T11:00:00Z" }
            ];
            answerConversation(reviews, comments);
            const detail = openPullRequest(7);
            showTab(detail, 1);
            const tab = find(detail, "conversationTab");
            const reviewRows = findAll(tab, "reviewRow");
            const commentCards = findAll(tab, "commentCard");
            compare(reviewRows.length, 2);
            compare(commentCards.length, 2);

            // The same conversation again: the very same rows.
            reloadAndWait(detail);
            verifySameObjects(findAll(tab, "reviewRow"), reviewRows);
            verifySameObjects(findAll(tab, "commentCard"), commentCards);

            // A review changed its mind and a comment came: the rows that were there stay, with
            // the new words, and one card is added below them.
            reviews[1].state = "REQUEST_CHANGES";
            comments.push({ id: 13, user: { login: "cy" }, body: "Third", created_at: "2024-05-01T12:00:00Z" });
            answerConversation(reviews, comments);
            reloadAndWait(detail);
            const rowsAfter = findAll(tab, "reviewRow");
            const cardsAfter = findAll(tab, "commentCard");
            verifySameObjects(rowsAfter, reviewRows);
            compare(cardsAfter.length, 3);
            verifySameObjects(cardsAfter.slice(0, 2), commentCards);
            compare(find(rowsAfter[1], "reviewLine").text, "🔴 bo requested changes");
            compare(find(cardsAfter[2], "commentBody").text, "Third");
        }

        function test_commentAndRunTimesReadRelativeToNowAndNothingWithoutADate() {
            const twoHoursAgo = new Date(Date.now() - 2 * 3600 * 1000 - 60 * 1000).toISOString();
            answerConversation([], [
                { id: 11, user: { login: "ann" }, body: "Dated", created_at: twoHoursAgo },
                { id: 12, user: { login: "bo" }, body: "Undated" }
            ]);
            gitea.answer("GET", "/api/v1/repos/ann/tool/actions/runs", 200,
                         JSON.stringify({ total_count: 2, workflow_runs: [
                             { id: 39, name: "build", status: "completed", conclusion: "success",
                               created_at: twoHoursAgo },
                             { id: 40, name: "lint", status: "completed", conclusion: "success" }] }));
            const detail = openPullRequest(7);
            showTab(detail, 1);
            const cards = findAll(find(detail, "conversationTab"), "commentCard");
            compare(cards.length, 2);
            compare(find(cards[0], "commentTime").text, "2 hours ago");
            compare(find(cards[1], "commentTime").text, "");
            showTab(detail, 3);
            compare(find(find(detail, "runCard_39"), "runTime").text, "2 hr. ago");
            compare(find(find(detail, "runCard_40"), "runTime").text, "");
        }

        function test_conversationWithoutCommentsSaysSo() {
            gitea.answer("GET", "/api/v1/repos/ann/tool/issues/7/comments", 200, "[]");
            gitea.answer("GET", "/api/v1/repos/ann/tool/pulls/7/reviews", 200, "[]");
            const detail = openPullRequest(7);
            showTab(detail, 1);
            verify(find(detail, "noComments").visible);
            verify(!find(detail, "reviewsHeading").visible);
        }

        function test_afterASuccessfulMergeTheMergedOverlayShowsFor1200msThenTheScreenCloses() {
            const detail = openPullRequest(7);
            compare(detail.mergedDisplayTime, 1200);
            // The moments things happen, taken as they happen.
            let shownAt = 0;
            let hiddenEarly = false;
            let closedAt = 0;
            let overlayVisibleWhenClosing = false;
            detail.showMergeSuccessChanged.connect(() => {
                if (detail.showMergeSuccess)
                    shownAt = Date.now();
            });
            const overlay = detail.mergedOverlay;
            overlay.visibleChanged.connect(() => {
                // The overlay may report its last change while the screen that held it goes away.
                if (overlay && !overlay.visible && closedAt === 0)
                    hiddenEarly = true;
            });
            stack.depthChanged.connect(() => {
                if (closedAt === 0) {
                    closedAt = Date.now();
                    overlayVisibleWhenClosing = detail.mergedOverlay.visible;
                }
            });

            detail.openMergeSheet();
            tryVerify(() => detail.mergeSheet.opened);
            mouseClick(find(detail.mergeSheet.contentItem, "mergeConfirmButton"));
            tryVerify(() => shownAt > 0, 5000);
            verify(detail.mergedOverlay.visible);
            compare(find(detail.mergedOverlay.contentItem, "mergedText").text, "Merged");
            verify(SettingsStore.inboxNeedsRefresh);
            tryVerify(() => !detail.mergeSheet.visible);

            // Back on the inbox once the time is over, with the overlay shown all along.
            tryCompare(stack, "depth", 1, 5000);
            verify(overlayVisibleWhenClosing);
            verify(!hiddenEarly);
            // A QML timer may run up to 5 % short; it never closes the screen much sooner.
            verify(closedAt - shownAt >= 1140, "closed after " + (closedAt - shownAt) + " ms");
            verify(closedAt - shownAt < 3000, "closed after " + (closedAt - shownAt) + " ms");
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
    }
}
