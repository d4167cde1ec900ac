import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// The bar that says what the last rename, move or deletion did, with "Annuler" to take it back.
Rectangle {
    id: root

    visible: WorkspaceStore.operationMessage !== ""
    implicitHeight: visible ? row.implicitHeight + 16 : 0
    color: Theme.withOpacity(Theme.accent, Theme.dark ? 0.18 : 0.10)
    Accessible.role: Accessible.AlertMessage
    Accessible.name: WorkspaceStore.operationMessage

    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: 1
        color: Theme.withOpacity(Theme.accent, 0.4)
    }

    RowLayout {
        id: row

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        anchors.leftMargin: 16
        anchors.rightMargin: 8
        spacing: 10

        SymbolIcon {
            symbol: "checkmark.circle"
            size: 14
            color: Theme.accent
        }
        Label {
            objectName: "operationMessage"
            Layout.fillWidth: true
            text: WorkspaceStore.operationMessage
            font.pointSize: 12
            font.weight: Font.Medium
            color: Theme.primary
            wrapMode: Text.Wrap
        }
        PwButton {
            objectName: "undoOperationButton"
            text: "Annuler"
            onClicked: WorkspaceStore.undoLastOperation()
        }
        SymbolButton {
            objectName: "dismissOperationButton"
            symbol: "xmark"
            toolTipText: "Fermer"
            onClicked: WorkspaceStore.dismissOperation()
        }
    }
}
