import QtQuick
import QtQuick.Controls
import Kestrine

// The pull request's description, as Markdown, or "No description.".
TabScroll {
    id: root

    readonly property var pr: vm.pr
    readonly property string body: pr && pr.body !== undefined ? pr.body : ""

    MarkdownText {
        objectName: "description"
        width: parent.width
        visible: root.body !== ""
        markdown: root.body
    }
    Label {
        objectName: "noDescription"
        textFormat: Text.PlainText
        visible: root.body === ""
        text: qsTr("No description.")
        color: Theme.secondaryText
        font.pixelSize: Theme.callout
    }
}
