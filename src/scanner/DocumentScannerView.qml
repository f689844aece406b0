pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// The scanning screen: the live picture in a frame of brackets that turn green while a passport is
// in view, and a button that takes a photo. It never closes by itself.
ScreenItem {
    id: root

    // Gets each photo, or null if taking it failed. Read when the button is tapped.
    required property var completion
    // Changes nothing on the screen.
    property bool isPresented: false
    // A function that closes the screen; without it, what presents the screen is closed.
    property var dismiss
    // A camera's name, or the path of a picture or video file that stands for one; empty: the host's
    // choice, else the first camera. Counts when the screen is first shown.
    property string camera
    // Whether machine-readable zones are read. Counts when the screen is first shown.
    property bool readsZone: false
    // What the frames say of the zone in view, as it grows; null while there is none. Personal data.
    property alias zone: scanner.zone
    // What the camera is doing: "idle", "starting", "live", "lost" (it comes back by itself), "busy",
    // "failed", "denied" or "absent".
    property alias cameraState: scanner.cameraState
    // Why, in one line for whoever looks after the machine; may be empty.
    property alias cameraCause: scanner.cameraCause
    // What can be changed of the camera that runs: objects with `control` ("torch", "zoom", "focus",
    // "exposure"), `value` and `step` from 0 to 1, `hasAutomatic`, `isAutomatic`. Empty while none runs.
    property alias controls: scanner.controls
    // The cameras, best first, as a list model with the roles `name`, `position` ("back", "front",
    // "external" or "unknown"), `present`, `infrared` and `obstacle`: why it cannot be used, or
    // empty. Those that were unplugged stay at its end.
    property alias cameras: scanner.cameras
    // The name of the one that is shown, or is to be.
    property alias currentCamera: scanner.currentCamera
    property real textScale: 1

    // Goes on with the camera of that name. A name that no camera has changes nothing.
    function switchCamera(name: string) {
        scanner.switchCamera(name)
    }

    focus: true
    LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true
    Accessible.role: Accessible.Pane
    Accessible.name: bar.title

    onAppeared: scanner.appear()
    onEscapePressed: root.dismissBy(root.dismiss)
    onActivated: scanner.capture(root.completion)

    // value: from 0 to 1; undefined or null leaves the choice to the camera. What it has not is ignored.
    function setControl(name, value) {
        scanner.setControl(name, value);
    }

    DocumentScanner {
        id: scanner

        camera: root.camera
        readsZone: root.readsZone
    }

    Rectangle {
        objectName: "background"
        anchors.fill: parent
        color: "black"
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
            title: qsTr("Scan your passport")
            closeName: qsTr("Close")
            color: "white"
            textScale: root.textScale
            onCloseTapped: root.dismissBy(root.dismiss)
        }

        Item {
            id: frame

            objectName: "frame"
            anchors.top: bar.bottom
            anchors.topMargin: Metrics.sectionSpacing
            width: parent.width
            height: Math.max(0, parent.height - bar.height - Metrics.sectionSpacing
                             - Metrics.columnSpacing - captureButton.height)

            // A new surface for each time that access is granted.
            Repeater {
                model: scanner.showsPreview ? 1 : 0

                Item {
                    anchors.fill: parent

                    CameraPreview {
                        objectName: "preview"
                        anchors.fill: parent
                        anchors.margins: Metrics.pictureInset
                        session: scanner.session
                        Accessible.role: Accessible.Graphic
                        Accessible.name: qsTr("Live camera picture")
                    }

                    Repeater {
                        model: 4

                        CornerCover {
                            required property int index

                            corner: index
                            frameSize: Qt.size(frame.width, frame.height)
                            radius: Metrics.frameRadius
                        }
                    }
                }
            }

            ScreenText {
                objectName: "accessRequired"
                anchors.centerIn: parent
                width: Math.min(implicitWidth, parent.width)
                visible: !scanner.showsPreview
                wrapMode: Text.Wrap
                text: qsTr("Camera access is required")
                color: "white"
                pointSize: Metrics.bodyFont
                textScale: root.textScale
                Accessible.ignored: true // the status says it
            }

            Repeater {
                model: 4

                CornerBracket {
                    required property int index

                    objectName: "bracket" + index
                    corner: index
                    frameSize: Qt.size(frame.width, frame.height)
                    color: scanner.bracketColor
                }
            }
        }

        CaptureButton {
            id: captureButton

            objectName: "captureButton"
            anchors.top: frame.bottom
            anchors.topMargin: Metrics.columnSpacing
            width: parent.width
            height: implicitHeight
            screen: root
            discColor: scanner.captureDiscColor
            name: qsTr("Take photo")
            description: status.text
            onTapped: scanner.capture(root.completion)
        }
    }

    // Spoken only.
    Item {
        id: status

        readonly property string text: {
            switch (scanner.status) {
            case DocumentScanner.AccessRequired:
                return qsTr("Camera access is required");
            case DocumentScanner.NotReady:
                return qsTr("Camera is not ready");
            case DocumentScanner.Ready:
                return qsTr("Ready to take a photo");
            default:
                return qsTr("Passport in view");
            }
        }

        objectName: "status"
        width: root.width
        height: 1
        Accessible.role: Accessible.AlertMessage
        Accessible.name: text
        onTextChanged: root.announce(status)
    }
}
