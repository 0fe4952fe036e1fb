import QtQuick
import QtQuick.Controls
import QtTest
import Kestrine

// The inbox screen in German (the test runs with LANG=de_DE.UTF-8): its title, states, search
// and alert, the rows' draft marker and times, and the review badges.
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
        id: badge
        ReviewBadge {}
    }

    TestCase {
        id: test
        name: "InboxScreenGerman"
        when: windowShown

        function find(parent, name) {
            return findChild(parent, name);
        }

        function openInbox() {
            const stack = createTemporaryObject(screen, root);
            verify(stack);
            const inbox = stack.currentItem;
            tryVerify(() => inbox.didInitialLoad);
            tryVerify(() => !inbox.vm.isLoading, 5000);
            return inbox;
        }

        function init() {
            gitea.reset();
            gitea.configure();
            SettingsStore.monitoredRepos = [];
            SettingsStore.inboxNeedsRefresh = false;
        }

        function test_titleAndSearchAreGerman() {
            const inbox = openInbox();
            compare(find(inbox, "inboxNavBar").title, "Pull-Requests");
            compare(find(inbox, "inboxSearchField").placeholderText, "Suchen");
            compare(find(inbox, "settingsButton").Accessible.name, "Einstellungen");
        }

        function test_searchWithoutMatchesSaysSoInGerman() {
            const inbox = openInbox();
            const field = find(inbox, "inboxSearchField");
            field.text = "zzzz";
            tryVerify(() => inbox.noMatches);
            const state = find(inbox, "noMatchesState");
            verify(state.visible);
            compare(state.title, "Keine Treffer für „zzzz“");
            compare(state.description, "Prüfe die Schreibweise oder versuche es mit anderen Wörtern.");
        }

        function test_emptyAndNotConfiguredStatesAreGerman() {
            SettingsStore.monitoredRepos = ["bo/dotfiles"];
            const inbox = openInbox();
            compare(inbox.content, "empty");
            compare(find(inbox, "noOpenPRsState").title, "Keine offenen PRs");
            compare(find(inbox, "noOpenPRsState").description, "Zum Aktualisieren nach unten ziehen.");
            SettingsStore.token = "";
            compare(find(inbox, "notConfiguredState").title, "Nicht eingerichtet");
            compare(find(inbox, "notConfiguredState").description,
                    "Trage deine Gitea-Instanz und dein Token in den Einstellungen ein.");
        }

        function test_alertWithoutConfigurationIsGerman() {
            SettingsStore.token = "";
            const stack = createTemporaryObject(screen, root);
            const inbox = stack.currentItem;
            tryVerify(() => inbox.errorAlert.visible);
            compare(inbox.errorAlert.title, "Fehler");
            compare(inbox.errorAlert.message, "Richte deine Gitea-Instanz in den Einstellungen ein.");
            compare(inbox.errorAlert.acceptText, "OK");
            inbox.errorAlert.close();
        }

        function test_rowShowsDraftAndItsTimeInGerman() {
            const updated = new Date(Date.now() - 5 * 60 * 1000 - 10000).toISOString();
            const row = createTemporaryObject(rowView, root, {
                row: { repo: { id: 1, name: "site", full_name: "ann/site", owner: { login: "ann" } },
                       pr: { number: 42, title: "A", state: "open", draft: true,
                             updated_at: updated.replace(/\.\d+Z$/, "Z") } }
            });
            compare(find(row, "rowDraft").text, "Entwurf");
            compare(find(row, "rowTime").text, "vor 5 Min.");
            // The server's words stay as they are.
            compare(find(row, "rowTitle").text, "A");
        }

        function test_reviewBadgesAreGerman_data() {
            return [
                { tag: "approved", state: ReviewState.Approved, text: "Genehmigt" },
                { tag: "changes", state: ReviewState.ChangesRequested, text: "Änderungen" },
                { tag: "needsReview", state: ReviewState.NeedsReview, text: "Review nötig" }
            ];
        }

        function test_reviewBadgesAreGerman(data) {
            compare(createTemporaryObject(badge, root, { state: data.state }).text, data.text);
        }
    }
}
