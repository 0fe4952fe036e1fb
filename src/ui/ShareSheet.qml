import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import QtQuick.Layouts
import Kestrine

// Shares one text. Where the system has no share sheet of its own this is it: a sheet that
// copies the text to the clipboard or saves it to a file the user picks. The text is shared
// exactly as given; setting `text` while the sheet is open changes nothing of what it offers.
Sheet {
    id: root

    // What to share; read when the sheet opens.
    property string text
    // The file name the save dialog suggests.
    property string fileName: "kestrine.txt"
    // The text as it was when the sheet opened.
    property string sharedText
    // What the last action did, shown at the bottom of the sheet.
    property string status
    property bool statusIsError: false
    // The dialog "Save to file…" opens.
    readonly property alias saveDialog: saveDialog

    function copy() {
        ShareService.copyText(sharedText);
        status = qsTr("Copied to the clipboard.");
        statusIsError = false;
    }

    function saveTo(fileUrl) {
        const error = ShareService.saveText(sharedText, fileUrl);
        status = error === "" ? qsTr("Saved.") : error;
        statusIsError = error !== "";
    }

    title: qsTr("Share")
    backgroundColor: Theme.groupedBackground
    height: parent ? Math.min(parent.height - 24, 520) : 520

    onAboutToShow: {
        sharedText = text;
        status = "";
        statusIsError = false;
    }

    trailing: TextNavButton {
        objectName: "shareDoneButton"
        text: qsTr("Done")
        prominent: true
        onClicked: root.close()
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: Theme.margin
        spacing: 14

        Label {
            objectName: "shareSummary"
            textFormat: Text.PlainText
            Layout.fillWidth: true
            text: {
                const lines = root.sharedText === "" ? 0 : root.sharedText.split("\n").length;
                const kilobytes = Math.max(1, Math.round(root.sharedText.length / 1024));
                return qsTr("%n line(s) · %1 KB", "", lines).arg(kilobytes);
            }
            color: Theme.secondaryText
            font.pixelSize: Theme.footnote
        }

        Rectangle {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.minimumHeight: 60
            radius: 10
            color: Theme.cellBackground
            clip: true

            Label {
                textFormat: Text.PlainText
                anchors.fill: parent
                anchors.margins: 10
                // A preview: the first lines are enough, and keep this quick for a huge text.
                text: root.sharedText.substring(0, 1500)
                wrapMode: Text.Wrap
                elide: Text.ElideRight
                color: Theme.secondaryText
                font.family: Theme.monospace
                font.pixelSize: Theme.caption2
            }
        }

        FormSection {
            Layout.fillWidth: true

            FormRow {
                objectName: "copyRow"
                clickable: true
                onClicked: root.copy()
                Icon {
                    symbol: "doc.on.doc"
                    color: Theme.accent
                }
                Label {
                    textFormat: Text.PlainText
                    Layout.fillWidth: true
                    text: qsTr("Copy to clipboard")
                    color: Theme.primaryText
                    font.pixelSize: Theme.body
                }
            }
            FormRow {
                objectName: "saveRow"
                clickable: true
                onClicked: saveDialog.open()
                Icon {
                    symbol: "square.and.arrow.down"
                    color: Theme.accent
                }
                Label {
                    textFormat: Text.PlainText
                    Layout.fillWidth: true
                    text: qsTr("Save to file…")
                    color: Theme.primaryText
                    font.pixelSize: Theme.body
                }
            }
        }

        Label {
            objectName: "shareStatus"
            textFormat: Text.PlainText
            Layout.fillWidth: true
            visible: root.status !== ""
            text: root.status
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
            color: root.statusIsError ? Theme.red : Theme.green
            font.pixelSize: Theme.footnote
        }
    }

    FileDialog {
        id: saveDialog
        title: qsTr("Save to file")
        fileMode: FileDialog.SaveFile
        currentFolder: ShareService.defaultFolder()
        selectedFile: ShareService.defaultFolder() + "/" + root.fileName
        nameFilters: [qsTr("Text files (*.txt)"), qsTr("All files (*)")]
        onAccepted: root.saveTo(selectedFile)
    }
}
