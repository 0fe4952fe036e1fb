import QtQuick
import QtQuick.Controls
import QtQuick.Controls.Material.impl as MaterialImpl
import Kestrine

// Pull-to-refresh for a Flickable: dragging its content down past the threshold and letting go
// emits refresh(). The indicator then spins until `loading` has gone back to false, so it stays
// until the load it started has finished. Place it over the flickable, anchored to its top.
Item {
    id: root

    required property Flickable flickable
    // The model's loading flag.
    property bool loading: false
    // A refresh is under way: set when the pull triggers, cleared when the load ends.
    property bool refreshing: false
    readonly property real threshold: 72
    // How far the content is pulled down beyond its top edge.
    readonly property real pull: flickable
                                 ? Math.max(0, flickable.originY - flickable.topMargin - flickable.contentY)
                                 : 0

    signal refresh

    // Called when the user lets go after pulling far enough; also the way to refresh by hand.
    function trigger() {
        refreshing = true;
        refresh();
        // A refresh that did not start a load (nothing to load) has nothing to wait for.
        if (!loading)
            refreshing = false;
    }

    width: 40
    height: threshold
    z: 5
    visible: flickable && flickable.visible && (pull > 0 || refreshing)

    onLoadingChanged: {
        if (!loading)
            refreshing = false;
    }

    Connections {
        target: root.flickable
        function onDraggingChanged() {
            if (!root.flickable.dragging && root.pull >= root.threshold && !root.refreshing)
                root.trigger();
        }
    }

    Rectangle {
        id: disc
        objectName: "refreshIndicator"
        width: 36
        height: 36
        radius: 18
        anchors.horizontalCenter: parent.horizontalCenter
        y: root.refreshing ? 16 : Math.min(root.pull, root.threshold) - height - 4
        color: Theme.dark ? "#2a2a31" : "#ffffff"
        layer.enabled: true
        layer.effect: MaterialImpl.ElevationEffect {
            elevation: 4
        }
        opacity: root.refreshing ? 1 : Math.min(1, root.pull / root.threshold)

        Icon {
            anchors.centerIn: parent
            visible: !root.refreshing
            symbol: "arrow.clockwise"
            size: 18
            color: root.pull >= root.threshold ? Theme.accent : Theme.secondaryText
            rotation: 360 * Math.min(1, root.pull / root.threshold)
        }
        BusyIndicator {
            anchors.centerIn: parent
            width: 28
            height: 28
            visible: root.refreshing
            running: root.refreshing
        }
    }
}
