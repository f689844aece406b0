import QtQuick
import Kestrelid

Window {
    width: 390
    height: 760
    visible: true

    ImagePreviewView {
        id: preview

        anchors.fill: parent
        title: "Is everything readable?"
        image: "file:///tmp/home/passport.jpg"
        didTapRetake: () => {}
        didTapConfirm: () => {}
    }

    // The last argument is in how many seconds.
    Timer {
        interval: 1000 * Number(Qt.application.arguments[Qt.application.arguments.length - 1])
        running: true
        onTriggered: preview.grabToImage(result => Qt.exit(result.saveToFile("/tmp/home/preview.png") ? 0 : 1))
    }
}
