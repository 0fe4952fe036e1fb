import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// A form row that leads to another screen: its label and a disclosure chevron.
FormRow {
    id: root

    property string text

    clickable: true

    Label {
        textFormat: Text.PlainText
        Layout.fillWidth: true
        text: root.text
        color: Theme.primaryText
        font.pixelSize: Theme.body
        elide: Text.ElideRight
    }
    Icon {
        symbol: "chevron.right"
        size: 14
        color: Theme.grey
    }
}
