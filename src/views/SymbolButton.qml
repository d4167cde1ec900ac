import QtQuick
import QtQuick.Controls

// A plain button showing one symbol, with its help text as tooltip and accessible name.
PwButton {
    id: button

    property string symbol
    property real symbolSize: 12
    property color symbolColor: Theme.secondary

    flat: true
    padding: 4
    implicitWidth: symbolSize * 1.15 + 2 * padding + 4
    implicitHeight: symbolSize * 1.15 + 2 * padding + 4
    contentItem: Item {
        SymbolIcon {
            anchors.centerIn: parent
            symbol: button.symbol
            size: button.symbolSize
            color: button.symbolColor
            opacity: button.enabled ? 1 : 0.4
        }
    }
    background: Rectangle {
        radius: 4
        color: button.down ? Theme.withOpacity(Theme.secondary, 0.25) : button.hovered ? Theme.withOpacity(Theme.secondary, 0.12) : "transparent"
        border.width: button.visualFocus ? 1 : 0
        border.color: Theme.accent
    }
}
