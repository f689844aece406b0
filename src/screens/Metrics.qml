pragma Singleton
import QtQuick

// Lengths of the screens, in points of the design: ScreenItem.unit says how many points one is.
QtObject {
    readonly property real stackSpacing: 8 // for a stack that sets none
    readonly property real edge: 20 // content to the left and right edges
    readonly property real sectionSpacing: 56
    readonly property real compactSpacing: 12 // instead, where there is little height
    readonly property real touchTarget: 44 // least side of what a finger must hit

    readonly property real barTop: 6
    readonly property real barBottom: 12
    readonly property real symbol: 11
    readonly property real symbolPadding: 6 // above and below
    readonly property real titleFont: 16

    readonly property real bodyFont: 17
    readonly property real columnSpacing: 80
    readonly property real pictureInset: 2
    readonly property real frameRadius: 25
    readonly property real ring: 64
    readonly property real ringLine: 3
    readonly property real disc: 48
    readonly property real captureBottom: 16

    readonly property real smallFont: 14
    readonly property real buttonPadding: 10 // above and below
    readonly property real widestButton: 320 // where a screen adapts to its size
    readonly property real buttonColumn: 140 // width of buttons above each other, beside a picture
}
