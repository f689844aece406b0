pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// The photo while it is being checked.
ScreenItem {
    id: root

    required property var photo
    required property Theme theme
    required property real textScale

    signal canceled

    // Who waits longer is told that it goes on.
    readonly property int patience: 8000 // ms
    property bool isLong: false

    focus: true
    adaptsToSize: true
    LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true
    Accessible.role: Accessible.Pane
    Accessible.name: heading.text

    onAppeared: {
        pageActions.focusFirst();
        root.announce(heading);
    }
    onEscapePressed: root.canceled()
    Keys.onPressed: event => event.accepted = frame.takeKey(event)

    Timer {
        interval: root.patience
        running: true
        onTriggered: {
            root.isLong = true;
            root.announce(more);
        }
    }

    Rectangle {
        anchors.fill: parent
        color: root.theme.background
    }

    PointHandler {
        onActiveChanged: if (active) root.isKeyboardInUse = false
    }

    PreviewPhoto {
        id: picture

        objectName: "photo"
        anchors.fill: parent
        image: root.photo
        Accessible.role: Accessible.Graphic
        Accessible.name: qsTr("Photo")
    }

    PageFrame {
        id: frame

        anchors.fill: parent
        screen: root
        actions: pageActions
        isCentered: true
        picture: picture

        ScreenText {
            id: heading

            objectName: "heading"
            width: frame.columnWidth
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: qsTr("Checking the photo...")
            color: root.theme.text
            pointSize: 20
            textScale: root.textScale
            unit: root.unit
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }

        // Steps instead of a smooth turn, which takes a processor that the check needs.
        Row {
            id: dots

            property int step: 0

            anchors.horizontalCenter: parent.horizontalCenter
            spacing: 10 * root.unit

            Timer {
                interval: 400
                repeat: true
                running: root.visible
                onTriggered: dots.step = (dots.step + 1) % 3
            }

            Repeater {
                model: 3

                Rectangle {
                    required property int index

                    width: 12 * root.unit
                    height: width
                    radius: width / 2
                    color: index === dots.step ? root.theme.accent : root.theme.line
                }
            }
        }

        ScreenText {
            id: more

            objectName: "more"
            width: frame.columnWidth
            visible: root.isLong
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: qsTr("This takes longer than usual.")
            color: root.theme.secondaryText
            pointSize: Metrics.titleFont
            textScale: root.textScale
            unit: root.unit
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }

    PageActions {
        id: pageActions

        screen: root

        ActionButton {
            objectName: "cancel"
            width: pageActions.buttonWidth
            screen: root
            theme: root.theme
            textScale: root.textScale
            isPrimary: false
            text: qsTr("Cancel")
            onTapped: root.canceled()
        }
    }
}
