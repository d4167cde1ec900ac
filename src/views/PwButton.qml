import QtQuick
import QtQuick.Controls

// The one button of the views: the screen reader's press action clicks it, and an icon-only
// button is named after its tooltip.
Button {
    id: button

    property string toolTipText

    ToolTip.visible: toolTipText !== "" && hovered
    ToolTip.text: toolTipText
    ToolTip.delay: 600
    Accessible.name: text !== "" ? text : toolTipText
    Accessible.onPressAction: {
        if (checkable) {
            toggle();
            toggled();
        } else {
            clicked();
        }
    }
}
