#pragma once

#include <kestrelid/CameraManager.h>
#include <kestrelid/CaptureServices.h>
#include <kestrelid/DefaultServices.h>
#include <kestrelid/DispatchQueue.h>
#include <kestrelid/Export.h>
#include <kestrelid/Image.h>
#include <kestrelid/PassportDetector.h>
#include <kestrelid/ServiceStatus.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kestrelid {

/// Which camera, and how it is mounted.
struct CameraOptions {
    /// A camera's name as cameras() gives it, or the path of a picture or video file, which then
    /// stands for a camera and needs no permission. Empty: the first camera.
    std::string camera;

    /// Where the driver does not know how the camera is mounted, or is wrong about it.
    std::optional<Orientation> orientation;
    std::optional<bool> isMirrored;
};

/// A size in which a camera delivers frames.
struct CameraFormat {
    int width = 0;  ///< pixels
    int height = 0;
    double framesPerSecond = 0.0;  ///< the most it delivers in this size
    std::string encoding;          ///< "raw" or "jpeg"
};

/// A camera that can be chosen by its name.
struct CameraDescription {
    std::string name;
    std::vector<CameraFormat> formats;  ///< largest first
};

/// The machine's cameras, or the file of options.camera. Thread: any; takes up to a second.
[[nodiscard]] KESTRELID_EXPORT std::vector<CameraDescription>
cameras(const CameraOptions& options = {});

/// A capture platform and a permission of this machine, on GStreamer, and a detector that shares
/// the given services and stops at the verdict. Cannot fail: what is missing becomes a camera that
/// does not get ready; see diagnoseCamera(). mainQueue: see CameraServices. Thread: any.
[[nodiscard]] KESTRELID_EXPORT CameraServices
defaultCameraServices(std::shared_ptr<DispatchQueue> mainQueue, const CameraOptions& options = {},
                      PlatformServices recognition = defaultServices());

/// Looks for what capture needs: GStreamer and its plugins, permission, cameras or the file.
/// Thread: any; takes up to a second.
[[nodiscard]] KESTRELID_EXPORT std::vector<ServiceStatus>
diagnoseCamera(const CameraOptions& options = {});

/// A queue with one thread of its own: blocks run one after another. Also a main queue for programs
/// that have no event loop. Thread: any.
[[nodiscard]] KESTRELID_EXPORT std::shared_ptr<DispatchQueue> makeSerialQueue(std::string label);

}  // namespace kestrelid
