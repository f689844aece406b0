pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// A capsule with a text in the middle.
Rectangle {
    id: button

    required property ScreenItem screen
    required property string text
    required property color textColor
    required property real textScale

    signal tapped

    implicitHeight: label.implicitHeight + 2 * Metrics.buttonPadding
    radius: height / 2
    antialiasing: true

    ScreenText {
        id: label

        objectName: "label"
        anchors.centerIn: parent
        width: parent.width - 2 * Metrics.buttonPadding
        horizontalAlignment: Text.AlignHCenter
        // A large or long text shrinks before it is cut.
        fontSizeMode: Text.HorizontalFit
        minimumPixelSize: Metrics.smallFont
        elide: Text.ElideRight
        text: button.text
        color: button.textColor
        pointSize: Metrics.smallFont
        textScale: button.textScale
        font.weight: Font.Medium
        Accessible.ignored: true // the button says it
    }

    Tappable {
        id: area

        objectName: "area"
        anchors.centerIn: parent
        width: parent.width
        height: Math.max(parent.height, Metrics.touchTarget)
        Accessible.role: Accessible.Button
        Accessible.name: button.text
        Accessible.focusable: true
        Accessible.onPressAction: area.tapped()
        onTapped: button.tapped()

        Tap { control: area }
    }

    FocusRing {
        screen: button.screen
        control: area
        anchors.margins: -4
        radius: height / 2
    }
}
