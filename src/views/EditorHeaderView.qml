import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// One line above the editor: back and forth over the documents opened, the file, its place in the
// folder, its statistics, the save button and the outline toggle.
Rectangle {
    id: root

    required property EditorHeaderModel model

    implicitHeight: row.implicitHeight + 16
    color: Theme.windowBackground
    visible: model.hasDocument

    // The row gives way from the left: the folder path is cut in its middle first, then the
    // statistics go, then the file name is cut, and last the save button keeps only its symbol.
    // The save button and the outline toggle are always whole.
    // The gaps are a little tighter than a toolbar's so that at the window's opening size every
    // part shows whole; in a very narrow column they tighten more and the file symbol goes too.
    readonly property bool tight: width < 220
    readonly property real margin: tight ? 8 : 12
    readonly property real gap: tight ? 6 : 10
    readonly property real innerGap: tight ? 4 : 6
    // "Précédent" and "Suivant" lead the row, small; a very narrow column leaves them to the menu.
    readonly property real historyWidth: tight ? 0 : back.implicitWidth + forward.implicitWidth + gap
    readonly property real available: width - 2 * margin - historyWidth
    readonly property real symbolWidth: tight ? 0 : fileIcon.implicitWidth + innerGap
    readonly property real dotWidth: unsaved.visible ? unsaved.implicitWidth + innerGap : 0
    readonly property real identityWidth: symbolWidth + fileName.implicitWidth + dotWidth
    readonly property real endWidth: gap + saveButton.implicitWidth + gap + outlineToggle.implicitWidth + (tight ? 0 : 1 + gap)
    // The statistics in full, or without the reading time, or not at all.
    readonly property real shortStatisticsWidth: words.implicitWidth + firstBullet.implicitWidth + characters.implicitWidth + 2 * statistics.spacing
    readonly property real fullStatisticsWidth: shortStatisticsWidth + secondBullet.implicitWidth + readingTime.implicitWidth + 2 * statistics.spacing
    readonly property bool showsReadingTime: available >= identityWidth + gap + fullStatisticsWidth + endWidth
    readonly property bool showsStatistics: available >= identityWidth + gap + shortStatisticsWidth + endWidth
    readonly property real statisticsWidth: showsReadingTime ? fullStatisticsWidth : showsStatistics ? shortStatisticsWidth : 0
    readonly property real pathWidth: Math.max(0, available - identityWidth - innerGap - endWidth - (showsStatistics ? statisticsWidth + gap : 0))
    readonly property bool compactSave: available < symbolWidth + 48 + gap + fullSave.advanceWidth + 50 + gap + outlineToggle.implicitWidth

    TextMetrics {
        id: fullSave

        font: saveButton.font
        text: "Enregistrer"
    }

    RowLayout {
        id: row

        anchors.fill: parent
        anchors.leftMargin: root.margin
        anchors.rightMargin: root.margin
        spacing: root.gap

        RowLayout {
            visible: !root.tight
            spacing: 0

            SymbolButton {
                id: back

                objectName: "backButton"
                symbol: "arrow.backward"
                symbolSize: 11
                padding: 2
                enabled: WorkspaceStore.canGoBack
                toolTipText: "Précédent"
                onClicked: WorkspaceStore.goBack()
            }
            SymbolButton {
                id: forward

                objectName: "forwardButton"
                symbol: "arrow.forward"
                symbolSize: 11
                padding: 2
                enabled: WorkspaceStore.canGoForward
                toolTipText: "Suivant"
                onClicked: WorkspaceStore.goForward()
            }
        }

        RowLayout {
            Layout.fillWidth: true
            Layout.minimumWidth: 0
            spacing: root.innerGap

            SymbolIcon {
                id: fileIcon

                visible: !root.tight
                symbol: "doc.text.fill"
                size: 14
                color: Theme.blue
            }
            Label {
                id: fileName

                objectName: "fileName"
                Layout.maximumWidth: Math.max(24, root.available - root.symbolWidth - root.dotWidth - root.endWidth)
                text: root.model.fileName
                font.pointSize: 14
                font.bold: true
                color: Theme.primary
                elide: Text.ElideRight
            }
            UnsavedIndicatorView {
                id: unsaved

                objectName: "unsavedIndicator"
                visible: root.model.isDirty
            }
            Label {
                objectName: "relativePath"
                Layout.preferredWidth: Math.min(implicitWidth, root.pathWidth)
                visible: text !== "" && root.pathWidth >= 60
                text: root.model.relativePath
                font.pointSize: 11
                color: Theme.secondary
                elide: Text.ElideMiddle
            }
        }

        RowLayout {
            id: statistics

            objectName: "statistics"
            visible: root.showsStatistics
            spacing: root.tight ? 6 : 8

            Label {
                id: words

                objectName: "words"
                text: root.model.wordsText
                font.pointSize: 11
                color: Theme.secondary
            }
            Label {
                id: firstBullet

                text: "•"
                font.pointSize: 11
                color: Theme.secondary
                Accessible.ignored: true
            }
            Label {
                id: characters

                objectName: "characters"
                text: root.model.charactersText
                font.pointSize: 11
                color: Theme.secondary
            }
            Label {
                id: secondBullet

                visible: root.showsReadingTime
                text: "•"
                font.pointSize: 11
                color: Theme.secondary
                Accessible.ignored: true
            }
            Label {
                id: readingTime

                visible: root.showsReadingTime
                objectName: "readingTime"
                text: root.model.readingTimeText
                font.pointSize: 11
                color: Theme.secondary
            }
        }

        Divider {
            visible: !root.tight
            vertical: true
            Layout.fillHeight: false
            implicitHeight: 16
        }

        PwButton {
            id: saveButton

            objectName: "saveButton"
            readonly property color tint: root.model.isDirty ? Theme.accent : Theme.secondary

            Layout.minimumWidth: implicitWidth
            display: root.compactSave ? AbstractButton.IconOnly : AbstractButton.TextBesideIcon
            text: root.model.isDirty ? "Enregistrer" : "Enregistré"
            toolTipText: "Enregistrer (Ctrl+S)"
            font.pointSize: 12
            font.weight: Font.Medium
            topPadding: 3
            bottomPadding: 3
            leftPadding: 6
            rightPadding: 6
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
            id: outlineToggle

            objectName: "outlineToggle"
            Layout.minimumWidth: implicitWidth
            symbol: "sidebar.right"
            symbolSize: 13
            symbolColor: WorkspaceStore.isOutlineVisible ? Theme.accent : Theme.secondary
            toolTipText: "Plan du document"
            onClicked: WorkspaceStore.isOutlineVisible = !WorkspaceStore.isOutlineVisible
        }
    }
}
