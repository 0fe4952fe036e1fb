import QtQuick
import QtQuick.Controls

// A text button of a screen's or sheet's top bar ("Cancel", "Save", "Clear", ...). `prominent`
// marks the confirming action; `destructive` draws it red.
ToolButton {
    id: root

    property bool prominent: false
    property bool destructive: false

    font.pixelSize: Theme.body
    font.capitalization: Font.MixedCase
    font.weight: prominent ? Font.DemiBold : Font.Normal
    leftPadding: 12
    rightPadding: 12

    contentItem: Label {
        textFormat: Text.PlainText
        text: root.text
        font: root.font
        color: !root.enabled ? Theme.grey : root.destructive ? Theme.red : Theme.accent
        opacity: root.enabled ? 1 : 0.6
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
}
