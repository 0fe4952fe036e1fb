import QtQuick
import QtQuick.Controls
import Kestrine

// The raw log of one Actions job, exactly as the server sent it (escape sequences and timestamps
// included), selectable, with a share button for the whole text. The text is laid out in pieces
// of lines, only those on screen, so a log of many megabytes opens at once.
Page {
    id: root
    objectName: "jobLogsView"

    required property var repo
    required property var runID
    required property var jobID
    required property string jobName
    readonly property JobLogModel log: log
    readonly property alias chunks: chunks
    readonly property alias shareSheet: shareSheet

    function share() {
        shareSheet.text = log.text;
        shareSheet.open();
    }

    Component.onCompleted: log.reload()

    background: Rectangle {
        color: Theme.background
    }

    header: NavBar {
        title: root.jobName
        showBack: true
        onBack: root.StackView.view.pop()

        NavButton {
            objectName: "shareButton"
            symbol: "square.and.arrow.up"
            Accessible.name: qsTr("Share")
            // Its length, not a comparison with "": comparing a JavaScript string hashes all of it,
            // some milliseconds for a log of megabytes.
            enabled: root.log.text.length > 0
            onClicked: root.share()
        }
    }

    JobLogModel {
        id: log
        repo: root.repo
        runID: root.runID
        jobID: root.jobID
        jobName: root.jobName
    }

    TextChunksModel {
        id: chunks
        text: log.text
    }

    // Until a long log's pieces are found (on a worker thread) the log is still loading.
    ProgressState {
        objectName: "logProgress"
        anchors.fill: parent
        visible: log.isLoading || chunks.splitting
        text: qsTr("Loading logs…")
    }

    EmptyState {
        objectName: "logErrorState"
        anchors.fill: parent
        visible: !log.isLoading && log.errorMessage !== ""
        title: qsTr("Couldn't load logs")
        symbol: "doc.text"
        description: log.errorMessage
    }

    ListView {
        id: pieces
        objectName: "logText"
        anchors.fill: parent
        visible: !log.isLoading && !chunks.splitting && log.errorMessage === ""
        model: chunks
        topMargin: 12
        bottomMargin: 24
        ScrollIndicator.vertical: ScrollIndicator {}

        // Each piece but the last ends with the line break that separates it from the next; the
        // list's layout stands for that break.
        delegate: TextEdit {
            required property string chunk

            x: 12
            width: ListView.view.width - 24
            text: chunk.endsWith("\n") ? chunk.slice(0, -1) : chunk
            textFormat: TextEdit.PlainText
            readOnly: true
            selectByMouse: true
            wrapMode: TextEdit.Wrap
            color: Theme.primaryText
            selectionColor: Theme.alpha(Theme.accent, 0.35)
            selectedTextColor: Theme.primaryText
            font.family: Theme.monospace
            font.pixelSize: Theme.caption
        }
    }

    ShareSheet {
        id: shareSheet
        objectName: "jobLogShareSheet"
        fileName: root.jobName.replace(/[^A-Za-z0-9._-]+/g, "-") + ".log"
    }
}
