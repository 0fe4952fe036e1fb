import QtQuick
import QtQuick.Controls
import Kestrine

// The diff of one changed file, line by line in a monospaced caption size: additions green,
// deletions red, hunk and header lines on the secondary background. Long lines wrap. Only the
// lines on screen are laid out, so a pull request diff of many megabytes opens at once.
Page {
    id: root
    objectName: "diffView"

    required property var repo
    required property var prNumber
    required property string filename
    readonly property DiffModel diff: diff

    Component.onCompleted: diff.reload()

    background: Rectangle {
        color: Theme.background
    }

    header: NavBar {
        title: root.filename
        showBack: true
        onBack: root.StackView.view.pop()
    }

    DiffModel {
        id: diff
        repo: root.repo
        prNumber: root.prNumber
        filename: root.filename
    }

    ProgressState {
        anchors.fill: parent
        visible: diff.isLoading
        text: qsTr("Loading diff…")
        z: 2
    }

    EmptyState {
        objectName: "diffErrorState"
        anchors.fill: parent
        visible: !diff.isLoading && diff.errorMessage !== ""
        title: qsTr("Couldn't load diff")
        symbol: "exclamationmark.triangle"
        description: diff.errorMessage
    }

    ListView {
        id: lines
        objectName: "diffLines"
        anchors.fill: parent
        visible: !diff.isLoading && diff.errorMessage === ""
        model: diff
        topMargin: 4
        bottomMargin: 24
        reuseItems: true
        ScrollIndicator.vertical: ScrollIndicator {}

        delegate: Rectangle {
            id: line
            required property string text
            required property int type

            width: ListView.view.width
            implicitHeight: label.implicitHeight + 2
            color: {
                switch (type) {
                case DiffLineType.Addition:
                    return Theme.alpha(Theme.green, 0.15);
                case DiffLineType.Deletion:
                    return Theme.alpha(Theme.red, 0.15);
                case DiffLineType.Hunk:
                case DiffLineType.Meta:
                    return Theme.secondaryBackground;
                default:
                    return "transparent";
                }
            }

            Text {
                id: label
                objectName: "diffLineText"
                x: 8
                y: 1
                width: parent.width - 16
                text: line.text
                textFormat: Text.PlainText
                wrapMode: Text.WrapAnywhere
                color: {
                    switch (line.type) {
                    case DiffLineType.Addition:
                        return Theme.green;
                    case DiffLineType.Deletion:
                        return Theme.red;
                    case DiffLineType.Hunk:
                        return Theme.secondaryText;
                    default:
                        return Theme.primaryText;
                    }
                }
                font.family: Theme.monospace
                font.pixelSize: Theme.caption
            }
        }
    }
}
