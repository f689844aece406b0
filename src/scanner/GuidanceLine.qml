pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// What to do next, on a dark pill with a symbol; long texts wrap. Nothing while there is nothing to
// say. As wide as its room; the pill is in the middle.
Item {
    id: line

    required property ScreenItem screen
    required property real textScale
    required property string text
    required property string spokenText
    required property string symbol // as SymbolIcon; may be empty
    property bool isAnnounced: true
    property bool canBeDismissed: false
    property string dismissName // spoken

    signal dismissed

    readonly property real unit: screen.unit
    readonly property real padding: 12 * unit
    readonly property real symbolSide: 1.25 * label.font.pixelSize
    readonly property real symbolRoom: symbol === "" ? 0 : symbolSide + Metrics.stackSpacing * unit

    implicitHeight: row.height
    visible: text !== ""
    Accessible.role: Accessible.AlertMessage
    Accessible.name: spokenText
    Accessible.ignored: text === ""
    onSpokenTextChanged: Qt.callLater(say)

    // Later: the other properties change with the text, one after the other.
    function say() {
        if (isAnnounced && text !== "")
            screen.announce(line);
    }

    Row {
        id: row

        anchors.horizontalCenter: parent.horizontalCenter
        spacing: Metrics.stackSpacing * line.unit

        Rectangle {
            objectName: "guidancePill"
            anchors.verticalCenter: parent.verticalCenter
            width: label.width + line.symbolRoom + 2 * line.padding
            height: label.height + 12 * line.unit
            radius: Math.min(height / 2, 18 * line.unit)
            antialiasing: true
            color: "#2C2C2E"

            SymbolIcon {
                anchors { left: parent.left; leftMargin: line.padding; verticalCenter: parent.verticalCenter }
                width: line.symbolSide
                height: width
                visible: line.symbol !== ""
                symbol: line.symbol
                color: "white"
            }

            ScreenText {
                id: label

                objectName: "guidance"
                anchors { right: parent.right; rightMargin: line.padding; verticalCenter: parent.verticalCenter }
                width: Math.min(Math.ceil(implicitWidth),
                                Math.max(0, line.width - line.symbolRoom - 2 * line.padding
                                         - (cross.visible ? cross.width + row.spacing : 0)))
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.Wrap
                text: line.text
                color: "white"
                pointSize: Metrics.smallFont
                textScale: line.textScale
                unit: line.unit
                Accessible.ignored: true // the line says it
            }
        }

        IconButton {
            id: cross

            objectName: "guidanceCross"
            anchors.verticalCenter: parent.verticalCenter
            visible: line.canBeDismissed
            screen: line.screen
            symbol: "cross"
            name: line.dismissName
            onTapped: line.dismissed()
        }
    }
}
