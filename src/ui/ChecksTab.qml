import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// The Actions runs of the head commit, one card each, with their jobs: a failed job offers
// "Re-run" (of its whole run, after a confirmation), a job that has run offers its "Logs".
TabScroll {
    id: root

    readonly property var runs: vm.runs || []
    readonly property var jobs: vm.jobs

    signal rerun(var run)
    signal openLogs(var run, var job)

    function runName(run) {
        return run.name !== undefined ? run.name : "workflow";
    }

    Label {
        objectName: "noRuns"
        textFormat: Text.PlainText
        visible: root.runs.length === 0
        width: parent.width
        text: "No workflow runs for this head commit."
        wrapMode: Text.Wrap
        color: Theme.secondaryText
        font.pixelSize: Theme.callout
    }

    Repeater {
        model: root.runs
        delegate: Rectangle {
            id: card
            required property var modelData
            readonly property var runJobs: root.jobs[String(modelData.id)] || []

            objectName: "runCard_" + modelData.id
            width: parent.width
            implicitHeight: cardColumn.implicitHeight + 20
            radius: 8
            color: Theme.secondaryBackground

            ColumnLayout {
                id: cardColumn
                x: 10
                y: 10
                width: parent.width - 20
                spacing: 8

                RowLayout {
                    Layout.fillWidth: true
                    spacing: 8
                    CICircle {
                        objectName: "runStatus"
                        status: SummaryRules.runStatus(card.modelData)
                    }
                    Label {
                        objectName: "runName"
                        textFormat: Text.PlainText
                        Layout.fillWidth: true
                        text: root.runName(card.modelData)
                        elide: Text.ElideRight
                        color: Theme.primaryText
                        font.pixelSize: Theme.subheadline
                        font.weight: Font.DemiBold
                    }
                    Label {
                        textFormat: Text.PlainText
                        text: card.modelData.created_at !== undefined
                              ? RelativeTime.abbreviated(card.modelData.created_at, RelativeTime.now)
                              : ""
                        color: Theme.secondaryText
                        font.pixelSize: Theme.caption2
                    }
                }

                Repeater {
                    model: card.runJobs
                    delegate: RowLayout {
                        id: jobRow
                        required property var modelData

                        objectName: "jobRow_" + modelData.id
                        Layout.fillWidth: true
                        spacing: 8

                        CICircle {
                            objectName: "jobStatus"
                            status: SummaryRules.jobStatus(jobRow.modelData)
                        }
                        Label {
                            objectName: "jobName"
                            textFormat: Text.PlainText
                            Layout.fillWidth: true
                            text: jobRow.modelData.name
                            elide: Text.ElideRight
                            color: Theme.primaryText
                            font.pixelSize: Theme.caption
                        }
                        SmallButton {
                            objectName: "rerunButton"
                            visible: SummaryRules.jobFailed(jobRow.modelData)
                            text: "Re-run"
                            onClicked: root.rerun(card.modelData)
                        }
                        SmallButton {
                            objectName: "logsButton"
                            visible: SummaryRules.jobHasRun(jobRow.modelData)
                            text: "Logs"
                            onClicked: root.openLogs(card.modelData, jobRow.modelData)
                        }
                    }
                }
            }
        }
    }
}
