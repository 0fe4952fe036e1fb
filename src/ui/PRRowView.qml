import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// One inbox row: the number (with "Draft" for a draft), the title, the repository and how long
// ago the pull request was last updated. Rows carry no CI or review badge.
ItemDelegate {
    id: root

    // {repo, pr} in QML form.
    required property var row
    readonly property var pr: row.pr
    readonly property var repo: row.repo

    topPadding: 12
    bottomPadding: 12
    leftPadding: Theme.margin
    rightPadding: Theme.margin

    contentItem: RowLayout {
        spacing: 12

        ColumnLayout {
            Layout.fillWidth: true
            Layout.alignment: Qt.AlignTop
            spacing: 4

            RowLayout {
                spacing: 6
                Label {
                    objectName: "rowNumber"
                    textFormat: Text.PlainText
                    text: "#" + root.pr.number
                    color: Theme.secondaryText
                    font.pixelSize: Theme.subheadline
                    font.weight: Font.Bold
                }
                Label {
                    objectName: "rowDraft"
                    textFormat: Text.PlainText
                    visible: root.pr.draft === true
                    text: qsTr("Draft", "a draft pull request")
                    color: Theme.secondaryText
                    font.pixelSize: Theme.subheadline
                }
            }
            Label {
                objectName: "rowTitle"
                textFormat: Text.PlainText
                Layout.fillWidth: true
                text: root.pr.title
                color: Theme.primaryText
                font.pixelSize: Theme.body
                font.weight: Font.Medium
                wrapMode: Text.Wrap
                maximumLineCount: 3
                elide: Text.ElideRight
            }
            RowLayout {
                Layout.fillWidth: true
                spacing: 6
                Label {
                    objectName: "rowRepository"
                    textFormat: Text.PlainText
                    Layout.fillWidth: true
                    text: root.repo.full_name
                    color: Theme.secondaryText
                    font.pixelSize: Theme.caption
                    elide: Text.ElideRight
                }
                Label {
                    objectName: "rowTime"
                    textFormat: Text.PlainText
                    visible: root.pr.updated_at !== undefined
                    text: root.pr.updated_at !== undefined
                          ? RelativeTime.abbreviated(root.pr.updated_at, RelativeTime.now) : ""
                    color: Theme.secondaryText
                    font.pixelSize: Theme.caption2
                }
            }
        }
    }

    background: Rectangle {
        color: root.down ? Theme.secondaryBackground : "transparent"
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
