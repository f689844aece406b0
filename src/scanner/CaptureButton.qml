// Components are not bound: a Loader of Qt 6.4 makes nothing of such ones.
import QtQuick
import Kestrelid

// A ring around a disc. As wide as its column; the circles are in the middle. progress: of the time
// until a photo is taken by itself; the ring fills meanwhile.
Item {
    id: button

    required property ScreenItem screen
    required property color discColor
    required property string name // spoken
    required property string description // spoken
    property bool capturesByItself: false
    property real progress: 0

    readonly property real unit: screen.unit

    signal tapped

    implicitHeight: (Metrics.ring + Metrics.captureBottom) * unit

    Tappable {
        id: area

        objectName: "captureArea"
        anchors.horizontalCenter: parent.horizontalCenter
        width: Metrics.ring * button.unit
        height: Metrics.ring * button.unit
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
            anchors.margins: -Metrics.ringLine * button.unit / 2
            radius: width / 2
            color: "transparent"
            border { color: "white"; width: Metrics.ringLine * button.unit }
            antialiasing: true
        }
        Loader {
            active: button.capturesByItself
            anchors.fill: parent
            anchors.margins: -5 * button.unit
            sourceComponent: CaptureRing {
                objectName: "captureRing"
                visible: progress > 0
                progress: button.progress
                lineWidth: 7 * button.unit
                color: "#22C55E"

                // The looks at the page come five times a second.
                Behavior on progress {
                    enabled: button.progress > 0
                    NumberAnimation { duration: 200 }
                }
            }
        }
        Rectangle {
            objectName: "disc"
            anchors.centerIn: parent
            width: Metrics.disc * button.unit
            height: Metrics.disc * button.unit
            radius: width / 2
            color: button.discColor
            antialiasing: true
        }
        FocusRing {
            screen: button.screen
            control: area
            anchors.margins: -6 * button.unit
            radius: width / 2
        }
    }
}
