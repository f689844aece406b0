pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// Says what did not work with a photo, and offers the ways on.
ScreenItem {
    id: root

    // "notTaken", "notOpened" or "notJudged".
    required property string failure
    // Why, in one line for whoever looks after the machine; may be empty.
    required property string cause
    required property Theme theme
    required property real textScale
    property bool importsPhotos: true

    signal triedAgain
    signal pictureWanted
    signal closed

    readonly property string sentence: {
        switch (root.failure) {
        case "notOpened":
            return qsTr("The picture could not be opened.");
        case "notJudged":
            return qsTr("The photo could not be checked.");
        default:
            return qsTr("The photo could not be taken.");
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
    onEscapePressed: root.closed()
    Keys.onPressed: event => event.accepted = frame.takeKey(event)

    Rectangle {
        anchors.fill: parent
        color: root.theme.background
    }

    PointHandler {
        onActiveChanged: if (active) root.isKeyboardInUse = false
    }

    PageFrame {
        id: frame

        objectName: "frame"
        anchors.fill: parent
        screen: root
        actions: pageActions
        isCentered: true

        Item {
            width: frame.columnWidth
            implicitHeight: symbol.height + 2 * Metrics.edge * root.unit

            SymbolIcon {
                id: symbol

                anchors.centerIn: parent
                width: 56 * root.unit
                height: width
                symbol: "warning"
                color: root.theme.warning
            }
        }

        ScreenText {
            id: heading

            objectName: "heading"
            width: frame.columnWidth
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: root.sentence
            color: root.theme.text
            pointSize: 20
            textScale: root.textScale
            unit: root.unit
            font.weight: Font.DemiBold
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }

        ScreenText {
            objectName: "cause"
            width: frame.columnWidth
            visible: text !== ""
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: root.cause
            color: root.theme.secondaryText
            pointSize: Metrics.smallFont
            textScale: root.textScale
            unit: root.unit
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }

    PageActions {
        id: pageActions

        screen: root

        ActionButton {
            objectName: "again"
            width: pageActions.buttonWidth
            screen: root
            theme: root.theme
            textScale: root.textScale
            text: qsTr("Try again")
            onTapped: root.triedAgain()
        }

        ActionButton {
            objectName: "usePicture"
            width: pageActions.buttonWidth
            visible: root.importsPhotos
            screen: root
            theme: root.theme
            textScale: root.textScale
            isPrimary: false
            text: qsTr("Use a picture")
            onTapped: root.pictureWanted()
        }
    }
}
