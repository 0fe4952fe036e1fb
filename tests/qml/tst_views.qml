import QtQuick
import QtQuick.Controls
import QtTest
import Kestrine

// The views the detail screen opens or embeds: the diff of one file, a job's log, and Markdown.
Item {
    id: root
    width: 390
    height: 844

    Component {
        id: screen
        StackView {
            width: root.width
            height: root.height
            initialItem: Item {}
        }
    }

    Component {
        id: diffView
        DiffView {}
    }

    Component {
        id: jobLogsView
        JobLogsView {}
    }

    Component {
        id: markdown
        MarkdownText {
            width: 360
        }
    }

    Component {
        id: plainLabel
        Label {
            textFormat: Text.PlainText
        }
    }

    TestCase {
        id: test
        name: "Views"
        when: windowShown

        readonly property var tool: ({ id: 12, name: "tool", full_name: "ann/tool", owner: { login: "ann" } })

        function find(parent, name) {
            return findChild(parent, name);
        }

        function init() {
            gitea.reset();
            gitea.configure();
        }

        function open(component, properties) {
            const stack = createTemporaryObject(screen, root);
            stack.push(component, properties);
            tryVerify(() => !stack.busy);
            return stack.currentItem;
        }

        function openDiff(filename) {
            const view = open(diffView, { repo: tool, prNumber: 7, filename: filename });
            tryVerify(() => !view.diff.isLoading, 5000);
            return view;
        }

        function lineTexts(model) {
            const texts = [];
            for (let i = 0; i < model.count; ++i)
                texts.push(model.data(model.index(i, 0), Qt.UserRole + 1));
            return texts;
        }

        function test_diffShowsTheFilesSectionWithItsLines() {
            const view = openDiff("uploader/retry.go");
            compare(view.header.title, "uploader/retry.go");
            verify(find(view, "diffLines").visible);
            const texts = lineTexts(view.diff);
            // The rest of the marker line first, then the file's hunks; no other file's lines.
            compare(texts[0], "");
            verify(texts[1].startsWith("@@"));
            verify(texts.every(t => !t.startsWith("diff --git")));
            compare(find(view, "diffLines").count, view.diff.count);
        }

        function test_aDeletedFileWhoseMarkerIsAbsentShowsTheWholeDiff() {
            const view = openDiff("uploader/legacy.go");
            const texts = lineTexts(view.diff);
            verify(texts[0].startsWith("diff --git a/docs/upload.md"));
            verify(texts.filter(t => t.startsWith("diff --git")).length >= 4);
        }

        function test_diffFailureShowsCouldntLoadDiff() {
            gitea.answer("GET", "/api/v1/repos/ann/tool/pulls/7.diff", 500, "{\"message\":\"boom\"}");
            const view = openDiff("uploader/retry.go");
            const state = find(view, "diffErrorState");
            verify(state.visible);
            compare(state.title, "Couldn't load diff");
            verify(state.description !== "");
            verify(!find(view, "diffLines").visible);
        }

        function openLog(jobID) {
            const view = open(jobLogsView, { repo: tool, runID: 39, jobID: jobID, jobName: "test" });
            tryVerify(() => !view.log.isLoading, 5000);
            return view;
        }

        function test_logShowsTheTextAsTheServerSentItEscapeSequencesIncluded() {
            const esc = gitea.escape();
            const text = "2024-05-01T10:21:02Z " + esc + "[31mFAIL" + esc + "[0m\r\nline two\n";
            gitea.answer("GET", "/api/v1/repos/ann/tool/actions/jobs/98/logs", 200, text);
            const view = openLog(98);
            compare(view.log.text, text);
            compare(view.header.title, "test");
            verify(find(view, "logText").visible);
            // Every piece together is the text, unchanged.
            let joined = "";
            for (let i = 0; i < view.chunks.count; ++i)
                joined += view.chunks.chunk(i);
            compare(joined, text);
            const shown = find(view, "logText").itemAtIndex(0).text;
            verify(shown.indexOf(esc + "[31mFAIL" + esc + "[0m") >= 0);
            verify(find(view, "shareButton").enabled);
        }

        function test_aLongLogStaysLoadingUntilItsPiecesAreCutThenShowsAllOfIt() {
            // Longer than the pieces model cuts at once: it is cut on a worker thread.
            let text = "";
            for (let i = 0; text.length <= 300000; ++i)
                text += "2024-05-01T10:21:02Z ok  \tnorrum.com/harbor/pkg/module" + i + "\r\n";
            gitea.answer("GET", "/api/v1/repos/ann/tool/actions/jobs/98/logs", 200, text);
            gitea.holdWorkers();
            const view = openLog(98);
            compare(view.log.text, text);
            verify(view.chunks.splitting);
            verify(find(view, "logProgress").visible);
            compare(find(view, "logProgress").text, "Loading logs…");
            verify(!find(view, "logText").visible);
            gitea.releaseWorkers();
            tryVerify(() => !view.chunks.splitting, 5000);
            verify(!find(view, "logProgress").visible);
            verify(find(view, "logText").visible);
            let joined = "";
            for (let i = 0; i < view.chunks.count; ++i)
                joined += view.chunks.chunk(i);
            compare(joined, text);
            verify(find(view, "shareButton").enabled);
        }

        function test_anEmptyLogShowsAnEmptyScrollAreaAndADisabledShareButton() {
            gitea.answer("GET", "/api/v1/repos/ann/tool/actions/jobs/98/logs", 200, "");
            const view = openLog(98);
            compare(view.log.text, "");
            compare(view.log.errorMessage, "");
            verify(find(view, "logText").visible);
            compare(find(view, "logText").count, 0);
            verify(!find(view, "logErrorState").visible);
            verify(!find(view, "shareButton").enabled);
        }

        function test_aFailedReloadAfterASuccessfulOneShowsTheErrorState() {
            const view = openLog(98);
            verify(view.log.text !== "");
            gitea.answer("GET", "/api/v1/repos/ann/tool/actions/jobs/98/logs", 500, "{\"message\":\"gone\"}");
            view.log.reload();
            tryVerify(() => !view.log.isLoading, 5000);
            verify(view.log.text !== "");
            const state = find(view, "logErrorState");
            verify(state.visible);
            compare(state.title, "Couldn't load logs");
            compare(state.symbol, "doc.text");
            verify(!find(view, "logText").visible);
        }

        function test_logWithoutConfigurationSaysNotConfigured() {
            SettingsStore.instanceURL = "";
            const view = openLog(98);
            compare(find(view, "logErrorState").description, "Not configured.");
            gitea.configure();
        }

        function test_logShareSheetSharesTheWholeLog() {
            const view = openLog(98);
            mouseClick(find(view, "shareButton"));
            tryVerify(() => view.shareSheet.opened);
            compare(view.shareSheet.sharedText, view.log.text);
            compare(view.shareSheet.fileName, "test.log");
            view.shareSheet.copy();
            compare(ShareService.clipboardText(), view.log.text);
        }

        // Where the platform offers no file dialog of its own (here: none), Qt Quick Dialogs
        // shows its own, written in QML over Qt.labs.folderlistmodel.
        function test_saveToFileOpensTheFileDialog() {
            const view = openLog(98);
            mouseClick(find(view, "shareButton"));
            tryVerify(() => view.shareSheet.opened);
            mouseClick(find(view.shareSheet.contentItem, "saveRow"));
            tryVerify(() => view.shareSheet.saveDialog.visible);
            view.shareSheet.saveDialog.reject();
            tryVerify(() => !view.shareSheet.saveDialog.visible);
        }

        // The Markdown view's lines, in order: the items its loaders show.
        function linesOf(item) {
            const lines = [];
            for (let i = 0; i < item.children.length; ++i) {
                if (item.children[i] instanceof Loader)
                    lines.push(item.children[i]);
            }
            return lines;
        }

        function kinds(item) {
            const found = [];
            for (const line of linesOf(item))
                found.push(line.item.objectName + ":" + (line.item.markdown !== undefined ? line.item.markdown
                                                         : line.item.text !== undefined ? line.item.text
                                                                                       : line.item.lineText));
            return found;
        }

        function test_markdownFenceLinesAreNeverShown() {
            const item = createTemporaryObject(markdown, root, {
                markdown: "Intro\n```go\nfor {}\n  x := 1  \n```\nAfter" });
            compare(kinds(item), ["markdownText:Intro", "markdownCode:for {}", "markdownCode:  x := 1  ",
                                  "markdownText:After"]);
        }

        function test_markdownHeadingsBulletsAndBlanks() {
            const item = createTemporaryObject(markdown, root, {
                markdown: "#Title\n#### Four\n##  Title  \n-item\n- \n   \n\n* star" });
            compare(kinds(item), ["markdownText:#Title", "markdownText:#### Four", "markdownHeading:Title",
                                  "markdownText:-item", "markdownBullet:", "markdownBlank:undefined",
                                  "markdownBlank:undefined", "markdownBullet:star"]);
            const lines = linesOf(item);
            compare(lines[2].item.font.pixelSize, Theme.title3);
            compare(lines[5].item.height, 4);
            compare(lines[6].item.height, 4);
        }

        function test_markdownTextLinesGetInlineFormatting() {
            const item = createTemporaryObject(markdown, root, { markdown: "Some **bold** and `code`" });
            const line = linesOf(item)[0].item;
            compare(line.textFormat, Text.RichText);
            compare(line.markdown, "Some **bold** and `code`");
            compare(line.text, InlineMarkdownFormat.richText(line.markdown));
            // Drawn formatted: the markup characters are not laid out as text, so the line is
            // narrower than the same characters drawn plain.
            const plain = createTemporaryObject(plainLabel, root, { text: line.markdown, font: line.font });
            verify(line.implicitWidth < plain.implicitWidth,
                   line.implicitWidth + " vs " + plain.implicitWidth);
        }
    }
}
