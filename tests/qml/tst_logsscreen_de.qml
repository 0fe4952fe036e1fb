import QtQuick
import QtQuick.Controls
import QtTest
import Kestrine

// The logs screen in German (the test runs with LANG=de_DE.UTF-8): its own words are German, the
// time of day reads as a German clock, and the log's lines, levels and shared text stay English,
// since they are data.
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
        name: "LogsScreenGerman"
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

        function test_emptyLogIsGerman() {
            const view = openLogs();
            compare(view.header.title, "Protokoll");
            compare(find(view, "clearButton").text, "Leeren");
            compare(find(view, "shareButton").Accessible.name, "Teilen");
            const empty = find(view, "noLogsState");
            verify(empty.visible);
            compare(empty.title, "Noch keine Einträge");
            compare(empty.description,
                    "Nutze die App, bis das Problem wieder auftritt, und komm dann hierher zurück.");
        }

        function test_entriesKeepTheirEnglishLinesAndShowAGermanTimeOfDay() {
            gitea.log("Inbox: 1 repo(s) failed: gone", "WARN");
            const view = openLogs();
            const list = find(view, "logList");
            tryCompare(list, "count", 1);
            list.currentIndex = 0;
            const row = list.currentItem;
            compare(find(row, "entryMessage").text, "Inbox: 1 repo(s) failed: gone");
            compare(find(row, "entryLevel").text, "WARN");
            // A German clock: 24 hours, two digits each, on the user's local time.
            const stamp = LogStore.entries[0].timestamp;
            compare(find(row, "entryTime").text, Qt.formatTime(stamp, "HH:mm:ss"));
        }

        function test_shareSheetOfTheLogIsGermanAroundTheEnglishText() {
            gitea.log("PR 7: merge failed", "ERROR");
            const view = openLogs();
            mouseClick(find(view, "shareButton"));
            const sheet = view.shareSheet;
            tryVerify(() => sheet.opened);
            compare(sheet.sharedText, LogStore.text);
            verify(sheet.sharedText.endsWith("ERROR PR 7: merge failed"));
            compare(sheet.title, "Teilen");
            sheet.saveTo(gitea.temporaryFileUrl("kestrine-log.txt"));
            compare(find(sheet.contentItem, "shareStatus").text, "Gespeichert.");
            sheet.saveTo(gitea.temporaryFileUrl("missing-folder/log.txt"));
            verify(sheet.statusIsError);
            verify(find(sheet.contentItem, "shareStatus").text.includes("kann nicht geschrieben werden"));
            mouseClick(find(sheet.contentItem, "shareDoneButton"));
            tryVerify(() => !sheet.visible);
        }
    }
}
