#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QUrl>
#include <QWidget>

// A file to be dragged, as a file manager shows one.
struct File final : QWidget {
    void mouseMoveEvent(QMouseEvent*) override {
        auto* drag = new QDrag(this);
        auto* content = new QMimeData;
        content->setUrls({QUrl::fromLocalFile(QApplication::arguments().value(3))});
        drag->setMimeData(content);
        drag->exec(Qt::CopyAction);
    }
};

// kestrelid_drag_source X Y FILE: a window of 100x100 at X, Y.
int main(int argc, char** argv) {
    QApplication application(argc, argv);
    File file;
    file.setWindowTitle("Drag source");
    file.setGeometry(atoi(argv[1]), atoi(argv[2]), 100, 100);
    file.show();
    return QApplication::exec();
}
