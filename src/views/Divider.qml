import QtQuick
import QtQuick.Layouts

// A thin line between two parts of a column or a row.
Rectangle {
    property bool vertical: false

    color: Theme.separator
    implicitWidth: vertical ? 1 : 0
    implicitHeight: vertical ? 0 : 1
    Layout.fillWidth: !vertical
    Layout.fillHeight: vertical
}
