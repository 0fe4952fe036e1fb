import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// Merges the pull request: the method to merge by, the CI state with the merge gate's note, and
// "Merge", which is disabled exactly when CI is red and the settings block merging. While a merge
// is under way the sheet shows a progress indicator instead of its buttons and cannot be
// dismissed; a failed merge leaves it open (the detail screen shows the error above it).
Sheet {
    id: root

    required property PRDetailViewModel vm
    // The chosen method's API value.
    property string method: vm.defaultMergeMethod
    property bool isMerging: false
    readonly property int ciStatus: vm.ciStatus

    signal succeeded

    function merge() {
        if (isMerging)
            return;
        isMerging = true;
        vm.startMerge(method);
    }

    title: qsTr("Merge", "sheet title")
    backgroundColor: Theme.groupedBackground
    dismissable: !isMerging
    height: parent ? Math.min(parent.height - 24, 470) : 470

    // Built afresh for every presentation: the first method, nothing under way.
    onAboutToShow: {
        method = vm.defaultMergeMethod;
        isMerging = false;
    }

    Connections {
        target: root.vm
        function onMergeFinished(merged) {
            if (!root.isMerging)
                return;
            root.isMerging = false;
            if (merged) {
                root.close();
                root.succeeded();
            }
        }
    }

    leading: TextNavButton {
        objectName: "mergeCancelButton"
        visible: !root.isMerging
        text: qsTr("Cancel")
        onClicked: root.close()
    }
    trailing: [
        Item {
            objectName: "mergeProgress"
            visible: root.isMerging
            width: 56
            height: 44
            BusyIndicator {
                anchors.centerIn: parent
                width: 32
                height: 32
                running: root.isMerging
            }
        },
        TextNavButton {
            objectName: "mergeConfirmButton"
            visible: !root.isMerging
            text: qsTr("Merge", "button: merge now")
            prominent: true
            enabled: root.vm.mergeAllowed
            onClicked: root.merge()
        }
    ]

    Flickable {
        anchors.fill: parent
        contentWidth: width
        contentHeight: column.implicitHeight + 40
        clip: true

        ColumnLayout {
            id: column
            x: Theme.margin
            y: 20
            width: parent.width - 2 * Theme.margin
            spacing: 28

            FormSection {
                Layout.fillWidth: true
                header: qsTr("Merge method")

                Repeater {
                    model: root.vm.mergeMethods
                    delegate: FormCheckRow {
                        required property var modelData
                        objectName: "method_" + modelData.value
                        text: modelData.label
                        checked: root.method === modelData.value
                        onClicked: root.method = modelData.value
                    }
                }
            }

            FormSection {
                Layout.fillWidth: true

                FormRow {
                    objectName: "ciRow"
                    Label {
                        textFormat: Text.PlainText
                        Layout.fillWidth: true
                        text: qsTr("CI")
                        color: Theme.primaryText
                        font.pixelSize: Theme.body
                    }
                    Icon {
                        objectName: "ciIcon"
                        size: 18
                        symbol: {
                            switch (root.ciStatus) {
                            case CIStatus.Running:
                                return "hourglass";
                            case CIStatus.Success:
                                return "checkmark.circle.fill";
                            case CIStatus.Failure:
                                return "xmark.circle.fill";
                            default:
                                return "questionmark.circle";
                            }
                        }
                        color: ciText.color
                    }
                    Label {
                        id: ciText
                        objectName: "ciText"
                        textFormat: Text.PlainText
                        text: {
                            switch (root.ciStatus) {
                            case CIStatus.Running:
                                return qsTr("Running", "CI state");
                            case CIStatus.Success:
                                return qsTr("Passing", "CI state");
                            case CIStatus.Failure:
                                return qsTr("Failing", "CI state");
                            default:
                                return qsTr("Unknown", "CI state");
                            }
                        }
                        color: {
                            switch (root.ciStatus) {
                            case CIStatus.Running:
                                return Theme.orange;
                            case CIStatus.Success:
                                return Theme.green;
                            case CIStatus.Failure:
                                return Theme.red;
                            default:
                                return Theme.secondaryText;
                            }
                        }
                        font.pixelSize: Theme.body
                    }
                }
                FormRow {
                    objectName: "gateRow"
                    visible: root.ciStatus === CIStatus.Failure && root.vm.mergeGate.hasNote
                    spacing: 8
                    Icon {
                        objectName: "gateIcon"
                        size: 16
                        symbol: root.vm.mergeGate.noteIcon
                        color: gateText.color
                    }
                    Label {
                        id: gateText
                        objectName: "gateText"
                        textFormat: Text.PlainText
                        Layout.fillWidth: true
                        text: root.vm.mergeGate.noteText
                        wrapMode: Text.Wrap
                        color: root.vm.mergeGate.noteTone === MergeGate.Warning ? Theme.orange
                                                                                  : Theme.secondaryText
                        font.pixelSize: Theme.caption
                    }
                }
            }
        }
    }
}
