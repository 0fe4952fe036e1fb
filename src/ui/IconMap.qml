pragma Singleton
import QtQuick

// The one map from symbol names, as screens name their icons, to the SVG files shipped with the
// app. Screens never name a file: the art can change here without touching them.
QtObject {
    readonly property var files: ({
        "arrow.clockwise": "arrow-clockwise.svg",
        "arrow.triangle.merge": "arrow-triangle-merge.svg",
        "arrow.up.right": "arrow-up-right.svg",
        "bubble.left.and.bubble.right": "bubble-left-and-bubble-right.svg",
        "checkmark": "checkmark.svg",
        "checkmark.bubble": "checkmark-bubble.svg",
        "checkmark.circle": "checkmark-circle.svg",
        "checkmark.circle.fill": "checkmark-circle-fill.svg",
        "chevron.left": "chevron-left.svg",
        "chevron.right": "chevron-right.svg",
        "doc.on.doc": "doc-on-doc.svg",
        "doc.plaintext": "doc-plaintext.svg",
        "doc.text": "doc-text.svg",
        "exclamationmark.triangle": "exclamationmark-triangle.svg",
        "gearshape": "gearshape.svg",
        "hourglass": "hourglass.svg",
        "key": "key.svg",
        "lock": "lock.svg",
        "magnifyingglass": "magnifyingglass.svg",
        "questionmark.circle": "questionmark-circle.svg",
        "square.and.arrow.down": "square-and-arrow-down.svg",
        "square.and.arrow.up": "square-and-arrow-up.svg",
        "tray": "tray.svg",
        "xmark.circle.fill": "xmark-circle-fill.svg"
    })

    // The file of a symbol; an empty URL for a name the map does not know.
    function source(name: string): url {
        const file = files[name];
        return file ? Qt.resolvedUrl("icons/" + file) : "";
    }
}
