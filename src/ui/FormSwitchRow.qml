import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// A form row with a label and an on/off switch.
FormRow {
    id: root

    property string text
    property alias checked: toggle.checked
    readonly property alias toggle: toggle

    clickable: true
    onClicked: toggle.toggle()

    Label {
        Layout.fillWidth: true
        text: root.text
        color: Theme.primaryText
        font.pixelSize: Theme.body
        wrapMode: Text.Wrap
    }
    Switch {
        id: toggle
        Accessible.name: root.text
    }
}
