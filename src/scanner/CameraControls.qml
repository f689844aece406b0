pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// Buttons around the capture button, each only where there is something to change: a picture in
// place of a photo, light, choice of camera, zoom. Fills the screen's content.
Item {
    id: controls

    required property ScreenItem screen
    required property DocumentScanner scanner
    required property rect ring // the capture button's, in the content
    required property real railHeight // around the ring's middle, in a compact layout
    required property bool offersControls
    required property bool opensPictures

    signal pictureTapped
    signal cameraTapped

    readonly property real unit: screen.unit
    readonly property real gap: 4 * unit
    readonly property real side: Metrics.touchTarget * unit

    readonly property var torch: control("torch")
    readonly property var zoom: control("zoom")
    readonly property bool hasOtherCameras: scanner.usableCameras.some(name => name !== scanner.currentCamera)
    readonly property bool hasChoice: offersControls && hasOtherCameras

    // In a compact layout they stand above and below the ring, in one column if there is room, or
    // if a second one would take it from the picture; zoom, for which there are keys and fingers
    // too, is the first to go.
    readonly property real half: (railHeight - Metrics.ring * unit) / 2 - 2 * gap
    readonly property int rows: Math.max(1, Math.floor((half + gap) / (side + gap)))
    readonly property int above: (torch ? 1 : 0) + (hasChoice ? 1 : 0)
    readonly property int pictures: opensPictures ? 1 : 0
    readonly property int columns: above > rows || (width >= 480 * unit && zoom && pictures + 2 > rows) ? 2 : 1
    readonly property bool showsZoom: zoom !== undefined
                                      && (!screen.isCompact || pictures + (columns === 1 ? 2 : 1) <= rows)
    readonly property real railWidth: Math.max((Metrics.ring + 2 * Metrics.ringLine) * unit,
                                               columns * side + (columns - 1) * gap)

    function control(name: string): var {
        return offersControls ? scanner.controls.find(one => one.control === name) : undefined;
    }

    // by: of the range, from 0 to 1; at least the smallest change that the camera makes.
    function zoomBy(by: real) {
        if (!zoom)
            return;
        const step = Math.max(Math.abs(by), zoom.step);
        scanner.setControl("zoom", Math.max(0, Math.min(1, zoom.value + (by < 0 ? -step : step))));
    }

    Item {
        id: place

        x: controls.ring.x
        y: controls.ring.y
        width: controls.ring.width
        height: controls.ring.height
    }

    // In places of their own, not at anchors that come and go: a screen may grow out of a compact
    // layout.
    component Group: Grid {
        x: place.x + (place.width - width) / 2
        spacing: controls.gap
        columns: controls.screen.isCompact ? controls.columns : 2
    }

    // before: left of the ring; in a compact layout below it.
    component SideGroup: Group {
        required property bool before
        readonly property real distance: 24 * controls.unit

        x: controls.screen.isCompact ? place.x + (place.width - width) / 2
           : before !== controls.screen.LayoutMirroring.enabled ? place.x - distance - width
                                                                : place.x + place.width + distance
        y: !controls.screen.isCompact ? place.y + (place.height - height) / 2
           : before ? place.y + place.height + 2 * controls.gap
                    : place.y - 2 * controls.gap - height
    }

    component Button: IconButton {
        screen: controls.screen
    }

    SideGroup {
        before: true
        columns: 1

        Button {
            objectName: "importButton"
            visible: controls.opensPictures
            symbol: "picture"
            name: qsTr("Use a picture")
            onTapped: controls.pictureTapped()
        }
    }

    SideGroup {
        before: false

        Button {
            objectName: "torch"
            visible: controls.torch !== undefined
            symbol: "torch"
            name: qsTr("Light")
            isCheckable: true
            isChecked: controls.torch !== undefined && controls.torch.value > 0
            onTapped: controls.scanner.setControl("torch", isChecked ? 0 : 1)
        }
        Button {
            objectName: "cameraButton"
            visible: controls.hasChoice
            symbol: "switchCamera"
            name: qsTr("Switch camera")
            description: controls.scanner.currentCamera
            onTapped: controls.cameraTapped()
        }
    }

    // Between the picture and the ring, or below the other group.
    Group {
        y: controls.screen.isCompact
           ? place.y + place.height + 2 * controls.gap + (controls.opensPictures ? controls.side + controls.gap : 0)
           : place.y - (Metrics.columnSpacing * controls.unit + height) / 2
        columnSpacing: controls.screen.isCompact ? controls.gap : 24 * controls.unit
        visible: controls.showsZoom

        Button {
            objectName: "zoomOut"
            symbol: "minus"
            name: qsTr("Zoom out")
            onTapped: controls.zoomBy(-0.1)
        }
        Button {
            objectName: "zoomIn"
            symbol: "plus"
            name: qsTr("Zoom in")
            onTapped: controls.zoomBy(0.1)
        }
    }
}
