import QtQuick
import QtQuick.Controls

// The orange dot of a document with unsaved changes.
Rectangle {
    id: dot

    implicitWidth: 8
    implicitHeight: 8
    radius: 4
    color: Theme.orange
    Accessible.role: Accessible.Indicator
    Accessible.name: "Modifications non enregistrées"
    ToolTip.visible: hover.hovered
    ToolTip.text: "Modifications non enregistrées"
    ToolTip.delay: 600

    HoverHandler {
        id: hover
    }
}
