// A host without a line for its own end: EndingHost qml|widgets CAMERA MILLISECONDS closes after
// that time.

#include <kestrelid/screens/DocumentScannerVC.h>
#include <kestrelid/screens/QmlModule.h>

#include <memory>
#include <QApplication>
#include <QQmlApplicationEngine>
#include <QTimer>

int main(int argc, char** argv) {
    using namespace kestrelid;
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    ScannerCamera camera;
    camera.options.camera = arguments.at(2).toStdString();
    QTimer::singleShot(arguments.at(3).toInt(), &application, &QApplication::quit);
    QQmlApplicationEngine engine;
    std::unique_ptr<DocumentScannerVC> screen;
    if (arguments.at(1) == "widgets") {
        screen = std::make_unique<DocumentScannerVC>(PhotoCompletion(), camera);
        screen->show();
    } else {
        installQmlModule(engine);
        setScannerCamera(engine, camera);
        engine.loadData("import QtQuick; import Kestrelid\n"
                        "Window { visible: true; DocumentScannerView {\n"
                        "anchors.fill: parent; completion: photo => {} } }");
    }
    return QApplication::exec();
}
