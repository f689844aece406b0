#pragma once

#include <QMarginsF>
#include <QString>
#include <QVariantMap>

class QQuickWidget;
class QWidget;

namespace kestrelid {
struct ScannerCamera;
}

namespace kestrelid::screens {

// Shows a screen of the module edge to edge in a widget, as its child. screen: name of the QML
// type. properties: its initial ones; `dismiss` is added and closes the widget's presentation.
QQuickWidget* hostScreen(QWidget& parent, const QString& screen, QVariantMap properties,
                         const QMarginsF& safeAreaMargins, const ScannerCamera& camera);

// For controllers that a form builder makes: prints why not, and aborts.
[[noreturn]] void refuseFormBuilder();

}  // namespace kestrelid::screens
