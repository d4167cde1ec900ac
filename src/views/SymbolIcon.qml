import QtQuick
import QtQuick.Controls.impl

// A symbol by its name, drawn from the bundled icon set in one colour. `size` is the point size
// of the text the symbol stands beside.
IconImage {
    id: icon

    property string symbol
    property real size: 13
    source: Symbols.source(symbol)
    sourceSize: Qt.size(Math.round(size * 1.15), Math.round(size * 1.15))
    width: sourceSize.width
    height: sourceSize.height
    color: Theme.primary
    Accessible.ignored: true
}
