import QtQuick
import QtQuick.Controls
import QtTest
import Kestrine

// The logs screen and the share sheet, against the real defaults store of the test's private
// home: the empty state, "Clear" and what survives a restart, new lines at the top, and sharing.
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
        id: logs
        LogsView {}
    }

    TestCase {
        id: test
        name: "LogsScreen"
        when: windowShown

        function find(parent, name) {
            return findChild(parent, name);
        }

        function openLogs() {
            const stack = createTemporaryObject(screen, root);
            stack.push(logs);
            tryVerify(() => !stack.busy);
            return stack.currentItem;
        }

        function cleanup() {
            LogStore.clear();
        }

        function test_freshInstallShowsNoLogsYetWithBothButtonsDisabled() {
            verify(!gitea.hasStoredLog());
            const view = openLogs();
            compare(LogStore.count, 0);
            const empty = find(view, "noLogsState");
            verify(empty.visible);
            compare(empty.title, "No logs yet");
            compare(empty.description, "Run the app and reproduce the issue, then come back here.");
            compare(empty.symbol, "doc.text");
            verify(!find(view, "logList").visible);
            verify(!find(view, "clearButton").enabled);
            verify(!find(view, "shareButton").enabled);
            compare(view.header.title, "Logs");
        }

        function test_entriesShowNewestFirstWithTheirLevels() {
            gitea.log("GET user → 200");
            gitea.log("Inbox: 1 repo(s) failed: gone", "WARN");
            gitea.log("Inbox load failed: boom", "ERROR");
            const view = openLogs();
            const list = find(view, "logList");
            verify(list.visible);
            tryCompare(list, "count", 3);
            const messages = [];
            const levels = [];
            for (let i = 0; i < 3; ++i) {
                list.currentIndex = i;
                const row = list.currentItem;
                messages.push(find(row, "entryMessage").text);
                levels.push(find(row, "entryLevel").text);
            }
            compare(messages, ["Inbox load failed: boom", "Inbox: 1 repo(s) failed: gone", "GET user → 200"]);
            compare(levels, ["ERROR", "WARN", "INFO"]);
            list.currentIndex = 0;
            verify(Qt.colorEqual(find(list.currentItem, "entryLevel").color, Theme.red));
            list.currentIndex = 1;
            verify(Qt.colorEqual(find(list.currentItem, "entryLevel").color, Theme.orange));
            list.currentIndex = 2;
            verify(Qt.colorEqual(find(list.currentItem, "entryLevel").color, Theme.secondaryText));
            verify(find(list.currentItem, "entryMessage").selectByMouse);
            verify(find(view, "clearButton").enabled);
            verify(find(view, "shareButton").enabled);
        }

        function test_afterClearThePlaceholderShowsAtOnceAndTheLogStaysEmptyAfterARestart() {
            gitea.log("one");
            gitea.log("two");
            compare(gitea.storedLogCount(), 2);
            const view = openLogs();
            verify(find(view, "logList").visible);
            mouseClick(find(view, "clearButton"));
            // At once: no confirmation, no wait.
            verify(find(view, "noLogsState").visible);
            verify(!find(view, "logList").visible);
            verify(!find(view, "clearButton").enabled);
            verify(!find(view, "shareButton").enabled);
            // A log read afresh from the store, as the next start reads it, is empty too.
            verify(!gitea.hasStoredLog());
            compare(gitea.storedLogCount(), 0);
        }

        function test_anEntryAppendedWhileTheScreenIsOpenShowsAtTheTop() {
            gitea.log("older");
            const view = openLogs();
            const list = find(view, "logList");
            tryCompare(list, "count", 1);
            gitea.log("just now");
            tryCompare(list, "count", 2);
            // The first row, at the top of the list, is the new line; the older one moved down.
            list.currentIndex = 0;
            compare(find(list.currentItem, "entryMessage").text, "just now");
            list.currentIndex = 1;
            compare(find(list.currentItem, "entryMessage").text, "older");
        }

        function test_shareHandsTheExportTextToTheShareSheet() {
            gitea.log("GET user → 200");
            gitea.log("PR 7: merge failed", "ERROR");
            const view = openLogs();
            mouseClick(find(view, "shareButton"));
            const sheet = view.shareSheet;
            tryVerify(() => sheet.opened);
            compare(sheet.sharedText, LogStore.text);
            verify(sheet.sharedText.endsWith("ERROR PR 7: merge failed"));
            // Later lines do not change what the open sheet shares.
            const taken = sheet.sharedText;
            gitea.log("after opening");
            compare(sheet.sharedText, taken);

            mouseClick(find(sheet.contentItem, "copyRow"));
            compare(ShareService.clipboardText(), taken);
            compare(find(sheet.contentItem, "shareStatus").text, "Copied to the clipboard.");

            const file = gitea.temporaryFileUrl("kestrine-log.txt");
            sheet.saveTo(file);
            compare(gitea.readFile(file), taken);
            compare(find(sheet.contentItem, "shareStatus").text, "Saved.");

            // A file that cannot be written says why.
            sheet.saveTo(gitea.temporaryFileUrl("missing-folder/log.txt"));
            verify(sheet.statusIsError);
            verify(find(sheet.contentItem, "shareStatus").text.startsWith("Cannot write"));
            mouseClick(find(sheet.contentItem, "shareDoneButton"));
            tryVerify(() => !sheet.visible);
        }
    }
}
