import QtQuick
import QtQuick.Controls

// The default action of a screen or a sheet: white text (and symbol) on the accent colour.
PwButton {
    id: button

    property string symbol

    leftPadding: 12
    rightPadding: 12
    topPadding: 5
    bottomPadding: 5
    contentItem: Row {
        spacing: 6

        SymbolIcon {
            anchors.verticalCenter: parent.verticalCenter
            visible: button.symbol !== ""
            symbol: button.symbol
            size: button.font.pointSize
            color: "white"
        }
        Label {
            anchors.verticalCenter: parent.verticalCenter
            text: button.text
            font: button.font
            color: "white"
            opacity: button.enabled ? 1 : 0.6
        }
    }
    background: Rectangle {
        radius: 6
        opacity: button.enabled ? 1 : 0.45
        color: button.down ? Qt.darker(Theme.accent, 1.2) : button.hovered ? Qt.lighter(Theme.accent, 1.1) : Theme.accent
        border.width: button.visualFocus ? 2 : 0
        border.color: Qt.lighter(Theme.accent, 1.5)
    }
}
