#pragma once

#include <kestrelid/CameraManager.h>
#include <kestrelid/CameraOptions.h>
#include <kestrelid/DefaultServices.h>
#include <kestrelid/DispatchQueue.h>
#include <kestrelid/Export.h>
#include <kestrelid/ServiceStatus.h>

#include <memory>
#include <string>
#include <vector>

namespace kestrelid {

/// The machine's cameras, best first: those at the back, then external and unknown ones, then those
/// at the front, infrared ones last. Or the file of options.camera. Thread: any; takes seconds
/// where the desktop hangs.
[[nodiscard]] KESTRELID_EXPORT std::vector<CameraDescription>
cameras(const CameraOptions& options = {});

/// A capture platform and a permission of this machine, on GStreamer, and a detector that shares
/// the given services and stops at the verdict. Cannot fail: what is missing becomes a camera that
/// does not get ready; see diagnoseCamera(). Reads no zones unless the host sets
/// CameraServices::zones afterwards, to recognition.zones for example. Without memory for them all
/// services are null. mainQueue: see CameraServices. Thread: any.
[[nodiscard]] KESTRELID_EXPORT CameraServices
defaultCameraServices(std::shared_ptr<DispatchQueue> mainQueue, const CameraOptions& options = {},
                      PlatformServices recognition = defaultServices());

/// Looks for what capture needs: GStreamer and its plugins, permission, cameras or the file.
/// Thread: any; takes seconds where the desktop hangs.
[[nodiscard]] KESTRELID_EXPORT std::vector<ServiceStatus>
diagnoseCamera(const CameraOptions& options = {});

/// A queue with one thread of its own: blocks run one after another. Also a main queue for programs
/// that have no event loop. Thread: any.
[[nodiscard]] KESTRELID_EXPORT std::shared_ptr<DispatchQueue> makeSerialQueue(std::string label);

}  // namespace kestrelid
