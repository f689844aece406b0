import QtQuick
import Kestrelid

// Around a control that has the keyboard's focus, while the keyboard is used.
Rectangle {
    required property Item control
    required property ScreenItem screen

    anchors.fill: parent
    visible: control.activeFocus && screen.isKeyboardInUse
    color: "transparent"
    border { color: "#1882FF"; width: 2 * screen.unit }
}
