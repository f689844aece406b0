#include "scanner/DocumentScanner.h"
#include "screens/HostedScreen.h"
#include "screens/ScreenItem.h"

#include <kestrelid/screens/DocumentScannerVC.h>

#include <QPointer>
#include <QQuickWidget>
#include <QVariantMap>

namespace kestrelid {

namespace {

screens::ScreenItem* screenIn(QWidget* hosted) {
    const auto* widget = qobject_cast<QQuickWidget*>(hosted);
    return widget ? qobject_cast<screens::ScreenItem*>(widget->rootObject()) : nullptr;
}

scanner::DocumentScanner* scannerIn(QWidget* hosted) {
    const auto* screen = screenIn(hosted);
    return screen ? screen->findChild<scanner::DocumentScanner*>() : nullptr;
}

void handOver(const DocumentScannerVC& controller, screens::ScreenItem& screen) {
    QVariantMap properties = screens::propertiesOf(controller.assistance);
    properties.insert(screens::propertiesOf(controller.layout));
    properties[QStringLiteral("readsZone")] = static_cast<bool>(controller.didReadZone);
    properties[QStringLiteral("textScale")] = controller.textScale;
    for (auto property = properties.cbegin(); property != properties.cend(); ++property)
        screen.setProperty(property.key().toUtf8(), property.value());
    screen.safeAreaMargins()->set(controller.safeAreaMargins);
}

// A member that the host may set, and replace or release the controller while it is called.
template <typename Value>
auto forwarded(DocumentScannerVC& controller,
               std::function<void(const Value&)> DocumentScannerVC::*observer) {
    return [weak = QPointer(&controller), observer](const Value& value) {
        if (const auto tell = weak ? weak->*observer : nullptr)
            tell(value);
    };
}

}  // namespace

DocumentScannerVC::DocumentScannerVC(PhotoCompletion completion, ScannerCamera camera,
                                     QWidget* parent)
    : QWidget(parent) {
    const QVariantMap properties{
        {QStringLiteral("isPresented"), false},
        {QStringLiteral("completion"), QVariant::fromValue(std::move(completion))},
    };
    hosted_ =
        screens::hostScreen(*this, QStringLiteral("DocumentScannerView"), properties, {}, camera);
    auto* shown = scannerIn(hosted_);
    if (!shown)
        return;
    connect(
        screenIn(hosted_), &screens::ScreenItem::appearing, this,
        [this] { handOver(*this, *screenIn(hosted_)); }, Qt::SingleShotConnection);
    shown->setCamerasObserver(forwarded(*this, &DocumentScannerVC::didChangeCameras));
    shown->setZoneObserver(forwarded(*this, &DocumentScannerVC::didReadZone));
    shown->setCameraObserver(forwarded(*this, &DocumentScannerVC::didChangeCamera));
    shown->setControlsObserver(forwarded(*this, &DocumentScannerVC::didChangeControls));
}

DocumentScannerVC::DocumentScannerVC(FormBuilderTag) {
    screens::refuseFormBuilder("DocumentScannerViewController", 23);
}

DocumentScannerVC::~DocumentScannerVC() = default;

void DocumentScannerVC::setControl(CameraControl control, std::optional<double> value) {
    if (auto* shown = scannerIn(hosted_))
        shown->setControl(control, value);
}

void DocumentScannerVC::switchCamera(const QString& name) {
    if (auto* shown = scannerIn(hosted_))
        shown->switchCamera(name);
}

}  // namespace kestrelid
