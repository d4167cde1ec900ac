import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// One line above the editor: the file, its place in the folder, its statistics, the save button
// and the outline toggle.
Rectangle {
    id: root

    required property EditorHeaderModel model

    implicitHeight: row.implicitHeight + 16
    color: Theme.windowBackground
    visible: model.hasDocument

    RowLayout {
        id: row

        anchors.fill: parent
        anchors.leftMargin: 16
        anchors.rightMargin: 16
        spacing: 12

        RowLayout {
            Layout.fillWidth: true
            spacing: 8

            SymbolIcon {
                symbol: "doc.text.fill"
                size: 14
                color: Theme.blue
            }
            Label {
                objectName: "fileName"
                text: root.model.fileName
                font.pointSize: 14
                font.bold: true
                color: Theme.primary
            }
            UnsavedIndicatorView {
                objectName: "unsavedIndicator"
                visible: root.model.isDirty
            }
            Label {
                objectName: "relativePath"
                Layout.fillWidth: true
                visible: text !== ""
                text: root.model.relativePath
                font.pointSize: 11
                color: Theme.secondary
                elide: Text.ElideMiddle
            }
        }

        RowLayout {
            spacing: 10

            Label {
                objectName: "words"
                text: root.model.wordsText
                font.pointSize: 11
                color: Theme.secondary
            }
            Label {
                text: "•"
                font.pointSize: 11
                color: Theme.secondary
                Accessible.ignored: true
            }
            Label {
                objectName: "characters"
                text: root.model.charactersText
                font.pointSize: 11
                color: Theme.secondary
            }
            Label {
                text: "•"
                font.pointSize: 11
                color: Theme.secondary
                Accessible.ignored: true
            }
            Label {
                objectName: "readingTime"
                text: root.model.readingTimeText
                font.pointSize: 11
                color: Theme.secondary
            }
        }

        Divider {
            vertical: true
            Layout.fillHeight: false
            implicitHeight: 16
        }

        PwButton {
            id: saveButton

            objectName: "saveButton"
            readonly property color tint: root.model.isDirty ? Theme.accent : Theme.secondary

            text: root.model.isDirty ? "Enregistrer" : "Enregistré"
            toolTipText: "Enregistrer (Ctrl+S)"
            font.pointSize: 12
            font.weight: Font.Medium
            topPadding: 3
            bottomPadding: 3
            leftPadding: 8
            rightPadding: 8
            spacing: 4
            icon.source: Symbols.source(root.model.isDirty ? "square.and.arrow.down.fill" : "checkmark.circle")
            icon.width: 13
            icon.height: 13
            icon.color: tint
            palette.buttonText: tint
            onClicked: WorkspaceStore.requestSave()
            background: Rectangle {
                radius: 5
                color: saveButton.down ? Theme.withOpacity(saveButton.tint, 0.25) : Theme.withOpacity(saveButton.tint, saveButton.hovered ? 0.16 : 0.1)
                border.width: 1
                border.color: Theme.withOpacity(saveButton.tint, saveButton.visualFocus ? 0.9 : 0.35)
            }
        }

        SymbolButton {
            objectName: "outlineToggle"
            symbol: "sidebar.right"
            symbolSize: 13
            symbolColor: WorkspaceStore.isOutlineVisible ? Theme.accent : Theme.secondary
            toolTipText: "Plan du document"
            onClicked: WorkspaceStore.isOutlineVisible = !WorkspaceStore.isOutlineVisible
        }
    }
}
