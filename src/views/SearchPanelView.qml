import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// The search's answer: a status line, then for each file its name and hit count followed by its
// matching lines, their matches highlighted. A click on a file opens it at its start, on a line at
// that line with its first match selected.
Item {
    id: root

    property alias model: results

    SearchResultsModel {
        id: results

        store: WorkspaceStore
        // Three lines of the hit's font fill the excerpt; matches on a tint of the accent.
        charsPerLine: Math.floor((list.width - 32) / Math.max(1, lineMetrics.averageCharacterWidth))
        highlightColor: Qt.tint(Theme.sidebarBackground, Theme.withOpacity(Theme.accent, Theme.dark ? 0.45 : 0.28))
    }

    FontMetrics {
        id: lineMetrics

        font.family: Theme.monospace
        font.pointSize: 11
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        RowLayout {
            objectName: "statusLine"
            Layout.fillWidth: true
            Layout.leftMargin: 12
            Layout.rightMargin: 12
            Layout.topMargin: 2
            Layout.bottomMargin: 2
            visible: results.showsStatus
            spacing: 6

            BusyIndicator {
                objectName: "spinner"
                visible: results.isSearching
                running: visible
                implicitWidth: 16
                implicitHeight: 16
                padding: 0
            }
            Label {
                objectName: "statusText"
                text: results.isSearching ? "Recherche en cours..." : results.summaryText
                font.pointSize: Theme.caption
                color: Theme.secondary
            }
            Item {
                Layout.fillWidth: true
            }
        }

        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true

            ColumnLayout {
                objectName: "emptyState"
                anchors.centerIn: parent
                visible: results.showsEmptyState
                spacing: 8

                SymbolIcon {
                    Layout.alignment: Qt.AlignHCenter
                    symbol: "doc.text.magnifyingglass"
                    size: 32
                    color: Theme.secondary
                    opacity: 0.6
                }
                Label {
                    Layout.alignment: Qt.AlignHCenter
                    text: "Aucun résultat trouvé"
                    font.pointSize: Theme.callout
                    color: Theme.secondary
                }
            }

            ListView {
                id: list

                objectName: "searchResults"
                anchors.fill: parent
                anchors.leftMargin: 4
                anchors.rightMargin: 4
                clip: true
                model: results
                activeFocusOnTab: true
                keyNavigationEnabled: true
                currentIndex: -1
                boundsBehavior: Flickable.StopAtBounds
                reuseItems: true
                Accessible.role: Accessible.List
                Accessible.name: "Résultats de la recherche"
                ScrollBar.vertical: ScrollBar {
                }
                Keys.onReturnPressed: results.open(currentIndex)
                Keys.onEnterPressed: results.open(currentIndex)

                delegate: ItemDelegate {
                    id: row

                    required property int index
                    required property bool isFile
                    required property string fileName
                    required property string relativePath
                    required property int hitCount
                    required property int lineNumber
                    required property string lineContent
                    required property string excerpt
                    required property string accessibleName

                    width: ListView.view.width
                    focusPolicy: Qt.NoFocus
                    topPadding: isFile ? 2 : 3
                    bottomPadding: isFile ? 2 : 3
                    leftPadding: isFile ? 4 : 20
                    rightPadding: 4
                    text: isFile ? fileName : lineContent
                    Accessible.role: Accessible.ListItem
                    Accessible.name: accessibleName
                    Accessible.onPressAction: clicked()
                    onClicked: {
                        list.currentIndex = index;
                        results.open(index);
                    }

                    background: Rectangle {
                        radius: 4
                        color: row.hovered && !row.isFile ? Theme.withOpacity(Theme.secondary, 0.08) : "transparent"
                        border.width: row.ListView.isCurrentItem && list.activeFocus ? 1 : 0
                        border.color: Theme.withOpacity(Theme.accent, 0.7)
                    }

                    contentItem: Loader {
                        sourceComponent: row.isFile ? fileHeader : hitLines
                    }

                    Component {
                        id: fileHeader

                        RowLayout {
                            spacing: 6

                            SymbolIcon {
                                symbol: "doc.text.fill"
                                size: 12
                                color: Theme.blue
                            }
                            Label {
                                Layout.fillWidth: true
                                text: row.fileName
                                font.pointSize: 12
                                font.weight: Font.DemiBold
                                color: Theme.primary
                                elide: Text.ElideRight
                            }
                            StatusBadgeView {
                                count: row.hitCount
                                isAccent: true
                            }
                        }
                    }

                    Component {
                        id: hitLines

                        ColumnLayout {
                            spacing: 3

                            RowLayout {
                                spacing: 6

                                Label {
                                    text: "L" + row.lineNumber
                                    font.pointSize: 10
                                    font.bold: true
                                    color: Theme.secondary
                                    leftPadding: 4
                                    rightPadding: 4
                                    topPadding: 1
                                    bottomPadding: 1
                                    background: Rectangle {
                                        radius: 3
                                        color: Theme.withOpacity(Theme.secondary, 0.15)
                                    }
                                }
                                Label {
                                    Layout.fillWidth: true
                                    text: row.relativePath
                                    font.pointSize: 10
                                    color: Theme.secondary
                                    elide: Text.ElideMiddle
                                }
                            }
                            Label {
                                objectName: "hitExcerpt"
                                Layout.fillWidth: true
                                // Never more than three lines, whatever the wrapping did.
                                Layout.maximumHeight: 3 * lineMetrics.lineSpacing + 2
                                clip: true
                                text: row.excerpt
                                font.family: Theme.monospace
                                font.pointSize: 11
                                color: Theme.primary
                                wrapMode: Text.Wrap
                                textFormat: Text.RichText
                            }
                        }
                    }
                }
            }
        }
    }
}
