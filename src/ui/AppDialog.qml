import QtQuick
import QtQuick.Controls
import QtQuick.Controls.Material
import Kestrine

// An alert or a confirmation in the middle of the window: a title, a message and up to two
// buttons. `acceptText` names the action ("Close", "Re-run", "Log out", or "OK" for a plain
// alert); `rejectText` the cancelling button, left out when empty. `destructive` draws the action
// red.
Dialog {
    id: root

    property string message
    property string acceptText: qsTr("OK")
    property string rejectText: ""
    property bool destructive: false

    parent: Overlay.overlay
    anchors.centerIn: parent
    width: Math.min(parent ? parent.width - 48 : 320, 360)
    modal: true
    z: 30
    closePolicy: Popup.CloseOnEscape
    // A confirmation without a message keeps its buttons close under the title.
    topPadding: message !== "" ? 12 : 0
    bottomPadding: message !== "" ? 8 : 0
    spacing: message !== "" ? 12 : 4

    Overlay.modal: Rectangle {
        color: Qt.rgba(0, 0, 0, 0.45)
    }

    background: Rectangle {
        radius: 14
        color: Theme.cellBackground
        border.color: Theme.dark ? "#3a3a42" : "transparent"
    }

    header: Label {
        objectName: "dialogTitle"
        textFormat: Text.PlainText
        text: root.title
        visible: root.title !== ""
        leftPadding: 24
        rightPadding: 24
        topPadding: 22
        wrapMode: Text.Wrap
        color: Theme.primaryText
        font.pixelSize: Theme.headline
        font.weight: Font.DemiBold
    }

    contentItem: Item {
        implicitWidth: messageLabel.implicitWidth
        implicitHeight: root.message !== "" ? messageLabel.implicitHeight : 0

        Label {
            id: messageLabel
            objectName: "dialogMessage"
            textFormat: Text.PlainText
            width: parent.width
            text: root.message
            visible: text !== ""
            wrapMode: Text.Wrap
            color: Theme.secondaryText
            font.pixelSize: Theme.callout
        }
    }

    footer: DialogButtonBox {
        alignment: Qt.AlignRight
        background: null

        Button {
            objectName: "dialogReject"
            visible: root.rejectText !== ""
            text: root.rejectText
            flat: true
            font.capitalization: Font.MixedCase
            font.pixelSize: Theme.callout
            Material.foreground: Theme.accent
            DialogButtonBox.buttonRole: DialogButtonBox.RejectRole
        }
        Button {
            objectName: "dialogAccept"
            text: root.acceptText
            flat: true
            font.capitalization: Font.MixedCase
            font.pixelSize: Theme.callout
            font.weight: Font.DemiBold
            Material.foreground: root.destructive ? Theme.red : Theme.accent
            DialogButtonBox.buttonRole: DialogButtonBox.AcceptRole
        }
    }
}
