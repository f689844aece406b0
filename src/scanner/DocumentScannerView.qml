// Components are not bound: a Loader of Qt 6.4 makes nothing of such ones.
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

    // What follows goes beyond the plain screen; off unless a host asks for it. Counts when the
    // screen is first shown. assistance: the four below, each of which can be set on its own.
    property bool assistance: false
    // One line of guidance; what to do where the camera fails, which is then tried again by itself.
    property bool guides: assistance
    // The page in view is outlined in the live picture.
    property bool outlinesPage: assistance
    // Light, zoom and choice of camera, where there are any.
    property bool offersControls: assistance
    // Pictures from files, dropped or pasted, go to `completion` as photos do.
    property bool importsPhotos: assistance
    // A photo is taken once a passport has been in view, still and sharp, for a second.
    property bool capturesByItself: false
    // All of the live picture, instead of one that fills its frame and is cut. Also: adaptsToSize.
    property bool showsWholeFrame: false
    // From where on a page is too dark, too small and so on: an object with names of GuidanceLimits.
    property var guidanceLimits
    // What would make the next photo better: "none", "tooDark", "noPage", "wholePage", "moveCloser",
    // "moveBack", "glare" or "holdStill"; and whether the page in view would make a good one. Known
    // where it is needed: to guide, outline or capture.
    property alias advice: scanner.advice
    property alias isPageSteady: scanner.isPageSteady

    // Goes on with the camera of that name. A name that no camera has changes nothing.
    function switchCamera(name: string) {
        scanner.switchCamera(name)
    }

    // Begins anew with permission and camera, as a person who has put something right may want.
    function retryCamera() {
        scanner.retry();
    }

    focus: true
    LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true
    Accessible.role: Accessible.Pane
    Accessible.name: bar.title

    onAppeared: scanner.appear()
    onEscapePressed: {
        if (!(help.item as ScannerHelp)?.giveWay())
            root.dismissBy(root.dismiss);
    }
    Keys.enabled: help.active
    Keys.onPressed: event => event.accepted = (help.item as ScannerHelp).press(event)
    onActivated: scanner.capture(root.completion)

    // value: from 0 to 1; undefined or null leaves the choice to the camera. What it has not is ignored.
    function setControl(name, value) {
        scanner.setControl(name, value);
    }

    DocumentScanner {
        id: scanner

        camera: root.camera
        readsZone: root.readsZone
        watchesPage: root.guides || root.outlinesPage || root.capturesByItself
        guidanceLimits: root.guidanceLimits
        guides: root.guides
        capturesByItself: root.capturesByItself
        isShown: root.isShown
        onCaptureDue: scanner.capture(root.completion)
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

        readonly property real unit: root.unit
        readonly property real compactSpacing: 12
        // Beside the frame, in a compact layout.
        readonly property real railWidth: help.item !== null ? (help.item as ScannerHelp).railWidth
                                                             : Metrics.ring + 2 * Metrics.ringLine
        readonly property real compactHeight: Math.max(0, height - bar.height - compactSpacing)
        // What the frame may take.
        readonly property rect room: root.isCompact
                ? Qt.rect(root.LayoutMirroring.enabled ? railWidth + compactSpacing : 0, bar.height,
                          Math.max(0, width - railWidth - compactSpacing),
                          compactHeight)
                : Qt.rect(0, bar.height + Metrics.sectionSpacing * unit, width,
                          Math.max(0, height - bar.height - Metrics.sectionSpacing * unit
                                   - Metrics.columnSpacing * unit - captureButton.height))

        objectName: "content"
        x: root.safeAreaMargins.left + Metrics.edge * unit
        y: root.safeAreaMargins.top
        width: root.width - root.safeAreaMargins.left - root.safeAreaMargins.right - 2 * Metrics.edge * unit
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
            // Where there is little height the picture needs it more.
            textScale: root.isCompact ? Math.min(root.textScale, Math.max(1, root.height / 240)) : root.textScale
            onCloseTapped: root.dismissBy(root.dismiss)
        }

        Item {
            id: frame

            property size picture // the last live one, in pixels
            readonly property real inset: Metrics.pictureInset * root.unit
            // Brackets hug a picture that is whole.
            readonly property real fit: root.showsWholeFrame && picture.width > 0
                    ? Math.max(0, Math.min((content.room.width - 2 * inset) / picture.width,
                                           (content.room.height - 2 * inset) / picture.height)) : 0
            // Small frames have smaller brackets, so that their arms do not meet.
            readonly property real bracketUnit: root.adaptsToSize ? Math.min(root.unit, Math.min(width, height) / 160)
                                                                  : 1

            objectName: "frame"
            x: content.room.x + (content.room.width - width) / 2
            y: content.room.y + (content.room.height - height) / 2
            width: fit > 0 ? Math.round(picture.width * fit + 2 * inset) : content.room.width
            height: fit > 0 ? Math.round(picture.height * fit + 2 * inset) : content.room.height

            // A new surface for each time that access is granted.
            Repeater {
                model: scanner.showsPreview ? 1 : 0

                Item {
                    anchors.fill: parent

                    CameraPreview {
                        id: preview

                        objectName: "preview"
                        anchors.fill: parent
                        anchors.margins: frame.inset
                        session: scanner.session
                        showsWholeFrame: root.showsWholeFrame
                        onPlacementChanged: if (pictureSize.width > 0) frame.picture = pictureSize
                        Accessible.role: Accessible.Graphic
                        Accessible.name: qsTr("Live camera picture")
                    }

                    Loader {
                        anchors.fill: preview
                        active: root.outlinesPage
                        sourceComponent: PageOutline {
                            objectName: "pageOutline"
                            picture: preview
                            corners: scanner.pageOutline
                            color: scanner.status === DocumentScanner.PassportInView ? "#4ADE80" : "white"
                            lineWidth: 3 * root.unit
                        }
                    }

                    Repeater {
                        model: 4

                        CornerCover {
                            required property int index

                            corner: index
                            frameSize: Qt.size(frame.width, frame.height)
                            radius: Metrics.frameRadius * frame.bracketUnit
                        }
                    }
                }
            }

            ScreenText {
                objectName: "accessRequired"
                anchors.centerIn: parent
                width: Math.min(implicitWidth, parent.width)
                visible: !scanner.showsPreview && !panel.active
                wrapMode: Text.Wrap
                text: qsTr("Camera access is required")
                color: "white"
                pointSize: Metrics.bodyFont
                textScale: root.textScale
                unit: root.unit
                Accessible.ignored: true // the status says it
            }

            Loader {
                id: panel

                anchors.fill: parent
                anchors.margins: frame.inset
                active: root.guides && scanner.cameraProblem !== ""
                sourceComponent: CameraStatePanel {
                    objectName: "cameraStatePanel"
                    screen: root
                    source: scanner
                    textScale: root.textScale
                    hasOtherCameras: (help.item as ScannerHelp)?.hasOtherCameras ?? false
                    opensPictures: (help.item as ScannerHelp)?.opensPictures ?? false
                    onTryAgainTapped: root.retryCamera()
                    onOtherCameraTapped: (help.item as ScannerHelp).chooseCamera()
                    onPictureTapped: (help.item as ScannerHelp).choosePicture()
                }
            }

            Repeater {
                model: 4

                CornerBracket {
                    required property int index

                    objectName: "bracket" + index
                    corner: index
                    frameSize: Qt.size(frame.width, frame.height)
                    unit: frame.bracketUnit
                    color: scanner.bracketColor
                }
            }
        }

        CaptureButton {
            id: captureButton

            objectName: "captureButton"
            x: root.isCompact && !root.LayoutMirroring.enabled ? parent.width - width : 0
            y: root.isCompact ? content.room.y + (content.room.height - Metrics.ring) / 2
                              : content.room.y + content.room.height + Metrics.columnSpacing * root.unit
            width: root.isCompact ? content.railWidth : parent.width
            height: implicitHeight
            screen: root
            capturesByItself: root.capturesByItself
            progress: scanner.captureProgress
            discColor: scanner.captureDiscColor
            name: qsTr("Take photo")
            description: status.text
            onTapped: scanner.capture(root.completion)
        }
    }

    Loader {
        id: help

        anchors.fill: parent
        active: root.guides || root.offersControls || root.importsPhotos || root.capturesByItself
        sourceComponent: ScannerHelp {
            screen: root
            source: scanner
            completion: root.completion
            textScale: root.textScale
            guides: root.guides
            offersControls: root.offersControls
            importsPhotos: root.importsPhotos
            contentRect: Qt.rect(content.x, content.y, content.width, content.height)
            frameRect: Qt.rect(content.x + frame.x, content.y + frame.y, frame.width, frame.height)
            gapRect: root.isCompact
                     ? Qt.rect(content.x + content.room.x, content.y + content.room.y + 6, content.room.width, 0)
                     : Qt.rect(content.x, content.y + bar.height, content.width, Metrics.sectionSpacing * root.unit)
            railHeight: content.compactHeight
            ringRect: Qt.rect(content.x + captureButton.x + (captureButton.width - Metrics.ring * root.unit) / 2,
                              content.y + captureButton.y, Metrics.ring * root.unit, Metrics.ring * root.unit)
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
        onTextChanged: Qt.callLater(say)

        // Later: the name that is spoken changes after the text.
        function say() {
            root.announce(status);
        }
    }
}
