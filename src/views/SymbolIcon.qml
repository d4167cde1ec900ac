import QtQuick
import QtQuick.Controls.impl

// A symbol by its name, drawn from the bundled icon set in one colour. `size` is the point size
// of the text the symbol stands beside.
IconImage {
    id: icon

    property string symbol
    property real size: 13
    // Names of the symbols, and the icon that draws each.
    readonly property var files: ({
            "folder": "folder",
            "folder.fill": "folder-fill",
            "folder.badge.gearshape": "folder2-open",
            "doc": "file-earmark",
            "doc.text": "file-earmark-text",
            "doc.text.fill": "file-earmark-text-fill",
            "doc.text.magnifyingglass": "search",
            "doc.badge.plus": "file-earmark-plus",
            "chart.bar.doc.horizontal": "file-earmark-bar-graph",
            "chevron.down": "chevron-down",
            "chevron.right": "chevron-right",
            "arrow.clockwise": "arrow-clockwise",
            "magnifyingglass": "search",
            "xmark.circle.fill": "x-circle-fill",
            "trash": "trash",
            "square.and.arrow.down.fill": "floppy-fill",
            "checkmark.circle": "check-circle",
            "sidebar.right": "layout-sidebar-reverse",
            "list.bullet.indent": "list-nested",
            "text.alignleft": "text-left"
        })

    source: files[symbol] ? "icons/" + files[symbol] + ".svg" : ""
    sourceSize: Qt.size(Math.round(size * 1.15), Math.round(size * 1.15))
    width: sourceSize.width
    height: sourceSize.height
    color: Theme.primary
    Accessible.ignored: true
}
