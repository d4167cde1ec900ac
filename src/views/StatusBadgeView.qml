import QtQuick
import QtQuick.Controls

// A small capsule holding a count.
Rectangle {
    id: badge

    property int count
    property bool isAccent: false

    implicitWidth: Math.max(label.implicitWidth + 12, implicitHeight)
    implicitHeight: label.implicitHeight + 4
    radius: height / 2
    color: isAccent ? Theme.accent : Theme.withOpacity(Theme.secondary, 0.2)
    Accessible.role: Accessible.StaticText
    Accessible.name: String(count)

    Label {
        id: label

        anchors.centerIn: parent
        text: badge.count
        font.pointSize: 11
        font.weight: Font.DemiBold
        color: badge.isAccent ? "white" : Theme.secondary
    }
}
