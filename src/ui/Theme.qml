pragma Singleton
import QtQuick

// Colour roles and text styles of every screen, for the light and the dark theme. The window sets
// `dark` from the Material theme, which follows the system unless the user's environment says
// otherwise (QT_QUICK_CONTROLS_MATERIAL_THEME).
QtObject {
    property bool dark: false

    // Colours by role.
    readonly property color accent: dark ? "#9fa8da" : "#3949ab"
    readonly property color onAccent: dark ? "#1a1c2e" : "#ffffff"
    readonly property color primaryText: dark ? "#ececf0" : "#1b1b1f"
    readonly property color secondaryText: dark ? "#a3a3ad" : "#66666e"
    readonly property color background: dark ? "#121214" : "#ffffff"
    readonly property color groupedBackground: dark ? "#17171b" : "#f2f2f7"
    readonly property color secondaryBackground: dark ? "#1f1f24" : "#f2f2f7"
    readonly property color cellBackground: dark ? "#25252b" : "#ffffff"
    readonly property color separator: dark ? "#2f2f36" : "#dcdce2"
    readonly property color barBackground: dark ? "#ee1c1c21" : "#f2ffffff"
    readonly property color green: dark ? "#5fd068" : "#1f8a34"
    readonly property color red: dark ? "#ff6b61" : "#d7261e"
    readonly property color orange: dark ? "#ffab40" : "#e07000"
    readonly property color grey: dark ? "#8e8e96" : "#8e8e93"

    // Text sizes, in the steps of a phone's type scale.
    readonly property int title1: 26
    readonly property int title2: 22
    readonly property int title3: 20
    readonly property int headline: 17
    readonly property int body: 16
    readonly property int callout: 15
    readonly property int subheadline: 14
    readonly property int footnote: 13
    readonly property int caption: 12
    readonly property int caption2: 11

    readonly property string monospace: "DejaVu Sans Mono"

    // Wide windows keep reading content at a comfortable measure, centred.
    readonly property int maxContentWidth: 760
    // Side margin of list rows and text.
    readonly property int margin: 16

    // `c` at opacity `a`.
    function alpha(c: color, a: real): color {
        return Qt.rgba(c.r, c.g, c.b, a);
    }
}
