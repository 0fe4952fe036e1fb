import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// The in-app diagnostic log, newest entry first, with "Clear" (no confirmation, by design) and a
// share button that hands the whole log, as export text, to the share sheet.
Page {
    id: root
    objectName: "logsView"

    // Newest first: the reverse of the store's order.
    readonly property var rows: {
        const entries = LogStore.entries;
        const reversed = [];
        for (let i = entries.length - 1; i >= 0; --i)
            reversed.push(entries[i]);
        return reversed;
    }
    readonly property bool isEmpty: LogStore.count === 0
    readonly property alias shareSheet: shareSheet

    function levelColor(label) {
        if (label === "WARN")
            return Theme.orange;
        if (label === "ERROR")
            return Theme.red;
        return Theme.secondaryText;
    }

    function share() {
        // The text is taken as the sheet opens; later log lines do not change what is shared.
        shareSheet.text = LogStore.text;
        shareSheet.open();
    }

    background: Rectangle {
        color: Theme.background
    }

    header: NavBar {
        title: qsTr("Logs", "the diagnostic log")
        showBack: true
        onBack: root.StackView.view.pop()
        leading: TextNavButton {
            objectName: "clearButton"
            text: qsTr("Clear", "empties the log")
            enabled: !root.isEmpty
            onClicked: LogStore.clear()
        }

        NavButton {
            objectName: "shareButton"
            symbol: "square.and.arrow.up"
            Accessible.name: qsTr("Share")
            enabled: !root.isEmpty
            onClicked: root.share()
        }
    }

    EmptyState {
        objectName: "noLogsState"
        anchors.fill: parent
        visible: root.isEmpty
        title: qsTr("No logs yet")
        symbol: "doc.text"
        description: qsTr("Run the app and reproduce the issue, then come back here.")
    }

    ListView {
        id: list
        objectName: "logList"
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(parent.width, Theme.maxContentWidth)
        visible: !root.isEmpty
        model: root.rows
        ScrollIndicator.vertical: ScrollIndicator {}

        delegate: Item {
            id: entry
            required property var modelData
            width: ListView.view.width
            implicitHeight: column.implicitHeight + 20

            ColumnLayout {
                id: column
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.leftMargin: Theme.margin
                anchors.rightMargin: Theme.margin
                anchors.verticalCenter: parent.verticalCenter
                spacing: 3

                RowLayout {
                    spacing: 8
                    Label {
                        objectName: "entryLevel"
                        textFormat: Text.PlainText
                        text: entry.modelData.levelLabel
                        color: root.levelColor(entry.modelData.levelLabel)
                        font.pixelSize: Theme.caption2
                        font.weight: Font.Bold
                    }
                    Label {
                        objectName: "entryTime"
                        textFormat: Text.PlainText
                        text: TimeOfDay.of(entry.modelData.timestamp)
                        color: Theme.secondaryText
                        font.pixelSize: Theme.caption2
                    }
                }
                TextEdit {
                    objectName: "entryMessage"
                    textFormat: TextEdit.PlainText
                    Layout.fillWidth: true
                    text: entry.modelData.message
                    readOnly: true
                    selectByMouse: true
                    wrapMode: TextEdit.Wrap
                    color: Theme.primaryText
                    selectionColor: Theme.alpha(Theme.accent, 0.35)
                    selectedTextColor: Theme.primaryText
                    font.family: Theme.monospace
                    font.pixelSize: Theme.caption
                }
            }

            Rectangle {
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.bottom: parent.bottom
                anchors.leftMargin: Theme.margin
                height: 1
                color: Theme.separator
            }
        }
    }

    ShareSheet {
        id: shareSheet
        objectName: "logsShareSheet"
        fileName: "kestrine-log.txt"
    }
}
