import QtQuick
import Kestrelid

Window {
    id: window
    width: 390; height: 760; visible: true
    title: "Your passport, please"
    DocumentScannerView {
        anchors.fill: parent
        completion: photo => {}
        readsZone: true
        onZoneChanged: window.title = zone?.strict ? `Your passport, please: ${zone.format} read` : "Your passport, please"
    }
}
