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
    property bool replacing: false

    signal openFolder

    function focusSearchField() {
        searchField.forceActiveFocus();
        searchField.selectAll();
    }

    // The replace field, shown and focused; the search field first when it is empty.
    function showReplace() {
        replacing = true;
        if (root.query === "") {
            focusSearchField();
        } else {
            replaceField.forceActiveFocus();
            replaceField.selectAll();
        }
    }

    function hideReplace() {
        replacing = false;
        searchField.forceActiveFocus();
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

        // The search field with its three ways of reading the query; the chevron before it shows
        // the replace field.
        RowLayout {
            Layout.fillWidth: true
            Layout.leftMargin: 4
            Layout.rightMargin: 10
            Layout.topMargin: 6
            Layout.bottomMargin: 6
            spacing: 2

            SymbolButton {
                objectName: "replaceToggle"
                Layout.alignment: Qt.AlignTop
                Layout.topMargin: 4
                symbol: root.replacing ? "chevron.down" : "chevron.right"
                symbolSize: 10
                toolTipText: root.replacing ? "Masquer le remplacement" : "Afficher le remplacement"
                onClicked: root.replacing ? root.hideReplace() : root.showReplace()
            }
            ColumnLayout {
                Layout.fillWidth: true
                spacing: 4

                Rectangle {
                    Layout.fillWidth: true
                    implicitHeight: field.implicitHeight + 12
                    radius: 6
                    color: Theme.withOpacity(Theme.secondary, 0.1)
                    border.width: searchField.activeFocus ? 1 : 0
                    border.color: Theme.withOpacity(Theme.accent, 0.6)

                    RowLayout {
                        id: field

                        anchors.fill: parent
                        anchors.margins: 6
                        spacing: 4

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
                            leftPadding: 2
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
                        SearchToggle {
                            objectName: "caseToggle"
                            symbol: "textformat"
                            toolTipText: "Respecter la casse"
                            checked: WorkspaceStore.searchCaseSensitive
                            onToggled: WorkspaceStore.searchCaseSensitive = checked
                        }
                        SearchToggle {
                            objectName: "wordToggle"
                            symbol: "textformat.abc"
                            toolTipText: "Mot entier"
                            checked: WorkspaceStore.searchWholeWord
                            onToggled: WorkspaceStore.searchWholeWord = checked
                        }
                        SearchToggle {
                            objectName: "regexToggle"
                            symbol: "regex"
                            toolTipText: "Expression régulière"
                            checked: WorkspaceStore.searchRegularExpression
                            onToggled: WorkspaceStore.searchRegularExpression = checked
                        }
                    }
                }
                Label {
                    objectName: "searchError"
                    Layout.fillWidth: true
                    Layout.leftMargin: 4
                    visible: text !== ""
                    text: WorkspaceStore.searchError
                    font.pointSize: Theme.caption
                    color: Theme.red
                    wrapMode: Text.Wrap
                }
                RowLayout {
                    objectName: "replaceRow"
                    Layout.fillWidth: true
                    visible: root.replacing
                    spacing: 6

                    Rectangle {
                        Layout.fillWidth: true
                        implicitHeight: replaceField.implicitHeight + 12
                        radius: 6
                        color: Theme.withOpacity(Theme.secondary, 0.1)
                        border.width: replaceField.activeFocus ? 1 : 0
                        border.color: Theme.withOpacity(Theme.accent, 0.6)

                        TextField {
                            id: replaceField

                            objectName: "replaceField"
                            anchors.fill: parent
                            anchors.margins: 6
                            padding: 0
                            leftPadding: 2
                            background: null
                            placeholderText: "Remplacer par"
                            placeholderTextColor: Theme.secondary
                            color: Theme.primary
                            font.pointSize: 12
                            selectByMouse: true
                            Accessible.name: placeholderText
                            Keys.onReturnPressed: replaceAllButton.clicked()
                            Keys.onEnterPressed: replaceAllButton.clicked()
                            Keys.onEscapePressed: root.hideReplace()
                        }
                    }
                    PwButton {
                        id: replaceAllButton

                        readonly property var results: content.item && root.searching ? content.item.model : null

                        objectName: "replaceAllButton"
                        text: "Tout remplacer"
                        enabled: results !== null && results.occurrenceCount > 0 && !WorkspaceStore.isSearching && !WorkspaceStore.isReplacing
                        Accessible.name: text
                        onClicked: {
                            if (enabled)
                                replaceDialog.ask(results.replaceQuestion, replaceField.text);
                        }
                    }
                }
            }
        }

        Divider {
        }

        Loader {
            id: content

            objectName: "sidebarContent"
            Layout.fillWidth: true
            Layout.fillHeight: true
            sourceComponent: root.searching ? searchPanel : folderTree
        }
    }

    ReplaceDialog {
        id: replaceDialog
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
