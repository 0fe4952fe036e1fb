import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// Reviews and comments, oldest first, and a note that inline file comments are not shown.
TabScroll {
    id: root

    readonly property var reviews: vm.reviews || []
    readonly property var comments: vm.comments || []

    function authorOf(record) {
        return record.user && record.user.login !== undefined ? record.user.login : "unknown";
    }

    Label {
        objectName: "reviewsHeading"
        textFormat: Text.PlainText
        visible: root.reviews.length > 0
        text: "Reviews"
        color: Theme.primaryText
        font.pixelSize: Theme.headline
        font.weight: Font.DemiBold
    }

    Repeater {
        model: root.reviews
        delegate: ColumnLayout {
            id: review
            required property var modelData
            readonly property int verdict: SummaryRules.reviewState(modelData)

            objectName: "reviewRow"
            width: parent.width
            spacing: 4

            Label {
                objectName: "reviewLine"
                textFormat: Text.PlainText
                Layout.fillWidth: true
                text: (review.verdict === ReviewState.Approved ? "✅"
                       : review.verdict === ReviewState.ChangesRequested ? "🔴" : "💬")
                      + " " + Bidi.isolate(root.authorOf(review.modelData)) + " "
                      + (review.verdict === ReviewState.Approved ? "approved"
                         : review.verdict === ReviewState.ChangesRequested ? "requested changes"
                                                                           : "reviewed")
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
                text: review.modelData.body !== undefined ? review.modelData.body : ""
                wrapMode: Text.Wrap
                color: Theme.primaryText
                font.pixelSize: Theme.callout
            }
        }
    }

    Item {
        visible: root.reviews.length > 0
        width: 1
        height: 4
    }

    Label {
        textFormat: Text.PlainText
        text: "Comments"
        color: Theme.primaryText
        font.pixelSize: Theme.headline
        font.weight: Font.DemiBold
    }

    Label {
        objectName: "noComments"
        textFormat: Text.PlainText
        visible: root.comments.length === 0
        text: "No comments yet."
        color: Theme.secondaryText
        font.pixelSize: Theme.callout
    }

    Repeater {
        model: root.comments
        delegate: Rectangle {
            id: comment
            required property var modelData

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
                        text: root.authorOf(comment.modelData)
                        color: Theme.primaryText
                        font.pixelSize: Theme.subheadline
                        font.weight: Font.DemiBold
                    }
                    Label {
                        textFormat: Text.PlainText
                        text: comment.modelData.created_at !== undefined
                              ? RelativeTime.full(comment.modelData.created_at, RelativeTime.now) : ""
                        color: Theme.secondaryText
                        font.pixelSize: Theme.caption2
                    }
                }
                Label {
                    objectName: "commentBody"
                    textFormat: Text.PlainText
                    Layout.fillWidth: true
                    text: comment.modelData.body !== undefined ? comment.modelData.body : ""
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
        text: "Inline file comments are not shown — the Gitea API does not expose them."
        wrapMode: Text.Wrap
        color: Theme.secondaryText
        font.pixelSize: Theme.caption2
    }
}
