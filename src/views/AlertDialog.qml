import QtQuick
import QtQuick.Controls
import Pagewell

// The window's alert: a title, a message, "OK" as the default button, and when `actionText` is
// set, one more button before it.
Dialog {
    id: alert

    property string message
    property string actionText

    signal actionTriggered

    anchors.centerIn: parent
    width: Math.min(440, parent ? parent.width - 80 : 440)
    modal: true
    closePolicy: Popup.CloseOnEscape
    padding: 16
    onOpened: okButton.forceActiveFocus()

    header: Label {
        text: alert.title
        font.pointSize: Theme.headline
        font.bold: true
        color: Theme.primary
        leftPadding: 16
        rightPadding: 16
        topPadding: 14
    }

    Label {
        width: parent.width
        text: alert.message
        wrapMode: Text.Wrap
        font.pointSize: Theme.body
    }

    footer: DialogButtonBox {
        PwButton {
            visible: alert.actionText !== ""
            text: alert.actionText
            DialogButtonBox.buttonRole: DialogButtonBox.ActionRole
            onClicked: {
                alert.actionTriggered();
                alert.close();
            }
        }
        ProminentButton {
            id: okButton

            text: "OK"
            DialogButtonBox.buttonRole: DialogButtonBox.AcceptRole
            Keys.onReturnPressed: clicked()
            Keys.onEnterPressed: clicked()
        }
        onAccepted: alert.close()
    }
}
