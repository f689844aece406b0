#include <kestrelid/DefaultServices.h>
#include <kestrelid/screens/DocumentScannerVC.h>
#include <kestrelid/screens/ImagePreviewViewController.h>
#include <kestrelid/screens/MainQueue.h>

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QStackedWidget>
#include <QTranslator>

using namespace kestrelid;

// Scan, look at the photo, take it again or confirm it, see the verdict.
class Host : public QStackedWidget {
public:
    Host(const PlatformServices& recognition, const QString& cameraOrFile) {
        camera_.options.camera = cameraOrFile.toStdString();  // empty: the first camera
        camera_.recognition = recognition;                    // one set of models for all
        detector_ = PassportDetector::create(recognition);
        scan();
    }

private:
    // A new screen each time: the camera is free while a photo is looked at.
    void scan() {
        const auto completion = [this](const std::optional<Image>& photo) {
            if (photo && qobject_cast<DocumentScannerVC*>(currentWidget()))
                preview(*photo);
        };
        auto* scanner = new DocumentScannerVC(completion, camera_);
        // Of the machine-readable zone no more than that it was read.
        scanner->didReadZone = [this](const LiveZone& live) {
            setWindowTitle(live.isStrict() ? "Your passport, please: zone read"
                                           : "Your passport, please");
        };
        present(scanner);
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
    QTranslator translator;
    if (translator.load(QLocale(), "kestrelid", "_", KESTRELID_TRANSLATIONS))
        QApplication::installTranslator(&translator);
    Host host(defaultServices(), QApplication::arguments().value(1));
    host.setWindowTitle("Your passport, please");
    host.resize(390, 760);
    host.show();
    return QApplication::exec();
}
