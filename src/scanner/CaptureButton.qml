pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// A ring around a disc. As wide as its column; the circles are in the middle.
Item {
    id: button

    required property ScreenItem screen
    required property color discColor
    required property string name // spoken
    required property string description // spoken

    signal tapped

    implicitHeight: Metrics.ring + Metrics.captureBottom

    Tappable {
        id: area

        objectName: "captureArea"
        anchors.horizontalCenter: parent.horizontalCenter
        width: Metrics.ring
        height: Metrics.ring
        Accessible.role: Accessible.Button
        Accessible.name: button.name
        Accessible.description: button.description
        Accessible.focusable: true
        Accessible.onPressAction: area.tapped()
        onTapped: button.tapped()

        Tap { control: area }

        // Half of the line lies on each side of the circle's edge.
        Rectangle {
            objectName: "ring"
            anchors.fill: parent
            anchors.margins: -Metrics.ringLine / 2
            radius: width / 2
            color: "transparent"
            border { color: "white"; width: Metrics.ringLine }
            antialiasing: true
        }
        Rectangle {
            objectName: "disc"
            anchors.centerIn: parent
            width: Metrics.disc
            height: Metrics.disc
            radius: width / 2
            color: button.discColor
            antialiasing: true
        }
        FocusRing {
            screen: button.screen
            control: area
            anchors.margins: -6
            radius: width / 2
        }
    }
}
