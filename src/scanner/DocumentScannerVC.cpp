#include "screens/HostedScreen.h"

#include <kestrelid/screens/DocumentScannerVC.h>

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
    };
    hosted_ = screens::hostScreen(*this, QStringLiteral("DocumentScannerView"), properties,
                                  safeAreaMargins, camera_);
}

}  // namespace kestrelid
