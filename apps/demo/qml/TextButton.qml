import QtQuick

Rectangle {
    id: button

    property string text

    signal clicked

    implicitWidth: label.implicitWidth + 24
    implicitHeight: 36
    radius: 6
    color: tap.pressed ? "#d0d0d4" : "white"
    border { color: button.activeFocus ? "#1882FF" : "#8e8e93"; width: button.activeFocus ? 2 : 1 }
    activeFocusOnTab: true
    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: clicked()
    Keys.onSpacePressed: clicked()
    Keys.onReturnPressed: clicked()

    Text {
        id: label

        anchors.centerIn: parent
        text: button.text
        font.pixelSize: 14
    }

    TapHandler {
        id: tap

        gesturePolicy: TapHandler.ReleaseWithinBounds
        onTapped: button.clicked()
    }
}
