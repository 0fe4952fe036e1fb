import QtQuick
import QtQuick.Controls.impl as Impl

// A symbol from the icon map, tinted in one colour.
Impl.IconImage {
    id: root

    property string symbol
    property int size: 20

    source: IconMap.source(symbol)
    sourceSize.width: size
    sourceSize.height: size
    width: size
    height: size
    color: Theme.primaryText
    fillMode: Image.PreserveAspectFit
}
