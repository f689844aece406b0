#include <kestrelid/screens/PassportScanController.h>

#include <cstdio>
#include <QApplication>

// The whole way in one widget: scan, look at the photo, judge it, see what was found.
int main(int argc, char** argv) {
    QApplication application(argc, argv);
    kestrelid::ScannerCamera camera;  // a name or a file; empty: the first camera
    camera.options.camera = QApplication::arguments().value(1).toStdString();
    kestrelid::PassportScanController scan(
        [](const std::optional<kestrelid::PassportScanResult>& result) {
            std::puts(result ? "a passport" : "no passport");
        },
        camera);
    scan.setWindowTitle("Your passport, please");
    scan.resize(390, 760);
    scan.show();
    return QApplication::exec();
}
