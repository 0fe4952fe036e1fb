import QtQuick
import QtQuick.Controls
import Kestrine

// A modal sheet that slides up over the screen: a bar with the sheet's title between its leading
// (cancelling) and trailing (confirming) buttons, then its content. Pulling the bar down, tapping
// outside or Escape dismiss it while `dismissable` is true; on wide windows it stays phone-wide,
// centred. With `showBar` false the content brings its own bars (a sheet holding a stack of
// screens).
Popup {
    id: root

    property string title
    property bool dismissable: true
    property bool showBar: true
    property color backgroundColor: Theme.background
    property alias leading: leadingRow.data
    property alias trailing: trailingRow.data
    default property alias content: body.data

    parent: Overlay.overlay
    modal: true
    z: 20
    padding: 0
    width: parent ? Math.min(parent.width, 640) : 390
    height: parent ? parent.height - 24 : 600
    x: parent ? (parent.width - width) / 2 : 0
    y: parent ? parent.height - height : 0
    closePolicy: dismissable ? Popup.CloseOnEscape | Popup.CloseOnPressOutside : Popup.NoAutoClose

    enter: Transition {
        NumberAnimation {
            property: "y"
            from: root.parent ? root.parent.height : 0
            to: root.parent ? root.parent.height - root.height : 0
            duration: 260
            easing.type: Easing.OutCubic
        }
    }
    exit: Transition {
        NumberAnimation {
            property: "y"
            to: root.parent ? root.parent.height : 0
            duration: 200
            easing.type: Easing.InCubic
        }
    }

    Overlay.modal: Rectangle {
        color: "#66000000"
    }

    background: Rectangle {
        color: root.backgroundColor
        radius: 14
        // On a dark screen a hairline marks where the sheet begins.
        border.color: Theme.dark ? Theme.separator : "transparent"
        // Only the top corners are round: the bottom ones sit below the window's edge.
        Rectangle {
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            height: 14
            color: parent.color
        }
    }

    contentItem: Item {
        clip: true

        Item {
            id: bar
            objectName: "sheetBar"
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            height: root.showBar ? 56 : 14
            z: 2

            Rectangle {
                anchors.horizontalCenter: parent.horizontalCenter
                anchors.top: parent.top
                anchors.topMargin: 5
                width: 36
                height: 5
                radius: 2.5
                color: Theme.separator
            }

            Row {
                id: leadingRow
                visible: root.showBar
                anchors.left: parent.left
                anchors.leftMargin: 4
                anchors.verticalCenter: parent.verticalCenter
                anchors.verticalCenterOffset: 3
            }
            Label {
                objectName: "sheetTitle"
                textFormat: Text.PlainText
                visible: root.showBar
                anchors.centerIn: parent
                anchors.verticalCenterOffset: 3
                width: Math.min(implicitWidth,
                                parent.width - 2 * Math.max(leadingRow.width, trailingRow.width) - 16)
                text: root.title
                elide: Text.ElideRight
                color: Theme.primaryText
                font.pixelSize: Theme.headline
                font.weight: Font.DemiBold
            }
            Row {
                id: trailingRow
                visible: root.showBar
                anchors.right: parent.right
                anchors.rightMargin: 4
                anchors.verticalCenter: parent.verticalCenter
                anchors.verticalCenterOffset: 3
            }

            // Pulling the bar down far enough dismisses the sheet, when it may be dismissed.
            DragHandler {
                target: null
                xAxis.enabled: false
                onActiveChanged: {
                    if (!active && translation.y > 90 && root.dismissable)
                        root.close();
                }
            }
        }

        Rectangle {
            id: rule
            visible: root.showBar
            anchors.top: bar.bottom
            anchors.left: parent.left
            anchors.right: parent.right
            height: 1
            color: Theme.separator
        }

        Item {
            id: body
            anchors.top: root.showBar ? rule.bottom : parent.top
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
        }
    }
}
