import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// A progress indicator with its text ("Loading…"), centred.
Item {
    id: root

    property string text

    ColumnLayout {
        anchors.centerIn: parent
        spacing: 12

        BusyIndicator {
            Layout.alignment: Qt.AlignHCenter
            running: root.visible
        }
        Label {
            objectName: "progressText"
            textFormat: Text.PlainText
            Layout.alignment: Qt.AlignHCenter
            text: root.text
            color: Theme.secondaryText
            font.pixelSize: Theme.callout
        }
    }
}
