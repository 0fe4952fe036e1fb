import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// The root screen: the open pull requests of every watched repository, newest update first, with
// pull-to-refresh, the settings button, an alert for errors, and a tap on a row to its details.
Page {
    id: root
    objectName: "inboxView"

    // The first load has been started; it is started once, on the first appearance.
    property bool didInitialLoad: false
    readonly property InboxViewModel vm: inboxModel
    readonly property alias settingsSheet: settingsSheet
    readonly property alias errorAlert: errorAlert
    // What the content shows, in this order of precedence. The search never turns the list into
    // "No open PRs": that says the inbox itself is empty.
    readonly property string content: !SettingsStore.isConfigured
                                      ? "notConfigured"
                                      : vm.count === 0 && !vm.isLoading ? "empty" : "list"
    // The list has rows, and the search hides every one of them.
    readonly property bool noMatches: content === "list" && inboxRows.count > 0
                                      && searchRows.count === 0

    // Each appearance: the first one loads, later ones (back from a detail screen) do not.
    function appear() {
        if (didInitialLoad)
            return;
        didInitialLoad = true;
        vm.reload();
    }

    function openSettings() {
        settingsSheet.open();
    }

    // The settings sheet went away: reload only when something (a merge) asked for it.
    function settingsClosed() {
        if (!SettingsStore.inboxNeedsRefresh)
            return;
        SettingsStore.inboxNeedsRefresh = false;
        vm.reload();
    }

    function openRow(row) {
        root.StackView.view.push(detailScreen, {
            "repo": row.repo,
            "prNumber": row.pr.number
        });
    }

    // The pull request `number` of `repo` on top of this screen, from outside the app (an
    // activated notification, `kestrine --open`), so that back returns here. It need not be a row
    // of the list: the detail screen loads it by owner, name and number, and says "Couldn't load
    // PR" with the server's reason when that fails. Whatever stood over the inbox makes way, except
    // that pull request's own screen, which is kept with what the user had open on it.
    function openPullRequest(repo, number) {
        // Nothing to load it from; the inbox says so.
        if (!SettingsStore.isConfigured)
            return;
        // They would stay over the screen pushed under them.
        settingsSheet.close();
        errorAlert.close();
        const stack = root.StackView.view;
        const above = stack.depth > 1 ? stack.get(1) : null;
        const sameScreen = above && above.objectName === "prDetailView" && above.repo
                           && above.repo.full_name === repo.full_name
                           && Number(above.prNumber) === Number(number);
        if (sameScreen) {
            // Back to it from a diff or a log reloads it, as always; on top, it reloads here.
            if (stack.currentItem === above)
                above.vm.refresh();
            else
                stack.pop(above);
            return;
        }
        const properties = {
            "repo": repo,
            "prNumber": number
        };
        if (above)
            stack.replace(above, detailScreen, properties);
        else
            stack.push(detailScreen, properties);
    }

    StackView.onActivated: appear()

    background: Rectangle {
        color: Theme.background
    }

    header: ColumnLayout {
        spacing: 0

        NavBar {
            objectName: "inboxNavBar"
            Layout.fillWidth: true
            title: qsTr("Pull Requests")
            large: true
            showSeparator: !searchBar.visible

            NavButton {
                objectName: "settingsButton"
                symbol: "gearshape"
                Accessible.name: qsTr("Settings")
                onClicked: root.openSettings()
            }
        }

        // The search stays in reach however far the list is scrolled, aligned with the list.
        Rectangle {
            id: searchBar
            Layout.fillWidth: true
            implicitHeight: searchField.implicitHeight + 12
            visible: root.content !== "notConfigured"
            color: Theme.background

            SearchField {
                id: searchField
                objectName: "inboxSearchField"
                anchors.top: parent.top
                anchors.horizontalCenter: parent.horizontalCenter
                width: Math.min(parent.width, Theme.maxContentWidth) - 2 * Theme.margin
                Accessible.name: qsTr("Search pull requests")
            }

            Rectangle {
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.bottom: parent.bottom
                height: 1
                color: Theme.separator
            }
        }
    }

    InboxViewModel {
        id: inboxModel
    }

    // The rows for the list, each made into its QML form only when the list shows it.
    InboxRowsModel {
        id: inboxRows
        viewModel: inboxModel
    }

    // Those of them that match the search field, filtered as it is typed into; nothing is loaded.
    InboxSearchModel {
        id: searchRows
        sourceModel: inboxRows
        searchText: searchField.displayText
        // Each new search shows its matches from the first.
        onSearchTextChanged: list.positionViewAtBeginning()
    }

    // The desktop's Find key goes to the search field while the inbox is the screen in front.
    Shortcut {
        sequences: [StandardKey.Find]
        enabled: root.StackView.status === StackView.Active && searchBar.visible
                 && !settingsSheet.visible && !errorAlert.visible
        onActivated: searchField.forceActiveFocus()
    }

    EmptyState {
        objectName: "notConfiguredState"
        anchors.fill: parent
        visible: root.content === "notConfigured"
        title: qsTr("Not configured")
        symbol: "key"
        description: qsTr("Add your Gitea instance and token in Settings.")
    }

    Flickable {
        id: emptyScroll
        objectName: "emptyScroll"
        anchors.fill: parent
        visible: root.content === "empty"
        contentWidth: width
        contentHeight: Math.max(height, 400)
        flickableDirection: Flickable.VerticalFlick

        EmptyState {
            objectName: "noOpenPRsState"
            width: emptyScroll.width
            height: Math.max(emptyScroll.height, 400)
            title: qsTr("No open PRs")
            symbol: "tray"
            description: qsTr("Pull down to refresh.")
        }
    }

    PullToRefresh {
        objectName: "emptyRefresh"
        flickable: emptyScroll
        anchors.top: emptyScroll.top
        anchors.horizontalCenter: emptyScroll.horizontalCenter
        loading: root.vm.isLoading
        onRefresh: root.vm.reload()
    }

    ListView {
        id: list
        objectName: "inboxList"
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(parent.width, Theme.maxContentWidth)
        visible: root.content === "list"
        model: searchRows
        boundsBehavior: Flickable.DragAndOvershootBounds
        flickableDirection: Flickable.VerticalFlick
        // Rows scrolled away are handed the row coming into view instead of being destroyed and
        // built again: a fast fling through thousands of rows builds no new ones.
        reuseItems: true
        ScrollIndicator.vertical: ScrollIndicator {}
        // Scrolling by hand puts the keyboard away, as on a phone's lists.
        onDraggingChanged: {
            if (dragging)
                searchField.focus = false;
        }

        // `row` is the model's role of that name.
        delegate: PRRowView {
            width: ListView.view.width
            onClicked: root.openRow(row)
        }
    }

    // Over the list, which stays under it so that it can still be pulled down to refresh.
    EmptyState {
        objectName: "noMatchesState"
        anchors.fill: list
        visible: root.noMatches
        title: qsTr("No matches for “%1”").arg(Bidi.isolate(searchRows.searchText.trim()))
        symbol: "magnifyingglass"
        description: qsTr("Check the spelling or try other words.")
    }

    PullToRefresh {
        objectName: "listRefresh"
        flickable: list
        anchors.top: list.top
        anchors.horizontalCenter: list.horizontalCenter
        loading: root.vm.isLoading
        onRefresh: root.vm.reload()
    }

    AppDialog {
        id: errorAlert
        objectName: "inboxErrorAlert"
        title: qsTr("Error")
        message: root.vm.errorMessage
        acceptText: qsTr("OK")
        onClosed: root.vm.dismissError()
    }

    Connections {
        target: root.vm
        function onErrorMessageChanged() {
            if (root.vm.errorMessage !== "" && !errorAlert.visible)
                errorAlert.open();
        }
    }

    SettingsSheet {
        id: settingsSheet
        objectName: "settingsSheet"
        onClosed: root.settingsClosed()
    }

    Component {
        id: detailScreen
        PRDetailView {}
    }
}
