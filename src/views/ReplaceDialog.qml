import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// Asked before "Tout remplacer" writes: how many matches in how many documents, then replace or
// cancel.
Dialog {
    id: dialog

    property string question
    property string replacement

    function ask(question, replacement) {
        dialog.question = question;
        dialog.replacement = replacement;
        open();
    }

    function answer() {
        close();
        WorkspaceStore.replaceAll(replacement);
    }

    objectName: "replaceDialog"
    parent: Overlay.overlay
    anchors.centerIn: parent
    modal: true
    width: 400
    padding: 20
    closePolicy: Popup.CloseOnEscape
    Accessible.role: Accessible.Dialog
    Accessible.name: question
    onOpened: replaceButton.forceActiveFocus()

    Shortcut {
        sequences: ["Return", "Enter"]
        enabled: dialog.opened
        onActivated: dialog.answer()
    }

    contentItem: ColumnLayout {
        spacing: 16

        Label {
            objectName: "replaceQuestion"
            Layout.fillWidth: true
            text: dialog.question
            font.pointSize: Theme.headline
            font.bold: true
            color: Theme.primary
            wrapMode: Text.Wrap
        }
        RowLayout {
            spacing: 8

            Item {
                Layout.fillWidth: true
            }
            PwButton {
                objectName: "cancelReplaceButton"
                text: "Annuler"
                onClicked: dialog.reject()
            }
            ProminentButton {
                id: replaceButton

                objectName: "confirmReplaceButton"
                text: "Remplacer"
                onClicked: dialog.answer()
            }
        }
    }
}
