import QtQuick
import QtQuick.Controls

// One way of reading the search's query, on or off: a symbol that shows its state by its
// background, its name as tooltip and accessible name.
SymbolButton {
    id: toggle

    checkable: true
    padding: 2
    symbolSize: 11
    symbolColor: checked ? Theme.accent : Theme.secondary
    Accessible.role: Accessible.CheckBox
    Accessible.checkable: true
    Accessible.checked: checked
    background: Rectangle {
        radius: 4
        color: toggle.checked ? Theme.withOpacity(Theme.accent, 0.18) : toggle.hovered ? Theme.withOpacity(Theme.secondary, 0.12) : "transparent"
        border.width: toggle.visualFocus || toggle.checked ? 1 : 0
        border.color: toggle.visualFocus ? Theme.accent : Theme.withOpacity(Theme.accent, 0.5)
    }
}
