pragma Singleton
import QtQuick
import Pagewell

// Colours and text sizes of the views, for the light and the dark appearance. Sizes are in
// points, one device-independent pixel each.
QtObject {
    readonly property bool dark: Appearance.isDark

    readonly property color accent: dark ? "#0A84FF" : "#007AFF"
    readonly property color blue: dark ? "#0A84FF" : "#007AFF"
    readonly property color orange: dark ? "#FF9F0A" : "#FF9500"
    readonly property color red: dark ? "#FF453A" : "#FF3B30"
    readonly property color primary: dark ? "#ECECEC" : "#1D1D1F"
    readonly property color secondary: dark ? "#98989D" : "#6E6E73"
    readonly property color windowBackground: dark ? "#282828" : "#ECECEC"
    readonly property color sidebarBackground: dark ? "#232323" : "#F3F3F3"
    readonly property color contentBackground: dark ? "#1E1E1E" : "#FFFFFF"
    readonly property color separator: dark ? "#3D3D3D" : "#D5D5D5"

    // Text styles of the desktop this was designed on.
    readonly property int title2: 17
    readonly property int headline: 13
    readonly property int body: 13
    readonly property int callout: 12
    readonly property int subheadline: 11
    readonly property int caption: 10
    readonly property int caption2: 10

    readonly property string monospace: "DejaVu Sans Mono"

    function withOpacity(colour, opacity) {
        return Qt.rgba(colour.r, colour.g, colour.b, opacity);
    }
}
