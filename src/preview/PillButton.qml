pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// A capsule with one line of text in the middle.
Pill {
    id: button

    required property color textColor
    required property real textScale
    // The size of text in pixels that fits, and the one that is shown: buttons beside each other
    // share the least that fits.
    readonly property int fittingSize: Math.max(Math.min(wantedSize, leastSize),
                                                Math.min(wantedSize, Math.floor(wantedSize * room / Math.max(1, wanted.advanceWidth))))
    property int textSize: fittingSize

    readonly property int wantedSize: Math.max(1, Math.round(Metrics.smallFont * textScale * screen.unit))
    readonly property int leastSize: Math.round(Metrics.smallFont * screen.unit)
    readonly property real padding: Metrics.buttonPadding * screen.unit
    readonly property real room: Math.max(0, width - 2 * padding - 1) // 1: a text's own rounding

    implicitHeight: label.implicitHeight + 2 * padding

    ScreenText {
        id: label

        objectName: "label"
        anchors.centerIn: parent
        width: parent.width - 2 * button.padding
        horizontalAlignment: Text.AlignHCenter
        elide: Text.ElideRight
        text: button.text
        color: button.textColor
        pointSize: Metrics.smallFont
        font.pixelSize: button.textSize
        font.weight: Font.Medium
        Accessible.ignored: true // the button says it
    }

    TextMetrics {
        id: wanted

        text: button.text
        font.family: label.font.family
        font.weight: label.font.weight
        font.pixelSize: button.wantedSize
    }
}
