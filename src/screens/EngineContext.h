#pragma once

#include <kestrelid/screens/ScannerCamera.h>

#include <QObject>

class QQmlEngine;

namespace kestrelid::screens {

// What the scanning screens of one engine share. Owned by the engine. Main thread.
class EngineContext : public QObject {
    Q_OBJECT

public:
    static EngineContext& of(QQmlEngine& engine);

    void setCamera(ScannerCamera camera) { camera_ = std::move(camera); }

    // For one screen. camera: as CameraOptions::camera; empty: the one that was set. readsZone:
    // whether it reads zones.
    [[nodiscard]] CameraServices makeServices(const QString& camera, bool readsZone);

private:
    using QObject::QObject;

    ScannerCamera camera_;
};

}  // namespace kestrelid::screens
