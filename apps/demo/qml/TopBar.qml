import QtQuick

// Says which camera is in use, and lets the person choose another.
Rectangle {
    id: bar

    required property var cameras

    height: Math.max(52, note.implicitHeight + 16)
    color: "#ececee"

    Text {
        id: note

        anchors { left: parent.left; right: choose.left; margins: 12; verticalCenter: parent.verticalCenter }
        text: bar.cameras.note
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        maximumLineCount: 3
        elide: Text.ElideRight
        font.pixelSize: 14
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }

    TextButton {
        id: choose

        anchors { right: parent.right; rightMargin: 12; verticalCenter: parent.verticalCenter }
        text: qsTr("Camera...")
        onClicked: {
            const at = choose.mapToGlobal(0, choose.height);
            bar.cameras.openMenu(Qt.point(at.x, at.y));
        }
    }
}
