pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// A round button with a symbol. One that is checked shows its colours the other way round.
Item {
    id: button

    required property ScreenItem screen
    required property string symbol // as SymbolIcon
    required property string name // spoken
    property string description // spoken
    property bool isCheckable: false
    property bool isChecked: false
    property bool isDark: true // for black pages, and over pictures

    readonly property color ink: isDark ? "white" : "#1B1B1F"
    readonly property color ground: isDark ? "#2C2C2E" : "#E4E9F0"

    signal tapped

    implicitWidth: Metrics.touchTarget * screen.unit
    implicitHeight: implicitWidth
    opacity: enabled ? tap.pressed ? 0.7 : 1 : 0.4

    Rectangle {
        anchors.fill: parent
        radius: height / 2
        antialiasing: true
        color: button.isChecked ? button.ink : button.ground
    }

    SymbolIcon {
        anchors.centerIn: parent
        width: button.width / 2
        height: button.height / 2
        symbol: button.symbol
        isMirrored: button.symbol === "back" && button.LayoutMirroring.enabled
        color: button.isChecked ? button.ground : button.ink
    }

    Tappable {
        id: area

        objectName: "area"
        anchors.fill: parent
        Accessible.role: Accessible.Button
        Accessible.name: button.name
        Accessible.description: button.description
        Accessible.focusable: true
        Accessible.checkable: button.isCheckable
        Accessible.checked: button.isChecked
        Accessible.onPressAction: area.tapped()
        Accessible.onToggleAction: area.tapped()
        onTapped: button.tapped()

        Tap {
            id: tap

            control: area
        }
    }

    FocusRing {
        screen: button.screen
        control: area
        anchors.margins: -4 * button.screen.unit
        radius: height / 2
    }
}
