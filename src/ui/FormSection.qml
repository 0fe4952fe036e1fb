import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// One group of a form: an optional header, rounded card of rows, and an optional footer. Rows
// are the section's children (FormRow and friends); each but the first draws a separator above.
ColumnLayout {
    id: root

    property string header
    property string footer
    default property alias rows: card.data

    spacing: 6

    Label {
        objectName: "sectionHeader"
        textFormat: Text.PlainText
        Layout.fillWidth: true
        Layout.leftMargin: Theme.margin
        visible: root.header !== ""
        text: root.header
        color: Theme.secondaryText
        font.pixelSize: Theme.footnote
        font.weight: Font.Medium
    }

    Rectangle {
        Layout.fillWidth: true
        implicitHeight: card.implicitHeight
        radius: 12
        color: Theme.cellBackground
        clip: true

        Column {
            id: card
            width: parent.width
        }
    }

    Label {
        objectName: "sectionFooter"
        textFormat: Text.PlainText
        Layout.fillWidth: true
        Layout.leftMargin: Theme.margin
        Layout.rightMargin: Theme.margin
        visible: root.footer !== ""
        text: root.footer
        wrapMode: Text.Wrap
        color: Theme.secondaryText
        font.pixelSize: Theme.footnote
    }
}
