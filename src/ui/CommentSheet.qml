import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// Writes a comment, or a review that approves or requests changes, with a text. "Submit" needs a
// text that is more than blanks, in every mode; it sends the text without its outer blanks and
// closes the sheet at once (progress and failure show on the detail screen).
Sheet {
    id: root

    enum Mode {
        Comment,
        Approve,
        RequestChanges
    }

    required property PRDetailViewModel vm
    // The mode asked for; the sheet keeps the one it opened with until it is presented again.
    property int mode: CommentSheet.Comment
    property int shownMode: mode
    property string text: ""
    readonly property string modeTitle: shownMode === CommentSheet.Approve
                                        ? qsTr("Approve", "sheet title")
                                        : shownMode === CommentSheet.RequestChanges
                                          ? qsTr("Request changes", "sheet title")
                                          : qsTr("Comment", "sheet title: write a comment")
    readonly property bool canSubmit: text.trim() !== ""
    // Characters as typed and as a person sees them, blanks and line breaks included: "👍🏽", an
    // accented letter made of two code points, a flag or "\r\n" each count once.
    readonly property int characterCount: Characters.count(text)

    function submit() {
        if (!canSubmit)
            return;
        const body = text.trim();
        switch (shownMode) {
        case CommentSheet.Approve:
            vm.startSubmitReview("approved", body);
            break;
        case CommentSheet.RequestChanges:
            vm.startSubmitReview("changes", body);
            break;
        default:
            vm.startPostComment(body);
            break;
        }
        close();
    }

    title: modeTitle
    height: parent ? Math.min(parent.height - 24, 520) : 520

    // Built afresh for every presentation: its mode, and an empty text.
    onAboutToShow: {
        shownMode = mode;
        text = "";
        editor.text = "";
    }
    onOpened: editor.forceActiveFocus()

    leading: TextNavButton {
        objectName: "commentCancelButton"
        text: qsTr("Cancel")
        onClicked: root.close()
    }
    trailing: TextNavButton {
        objectName: "submitButton"
        text: qsTr("Submit")
        prominent: true
        enabled: root.canSubmit
        onClicked: root.submit()
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: Theme.margin
        spacing: 10

        Label {
            objectName: "commentHeading"
            textFormat: Text.PlainText
            text: root.modeTitle
            color: Theme.primaryText
            font.pixelSize: Theme.headline
            font.weight: Font.DemiBold
        }

        Rectangle {
            Layout.fillWidth: true
            Layout.fillHeight: true
            radius: 8
            color: "transparent"
            border.width: 1
            border.color: editor.activeFocus ? Theme.accent : Theme.separator

            ScrollView {
                anchors.fill: parent
                anchors.margins: 1

                TextArea {
                    id: editor
                    objectName: "commentEditor"
                    wrapMode: TextEdit.Wrap
                    font.pixelSize: Theme.body
                    color: Theme.primaryText
                    background: null
                    topPadding: 10
                    bottomPadding: 10
                    leftPadding: 10
                    rightPadding: 10
                    onTextChanged: root.text = text
                }
            }
        }

        Label {
            objectName: "characterCount"
            textFormat: Text.PlainText
            text: qsTr("%n character(s)", "", root.characterCount)
            color: Theme.secondaryText
            font.pixelSize: Theme.caption2
        }
    }
}
