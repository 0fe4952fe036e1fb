import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// The changed files, each row leading to its diff: a status mark, the file name, and the number
// of added and removed lines.
Item {
    id: root

    required property PRDetailViewModel vm
    property real bottomInset: 0
    readonly property alias flickable: list

    signal openFile(string filename)

    ListView {
        id: list
        objectName: "fileList"
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(parent.width, Theme.maxContentWidth)
        model: root.vm.filesModel
        topMargin: 6
        // The empty list stays, so that it can still be pulled down to reload.
        header: root.vm.filesModel.count === 0 ? emptyNote : null
        // A pull request with more files than the client fetches pages of says so below the last.
        footer: root.vm.filesCutNotice !== "" ? cutNote : null
        bottomMargin: root.bottomInset
        flickableDirection: Flickable.VerticalFlick
        boundsBehavior: Flickable.DragAndOvershootBounds
        ScrollIndicator.vertical: ScrollIndicator {}

        delegate: ItemDelegate {
            id: fileRow
            required property string filename
            required property string mark
            required property double additions
            required property double deletions

            objectName: "fileRow_" + filename
            width: ListView.view.width
            topPadding: 6 + 6
            bottomPadding: 6 + 6
            leftPadding: Theme.margin + 4 - 4
            rightPadding: Theme.margin
            onClicked: root.openFile(filename)

            contentItem: RowLayout {
                spacing: 8
                Label {
                    objectName: "statusMark"
                    textFormat: Text.PlainText
                    text: fileRow.mark
                    color: Theme.secondaryText
                    font.pixelSize: Theme.body
                }
                Label {
                    objectName: "fileName"
                    textFormat: Text.PlainText
                    Layout.fillWidth: true
                    text: fileRow.filename
                    elide: Text.ElideMiddle
                    maximumLineCount: 1
                    color: Theme.primaryText
                    font.pixelSize: Theme.subheadline
                }
                Label {
                    objectName: "additions"
                    textFormat: Text.PlainText
                    text: "+" + fileRow.additions
                    color: Theme.green
                    font.pixelSize: Theme.caption2
                    font.family: Theme.monospace
                }
                Label {
                    objectName: "deletions"
                    textFormat: Text.PlainText
                    text: "−" + fileRow.deletions
                    color: Theme.red
                    font.pixelSize: Theme.caption2
                    font.family: Theme.monospace
                }
            }

            background: Rectangle {
                color: fileRow.down ? Theme.secondaryBackground : "transparent"
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
    }

    Component {
        id: emptyNote
        Label {
            objectName: "noFiles"
            textFormat: Text.PlainText
            leftPadding: Theme.margin
            topPadding: Theme.margin - 6
            text: qsTr("No changed files.")
            color: Theme.secondaryText
            font.pixelSize: Theme.callout
        }
    }

    Component {
        id: cutNote
        Label {
            objectName: "filesCutNotice"
            textFormat: Text.PlainText
            width: list.width
            leftPadding: Theme.margin
            rightPadding: Theme.margin
            topPadding: Theme.margin
            bottomPadding: Theme.margin
            wrapMode: Text.Wrap
            text: root.vm.filesCutNotice
            color: Theme.secondaryText
            font.pixelSize: Theme.callout
        }
    }

    PullToRefresh {
        flickable: list
        anchors.top: list.top
        anchors.horizontalCenter: list.horizontalCenter
        loading: root.vm.isLoading
        onRefresh: root.vm.refresh()
    }
}
