#include "screens/Tappable.h"

#include "screens/ScreenItem.h"

#include <QKeyEvent>

namespace kestrelid::screens {

namespace {

void noteKeyboard(const QQuickItem& item) {
    for (QQuickItem* holder = item.parentItem(); holder; holder = holder->parentItem()) {
        if (auto* screen = qobject_cast<ScreenItem*>(holder))
            return screen->setKeyboardInUse(true);
    }
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

void Tappable::keyPressEvent(QKeyEvent* event) {
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
