import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// The window's content: the start screen while no folder is open, else the sidebar, the editor
// and the outline side by side; and the alert, over both.
Item {
    id: root

    property alias alert: alert

    signal openFolder

    function focusSearchField() {
        if (workspace.item)
            workspace.item.sidebar.focusSearchField();
    }

    Loader {
        anchors.fill: parent
        active: !WorkspaceStore.hasFolder
        sourceComponent: EmptyWorkspaceView {
            onOpenFolder: root.openFolder()
        }
    }

    Loader {
        id: workspace

        anchors.fill: parent
        active: WorkspaceStore.hasFolder
        sourceComponent: SplitView {
            property alias sidebar: sidebar

            orientation: Qt.Horizontal
            handle: Rectangle {
                implicitWidth: 1
                color: Theme.separator
            }

            SidebarView {
                id: sidebar

                SplitView.minimumWidth: 230
                SplitView.preferredWidth: 270
                SplitView.maximumWidth: 380
                onOpenFolder: root.openFolder()
            }
            EditorContainerView {
                SplitView.fillWidth: true
                SplitView.minimumWidth: 300
            }
            OutlineInspectorView {
                visible: WorkspaceStore.isOutlineVisible && WorkspaceStore.hasDocument
                SplitView.minimumWidth: 180
                SplitView.preferredWidth: 220
                SplitView.maximumWidth: 280
            }
        }
    }

    Dialog {
        id: alert

        objectName: "alert"
        anchors.centerIn: parent
        width: Math.min(420, root.width - 80)
        modal: true
        title: "Pagewell"
        visible: WorkspaceStore.showAlert
        closePolicy: Popup.CloseOnEscape
        padding: 16
        onClosed: WorkspaceStore.showAlert = false
        onOpened: okButton.forceActiveFocus()

        header: Label {
            text: alert.title
            font.pointSize: Theme.headline
            font.bold: true
            color: Theme.primary
            leftPadding: 16
            rightPadding: 16
            topPadding: 14
        }

        Label {
            width: parent.width
            text: WorkspaceStore.alertMessage
            wrapMode: Text.Wrap
            font.pointSize: Theme.body
        }

        footer: DialogButtonBox {
            ProminentButton {
                id: okButton

                text: "OK"
                DialogButtonBox.buttonRole: DialogButtonBox.AcceptRole
                Keys.onReturnPressed: clicked()
                Keys.onEnterPressed: clicked()
            }
            onAccepted: alert.close()
        }
    }
}
