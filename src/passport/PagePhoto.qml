pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// The page of a photo, drawn straight. Fingers, wheel and keys enlarge and move it.
StraightPhoto {
    id: photo

    required property ScreenItem screen
    // Whether a wheel enlarges it; otherwise only with Ctrl, as it scrolls what the photo lies in.
    required property bool takesWheel

    readonly property real step: 1.25
    readonly property point middle: Qt.point(width / 2, height / 2)

    function takeKey(event) {
        const move = 40 * screen.unit;
        const isEnlarged = photo.zoom > 1;
        if (event.key === Qt.Key_Plus || event.key === Qt.Key_Equal)
            photo.zoomBy(photo.step, photo.middle);
        else if (event.key === Qt.Key_Minus)
            photo.zoomBy(1 / photo.step, photo.middle);
        else if (event.key === Qt.Key_0)
            photo.showWhole();
        else if (isEnlarged && event.key === Qt.Key_Left)
            photo.moveBy(move, 0);
        else if (isEnlarged && event.key === Qt.Key_Right)
            photo.moveBy(-move, 0);
        else if (isEnlarged && event.key === Qt.Key_Up)
            photo.moveBy(0, move);
        else if (isEnlarged && event.key === Qt.Key_Down)
            photo.moveBy(0, -move);
        else
            return false;
        return true;
    }

    function toggle(at) {
        if (photo.zoom > 1)
            photo.showWhole();
        else
            photo.zoomBy(2.5, at);
    }

    Tappable {
        id: area

        objectName: "photoArea"
        anchors.fill: parent
        Accessible.role: Accessible.Graphic
        Accessible.name: qsTr("Photo")
        Accessible.description: qsTr("Plus enlarges it, minus shows more of it")
        Accessible.focusable: true
        Keys.onPressed: event => event.accepted = photo.takeKey(event)
        onTapped: photo.toggle(photo.middle)
    }

    TapHandler {
        longPressThreshold: 1e6 // s
        onDoubleTapped: eventPoint => photo.toggle(eventPoint.position)
    }

    PinchHandler {
        property real before: 1

        target: null
        onActiveChanged: before = 1
        onActiveScaleChanged: {
            photo.zoomBy(activeScale / before, centroid.position);
            before = activeScale;
        }
    }

    DragHandler {
        property vector2d before

        target: null
        enabled: photo.zoom > 1
        onActiveChanged: before = Qt.vector2d(0, 0)
        onActiveTranslationChanged: {
            photo.moveBy(activeTranslation.x - before.x, activeTranslation.y - before.y);
            before = activeTranslation;
        }
    }

    WheelHandler {
        target: null
        acceptedModifiers: photo.takesWheel ? Qt.KeyboardModifierMask : Qt.ControlModifier
        onWheel: event => photo.zoomBy(Math.pow(photo.step, event.angleDelta.y / 120),
                                       Qt.point(event.x, event.y))
    }

    FocusRing {
        screen: photo.screen
        control: area
        anchors.margins: 1
        radius: 4
    }
}
