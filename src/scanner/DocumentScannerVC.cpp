#include "scanner/DocumentScanner.h"
#include "screens/HostedScreen.h"

#include <kestrelid/screens/DocumentScannerVC.h>

#include <QPointer>
#include <QQuickItem>
#include <QQuickWidget>
#include <QVariantMap>

namespace kestrelid {

namespace {

scanner::DocumentScanner* scannerIn(QWidget* hosted) {
    const auto* widget = qobject_cast<QQuickWidget*>(hosted);
    return widget && widget->rootObject()
               ? widget->rootObject()->findChild<scanner::DocumentScanner*>()
               : nullptr;
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
    if (auto* shown = scannerIn(hosted_))
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
    auto* shown = scannerIn(hosted_);
    if (!shown)
        return;
    if (!chosenCamera_.isEmpty())
        shown->switchCamera(chosenCamera_);
    shown->setCamerasObserver(
        [controller = QPointer(this)](const std::vector<CameraDescription>& cameras) {
            if (const auto tell = controller ? controller->didChangeCameras : CamerasObserver())
                tell(cameras);
        });
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

void DocumentScannerVC::switchCamera(const QString& name) {
    if (auto* shown = scannerIn(hosted_))
        shown->switchCamera(name);
    else
        chosenCamera_ = name;
}

}  // namespace kestrelid
