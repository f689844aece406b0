#include "apps/demo/WidgetsHost.h"

#include <kestrelid/screens/PassportScanController.h>

#include <QDialog>
#include <QLabel>
#include <QVBoxLayout>
#include <utility>

namespace kestrelid::demo {

namespace {

constexpr int kNoticeMargin = 12;

class WidgetsHost final : public Host, public QWidget {
public:
    WidgetsHost(DemoSession& session, const PlatformServices& recognition)
        : session_(session), notice_(new QLabel), layout_(new QVBoxLayout(this)) {
        camera_.recognition = recognition;
        notice_->setWordWrap(true);
        notice_->setTextFormat(Qt::PlainText);
        notice_->setMargin(kNoticeMargin);
        QFont font = notice_->font();
        font.setPointSizeF(font.pointSizeF() * session.textScale());
        notice_->setFont(font);
        layout_->setContentsMargins(0, 0, 0, 0);
        layout_->setSpacing(0);
        layout_->addWidget(notice_);
        connect(&session, &DemoSession::changed, this, &WidgetsHost::follow);
        connect(&session, &DemoSession::ready, this, &WidgetsHost::begin);
        setMinimumSize(320, 240);
        resize(420, 760);
        follow();
        show();
        if (session.isReady())
            begin();
    }

    QImage grab() override { return QWidget::grab().toImage(); }

private:
    void begin() { scan(session_.picture()); }

    // A screen closes what it stands in once the person is done: here a part of the window, not all
    // of it.
    void scan(const QUrl& picture = {}) {
        delete std::exchange(part_, new QDialog(this));
        part_->setWindowFlags(Qt::Widget);
        connect(part_, &QDialog::finished, this, &WidgetsHost::goOn, Qt::QueuedConnection);
        camera_.options.camera = session_.camera().toStdString();
        auto* screen = new PassportScanController(
            [this](const auto& result) { isDone_ = result.has_value(); }, camera_);
        screen->textScale = session_.textScale();
        screen->didChangePage = [this](const QString& page) { session_.setPage(page); };
        if (!picture.isEmpty())
            screen->open(picture);
        auto* inside = new QVBoxLayout(part_);
        inside->setContentsMargins(0, 0, 0, 0);
        inside->addWidget(screen);
        layout_->addWidget(part_, 1);
        part_->show();
        screen->setFocus();
    }

    void goOn() {
        if (!std::exchange(isDone_, false)) {
            close();
            return;
        }
        session_.thank();
        scan();
    }

    void follow() {
        setWindowTitle(session_.title());
        notice_->setText(session_.notice());
        notice_->setVisible(session_.page() == QLatin1String("scanning") &&
                            !session_.notice().isEmpty());
    }

    DemoSession& session_;
    ScannerCamera camera_;
    QLabel* notice_;
    QVBoxLayout* layout_;
    QDialog* part_ = nullptr;
    bool isDone_ = false;
};

}  // namespace

std::unique_ptr<Host> makeWidgetsHost(DemoSession& session, const PlatformServices& recognition) {
    return std::make_unique<WidgetsHost>(session, recognition);
}

}  // namespace kestrelid::demo
