import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// The right column: the open document's headings, a click scrolling the editor to one, and a few
// facts about the file.
Rectangle {
    id: root

    property alias model: outline
    property alias backlinks: backlinks

    color: Theme.sidebarBackground

    OutlineModel {
        id: outline

        store: WorkspaceStore
    }

    BacklinksModel {
        id: backlinks

        store: WorkspaceStore
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        Rectangle {
            Layout.fillWidth: true
            implicitHeight: title.implicitHeight + 16
            color: Theme.windowBackground

            RowLayout {
                id: title

                anchors.fill: parent
                anchors.leftMargin: 12
                anchors.rightMargin: 12
                spacing: 6

                SymbolIcon {
                    symbol: "list.bullet.indent"
                    size: 12
                    color: Theme.primary
                }
                Label {
                    Layout.fillWidth: true
                    text: "Plan du document"
                    font.pointSize: 12
                    font.bold: true
                    color: Theme.primary
                    elide: Text.ElideRight
                }
                StatusBadgeView {
                    objectName: "headingCount"
                    visible: outline.hasDocument && outline.count > 0
                    count: outline.count
                }
            }
        }

        Divider {
        }

        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true

            Column {
                objectName: "outlineEmptyState"
                anchors.centerIn: parent
                width: parent.width - 32
                visible: outline.count === 0
                spacing: 8

                SymbolIcon {
                    anchors.horizontalCenter: parent.horizontalCenter
                    symbol: "text.alignleft"
                    size: 24
                    color: Theme.secondary
                    opacity: 0.5
                }
                Label {
                    width: parent.width
                    text: "Aucun titre dans ce document"
                    font.pointSize: Theme.caption
                    color: Theme.secondary
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.Wrap
                }
            }

            ListView {
                id: list

                objectName: "headings"
                anchors.fill: parent
                anchors.margins: 8
                visible: outline.count > 0
                spacing: 4
                clip: true
                model: outline
                activeFocusOnTab: true
                keyNavigationEnabled: true
                currentIndex: -1
                boundsBehavior: Flickable.StopAtBounds
                Accessible.role: Accessible.List
                Accessible.name: "Plan du document"
                ScrollBar.vertical: ScrollBar {
                }
                Keys.onReturnPressed: outline.scrollTo(currentIndex)
                Keys.onEnterPressed: outline.scrollTo(currentIndex)

                delegate: ItemDelegate {
                    id: heading

                    required property int index
                    required property string headingText
                    required property string tag
                    required property string indentation

                    width: ListView.view.width
                    focusPolicy: Qt.NoFocus
                    topPadding: 3
                    bottomPadding: 3
                    leftPadding: 6
                    rightPadding: 6
                    Accessible.role: Accessible.Button
                    Accessible.name: tag + " " + headingText
                    Accessible.onPressAction: clicked()
                    onClicked: {
                        list.currentIndex = index;
                        outline.scrollTo(index);
                    }

                    background: Rectangle {
                        radius: 4
                        color: Theme.withOpacity(Theme.secondary, heading.hovered ? 0.12 : 0.06)
                        border.width: heading.ListView.isCurrentItem && list.activeFocus ? 1 : 0
                        border.color: Theme.withOpacity(Theme.accent, 0.7)
                    }
                    contentItem: RowLayout {
                        spacing: 6

                        Label {
                            objectName: "indentation"
                            text: heading.indentation
                            font.pointSize: 12
                            visible: text !== ""
                        }
                        Label {
                            text: heading.tag
                            font.pointSize: 10
                            font.bold: true
                            font.family: Theme.monospace
                            color: Theme.withOpacity(Theme.accent, 0.8)
                            padding: 3
                            background: Rectangle {
                                radius: 3
                                color: Theme.withOpacity(Theme.accent, 0.1)
                            }
                        }
                        Label {
                            Layout.fillWidth: true
                            text: heading.headingText
                            font.pointSize: 12
                            color: Theme.primary
                            elide: Text.ElideRight
                            maximumLineCount: 1
                            textFormat: Text.PlainText
                        }
                    }
                }
            }
        }

        Divider {
            visible: outline.hasDocument
        }

        // The links elsewhere in the folder that lead here; a click opens one at its line.
        ColumnLayout {
            objectName: "backlinks"
            Layout.fillWidth: true
            Layout.fillHeight: false
            Layout.leftMargin: 12
            Layout.rightMargin: 12
            Layout.topMargin: 10
            visible: outline.hasDocument
            spacing: 6

            RowLayout {
                Layout.fillWidth: true
                spacing: 6

                SymbolIcon {
                    symbol: "link"
                    size: 12
                    color: Theme.primary
                }
                Label {
                    Layout.fillWidth: true
                    text: "Liens entrants"
                    font.pointSize: 12
                    font.bold: true
                    color: Theme.primary
                }
                StatusBadgeView {
                    objectName: "backlinkCount"
                    count: backlinks.count
                }
            }
            Label {
                objectName: "noBacklinks"
                visible: backlinks.count === 0
                text: "Aucun lien entrant"
                font.pointSize: Theme.caption
                color: Theme.secondary
            }
            ListView {
                id: backlinkList

                objectName: "backlinkList"
                Layout.fillWidth: true
                Layout.preferredHeight: Math.min(contentHeight, root.height / 4)
                visible: backlinks.count > 0
                clip: true
                spacing: 2
                model: backlinks
                activeFocusOnTab: true
                keyNavigationEnabled: true
                currentIndex: -1
                boundsBehavior: Flickable.StopAtBounds
                Accessible.role: Accessible.List
                Accessible.name: "Liens entrants"
                ScrollBar.vertical: ScrollBar {
                }
                Keys.onReturnPressed: backlinks.open(currentIndex)
                Keys.onEnterPressed: backlinks.open(currentIndex)

                delegate: ItemDelegate {
                    id: backlink

                    required property int index
                    required property string name
                    required property int lineNumber
                    required property string lineText

                    width: ListView.view.width
                    focusPolicy: Qt.NoFocus
                    topPadding: 4
                    bottomPadding: 4
                    leftPadding: 6
                    rightPadding: 6
                    Accessible.role: Accessible.Button
                    Accessible.name: name + ", ligne " + lineNumber + " : " + lineText
                    Accessible.onPressAction: clicked()
                    onClicked: {
                        backlinkList.currentIndex = index;
                        backlinks.open(index);
                    }

                    background: Rectangle {
                        radius: 4
                        color: Theme.withOpacity(Theme.secondary, backlink.hovered ? 0.12 : 0.06)
                        border.width: backlink.ListView.isCurrentItem && backlinkList.activeFocus ? 1 : 0
                        border.color: Theme.withOpacity(Theme.accent, 0.7)
                    }
                    contentItem: ColumnLayout {
                        spacing: 1

                        RowLayout {
                            spacing: 4

                            SymbolIcon {
                                symbol: "doc.text"
                                size: 11
                                color: Theme.accent
                            }
                            Label {
                                Layout.fillWidth: true
                                text: backlink.name
                                font.pointSize: 12
                                font.weight: Font.Medium
                                color: Theme.primary
                                elide: Text.ElideMiddle
                                textFormat: Text.PlainText
                            }
                            Label {
                                text: "L" + backlink.lineNumber
                                font.pointSize: 10
                                font.family: Theme.monospace
                                color: Theme.secondary
                            }
                        }
                        Label {
                            Layout.fillWidth: true
                            text: backlink.lineText
                            font.pointSize: 11
                            color: Theme.secondary
                            elide: Text.ElideRight
                            maximumLineCount: 1
                            textFormat: Text.PlainText
                        }
                    }
                }
            }
        }

        ColumnLayout {
            objectName: "documentFacts"
            Layout.fillWidth: true
            Layout.margins: 12
            visible: outline.hasDocument
            spacing: 4

            Label {
                text: "Informations"
                font.pointSize: Theme.caption2
                font.bold: true
                font.capitalization: Font.AllUppercase
                color: Theme.secondary
            }
            Label {
                objectName: "sizeText"
                Layout.fillWidth: true
                elide: Text.ElideRight
                text: outline.sizeText
                font.pointSize: 11
                color: Theme.secondary
            }
            Label {
                objectName: "modifiedText"
                Layout.fillWidth: true
                wrapMode: Text.Wrap
                text: outline.modifiedText
                font.pointSize: 11
                color: Theme.secondary
            }
        }
    }
}
