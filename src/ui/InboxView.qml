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
    // What the content shows, in this order of precedence.
    readonly property string content: !SettingsStore.isConfigured
                                      ? "notConfigured"
                                      : vm.count === 0 && !vm.isLoading ? "empty" : "list"

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

    StackView.onActivated: appear()

    background: Rectangle {
        color: Theme.background
    }

    header: NavBar {
        title: "Pull Requests"
        large: true

        NavButton {
            objectName: "settingsButton"
            symbol: "gearshape"
            Accessible.name: "Settings"
            onClicked: root.openSettings()
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

    EmptyState {
        objectName: "notConfiguredState"
        anchors.fill: parent
        visible: root.content === "notConfigured"
        title: "Not configured"
        symbol: "key"
        description: "Add your Gitea instance and token in Settings."
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
            title: "No open PRs"
            symbol: "tray"
            description: "Pull down to refresh."
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
        model: inboxRows
        boundsBehavior: Flickable.DragAndOvershootBounds
        flickableDirection: Flickable.VerticalFlick
        // Rows scrolled away are handed the row coming into view instead of being destroyed and
        // built again: a fast fling through thousands of rows builds no new ones.
        reuseItems: true
        ScrollIndicator.vertical: ScrollIndicator {}

        // `row` is the model's role of that name.
        delegate: PRRowView {
            width: ListView.view.width
            onClicked: root.openRow(row)
        }
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
        title: "Error"
        message: root.vm.errorMessage
        acceptText: "OK"
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
