import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// The bar above the editor that tells what happened to the open document outside this window:
// unsaved edits found again, the file changed or removed by another program. Its buttons answer
// through the store.
Rectangle {
    id: root

    readonly property int notice: WorkspaceStore.notice
    readonly property bool isWarning: notice === DocumentNotice.ChangedOnDisk || notice === DocumentNotice.RemovedFromDisk
    readonly property color tint: isWarning ? Theme.orange : Theme.accent

    // A button was pressed: the keyboard goes back to the text.
    signal answered

    visible: notice !== DocumentNotice.NoNotice
    implicitHeight: visible ? row.implicitHeight + 16 : 0
    color: Theme.withOpacity(tint, Theme.dark ? 0.18 : 0.12)
    Accessible.role: Accessible.AlertMessage
    Accessible.name: WorkspaceStore.noticeMessage

    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: 1
        color: Theme.withOpacity(root.tint, 0.45)
    }

    // Side by side when there is room; in a narrow column the buttons go under the message.
    GridLayout {
        id: row

        readonly property bool narrow: root.width < 560

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.leftMargin: 16
        anchors.rightMargin: 12
        anchors.topMargin: 8
        columns: narrow ? 2 : 3
        columnSpacing: 10
        rowSpacing: 6

        SymbolIcon {
            Layout.alignment: Qt.AlignVCenter
            symbol: root.notice === DocumentNotice.DraftFound ? "clock.arrow.circlepath" : root.notice === DocumentNotice.RemovedFromDisk ? "doc.badge.xmark" : "exclamationmark.triangle.fill"
            size: 14
            color: root.tint
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2

            Label {
                objectName: "noticeMessage"
                Layout.fillWidth: true
                text: WorkspaceStore.noticeMessage
                font.pointSize: 12
                font.weight: Font.Medium
                color: Theme.primary
                wrapMode: Text.Wrap
            }
            Label {
                objectName: "noticeDetail"
                Layout.fillWidth: true
                visible: text !== ""
                text: WorkspaceStore.noticeDetail
                font.pointSize: 11
                color: Theme.secondary
                wrapMode: Text.Wrap
            }
        }
        RowLayout {
            Layout.row: row.narrow ? 1 : 0
            Layout.column: row.narrow ? 1 : 2
            Layout.alignment: row.narrow ? Qt.AlignLeft : Qt.AlignRight | Qt.AlignVCenter
            spacing: 10
            visible: root.notice === DocumentNotice.DraftFound || root.notice === DocumentNotice.ChangedOnDisk

            PwButton {
                objectName: "restoreDraftButton"
                visible: root.notice === DocumentNotice.DraftFound
                text: "Rétablir"
                onClicked: {
                    WorkspaceStore.restoreDraft();
                    root.answered();
                }
            }
            PwButton {
                objectName: "discardDraftButton"
                visible: root.notice === DocumentNotice.DraftFound
                text: "Ignorer"
                onClicked: {
                    WorkspaceStore.discardDraft();
                    root.answered();
                }
            }
            PwButton {
                objectName: "reloadButton"
                visible: root.notice === DocumentNotice.ChangedOnDisk
                text: "Recharger"
                onClicked: {
                    WorkspaceStore.reloadDocumentFromDisk();
                    root.answered();
                }
            }
            PwButton {
                objectName: "keepEditsButton"
                visible: root.notice === DocumentNotice.ChangedOnDisk
                text: "Garder mes modifications"
                onClicked: {
                    WorkspaceStore.keepEdits();
                    root.answered();
                }
            }
        }
    }
}
