#include <QApplication>
#include <QDrag>
#include <QLabel>
#include <QMimeData>
#include <QMouseEvent>
#include <QUrl>

namespace {

// A file to be dragged, as a file manager shows one.
class File final : public QLabel {
public:
    explicit File(const QUrl& file) : QLabel(file.fileName()), file_(file) {
        setWindowTitle("Drag source");
        setAlignment(Qt::AlignCenter);
    }

protected:
    void mouseMoveEvent(QMouseEvent*) override {
        auto* drag = new QDrag(this);
        auto* content = new QMimeData;
        content->setUrls({file_});
        drag->setMimeData(content);
        drag->exec(Qt::CopyAction);
    }

private:
    QUrl file_;
};

}  // namespace

// kestrelid_drag_source X Y FILE: a window of 100x100 at X, Y.
int main(int argc, char** argv) {
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    File file(QUrl::fromLocalFile(arguments.value(3)));
    file.setGeometry(arguments.value(1).toInt(), arguments.value(2).toInt(), 100, 100);
    file.show();
    return QApplication::exec();
}
