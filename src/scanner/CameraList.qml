pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// The cameras to choose from, over the screen. Up and Down go from one to the next; Escape, a tap
// beside it, and leaving it by Tab close it.
FocusScope {
    id: list

    required property ScreenItem screen
    required property real textScale
    required property var names
    required property string current

    signal chosen(name: string)
    signal closed

    readonly property real unit: screen.unit

    function step(by: int) {
        for (let index = 0; index < rows.count; ++index) {
            const next = rows.itemAt((index + by + rows.count) % rows.count);
            if (rows.itemAt(index).area.activeFocus)
                return next.area.forceActiveFocus(Qt.TabFocusReason);
        }
    }

    Accessible.role: Accessible.PopupMenu
    Accessible.name: qsTr("Cameras")
    Keys.onUpPressed: step(-1)
    Keys.onDownPressed: step(1)
    onActiveFocusChanged: if (!activeFocus) closed()
    Component.onCompleted: {
        const at = Math.max(0, names.indexOf(current));
        rows.itemAt(at).area.forceActiveFocus(screen.isKeyboardInUse ? Qt.TabFocusReason : Qt.OtherFocusReason);
    }

    component CameraRow: Item {
        id: row

        required property string modelData
        readonly property bool isCurrent: modelData === list.current
        readonly property alias area: touched

        width: card.width
        height: Math.max(Metrics.touchTarget * list.unit, label.height + 16 * list.unit)

        ScreenText {
            id: label

            anchors {
                left: parent.left; leftMargin: 44 * list.unit
                right: parent.right; rightMargin: 16 * list.unit
                verticalCenter: parent.verticalCenter
            }
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignLeft
            text: row.modelData
            color: "white"
            pointSize: Metrics.titleFont
            textScale: list.textScale
            unit: list.unit
            Accessible.ignored: true // the area says it
        }

        SymbolIcon {
            anchors { left: parent.left; leftMargin: 12 * list.unit; verticalCenter: parent.verticalCenter }
            width: 20 * list.unit
            height: width
            visible: row.isCurrent
            symbol: "check"
            color: "white"
        }

        Tappable {
            id: touched

            objectName: "camera " + row.modelData
            anchors.fill: parent
            Accessible.role: Accessible.MenuItem
            Accessible.name: row.modelData
            Accessible.focusable: true
            Accessible.checkable: true
            Accessible.checked: row.isCurrent
            Accessible.onPressAction: touched.tapped()
            onTapped: list.chosen(row.modelData)

            Tap { control: touched }
        }

        FocusRing {
            screen: list.screen
            control: touched
            anchors.margins: 4 * list.unit
            radius: 8 * list.unit
        }
    }

    Rectangle {
        anchors.fill: parent
        color: "#99000000"

        TapHandler {
            longPressThreshold: 1e6 // s; as Tap
            onTapped: list.closed()
        }
    }

    Rectangle {
        id: card

        anchors.centerIn: parent
        width: Math.max(0, Math.min(parent.width - 2 * Metrics.edge, 360 * list.unit))
        height: Math.max(0, Math.min(parent.height - 2 * Metrics.edge, column.height + 2 * column.y))
        radius: 14 * list.unit
        color: "#2C2C2E"

        // A tap between the rows closes nothing.
        TapHandler {
            gesturePolicy: TapHandler.ReleaseWithinBounds
        }

        Flickable {
            anchors.fill: parent
            contentHeight: column.height + 2 * column.y
            interactive: contentHeight > height
            boundsBehavior: Flickable.StopAtBounds
            clip: true

            Column {
                id: column

                y: 8 * list.unit

                Repeater {
                    id: rows

                    model: list.names
                    delegate: CameraRow {}
                }
            }
        }
    }
}
