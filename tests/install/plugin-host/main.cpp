// Shows the preview screen of the module in the folder that its argument names, and waits for its
// first frame.
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

#include <iostream>

constexpr auto kHost = R"(
    import QtQuick
    import Kestrelid
    Window {
        width: 390; height: 760; visible: true
        ImagePreviewView {
            anchors.fill: parent
            title: "A page"
            didTapRetake: () => {}
            didTapConfirm: () => {}
        }
    }
)";

int main(int count, char** arguments) {
    QGuiApplication application(count, arguments);
    QQmlApplicationEngine engine;
    engine.addImportPath(QString::fromLocal8Bit(arguments[1]));
    engine.loadData(kHost);
    const auto windows = QGuiApplication::topLevelWindows();
    auto* window = windows.isEmpty() ? nullptr : qobject_cast<QQuickWindow*>(windows.front());
    if (!window)
        return 1;
    QObject::connect(window, &QQuickWindow::frameSwapped, &application, QGuiApplication::quit);
    return QGuiApplication::exec();
}
