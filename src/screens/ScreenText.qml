import QtQuick

// Host texts are shown as they stand: no markup. textScale: 1 is the size as designed. unit: as
// ScreenItem.unit.
Text {
    required property real pointSize
    property real textScale: 1
    property real unit: 1

    font.pixelSize: Math.max(1, Math.round(pointSize * textScale * unit))
    textFormat: Text.PlainText
    renderType: Text.NativeRendering
}
