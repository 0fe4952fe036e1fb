import QtQuick
import QtQuick.Controls
import Kestrine

// A Markdown body drawn line by line: fenced code, three levels of headings, bullets, text and
// blank lines, each in a fixed style. Only text and bullet lines get inline formatting (emphasis,
// code spans, links); everything else is shown verbatim.
Column {
    id: root

    property string markdown

    spacing: 0

    MarkdownLinesModel {
        id: lines
        markdown: root.markdown
    }

    Repeater {
        model: lines
        delegate: Loader {
            id: line
            required property int kind
            required property string text
            required property int level

            width: root.width
            sourceComponent: {
                switch (kind) {
                case MarkdownLine.Code:
                    return codeLine;
                case MarkdownLine.Heading:
                    return headingLine;
                case MarkdownLine.Bullet:
                    return bulletLine;
                case MarkdownLine.Blank:
                    return blankLine;
                default:
                    return textLine;
                }
            }
        }
    }

    Component {
        id: codeLine
        Rectangle {
            objectName: "markdownCode"
            property string lineText: parent ? parent.text : ""
            implicitHeight: code.implicitHeight + 8
            color: Theme.secondaryBackground
            Text {
                id: code
                x: 4
                y: 4
                width: parent.width - 8
                text: parent.lineText
                textFormat: Text.PlainText
                wrapMode: Text.WrapAnywhere
                color: Theme.primaryText
                font.family: Theme.monospace
                font.pixelSize: Theme.caption
            }
        }
    }

    Component {
        id: headingLine
        Label {
            objectName: "markdownHeading"
            topPadding: 8
            bottomPadding: 2
            text: parent ? parent.text : ""
            textFormat: Text.PlainText
            wrapMode: Text.Wrap
            color: Theme.primaryText
            font.pixelSize: !parent ? Theme.headline
                                    : parent.level === 1 ? Theme.title2
                                    : parent.level === 2 ? Theme.title3 : Theme.headline
            font.weight: parent && parent.level === 3 ? Font.DemiBold : Font.Bold
        }
    }

    Component {
        id: bulletLine
        Row {
            objectName: "markdownBullet"
            property string lineText: parent ? parent.text : ""
            spacing: 6
            topPadding: 2
            bottomPadding: 2
            Label {
                textFormat: Text.PlainText
                text: "•"
                color: Theme.primaryText
                font.pixelSize: Theme.callout
            }
            InlineMarkdown {
                width: parent.width - x
                markdown: parent.lineText
            }
        }
    }

    Component {
        id: textLine
        InlineMarkdown {
            objectName: "markdownText"
            topPadding: 2
            bottomPadding: 2
            markdown: parent ? parent.text : ""
        }
    }

    Component {
        id: blankLine
        Item {
            objectName: "markdownBlank"
            implicitHeight: 4
        }
    }
}
