// Components are not bound: a Loader of Qt 6.4 makes nothing of such ones.
import QtQuick
import Kestrelid

// What a scanning screen offers beyond the plain one: the line of guidance, controls, pictures from
// elsewhere, and the choice of camera. Covers the screen and draws over it.
Item {
    id: help

    required property ScreenItem screen
    required property DocumentScanner source
    required property var completion
    required property real textScale
    required property bool guides
    required property bool offersControls
    required property bool importsPhotos
    // In this item: the screen's content, its frame, what lies between title and frame, and the
    // capture button's ring.
    required property rect contentRect
    required property rect frameRect
    required property rect gapRect
    required property rect ringRect
    required property real railHeight // of a compact layout

    readonly property real railWidth: controls.railWidth // of a compact layout
    readonly property bool hasOtherCameras: controls.hasOtherCameras
    readonly property bool opensPictures: pictures.item !== null && (pictures.item as PhotoImport).hasDialog
    readonly property bool isCapturing: source.captureProgress > 0

    property string importProblem // a word; empty: none

    // Escape: ends what helps and is under way. False if there is nothing of that.
    function giveWay(): bool {
        if (cameraList.active) {
            cameraList.close();
            return true;
        }
        if (isCapturing) {
            source.cancelAutoCapture();
            return true;
        }
        const open = pictures.item as PhotoImport;
        if (open === null || !open.isBusy)
            return false;
        open.cancel();
        return true;
    }

    // False if the key means nothing here.
    function press(event): bool {
        if (importsPhotos && event.matches(StandardKey.Paste))
            return (pictures.item as PhotoImport).paste();
        if (!controls.zoom || (event.key !== Qt.Key_Plus && event.key !== Qt.Key_Minus))
            return false;
        controls.zoomBy(event.key === Qt.Key_Plus ? 0.1 : -0.1);
        return true;
    }

    function choosePicture() {
        (pictures.item as PhotoImport).openDialog();
    }

    // With one other camera there is no choice to make.
    function chooseCamera() {
        const others = source.usableCameras.filter(name => name !== source.currentCamera);
        if (others.length === 1)
            source.switchCamera(others[0]);
        else if (others.length > 1)
            cameraList.open();
    }

    readonly property string topic: {
        const open = pictures.item as PhotoImport;
        if (open !== null && open.isBusy)
            return "opening";
        if (importProblem !== "")
            return importProblem;
        if (open !== null && open.isHovered)
            return "drop";
        if (isCapturing)
            return "capturing";
        if (!guides || !source.showsPreview || source.cameraProblem !== "")
            return "";
        if (source.cameraState !== "live")
            return "starting";
        const isInView = source.status === DocumentScanner.PassportInView;
        if (isInView && (source.advice === "none" || source.advice === "noPage"))
            return "inView";
        return source.advice;
    }

    function textOf(topic: string): string {
        switch (topic) {
        case "opening":
            return qsTr("Opening the picture…");
        case "notAFile":
            return qsTr("That is not a file on this device");
        case "notAPicture":
            return qsTr("That file is not a picture");
        case "unreadable":
            return qsTr("That picture cannot be opened");
        case "outOfMemory":
            return qsTr("There is not enough memory for that picture");
        case "drop":
            return qsTr("Drop the picture to use it");
        case "capturing":
            return qsTr("Taking a photo. Hold still.");
        case "starting":
            return qsTr("The camera is starting");
        case "inView":
            return qsTr("Passport in view");
        case "noPage":
            return qsTr("Place the passport's photo page in the frame");
        case "moveCloser":
            return qsTr("Move closer");
        case "moveBack":
            return qsTr("Move back a little");
        case "wholePage":
            return qsTr("Keep the whole page in the frame");
        case "holdStill":
            return qsTr("Hold still");
        case "tooDark":
            return controls.torch && controls.torch.value === 0 ? qsTr("Turn on the light")
                                                                : qsTr("More light is needed");
        case "glare":
            return qsTr("Tilt the page to avoid the reflection");
        default:
            return "";
        }
    }

    function symbolOf(topic: string): string {
        switch (topic) {
        case "notAFile":
        case "notAPicture":
        case "unreadable":
        case "outOfMemory":
            return "warning";
        case "opening":
        case "drop":
            return "picture";
        case "inView":
            return "check";
        case "moveCloser":
            return "plus";
        case "moveBack":
            return "minus";
        case "tooDark":
            return "torch";
        default:
            return "camera";
        }
    }

    Loader {
        id: pictures

        anchors.fill: parent
        active: help.importsPhotos
        sourceComponent: PhotoImport {
            objectName: "photoImport"
            onImported: photo => {
                help.importProblem = "";
                help.source.deliver(help.completion, photo);
            }
            onFailed: problem => {
                switch (problem) {
                case PhotoImport.NotAFile:
                    help.importProblem = "notAFile";
                    break;
                case PhotoImport.NotAPicture:
                    help.importProblem = "notAPicture";
                    break;
                case PhotoImport.OutOfMemory:
                    help.importProblem = "outOfMemory";
                    break;
                default:
                    help.importProblem = "unreadable";
                }
                read.restart();
            }
            onBusyChanged: if (isBusy) help.importProblem = ""
        }
    }

    // Long enough to read one sentence.
    Timer {
        id: read

        interval: 6000
        onTriggered: help.importProblem = ""
    }

    Item {
        x: help.frameRect.x
        y: help.frameRect.y
        width: help.frameRect.width
        height: help.frameRect.height

        TapHandler {
            enabled: help.isCapturing
            longPressThreshold: 1e6 // s; as Tap
            onTapped: help.source.cancelAutoCapture()
        }

        PinchHandler {
            property real before // the zoom when the fingers came down

            target: null
            enabled: controls.zoom !== undefined
            onActiveChanged: if (active && controls.zoom) before = controls.zoom.value
            // Twice the distance is half the range.
            onActiveScaleChanged: {
                if (active)
                    help.source.setControl("zoom", Math.max(0, Math.min(1, before + Math.log2(activeScale) / 2)));
            }
        }
    }

    GuidanceLine {
        objectName: "guidanceLine"
        // In the middle of the gap; what is too high for that reaches into the frame.
        x: help.gapRect.x
        y: help.gapRect.y + Math.max(0, (help.gapRect.height - height) / 2)
        width: help.gapRect.width
        height: implicitHeight
        screen: help.screen
        // Beside a narrow frame there is room for words, not for large ones or symbols.
        textScale: help.screen.isCompact ? Math.min(help.textScale, Math.max(1, width / 140)) : help.textScale
        text: help.textOf(help.topic)
        spokenText: help.topic === "capturing"
                    ? qsTr("Taking a photo. Hold still. Press Escape to cancel.") : text
        symbol: width < 240 ? "" : help.symbolOf(help.topic)
        // The screen itself says these.
        isAnnounced: help.topic !== "inView" && help.topic !== "starting"
        canBeDismissed: help.isCapturing && width >= 240 // a tap in the frame does it too
        dismissName: qsTr("Cancel")
        onDismissed: help.source.cancelAutoCapture()
    }

    CameraControls {
        id: controls

        x: help.contentRect.x
        y: help.contentRect.y
        width: help.contentRect.width
        height: help.contentRect.height
        screen: help.screen
        scanner: help.source
        railHeight: help.railHeight
        ring: Qt.rect(help.ringRect.x - x, help.ringRect.y - y, help.ringRect.width, help.ringRect.height)
        offersControls: help.offersControls
        opensPictures: help.opensPictures
        onPictureTapped: help.choosePicture()
        onCameraTapped: help.chooseCamera()
    }

    Loader {
        id: cameraList

        property Item focusedBefore

        function open() {
            focusedBefore = Window.activeFocusItem;
            active = true;
        }
        function close() {
            const hadFocus = item !== null && item.activeFocus;
            active = false;
            if (hadFocus && focusedBefore !== null)
                focusedBefore.forceActiveFocus(Qt.OtherFocusReason);
        }

        anchors.fill: parent
        active: false
        sourceComponent: CameraList {
            objectName: "cameraList"
            screen: help.screen
            textScale: help.textScale
            names: help.source.usableCameras
            current: help.source.currentCamera
            onClosed: cameraList.close()
            onChosen: name => {
                cameraList.close();
                help.source.switchCamera(name);
            }
        }
    }
}
