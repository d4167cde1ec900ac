import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

// The start screen: what Pagewell is for, a button to choose a folder, and the recent folders.
Rectangle {
    id: root

    signal openFolder

    color: Theme.contentBackground

    ColumnLayout {
        anchors.centerIn: parent
        width: Math.min(parent.width - 64, 520)
        spacing: 24

        SymbolIcon {
            Layout.alignment: Qt.AlignHCenter
            symbol: "folder.badge.gearshape"
            sourceSize: Qt.size(64, 64)
            color: Theme.accent
            opacity: 0.8
        }

        ColumnLayout {
            Layout.alignment: Qt.AlignHCenter
            spacing: 8

            Label {
                Layout.alignment: Qt.AlignHCenter
                text: "Aucun dossier ouvert"
                font.pointSize: Theme.title2
                font.bold: true
                color: Theme.primary
            }
            Label {
                Layout.alignment: Qt.AlignHCenter
                Layout.maximumWidth: 420
                Layout.preferredWidth: 420
                text: "Ouvrez un dossier de spécifications ou de documentation Markdown pour explorer l'arborescence et éditer les fichiers."
                font.pointSize: Theme.body
                color: Theme.secondary
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
            }
        }

        ProminentButton {
            objectName: "chooseFolderButton"
            Layout.alignment: Qt.AlignHCenter
            text: "Choisir un dossier"
            symbol: "folder"
            leftPadding: 16
            rightPadding: 16
            topPadding: 8
            bottomPadding: 8
            font.pointSize: Theme.body
            onClicked: root.openFolder()
        }

        Rectangle {
            objectName: "recentFolders"
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: 12
            Layout.fillWidth: true
            Layout.maximumWidth: 460
            implicitHeight: recents.implicitHeight + 32
            visible: WorkspaceStore.recentFolderPaths.length > 0
            radius: 10
            color: Theme.withOpacity(Theme.secondary, 0.08)

            ColumnLayout {
                id: recents

                anchors.fill: parent
                anchors.margins: 16
                spacing: 10

                RowLayout {
                    Label {
                        text: "Dossiers récents"
                        font.pointSize: Theme.caption
                        font.weight: Font.DemiBold
                        font.capitalization: Font.AllUppercase
                        color: Theme.secondary
                    }
                    Item {
                        Layout.fillWidth: true
                    }
                    PwButton {
                        objectName: "clearRecentsButton"
                        text: "Effacer l'historique"
                        flat: true
                        font.pointSize: Theme.caption2
                        palette.buttonText: Theme.secondary
                        onClicked: WorkspaceStore.clearRecentFolders()
                    }
                }

                Repeater {
                    objectName: "recentRows"
                    model: WorkspaceStore.recentFolderPaths.slice(0, 5)

                    delegate: ItemDelegate {
                        id: row

                        required property string modelData

                        Layout.fillWidth: true
                        topPadding: 4
                        bottomPadding: 4
                        leftPadding: 8
                        rightPadding: 8
                        text: PathNames.lastComponent(modelData)
                        Accessible.name: text + ", " + modelData
                        Accessible.onPressAction: clicked()
                        onClicked: WorkspaceStore.openFolder(PathNames.toUrl(modelData))
                        background: Rectangle {
                            radius: 6
                            color: row.hovered ? Theme.withOpacity(Theme.secondary, 0.1) : "transparent"
                            border.width: row.visualFocus ? 1 : 0
                            border.color: Theme.accent
                        }
                        contentItem: RowLayout {
                            spacing: 8

                            SymbolIcon {
                                symbol: "folder.fill"
                                color: Theme.accent
                            }
                            Label {
                                text: row.text
                                font.pointSize: Theme.body
                                font.weight: Font.Medium
                                color: Theme.primary
                            }
                            Label {
                                Layout.fillWidth: true
                                text: row.modelData
                                font.pointSize: Theme.caption
                                color: Theme.secondary
                                elide: Text.ElideMiddle
                                horizontalAlignment: Text.AlignRight
                            }
                        }
                    }
                }
            }
        }
    }
}
