#pragma once

class QQuickItem;
class QQuickWindow;
class QWidget;

namespace kestrelid::screens {

// The widget that shows a scene, or null where the scene has a window of its own.
[[nodiscard]] QWidget* widgetShowing(const QQuickWindow& scene);

// Ends the presentation in which an item of a scene is installed: pops the nearest StackView whose
// top holds it, if something lies below; else closes the nearest Popup, else the window. Nothing
// where the item has left its stack's top already.
void dismissPresentationOf(QQuickItem& item);

// The same for a widget: rejects the nearest dialog, or closes the nearest window or subwindow, the
// widget itself included.
void dismissPresentationOf(QWidget& widget);

}  // namespace kestrelid::screens
