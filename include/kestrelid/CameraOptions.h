#pragma once

#include <kestrelid/Image.h>

#include <optional>
#include <string>
#include <vector>

namespace kestrelid {

/// Which camera, and how it is mounted.
struct CameraOptions {
    /// A camera's name as cameras() gives it, or the path of a picture or video file, which then
    /// stands for a camera and needs no permission. Empty: the first camera.
    std::string camera;

    /// For a camera whose driver does not know how it is mounted, or is wrong about it.
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

}  // namespace kestrelid
