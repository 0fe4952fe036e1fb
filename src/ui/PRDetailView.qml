import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Kestrine

// One pull request: a header, four tabs (overview, conversation, files, checks) under a floating
// tab bar, and the actions on it — merge, comment, approve, request changes, close, re-run. All
// data and actions go through the screen's own PRDetailViewModel; the screen holds only what is
// presented.
Page {
    id: root
    objectName: "prDetailView"

    required property var repo
    required property var prNumber

    // The visible tab; -1 means none chosen yet, which counts as the overview everywhere.
    property int selectedTab: -1
    readonly property int currentTab: selectedTab < 0 ? 0 : selectedTab
    // The comment sheet opens to request changes instead of commenting.
    property bool requestChangesMode: false
    // The id of the run whose re-run awaits confirmation; null when no confirmation is shown.
    property var showRerunConfirm: null
    // That run's name, as its card shows it.
    property string rerunName: ""
    property bool showMergeSuccess: false
    // The header shows the whole title, not only its first lines.
    property bool titleExpanded: false

    readonly property PRDetailViewModel vm: detailModel
    readonly property bool prIsOpen: vm.hasPr && String(vm.pr.state).toLowerCase() === "open"
    // Disabled exactly when CI is red and the settings block merging then.
    readonly property bool mergeEnabled: vm.mergeAllowed
    // How long the "Merged" confirmation stays before the screen closes, in milliseconds.
    property int mergedDisplayTime: 1200

    readonly property alias reviewMenu: reviewMenu
    readonly property alias mergeSheet: mergeSheet
    readonly property alias commentSheet: commentSheet
    readonly property alias closeConfirm: closeConfirm
    readonly property alias rerunConfirm: rerunConfirm
    readonly property alias errorAlert: errorAlert
    readonly property alias busyOverlay: busyOverlay
    readonly property alias mergedOverlay: mergedOverlay
    readonly property alias tabBar: tabBar
    readonly property alias toast: toast

    function selectTab(index) {
        selectedTab = index;
    }

    function openMergeSheet() {
        mergeSheet.open();
    }

    function openCommentSheet(requestChanges) {
        requestChangesMode = requestChanges;
        commentSheet.open();
    }

    function approve() {
        vm.startSubmitReview("approved", null);
    }

    function askToRerun(runID, runName) {
        showRerunConfirm = runID;
        rerunName = runName;
        rerunConfirm.open();
    }

    // The merge sheet reported a merge: mark the inbox for a reload, show "Merged", then go back.
    function mergeSucceeded() {
        SettingsStore.inboxNeedsRefresh = true;
        showMergeSuccess = true;
        dismissTimer.start();
    }

    // The pull request's page in the browser, where the rest of the team reviews it. The view
    // model gives an address only when it is an http or https one: the server's text never makes
    // the desktop open a file or start a program.
    function openWebPage() {
        if (vm.webUrl !== "")
            ExternalLinks.open(vm.webUrl);
    }

    // The same address on the clipboard, to paste into a chat or a ticket.
    function copyWebLink() {
        if (vm.webUrl === "")
            return;
        ShareService.copyText(vm.webUrl);
        toast.show(qsTr("Link copied"));
    }

    function dismiss() {
        const stack = root.StackView.view;
        if (stack && stack.currentItem === root)
            stack.pop();
    }

    function openFile(filename) {
        root.StackView.view.push(diffScreen, {
            "repo": root.repo,
            "prNumber": root.prNumber,
            "filename": filename
        });
    }

    function openLogs(runID, jobID, jobName) {
        root.StackView.view.push(jobLogScreen, {
            "repo": root.repo,
            "runID": runID,
            "jobID": jobID,
            "jobName": jobName
        });
    }

    // Every appearance loads, also coming back from a diff or a job log.
    StackView.onActivated: vm.refresh()

    background: Rectangle {
        color: Theme.background
    }

    header: NavBar {
        title: "#" + root.prNumber
        showBack: true
        onBack: root.dismiss()

        NavButton {
            objectName: "reloadButton"
            visible: !root.vm.hasPr && root.vm.errorMessage !== ""
            symbol: "arrow.clockwise"
            Accessible.name: qsTr("Reload")
            onClicked: root.vm.refresh()
        }
        NavButton {
            objectName: "mergeButton"
            visible: root.prIsOpen
            enabled: root.mergeEnabled
            symbol: "arrow.triangle.merge"
            Accessible.name: qsTr("Merge", "action: merge the pull request")
            onClicked: root.openMergeSheet()
        }
        NavButton {
            id: reviewButton
            objectName: "reviewButton"
            visible: root.prIsOpen
            enabled: root.vm.busyMessage === ""
            symbol: "checkmark.bubble"
            Accessible.name: qsTr("Review", "action: review the pull request")
            onClicked: reviewMenu.popup(reviewButton, reviewButton.width - reviewMenu.width,
                                        reviewButton.height)

            Menu {
                id: reviewMenu
                objectName: "reviewMenu"
                width: 220

                MenuItem {
                    objectName: "commentItem"
                    text: qsTr("Comment", "menu action: write a comment")
                    onTriggered: root.openCommentSheet(false)
                }
                MenuItem {
                    objectName: "approveItem"
                    text: qsTr("Approve", "menu action")
                    onTriggered: root.approve()
                }
                MenuItem {
                    objectName: "requestChangesItem"
                    text: qsTr("Request changes", "menu action")
                    onTriggered: root.openCommentSheet(true)
                }
                MenuSeparator {}
                // "Close" while open; "Reopen" otherwise (the whole menu only shows for an open
                // pull request, so this is "Close" in practice).
                MenuItem {
                    id: stateItem
                    objectName: "closeItem"
                    text: root.prIsOpen ? qsTr("Close", "close the pull request")
                                        : qsTr("Reopen", "reopen the pull request")
                    onTriggered: {
                        if (root.prIsOpen)
                            closeConfirm.open();
                        else
                            root.vm.startSetState("open");
                    }
                    contentItem: Label {
                        textFormat: Text.PlainText
                        text: stateItem.text
                        color: root.prIsOpen ? Theme.red : Theme.primaryText
                        font.pixelSize: Theme.body
                        verticalAlignment: Text.AlignVCenter
                        leftPadding: 4
                    }
                }
            }
        }
    }

    PRDetailViewModel {
        id: detailModel
        repo: root.repo
        prNumber: root.prNumber
    }

    ProgressState {
        objectName: "loadingState"
        anchors.fill: parent
        visible: !root.vm.hasPr && root.vm.errorMessage === ""
        text: qsTr("Loading…")
    }

    EmptyState {
        objectName: "loadFailedState"
        anchors.fill: parent
        visible: !root.vm.hasPr && root.vm.errorMessage !== ""
        title: qsTr("Couldn't load PR")
        symbol: "exclamationmark.triangle"
        description: root.vm.errorMessage
    }

    Item {
        id: mainContent
        objectName: "detailContent"
        anchors.fill: parent
        visible: root.vm.hasPr

        Rectangle {
            id: prHeader
            objectName: "prHeader"
            anchors.left: parent.left
            anchors.right: parent.right
            implicitHeight: headerColumn.implicitHeight + 24
            color: Theme.secondaryBackground

            ColumnLayout {
                id: headerColumn
                x: (parent.width - width) / 2
                y: 12
                width: Math.min(parent.width, Theme.maxContentWidth) - 2 * Theme.margin
                spacing: 6

                // A long title shows its first lines; a tap shows it whole, scrolling inside the
                // header when it would take more than a third of the screen.
                Flickable {
                    id: titleScroll
                    objectName: "prTitleScroll"
                    Layout.fillWidth: true
                    Layout.preferredHeight: Math.min(prTitle.implicitHeight, root.height / 3)
                    contentWidth: width
                    contentHeight: prTitle.implicitHeight
                    flickableDirection: Flickable.VerticalFlick
                    boundsBehavior: Flickable.StopAtBounds
                    interactive: contentHeight > height
                    clip: true

                    Label {
                        id: prTitle
                        objectName: "prTitle"
                        textFormat: Text.PlainText
                        width: titleScroll.width
                        text: root.vm.hasPr ? root.vm.pr.title : ""
                        wrapMode: Text.Wrap
                        maximumLineCount: root.titleExpanded ? 100000 : 4
                        elide: Text.ElideRight
                        color: Theme.primaryText
                        font.pixelSize: Theme.title3
                        font.weight: Font.Bold

                        TapHandler {
                            enabled: prTitle.truncated || root.titleExpanded
                            onTapped: root.titleExpanded = !root.titleExpanded
                        }
                    }
                }
                RowLayout {
                    Layout.fillWidth: true
                    spacing: 8
                    // "owner/repo#N": with a web address, a link to the pull request's page. A tap
                    // opens it; a long press or a right click copies it.
                    Item {
                        id: referenceLink
                        objectName: "prReferenceLink"
                        readonly property bool isLink: root.vm.webUrl !== ""
                        // Its whole width, unless the line is too narrow for it and the badges.
                        Layout.maximumWidth: Math.max(80, headerColumn.width - 150)
                        Layout.preferredWidth: prReference.implicitWidth + linkMarkWidth
                        // The arrow after a link, with its gap.
                        readonly property real linkMarkWidth: isLink ? linkMark.width + referenceRow.spacing : 0
                        implicitHeight: referenceRow.implicitHeight

                        Accessible.role: isLink ? Accessible.Link : Accessible.StaticText
                        Accessible.name: prReference.text
                        Accessible.description: isLink
                                                ? qsTr("Opens the pull request in the browser. A long press copies the link.")
                                                : ""
                        Accessible.focusable: isLink
                        Accessible.onPressAction: root.openWebPage()

                        // Shows the press on the small text, a little larger than it.
                        Rectangle {
                            anchors.fill: parent
                            anchors.margins: -4
                            radius: 4
                            color: Theme.alpha(Theme.secondaryText, 0.18)
                            visible: referenceTap.pressed || referenceMenuTap.pressed
                        }
                        Row {
                            id: referenceRow
                            width: parent.width
                            spacing: 3
                            Label {
                                id: prReference
                                objectName: "prReference"
                                textFormat: Text.PlainText
                                width: Math.min(implicitWidth, referenceRow.width - referenceLink.linkMarkWidth)
                                text: Bidi.isolate(root.repo ? root.repo.full_name : "") + "#" + root.prNumber
                                elide: Text.ElideMiddle
                                color: Theme.secondaryText
                                font.pixelSize: Theme.caption
                                font.underline: referenceLink.isLink
                            }
                            Icon {
                                id: linkMark
                                objectName: "prReferenceLinkMark"
                                anchors.verticalCenter: prReference.verticalCenter
                                visible: referenceLink.isLink
                                symbol: "arrow.up.right"
                                size: 11
                                color: Theme.secondaryText
                            }
                        }
                        // A caption is a small target for a finger: the handlers reach a little
                        // beyond the text, up to the title and the badges but not over them.
                        TapHandler {
                            id: referenceTap
                            objectName: "prReferenceTap"
                            enabled: referenceLink.isLink
                            margin: 6
                            onTapped: root.openWebPage()
                            onLongPressed: root.copyWebLink()
                        }
                        TapHandler {
                            id: referenceMenuTap
                            enabled: referenceLink.isLink
                            margin: 6
                            acceptedButtons: Qt.RightButton
                            onTapped: root.copyWebLink()
                        }
                        HoverHandler {
                            enabled: referenceLink.isLink
                            margin: 6
                            cursorShape: Qt.PointingHandCursor
                        }
                    }
                    CICircle {
                        objectName: "headerCI"
                        status: root.vm.ciStatus
                    }
                    ReviewBadge {
                        objectName: "headerReview"
                        visible: root.vm.reviewState !== ReviewState.Unknown
                        state: root.vm.reviewState
                    }
                    Label {
                        objectName: "headerDraft"
                        textFormat: Text.PlainText
                        visible: root.vm.hasPr && root.vm.pr.draft === true
                        text: qsTr("Draft", "a draft pull request")
                        color: Theme.secondaryText
                        font.pixelSize: Theme.caption2
                    }
                    Item {
                        Layout.fillWidth: true
                    }
                }
            }
        }

        StackLayout {
            id: tabs
            objectName: "tabContent"
            anchors.top: prHeader.bottom
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            currentIndex: root.currentTab
            // A scrolled tab's content stays below the header.
            clip: true

            // The tab change fades the new tab in.
            onCurrentIndexChanged: fadeIn.restart()
            NumberAnimation {
                id: fadeIn
                target: tabs
                property: "opacity"
                from: 0.4
                to: 1
                duration: 180
                easing.type: Easing.OutQuad
            }

            OverviewTab {
                objectName: "overviewTab"
                vm: root.vm
                bottomInset: tabBar.height + 24
            }
            ConversationTab {
                objectName: "conversationTab"
                vm: root.vm
                bottomInset: tabBar.height + 24
            }
            FilesTab {
                objectName: "filesTab"
                vm: root.vm
                bottomInset: tabBar.height + 24
                onOpenFile: filename => root.openFile(filename)
            }
            ChecksTab {
                objectName: "checksTab"
                vm: root.vm
                bottomInset: tabBar.height + 24
                onRerun: (runID, runName) => root.askToRerun(runID, runName)
                onOpenLogs: (runID, jobID, jobName) => root.openLogs(runID, jobID, jobName)
            }
        }

        Toast {
            id: toast
            objectName: "detailToast"
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.bottom: tabBar.top
            anchors.bottomMargin: 12
        }

        DetailTabBar {
            id: tabBar
            objectName: "tabBar"
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.bottom: parent.bottom
            anchors.bottomMargin: 8
            width: Math.min(parent.width - 40, 520)
            currentIndex: root.currentTab
            onTabSelected: index => root.selectTab(index)
        }
    }

    AppDialog {
        id: errorAlert
        objectName: "detailErrorAlert"
        title: qsTr("Error")
        message: root.vm.errorMessage
        acceptText: qsTr("OK")
        onClosed: root.vm.clearErrorMessage()
    }

    Connections {
        target: root.vm
        function onErrorMessageChanged() {
            if (root.vm.errorMessage !== "" && !errorAlert.visible)
                errorAlert.open();
        }
    }

    AppDialog {
        id: closeConfirm
        objectName: "closeConfirm"
        title: qsTr("Close this PR?")
        message: qsTr("This will close the pull request.")
        acceptText: qsTr("Close", "close the pull request")
        rejectText: qsTr("Cancel")
        destructive: true
        onAccepted: root.vm.startSetState("closed")
    }

    AppDialog {
        id: rerunConfirm
        objectName: "rerunConfirm"
        title: qsTr("Re-run workflow?")
        message: root.showRerunConfirm !== null
                 ? qsTr("Re-run \"%1\"?").arg(Bidi.isolate(root.rerunName)) : ""
        acceptText: qsTr("Re-run", "re-run the workflow run")
        rejectText: qsTr("Cancel")
        onAccepted: {
            root.vm.startRerun(root.showRerunConfirm);
            root.showRerunConfirm = null;
        }
        onRejected: root.showRerunConfirm = null
    }

    MergeSheet {
        id: mergeSheet
        objectName: "mergeSheet"
        vm: root.vm
        onSucceeded: root.mergeSucceeded()
    }

    CommentSheet {
        id: commentSheet
        objectName: "commentSheet"
        vm: root.vm
        mode: root.requestChangesMode ? CommentSheet.RequestChanges : CommentSheet.Comment
        onClosed: root.requestChangesMode = false
    }

    BusyOverlay {
        id: busyOverlay
        objectName: "busyOverlay"
        message: root.vm.busyMessage
        suppressed: mergeSheet.visible
    }

    MergedOverlay {
        id: mergedOverlay
        objectName: "mergedOverlay"
        shown: root.showMergeSuccess
    }

    Timer {
        id: dismissTimer
        interval: root.mergedDisplayTime
        onTriggered: root.dismiss()
    }

    Component {
        id: diffScreen
        DiffView {}
    }

    Component {
        id: jobLogScreen
        JobLogsView {}
    }
}
