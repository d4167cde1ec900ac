import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Pagewell

ApplicationWindow {
    id: window

    width: 1100
    height: 720
    minimumWidth: 800
    minimumHeight: 550
    visible: true
    title: "Pagewell"

    ColumnLayout {
        anchors.centerIn: parent
        spacing: 6

        Label {
            Layout.alignment: Qt.AlignHCenter
            text: WorkspaceStore.rootURL.toString() === "" ? "" : decodeURIComponent(WorkspaceStore.rootURL.toString().replace("file://", ""))
            font.pointSize: 14
        }

        Label {
            Layout.alignment: Qt.AlignHCenter
            text: WorkspaceStore.selectedFileURL.toString() === "" ? "" : decodeURIComponent(WorkspaceStore.selectedFileURL.toString().replace(/^.*\//, ""))
            opacity: 0.7
        }
    }
}
