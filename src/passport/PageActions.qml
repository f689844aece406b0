pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// The buttons of a page: beside each other where their texts have room, else above each other.
Grid {
    id: actions

    required property ScreenItem screen

    readonly property var buttons: Array.from(children).filter(button => button.visible)
    readonly property real longest: Math.max(0, ...buttons.map(button => button.implicitWidth))
    readonly property real room: parent ? parent.width : 0
    readonly property bool areBeside:
        buttons.length * longest + (buttons.length - 1) * spacing <= room
    // For each of them.
    readonly property real buttonWidth: Math.min(
        320 * screen.unit,
        areBeside ? (room - (buttons.length - 1) * spacing) / Math.max(1, buttons.length) : room)

    // What Return and Space do at once.
    function focusFirst() {
        buttons[0].nextItemInFocusChain().focus = true;
    }

    anchors.horizontalCenter: parent?.horizontalCenter
    columns: areBeside ? Math.max(1, buttons.length) : 1
    spacing: Metrics.stackSpacing * screen.unit
}
