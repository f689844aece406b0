#include "scanner/DocumentScanner.h"
#include "screens/HostedScreen.h"

#include <kestrelid/screens/DocumentScannerVC.h>

#include <QPointer>
#include <QQuickItem>
#include <QQuickWidget>
#include <QVariantMap>

namespace kestrelid {

DocumentScannerVC::DocumentScannerVC(PhotoCompletion completion, ScannerCamera camera,
                                     QWidget* parent)
    : QWidget(parent), completion_(std::move(completion)), camera_(std::move(camera)) {}

DocumentScannerVC::DocumentScannerVC(FormBuilderTag) {
    screens::refuseFormBuilder();
}

DocumentScannerVC::~DocumentScannerVC() = default;

void DocumentScannerVC::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (hosted_)
        return;
    const QVariantMap properties{
        {QStringLiteral("isPresented"), false},
        {QStringLiteral("completion"), QVariant::fromValue(completion_)},
        {QStringLiteral("readsZone"), static_cast<bool>(didReadZone)},
    };
    QQuickWidget* hosted = screens::hostScreen(*this, QStringLiteral("DocumentScannerView"),
                                               properties, safeAreaMargins, camera_);
    hosted_ = hosted;
    auto* shown = hosted->rootObject()
                      ? hosted->rootObject()->findChild<scanner::DocumentScanner*>()
                      : nullptr;
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
}

}  // namespace kestrelid
