#include <QtWidgets>

// A window from which the file that is the program's argument can be dragged.
struct DragSource final : QWidget {
    void mouseMoveEvent(QMouseEvent*) override {
        auto* drag = new QDrag(this);
        drag->setMimeData(new QMimeData);
        drag->mimeData()->setUrls({QUrl::fromLocalFile(QApplication::arguments().value(1))});
        drag->exec(Qt::CopyAction);
    }
};

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    DragSource source;
    source.setWindowTitle("Drag source");
    source.setGeometry(600, 100, 100, 100);
    source.show();
    return QApplication::exec();
}
