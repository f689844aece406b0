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

CameraServices EngineContext::makeServices(const QString& camera, bool readsZone) {
    CameraOptions options = camera_.options;
    if (!camera.isEmpty())
        options.camera = camera.toStdString();
    CameraServices services;
    if (camera_.makeServices) {
        services = camera_.makeServices(makeQtMainQueue(), options);
    } else {
        if (!camera_.recognition)
            camera_.recognition = defaultServices();
        services = defaultCameraServices(makeQtMainQueue(), options, *camera_.recognition);
        services.zones = camera_.recognition->zones;
        services.zoneRules = camera_.zoneRules;
    }
    if (!readsZone)
        services.zones = nullptr;
    return services;
}

}  // namespace kestrelid::screens
