pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// What the photo shows, for the person who took it: one sentence, what would help, what the
// machine-readable lines say, and the ways on.
ScreenItem {
    id: root

    required property PassportJudge judge
    required property Theme theme
    required property real textScale
    required property bool acceptsAnyPhoto

    signal continued
    signal scannedAgain

    property bool showsDetails: false

    readonly property string sentence:
        !judge.isPassport ? qsTr("No passport was recognised in this photo.")
        : judge.isTrusted ? qsTr("This is a passport; its machine-readable lines were checked.")
        : qsTr("This is a passport.")

    function wordsFor(advice) {
        switch (advice) {
        case "tooDark":
            return qsTr("Make more light, or go to a brighter place.");
        case "noPage":
        case "wholePage":
            return qsTr("Have the whole page in the picture, on a plain background.");
        case "moveCloser":
            return qsTr("Hold the camera closer, so that the page fills the picture.");
        case "moveBack":
            return qsTr("Hold the camera further away, so that all edges of the page are seen.");
        case "glare":
            return qsTr("Tilt the page or the lamp, so that nothing is reflected.");
        case "holdStill":
            return qsTr("Hold the camera still until the photo is taken.");
        case "photoPage":
            return qsTr("Open the passport at the page with the photo.");
        case "zoneMissing":
            return qsTr("Have the lines with many < at the foot of the page in the picture.");
        case "zoneTooSmall":
            return qsTr("Hold the camera closer to the lines at the foot of the page.");
        case "zoneBlurred":
            return qsTr("Hold still, and keep fingers and reflections off the lines at the foot of the page.");
        case "zoneCut":
            return qsTr("Have the lines at the foot of the page whole in the picture.");
        default:
            return qsTr("Take the photo again in even light: the lines at the foot of the page were not read beyond doubt.");
        }
    }

    function labelOf(kind) {
        switch (kind) {
        case "primaryIdentifier":
            return qsTr("Surname");
        case "secondaryIdentifier":
            return qsTr("Given names");
        case "documentNumber":
            return qsTr("Document number");
        case "nationality":
            return qsTr("Nationality");
        case "issuingState":
            return qsTr("Issuing state");
        case "dateOfBirth":
            return qsTr("Date of birth");
        case "sex":
            return qsTr("Sex");
        default:
            return qsTr("Date of expiry");
        }
    }

    function valueOf(field) {
        if (field.kind !== "sex")
            return field.text;
        switch (field.text) {
        case "F":
            return qsTr("Female");
        case "M":
            return qsTr("Male");
        default:
            return qsTr("Not specified");
        }
    }

    focus: true
    adaptsToSize: true
    LayoutMirroring.enabled: Qt.application.layoutDirection === Qt.RightToLeft
    LayoutMirroring.childrenInherit: true
    Accessible.role: Accessible.Pane
    Accessible.name: root.sentence

    onAppeared: {
        pageActions.focusFirst();
        root.announce(heading);
    }
    onEscapePressed: root.scannedAgain()
    Keys.onPressed: event => event.accepted = frame.takeKey(event)

    component PlainText: ScreenText {
        width: frame.columnWidth
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignLeft // mirrored, whatever is read off a page
        color: root.theme.text
        pointSize: Metrics.titleFont
        textScale: root.textScale
        unit: root.unit
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }

    component Line: Rectangle {
        width: frame.columnWidth
        height: 1
        color: root.theme.line
    }

    Rectangle {
        anchors.fill: parent
        color: root.theme.background
    }

    PointHandler {
        onActiveChanged: if (active) root.isKeyboardInUse = false
    }

    PagePhoto {
        id: photo

        objectName: "photo"
        anchors.fill: parent
        screen: root
        takesWheel: frame.isWide
        image: root.judge.photo
        outline: root.judge.outline
    }

    PageFrame {
        id: frame

        objectName: "frame"
        anchors.fill: parent
        screen: root
        actions: pageActions
        picture: photo
        pictureAspect: photo.aspectRatio

        Item {
            width: frame.columnWidth
            implicitHeight: Math.max(symbol.height, heading.implicitHeight)

            SymbolIcon {
                id: symbol

                anchors.left: parent.left
                width: 32 * root.unit
                height: width
                symbol: root.judge.isPassport ? "check" : "warning"
                color: root.judge.isPassport ? root.theme.success : root.theme.warning
            }

            PlainText {
                id: heading

                objectName: "heading"
                anchors { right: parent.right; verticalCenter: parent.verticalCenter }
                width: parent.width - symbol.width - 12 * root.unit
                text: root.sentence
                pointSize: 20
                font.weight: Font.DemiBold
                Accessible.role: Accessible.Heading
            }
        }

        PlainText {
            visible: advice.count > 0
            text: root.judge.isPassport ? qsTr("To have its machine-readable lines checked too:")
                                        : qsTr("What helps:")
            color: root.theme.secondaryText
        }

        Column {
            objectName: "advice"
            visible: advice.count > 0
            spacing: 8 * root.unit

            Repeater {
                id: advice

                model: root.judge.advice

                Item {
                    required property string modelData

                    width: frame.columnWidth
                    implicitHeight: words.implicitHeight

                    Rectangle {
                        id: bullet

                        anchors.left: parent.left
                        y: words.font.pixelSize * 0.45
                        width: 6 * root.unit
                        height: width
                        radius: width / 2
                        color: root.theme.accent
                    }

                    PlainText {
                        id: words

                        anchors.right: parent.right
                        width: parent.width - bullet.width - 10 * root.unit
                        text: root.wordsFor(parent.modelData)
                    }
                }
            }
        }

        Line { visible: fields.count > 0 }

        Column {
            objectName: "fields"
            visible: fields.count > 0
            spacing: 10 * root.unit

            Repeater {
                id: fields

                model: root.judge.fields

                Item {
                    id: row

                    required property var modelData
                    readonly property bool isBeside: width >= 300 * root.unit * root.textScale
                    readonly property string text: root.valueOf(modelData)

                    width: frame.columnWidth
                    implicitHeight: Math.max(label.implicitHeight, value.y + value.implicitHeight
                                             + (doubt.visible ? doubt.implicitHeight : 0))
                    Accessible.role: Accessible.StaticText
                    Accessible.name: modelData.isDoubtful ? `${label.text}: ${text}, ${doubt.text}`
                                                          : `${label.text}: ${text}`

                    PlainText {
                        id: label

                        anchors.left: parent.left
                        width: row.isBeside ? 0.4 * row.width : row.width
                        text: root.labelOf(row.modelData.kind)
                        color: root.theme.secondaryText
                        Accessible.ignored: true // the row says it
                    }

                    PlainText {
                        id: value

                        anchors.right: parent.right
                        y: row.isBeside ? 0 : label.implicitHeight
                        width: row.isBeside ? 0.6 * row.width - 8 * root.unit : row.width
                        text: row.text
                        font.weight: Font.Medium
                        Accessible.ignored: true
                    }

                    PlainText {
                        id: doubt

                        anchors.right: parent.right
                        y: value.y + value.implicitHeight
                        width: value.width
                        visible: row.modelData.isDoubtful
                        text: qsTr("please check")
                        color: root.theme.warning
                        pointSize: Metrics.smallFont
                        Accessible.ignored: true
                    }
                }
            }
        }

        Line {}

        ActionButton {
            objectName: "details"
            anchors.left: parent.left
            screen: root
            theme: root.theme
            textScale: root.textScale
            isPrimary: false
            width: Math.min(implicitWidth, frame.columnWidth)
            text: root.showsDetails ? qsTr("Hide details") : qsTr("Show details")
            onTapped: root.showsDetails = !root.showsDetails
        }

        // For who wants to know how the verdict came about; not translated where it is the verdict's.
        Column {
            objectName: "detailTexts"
            visible: root.showsDetails
            spacing: 8 * root.unit

            PlainText {
                text: qsTr("Confidence: %1").arg(root.judge.confidence.toLocaleString(Qt.locale(), "f", 2))
            }

            Repeater {
                model: root.judge.reasons

                PlainText {
                    required property string modelData

                    text: modelData
                    pointSize: Metrics.smallFont
                }
            }

            PlainText {
                visible: fields.count > 0
                text: qsTr("These count the outline and the printed words. The machine-readable lines are read on their own.")
                color: root.theme.secondaryText
                pointSize: Metrics.smallFont
            }

            Repeater {
                model: root.judge.zone?.problems ?? []

                PlainText {
                    required property var modelData

                    text: modelData.text
                    pointSize: Metrics.smallFont
                }
            }

            PlainText {
                visible: text !== ""
                text: root.judge.error
                pointSize: Metrics.smallFont
            }

            PlainText {
                visible: root.judge.text !== ""
                text: qsTr("Text that was read:")
                color: root.theme.secondaryText
            }

            PlainText {
                visible: text !== ""
                text: root.judge.text
                pointSize: Metrics.smallFont
            }
        }
    }

    PageActions {
        id: pageActions

        screen: root

        ActionButton {
            objectName: "continue"
            width: pageActions.buttonWidth
            visible: root.judge.isPassport
            screen: root
            theme: root.theme
            textScale: root.textScale
            text: qsTr("Continue")
            onTapped: root.continued()
        }

        ActionButton {
            objectName: "again"
            width: pageActions.buttonWidth
            screen: root
            theme: root.theme
            textScale: root.textScale
            isPrimary: !root.judge.isPassport
            text: qsTr("Scan again")
            onTapped: root.scannedAgain()
        }

        ActionButton {
            objectName: "continueAnyway"
            width: pageActions.buttonWidth
            visible: !root.judge.isPassport && root.acceptsAnyPhoto
            screen: root
            theme: root.theme
            textScale: root.textScale
            isPrimary: false
            text: qsTr("Continue anyway")
            onTapped: root.continued()
        }
    }
}
