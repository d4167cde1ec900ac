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

    function showReplace() {
        if (workspace.item)
            workspace.item.sidebar.showReplace();
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

    AlertDialog {
        id: alert

        objectName: "alert"
        title: "Pagewell"
        message: WorkspaceStore.alertMessage
        visible: WorkspaceStore.showAlert
        onClosed: WorkspaceStore.showAlert = false
    }
}
