import QtQuick
import QtQuick.Controls
import Kestrine

// The review verdict as a small capsule: its word in the state's colour on a 15 % tint of it.
Rectangle {
    id: root

    property int state: ReviewState.Unknown
    readonly property string text: SummaryText.reviewBadge(root.state)
    readonly property color tone: {
        switch (root.state) {
        case ReviewState.Approved:
            return Theme.green;
        case ReviewState.ChangesRequested:
            return Theme.red;
        case ReviewState.NeedsReview:
            return Theme.orange;
        default:
            return Theme.grey;
        }
    }

    implicitWidth: label.implicitWidth + 12
    implicitHeight: label.implicitHeight + 4
    radius: height / 2
    color: Theme.alpha(tone, 0.15)

    Label {
        id: label
        textFormat: Text.PlainText
        anchors.centerIn: parent
        text: root.text
        color: root.tone
        font.pixelSize: Theme.caption2
        font.weight: Font.DemiBold
    }
}
