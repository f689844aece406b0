import QtQuick
import Kestrelid

// A press that is let go within the control taps it, however long it lasted: hands may be slow. Qt
// 6.4 also mistakes the time of a press that comes with its move, as from many touchscreens.
TapHandler {
    required property Tappable control

    gesturePolicy: TapHandler.ReleaseWithinBounds
    longPressThreshold: 1e6 // s
    onTapped: control.tapped()
}
