#include "screens/ScreenItem.h"

#include "screens/Presentation.h"

#include <kestrelid/screens/ScannerCamera.h>

#include <QAccessible>
#include <QJSValue>
#include <QKeyEvent>
#include <QQmlInfo>
#include <QQuickWindow>

namespace kestrelid {

ScreenItem::ScreenItem(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemIsFocusScope);
}

void ScreenItem::setKeyboardInUse(bool inUse) {
    if (isKeyboardInUse_ == inUse)
        return;
    isKeyboardInUse_ = inUse;
    emit keyboardInUseChanged();
}

void ScreenItem::dismissBy(const QVariant& hostFunction) {
    if (!perform(hostFunction))
        dismissPresentationOf(*this);
}

bool ScreenItem::perform(const QVariant& action) {
    if (action.metaType() == QMetaType::fromType<ScreenAction>()) {
        // A copy: the action may replace itself.
        const auto function = action.value<ScreenAction>();
        if (function)
            function();
        return static_cast<bool>(function);
    }
    if (action.metaType() != QMetaType::fromType<QJSValue>())
        return false;
    const auto function = action.value<QJSValue>();
    if (!function.isCallable())
        return false;
    const QPointer<ScreenItem> self = this;
    const QJSValue result = function.call();
    if (result.isError() && self)
        qmlWarning(this) << result.toString();
    return true;
}

void ScreenItem::announce(QQuickItem* item) {
    QAccessibleEvent event(item, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void ScreenItem::componentComplete() {
    QQuickItem::componentComplete();
    updateShown();
}

void ScreenItem::itemChange(ItemChange change, const ItemChangeData& data) {
    if (change == ItemSceneChange) {
        disconnect(windowVisibility_);
        if (data.window)
            windowVisibility_ =
                connect(data.window, &QWindow::visibleChanged, this, &ScreenItem::updateShown);
    }
    QQuickItem::itemChange(change, data);
    if (change == ItemSceneChange || change == ItemVisibleHasChanged)
        updateShown();
}

void ScreenItem::updateShown() {
    const bool isShown = isComponentComplete() && isVisible() && window() && window()->isVisible();
    if (isShown == isShown_)
        return;
    isShown_ = isShown;
    if (isShown)
        emit appeared();
}

void ScreenItem::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Escape:
        if (!event->isAutoRepeat())
            emit escapePressed();
        return;
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!event->isAutoRepeat())
            emit activated();
        return;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        // The window would begin at its own first control.
        if (hasActiveFocus() && window()->activeFocusItem() == this) {
            const bool forward = event->key() == Qt::Key_Tab;
            if (QQuickItem* next = nextItemInFocusChain(forward))
                return next->forceActiveFocus(forward ? Qt::TabFocusReason
                                                      : Qt::BacktabFocusReason);
        }
        break;
    default:
        break;
    }
    event->ignore();
}

}  // namespace kestrelid
