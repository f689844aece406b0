import QtQuick
import Kestrelid

// Scans one passport after another.
Window {
    id: window

    required property var session // a DemoSession

    width: 420
    height: 760
    minimumWidth: 320
    minimumHeight: 240
    visible: true
    color: "black"
    title: session.title

    Loader {
        anchors.fill: parent
        focus: true
        active: window.session.isReady
        sourceComponent: PassportScan {
            id: scan

            focus: true
            camera: window.session.camera
            notice: window.session.notice
            textScale: window.session.textScale
            closesWhenDone: false
            // Given up, nothing is left to do: the screen closes the window.
            completion: result => {
                if (!result)
                    return;
                window.session.thank();
                scan.restart();
            }
            onNameChanged: window.session.page = name
            Component.onCompleted: {
                window.session.page = name;
                if (window.session.picture.toString())
                    open(window.session.picture);
            }
        }
    }
}
