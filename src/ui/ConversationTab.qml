import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// Reviews and comments, oldest first, and a note that inline file comments are not shown.
TabScroll {
    id: root

    Label {
        objectName: "reviewsHeading"
        textFormat: Text.PlainText
        visible: root.vm.reviewsModel.count > 0
        text: qsTr("Reviews", "heading")
        color: Theme.primaryText
        font.pixelSize: Theme.headline
        font.weight: Font.DemiBold
    }

    Repeater {
        model: root.vm.reviewsModel
        delegate: ColumnLayout {
            id: review
            required property string line
            required property string body

            objectName: "reviewRow"
            width: parent.width
            spacing: 4

            Label {
                objectName: "reviewLine"
                textFormat: Text.PlainText
                Layout.fillWidth: true
                text: review.line
                wrapMode: Text.Wrap
                color: Theme.primaryText
                font.pixelSize: Theme.subheadline
                font.weight: Font.DemiBold
            }
            Label {
                objectName: "reviewBody"
                textFormat: Text.PlainText
                Layout.fillWidth: true
                visible: text !== ""
                text: review.body
                wrapMode: Text.Wrap
                color: Theme.primaryText
                font.pixelSize: Theme.callout
            }
        }
    }

    Item {
        visible: root.vm.reviewsModel.count > 0
        width: 1
        height: 4
    }

    Label {
        textFormat: Text.PlainText
        text: qsTr("Comments", "heading")
        color: Theme.primaryText
        font.pixelSize: Theme.headline
        font.weight: Font.DemiBold
    }

    Label {
        objectName: "noComments"
        textFormat: Text.PlainText
        visible: root.vm.commentsModel.count === 0
        text: qsTr("No comments yet.")
        color: Theme.secondaryText
        font.pixelSize: Theme.callout
    }

    Repeater {
        model: root.vm.commentsModel
        delegate: Rectangle {
            id: comment
            required property string author
            required property string body
            required property date createdAt

            objectName: "commentCard"
            width: parent.width
            implicitHeight: commentColumn.implicitHeight + 16
            radius: 4
            color: Theme.secondaryBackground

            ColumnLayout {
                id: commentColumn
                x: 8
                y: 8
                width: parent.width - 16
                spacing: 4

                RowLayout {
                    spacing: 8
                    Label {
                        objectName: "commentAuthor"
                        textFormat: Text.PlainText
                        text: comment.author
                        color: Theme.primaryText
                        font.pixelSize: Theme.subheadline
                        font.weight: Font.DemiBold
                    }
                    Label {
                        objectName: "commentTime"
                        textFormat: Text.PlainText
                        text: RelativeTime.full(comment.createdAt, RelativeTime.now)
                        color: Theme.secondaryText
                        font.pixelSize: Theme.caption2
                    }
                }
                Label {
                    objectName: "commentBody"
                    textFormat: Text.PlainText
                    Layout.fillWidth: true
                    text: comment.body
                    wrapMode: Text.Wrap
                    color: Theme.primaryText
                    font.pixelSize: Theme.callout
                }
            }
        }
    }

    Label {
        textFormat: Text.PlainText
        width: parent.width
        topPadding: 6
        text: qsTr("Inline file comments are not shown — the Gitea API does not expose them.")
        wrapMode: Text.Wrap
        color: Theme.secondaryText
        font.pixelSize: Theme.caption2
    }
}
