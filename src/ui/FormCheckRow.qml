import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// A form row that is one choice of a list: its text, and a checkmark in the accent colour when
// it is the chosen one.
FormRow {
    id: root

    property string text
    property bool checked: false
    property color textColor: Theme.primaryText

    clickable: true

    Label {
        objectName: "checkRowText"
        textFormat: Text.PlainText
        Layout.fillWidth: true
        text: root.text
        color: root.textColor
        font.pixelSize: Theme.body
        wrapMode: Text.Wrap
    }
    Icon {
        objectName: "checkmark"
        symbol: "checkmark"
        size: 18
        color: Theme.accent
        visible: root.checked
    }
}
