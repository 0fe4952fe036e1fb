import QtQuick
import QtQuick.Controls
import Kestrine

// One line of Markdown with its inline formatting (emphasis, code spans, links), full width,
// wrapping normally. Links open in the browser.
Label {
    textFormat: Label.MarkdownText
    wrapMode: Label.Wrap
    color: Theme.primaryText
    font.pixelSize: Theme.callout
    onLinkActivated: link => Qt.openUrlExternally(link)

    HoverHandler {
        cursorShape: parent.hoveredLink !== "" ? Qt.PointingHandCursor : Qt.ArrowCursor
    }
}
