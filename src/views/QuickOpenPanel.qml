import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// "Aller au fichier...": a panel over the window to open a document by a few letters of its
// name or path. Up and Down choose, Return or a click opens, Escape closes.
Popup {
    id: panel

    property alias field: field
    property alias documents: documents
    property alias model: finder

    function show() {
        field.text = "";
        open();
    }

    function openRow(row) {
        if (row < 0 || row >= finder.count)
            return;
        close();
        finder.open(row);
    }

    objectName: "quickOpenPanel"
    parent: Overlay.overlay
    x: Math.round((parent.width - width) / 2)
    y: 56
    width: Math.min(560, parent.width - 40)
    padding: 8
    modal: true
    focus: true
    closePolicy: Popup.CloseOnEscape | Popup.CloseOnPressOutside
    onOpened: field.forceActiveFocus()

    Overlay.modal: Rectangle {
        color: Qt.rgba(0, 0, 0, Theme.dark ? 0.35 : 0.12)
    }

    background: Rectangle {
        radius: 10
        color: Theme.contentBackground
        border.color: Theme.separator
        border.width: 1
    }

    QuickOpenModel {
        id: finder

        store: WorkspaceStore
        active: panel.visible
        query: field.text
        onModelReset: documents.currentIndex = count > 0 ? 0 : -1
    }

    contentItem: ColumnLayout {
        spacing: 6

        TextField {
            id: field

            objectName: "quickOpenField"
            Layout.fillWidth: true
            placeholderText: "Nom du document"
            Accessible.name: "Nom du document"
            Accessible.description: finder.count === 1 ? "1 document" : finder.count + " documents"
            font.pointSize: 13
            selectByMouse: true
            Keys.onDownPressed: documents.incrementCurrentIndex()
            Keys.onUpPressed: documents.decrementCurrentIndex()
            Keys.onReturnPressed: panel.openRow(documents.currentIndex)
            Keys.onEnterPressed: panel.openRow(documents.currentIndex)
        }
        ListView {
            id: documents

            objectName: "quickOpenList"
            Layout.fillWidth: true
            Layout.preferredHeight: Math.min(contentHeight, 400)
            clip: true
            model: finder
            currentIndex: 0
            highlightMoveDuration: 0
            keyNavigationEnabled: true
            boundsBehavior: Flickable.StopAtBounds
            Accessible.role: Accessible.List
            Accessible.name: "Documents"
            Accessible.description: finder.count === 1 ? "1 document" : finder.count + " documents"
            ScrollBar.vertical: ScrollBar {
            }

            delegate: ItemDelegate {
                id: row

                required property int index
                required property string name
                required property string folder
                required property string accessibleName

                width: ListView.view.width
                focusPolicy: Qt.NoFocus
                topPadding: 5
                bottomPadding: 5
                leftPadding: 8
                rightPadding: 8
                text: name
                Accessible.role: Accessible.ListItem
                Accessible.name: accessibleName
                Accessible.selected: ListView.isCurrentItem
                Accessible.onPressAction: panel.openRow(index)
                onClicked: panel.openRow(index)

                background: Rectangle {
                    radius: 6
                    color: row.ListView.isCurrentItem ? Theme.withOpacity(Theme.accent, 0.18) : row.hovered ? Theme.withOpacity(Theme.secondary, 0.08) : "transparent"
                }
                contentItem: RowLayout {
                    spacing: 8

                    SymbolIcon {
                        symbol: "doc.text"
                        size: 13
                        color: Theme.secondary
                    }
                    Label {
                        text: row.name
                        font.pointSize: 13
                        color: Theme.primary
                        elide: Text.ElideMiddle
                        Layout.maximumWidth: row.availableWidth * 0.6
                    }
                    Label {
                        Layout.fillWidth: true
                        text: row.folder
                        font.pointSize: Theme.caption
                        color: Theme.secondary
                        elide: Text.ElideLeft
                    }
                }
            }
        }
        Label {
            visible: finder.count === 0
            Layout.leftMargin: 8
            Layout.bottomMargin: 4
            text: field.text.trim() === "" ? "Aucun document ouvert" : "Aucun document"
            font.pointSize: Theme.caption
            color: Theme.secondary
        }
    }
}
