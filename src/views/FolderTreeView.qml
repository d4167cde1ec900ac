import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// The open folder as an indented list: folders open and close in place, files open in the
// editor. The keyboard moves with Up and Down, opens and closes folders with Right and Left, and
// Return opens the current entry. The expanded folders live as long as this view.
Item {
    id: root

    property alias model: treeModel
    property alias list: list
    property url targetDirForNewFile
    property alias newFileName: nameField.text
    property alias newFileSheet: newFileSheet
    property alias contextMenu: contextMenu
    property alias renameSheet: renameSheet
    property alias linkDialog: linkDialog
    property alias moveDialog: moveDialog

    // The item at `url` is to move into `folder`: the links it changes are asked about first.
    function moveItem(url, folder) {
        linkDialog.ask(WorkspaceStore.prepareMove(url, folder));
    }

    function renameRow(row) {
        const index = treeModel.index(row, 0);
        renameSheet.show(treeModel.data(index, FolderTreeModel.UrlRole), treeModel.data(index, FolderTreeModel.NameRole), treeModel.data(index, FolderTreeModel.IsDirectoryRole));
    }

    function showNewFileSheet(folderUrl) {
        targetDirForNewFile = folderUrl;
        newFileSheet.open();
    }

    FolderTreeModel {
        id: treeModel

        store: WorkspaceStore
    }

    Label {
        objectName: "emptyFolderText"
        anchors.centerIn: parent
        visible: treeModel.isEmptyFolder
        text: "Aucun résultat trouvé"
        font.pointSize: Theme.callout
        color: Theme.secondary
    }

    ListView {
        id: list

        objectName: "folderTree"
        anchors.fill: parent
        anchors.leftMargin: 6
        anchors.rightMargin: 6
        anchors.topMargin: 4
        anchors.bottomMargin: 4
        spacing: 1
        clip: true
        model: treeModel
        activeFocusOnTab: true
        keyNavigationEnabled: true
        highlightFollowsCurrentItem: false
        currentIndex: -1
        boundsBehavior: Flickable.StopAtBounds
        Accessible.role: Accessible.Tree
        Accessible.name: "Arborescence du dossier"
        ScrollBar.vertical: ScrollBar {
        }

        delegate: FileRowView {
            width: ListView.view.width
            isCurrent: ListView.isCurrentItem && list.activeFocus
            onClicked: {
                // The keyboard goes on from the row clicked, even once a file opened.
                list.forceActiveFocus();
                list.currentIndex = index;
                treeModel.activate(index);
            }
            onContextMenuRequested: (x, y) => {
                list.currentIndex = index;
                contextMenu.show(index, isDirectory, this, x, y);
            }
            onDroppedOnFolder: (source, folder) => root.moveItem(source, folder)
        }

        onActiveFocusChanged: {
            if (activeFocus && currentIndex < 0 && count > 0)
                currentIndex = Math.max(0, treeModel.selectedRow);
        }
        Keys.onRightPressed: {
            if (treeModel.isExpanded(currentIndex))
                incrementCurrentIndex();
            else
                treeModel.expand(currentIndex);
        }
        Keys.onLeftPressed: {
            if (treeModel.isExpanded(currentIndex))
                treeModel.collapse(currentIndex);
            else if (treeModel.parentRow(currentIndex) >= 0)
                currentIndex = treeModel.parentRow(currentIndex);
        }
        Keys.onReturnPressed: treeModel.activate(currentIndex)
        Keys.onEnterPressed: treeModel.activate(currentIndex)
        Keys.onPressed: event => {
            if (event.key === Qt.Key_F2 && currentIndex >= 0) {
                root.renameRow(currentIndex);
                event.accepted = true;
            }
        }
        Keys.onMenuPressed: {
            if (currentItem)
                contextMenu.show(currentIndex, currentItem.isDirectory, currentItem, 24, currentItem.height);
        }
    }

    Menu {
        id: contextMenu

        property int row: -1
        property bool forFolder: false
        property url itemUrl

        function show(row, isFolder, item, x, y) {
            contextMenu.row = row;
            forFolder = isFolder;
            itemUrl = treeModel.data(treeModel.index(row, 0), FolderTreeModel.UrlRole);
            popup(item, x, y);
        }

        objectName: "treeContextMenu"

        MenuItem {

            Accessible.onPressAction: clicked()
            text: "Nouveau fichier Markdown"
            visible: contextMenu.forFolder
            height: visible ? implicitHeight : 0
            icon.source: Symbols.source("doc.badge.plus")
            onTriggered: root.showNewFileSheet(contextMenu.itemUrl)
        }
        MenuSeparator {
            visible: contextMenu.forFolder
            height: visible ? implicitHeight : 0
        }
        MenuItem {
            Accessible.onPressAction: clicked()
            objectName: "renameItem"
            text: "Renommer..."
            icon.source: Symbols.source("pencil")
            onTriggered: root.renameRow(contextMenu.row)
        }
        MenuItem {
            Accessible.onPressAction: clicked()
            objectName: "moveItem"
            text: "Déplacer vers..."
            icon.source: Symbols.source("folder.badge.arrow")
            onTriggered: moveDialog.show(contextMenu.itemUrl)
        }
        MenuSeparator {
        }
        MenuItem {
            Accessible.onPressAction: clicked()
            objectName: "deleteItem"
            text: "Supprimer"
            icon.source: Symbols.source("trash")
            icon.color: Theme.red
            palette.windowText: Theme.red
            palette.text: Theme.red
            onTriggered: WorkspaceStore.deleteFile(contextMenu.itemUrl)
        }
    }

    Dialog {
        id: newFileSheet

        objectName: "newFileSheet"
        parent: Overlay.overlay
        anchors.centerIn: parent
        modal: true
        width: 320
        padding: 20
        closePolicy: Popup.CloseOnEscape
        onOpened: nameField.forceActiveFocus()
        onRejected: nameField.text = ""

        // "Créer" is the sheet's default button: Return creates wherever the focus is.
        Shortcut {
            sequences: ["Return", "Enter"]
            enabled: newFileSheet.opened
            onActivated: newFileSheet.create()
        }

        function create() {
            if (nameField.text === "" || !createButton.enabled)
                return;
            WorkspaceStore.createNewFile(nameField.text, root.targetDirForNewFile);
            nameField.text = "";
            close();
        }

        contentItem: ColumnLayout {
            spacing: 16

            Label {
                text: "Nouveau fichier Markdown"
                font.pointSize: Theme.headline
                font.bold: true
                color: Theme.primary
            }
            TextField {
                id: nameField

                objectName: "newFileName"
                Layout.fillWidth: true
                placeholderText: "spec.md"
                Accessible.name: "Nom du nouveau fichier"
                selectByMouse: true
            }
            Label {
                id: newFileRefusal

                objectName: "newFileRefusal"
                Layout.fillWidth: true
                Layout.topMargin: -8
                visible: text !== ""
                text: WorkspaceStore.newFileRefusal(nameField.text, root.targetDirForNewFile)
                font.pointSize: Theme.caption
                color: Theme.red
                wrapMode: Text.Wrap
            }
            RowLayout {
                Item {
                    Layout.fillWidth: true
                }
                PwButton {
                    objectName: "cancelButton"
                    text: "Annuler"
                    onClicked: newFileSheet.reject()
                }
                ProminentButton {
                    id: createButton

                    objectName: "createButton"
                    text: "Créer"
                    enabled: WorkspaceStore.acceptsNewFileName(nameField.text) && newFileRefusal.text === ""
                    onClicked: newFileSheet.create()
                }
            }
        }
    }

    RenameSheet {
        id: renameSheet

        onConfirmed: plan => linkDialog.ask(plan)
    }

    MoveToDialog {
        id: moveDialog

        onChosen: folder => root.moveItem(moveDialog.itemUrl, folder)
    }

    LinkUpdateDialog {
        id: linkDialog
    }
}
