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

CameraServices EngineContext::makeServices(const QString& camera) {
    CameraOptions options = camera_.options;
    if (!camera.isEmpty())
        options.camera = camera.toStdString();
    if (camera_.makeServices)
        return camera_.makeServices(makeQtMainQueue(), options);
    if (!camera_.recognition)
        camera_.recognition = defaultServices();
    return defaultCameraServices(makeQtMainQueue(), options, *camera_.recognition);
}

}  // namespace kestrelid::screens
