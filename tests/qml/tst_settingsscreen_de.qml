import QtQuick
import QtQuick.Controls
import QtTest
import Kestrine

// The settings screen in German (the test runs with LANG=de_DE.UTF-8): its sections and rows, the
// merge gate's modes, the connection test's answers and the monitored repositories screen. (That a
// mode is stored in English whatever the language is tst_germantexts'.)
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
        name: "SettingsScreenGerman"
        when: windowShown

        property var inbox: null

        function find(parent, name) {
            return findChild(parent, name);
        }

        function init() {
            gitea.reset();
            gitea.configure();
            SettingsStore.mergeGateMode = SettingsStore.Warn;
            SettingsStore.monitoredRepos = [];
            const stack = createTemporaryObject(screen, root);
            inbox = stack.currentItem;
            tryVerify(() => inbox.didInitialLoad && !inbox.vm.isLoading, 5000);
        }

        function openSettings() {
            inbox.openSettings();
            tryVerify(() => inbox.settingsSheet.opened);
            const view = inbox.settingsSheet.settingsView;
            verify(view);
            return view;
        }

        function test_rowsAndButtonsAreGerman() {
            const view = openSettings();
            compare(view.header.title, "Einstellungen");
            compare(find(view, "cancelButton").text, "Abbrechen");
            compare(find(view, "saveButton").text, "Speichern");
            compare(find(view, "testConnectionButton").text, "Verbindung testen");
            compare(find(view, "deleteBranchRow").text, "Branch nach dem Merge löschen");
            compare(find(view, "monitoredReposLink").text, "Beobachtete Repos");
            compare(find(view, "notificationsRow").text, "Benachrichtigungen");
            compare(find(view, "viewLogsLink").text, "Protokoll anzeigen");
            compare(find(view, "logoutButton").text, "Abmelden");
        }

        function test_mergeGateModesAreGerman() {
            const view = openSettings();
            compare(find(view, "warnModeRow").text, "Bei Rot warnen (Merge nach Bestätigung erlauben)");
            compare(find(view, "blockModeRow").text, "Merge bei rotem CI sperren");
            mouseClick(find(view, "blockModeRow"));
            view.save();
            compare(SettingsStore.mergeGateMode, SettingsStore.Block);
        }

        function test_connectionTestAnswersInGerman_data() {
            return [
                { tag: "invalid URL", url: "not a url", token: "x", succeeded: false, text: "Ungültige URL" },
                { tag: "wrong token", url: "", token: "nope", succeeded: false,
                  text: "Anmeldung fehlgeschlagen. Prüfe dein Token." },
                { tag: "right token", url: "", token: "", succeeded: true, text: "Verbunden als ann" }
            ];
        }

        function test_connectionTestAnswersInGerman(data) {
            const view = openSettings();
            view.instanceURL = data.url !== "" ? data.url : gitea.url;
            view.token = data.token !== "" ? data.token : gitea.token;
            view.testConnection();
            tryVerify(() => view.tester.hasResult && !view.tester.testing, 5000);
            compare(view.tester.succeeded, data.succeeded);
            compare(find(view, "testResultText").text, data.text);
        }

        function test_monitoredReposScreenIsGerman() {
            const view = openSettings();
            const stack = inbox.settingsSheet.stack;
            mouseClick(find(view, "monitoredReposLink"));
            tryCompare(stack, "depth", 2);
            tryVerify(() => !stack.busy);
            const repos = stack.currentItem;
            tryVerify(() => !repos.loader.isLoading && repos.loader.repos.length > 0, 5000);
            compare(repos.header.title, "Beobachtete Repos");
            compare(find(repos, "monitorAllRow").text, "Alle Repos beobachten");
            // The repositories' names are the server's.
            compare(find(repos, "repoRow_ann/tool").text, "ann/tool");
        }
    }
}
