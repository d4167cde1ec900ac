import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import Pagewell

// The application's window with its menus: the scene every view lives in.
ApplicationWindow {
    id: window

    property alias mainView: mainView

    // Who runs the application: it checks for updates, and its update controller answers.
    property QtObject delegate: null

    function openFolderDialog() {
        // Starts beside the open folder, where the next one usually is.
        if (WorkspaceStore.hasFolder)
            folderDialog.currentFolder = PathNames.toUrl(PathNames.fromUrl(WorkspaceStore.rootURL) + "/..");
        folderDialog.open();
    }

    // Edit commands go to the focused field or editor, when it knows them.
    function editFocused(command) {
        const item = window.activeFocusItem;
        if (item && typeof item[command] === "function")
            item[command]();
    }

    // Wide enough for the three columns at their own widths, the editor's header whole.
    width: 1360
    height: 780
    minimumWidth: 800
    minimumHeight: 550
    visible: true
    title: WorkspaceStore.hasFolder ? WorkspaceStore.folderName + " — Pagewell" : "Pagewell"
    color: Theme.contentBackground
    palette.highlight: Theme.accent

    menuBar: MenuBar {
        Menu {
            title: "Fichier"

            Action {
                text: "Ouvrir un dossier..."
                shortcut: "Ctrl+O"
                onTriggered: window.openFolderDialog()
            }
            Action {
                text: "Nouveau fichier Markdown"
                shortcut: "Ctrl+N"
                enabled: WorkspaceStore.hasFolder
                onTriggered: WorkspaceStore.createUntitledFile()
            }
            Action {
                text: "Enregistrer"
                shortcut: "Ctrl+S"
                enabled: WorkspaceStore.hasDocument
                onTriggered: WorkspaceStore.requestSave()
            }
            MenuSeparator {
            }
            Action {
                text: "Recharger le fichier"
                shortcut: "Ctrl+R"
                enabled: WorkspaceStore.hasFolder
                onTriggered: WorkspaceStore.reloadCurrentFolder()
            }
            MenuSeparator {
            }
            Action {
                text: "Quitter"
                shortcut: StandardKey.Quit
                onTriggered: Qt.quit()
            }
        }
        Menu {
            title: "Édition"

            Action {
                text: "Annuler"
                shortcut: StandardKey.Undo
                onTriggered: window.editFocused("undo")
            }
            Action {
                text: "Rétablir"
                shortcut: StandardKey.Redo
                onTriggered: window.editFocused("redo")
            }
            MenuSeparator {
            }
            Action {
                text: "Couper"
                shortcut: StandardKey.Cut
                onTriggered: window.editFocused("cut")
            }
            Action {
                text: "Copier"
                shortcut: StandardKey.Copy
                onTriggered: window.editFocused("copy")
            }
            Action {
                text: "Coller"
                shortcut: StandardKey.Paste
                onTriggered: window.editFocused("paste")
            }
            Action {
                text: "Tout sélectionner"
                shortcut: StandardKey.SelectAll
                onTriggered: window.editFocused("selectAll")
            }
            MenuSeparator {
            }
            Action {
                text: "Afficher la source"
                shortcut: "Ctrl+E"
                checkable: true
                checked: WorkspaceStore.showSource
                onTriggered: WorkspaceStore.showSource = checked
            }
        }
        Menu {
            title: "Recherche"

            Action {
                text: "Recherche"
                shortcut: "Ctrl+Shift+F"
                onTriggered: {
                    WorkspaceStore.sidebarMode = SidebarMode.Search;
                    mainView.focusSearchField();
                }
            }
            Action {
                text: "Remplacer dans le dossier"
                shortcut: "Ctrl+Shift+H"
                enabled: WorkspaceStore.hasFolder
                onTriggered: {
                    WorkspaceStore.sidebarMode = SidebarMode.Search;
                    mainView.showReplace();
                }
            }
            Action {
                text: "Plan du document"
                shortcut: "Ctrl+Alt+I"
                onTriggered: WorkspaceStore.isOutlineVisible = !WorkspaceStore.isOutlineVisible
            }
        }
        Menu {
            title: "Aller"

            Action {
                text: "Aller au fichier..."
                shortcut: "Ctrl+P"
                enabled: WorkspaceStore.hasFolder
                onTriggered: quickOpen.show()
            }
            MenuSeparator {
            }
            Action {
                text: "Précédent"
                shortcut: "Alt+Left"
                enabled: WorkspaceStore.canGoBack
                onTriggered: WorkspaceStore.goBack()
            }
            Action {
                text: "Suivant"
                shortcut: "Alt+Right"
                enabled: WorkspaceStore.canGoForward
                onTriggered: WorkspaceStore.goForward()
            }
        }
        Menu {
            title: "Aide"

            Action {
                text: "Vérifier les mises à jour..."
                onTriggered: {
                    if (window.delegate)
                        window.delegate.checkForUpdates();
                }
            }
        }
    }

    MainSplitView {
        id: mainView

        anchors.fill: parent
        onOpenFolder: window.openFolderDialog()
    }

    // What an update check found; with a download address, a button opens it.
    AlertDialog {
        id: updateDialog

        property url downloadUrl

        objectName: "updateDialog"
        actionText: downloadUrl.toString() !== "" ? "Télécharger" : ""
        onActionTriggered: Qt.openUrlExternally(downloadUrl)
    }

    Connections {
        target: window.delegate ? window.delegate.updaterController : null

        function onAnswered(title, message, downloadURL) {
            updateDialog.title = title;
            updateDialog.message = message;
            updateDialog.downloadUrl = downloadURL;
            updateDialog.open();
        }
    }

    // Where no trash can take an item, it goes only once this is answered.
    Dialog {
        id: permanentDeletion

        property url itemUrl
        property string itemName

        objectName: "permanentDeletionDialog"
        parent: Overlay.overlay
        anchors.centerIn: parent
        width: 420
        modal: true
        padding: 20
        closePolicy: Popup.CloseOnEscape
        onOpened: keepButton.forceActiveFocus()

        contentItem: Column {
            spacing: 16

            Label {
                width: parent.width
                text: "Supprimer définitivement «\u00a0" + permanentDeletion.itemName + "\u00a0»\u00a0?"
                font.pointSize: Theme.headline
                font.bold: true
                color: Theme.primary
                wrapMode: Text.Wrap
            }
            Row {
                anchors.right: parent.right
                spacing: 8

                PwButton {
                    id: keepButton

                    objectName: "keepItemButton"
                    text: "Annuler"
                    onClicked: permanentDeletion.close()
                }
                PwButton {
                    objectName: "deletePermanentlyButton"
                    text: "Supprimer définitivement"
                    palette.buttonText: Theme.red
                    onClicked: {
                        permanentDeletion.close();
                        WorkspaceStore.deletePermanently(permanentDeletion.itemUrl);
                    }
                }
            }
        }
    }

    Connections {
        target: WorkspaceStore

        function onPermanentDeletionRequest(url, name) {
            permanentDeletion.itemUrl = url;
            permanentDeletion.itemName = name;
            permanentDeletion.open();
        }
    }

    QuickOpenPanel {
        id: quickOpen
    }

    FolderDialog {
        id: folderDialog

        title: "Sélectionnez un dossier de documentation"
        acceptLabel: "Sélectionnez un dossier de documentation"
        onAccepted: {
            if (selectedFolder.toString() !== "")
                WorkspaceStore.openFolder(selectedFolder);
        }
    }
}
