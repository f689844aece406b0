#include "screens/Tappable.h"

#include "screens/ScreenItem.h"

#include <QKeyEvent>

namespace kestrelid::screens {

namespace {

ScreenItem* screenAbove(const QQuickItem& item) {
    for (QQuickItem* holder = item.parentItem(); holder; holder = holder->parentItem()) {
        if (auto* screen = qobject_cast<ScreenItem*>(holder))
            return screen;
    }
    return nullptr;
}

// Also to the screens that hold the screen: the focus goes on from one's controls to the other's.
void noteKeyboard(const QQuickItem& item) {
    for (ScreenItem* screen = screenAbove(item); screen; screen = screenAbove(*screen))
        screen->setKeyboardInUse(true);
}

}  // namespace

Tappable::Tappable(QQuickItem* parent) : QQuickItem(parent) {
    setActiveFocusOnTab(true);
}

void Tappable::focusInEvent(QFocusEvent* event) {
    if (event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason)
        noteKeyboard(*this);
    QQuickItem::focusInEvent(event);
}

void Tappable::itemChange(ItemChange change, const ItemChangeData& data) {
    QQuickItem::itemChange(change, data);
    if (change != ItemVisibleHasChanged || data.boolValue || !hasFocus())
        return;
    ScreenItem* screen = screenAbove(*this);
    if (!screen || !screen->isVisible())
        return;  // all of it is hidden, and comes back as it was
    const bool wasActive = hasActiveFocus();
    setFocus(false);
    if (wasActive)
        screen->forceActiveFocus(Qt::OtherFocusReason);
}

void Tappable::keyPressEvent(QKeyEvent* event) {
    if (isCommand(*event))
        return event->ignore();
    switch (event->key()) {
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        noteKeyboard(*this);
        if (!event->isAutoRepeat())
            emit tapped();
        return;
    default:
        event->ignore();
    }
}

}  // namespace kestrelid::screens
