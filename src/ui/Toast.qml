import QtQuick
import QtQuick.Controls
import Kestrine

// A short note that something was done ("Link copied"): a pill near the bottom of the screen that
// fades in, stays for a moment and fades out. It takes no touches, so the screen beneath stays
// usable meanwhile.
Rectangle {
    id: root

    // How long the note stays, in milliseconds, before it fades out.
    property int duration: 2000
    readonly property bool shown: opacity > 0
    readonly property string text: note.text

    function show(message) {
        note.text = message;
        opacity = 1;
        hideTimer.restart();
    }

    implicitWidth: Math.min(note.implicitWidth + 32, parent ? parent.width - 40 : 320)
    implicitHeight: note.implicitHeight + 16
    width: implicitWidth
    height: implicitHeight
    radius: height / 2
    // The colours of the screen, swapped, so the note stands out in both themes.
    color: Theme.dark ? "#e6e6ec" : "#2b2b31"
    opacity: 0
    visible: opacity > 0
    z: 30

    Accessible.role: Accessible.AlertMessage
    Accessible.name: note.text

    Behavior on opacity {
        NumberAnimation {
            duration: 160
            easing.type: Easing.OutQuad
        }
    }

    Label {
        id: note
        objectName: "toastText"
        anchors.centerIn: parent
        width: Math.min(implicitWidth, root.width - 32)
        textFormat: Text.PlainText
        elide: Text.ElideRight
        color: Theme.dark ? "#1b1b1f" : "#f4f4f8"
        font.pixelSize: Theme.subheadline
        font.weight: Font.Medium
    }

    Timer {
        id: hideTimer
        interval: root.duration
        onTriggered: root.opacity = 0
    }
}
