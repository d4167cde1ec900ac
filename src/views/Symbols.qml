pragma Singleton
import QtQuick

// The one table from symbol names to the bundled icons that draw them.
QtObject {
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
            "text.alignleft": "text-left",
            "clock.arrow.circlepath": "clock-history",
            "exclamationmark.triangle.fill": "exclamation-triangle-fill",
            "doc.badge.xmark": "file-earmark-x",
            "arrow.backward": "arrow-left",
            "arrow.forward": "arrow-right",
            "pencil": "pencil",
            "folder.badge.arrow": "folder-symlink",
            "arrow.uturn.backward": "arrow-counterclockwise",
            "link": "link-45deg",
            "xmark": "x-lg",
            "textformat": "fonts",
            "textformat.abc": "alphabet",
            "regex": "regex"
        })

    // The icon of `symbol`, or an empty source for a name the table does not know.
    function source(symbol) {
        const file = files[symbol];
        return file ? "qrc:/qt/qml/Pagewell/icons/" + file + ".svg" : "";
    }
}
