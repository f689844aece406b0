pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// In the place of a picture that does not come: what is wrong with the camera, and what to do. What
// has no room is scrolled to.
Rectangle {
    id: panel

    required property ScreenItem screen
    required property DocumentScanner source
    required property real textScale
    required property bool hasOtherCameras
    required property bool opensPictures

    signal tryAgainTapped
    signal otherCameraTapped
    signal pictureTapped

    readonly property real unit: screen.unit
    // In a narrow frame large words would be broken.
    readonly property real shownScale: Math.min(textScale, Math.max(1, width / 130))
    readonly property string asked: source.askedCamera
    readonly property string file: asked.slice(asked.lastIndexOf("/") + 1)

    readonly property string heading: {
        switch (source.cameraProblem) {
        case "lost":
            return qsTr("The camera was disconnected");
        case "busy":
            return qsTr("Another program uses the camera");
        case "denied":
            return qsTr("This program may not use the camera");
        case "absent":
            return asked === "" ? qsTr("No camera was found")
                                : qsTr("The camera “%1” was not found").arg(asked);
        case "noFile":
            return qsTr("The file “%1” was not found").arg(file);
        case "badFile":
            return qsTr("The file “%1” cannot be shown").arg(file);
        default:
            return qsTr("The camera does not start");
        }
    }
    readonly property string advice: {
        switch (source.cameraProblem) {
        case "lost":
            return qsTr("Plug it in again. It comes back by itself.");
        case "busy":
            return qsTr("Close that program. The camera then starts by itself.");
        case "denied":
            return source.asksAgain
                    ? qsTr("Try again, and allow it when you are asked.")
                    : qsTr("Allow it in the settings of this device, under privacy, or ask whoever looks after the device.");
        case "absent":
            return qsTr("Connect the camera. It starts by itself.");
        case "noFile":
            return qsTr("It was chosen in place of a camera. Check its name.");
        case "badFile":
            return qsTr("It was chosen in place of a camera, but is no picture or video that can be opened.");
        default:
            return qsTr("It is tried again by itself. If that does not help, unplug the camera and plug it in again.");
        }
    }
    readonly property string said: heading + ". " + advice

    color: "black"
    Accessible.role: Accessible.AlertMessage
    Accessible.name: said
    onSaidChanged: Qt.callLater(say)
    Component.onCompleted: say()

    // Later: once both of its parts have changed.
    function say() {
        screen.announce(panel);
    }

    Theme {
        id: dark

        choice: "dark"
    }

    // A try may be over before anybody has seen it.
    Timer {
        id: trying

        interval: 800
    }

    component Line: ScreenText {
        width: column.width
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        textScale: panel.shownScale
        unit: panel.unit
        Accessible.ignored: true // the panel says it
    }

    component Button: ActionButton {
        width: column.width
        screen: panel.screen
        theme: dark
        textScale: panel.shownScale
    }

    Flickable {
        id: flick

        // The control that has the focus stays in sight.
        readonly property Item focused: Window.activeFocusItem

        anchors.fill: parent
        contentWidth: width
        contentHeight: Math.max(height, column.height + 2 * column.margin)
        interactive: contentHeight > height
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        onFocusedChanged: {
            for (let item = focused; item; item = item.parent) {
                if (item !== column)
                    continue;
                const top = focused.mapToItem(column, 0, 0).y + column.y;
                contentY = Math.max(top + focused.height + column.margin - height,
                                    Math.min(contentY, top - column.margin), 0);
            }
        }

        Column {
            id: column

            readonly property real margin: 16 * panel.unit

            x: (flick.width - width) / 2
            y: (flick.contentHeight - height) / 2
            width: Math.max(0, Math.min(flick.width - 2 * margin, 420 * panel.unit))
            spacing: Metrics.stackSpacing * panel.unit

            Line {
                objectName: "problem"
                text: panel.heading
                color: dark.text
                pointSize: Metrics.bodyFont
                font.weight: Font.DemiBold
            }
            Line {
                objectName: "problemAdvice"
                text: panel.advice
                color: dark.text
                pointSize: Metrics.smallFont
            }
            Item {
                width: 1
                height: 4 * panel.unit
            }
            Button {
                objectName: "tryAgain"
                text: trying.running ? qsTr("Trying again…") : qsTr("Try again")
                onTapped: {
                    if (trying.running)
                        return;
                    trying.start();
                    panel.tryAgainTapped();
                }
            }
            Button {
                objectName: "otherCamera"
                visible: panel.hasOtherCameras
                isPrimary: false
                text: qsTr("Choose another camera")
                onTapped: panel.otherCameraTapped()
            }
            Button {
                objectName: "usePicture"
                visible: panel.opensPictures
                isPrimary: false
                text: qsTr("Use a picture")
                onTapped: panel.pictureTapped()
            }
            Line {
                objectName: "problemCause"
                visible: text !== ""
                text: panel.source.problemCause
                color: dark.secondaryText
                pointSize: 12
            }
        }
    }
}
