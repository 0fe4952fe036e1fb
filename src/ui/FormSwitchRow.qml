import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// A form row with a label and an on/off switch. Tapping the row or the switch asks for the other
// state through toggled(); whoever owns the value sets `checked`.
FormRow {
    id: root

    property string text
    property bool checked: false

    signal toggled(bool checked)

    clickable: true
    onClicked: root.toggled(!root.checked)

    Label {
        textFormat: Text.PlainText
        Layout.fillWidth: true
        text: root.text
        color: Theme.primaryText
        font.pixelSize: Theme.body
        wrapMode: Text.Wrap
    }
    Switch {
        checked: root.checked
        Accessible.name: root.text
        onToggled: root.toggled(checked)
    }
}
