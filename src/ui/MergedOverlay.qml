import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// The confirmation after a merge: a dark layer over everything and, in the middle, a green
// checkmark that springs up from a third of its size above the word "Merged".
Popup {
    id: root

    property bool shown: false

    parent: Overlay.overlay
    x: 0
    y: 0
    width: parent ? parent.width : 0
    height: parent ? parent.height : 0
    modal: true
    z: 40
    closePolicy: Popup.NoAutoClose
    visible: shown
    padding: 0

    Overlay.modal: Item {}

    enter: Transition {
        NumberAnimation {
            property: "opacity"
            from: 0
            to: 1
            duration: 200
        }
    }

    background: Rectangle {
        color: Qt.rgba(0, 0, 0, 0.55)
    }

    contentItem: Item {
        ColumnLayout {
            anchors.centerIn: parent
            spacing: 14

            Icon {
                id: check
                objectName: "mergedIcon"
                Layout.alignment: Qt.AlignHCenter
                symbol: "checkmark.circle.fill"
                size: 72
                color: Theme.dark ? Theme.green : "#34c759"
                transformOrigin: Item.Center
                scale: 0.3
            }
            Label {
                objectName: "mergedText"
                textFormat: Text.PlainText
                Layout.alignment: Qt.AlignHCenter
                text: qsTr("Merged")
                color: "white"
                font.pixelSize: Theme.title2
                font.weight: Font.DemiBold
            }
        }
    }

    // A springy grow, as a damped spring of response 0.4 s would move: a quick overshoot that
    // settles.
    onAboutToShow: {
        check.scale = 0.3;
        grow.restart();
    }
    NumberAnimation {
        id: grow
        target: check
        property: "scale"
        from: 0.3
        to: 1
        duration: 450
        easing.type: Easing.OutBack
        easing.overshoot: 1.6
    }
}
