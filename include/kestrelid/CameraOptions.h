#pragma once

#include <kestrelid/Export.h>
#include <kestrelid/Image.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelid {

/// Where a camera looks, as its driver says.
enum class CameraPosition : std::uint8_t {
    unknown,   ///< most drivers do not say
    back,      ///< away from the person
    front,     ///< at the person
    external,  ///< plugged in
};

/// A word for each: "unknown", "back", "front", "external".
[[nodiscard]] KESTRELID_EXPORT std::string_view keyOf(CameraPosition position) noexcept;

/// Which camera, and how it is mounted.
struct CameraOptions {
    /// A camera's name as cameras() gives it, or the path of a picture or video file, which then
    /// stands for a camera and needs no permission. Empty: the first of cameras().
    std::string camera;

    /// Only a camera that looks there. A file looks anywhere.
    std::optional<CameraPosition> position{};

    /// For a camera whose driver does not know how it is mounted, or is wrong about it.
    std::optional<Orientation> orientation;
    std::optional<bool> isMirrored;
};

/// A size in which a camera delivers frames.
struct CameraFormat {
    int width = 0;  ///< pixels
    int height = 0;
    double framesPerSecond = 0.0;  ///< the most it delivers in this size
    std::string encoding;          ///< "raw", "jpeg" or "h264"

    friend bool operator==(const CameraFormat&, const CameraFormat&) = default;
};

/// A camera that can be chosen by its name.
struct CameraDescription {
    std::string name;
    std::vector<CameraFormat> formats;  ///< largest first
    CameraPosition position = CameraPosition::unknown;
    bool isInfrared = false;  ///< shows no colours, as a camera that knows faces
    bool isPresent = true;    ///< false in a list that remembers what was unplugged
    /// Why it cannot be used, in one line; empty: it can.
    std::string obstacle{};

    friend bool operator==(const CameraDescription&, const CameraDescription&) = default;
};

}  // namespace kestrelid
