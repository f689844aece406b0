#include "apps/demo/WidgetsHost.h"

#include "apps/demo/TopBar.h"
#include "apps/demo/VerdictPage.h"

#include <kestrelid/screens/DocumentScannerVC.h>
#include <kestrelid/screens/ImagePreviewViewController.h>

#include <QDialog>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QStackedLayout>
#include <QVBoxLayout>

namespace kestrelid::demo {

namespace {

class WidgetsHost final : public Host, public QWidget {
public:
    WidgetsHost(CameraChoice& cameras, PhotoJudge& judge, const PlatformServices& recognition)
        : cameras_(cameras), judge_(judge) {
        camera_.recognition = recognition;
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        layout->addWidget(new TopBar(cameras));
        layout->addLayout(pages_, 1);
        connect(&cameras, &CameraChoice::cameraChosen, this, &WidgetsHost::scan);
        connect(&cameras, &CameraChoice::cameraFound, this, [this] {
            if (!pages_->currentWidget())
                scan();
        });
        connect(&cameras, &CameraChoice::pictureOpened, this, &WidgetsHost::preview);
        connect(&judge, &PhotoJudge::changed, this, [this] {
            if (qobject_cast<VerdictPage*>(pages_->currentWidget()))
                setName(judge_.headline());
        });
        setAcceptDrops(true);
        setMinimumSize(320, 480);
        resize(420, 760);
        scan();
        show();
    }

    QImage grab() override { return QWidget::grab().toImage(); }

protected:
    void dragEnterEvent(QDragEnterEvent* event) override {
        if (event->mimeData()->hasUrls())
            event->acceptProposedAction();
    }
    void dropEvent(QDropEvent* event) override { cameras_.open(event->mimeData()->urls().first()); }

private:
    // A new screen each time: the camera is free while a photo is looked at.
    void scan() {
        if (cameras_.camera().isEmpty())
            return;
        camera_.options.camera = cameras_.camera().toStdString();
        const auto completion = [this](const std::optional<Image>& photo) {
            if (qobject_cast<DocumentScannerVC*>(pages_->currentWidget()))
                preview(photo);
        };
        present(new DocumentScannerVC(completion, camera_), tr("scanning"));
    }

    void preview(const std::optional<Image>& photo) {
        const auto confirm = [this, photo] {
            judge_.judge(photo.value_or(Image()));
            present(new VerdictPage(judge_, [this] { scan(); }), judge_.headline());
        };
        // The close symbol rejects the dialog.
        auto* dialog = new QDialog;
        dialog->setWindowFlags(Qt::Widget);
        connect(dialog, &QDialog::rejected, this, &WidgetsHost::scan);
        auto* layout = new QVBoxLayout(dialog);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(new ImagePreviewViewController(
            tr("Is everything readable?"), photo, [this] { scan(); }, confirm));
        present(dialog, tr("preview"));
    }

    void present(QWidget* page, const QString& name) {
        if (QWidget* before = pages_->currentWidget()) {
            pages_->removeWidget(before);
            before->hide();
            before->deleteLater();
        }
        pages_->addWidget(page);
        page->setFocus();
        setName(name);
    }

    void setName(const QString& page) { setWindowTitle(tr("Kestrelid demo: %1").arg(page)); }

    CameraChoice& cameras_;
    PhotoJudge& judge_;
    ScannerCamera camera_;
    QStackedLayout* pages_ = new QStackedLayout;
};

}  // namespace

std::unique_ptr<Host> makeWidgetsHost(CameraChoice& cameras, PhotoJudge& judge,
                                      const PlatformServices& recognition) {
    return std::make_unique<WidgetsHost>(cameras, judge, recognition);
}

}  // namespace kestrelid::demo
