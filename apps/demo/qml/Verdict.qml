import QtQuick

// The verdict on the last photo, its reasons, and the way back.
FocusScope {
    id: page

    required property var judge

    signal scanAgain

    Rectangle {
        anchors.fill: parent
        color: "white"
    }

    Rectangle {
        id: banner

        width: parent.width
        height: 72
        color: page.judge.isJudging ? "#8e8e93" : page.judge.isPassport ? "#15803d" : "#b91c1c"

        Text {
            anchors.centerIn: parent
            text: page.judge.headline
            color: "white"
            font { pixelSize: 26; bold: true }
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
    }

    Text {
        anchors { top: banner.bottom; bottom: again.top; left: parent.left; right: parent.right; margins: 20 }
        text: page.judge.reasons.join("\n\n")
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        elide: Text.ElideRight
        font.pixelSize: 15
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }

    TextButton {
        id: again

        anchors { bottom: parent.bottom; bottomMargin: 20; horizontalCenter: parent.horizontalCenter }
        focus: true
        text: qsTr("Scan again")
        onClicked: page.scanAgain()
    }
}
