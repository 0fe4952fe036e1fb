import QtQuick
import QtQuick.Controls
import QtTest
import Kestrine

// The merge, comment and share sheets in German (the test runs with LANG=de_DE.UTF-8): their
// titles and buttons, the merge methods, the CI row and gate note, and the German plural forms
// of the counters.
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
        id: shareSheet
        ShareSheet {}
    }

    TestCase {
        id: test
        name: "SheetsGerman"
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

        function sheetItem(sheet, name) {
            return find(sheet.contentItem, name);
        }

        function test_mergeSheetIsGerman() {
            const detail = openPullRequest(7);
            detail.openMergeSheet();
            tryVerify(() => detail.mergeSheet.opened);
            const sheet = detail.mergeSheet;
            compare(sheet.title, "Mergen");
            compare(sheetItem(sheet, "mergeCancelButton").text, "Abbrechen");
            compare(sheetItem(sheet, "mergeConfirmButton").text, "Mergen");
            compare(sheetItem(sheet, "method_merge").text, "Merge-Commit erstellen");
            compare(sheetItem(sheet, "method_rebase").text, "Rebasen und mergen");
            compare(sheetItem(sheet, "method_squash").text, "Squashen und mergen");
            compare(sheetItem(sheet, "ciText").text, "Erfolgreich");
        }

        function test_mergeSheetWithRedCIIsGerman_data() {
            return [
                { tag: "block", mode: SettingsStore.Block,
                  note: "Mergen ist gesperrt, solange CI rot ist (Einstellungen)." },
                { tag: "warn", mode: SettingsStore.Warn,
                  note: "CI ist rot – du kannst trotzdem mergen (die Einstellungen erlauben es)." }
            ];
        }

        function test_mergeSheetWithRedCIIsGerman(data) {
            SettingsStore.mergeGateMode = data.mode;
            const detail = openPullRequest(9);
            detail.openMergeSheet();
            tryVerify(() => detail.mergeSheet.opened);
            compare(sheetItem(detail.mergeSheet, "ciText").text, "Fehlgeschlagen");
            compare(sheetItem(detail.mergeSheet, "gateText").text, data.note);
        }

        function test_commentSheetIsGerman_data() {
            return [
                { tag: "comment", requestChanges: false, title: "Kommentar" },
                { tag: "request changes", requestChanges: true, title: "Änderungen anfordern" }
            ];
        }

        function test_commentSheetIsGerman(data) {
            const detail = openPullRequest(7);
            detail.openCommentSheet(data.requestChanges);
            tryVerify(() => detail.commentSheet.opened);
            const sheet = detail.commentSheet;
            compare(sheet.title, data.title);
            compare(sheetItem(sheet, "commentHeading").text, data.title);
            compare(sheetItem(sheet, "commentCancelButton").text, "Abbrechen");
            compare(sheetItem(sheet, "submitButton").text, "Senden");
            compare(sheetItem(sheet, "characterCount").text, "0 Zeichen");
            sheetItem(sheet, "commentEditor").text = "x";
            compare(sheetItem(sheet, "characterCount").text, "1 Zeichen");
            sheetItem(sheet, "commentEditor").text = "Passt.";
            compare(sheetItem(sheet, "characterCount").text, "6 Zeichen");
        }

        function test_shareSheetIsGerman_data() {
            return [
                { tag: "one line", text: "eins", summary: "1 Zeile · 1 KB" },
                { tag: "three lines", text: "eins\nzwei\ndrei", summary: "3 Zeilen · 1 KB" }
            ];
        }

        function test_shareSheetIsGerman(data) {
            const sheet = createTemporaryObject(shareSheet, root, { text: data.text });
            sheet.open();
            tryVerify(() => sheet.opened);
            compare(sheet.title, "Teilen");
            compare(sheetItem(sheet, "shareDoneButton").text, "Fertig");
            compare(sheetItem(sheet, "shareSummary").text, data.summary);
            sheet.copy();
            compare(sheetItem(sheet, "shareStatus").text, "In die Zwischenablage kopiert.");
            sheet.close();
        }
    }
}
