import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// "Renommer": the item's name, selected without its extension. A name taken in the folder is
// said under the field and cannot be confirmed; a change of case only is a rename.
Dialog {
    id: sheet

    property url itemUrl
    property string originalName
    property bool isFolder: false
    property alias nameField: nameField
    readonly property string refusal: nameField.text === originalName ? "" : WorkspaceStore.renameRefusal(itemUrl, nameField.text)
    readonly property bool canRename: nameField.text.trim() !== "" && nameField.text !== originalName && refusal === ""

    // The name was confirmed; what it changes is prepared in the store.
    signal confirmed(var plan)

    function show(url, name, folder) {
        itemUrl = url;
        originalName = name;
        isFolder = folder;
        nameField.text = name;
        open();
    }

    function rename() {
        if (!canRename)
            return;
        const plan = WorkspaceStore.prepareRename(itemUrl, nameField.text);
        close();
        confirmed(plan);
    }

    objectName: "renameSheet"
    parent: Overlay.overlay
    anchors.centerIn: parent
    modal: true
    width: 360
    padding: 20
    closePolicy: Popup.CloseOnEscape
    onOpened: {
        nameField.forceActiveFocus();
        const dot = originalName.lastIndexOf(".");
        nameField.select(0, !isFolder && dot > 0 ? dot : originalName.length);
    }

    // "Renommer" is the sheet's default button.
    Shortcut {
        sequences: ["Return", "Enter"]
        enabled: sheet.opened
        onActivated: sheet.rename()
    }

    contentItem: ColumnLayout {
        spacing: 12

        Label {
            text: "Renommer"
            font.pointSize: Theme.headline
            font.bold: true
            color: Theme.primary
        }
        TextField {
            id: nameField

            objectName: "renameField"
            Layout.fillWidth: true
            Accessible.name: "Nouveau nom"
            selectByMouse: true
        }
        Label {
            objectName: "renameRefusal"
            Layout.fillWidth: true
            visible: sheet.refusal !== ""
            text: sheet.refusal
            font.pointSize: Theme.caption
            color: Theme.red
            wrapMode: Text.Wrap
        }
        RowLayout {
            Layout.topMargin: 4
            Item {
                Layout.fillWidth: true
            }
            PwButton {
                objectName: "cancelRenameButton"
                text: "Annuler"
                onClicked: sheet.close()
            }
            ProminentButton {
                objectName: "renameButton"
                text: "Renommer"
                enabled: sheet.canRename
                onClicked: sheet.rename()
            }
        }
    }
}
