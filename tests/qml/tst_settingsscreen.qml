import QtQuick
import QtQuick.Controls
import QtTest
import Kestrine

// The settings screen and the monitored repositories screen, against the real keychain and
// defaults store of the test's private home: what "Save" writes, what "Cancel" and a test leave
// alone, "Log out", and the rules of ticking repositories.
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
        name: "SettingsScreen"
        when: windowShown

        property var inbox: null

        function find(parent, name) {
            return findChild(parent, name);
        }

        function init() {
            gitea.reset();
            gitea.configure();
            SettingsStore.mergeGateMode = SettingsStore.Warn;
            SettingsStore.deleteBranchAfterMerge = false;
            SettingsStore.monitoredRepos = [];
            SettingsStore.notificationsEnabled = false;
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

        function test_theScreenEditsCopiesOfTheStoredValues() {
            const view = openSettings();
            compare(find(view, "instanceURLField").text, gitea.url);
            compare(find(view, "tokenField").text, gitea.token);
            compare(find(view, "tokenField").echoMode, TextInput.Password);
            verify(find(view, "warnModeRow").checked);
            compare(find(view, "warnModeRow").text, "Warn on red (allow merge with confirm)");
            compare(find(view, "blockModeRow").text, "Block merge when CI is red");
            // Editing does not reach the store.
            mouseClick(find(view, "blockModeRow"));
            verify(find(view, "blockModeRow").checked);
            compare(SettingsStore.mergeGateMode, SettingsStore.Warn);
        }

        function test_saveWithAnInstanceURLOfBlanksIsDisabled() {
            const view = openSettings();
            const save = find(view, "saveButton");
            verify(save.enabled);
            view.instanceURL = "   \t ";
            verify(!save.enabled);
            mouseClick(save);
            view.save();
            // Nothing was written and the sheet is still there.
            compare(SettingsStore.instanceURL, gitea.url);
            verify(inbox.settingsSheet.visible);
            view.instanceURL = "";
            verify(!save.enabled);
        }

        function test_saveStoresTheURLWithoutTheBlanksAroundIt() {
            const view = openSettings();
            const field = find(view, "instanceURLField");
            field.selectAll();
            field.forceActiveFocus();
            keyClick(Qt.Key_Delete);
            const typed = "  " + gitea.url + " \n";
            view.instanceURL = typed;
            verify(find(view, "saveButton").enabled);
            mouseClick(find(view, "saveButton"));
            tryVerify(() => !inbox.settingsSheet.visible);
            compare(SettingsStore.instanceURL, gitea.url);
            compare(gitea.keychainValue("instanceURL"), gitea.url);
        }

        function test_tokenWithATrailingBlankIsStoredWithIt() {
            const view = openSettings();
            const field = find(view, "tokenField");
            field.forceActiveFocus();
            field.selectAll();
            keyClick(Qt.Key_Delete);
            for (const character of "new-token ")
                keyClick(character);
            compare(view.token, "new-token ");
            mouseClick(find(view, "saveButton"));
            tryVerify(() => !inbox.settingsSheet.visible);
            compare(SettingsStore.token, "new-token ");
            compare(gitea.keychainValue("token"), "new-token ");
        }

        function test_saveWritesEveryValue() {
            const view = openSettings();
            mouseClick(find(view, "blockModeRow"));
            // Rows further down the form, below the window's edge: tapped through their signal.
            find(view, "deleteBranchRow").clicked();
            find(view, "notificationsRow").clicked();
            view.monitoredRepos = ["ann/website", "ann/tool"];
            view.save();
            tryVerify(() => !inbox.settingsSheet.visible);
            compare(SettingsStore.mergeGateMode, SettingsStore.Block);
            verify(SettingsStore.deleteBranchAfterMerge);
            verify(SettingsStore.notificationsEnabled);
            compare(SettingsStore.monitoredRepos, ["ann/website", "ann/tool"]);
        }

        function test_cancelAfterASuccessfulTestLeavesTheStoreAsItWas() {
            const view = openSettings();
            view.instanceURL = gitea.url + "/";
            view.token = gitea.token;
            mouseClick(find(view, "blockModeRow"));
            mouseClick(find(view, "testConnectionRow"));
            tryVerify(() => view.tester.hasResult, 5000);
            verify(view.tester.succeeded);
            compare(find(view, "testResultText").text, "Connected as ann");
            mouseClick(find(view, "cancelButton"));
            tryVerify(() => !inbox.settingsSheet.visible);
            compare(SettingsStore.instanceURL, gitea.url);
            compare(SettingsStore.mergeGateMode, SettingsStore.Warn);
            compare(gitea.keychainValue("instanceURL"), gitea.url);
        }

        function test_testConnectionReportsFailures_data() {
            return [
                { tag: "invalid URL", url: "not a url", token: "x", text: "Invalid URL" },
                { tag: "blank URL", url: "   ", token: "x", text: "Invalid URL" },
                { tag: "wrong token", url: "", token: "nope", text: "Authentication failed. Check your token." }
            ];
        }

        function test_testConnectionReportsFailures(data) {
            const view = openSettings();
            view.instanceURL = data.url !== "" ? data.url : gitea.url;
            view.token = data.token;
            view.testConnection();
            tryVerify(() => view.tester.hasResult && !view.tester.testing, 5000);
            verify(!view.tester.succeeded);
            verify(find(view, "testResultRow").visible);
            compare(find(view, "testResultText").text, data.text);
            verify(Qt.colorEqual(find(view, "testResultText").color, Theme.red));
            // The fields keep what was typed.
            compare(view.token, data.token);
        }

        function test_testConnectionSaysTestingWhileItRuns() {
            gitea.answer("GET", "/api/v1/user", 200, "{\"login\":\"ann\",\"id\":3}", 500);
            const view = openSettings();
            view.testConnection();
            verify(view.tester.testing);
            compare(find(view, "testConnectionButton").text, "Testing…");
            verify(!find(view, "testConnectionRow").clickable);
            tryVerify(() => !view.tester.testing, 5000);
            compare(find(view, "testConnectionButton").text, "Test connection");
        }

        function test_logOutAfterConfirmingClearsTheCredentials() {
            const view = openSettings();
            verify(find(view, "logoutRow").enabled);
            find(view, "logoutRow").clicked();
            tryVerify(() => view.logoutConfirm.opened);
            compare(view.logoutConfirm.title, "Log out?");
            view.logoutConfirm.accept();
            tryVerify(() => !inbox.settingsSheet.visible);
            compare(SettingsStore.token, "");
            compare(SettingsStore.instanceURL, "https://gitea.com");
            compare(gitea.keychainValue("token"), "");
        }

        function test_logOutIsDisabledWithoutAToken() {
            const view = openSettings();
            view.token = "";
            verify(!find(view, "logoutRow").enabled);
        }

        function openMonitoredRepos() {
            const view = openSettings();
            mouseClick(find(view, "monitoredReposLink"));
            const stack = inbox.settingsSheet.stack;
            tryCompare(stack, "depth", 2);
            tryVerify(() => !stack.busy);
            const repos = stack.currentItem;
            tryVerify(() => !repos.loader.isLoading && repos.loader.repos.length > 0, 5000);
            waitForItemPolished(repos);
            return { settings: view, repos: repos };
        }

        function test_monitoredReposListsTheRepositoriesSortedByName() {
            const screens = openMonitoredRepos();
            const names = screens.repos.loader.repos.map(r => r.full_name);
            // What ann's token reaches, in plain string order.
            compare(names, ["ann/tool", "ann/website", "cy/infra"]);
            verify(find(screens.repos, "monitorAllRow").checked);
        }

        function test_tickingARepositoryThenMonitorAllEmptiesTheSelection() {
            const screens = openMonitoredRepos();
            mouseClick(find(screens.repos, "repoRow_ann/tool"));
            compare(screens.settings.monitoredRepos, ["ann/tool"]);
            verify(find(screens.repos, "repoRow_ann/tool").checked);
            verify(!find(screens.repos, "monitorAllRow").checked);
            mouseClick(find(screens.repos, "monitorAllRow"));
            compare(screens.settings.monitoredRepos, []);
            verify(find(screens.repos, "monitorAllRow").checked);
        }

        function test_tickingAThenBGivesAThenB() {
            const screens = openMonitoredRepos();
            mouseClick(find(screens.repos, "repoRow_cy/infra"));
            mouseClick(find(screens.repos, "repoRow_ann/tool"));
            compare(screens.settings.monitoredRepos, ["cy/infra", "ann/tool"]);
            // Unticking removes just that one; the store has seen none of it.
            mouseClick(find(screens.repos, "repoRow_cy/infra"));
            compare(screens.settings.monitoredRepos, ["ann/tool"]);
            compare(SettingsStore.monitoredRepos, []);
        }

        function test_aSelectedRepositoryTheServerNoLongerReturnsStaysSelected() {
            SettingsStore.monitoredRepos = ["gone/away", "ann/tool"];
            const screens = openMonitoredRepos();
            verify(!find(screens.repos, "repoRow_gone/away"));
            mouseClick(find(screens.repos, "repoRow_cy/infra"));
            compare(screens.settings.monitoredRepos, ["gone/away", "ann/tool", "cy/infra"]);
            screens.settings.save();
            tryVerify(() => !inbox.settingsSheet.visible);
            compare(SettingsStore.monitoredRepos, ["gone/away", "ann/tool", "cy/infra"]);
        }

        function test_monitoredReposWithoutSavedSettingsSaysNotConfigured() {
            SettingsStore.token = "";
            const view = openSettings();
            // Typed but unsaved values do not count.
            view.token = gitea.token;
            mouseClick(find(view, "monitoredReposLink"));
            const stack = inbox.settingsSheet.stack;
            tryCompare(stack, "depth", 2);
            const repos = stack.currentItem;
            tryVerify(() => !repos.loader.isLoading);
            const state = find(repos, "reposErrorState");
            verify(state.visible);
            compare(state.title, "Couldn't load repos");
            compare(state.description, "Not configured.");
        }

        function test_monitoredReposFailureKeepsTheSelection() {
            SettingsStore.monitoredRepos = ["ann/tool"];
            gitea.answer("GET", "/api/v1/user/repos", 500, "{\"message\":\"boom\"}");
            const view = openSettings();
            mouseClick(find(view, "monitoredReposLink"));
            const stack = inbox.settingsSheet.stack;
            tryCompare(stack, "depth", 2);
            const repos = stack.currentItem;
            tryVerify(() => !repos.loader.isLoading, 5000);
            verify(find(repos, "reposErrorState").visible);
            verify(repos.loader.errorMessage !== "");
            compare(view.monitoredRepos, ["ann/tool"]);
        }
    }
}
