import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// Asked before a rename or a move that changes where links lead: how many links in which
// documents, then update them (the default), leave them, or cancel. An operation that changes no
// link is carried out without asking.
Dialog {
    id: dialog

    property string question
    property var documents: []
    // Shown at most; the rest is counted.
    readonly property int shownLimit: 100

    function ask(plan) {
        if (plan.refusal !== "")
            return;
        if (plan.links === 0) {
            WorkspaceStore.applyPendingMove(true);
            return;
        }
        question = plan.question;
        documents = plan.documents;
        open();
    }

    function answer(update) {
        close();
        WorkspaceStore.applyPendingMove(update);
    }

    objectName: "linkUpdateDialog"
    parent: Overlay.overlay
    anchors.centerIn: parent
    modal: true
    width: 440
    padding: 20
    closePolicy: Popup.CloseOnEscape
    onRejected: WorkspaceStore.cancelPendingMove()
    onOpened: updateButton.forceActiveFocus()

    Shortcut {
        sequences: ["Return", "Enter"]
        enabled: dialog.opened
        onActivated: dialog.answer(true)
    }

    contentItem: ColumnLayout {
        spacing: 12

        Label {
            text: "Mettre à jour les liens ?"
            font.pointSize: Theme.headline
            font.bold: true
            color: Theme.primary
        }
        Label {
            objectName: "linkQuestion"
            Layout.fillWidth: true
            text: dialog.question
            font.pointSize: Theme.callout
            color: Theme.primary
            wrapMode: Text.Wrap
        }
        Rectangle {
            Layout.fillWidth: true
            Layout.preferredHeight: Math.min(documentList.contentHeight + 12, 180)
            radius: 6
            color: Theme.withOpacity(Theme.secondary, 0.08)

            ListView {
                id: documentList

                objectName: "linkDocuments"
                anchors.fill: parent
                anchors.margins: 6
                clip: true
                model: dialog.documents.slice(0, dialog.shownLimit)
                Accessible.role: Accessible.List
                Accessible.name: "Documents"
                ScrollBar.vertical: ScrollBar {
                }
                delegate: RowLayout {
                    required property string modelData

                    width: ListView.view.width
                    spacing: 6

                    SymbolIcon {
                        symbol: "doc.text"
                        size: 11
                        color: Theme.accent
                    }
                    Label {
                        Layout.fillWidth: true
                        text: modelData
                        font.pointSize: 11
                        color: Theme.primary
                        elide: Text.ElideMiddle
                        Accessible.name: modelData
                    }
                }
                footer: Label {
                    visible: dialog.documents.length > dialog.shownLimit
                    height: visible ? implicitHeight : 0
                    text: "… et " + (dialog.documents.length - dialog.shownLimit) + " autres"
                    font.pointSize: 11
                    color: Theme.secondary
                }
            }
        }
        RowLayout {
            Layout.topMargin: 4
            spacing: 8

            PwButton {
                objectName: "cancelLinksButton"
                text: "Annuler"
                onClicked: dialog.reject()
            }
            Item {
                Layout.fillWidth: true
            }
            PwButton {
                objectName: "keepLinksButton"
                text: "Ne pas les modifier"
                onClicked: dialog.answer(false)
            }
            ProminentButton {
                id: updateButton

                objectName: "updateLinksButton"
                text: "Mettre à jour les liens"
                onClicked: dialog.answer(true)
            }
        }
    }
}
