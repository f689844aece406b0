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

    readonly property real rowHeight: Math.max(close.height, titleText.implicitHeight)

    implicitHeight: Metrics.barTop + rowHeight + Metrics.barBottom

    component Symbol: Item {
        property alias color: strokes.color

        y: Metrics.barTop + (bar.rowHeight - height) / 2
        width: Metrics.symbol
        height: Metrics.symbol + 2 * Metrics.symbolPadding

        MultiplySymbol {
            id: strokes

            y: Metrics.symbolPadding
            width: Metrics.symbol
            height: Metrics.symbol
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
            width: Metrics.touchTarget
            height: Metrics.touchTarget
            Accessible.role: Accessible.Button
            Accessible.name: bar.closeName
            Accessible.focusable: true
            Accessible.onPressAction: closeArea.tapped()
            onTapped: bar.closeTapped()

            Tap { control: closeArea }
            FocusRing {
                screen: bar.screen
                control: closeArea
                anchors.margins: 8
                radius: 6
            }
        }
    }

    ScreenText {
        id: titleText

        objectName: "title"
        anchors {
            left: close.right
            right: balance.left
            leftMargin: Metrics.stackSpacing
            rightMargin: Metrics.stackSpacing
        }
        y: Metrics.barTop + (bar.rowHeight - height) / 2
        horizontalAlignment: Text.AlignHCenter
        elide: Text.ElideRight
        maximumLineCount: 1
        text: bar.title
        color: bar.color
        pointSize: Metrics.titleFont
        textScale: bar.textScale
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
