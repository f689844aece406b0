pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// A capsule that is tapped as a whole. What it shows is its user's.
Rectangle {
    id: pill

    required property ScreenItem screen
    required property string text // spoken
    readonly property alias isPressed: tap.pressed

    signal tapped

    radius: height / 2
    antialiasing: true

    Tappable {
        id: area

        objectName: "area"
        anchors.centerIn: parent
        width: parent.width
        height: Math.max(parent.height, Metrics.touchTarget * pill.screen.unit)
        Accessible.role: Accessible.Button
        Accessible.name: pill.text
        Accessible.focusable: true
        Accessible.onPressAction: area.tapped()
        onTapped: pill.tapped()

        Tap {
            id: tap

            control: area
        }
    }

    FocusRing {
        screen: pill.screen
        control: area
        anchors.margins: -4 * pill.screen.unit
        radius: pill.radius - anchors.margins
    }
}
