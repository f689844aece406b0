#include <kestrelid/DefaultServices.h>
#include <kestrelid/screens/QmlModule.h>

#include <QApplication>
#include <QQmlApplicationEngine>
#include <QThread>

// Shows the QML file that is named.
int main(int argc, char** argv) {
    QApplication application(argc, argv);
    kestrelid::ScannerCamera camera;
    camera.recognition = kestrelid::defaultServices();
    int status = 1;
    {
        QQmlApplicationEngine engine;
        kestrelid::installQmlModule(engine);
        kestrelid::setScannerCamera(engine, camera);
        engine.load(QUrl::fromLocalFile(QApplication::arguments().value(1)));
        if (!engine.rootObjects().isEmpty())
            status = QApplication::exec();
    }
    // A camera that is being set up holds them for a moment; letting go of them last waits for what
    // is still judged.
    while (camera.recognition->queue.use_count() > 1)
        QThread::msleep(10);
    return status;
}
