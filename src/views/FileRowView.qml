import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// One visible row of the folder tree: indentation, the disclosure chevron of a folder, the
// entry's symbol and name, and for a folder holding Markdown documents their count.
ItemDelegate {
    id: row

    required property int index
    required property string name
    required property bool isDirectory
    required property bool isExpanded
    required property bool isSelected
    required property int depth
    required property int badgeCount
    required property string symbol
    required property int kind
    required property url url
    property bool isCurrent: false
    // An item is dragged over this folder row and may go into it.
    readonly property bool isDropTarget: dropArea.containsDrag && dropArea.accepting

    signal contextMenuRequested(real x, real y)
    // An item of the tree was dropped on this folder row.
    signal droppedOnFolder(url source, url folder)

    readonly property color symbolColor: [Theme.accent, Theme.blue, Theme.orange, Theme.secondary][kind]

    topPadding: 4
    bottomPadding: 4
    leftPadding: 6
    rightPadding: 6
    focusPolicy: Qt.NoFocus
    text: name
    Accessible.role: Accessible.TreeItem
    Accessible.name: name
    Accessible.description: isDirectory ? (isExpanded ? "dossier ouvert" : "dossier fermé") : ""
    Accessible.selected: isSelected
    Accessible.onPressAction: clicked()

    background: Rectangle {
        radius: 6
        color: row.isSelected ? Theme.withOpacity(Theme.accent, 0.12) : row.hovered ? Theme.withOpacity(Theme.secondary, 0.08) : "transparent"
        border.width: row.isCurrent || row.isDropTarget ? (row.isDropTarget ? 2 : 1) : 0
        border.color: Theme.withOpacity(Theme.accent, row.isDropTarget ? 1 : 0.7)
    }

    contentItem: RowLayout {
        spacing: 5

        Item {
            objectName: "indentation"
            implicitWidth: row.depth * 14
        }
        Item {
            implicitWidth: 14
            implicitHeight: 14

            SymbolIcon {
                anchors.centerIn: parent
                visible: row.isDirectory
                symbol: row.isExpanded ? "chevron.down" : "chevron.right"
                size: 9
                color: Theme.secondary
            }
        }
        Item {
            implicitWidth: 14
            implicitHeight: 14

            SymbolIcon {
                anchors.centerIn: parent
                symbol: row.symbol
                size: 13
                color: row.symbolColor
            }
        }
        Label {
            Layout.fillWidth: true
            text: row.name
            font.pointSize: 13
            font.weight: row.isSelected ? Font.DemiBold : row.isDirectory ? Font.Medium : Font.Normal
            color: row.isSelected ? Theme.accent : Theme.primary
            elide: Text.ElideMiddle
        }
        StatusBadgeView {
            visible: row.isDirectory && row.badgeCount > 0
            count: row.badgeCount
        }
    }

    // Takes the right button for itself, so a context click never reaches the row's own click.
    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.RightButton
        onClicked: mouse => row.contextMenuRequested(mouse.x, mouse.y)
    }

    // A row is dragged as the desktop drags (Escape cancels, the cursor says where it may go),
    // with its picture under the pointer.
    Drag.dragType: Drag.Automatic
    Drag.supportedActions: Qt.MoveAction
    // Only this window understands it: a row dropped on a file manager moves nothing out of the
    // folder behind the links' back.
    Drag.mimeData: ({
            "application/x-pagewell-item": row.url.toString()
        })
    Drag.keys: ["application/x-pagewell-item"]

    DragHandler {
        id: dragHandler

        target: null
        acceptedButtons: Qt.LeftButton
        onActiveChanged: {
            if (active)
                row.grabToImage(result => {
                        row.Drag.imageSource = result.url;
                        row.Drag.active = dragHandler.active;
                    });
            else
                row.Drag.active = false;
        }
    }

    DropArea {
        id: dropArea

        property bool accepting: false

        anchors.fill: parent
        enabled: row.isDirectory
        keys: ["application/x-pagewell-item"]
        onEntered: drag => {
            accepting = WorkspaceStore.canMoveInto(drag.getDataAsString("application/x-pagewell-item"), row.url);
            drag.accepted = accepting;
        }
        onExited: accepting = false
        onDropped: drop => {
            const source = drop.getDataAsString("application/x-pagewell-item");
            accepting = false;
            if (!WorkspaceStore.canMoveInto(source, row.url))
                return;
            drop.acceptProposedAction();
            row.droppedOnFolder(source, row.url);
        }
    }
}
