import QtQuick
import Kestrelid

Window {
    width: 390; height: 760; visible: true
    title: "Your passport, please"
    PassportScan {
        anchors.fill: parent
        completion: result => print(result ? "a passport" : "no passport")
    }
}
