import QtQuick
import QtQuick.Controls
import Kestrine

// A search field: a magnifying glass, what is typed, and an × that clears it while there is
// something to clear. `displayText` holds the text as it is being typed, an input method's
// unfinished word included, so a list filtered by it follows every key.
TextField {
    id: root

    placeholderText: qsTr("Search")
    leftPadding: 38
    rightPadding: clearButton.visible ? clearButton.width + 4 : 12
    topPadding: 9
    bottomPadding: 9
    font.pixelSize: Theme.body
    color: Theme.primaryText
    placeholderTextColor: Theme.secondaryText
    selectByMouse: true
    // Repository names and numbers are not words a keyboard should correct or capitalise.
    inputMethodHints: Qt.ImhNoAutoUppercase | Qt.ImhNoPredictiveText
    EnterKey.type: Qt.EnterKeySearch
    Accessible.name: placeholderText
    Accessible.searchEdit: true

    // The results are already shown: the search key only puts the keyboard away.
    onAccepted: Qt.inputMethod.hide()
    // Escape empties a field that holds something; an empty one lets the key go on.
    Keys.onEscapePressed: event => {
        if (root.displayText === "") {
            event.accepted = false;
            return;
        }
        root.clear();
    }

    background: Rectangle {
        implicitWidth: 200
        implicitHeight: 40
        radius: 10
        color: Theme.secondaryBackground
        border.width: root.activeFocus ? 1.5 : 0
        border.color: Theme.accent
    }

    Icon {
        anchors.left: parent.left
        anchors.leftMargin: 11
        anchors.verticalCenter: parent.verticalCenter
        symbol: "magnifyingglass"
        size: 18
        color: Theme.secondaryText
    }

    ToolButton {
        id: clearButton
        objectName: "searchClearButton"
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        width: 36
        height: 36
        padding: 0
        topInset: 0
        bottomInset: 0
        visible: root.displayText !== ""
        // Clearing leaves the keyboard as it was: shown while typing, hidden otherwise.
        focusPolicy: Qt.NoFocus
        icon.source: IconMap.source("xmark.circle.fill")
        icon.width: 18
        icon.height: 18
        icon.color: Theme.grey
        display: AbstractButton.IconOnly
        Accessible.name: qsTr("Clear search")
        onClicked: root.clear()
    }
}
