import QtQuick
import QtQuick.Controls
import QtQuick.Controls.Material.impl as MaterialImpl
import QtQuick.Layouts
import Kestrine

// The detail screen's floating tab bar: one button per tab, and a horizontal swipe over the bar
// (40 points or more past a 20-point start) that moves one tab left or right.
Rectangle {
    id: root

    // The tabs in order; also the order of swiping. `name` is the English title, which names the
    // tab's button whatever the language.
    readonly property var tabs: [
        {
            "name": "Overview",
            "title": qsTr("Overview", "tab"),
            "symbol": "doc.text"
        },
        {
            "name": "Conversation",
            "title": qsTr("Conversation", "tab"),
            "symbol": "bubble.left.and.bubble.right"
        },
        {
            "name": "Files",
            "title": qsTr("Files", "tab"),
            "symbol": "doc.plaintext"
        },
        {
            "name": "Checks",
            "title": qsTr("Checks", "tab"),
            "symbol": "checkmark.circle"
        }
    ]
    property int currentIndex: 0
    // The horizontal distance of the last swipe, for whoever wants to know.
    property real lastSwipe: 0

    signal tabSelected(int index)

    // Where a swipe of `dx` points (negative = to the left) ends up from tab `index`; -1 for
    // nowhere. Only a swipe beyond 40 points counts: exactly 40 does nothing.
    function swipeTarget(index, dx) {
        if (dx < -40 && index <= 2)
            return index + 1;
        if (dx > 40 && index >= 1)
            return index - 1;
        return -1;
    }

    function finishSwipe(dx) {
        lastSwipe = dx;
        const target = swipeTarget(currentIndex, dx);
        if (target >= 0)
            tabSelected(target);
    }

    implicitHeight: row.implicitHeight + 12
    radius: 18
    color: Theme.barBackground
    border.color: Theme.dark ? "#33ffffff" : "#14000000"
    layer.enabled: true
    layer.effect: MaterialImpl.ElevationEffect {
        elevation: 6
    }

    RowLayout {
        id: row
        anchors.fill: parent
        anchors.margins: 6
        spacing: 4

        Repeater {
            model: root.tabs
            delegate: AbstractButton {
                id: tab
                required property int index
                required property var modelData
                readonly property bool selected: index === root.currentIndex

                objectName: "tab_" + modelData.name
                Layout.fillWidth: true
                Layout.preferredWidth: 1
                implicitHeight: content.implicitHeight + 12
                text: modelData.title
                onClicked: root.tabSelected(index)

                background: Rectangle {
                    radius: 12
                    color: tab.selected ? Theme.alpha(Theme.accent, Theme.dark ? 0.22 : 0.12)
                                        : tab.down ? Theme.alpha(Theme.secondaryText, 0.12) : "transparent"
                    Behavior on color {
                        ColorAnimation {
                            duration: 150
                        }
                    }
                }
                contentItem: Item {
                    implicitHeight: content.implicitHeight
                    ColumnLayout {
                        id: content
                        anchors.centerIn: parent
                        width: parent.width
                        spacing: 2
                        Icon {
                            Layout.alignment: Qt.AlignHCenter
                            symbol: tab.modelData.symbol
                            size: 20
                            color: tab.selected ? Theme.accent : Theme.secondaryText
                        }
                        Label {
                            textFormat: Text.PlainText
                            Layout.fillWidth: true
                            horizontalAlignment: Text.AlignHCenter
                            text: tab.modelData.title
                            elide: Text.ElideRight
                            color: tab.selected ? Theme.accent : Theme.secondaryText
                            font.pixelSize: Theme.caption2
                            font.weight: Font.Medium
                        }
                    }
                }
            }
        }
    }

    // Recognised together with the buttons: a tap still selects, a drag past 20 points takes over
    // from the button it started on and acts when it ends.
    DragHandler {
        id: swipe
        target: null
        yAxis.enabled: false
        dragThreshold: 20
        grabPermissions: PointerHandler.CanTakeOverFromAnything
        // Measured from the press, in scene coordinates, up to the last position seen while the
        // drag was active (the point may be gone by the time the handler deactivates).
        property real startX: 0
        property real lastX: 0
        onCentroidChanged: {
            if (active)
                lastX = centroid.scenePosition.x;
        }
        onActiveChanged: {
            if (active) {
                startX = centroid.scenePressPosition.x;
                lastX = centroid.scenePosition.x;
            } else {
                root.finishSwipe(lastX - startX);
            }
        }
    }
}
