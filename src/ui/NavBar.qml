import QtQuick
import QtQuick.Controls
import QtQuick.Layouts

// The top bar of a screen: a back button when there is a screen to go back to, the title, and the
// screen's actions at the trailing end (its `actions` children). `large` gives the root screen's
// bigger title.
Rectangle {
    id: root

    property string title
    property bool large: false
    property bool showBack: false
    // Off when something below belongs to the bar, such as a search field, and draws the line.
    property bool showSeparator: true
    // Items placed before the title instead of the back button, such as a sheet's "Cancel".
    default property alias actions: trailing.data
    property alias leading: leadingRow.data

    signal back

    implicitHeight: large ? 64 : 52
    color: Theme.background

    RowLayout {
        anchors.fill: parent
        anchors.leftMargin: root.showBack || leadingRow.children.length > 0 ? 4 : Theme.margin
        anchors.rightMargin: 4
        spacing: 0

        NavButton {
            objectName: "backButton"
            visible: root.showBack
            symbol: "chevron.left"
            Accessible.name: qsTr("Back")
            onClicked: root.back()
        }

        Row {
            id: leadingRow
            Layout.alignment: Qt.AlignVCenter
        }

        Label {
            textFormat: Text.PlainText
            Layout.fillWidth: true
            Layout.leftMargin: root.showBack ? 2 : 0
            text: root.title
            elide: Text.ElideRight
            color: Theme.primaryText
            font.pixelSize: root.large ? Theme.title1 : Theme.headline
            font.weight: root.large ? Font.Bold : Font.DemiBold
        }

        Row {
            id: trailing
            Layout.alignment: Qt.AlignVCenter
            spacing: 0
        }
    }

    Rectangle {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: 1
        color: Theme.separator
        visible: root.showSeparator
    }
}
