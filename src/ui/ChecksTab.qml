import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// The Actions runs of the head commit, one card each, with their jobs: a failed job offers
// "Re-run" (of its whole run, after a confirmation), a job that has run offers its "Logs". Below
// them, the statuses other CI (Woodpecker, Drone, Jenkins…) reported for the same commit.
TabScroll {
    id: root

    signal rerun(double runID, string runName)
    signal openLogs(double runID, double jobID, string jobName)

    // A card of the tab: its content in a column, padded.
    component CheckCard: Rectangle {
        default property alias content: cardColumn.data

        width: parent ? parent.width : 0
        implicitHeight: cardColumn.implicitHeight + 20
        radius: 8
        color: Theme.secondaryBackground

        ColumnLayout {
            id: cardColumn
            x: 10
            y: 10
            width: parent.width - 20
            spacing: 8
        }
    }

    Label {
        objectName: "noRuns"
        textFormat: Text.PlainText
        visible: root.vm.runsModel.count === 0
        width: parent.width
        text: qsTr("No workflow runs for this head commit.")
        wrapMode: Text.Wrap
        color: Theme.secondaryText
        font.pixelSize: Theme.callout
    }

    Repeater {
        model: root.vm.runsModel
        delegate: CheckCard {
            id: card
            required property double runID
            required property string name
            required property int ciStatus
            required property date createdAt
            required property QtObject jobs

            objectName: "runCard_" + runID

            RowLayout {
                Layout.fillWidth: true
                spacing: 8
                CICircle {
                    objectName: "runStatus"
                    status: card.ciStatus
                }
                Label {
                    objectName: "runName"
                    textFormat: Text.PlainText
                    Layout.fillWidth: true
                    text: card.name
                    elide: Text.ElideRight
                    color: Theme.primaryText
                    font.pixelSize: Theme.subheadline
                    font.weight: Font.DemiBold
                }
                Label {
                    objectName: "runTime"
                    textFormat: Text.PlainText
                    text: RelativeTime.abbreviated(card.createdAt, RelativeTime.now)
                    color: Theme.secondaryText
                    font.pixelSize: Theme.caption2
                }
            }

            Repeater {
                model: card.jobs
                delegate: RowLayout {
                    id: jobRow
                    required property double jobID
                    required property string name
                    required property int ciStatus
                    required property bool failed
                    required property bool hasRun

                    objectName: "jobRow_" + jobID
                    Layout.fillWidth: true
                    spacing: 8

                    CICircle {
                        objectName: "jobStatus"
                        status: jobRow.ciStatus
                    }
                    Label {
                        objectName: "jobName"
                        textFormat: Text.PlainText
                        Layout.fillWidth: true
                        text: jobRow.name
                        elide: Text.ElideRight
                        color: Theme.primaryText
                        font.pixelSize: Theme.caption
                    }
                    SmallButton {
                        objectName: "rerunButton"
                        visible: jobRow.failed
                        text: qsTr("Re-run", "re-run the job's workflow run")
                        onClicked: root.rerun(card.runID, card.name)
                    }
                    SmallButton {
                        objectName: "logsButton"
                        visible: jobRow.hasRun
                        text: qsTr("Logs", "the job's log")
                        onClicked: root.openLogs(card.runID, jobRow.jobID, jobRow.name)
                    }
                }
            }
        }
    }

    CheckCard {
        objectName: "statusesCard"
        visible: root.vm.statusesModel.count > 0

        Label {
            textFormat: Text.PlainText
            Layout.fillWidth: true
            text: qsTr("Commit statuses")
            color: Theme.primaryText
            font.pixelSize: Theme.subheadline
            font.weight: Font.DemiBold
        }

        Repeater {
            model: root.vm.statusesModel
            delegate: RowLayout {
                id: statusRow
                required property int index
                required property string context
                required property string description
                required property int ciStatus
                required property string detailsUrl

                objectName: "statusRow_" + index
                Layout.fillWidth: true
                spacing: 8

                CICircle {
                    objectName: "statusCircle"
                    Layout.alignment: Qt.AlignTop
                    Layout.topMargin: 3
                    status: statusRow.ciStatus
                }
                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 2
                    Label {
                        objectName: "statusContext"
                        textFormat: Text.PlainText
                        Layout.fillWidth: true
                        visible: text !== ""
                        text: statusRow.context
                        // A context is a path ("ci/woodpecker/pr/build"): its end tells
                        // them apart.
                        elide: Text.ElideMiddle
                        color: Theme.primaryText
                        font.pixelSize: Theme.caption
                    }
                    Label {
                        objectName: "statusDescription"
                        textFormat: Text.PlainText
                        Layout.fillWidth: true
                        visible: text !== ""
                        text: statusRow.description
                        wrapMode: Text.Wrap
                        maximumLineCount: 3
                        elide: Text.ElideRight
                        color: Theme.secondaryText
                        font.pixelSize: Theme.caption2
                    }
                }
                SmallButton {
                    objectName: "statusDetailsButton"
                    Layout.alignment: Qt.AlignTop
                    visible: statusRow.detailsUrl !== ""
                    text: qsTr("Details", "opens the commit status's page")
                    onClicked: ExternalLinks.open(statusRow.detailsUrl)
                }
            }
        }
    }
}
