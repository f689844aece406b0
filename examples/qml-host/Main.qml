import QtQuick
import Kestrelid

Window {
    id: window
    property var photo
    width: 390; height: 760; visible: true
    title: photo ? "Thank you" : "Your passport, please"
    DocumentScannerView {
        anchors.fill: parent
        completion: photo => window.photo = photo
    }
}
