import QtQuick
import QtQuick.Controls

// An icon button of a screen's top bar; `symbol` names the icon (see IconMap).
ToolButton {
    id: root

    property string symbol
    property color tint: Theme.accent

    icon.source: IconMap.source(symbol)
    icon.width: 22
    icon.height: 22
    icon.color: enabled ? tint : Theme.grey
    opacity: enabled ? 1 : 0.45
    display: AbstractButton.IconOnly
}
