// Components are not bound: a Loader of Qt 6.4 makes nothing of such ones.
import QtQuick
import Kestrelid

// The whole way in one element: scan, look at the photo, have it judged, see what was found. What
// goes wrong has a page of its own that says what to do. A host shows it as large as it likes.
ScreenItem {
    id: root

    // Gets an object with `photo`, `isPassport`, `isTrusted` (a strict zone was read), `confidence`,
    // `reasons`, `text`, `zone` (as DocumentScannerView.zone, or null) and `outline` (four points in
    // shares of the photo from its top left, or none) once the person is done; null if the person
    // has given up. Personal data.
    required property var completion
    // A function that closes the screen after that; without it, what presents the screen is closed.
    // Neither happens if completion has called restart().
    property var dismiss
    // Whether it is closed after a result too. A host that keeps it calls restart() for the next.
    property bool closesWhenDone: true
    // As DocumentScannerView.camera. Counts for the next scan: see restart().
    property string camera
    // Whether the machine-readable zone of the photo is read.
    property bool readsZone: true
    // What counts as a passport: "verdict", "strictZone" or "both".
    property string proof: "verdict"
    // Whether a photo that shows no passport may be handed over too.
    property bool acceptsAnyPhoto: false
    // Help on the scanning page, as DocumentScannerView has it; each part can be set on its own.
    property bool assistance: true
    property bool guides: assistance
    property bool outlinesPage: assistance
    property bool offersControls: assistance
    property bool importsPhotos: assistance
    property bool capturesByItself: false
    property var guidanceLimits: ({})
    property real textScale: 1
    // Of the pages that are not pictures: "system", "light" or "dark".
    property string theme: "system"
    // A line above the scanning page, for what a host has to say of the camera; empty: none.
    property string notice
    // The page that is shown: "scanning", "preview", "judging", "result" or "failed".
    readonly property alias name: flow.page

    // Begins anew at the scanning page, with a new camera.
    function restart() {
        flow.scan();
    }

    // Goes on with a picture, the URL of a local file, as if it had been taken.
    function open(picture) {
        importer.open(picture);
    }

    // As the close symbol of the scanning page, from any page.
    function giveUp() {
        flow.giveUp();
    }

    focus: true
    adaptsToSize: true
    LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true

    onAppeared: {
        // Again, after it was closed.
        if (flow.isDone)
            flow.scan();
    }
    onShownChanged: {
        if (!root.isShown && flow.isDone)
            flow.rest();
    }
    Keys.onPressed: event => event.accepted = root.importsPhotos && event.matches(StandardKey.Paste)
                                              && importer.paste()

    // Which page follows which. All ways back lead to the scanning page, and from there out.
    QtObject {
        id: flow

        property string page
        property var photo
        property string failure
        property string cause
        property bool isDone: false // completion was called
        property bool hasGivenUp: false

        function show(page) {
            root.isKeyboardInUse = loader.item?.isKeyboardInUse ?? false;
            // Also where the same page follows: it begins anew.
            loader.sourceComponent = null;
            flow.page = page;
            loader.sourceComponent = {
                "scanning": scanning, "preview": preview, "judging": judging, "result": result,
                "failed": failed
            }[page] ?? null;
        }

        function begin(photo) {
            importer.cancel();
            examiner.cancel();
            flow.photo = photo;
            flow.isDone = false;
            flow.hasGivenUp = false;
        }

        function scan() {
            flow.begin(undefined);
            flow.show("scanning");
        }

        function look(photo) {
            flow.begin(photo);
            flow.show("preview");
        }

        function take(photo, cause) {
            if (photo)
                flow.look(photo);
            else
                flow.fail("notTaken", cause);
        }

        function check() {
            examiner.judge(flow.photo);
            flow.show("judging");
        }

        function stopChecking() {
            flow.look(flow.photo);
        }

        function judged() {
            if (examiner.hasVerdict)
                flow.show("result");
            else
                flow.fail("notJudged", examiner.error);
        }

        function fail(failure, cause) {
            flow.failure = failure;
            flow.cause = cause;
            flow.show("failed");
        }

        function finish() {
            if (flow.isDone)
                return;
            flow.isDone = true;
            examiner.complete(root.completion);
        }

        function giveUp() {
            if (flow.isDone)
                return;
            examiner.cancel();
            flow.hasGivenUp = true;
            flow.finish();
        }

        // completion may have begun anew.
        function close() {
            if (!flow.isDone)
                return;
            if (!root.isShown)
                flow.rest();
            else if (root.closesWhenDone || flow.hasGivenUp)
                root.dismissBy(root.dismiss);
        }

        // Out of sight: neither camera nor photo is needed.
        function rest() {
            examiner.cancel();
            flow.photo = undefined;
            flow.show("");
        }
    }

    PassportJudge {
        id: examiner

        readsZone: root.readsZone
        proof: root.proof
        guidanceLimits: root.guidanceLimits
        onFinished: flow.judged()
        onCompleted: flow.close()
    }

    // The scanning page has its own, above this one.
    PhotoImport {
        id: importer

        objectName: "importer"
        anchors.fill: parent
        enabled: root.importsPhotos
        onImported: photo => flow.look(photo)
        onFailed: problem => flow.fail("notOpened", importFailure.causes[problem])
    }

    QtObject {
        id: importFailure

        readonly property var causes: ({
            [PhotoImport.NotAFile]: qsTr("It is not a file on this machine."),
            [PhotoImport.NotAPicture]: qsTr("It is not a picture of a known format."),
            [PhotoImport.Unreadable]: qsTr("It is damaged, too large, or may not be read."),
            [PhotoImport.OutOfMemory]: qsTr("There is not enough memory for it.")
        })
    }

    Theme {
        id: colors

        choice: root.theme
    }

    Rectangle {
        anchors.fill: parent
        color: flow.page === "scanning" ? "black" : colors.background
    }

    Rectangle {
        id: strip

        objectName: "notice"
        width: parent.width
        height: visible ? root.safeAreaMargins.top + line.height + 16 * root.unit : 0
        visible: flow.page === "scanning" && root.notice !== ""
        color: "#2C2C2E"

        ScreenText {
            id: line

            anchors {
                left: parent.left; leftMargin: root.safeAreaMargins.left + Metrics.edge * root.unit
                right: parent.right; rightMargin: root.safeAreaMargins.right + Metrics.edge * root.unit
                bottom: parent.bottom; bottomMargin: 8 * root.unit
            }
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: root.notice
            color: "white"
            pointSize: Metrics.smallFont
            textScale: root.textScale
            unit: root.unit
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }

    Loader {
        id: loader

        objectName: "page"
        anchors { top: strip.bottom; bottom: parent.bottom; left: parent.left; right: parent.right }
        focus: true
        onLoaded: {
            item.isKeyboardInUse = root.isKeyboardInUse;
            item.focus = true;
        }
        Component.onCompleted: flow.show("scanning") // a picture may be being opened already
    }

    Component {
        id: scanning

        DocumentScannerView {
            id: scanner

            safeAreaMargins {
                top: strip.visible ? 0 : root.safeAreaMargins.top
                left: root.safeAreaMargins.left
                right: root.safeAreaMargins.right
                bottom: root.safeAreaMargins.bottom
            }
            camera: root.camera
            guides: root.guides
            outlinesPage: root.outlinesPage
            offersControls: root.offersControls
            importsPhotos: root.importsPhotos
            capturesByItself: root.capturesByItself
            guidanceLimits: root.guidanceLimits
            showsWholeFrame: true
            adaptsToSize: true
            textScale: root.textScale
            completion: photo => {
                // Later ones of a hasty finger no longer count.
                if (flow.page === "scanning")
                    flow.take(photo, scanner.cameraCause);
            }
            dismiss: () => flow.giveUp()
        }
    }

    Component {
        id: preview

        ImagePreviewView {
            safeAreaMargins {
                top: root.safeAreaMargins.top
                left: root.safeAreaMargins.left
                right: root.safeAreaMargins.right
                bottom: root.safeAreaMargins.bottom
            }
            title: qsTr("Is everything readable?")
            image: flow.photo
            theme: colors.isDark ? colors : null // in the light as designed
            adaptsToSize: true
            textScale: root.textScale
            didTapRetake: () => flow.scan()
            didTapConfirm: () => flow.check()
            dismiss: () => flow.scan()
        }
    }

    Component {
        id: judging

        JudgingPage {
            safeAreaMargins {
                top: root.safeAreaMargins.top
                left: root.safeAreaMargins.left
                right: root.safeAreaMargins.right
                bottom: root.safeAreaMargins.bottom
            }
            photo: flow.photo
            theme: colors
            textScale: root.textScale
            onCanceled: flow.stopChecking()
        }
    }

    Component {
        id: result

        VerdictPage {
            safeAreaMargins {
                top: root.safeAreaMargins.top
                left: root.safeAreaMargins.left
                right: root.safeAreaMargins.right
                bottom: root.safeAreaMargins.bottom
            }
            judge: examiner
            theme: colors
            textScale: root.textScale
            acceptsAnyPhoto: root.acceptsAnyPhoto
            onContinued: flow.finish()
            onScannedAgain: flow.scan()
        }
    }

    Component {
        id: failed

        PhotoFailedPage {
            safeAreaMargins {
                top: root.safeAreaMargins.top
                left: root.safeAreaMargins.left
                right: root.safeAreaMargins.right
                bottom: root.safeAreaMargins.bottom
            }
            failure: flow.failure
            cause: flow.cause
            theme: colors
            textScale: root.textScale
            importsPhotos: root.importsPhotos && importer.hasDialog
            onTriedAgain: flow.scan()
            onPictureWanted: importer.openDialog()
            onClosed: flow.scan()
        }
    }
}
