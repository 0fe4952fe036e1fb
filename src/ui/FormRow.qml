import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// One row of a FormSection: its children laid out in a row with the form's margins, at least
// 48 high. `onClicked` fires on a tap when `clickable`.
Item {
    id: root

    default property alias content: row.data
    property bool clickable: false
    property alias spacing: row.spacing

    signal clicked

    width: parent ? parent.width : implicitWidth
    implicitWidth: row.implicitWidth + 2 * Theme.margin
    implicitHeight: Math.max(48, row.implicitHeight + 20)

    Rectangle {
        anchors.fill: parent
        color: Theme.secondaryBackground
        visible: tap.pressed
    }

    Rectangle {
        anchors.top: parent.top
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.leftMargin: Theme.margin
        height: 1
        color: Theme.separator
        visible: !root.Positioner.isFirstItem
    }

    RowLayout {
        id: row
        anchors.fill: parent
        anchors.leftMargin: Theme.margin
        anchors.rightMargin: Theme.margin
        spacing: 12
    }

    MouseArea {
        id: tap
        anchors.fill: parent
        enabled: root.clickable && root.enabled
        onClicked: root.clicked()
    }
}
