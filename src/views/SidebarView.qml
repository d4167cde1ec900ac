import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// The left column: the folder's name and actions, the search field, and below them the tree, or
// the search results while the field holds more than spaces and tabs.
Rectangle {
    id: root

    readonly property string query: WorkspaceStore.searchQuery
    readonly property bool searching: !WorkspaceStore.isSearchQueryBlank

    signal openFolder

    function focusSearchField() {
        searchField.forceActiveFocus();
        searchField.selectAll();
    }

    color: Theme.sidebarBackground

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        Rectangle {
            Layout.fillWidth: true
            implicitHeight: header.implicitHeight + 16
            color: topDrop.containsDrag && topDrop.accepting ? Theme.withOpacity(Theme.accent, 0.14) : Theme.windowBackground

            // A row dropped on the folder's name goes to the top of the folder.
            DropArea {
                id: topDrop

                property bool accepting: false

                objectName: "topLevelDrop"
                anchors.fill: parent
                keys: ["application/x-pagewell-item"]
                onEntered: drag => {
                    accepting = WorkspaceStore.canMoveInto(drag.getDataAsString("application/x-pagewell-item"), WorkspaceStore.rootURL);
                    drag.accepted = accepting;
                }
                onExited: accepting = false
                onDropped: drop => {
                    const source = drop.getDataAsString("application/x-pagewell-item");
                    accepting = false;
                    if (!WorkspaceStore.canMoveInto(source, WorkspaceStore.rootURL))
                        return;
                    drop.acceptProposedAction();
                    folderTree.item.moveItem(source, WorkspaceStore.rootURL);
                }
            }

            RowLayout {
                id: header

                anchors.fill: parent
                anchors.leftMargin: 12
                anchors.rightMargin: 12
                spacing: 8

                SymbolIcon {
                    symbol: "folder.fill"
                    size: 14
                    color: Theme.accent
                }
                Label {
                    objectName: "folderName"
                    Layout.fillWidth: true
                    text: WorkspaceStore.folderName
                    font.pointSize: 13
                    font.bold: true
                    color: Theme.primary
                    elide: Text.ElideRight
                }
                SymbolButton {
                    symbol: "folder.badge.gearshape"
                    toolTipText: "Ouvrir un dossier..."
                    onClicked: root.openFolder()
                }
                SymbolButton {
                    symbol: "arrow.clockwise"
                    toolTipText: "Recharger le fichier"
                    onClicked: WorkspaceStore.reloadCurrentFolder()
                }
                SymbolButton {
                    objectName: "newFileButton"
                    symbol: "doc.badge.plus"
                    toolTipText: "Nouveau fichier Markdown"
                    onClicked: WorkspaceStore.createUntitledFile()
                }
            }
        }

        Divider {
        }

        Rectangle {
            Layout.fillWidth: true
            Layout.leftMargin: 10
            Layout.rightMargin: 10
            Layout.topMargin: 6
            Layout.bottomMargin: 6
            implicitHeight: field.implicitHeight + 12
            radius: 6
            color: Theme.withOpacity(Theme.secondary, 0.1)
            border.width: searchField.activeFocus ? 1 : 0
            border.color: Theme.withOpacity(Theme.accent, 0.6)

            RowLayout {
                id: field

                anchors.fill: parent
                anchors.margins: 6
                spacing: 6

                SymbolIcon {
                    symbol: "magnifyingglass"
                    size: 12
                    color: Theme.secondary
                }
                TextField {
                    id: searchField

                    objectName: "searchField"
                    Layout.fillWidth: true
                    padding: 0
                    background: null
                    placeholderText: "Rechercher un fichier ou du texte..."
                    placeholderTextColor: Theme.secondary
                    color: Theme.primary
                    font.pointSize: 12
                    text: WorkspaceStore.searchQuery
                    selectByMouse: true
                    Accessible.name: placeholderText
                    onTextEdited: WorkspaceStore.updateSearch(text)
                    Keys.onEscapePressed: WorkspaceStore.updateSearch("")
                }
                SymbolButton {
                    objectName: "clearSearchButton"
                    visible: root.query !== ""
                    symbol: "xmark.circle.fill"
                    symbolSize: 11
                    padding: 0
                    toolTipText: "Effacer la recherche"
                    onClicked: WorkspaceStore.updateSearch("")
                }
            }
        }

        Divider {
        }

        Loader {
            objectName: "sidebarContent"
            Layout.fillWidth: true
            Layout.fillHeight: true
            sourceComponent: root.searching ? searchPanel : folderTree
        }
    }

    Component {
        id: folderTree

        FolderTreeView {
        }
    }

    Component {
        id: searchPanel

        SearchPanelView {
        }
    }
}
