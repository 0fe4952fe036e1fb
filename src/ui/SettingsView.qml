import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// The settings screen. It edits copies of the app's settings, taken when the screen is created,
// and writes them back only on "Save"; "Cancel" drops every edit. "Test connection" tries the
// values as typed without saving them.
Page {
    id: root
    objectName: "settingsView"

    // The copies being edited.
    property string instanceURL: SettingsStore.instanceURL
    property string token: SettingsStore.token
    property int mergeGateMode: SettingsStore.mergeGateMode
    property bool deleteBranchAfterMerge: SettingsStore.deleteBranchAfterMerge
    property var monitoredRepos: SettingsStore.monitoredRepos
    property bool notificationsEnabled: SettingsStore.notificationsEnabled

    readonly property bool canSave: instanceURL.trim() !== ""
    readonly property ConnectionTester tester: tester
    readonly property alias logoutConfirm: logoutConfirm

    signal dismiss

    // Take the copies once: later changes of the store must not overwrite what is being edited.
    Component.onCompleted: {
        instanceURL = SettingsStore.instanceURL;
        token = SettingsStore.token;
        mergeGateMode = SettingsStore.mergeGateMode;
        deleteBranchAfterMerge = SettingsStore.deleteBranchAfterMerge;
        monitoredRepos = SettingsStore.monitoredRepos.slice();
        notificationsEnabled = SettingsStore.notificationsEnabled;
    }

    function save() {
        if (!canSave)
            return;
        // In this order; the store persists each value as it is set.
        SettingsStore.instanceURL = instanceURL.trim();
        SettingsStore.token = token;
        SettingsStore.mergeGateMode = mergeGateMode;
        SettingsStore.deleteBranchAfterMerge = deleteBranchAfterMerge;
        SettingsStore.monitoredRepos = monitoredRepos;
        SettingsStore.notificationsEnabled = notificationsEnabled;
        dismiss();
    }

    function cancel() {
        dismiss();
    }

    function testConnection() {
        tester.test(instanceURL, token);
    }

    function logout() {
        SettingsStore.logout();
        tester.clearResult();
        dismiss();
    }

    background: Rectangle {
        color: Theme.groupedBackground
    }

    header: NavBar {
        title: qsTr("Settings")
        color: Theme.groupedBackground
        leading: TextNavButton {
            objectName: "cancelButton"
            text: qsTr("Cancel")
            onClicked: root.cancel()
        }

        TextNavButton {
            objectName: "saveButton"
            text: qsTr("Save")
            prominent: true
            enabled: root.canSave
            onClicked: root.save()
        }
    }

    ConnectionTester {
        id: tester
    }

    Flickable {
        id: scroll
        anchors.fill: parent
        contentWidth: width
        contentHeight: form.implicitHeight + 48
        ScrollIndicator.vertical: ScrollIndicator {}

        ColumnLayout {
            id: form
            x: (scroll.width - width) / 2
            y: 20
            width: Math.min(scroll.width - 32, Theme.maxContentWidth)
            spacing: 28

            FormSection {
                Layout.fillWidth: true
                header: qsTr("Server")

                FormRow {
                    ColumnLayout {
                        Layout.fillWidth: true
                        spacing: 2
                        Label {
                            textFormat: Text.PlainText
                            text: qsTr("Instance URL")
                            color: Theme.secondaryText
                            font.pixelSize: Theme.caption
                        }
                        TextField {
                            id: urlField
                            objectName: "instanceURLField"
                            Layout.fillWidth: true
                            text: root.instanceURL
                            placeholderText: "https://gitea.example.com"
                            inputMethodHints: Qt.ImhUrlCharactersOnly | Qt.ImhNoAutoUppercase
                                              | Qt.ImhNoPredictiveText
                            font.pixelSize: Theme.body
                            onTextEdited: root.instanceURL = text
                            // Show the start of a long address, not its end.
                            Component.onCompleted: cursorPosition = 0
                        }
                    }
                }
                FormRow {
                    ColumnLayout {
                        Layout.fillWidth: true
                        spacing: 2
                        Label {
                            textFormat: Text.PlainText
                            text: qsTr("Personal access token")
                            color: Theme.secondaryText
                            font.pixelSize: Theme.caption
                        }
                        TextField {
                            id: tokenField
                            objectName: "tokenField"
                            Layout.fillWidth: true
                            text: root.token
                            echoMode: TextInput.Password
                            placeholderText: qsTr("Personal access token")
                            inputMethodHints: Qt.ImhSensitiveData | Qt.ImhNoAutoUppercase
                                              | Qt.ImhNoPredictiveText
                            font.pixelSize: Theme.body
                            onTextEdited: root.token = text
                            Component.onCompleted: cursorPosition = 0
                        }
                    }
                }
                FormRow {
                    objectName: "testConnectionRow"
                    clickable: !tester.testing
                    onClicked: root.testConnection()

                    Label {
                        objectName: "testConnectionButton"
                        textFormat: Text.PlainText
                        Layout.fillWidth: true
                        text: tester.testing ? qsTr("Testing…") : qsTr("Test connection")
                        color: tester.testing ? Theme.grey : Theme.accent
                        font.pixelSize: Theme.body
                    }
                    BusyIndicator {
                        Layout.preferredWidth: 24
                        Layout.preferredHeight: 24
                        visible: tester.testing
                        running: tester.testing
                    }
                }
                FormRow {
                    objectName: "testResultRow"
                    visible: tester.hasResult
                    spacing: 8

                    Icon {
                        symbol: tester.succeeded ? "checkmark.circle.fill" : "xmark.circle.fill"
                        size: 18
                        color: tester.succeeded ? Theme.green : Theme.red
                    }
                    Label {
                        objectName: "testResultText"
                        textFormat: Text.PlainText
                        Layout.fillWidth: true
                        text: tester.succeeded ? qsTr("Connected as %1").arg(Bidi.isolate(tester.resultText))
                                                : tester.resultText
                        color: tester.succeeded ? Theme.green : Theme.red
                        font.pixelSize: Theme.callout
                        wrapMode: Text.Wrap
                    }
                }
            }

            FormSection {
                Layout.fillWidth: true
                header: qsTr("Merge gating")

                FormRow {
                    Label {
                        textFormat: Text.PlainText
                        Layout.fillWidth: true
                        text: qsTr("Merge behavior")
                        color: Theme.secondaryText
                        font.pixelSize: Theme.footnote
                    }
                }
                FormCheckRow {
                    objectName: "warnModeRow"
                    text: SettingsStore.labelOf(SettingsStore.Warn)
                    checked: root.mergeGateMode === SettingsStore.Warn
                    onClicked: root.mergeGateMode = SettingsStore.Warn
                }
                FormCheckRow {
                    objectName: "blockModeRow"
                    text: SettingsStore.labelOf(SettingsStore.Block)
                    checked: root.mergeGateMode === SettingsStore.Block
                    onClicked: root.mergeGateMode = SettingsStore.Block
                }
                FormRow {
                    Label {
                        textFormat: Text.PlainText
                        Layout.fillWidth: true
                        text: qsTr("Warn mode shows CI status and allows merging a red PR after confirmation. Block mode disables merge while any check is failing.")
                        wrapMode: Text.Wrap
                        color: Theme.secondaryText
                        font.pixelSize: Theme.caption
                    }
                }
                FormSwitchRow {
                    objectName: "deleteBranchRow"
                    text: qsTr("Delete branch after merge")
                    checked: root.deleteBranchAfterMerge
                    onToggled: on => root.deleteBranchAfterMerge = on
                }
            }

            FormSection {
                Layout.fillWidth: true
                header: qsTr("Inbox")
                footer: qsTr("Limit the landing page to specific repos to speed it up. Leave empty to monitor all accessible repos.")

                FormLinkRow {
                    objectName: "monitoredReposLink"
                    text: qsTr("Monitored repos")
                    onClicked: root.StackView.view.push(monitoredReposScreen)
                }
            }

            FormSection {
                Layout.fillWidth: true
                header: qsTr("Notifications", "section heading")
                footer: qsTr("Check periodically for new PRs and CI status changes, then send a local notification. Best-effort: iOS schedules this opportunistically (~15 min) and only when the app was used recently.")

                FormSwitchRow {
                    objectName: "notificationsRow"
                    text: qsTr("Notifications", "switch")
                    checked: root.notificationsEnabled
                    onToggled: on => root.notificationsEnabled = on
                }
            }

            FormSection {
                Layout.fillWidth: true
                header: qsTr("Diagnostics")

                FormLinkRow {
                    objectName: "viewLogsLink"
                    text: qsTr("View logs")
                    onClicked: root.StackView.view.push(logsScreen)
                }
            }

            FormSection {
                Layout.fillWidth: true

                FormRow {
                    objectName: "logoutRow"
                    clickable: true
                    enabled: root.token !== ""
                    onClicked: logoutConfirm.open()

                    Label {
                        objectName: "logoutButton"
                        textFormat: Text.PlainText
                        Layout.fillWidth: true
                        horizontalAlignment: Text.AlignHCenter
                        text: qsTr("Log out")
                        color: parent.enabled ? Theme.red : Theme.alpha(Theme.red, 0.4)
                        font.pixelSize: Theme.body
                    }
                }
            }
        }
    }

    AppDialog {
        id: logoutConfirm
        objectName: "logoutConfirm"
        title: qsTr("Log out?")
        acceptText: qsTr("Log out")
        rejectText: qsTr("Cancel")
        destructive: true
        onAccepted: root.logout()
    }

    Component {
        id: monitoredReposScreen
        MonitoredReposView {
            settings: root
        }
    }

    Component {
        id: logsScreen
        LogsView {}
    }
}
