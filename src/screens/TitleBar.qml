pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// A close symbol, the title, and an invisible symbol that keeps the title in the middle.
Item {
    id: bar

    required property ScreenItem screen
    required property string title
    required property string closeName // spoken
    required property color color
    required property real textScale

    signal closeTapped

    readonly property real unit: screen.unit
    readonly property bool wraps: textScale > 1 || screen.adaptsToSize
    readonly property real rowHeight: Math.max(close.height, titleText.implicitHeight)

    implicitHeight: (Metrics.barTop + Metrics.barBottom) * unit + rowHeight

    component Symbol: Item {
        property alias color: strokes.color

        y: Metrics.barTop * bar.unit + (bar.rowHeight - height) / 2
        width: Metrics.symbol * bar.unit
        height: (Metrics.symbol + 2 * Metrics.symbolPadding) * bar.unit

        MultiplySymbol {
            id: strokes

            y: Metrics.symbolPadding * bar.unit
            width: Metrics.symbol * bar.unit
            height: Metrics.symbol * bar.unit
        }
    }

    Symbol {
        id: close

        objectName: "close"
        anchors.left: parent.left
        color: bar.color

        Tappable {
            id: closeArea

            objectName: "closeArea"
            anchors.centerIn: parent
            width: Metrics.touchTarget * bar.unit
            height: Metrics.touchTarget * bar.unit
            Accessible.role: Accessible.Button
            Accessible.name: bar.closeName
            Accessible.focusable: true
            Accessible.onPressAction: closeArea.tapped()
            onTapped: bar.closeTapped()

            Tap { control: closeArea }
            FocusRing {
                screen: bar.screen
                control: closeArea
                anchors.margins: 8 * bar.unit
                radius: 6 * bar.unit
            }
        }
    }

    ScreenText {
        id: titleText

        objectName: "title"
        anchors {
            left: close.right
            right: balance.left
            leftMargin: Metrics.stackSpacing * bar.unit
            rightMargin: Metrics.stackSpacing * bar.unit
        }
        y: Metrics.barTop * bar.unit + (bar.rowHeight - height) / 2
        horizontalAlignment: Text.AlignHCenter
        elide: Text.ElideRight
        // Who asks for larger texts, or for narrow windows, must not lose words by it.
        maximumLineCount: bar.wraps ? 2 : 1
        wrapMode: bar.wraps ? Text.Wrap : Text.NoWrap
        text: bar.title
        color: bar.color
        pointSize: Metrics.titleFont
        textScale: bar.textScale
        unit: bar.unit
        font.weight: Font.DemiBold
        Accessible.role: Accessible.Heading
        Accessible.name: bar.title
    }

    Symbol {
        id: balance

        objectName: "balance"
        anchors.right: parent.right
        opacity: 0
        color: bar.color
        Accessible.ignored: true
    }
}
