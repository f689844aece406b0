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

    readonly property color buttonTint: "#D4E8FF"
    readonly property color buttonAccent: "#1882FF"

    focus: true
    LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true
    Accessible.role: Accessible.Pane
    Accessible.name: root.title

    onEscapePressed: root.dismissBy(root.dismiss)

    Rectangle {
        objectName: "background"
        anchors.fill: parent
        color: "white"
    }

    PointHandler {
        onActiveChanged: if (active) root.isKeyboardInUse = false
    }

    Item {
        id: content

        objectName: "content"
        x: root.safeAreaMargins.left + Metrics.edge
        y: root.safeAreaMargins.top
        width: root.width - root.safeAreaMargins.left - root.safeAreaMargins.right - 2 * Metrics.edge
        height: root.height - root.safeAreaMargins.top - root.safeAreaMargins.bottom

        TitleBar {
            id: bar

            objectName: "titleBar"
            width: parent.width
            height: implicitHeight
            screen: root
            title: root.title
            closeName: qsTr("Close")
            color: "black"
            textScale: root.textScale
            onCloseTapped: root.dismissBy(root.dismiss)
        }

        Item {
            id: pictureArea

            objectName: "pictureArea"
            anchors.top: bar.bottom
            anchors.topMargin: Metrics.sectionSpacing
            width: parent.width
            height: Math.max(0, parent.height - bar.height - buttons.height
                             - 2 * Metrics.sectionSpacing)

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
                color: "black"
                pointSize: Metrics.smallFont
                textScale: root.textScale
                font.weight: Font.Medium
            }
        }

        Item {
            id: buttons

            readonly property real buttonWidth: Math.max(0, (width - Metrics.stackSpacing) / 2)
            readonly property real buttonHeight: Math.max(retake.implicitHeight, confirm.implicitHeight)

            objectName: "buttons"
            anchors.top: pictureArea.bottom
            anchors.topMargin: Metrics.sectionSpacing
            width: parent.width
            height: buttonHeight

            PillButton {
                id: retake

                objectName: "retake"
                anchors.left: parent.left
                width: buttons.buttonWidth
                height: buttons.buttonHeight
                screen: root
                text: qsTr("Retake")
                color: root.buttonTint
                textColor: root.buttonAccent
                textScale: root.textScale
                onTapped: root.perform(root.didTapRetake)
            }

            PillButton {
                id: confirm

                objectName: "confirm"
                anchors.right: parent.right
                width: buttons.buttonWidth
                height: buttons.buttonHeight
                screen: root
                text: qsTr("Confirm")
                color: root.buttonAccent
                textColor: "white"
                textScale: root.textScale
                onTapped: root.perform(root.didTapConfirm)
            }
        }
    }
}
