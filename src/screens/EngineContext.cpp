#include "screens/EngineContext.h"

#include <kestrelid/DefaultServices.h>
#include <kestrelid/screens/MainQueue.h>

#include <QQmlEngine>

namespace kestrelid::screens {

EngineContext& EngineContext::of(QQmlEngine& engine) {
    if (auto* context = engine.findChild<EngineContext*>({}, Qt::FindDirectChildrenOnly))
        return *context;
    return *new EngineContext(&engine);
}

QString EngineContext::cameraFor(const QString& camera) const {
    return camera.isEmpty() ? QString::fromStdString(camera_.options.camera) : camera;
}

CameraServices EngineContext::makeServices(const ScannerWishes& wishes) {
    CameraOptions options = camera_.options;
    options.camera = cameraFor(wishes.camera).toStdString();
    CameraServices services;
    if (camera_.makeServices) {
        services = camera_.makeServices(makeQtMainQueue(), options);
    } else {
        services = defaultCameraServices(makeQtMainQueue(), options, recognition());
        services.zones = recognition().zones;
        services.zoneRules = camera_.zoneRules;
        services.outlines = recognition().rectangles;
    }
    if (!wishes.readsZone)
        services.zones = nullptr;
    if (!wishes.watchesPage)
        services.outlines = nullptr;
    services.guidance = wishes.limits;
    return services;
}

const PlatformServices& EngineContext::recognition() {
    if (!camera_.recognition)
        camera_.recognition = defaultServices();
    return *camera_.recognition;
}

}  // namespace kestrelid::screens
