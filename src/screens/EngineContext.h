#pragma once

#include <kestrelid/Guidance.h>
#include <kestrelid/screens/ScannerCamera.h>

#include <QObject>
#include <QString>

class QQmlEngine;

namespace kestrelid::screens {

// What one scanning screen wants of its camera.
struct ScannerWishes {
    QString camera;            // as CameraOptions::camera; empty: the one that was set
    bool readsZone = false;    // zones are read
    bool watchesPage = false;  // the page is looked for, and advice given
    GuidanceLimits limits{};   // of that advice
};

// What the scanning screens of one engine share. Owned by the engine. Main thread.
class EngineContext : public QObject {
    Q_OBJECT

public:
    static EngineContext& of(QQmlEngine& engine);

    void setCamera(ScannerCamera camera) { camera_ = std::move(camera); }

    // For one screen.
    [[nodiscard]] CameraServices makeServices(const ScannerWishes& wishes);

    // CameraOptions::camera for a screen that wishes for camera.
    [[nodiscard]] QString cameraFor(const QString& camera) const;

    // The models that all screens work with; the host's, or else this machine's from now on.
    [[nodiscard]] const PlatformServices& recognition();

    [[nodiscard]] const ZoneRules& zoneRules() const { return camera_.zoneRules; }

private:
    using QObject::QObject;

    ScannerCamera camera_;
};

}  // namespace kestrelid::screens
