import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// The right column: the open document's headings, a click scrolling the editor to one, and a few
// facts about the file.
Rectangle {
    id: root

    property alias model: outline

    color: Theme.sidebarBackground

    OutlineModel {
        id: outline

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
