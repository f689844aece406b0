pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// Lines along the edges of the page in view. They glide from look to look, and go once no page was
// seen for half a second.
Item {
    id: outline

    required property CameraPreview picture // of the same place and size
    required property var corners // four points in shares of the frame, clockwise; or none
    required property color color
    required property real lineWidth

    readonly property int glide: 150 // ms
    readonly property bool isSeen: corners.length === 4
    property bool isShown: false
    property bool glides: false

    function follow(glides: bool) {
        outline.glides = glides && isShown;
        if (corners.length !== 4) // isSeen may change later
            return;
        const places = corners.map(corner => picture.mapFromFrame(corner.x, corner.y));
        topLeft.place = places[0];
        topRight.place = places[1];
        bottomRight.place = places[2];
        bottomLeft.place = places[3];
        isShown = true;
    }

    clip: true
    opacity: isShown ? 0.9 : 0
    visible: opacity > 0
    onCornersChanged: follow(true)
    Component.onCompleted: follow(false)

    Behavior on opacity {
        NumberAnimation { duration: outline.glide }
    }

    Connections {
        target: outline.picture
        function onPlacementChanged() { outline.follow(false) }
    }

    Timer {
        running: !outline.isSeen && outline.isShown
        interval: 500
        onTriggered: outline.isShown = false
    }

    component Corner: Item {
        property point place

        x: place.x
        y: place.y

        Behavior on x {
            enabled: outline.glides
            NumberAnimation { duration: outline.glide }
        }
        Behavior on y {
            enabled: outline.glides
            NumberAnimation { duration: outline.glide }
        }
    }

    component Edge: Rectangle {
        id: edge

        required property Item from
        required property Item to

        x: from.x - height / 2
        y: from.y - height / 2
        width: Math.hypot(to.x - from.x, to.y - from.y) + height
        height: outline.lineWidth
        radius: height / 2
        antialiasing: true
        color: outline.color
        transform: Rotation {
            origin { x: edge.height / 2; y: edge.height / 2 }
            angle: Math.atan2(edge.to.y - edge.from.y, edge.to.x - edge.from.x) * 180 / Math.PI
        }
    }

    Corner { id: topLeft; objectName: "outlineCorner0" }
    Corner { id: topRight; objectName: "outlineCorner1" }
    Corner { id: bottomRight; objectName: "outlineCorner2" }
    Corner { id: bottomLeft; objectName: "outlineCorner3" }
    Edge { from: topLeft; to: topRight }
    Edge { from: topRight; to: bottomRight }
    Edge { from: bottomRight; to: bottomLeft }
    Edge { from: bottomLeft; to: topLeft }
}
