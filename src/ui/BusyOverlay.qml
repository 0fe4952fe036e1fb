import QtQuick
import QtQuick.Controls
import QtQuick.Controls.Material.impl as MaterialImpl
import QtQuick.Layouts
import Kestrine

// Shown while an action runs: a faint black layer over the whole window that takes every touch,
// and a card in the middle with a progress indicator and the action's text ("Merging…").
Popup {
    id: root

    property string message
    // Something else shows the progress right now (the merge sheet shows its own).
    property bool suppressed: false

    parent: Overlay.overlay
    anchors.centerIn: parent
    modal: true
    z: 10
    closePolicy: Popup.NoAutoClose
    visible: message !== "" && !suppressed
    padding: 20

    Overlay.modal: Rectangle {
        color: Qt.rgba(0, 0, 0, 0.15)
    }

    background: Rectangle {
        radius: 12
        color: Theme.dark ? "#2a2a31" : "#ffffff"
        layer.enabled: true
        layer.effect: MaterialImpl.ElevationEffect {
            elevation: 8
        }
    }

    contentItem: ColumnLayout {
        spacing: 12
        BusyIndicator {
            Layout.alignment: Qt.AlignHCenter
            running: root.visible
        }
        Label {
            objectName: "busyText"
            textFormat: Text.PlainText
            Layout.alignment: Qt.AlignHCenter
            text: root.message
            color: Theme.primaryText
            font.pixelSize: Theme.callout
        }
    }
}
