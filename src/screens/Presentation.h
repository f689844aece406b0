#pragma once

class QQuickItem;
class QQuickWindow;
class QWidget;

namespace kestrelid::screens {

// The widget that shows a scene, or null if the scene has a window of its own.
[[nodiscard]] QWidget* widgetShowing(const QQuickWindow& scene);

// Ends the presentation in which an item of a scene is installed: pops the nearest StackView that
// shows it on top of another item; else closes the nearest Popup, else the window. Does nothing if
// the item is no longer on top of its stack.
void dismissPresentationOf(QQuickItem& item);

// The same for a widget: rejects the nearest dialog, or closes the nearest window or subwindow, the
// widget itself included.
void dismissPresentationOf(QWidget& widget);

}  // namespace kestrelid::screens
