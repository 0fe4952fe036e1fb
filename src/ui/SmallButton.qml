import QtQuick
import QtQuick.Controls
import Kestrine

// A small bordered button in the accent colour, for actions inside a card ("Re-run", "Logs").
AbstractButton {
    id: root

    implicitWidth: label.implicitWidth + 20
    implicitHeight: label.implicitHeight + 10
    font.pixelSize: Theme.caption
    font.weight: Font.Medium

    contentItem: Label {
        id: label
        textFormat: Text.PlainText
        text: root.text
        font: root.font
        color: Theme.accent
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }

    background: Rectangle {
        radius: 7
        color: root.down ? Theme.alpha(Theme.accent, 0.22) : Theme.alpha(Theme.accent, 0.12)
    }
}
