#include "scanner/DocumentScanner.h"
#include "screens/HostedScreen.h"

#include <kestrelid/screens/DocumentScannerVC.h>

#include <QPointer>
#include <QQuickItem>
#include <QQuickWidget>
#include <QVariantMap>

namespace kestrelid {

namespace {

// Null while there is none.
scanner::DocumentScanner* shownScanner(QWidget& hosted) {
    const auto* screen = qobject_cast<QQuickWidget*>(&hosted);
    const QQuickItem* root = screen ? screen->rootObject() : nullptr;
    return root ? root->findChild<scanner::DocumentScanner*>() : nullptr;
}

}  // namespace

DocumentScannerVC::DocumentScannerVC(PhotoCompletion completion, ScannerCamera camera,
                                     QWidget* parent)
    : QWidget(parent), completion_(std::move(completion)), camera_(std::move(camera)) {}

DocumentScannerVC::DocumentScannerVC(FormBuilderTag) {
    screens::refuseFormBuilder();
}

DocumentScannerVC::~DocumentScannerVC() = default;

void DocumentScannerVC::setControl(CameraControl control, std::optional<double> value) {
    if (auto* shown = hosted_ ? shownScanner(*hosted_) : nullptr)
        shown->setControl(control, value);
}

void DocumentScannerVC::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (hosted_)
        return;
    const QVariantMap properties{
        {QStringLiteral("isPresented"), false},
        {QStringLiteral("completion"), QVariant::fromValue(completion_)},
        {QStringLiteral("readsZone"), static_cast<bool>(didReadZone)},
    };
    hosted_ = screens::hostScreen(*this, QStringLiteral("DocumentScannerView"), properties,
                                  safeAreaMargins, camera_);
    auto* shown = shownScanner(*hosted_);
    if (!shown)
        return;
    shown->setZoneObserver([controller = QPointer(this)](const LiveZone& zone) {
        // A copy: the callback may replace itself.
        if (const auto tell = controller ? controller->didReadZone : ZoneObserver())
            tell(zone);
    });
    shown->setCameraObserver([controller = QPointer(this)](const CameraStatus& status) {
        if (const auto tell = controller ? controller->didChangeCamera : CameraObserver())
            tell(status);
    });
    shown->setControlsObserver(
        [controller = QPointer(this)](const std::vector<CameraControlStatus>& controls) {
            if (const auto tell = controller ? controller->didChangeControls : ControlsObserver())
                tell(controls);
        });
}

}  // namespace kestrelid
