#include <kestrelid/DefaultServices.h>
#include <kestrelid/screens/QmlModule.h>

#include <QApplication>
#include <QQmlApplicationEngine>

// Shows the QML file that is named.
int main(int argc, char** argv) {
    QApplication application(argc, argv);
    kestrelid::ScannerCamera camera;
    camera.recognition = kestrelid::defaultServices();
    QQmlApplicationEngine engine;
    kestrelid::installQmlModule(engine);
    kestrelid::setScannerCamera(engine, camera);
    engine.load(QUrl::fromLocalFile(QApplication::arguments().value(1)));
    return engine.rootObjects().isEmpty() ? 1 : QApplication::exec();
}
