pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// A button with a text of any length: it grows with its lines.
Pill {
    id: button

    required property Theme theme
    property bool isPrimary: true
    property real textScale: 1

    readonly property real padding: 20 * screen.unit // left and right

    implicitWidth: Math.ceil(label.implicitWidth) + 2 * padding
    implicitHeight: Math.max(Metrics.touchTarget * screen.unit,
                             label.implicitHeight + 2 * Metrics.buttonPadding * screen.unit)
    // A capsule around one line; more lines need their corners.
    radius: Math.min(height / 2, 1.5 * label.font.pixelSize + Metrics.buttonPadding * screen.unit)
    color: isPrimary ? theme.accent : theme.tint
    opacity: enabled ? isPressed ? 0.8 : 1 : 0.4

    ScreenText {
        id: label

        objectName: "label"
        anchors.centerIn: parent
        width: Math.max(0, parent.width - 2 * button.padding)
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        text: button.text
        color: button.isPrimary ? button.theme.textOnAccent : button.theme.textOnTint
        pointSize: Metrics.titleFont
        textScale: button.textScale
        unit: button.screen.unit
        font.weight: Font.Medium
        Accessible.ignored: true // the button says it
    }
}
