import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// Picks the repositories the inbox watches. The list comes from the saved settings; the choice
// goes to the settings screen's copy (`settings.monitoredRepos`) and reaches the store only on
// "Save". An empty choice means every repository.
Page {
    id: root
    objectName: "monitoredReposView"

    // The settings screen whose copy is edited.
    required property var settings
    readonly property var selection: settings.monitoredRepos
    readonly property MonitoredReposLoader loader: loader

    // Ticks or unticks one repository: an unticked name is appended at the end, a ticked one loses
    // its first occurrence. The order is the order of ticking, on purpose.
    function toggle(fullName) {
        const names = settings.monitoredRepos.slice();
        const at = names.indexOf(fullName);
        if (at >= 0)
            names.splice(at, 1);
        else
            names.push(fullName);
        settings.monitoredRepos = names;
    }

    function monitorAll() {
        settings.monitoredRepos = [];
    }

    Component.onCompleted: loader.reload()

    background: Rectangle {
        color: Theme.groupedBackground
    }

    header: NavBar {
        title: qsTr("Monitored repos")
        showBack: true
        color: Theme.groupedBackground
        onBack: root.StackView.view.pop()
    }

    MonitoredReposLoader {
        id: loader
    }

    ProgressState {
        anchors.fill: parent
        visible: loader.isLoading
        text: qsTr("Loading repos…")
    }

    EmptyState {
        objectName: "reposErrorState"
        anchors.fill: parent
        visible: !loader.isLoading && loader.errorMessage !== ""
        title: qsTr("Couldn't load repos")
        symbol: "exclamationmark.triangle"
        description: loader.errorMessage
    }

    Flickable {
        id: scroll
        anchors.fill: parent
        visible: !loader.isLoading && loader.errorMessage === ""
        contentWidth: width
        contentHeight: content.implicitHeight + 48
        ScrollIndicator.vertical: ScrollIndicator {}

        ColumnLayout {
            id: content
            x: (scroll.width - width) / 2
            y: 20
            width: Math.min(scroll.width - 32, Theme.maxContentWidth)
            spacing: 28

            FormSection {
                Layout.fillWidth: true

                FormCheckRow {
                    objectName: "monitorAllRow"
                    text: qsTr("Monitor all repos")
                    checked: root.selection.length === 0
                    onClicked: root.monitorAll()
                }
            }

            FormSection {
                Layout.fillWidth: true
                header: qsTr("Monitored", "section of the watched repositories")

                Repeater {
                    model: loader.repos
                    delegate: FormCheckRow {
                        required property var modelData
                        objectName: "repoRow_" + modelData.full_name
                        text: modelData.full_name
                        checked: root.selection.indexOf(modelData.full_name) >= 0
                        onClicked: root.toggle(modelData.full_name)
                    }
                }
            }
        }
    }
}
