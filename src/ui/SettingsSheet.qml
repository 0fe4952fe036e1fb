import QtQuick
import QtQuick.Controls
import Kestrine

// The settings, presented modally over the inbox: a stack of its own (settings, then monitored
// repositories or logs). Every presentation starts a fresh settings screen, so its copies of the
// values are taken from the store each time it opens.
Sheet {
    id: root

    showBar: false
    readonly property alias stack: stack
    readonly property SettingsView settingsView: stack.depth > 0 ? stack.get(0) : null

    // Back from the logs or the repository list to the settings.
    function back() {
        if (stack.depth > 1)
            stack.pop();
    }

    onAboutToShow: {
        stack.clear(StackView.Immediate);
        stack.push(settingsScreen, {}, StackView.Immediate);
    }

    StackView {
        id: stack
        objectName: "settingsStack"
        anchors.fill: parent
    }

    Component {
        id: settingsScreen
        SettingsView {
            onDismiss: root.close()
        }
    }
}
