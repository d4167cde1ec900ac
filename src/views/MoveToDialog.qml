import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// "Déplacer vers": the folders the item may go to, filtered as one types; Up and Down choose,
// Return moves. The keyboard's and the screen reader's way to do what a drag does.
Dialog {
    id: dialog

    property url itemUrl
    property alias filterField: filterField
    property alias choices: choices

    // A folder was chosen.
    signal chosen(url folder)

    function show(url) {
        itemUrl = url;
        filterField.text = "";
        open();
    }

    function move(row) {
        const folder = choices.urlAt(row);
        if (folder.toString() === "")
            return;
        close();
        chosen(folder);
    }

    objectName: "moveToDialog"
    parent: Overlay.overlay
    anchors.centerIn: parent
    modal: true
    width: 400
    padding: 20
    closePolicy: Popup.CloseOnEscape
    onOpened: filterField.forceActiveFocus()

    FolderChoiceModel {
        id: choices

        store: WorkspaceStore
        itemUrl: dialog.itemUrl
        filter: filterField.text
        onModelReset: folders.currentIndex = count > 0 ? 0 : -1
    }

    contentItem: ColumnLayout {
        spacing: 12

        Label {
            text: "Déplacer vers"
            font.pointSize: Theme.headline
            font.bold: true
            color: Theme.primary
        }
        TextField {
            id: filterField

            objectName: "moveFilter"
            Layout.fillWidth: true
            placeholderText: "Filtrer les dossiers"
            Accessible.name: "Filtrer les dossiers"
            selectByMouse: true
            Keys.onDownPressed: folders.incrementCurrentIndex()
            Keys.onUpPressed: folders.decrementCurrentIndex()
            Keys.onReturnPressed: dialog.move(folders.currentIndex)
            Keys.onEnterPressed: dialog.move(folders.currentIndex)
        }
        ListView {
            id: folders

            objectName: "moveFolders"
            Layout.fillWidth: true
            Layout.preferredHeight: 240
            clip: true
            model: choices
            currentIndex: 0
            highlightMoveDuration: 0
            activeFocusOnTab: true
            keyNavigationEnabled: true
            Accessible.role: Accessible.List
            Accessible.name: "Dossiers"
            ScrollBar.vertical: ScrollBar {
            }
            Keys.onReturnPressed: dialog.move(currentIndex)
            Keys.onEnterPressed: dialog.move(currentIndex)

            delegate: ItemDelegate {
                id: choice

                required property int index
                required property string path

                width: ListView.view.width
                focusPolicy: Qt.NoFocus
                topPadding: 4
                bottomPadding: 4
                text: path
                Accessible.role: Accessible.ListItem
                Accessible.name: path
                Accessible.selected: ListView.isCurrentItem
                Accessible.onPressAction: dialog.move(index)
                onClicked: folders.currentIndex = index
                onDoubleClicked: dialog.move(index)

                background: Rectangle {
                    radius: 5
                    color: choice.ListView.isCurrentItem ? Theme.withOpacity(Theme.accent, 0.16) : choice.hovered ? Theme.withOpacity(Theme.secondary, 0.08) : "transparent"
                }
                contentItem: RowLayout {
                    spacing: 6

                    SymbolIcon {
                        symbol: "folder.fill"
                        size: 12
                        color: Theme.accent
                    }
                    Label {
                        Layout.fillWidth: true
                        text: choice.path
                        font.pointSize: 12
                        color: Theme.primary
                        elide: Text.ElideMiddle
                    }
                }
            }
        }
        Label {
            visible: choices.count === 0
            text: "Aucun dossier"
            font.pointSize: Theme.caption
            color: Theme.secondary
        }
        RowLayout {
            Item {
                Layout.fillWidth: true
            }
            PwButton {
                objectName: "cancelMoveButton"
                text: "Annuler"
                onClicked: dialog.close()
            }
            ProminentButton {
                objectName: "moveButton"
                text: "Déplacer"
                enabled: folders.currentIndex >= 0
                onClicked: dialog.move(folders.currentIndex)
            }
        }
    }
}
