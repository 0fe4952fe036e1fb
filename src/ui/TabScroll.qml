import QtQuick
import QtQuick.Controls
import Kestrine

// The scroll area of one detail tab: its content centred at a readable width and padded, room at
// the bottom for the floating tab bar, and pull-to-refresh that reloads the detail model.
Item {
    id: root

    required property PRDetailViewModel vm
    property real bottomInset: 0
    default property alias content: column.data
    readonly property alias flickable: flick

    Flickable {
        id: flick
        anchors.fill: parent
        contentWidth: width
        contentHeight: column.implicitHeight + 2 * Theme.margin + root.bottomInset
        flickableDirection: Flickable.VerticalFlick
        ScrollIndicator.vertical: ScrollIndicator {}

        Column {
            id: column
            x: (flick.width - width) / 2
            y: Theme.margin
            width: Math.min(flick.width, Theme.maxContentWidth) - 2 * Theme.margin
            spacing: 10
        }
    }

    PullToRefresh {
        objectName: "tabPullToRefresh"
        flickable: flick
        anchors.top: flick.top
        anchors.horizontalCenter: flick.horizontalCenter
        loading: root.vm.isLoading
        onRefresh: root.vm.refresh()
    }
}
