#include "screens/HostedScreen.h"

#include <kestrelid/screens/PassportScanController.h>

#include <QEvent>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWidget>
#include <QVariantMap>

namespace kestrelid {

namespace {

// A window that is closed by its frame has been given up.
class ClosingWatch final : public QObject {
public:
    ClosingWatch(QWidget& controller, QQuickWidget& hosted)
        : QObject(&hosted), controller_(controller), hosted_(hosted) {
        controller.installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        const bool isHidden =
            event->type() == QEvent::Hide && !event->spontaneous() && !isWindowVisible();
        if (watched == &controller_ && isHidden && hosted_.rootObject())
            QMetaObject::invokeMethod(hosted_.rootObject(), "giveUp", Qt::QueuedConnection);
        return QObject::eventFilter(watched, event);
    }

private:
    [[nodiscard]] bool isWindowVisible() const { return controller_.window()->isVisible(); }

    QWidget& controller_;
    QQuickWidget& hosted_;
};

QString keyOf(PassportProof proof) {
    switch (proof) {
    case PassportProof::verdict:
        break;
    case PassportProof::strictZone:
        return QStringLiteral("strictZone");
    case PassportProof::both:
        return QStringLiteral("both");
    }
    return QStringLiteral("verdict");
}

QObject* rootOf(QWidget& hosted) {
    return static_cast<QQuickWidget&>(hosted).rootObject();
}

}  // namespace

PassportScanController::PassportScanController(PassportScanCompletion completion,
                                               ScannerCamera camera, QWidget* parent)
    : QWidget(parent), completion_(std::move(completion)), camera_(std::move(camera)) {
    setFocusPolicy(Qt::StrongFocus);  // a place in the order of Tab before there is a child
}

PassportScanController::PassportScanController(FormBuilderTag) {
    screens::refuseFormBuilder("PassportScanController", __LINE__);
}

// Whoever is released has not given up.
PassportScanController::~PassportScanController() {
    delete hosted_;
}

void PassportScanController::open(const QUrl& file) {
    if (hosted_)
        QMetaObject::invokeMethod(rootOf(*hosted_), "open", Q_ARG(QVariant, file));
    else
        picture_ = file;
}

void PassportScanController::tellPage() {
    // A copy: it may replace itself.
    const PageObserver observer = didChangePage;
    if (observer)
        observer(rootOf(*hosted_)->property("name").toString());
}

void PassportScanController::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (hosted_)
        return;
    QVariantMap properties = screens::propertiesOf(assistance);
    properties.insert({{QStringLiteral("completion"), QVariant::fromValue(completion_)},
                       {QStringLiteral("textScale"), textScale},
                       {QStringLiteral("readsZone"), readsZone},
                       {QStringLiteral("proof"), keyOf(proof)},
                       {QStringLiteral("acceptsAnyPhoto"), acceptsAnyPhoto}});
    auto* widget = screens::hostScreen(*this, QStringLiteral("PassportScan"), properties,
                                       safeAreaMargins, camera_);
    hosted_ = widget;
    new ClosingWatch(*this, *widget);
    connect(widget->rootObject(), SIGNAL(nameChanged()), this, SLOT(tellPage()));
    if (!picture_.isEmpty())
        open(picture_);
    tellPage();
}

}  // namespace kestrelid
