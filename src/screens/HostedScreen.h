#pragma once

#include <QMarginsF>
#include <QString>
#include <QVariantMap>

class QQuickWidget;
class QWidget;

namespace kestrelid {
struct ScannerAssistance;
struct ScannerCamera;
struct ScannerLayout;
}  // namespace kestrelid

namespace kestrelid::screens {

// Shows a screen of the module edge to edge in a widget, as its child. screen: name of the QML
// type. properties: its initial ones; `dismiss` is added and closes the widget's presentation.
//
// The screen stands in the host's order of Tab where the widget does: Tab leads from its last
// control to the host's next widget, Shift+Tab from its first to the one before. As it is shown it
// takes the focus, unless the host has given that to another widget, and drops only if its property
// importsPhotos is set by then.
QQuickWidget* hostScreen(QWidget& parent, const QString& screen, QVariantMap properties,
                         const QMarginsF& safeAreaMargins, const ScannerCamera& camera);

// What a host asks for, as properties of the scanning screen.
[[nodiscard]] QVariantMap propertiesOf(const ScannerAssistance& assistance);
[[nodiscard]] QVariantMap propertiesOf(const ScannerLayout& layout);

// For controllers that a form builder makes: prints why not, and aborts. controller, line: where,
// as the message has it.
[[noreturn]] void refuseFormBuilder(const char* controller, int line);

}  // namespace kestrelid::screens
