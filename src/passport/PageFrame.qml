pragma ComponentBehavior: Bound
import QtQuick
import Kestrelid

// Where the parts of a page lie: a column that scrolls by touch, wheel and keys, the buttons below
// it, and a picture above the column or, in a wide window, beside it.
Item {
    id: frame

    required property ScreenItem screen
    required property PageActions actions
    property Item picture // may be null
    property real pictureAspect: 1.5 // width by height
    property bool isCentered: false // a short column lies in the middle of the height
    default property alias content: column.data

    readonly property real unit: screen.unit
    readonly property real gap: Metrics.edge * unit
    readonly property bool isWide: !!picture && inside.width >= 700 * unit
    readonly property real columnWidth: Math.min(scroller.width, 560 * unit)
    // Buttons that would leave the column too little room scroll with it.
    readonly property bool isPinned: actions.implicitHeight < 0.4 * inside.height
    readonly property Item focused: Window.activeFocusItem

    // Whether the key scrolls.
    function takeKey(event) {
        const page = scroller.height - 2 * gap;
        const steps = new Map([[Qt.Key_PageDown, page], [Qt.Key_PageUp, -page],
                               [Qt.Key_Down, 3 * gap], [Qt.Key_Up, -3 * gap],
                               [Qt.Key_End, scroller.contentHeight], [Qt.Key_Home, -scroller.contentHeight]]);
        if (!steps.has(event.key))
            return false;
        scrollTo(scroller.contentY + steps.get(event.key));
        return true;
    }

    function scrollTo(y) {
        scroller.cancelFlick();
        scroller.contentY = Math.max(0, Math.min(y, scroller.contentHeight - scroller.height));
    }

    // What has the focus is seen.
    onFocusedChanged: {
        const scrolled = scroller.contentItem;
        let holder = focused;
        while (holder && holder !== scrolled)
            holder = holder.parent;
        if (!holder)
            return;
        const top = focused.mapToItem(scrolled, 0, 0).y - gap / 2;
        const bottom = focused.mapToItem(scrolled, 0, focused.height).y + gap / 2;
        if (bottom > scroller.contentY + scroller.height)
            scrollTo(bottom - scroller.height);
        if (top < scroller.contentY)
            scrollTo(top);
    }

    Item {
        id: inside

        x: frame.screen.safeAreaMargins.left + frame.gap
        y: frame.screen.safeAreaMargins.top + frame.gap
        width: Math.max(0, frame.width - frame.screen.safeAreaMargins.left
                        - frame.screen.safeAreaMargins.right - 2 * frame.gap)
        height: Math.max(0, frame.height - frame.screen.safeAreaMargins.top
                         - frame.screen.safeAreaMargins.bottom - 2 * frame.gap)

        Item {
            id: beside

            anchors { left: parent.left; top: parent.top; bottom: parent.bottom }
            width: frame.isWide ? (parent.width - frame.gap) / 2 : 0
        }

        Flickable {
            id: scroller

            objectName: "scroller"
            anchors {
                left: beside.right
                leftMargin: frame.isWide ? frame.gap : 0
                right: parent.right
                top: parent.top
                bottom: below.top
                bottomMargin: frame.isPinned ? frame.gap / 2 : 0
            }
            contentHeight: column.height + (frame.isPinned ? 0 : frame.gap + frame.actions.implicitHeight)
            boundsBehavior: Flickable.StopAtBounds
            clip: true

            Column {
                id: column

                x: (scroller.width - width) / 2
                y: frame.isCentered && frame.isPinned ? Math.max(0, (scroller.height - height) / 2) : 0
                width: frame.columnWidth
                spacing: 12 * frame.unit

                Item {
                    id: above

                    visible: !!frame.picture && !frame.isWide
                    width: frame.columnWidth
                    height: Math.min(width / frame.pictureAspect, 0.4 * inside.height)
                }
            }

            Item {
                id: atEnd

                x: column.x
                y: column.height + frame.gap
                width: column.width
            }
        }

        // How much there is to scroll.
        Rectangle {
            anchors.right: parent.right
            anchors.rightMargin: -width - 4 * frame.unit
            y: scroller.y + scroller.visibleArea.yPosition * scroller.height
            width: 4 * frame.unit
            height: scroller.visibleArea.heightRatio * scroller.height
            visible: scroller.visibleArea.heightRatio < 1
            radius: width / 2
            color: "#808080"
        }

        Item {
            id: below

            anchors.bottom: parent.bottom
            x: scroller.x + column.x
            width: frame.columnWidth
            height: frame.isPinned ? frame.actions.implicitHeight : 0
        }
    }

    Binding {
        target: frame.actions
        property: "parent"
        value: frame.isPinned ? below : atEnd
    }

    Binding {
        when: !!frame.picture
        target: frame.picture
        property: "parent"
        value: frame.isWide ? beside : above
    }
}
