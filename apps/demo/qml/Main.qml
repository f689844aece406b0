import QtQuick
import Kestrelid
import KestrelidDemo

// Scan, look at the photo, take it again or confirm it, see the verdict.
Window {
    id: window

    required property var cameras // a CameraChoice
    required property var judge // a PhotoJudge
    property var photo

    // A new screen each time: the camera is free while a photo is looked at.
    function scan() {
        page.sourceComponent = null;
        if (cameras.camera)
            page.sourceComponent = scanner;
    }

    function show(photo) {
        window.photo = photo;
        page.sourceComponent = null;
        page.sourceComponent = preview;
    }

    width: 420
    height: 760
    minimumWidth: 320
    minimumHeight: 480
    visible: true
    color: "black"
    title: qsTr("Kestrelid demo: %1").arg(page.item?.name ?? "")
    Component.onCompleted: scan()

    Connections {
        target: window.cameras
        function onCameraChosen() { window.scan(); }
        function onCameraFound() {
            if (!page.sourceComponent)
                window.scan();
        }
        function onPictureOpened(picture) { window.show(picture); }
    }

    TopBar {
        id: bar

        width: parent.width
        cameras: window.cameras
    }

    Loader {
        id: page

        anchors { top: bar.bottom; bottom: parent.bottom; left: parent.left; right: parent.right }
        focus: true
    }

    Component {
        id: scanner

        DocumentScannerView {
            readonly property string name: qsTr("scanning")

            camera: window.cameras.camera
            completion: photo => {
                if (page.sourceComponent === scanner)
                    window.show(photo);
            }
        }
    }

    Component {
        id: preview

        ImagePreviewView {
            readonly property string name: qsTr("preview")

            title: qsTr("Is everything readable?")
            image: window.photo
            didTapRetake: () => window.scan()
            didTapConfirm: () => {
                window.judge.judge(window.photo);
                page.sourceComponent = verdict;
            }
            dismiss: () => window.scan()
        }
    }

    Component {
        id: verdict

        Verdict {
            readonly property string name: judge.headline

            judge: window.judge
            onScanAgain: window.scan()
        }
    }

    DropArea {
        anchors.fill: parent
        onDropped: drop => {
            if (drop.hasUrls)
                window.cameras.open(drop.urls[0]);
        }
    }
}
