import QtQuick
import QtQuick.Controls
import QtQuick.Controls.Material
import Kestrine

// The app's one window: a navigation stack whose root is the inbox. It opens at phone size and
// keeps working up to a desktop window; screens centre their reading content on wide windows.
ApplicationWindow {
    id: window
    objectName: "mainWindow"

    width: 390
    height: 844
    minimumWidth: 320
    minimumHeight: 480
    visible: true
    title: "Kestrine"
    color: Theme.background

    Material.accent: Theme.accent
    Material.primary: Theme.accent
    Material.background: Theme.background
    Material.foreground: Theme.primaryText

    // The colour roles follow the Material theme, which follows the system.
    Binding {
        target: Theme
        property: "dark"
        value: window.Material.theme === Material.Dark
    }
    Binding {
        target: LinkPalette
        property: "linkColor"
        value: Theme.accent
    }

    // Goes back one screen, as the back button of the screen on top does.
    function back() {
        if (navigation.depth > 1)
            navigation.pop();
    }

    // One pull request's detail screen on top of the inbox, as an activated notification or
    // `kestrine --open` asks for it.
    function openPullRequest(repo, number) {
        inbox.openPullRequest(repo, number);
    }

    StackView {
        id: navigation
        objectName: "navigation"
        anchors.fill: parent
        initialItem: InboxView {
            id: inbox
        }
    }
}
