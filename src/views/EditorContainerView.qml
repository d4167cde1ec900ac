import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// The centre column: a placeholder while no document is open, else the header above the editor.
Rectangle {
    id: root

    // The editor page, while a document is open.
    property alias editorArea: editorArea

    property bool windowShown: false

    color: Theme.contentBackground

    Connections {
        target: root.Window.window
        enabled: !root.windowShown

        function onFrameSwapped() {
            root.windowShown = true;
        }
    }

    EditorHeaderModel {
        id: header

        store: WorkspaceStore
    }

    OperationNoticeView {
        id: operationNotice

        objectName: "operationNotice"
        anchors.top: parent.top
        anchors.left: parent.left
        anchors.right: parent.right
        height: implicitHeight
    }

    ColumnLayout {
        objectName: "placeholder"
        anchors.fill: parent
        anchors.topMargin: operationNotice.height
        visible: !header.hasDocument
        spacing: 12

        Item {
            Layout.fillHeight: true
        }
        SymbolIcon {
            Layout.alignment: Qt.AlignHCenter
            symbol: "doc.text"
            size: 48
            color: Theme.secondary
            opacity: 0.5
        }
        Label {
            Layout.alignment: Qt.AlignHCenter
            text: "Aucun fichier sélectionné"
            font.pointSize: Theme.headline
            font.bold: true
            color: Theme.secondary
        }
        Label {
            Layout.alignment: Qt.AlignHCenter
            Layout.preferredWidth: 320
            text: "Sélectionnez un fichier Markdown dans la barre latérale pour commencer la lecture ou l'édition."
            font.pointSize: Theme.subheadline
            color: Theme.secondary
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }
        Item {
            Layout.fillHeight: true
        }
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.topMargin: operationNotice.height
        visible: header.hasDocument
        spacing: 0

        EditorHeaderView {
            Layout.fillWidth: true
            model: header
        }
        Divider {
        }
        DocumentNoticeView {
            objectName: "documentNotice"
            Layout.fillWidth: true
            onAnswered: {
                if (editorArea.item)
                    editorArea.item.focusText();
            }
        }
        Loader {
            id: editorArea

            objectName: "editorArea"
            Layout.fillWidth: true
            Layout.fillHeight: true
            // One page for as long as some document is open; documents change inside it. The web
            // engine starts once the window has shown its first frame, so the window comes first.
            active: header.hasDocument && root.windowShown
            sourceComponent: MarkdownEditorView {
            }
        }
    }
}
