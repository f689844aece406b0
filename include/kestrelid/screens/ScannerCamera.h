#pragma once

#include <kestrelid/CameraControls.h>
#include <kestrelid/CameraManager.h>
#include <kestrelid/CameraOptions.h>
#include <kestrelid/CameraStatus.h>
#include <kestrelid/DefaultCamera.h>
#include <kestrelid/DispatchQueue.h>
#include <kestrelid/Image.h>
#include <kestrelid/MachineReadableZone.h>
#include <kestrelid/PassportDetector.h>
#include <kestrelid/ZoneTracker.h>

#include <functional>
#include <memory>
#include <optional>
#include <QMetaType>
#include <vector>

namespace kestrelid {

/// Gets a photo, or nothing if taking it failed. As DocumentScannerView.completion from C++: a
/// QVariant of this type.
using PhotoCompletion = std::function<void(const std::optional<Image>& photo)>;

/// What a tap does. As ImagePreviewView.didTapRetake and the like from C++: a QVariant of this
/// type.
using ScreenAction = std::function<void()>;

/// Gets what the frames say of the zone in view, as it grows; none once the page has left.
using ZoneObserver = std::function<void(const LiveZone& zone)>;

/// Gets what the camera is doing, whenever that changes.
using CameraObserver = std::function<void(const CameraStatus& status)>;

/// Gets what can be changed of the camera that runs, whenever that changes; nothing while none
/// does.
using ControlsObserver = std::function<void(const std::vector<CameraControlStatus>& controls)>;
/// Gets the cameras, best first, whenever they have changed; those that were unplugged stay at the
/// end.
using CamerasObserver = std::function<void(const std::vector<CameraDescription>& cameras)>;

/// With what scanning screens work. Main thread.
struct ScannerCamera {
    /// Which camera; DocumentScannerView.camera, if it is set, replaces options.camera.
    CameraOptions options;

    /// Models that the screens share, about 300 MB once loaded. If it is empty, defaultServices()
    /// when the first screen opens. A program that keeps them opens its next screen faster.
    std::optional<PlatformServices> recognition;

    /// Called once for each screen, when it is first shown. Empty: defaultCameraServices().
    std::function<CameraServices(std::shared_ptr<DispatchQueue> mainQueue,
                                 const CameraOptions& options)>
        makeServices;

    /// For screens that read zones with default services: the day that tells the centuries, say.
    /// (With makeServices: CameraServices::zones and zoneRules, which only such screens use.) The
    /// passport scan takes today for the day that is not given.
    ZoneRules zoneRules{};
};

}  // namespace kestrelid

Q_DECLARE_METATYPE(kestrelid::PhotoCompletion)
Q_DECLARE_METATYPE(kestrelid::ScreenAction)
Q_DECLARE_METATYPE(kestrelid::Image)
