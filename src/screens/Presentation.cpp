#include "screens/Presentation.h"

#include <QApplication>
#include <QDialog>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQmlExpression>
#include <QQuickItem>
#include <QQuickRenderControl>
#include <QQuickWidget>
#include <QQuickWindow>
#include <QWidget>

namespace kestrelid::screens {

namespace {

// StackView and Popup are known by name only: the screens do not need Qt Quick Controls.
bool isStack(const QObject& object) {
    return object.inherits("QQuickStackView");
}

QObject* popupOf(const QQuickItem& item) {
    for (QObject* owner = item.parent(); owner; owner = owner->parent()) {
        if (owner->inherits("QQuickPopup"))
            return owner;
        if (qobject_cast<QQuickItem*>(owner))
            break;
    }
    return nullptr;
}

}  // namespace

QWidget* widgetShowing(const QQuickWindow& scene) {
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return nullptr;
    for (QWidget* widget : QApplication::allWidgets()) {
        const auto* shows = qobject_cast<QQuickWidget*>(widget);
        if (shows && shows->quickWindow() == &scene)
            return widget;
    }
    return nullptr;
}

void dismissPresentationOf(QQuickItem& item) {
    for (QQuickItem* holder = &item; holder; holder = holder->parentItem()) {
        if (isStack(*holder)) {
            const auto* top = holder->property("currentItem").value<QQuickItem*>();
            if (!top || (top != &item && !top->isAncestorOf(&item)))
                return;
            if (holder->property("depth").toInt() > 1) {
                QQmlExpression pop(qmlContext(&item), holder, QStringLiteral("pop()"));
                pop.evaluate();
                return;
            }
        } else if (QObject* popup = popupOf(*holder)) {
            QMetaObject::invokeMethod(popup, "close");
            return;
        }
    }
    QQuickWindow* window = item.window();
    if (!window)
        return;
    // A scene inside another toolkit's window: that one closes.
    if (QWindow* shown = QQuickRenderControl::renderWindowFor(window))
        shown->close();
    else
        window->close();
}

void dismissPresentationOf(QWidget& widget) {
    for (QWidget* holder = &widget; holder; holder = holder->parentWidget()) {
        if (auto* dialog = qobject_cast<QDialog*>(holder)) {
            dialog->reject();
            return;
        }
        if (holder->isWindow() || holder->windowType() == Qt::SubWindow) {
            holder->close();
            return;
        }
    }
}

}  // namespace kestrelid::screens
