import QtQuick
import QtQuick.Controls
import Kestrine

// One line of Markdown with its inline formatting (emphasis, code spans, links), full width,
// wrapping normally. The rich text is written by InlineMarkdownFormat from what the Markdown
// parser found, never taken from the line itself, so nothing in the line is markup of its own and
// nothing loads. Links to web pages and mail addresses open in the browser; no other link is
// live.
Label {
    // The line as written.
    property string markdown

    text: InlineMarkdownFormat.richText(markdown)
    textFormat: Text.RichText
    wrapMode: Label.Wrap
    color: Theme.primaryText
    font.pixelSize: Theme.callout
    onLinkActivated: link => ExternalLinks.open(link)

    HoverHandler {
        cursorShape: parent.hoveredLink !== "" ? Qt.PointingHandCursor : Qt.ArrowCursor
    }
}
