#include "screens/ScreenItem.h"

#include "screens/Presentation.h"

#include <kestrelid/screens/ScannerCamera.h>

#include <algorithm>
#include <cmath>
#include <QAccessible>
#include <QJSValue>
#include <QKeyEvent>
#include <QQmlInfo>
#include <QQuickWindow>

namespace kestrelid::screens {

namespace {

// Of the shorter side, in points: what the screens were designed for reaches to the first; there a
// point of the design is one point. From then on it is a part of the second.
constexpr qreal kLargeSide = 1200.0;
constexpr qreal kSideOfUnit = 1080.0;
constexpr qreal kUnitSteps = 4.0;  // to the unit: lengths stay whole while a window is resized

constexpr qreal kCompactHeight = 500.0;   // units
constexpr qreal kPortraitHeight = 400.0;  // the same of what is higher than wide

qreal unitFor(qreal shorterSide) {
    if (shorterSide <= kLargeSide)
        return 1.0;
    return std::max(1.0, std::floor(shorterSide / kSideOfUnit * kUnitSteps) / kUnitSteps);
}

// What keys go to once the window has them.
QQuickItem* focusedIn(const QQuickWindow& window) {
    QQuickItem* item = window.contentItem();
    while (item->isFocusScope() && item->scopedFocusItem())
        item = item->scopedFocusItem();
    return item;
}

}  // namespace

bool isCommand(const QKeyEvent& event) {
    return (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) != 0;
}

ScreenItem::ScreenItem(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemIsFocusScope);
}

void ScreenItem::setKeyboardInUse(bool inUse) {
    if (isKeyboardInUse_ == inUse)
        return;
    isKeyboardInUse_ = inUse;
    emit keyboardInUseChanged();
}

void ScreenItem::setAdaptsToSize(bool adapts) {
    if (adaptsToSize_ == adapts)
        return;
    adaptsToSize_ = adapts;
    updateSizeClass();
    emit sizeClassChanged();
}

void ScreenItem::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    updateSizeClass();
}

void ScreenItem::updateSizeClass() {
    const qreal unit = adaptsToSize_ ? unitFor(std::min(width(), height())) : 1.0;
    // What stands beside the picture takes width from it, which portrait has little of.
    const qreal least = width() < height() ? kPortraitHeight : kCompactHeight;
    const bool isCompact = adaptsToSize_ && height() < least * unit;
    if (unit == unit_ && isCompact == isCompact_)
        return;
    unit_ = unit;
    isCompact_ = isCompact;
    emit sizeClassChanged();
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
    if (const QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(item))
        emit announced(spoken->text(QAccessible::Name));
}

void ScreenItem::componentComplete() {
    QQuickItem::componentComplete();
    updateShown();
}

void ScreenItem::itemChange(ItemChange change, const ItemChangeData& data) {
    if (change == ItemSceneChange)
        watch(data.window);
    QQuickItem::itemChange(change, data);
    if (change == ItemSceneChange || change == ItemVisibleHasChanged)
        updateShown();
}

void ScreenItem::watch(QQuickWindow* window) {
    disconnect(windowVisibility_);
    if (widget_)
        widget_->removeEventFilter(this);
    widget_ = window ? widgetShowing(*window) : nullptr;
    isWindowShown_ = widget_ ? widget_->isVisible() : window && window->isVisible();
    // The scene of a QQuickWidget is never told that it is visible.
    if (widget_)
        widget_->installEventFilter(this);
    else if (window)
        windowVisibility_ =
            connect(window, &QWindow::visibleChanged, this, &ScreenItem::setWindowShown);
}

bool ScreenItem::eventFilter(QObject* watched, QEvent* event) {
    if (watched == widget_ && event->type() == QEvent::Show)
        setWindowShown(true);
    else if (watched == widget_ && event->type() == QEvent::Hide)
        setWindowShown(false);
    return QQuickItem::eventFilter(watched, event);
}

void ScreenItem::setWindowShown(bool isShown) {
    isWindowShown_ = isShown;
    updateShown();
}

void ScreenItem::updateShown() {
    const bool isShown = isComponentComplete() && isVisible() && isWindowShown_;
    if (isShown == isShown_)
        return;
    isShown_ = isShown;
    if (isShown)
        emit appearing();
    emit shownChanged();
    if (!isShown_)
        return;
    takeFocus();
    emit appeared();
}

void ScreenItem::takeFocus() {
    const QQuickItem* focused = focusedIn(*window());
    if (focused == this || isAncestorOf(focused))
        return;
    if (focused->isAncestorOf(this) || !focused->isVisible() || !focused->isEnabled())
        forceActiveFocus(Qt::OtherFocusReason);
}

void ScreenItem::keyPressEvent(QKeyEvent* event) {
    if (isCommand(*event))
        return event->ignore();
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
            const bool forward =
                event->key() == Qt::Key_Tab && !event->modifiers().testFlag(Qt::ShiftModifier);
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

}  // namespace kestrelid::screens
