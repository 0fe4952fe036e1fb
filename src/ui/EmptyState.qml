import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A placeholder for content that is not there: an icon, a title and a description, centred.
Item {
    id: root

    property string title
    property string symbol
    property string description

    implicitWidth: column.implicitWidth
    implicitHeight: column.implicitHeight + 48

    ColumnLayout {
        id: column
        anchors.centerIn: parent
        width: Math.min(root.width - 2 * 32, 420)
        spacing: 10

        Icon {
            Layout.alignment: Qt.AlignHCenter
            Layout.bottomMargin: 4
            symbol: root.symbol
            size: 44
            color: Theme.secondaryText
            visible: root.symbol !== ""
        }
        Label {
            objectName: "emptyStateTitle"
            textFormat: Text.PlainText
            Layout.fillWidth: true
            text: root.title
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            color: Theme.primaryText
            font.pixelSize: Theme.title3
            font.weight: Font.Bold
        }
        Label {
            objectName: "emptyStateDescription"
            textFormat: Text.PlainText
            Layout.fillWidth: true
            text: root.description
            visible: text !== ""
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            color: Theme.secondaryText
            font.pixelSize: Theme.callout
        }
    }
}
