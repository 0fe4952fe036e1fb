import QtQuick
import QtQuick.Controls
import QtTest
import Kestrine

// What a stranger's text may do to the screens: nothing. The simulated Gitea serves the hostile
// seed (tests/data/gitea/hostile-seed.json), whose titles, logins, repository, branch, file, run
// and job names, comments, reviews, descriptions and logs hold HTML tags, Markdown images, HTML
// entities, CSS, right-to-left overrides and a 10,000-character title, every address in them
// pointing at a local listener of this test. Each test checks what the screens draw (the text as
// typed, or in a description's lines only their inline formatting) and, afterwards, that the
// listener was never contacted.
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
        id: logsScreen
        LogsView {}
    }

    TestCase {
        id: test
        name: "HostileText"
        when: windowShown

        property var stack: null

        function init() {
            gitea.useHostileSeed();
            gitea.configure();
            SettingsStore.monitoredRepos = [];
            stack = createTemporaryObject(screen, root);
            const inbox = stack.currentItem;
            tryVerify(() => inbox.didInitialLoad && !inbox.vm.isLoading, 5000);
            compare(inbox.vm.errorMessage, "");
        }

        function cleanup() {
            // Whatever a screen fetched from the stranger's addresses arrived by now: each test
            // waits for its screens to load and lay out, and a fetch starts at layout.
            wait(100);
            compare(gitea.strangerContacts, 0,
                    "the app contacted the stranger's host: " + gitea.strangerRequests().join(", "));
            LogStore.clear();
            gitea.reset();
        }

        // A text a stranger could have written to make the screen load or style something.
        function isHostile(text) {
            return /[<&]|!\[|\u202e/.test(text);
        }

        // Every item under `item`, popups' contents included, depth first.
        function itemsUnder(item, found) {
            found = found || [];
            if (!item)
                return found;
            found.push(item);
            for (let i = 0; i < item.children.length; ++i)
                itemsUnder(item.children[i], found);
            return found;
        }

        function isTextItem(item) {
            return item instanceof Text || item instanceof TextEdit;
        }

        // Every text item under `item` that shows a hostile text draws it as plain text; the lines
        // of a Markdown body draw the rich text that InlineMarkdownFormat wrote for them, never
        // the line itself. No image anywhere comes from outside the app. Answers how many
        // hostile texts were seen, so that a caller can tell the check saw something.
        function checkDrawnAsText(item) {
            let hostile = 0;
            for (const each of itemsUnder(item)) {
                if (each instanceof Image) {
                    const source = each.source.toString();
                    verify(source === "" || source.startsWith("qrc:/"), "an image from " + source);
                }
                if (!isTextItem(each) || !isHostile(each.text))
                    continue;
                ++hostile;
                if (each.markdown !== undefined) {
                    compare(each.textFormat, Text.RichText);
                    compare(each.text, InlineMarkdownFormat.richText(each.markdown));
                } else {
                    compare(each.textFormat, Text.PlainText, each.objectName + " draws " + each.text);
                }
            }
            return hostile;
        }

        // The text items under `item` called `name`, in tree order.
        function textsNamed(item, name) {
            return itemsUnder(item).filter(each => each.objectName === name).map(each => each.text);
        }

        // Role `role` of every row of `model`, in order.
        function roleValues(model, role) {
            const values = [];
            for (let row = 0; row < model.count; ++row)
                values.push(model.valueAt(row, role));
            return values;
        }

        function hostileRow(inbox) {
            return inbox.vm.displayedRows.find(row => row.pr.number === 1);
        }

        function openDetail(number) {
            const inbox = stack.get(0);
            inbox.openRow(inbox.vm.displayedRows.find(row => row.pr.number === number));
            tryCompare(stack, "depth", 2);
            tryVerify(() => !stack.busy);
            const detail = stack.currentItem;
            tryVerify(() => detail.vm.hasPr && !detail.vm.isLoading && !detail.vm.isActionsLoading,
                      5000);
            return detail;
        }

        function showTab(detail, index) {
            detail.selectTab(index);
            waitForItemPolished(findChild(detail, "tabContent"));
            wait(50);
        }

        function test_inboxRowsShowTitlesAndRepositoryAsTyped() {
            const inbox = stack.currentItem;
            const row = hostileRow(inbox);
            verify(row.pr.title.indexOf("<img src=\"http://" + gitea.strangerHost()) >= 0);
            verify(textsNamed(inbox, "rowTitle").indexOf(row.pr.title) >= 0);
            verify(textsNamed(inbox, "rowRepository").indexOf(row.repo.full_name) >= 0);
            compare(row.repo.full_name, "ann/web<b>&amp;<font color=red>");
            const longRow = inbox.vm.displayedRows.find(r => r.pr.number === 2);
            compare(longRow.pr.title.length, 10000);
            verify(textsNamed(inbox, "rowTitle").indexOf(longRow.pr.title) >= 0);
            verify(checkDrawnAsText(inbox) >= 4);
        }

        function test_detailHeaderAndEveryTabShowTheStrangersTextsAsTyped() {
            const detail = openDetail(1);
            const vm = detail.vm;
            compare(findChild(detail, "prTitle").text, vm.pr.title);
            compare(findChild(detail, "prReference").text, "ann/web<b>&amp;<font color=red>#1");

            showTab(detail, 1);
            const reviewLines = textsNamed(detail, "reviewLine");
            compare(reviewLines[0], "✅ mal<b>lory&amp;<font color=red> approved");
            // The login's override ends with the login: the verb after it reads forwards.
            compare(reviewLines[1], "🔴 \u2068\u202edevorppa\u2069 requested changes");
            // Each text as the server sent it (the hostile seed's, its host filled in).
            const host = gitea.strangerHost();
            compare(textsNamed(detail, "reviewBody"), [
                "<b>LGTM</b> <img src=\"http://" + host + "/review.png\">\nsecond line ![review](http://"
                    + host + "/review-md.png)",
                "<font color=\"#00aa00\">✅ Approved</font> \u202esdrawkcab"]);
            compare(textsNamed(detail, "commentAuthor"), ["mal<b>lory&amp;<font color=red>", "\u202edevorppa"]);
            const commentBodies = textsNamed(detail, "commentBody");
            compare(commentBodies.length, 2);
            verify(commentBodies[0].startsWith("<img src=\"http://" + host + "/comment.png\"> <b>first line</b>\n"),
                   commentBodies[0]);
            compare(commentBodies, roleValues(vm.commentsModel, "body"));
            compare(commentBodies[1], "\u202edesrever &amp; &lt;b&gt;");

            showTab(detail, 2);
            compare(textsNamed(detail, "fileName"), [
                "docs/<img src=\"http://" + host + "/file.png\">.md",
                "<b>bold</b> &amp; <font color=red>red</font>.txt",
                "src/\u202egnp.exe"]);

            showTab(detail, 3);
            compare(textsNamed(detail, "jobName"), [
                "build <img src=\"http://" + host + "/job.png\">",
                "<b>test</b> <font color=red>\u202etset</font>"]);

            verify(checkDrawnAsText(detail) >= 15);
        }

        function test_runNamesFromTheServerAreText() {
            const name = "<img src=\"http://" + gitea.strangerHost() + "/run.png\"> <b>ci</b>";
            gitea.answer("GET", "/api/v1/repos/ann/web<b>&amp;<font color=red>/actions/runs", 200,
                         JSON.stringify({ total_count: 1, workflow_runs: [{
                             id: 61, name: name, status: "completed", conclusion: "failure",
                             head_sha: "a1b2c3d4e5f60718293a4b5c6d7e8f9001122334",
                             created_at: "2024-05-01T10:21:00Z" }] }));
            const detail = openDetail(1);
            showTab(detail, 3);
            compare(textsNamed(detail, "runName"), [name]);
            detail.askToRerun(detail.vm.runsModel.valueAt(0, "runID"),
                              detail.vm.runsModel.valueAt(0, "name"));
            tryVerify(() => detail.rerunConfirm.opened);
            compare(detail.rerunConfirm.message, "Re-run \"" + name + "\"?");
            verify(checkDrawnAsText(detail.rerunConfirm.contentItem) >= 1);
            detail.rerunConfirm.close();
            verify(checkDrawnAsText(detail) >= 1);
        }

        function test_commitStatusTextsFromTheServerAreText() {
            const stranger = "http://" + gitea.strangerHost();
            const context = "<img src=\"" + stranger + "/context.png\"> ci/<b>woodpecker</b>";
            const description = "![badge](" + stranger + "/badge.png) &amp; \u202eliaf <i>3</i>";
            const sha = "a1b2c3d4e5f60718293a4b5c6d7e8f9001122334";
            gitea.answer("GET", "/api/v1/repos/ann/web<b>&amp;<font color=red>/commits/" + sha + "/status",
                         200, JSON.stringify({ state: "failure", sha: sha, total_count: 2, statuses: [
                             { id: 1, status: "failure", context: context, description: description,
                               target_url: stranger + "/build/1" },
                             { id: 2, status: "error", context: "<u>lint</u>",
                               description: "<script>", target_url: "javascript:fetch('" + stranger + "')" }
                         ] }));
            const detail = openDetail(1);
            tryCompare(detail.vm.statusesModel, "count", 2, 5000);
            showTab(detail, 3);
            compare(textsNamed(detail, "statusContext"), [context, "<u>lint</u>"]);
            compare(textsNamed(detail, "statusDescription"), [description, "<script>"]);
            const buttons = itemsUnder(detail).filter(each => each.objectName === "statusDetailsButton");
            compare(buttons.map(button => button.visible), [true, false]);
            verify(checkDrawnAsText(findChild(detail, "statusesCard")) >= 4);
        }

        function test_descriptionLinesKeepOnlyTheirInlineFormatting() {
            const detail = openDetail(1);
            const lines = itemsUnder(findChild(detail, "description"))
                .filter(each => isTextItem(each) && each.markdown !== undefined);
            verify(lines.length >= 6);
            for (const line of lines) {
                // Only the markup the renderer writes itself: emphasis, code, links.
                const tags = line.text.match(/<\/?([a-z]+)/g) || [];
                for (const tag of tags)
                    verify(["<span", "</span", "<b", "</b", "<i", "</i", "<s", "</s", "<code",
                            "</code", "<a", "</a", "<br"].indexOf(tag) >= 0, tag + " in " + line.text);
            }
            const formatted = lines.find(line => line.markdown.startsWith("Text with"));
            verify(formatted.text.indexOf("<b>bold</b>") >= 0);
            verify(formatted.text.indexOf("<i>emphasis</i>") >= 0);
            verify(formatted.text.indexOf("<code>code &lt;b&gt;span&lt;/b&gt;</code>") >= 0);
            verify(formatted.text.indexOf("<s>struck</s>") >= 0);
            // Raw HTML shows as typed.
            verify(formatted.text.indexOf("&lt;img src=&quot;http://" + gitea.strangerHost()) >= 0);
            // An image shows its alt text.
            const images = lines.find(line => line.markdown.startsWith("An image"));
            verify(images.text.indexOf("An image: body and a linked one badge") >= 0, images.text);
            // A heading's and a code line's text is never parsed at all.
            const heading = findChild(detail, "markdownHeading");
            compare(heading.textFormat, Text.PlainText);
            verify(heading.text.indexOf("<img src=") >= 0);
            const code = findChild(detail, "markdownCode");
            verify(code.lineText.indexOf("<img src=") >= 0);
            verify(checkDrawnAsText(detail) >= 10);
        }

        // The point of `line` where a link with this target can be clicked; null when none.
        function linkPoint(line, target) {
            for (let y = 2; y < line.height; y += 4) {
                for (let x = 1; x < line.width; x += 2) {
                    if (line.linkAt(x, y) === target)
                        return Qt.point(x, y);
                }
            }
            return null;
        }

        function test_onlyWebAndMailLinksCanBeOpened() {
            const detail = openDetail(1);
            const line = itemsUnder(findChild(detail, "description"))
                .find(each => isTextItem(each) && each.markdown !== undefined
                              && each.markdown.startsWith("[a web page]"));
            verify(line);
            // Only the web page and the mail address are links at all.
            for (const target of ["file:///etc/passwd", "javascript:alert(1)", "kestrine-evil://run"]) {
                verify(line.text.indexOf(target) < 0, line.text);
                compare(linkPoint(line, target), null);
            }
            const web = linkPoint(line, "https://example.org/page");
            verify(web !== null);
            mouseClick(line, web.x, web.y);
            compare(gitea.openedLinks(), ["https://example.org/page"]);
            const mail = linkPoint(line, "mailto:ann@example.org");
            verify(mail !== null);
            mouseClick(line, mail.x, mail.y);
            compare(gitea.openedLinks(), ["https://example.org/page", "mailto:ann@example.org"]);

            // The same for a link that reaches the opener some other way.
            for (const target of ["file:///etc/passwd", "javascript:alert(1)", "kestrine-evil://run",
                                  "FILE:///etc/passwd", "relative/page.html", ""])
                line.linkActivated(target);
            compare(gitea.openedLinks(), ["https://example.org/page", "mailto:ann@example.org"]);
            line.linkActivated("HTTPS://example.org/other");
            compare(gitea.openedLinks()[2], "https://example.org/other");
        }

        function test_diffAndJobLogShowTheStrangersTextsAsTyped() {
            const detail = openDetail(1);
            const filename = detail.vm.filesModel.valueAt(1, "filename");
            detail.openFile(filename);
            tryCompare(stack, "depth", 3);
            const diffView = stack.currentItem;
            tryVerify(() => !diffView.diff.isLoading, 5000);
            compare(diffView.header.title, filename);
            tryVerify(() => textsNamed(diffView, "diffLineText").length > 0);
            const shown = textsNamed(diffView, "diffLineText");
            verify(shown.some(text => text.indexOf("<font color=\"#ff00ff\">pink</font>") >= 0), shown);
            verify(checkDrawnAsText(diffView) >= 3);
            stack.pop();
            tryVerify(() => !stack.busy);

            showTab(detail, 3);
            const jobs = detail.vm.runsModel.valueAt(0, "jobs");
            const jobName = jobs.valueAt(1, "name");
            detail.openLogs(detail.vm.runsModel.valueAt(0, "runID"), jobs.valueAt(1, "jobID"), jobName);
            tryCompare(stack, "depth", 3);
            const logView = stack.currentItem;
            tryVerify(() => !logView.log.isLoading, 5000);
            compare(logView.header.title, jobName);
            verify(logView.log.text.indexOf("<img src=\"http://" + gitea.strangerHost()) >= 0);
            const chunk = findChild(logView, "logText").itemAtIndex(0);
            verify(chunk.text.indexOf("<b>bold</b> <font color=red>red</font>") >= 0);
            verify(checkDrawnAsText(logView) >= 2);
        }

        function test_serverErrorMessagesAreText() {
            const message = "<img src=\"http://" + gitea.strangerHost() + "/error.png\"> <b>denied</b> &amp;";
            gitea.answer("GET", "/api/v1/repos/ann/web<b>&amp;<font color=red>/pulls/1", 500,
                         JSON.stringify({ message: message }));
            const inbox = stack.get(0);
            inbox.openRow(hostileRow(inbox));
            tryCompare(stack, "depth", 2);
            const detail = stack.currentItem;
            tryVerify(() => detail.vm.errorMessage !== "" && !detail.vm.isLoading, 5000);
            const state = findChild(detail, "loadFailedState");
            verify(state.visible);
            verify(state.description.indexOf(message) >= 0, state.description);
            verify(checkDrawnAsText(state) >= 1);
            tryVerify(() => detail.errorAlert.opened);
            verify(checkDrawnAsText(detail.errorAlert.contentItem) >= 1);
        }

        function test_logsScreenShowsTheStrangersTextsAsTyped() {
            openDetail(1);
            const typed = "PR 1: <img src=\"http://" + gitea.strangerHost() + "/log.png\"> <b>x</b> \u202eevil";
            gitea.log(typed, "WARN");
            stack.push(logsScreen);
            tryVerify(() => !stack.busy);
            const logs = stack.currentItem;
            const messages = textsNamed(logs, "entryMessage");
            compare(messages[0], typed);
            // The requests for the repository's pull request left their lines, its name in them.
            verify(LogStore.count > 3);
            verify(checkDrawnAsText(logs) >= 1);
        }

        function test_aTenThousandCharacterTitleLeavesRoomForTheTabs() {
            const detail = openDetail(2);
            const title = findChild(detail, "prTitle");
            compare(title.text.length, 10000);
            compare(title.text, detail.vm.pr.title);
            const header = findChild(detail, "prHeader");
            verify(header.height < root.height / 4, "header " + header.height);
            verify(findChild(detail, "tabContent").height > root.height / 2);
            // A tap shows the whole title, scrolling inside at most a third of the screen.
            verify(title.truncated);
            mouseClick(title, 20, 10);
            tryVerify(() => detail.titleExpanded);
            verify(!title.truncated);
            verify(header.height <= root.height / 3 + 60, "header " + header.height);
            verify(findChild(detail, "tabContent").height > root.height / 3);
            mouseClick(title, 20, 10);
            tryVerify(() => !detail.titleExpanded);
            verify(checkDrawnAsText(detail) >= 1);
        }
    }
}
