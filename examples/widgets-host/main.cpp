#include <kestrelid/DefaultServices.h>
#include <kestrelid/screens/DocumentScannerVC.h>
#include <kestrelid/screens/ImagePreviewViewController.h>
#include <kestrelid/screens/MainQueue.h>

#include <cstdlib>
#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QStackedWidget>

using namespace kestrelid;

// Scan, look at the photo, take it again or confirm it, see the verdict.
class Host : public QStackedWidget {
public:
    explicit Host(const QString& cameraOrFile) {
        camera_.options.camera = cameraOrFile.toStdString();  // empty: the first camera
        camera_.recognition = defaultServices();              // one set of models for all
        detector_ = PassportDetector::create(*camera_.recognition);
        scan();
    }

private:
    // A new screen each time: the camera is free while a photo is looked at.
    void scan() {
        const auto completion = [this](const std::optional<Image>& photo) {
            if (photo && qobject_cast<DocumentScannerVC*>(currentWidget()))
                preview(*photo);
        };
        present(new DocumentScannerVC(completion, camera_));
    }

    void preview(const Image& photo) {
        present(new ImagePreviewViewController(
            "Is everything readable?", photo, [this] { scan(); }, [this, photo] { judge(photo); }));
    }

    void judge(const Image& photo) {
        auto* page = new QLabel("One moment...");
        page->setWordWrap(true);
        present(page);
        // The verdict comes on a worker; widgets are for the main thread.
        detector_->validate(photo.upright(), [mainQueue = makeQtMainQueue(), page = QPointer(page)](
                                                 const PassportValidationResult& result) {
            mainQueue->async([page, isPassport = result.isPassport()] {
                if (page)
                    page->setText(isPassport ? "Thank you." : "That is no passport.");
            });
        });
    }

    void present(QWidget* page) {
        if (QWidget* before = currentWidget()) {
            removeWidget(before);
            before->deleteLater();
        }
        addWidget(page);
        page->setFocus();
    }

    ScannerCamera camera_;
    std::shared_ptr<PassportDetector> detector_;
};

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    Host host(QApplication::arguments().value(1));
    host.resize(390, 760);
    host.show();
    return QApplication::exec();
}
