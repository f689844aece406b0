pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// A picture under a title, with two buttons; the host decides what they do. Only the close symbol
// closes the screen.
ScreenItem {
    id: root

    // Shown as it stands.
    required property string title
    // What a scanning screen delivered, a QImage, or the URL of a local file; otherwise a
    // placeholder.
    property var image
    required property var didTapRetake
    required property var didTapConfirm
    // A function that closes the screen; without it, what presents the screen is closed.
    property var dismiss
    property real textScale: 1
    // Colours in place of those as designed; null: these.
    property Theme theme: null

    readonly property color ink: theme?.text ?? "black"
    readonly property color buttonTint: theme?.tint ?? "#D4E8FF"
    readonly property color buttonAccent: theme?.accent ?? "#1882FF"

    focus: true
    LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true
    Accessible.role: Accessible.Pane
    Accessible.name: root.title

    onEscapePressed: root.dismissBy(root.dismiss)

    Rectangle {
        objectName: "background"
        anchors.fill: parent
        color: root.theme?.background ?? "white"
    }

    PointHandler {
        onActiveChanged: if (active) root.isKeyboardInUse = false
    }

    Item {
        id: content

        readonly property real edge: Metrics.edge * root.unit
        // Without a safe area a screen that adapts keeps its buttons off the edge.
        readonly property real foot: root.adaptsToSize
            ? Math.max(root.safeAreaMargins.bottom, Metrics.compactSpacing * root.unit)
            : root.safeAreaMargins.bottom
        readonly property real spacing: root.unit * (root.isCompact ? Metrics.compactSpacing
                                                                    : Metrics.sectionSpacing)
        readonly property bool isBeside: root.isCompact && width > 1.5 * height

        objectName: "content"
        x: root.safeAreaMargins.left + edge
        y: root.safeAreaMargins.top
        width: root.width - root.safeAreaMargins.left - root.safeAreaMargins.right - 2 * edge
        height: root.height - root.safeAreaMargins.top - foot

        TitleBar {
            id: bar

            objectName: "titleBar"
            width: parent.width
            height: implicitHeight
            screen: root
            title: root.title
            closeName: qsTr("Close")
            color: root.ink
            textScale: root.textScale
            onCloseTapped: root.dismissBy(root.dismiss)
        }

        Item {
            id: pictureArea

            objectName: "pictureArea"
            anchors.left: parent.left
            anchors.top: bar.bottom
            anchors.topMargin: content.spacing
            width: content.isBeside ? Math.max(0, parent.width - buttons.width - content.edge)
                                    : parent.width
            height: Math.max(0, parent.height - bar.height - content.spacing
                             - (content.isBeside ? 0 : buttons.height + content.spacing))

            PreviewPhoto {
                id: photo

                objectName: "photo"
                anchors.fill: parent
                image: root.image
                visible: hasPicture
                Accessible.role: Accessible.Graphic
                Accessible.name: qsTr("Photo")
            }

            ScreenText {
                objectName: "placeholder"
                anchors.centerIn: parent
                width: Math.min(implicitWidth, parent.width)
                visible: !photo.hasPicture
                wrapMode: Text.Wrap
                text: qsTr("Image not provided")
                color: root.ink
                pointSize: Metrics.smallFont
                textScale: root.textScale
                unit: root.unit
                font.weight: Font.Medium
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }

        // Beside each other below the picture; above each other beside it.
        Item {
            id: buttons

            readonly property real spacing: Metrics.stackSpacing * root.unit
            readonly property real widest: root.adaptsToSize ? Metrics.widestButton * root.unit
                                                             : Infinity
            readonly property real buttonWidth:
                content.isBeside ? width
                                 : Math.min(widest, Math.max(0, (width - spacing) / 2))
            readonly property real buttonHeight: Math.max(retake.implicitHeight, confirm.implicitHeight)
            // From the sides; what is left of the width, where the buttons do not fill it.
            readonly property real inset: content.isBeside
                ? 0 : Math.max(0, (width - spacing) / 2 - buttonWidth)
            readonly property int textSize: Math.min(retake.fittingSize, confirm.fittingSize)

            objectName: "buttons"
            anchors.right: parent.right
            y: content.isBeside ? pictureArea.y + Math.round((pictureArea.height - height) / 2)
                                : pictureArea.y + pictureArea.height + content.spacing
            width: content.isBeside
                ? Math.min(0.4 * parent.width,
                           Metrics.buttonColumn * root.unit * Math.max(1, root.textScale))
                : parent.width
            height: content.isBeside ? 2 * buttonHeight + spacing : buttonHeight

            PillButton {
                id: retake

                objectName: "retake"
                anchors.left: parent.left
                anchors.leftMargin: buttons.inset
                width: buttons.buttonWidth
                height: buttons.buttonHeight
                screen: root
                text: qsTr("Retake")
                color: root.buttonTint
                textColor: root.theme?.textOnTint ?? root.buttonAccent
                textScale: root.textScale
                textSize: buttons.textSize
                onTapped: root.perform(root.didTapRetake)
            }

            PillButton {
                id: confirm

                objectName: "confirm"
                anchors.right: parent.right
                anchors.rightMargin: buttons.inset
                y: content.isBeside ? buttons.buttonHeight + buttons.spacing : 0
                width: buttons.buttonWidth
                height: buttons.buttonHeight
                screen: root
                text: qsTr("Confirm")
                color: root.buttonAccent
                textColor: root.theme?.textOnAccent ?? "white"
                textScale: root.textScale
                textSize: buttons.textSize
                onTapped: root.perform(root.didTapConfirm)
            }
        }
    }
}
