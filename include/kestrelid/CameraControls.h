#pragma once

#include <kestrelid/Export.h>

#include <cstdint>
#include <string_view>

namespace kestrelid {

/// What a host may change of a camera that runs.
enum class CameraControl : std::uint8_t {
    torch,     ///< 0: off, 1: as bright as it can be
    zoom,      ///< 0: the widest view, 1: the closest one
    focus,     ///< 0: the farthest, 1: the nearest
    exposure,  ///< 0: the darkest picture, 1: the brightest one
};

/// A word for each: "torch", "zoom", "focus", "exposure".
[[nodiscard]] KESTRELID_EXPORT std::string_view keyOf(CameraControl control) noexcept;

/// One control that a camera has. Values are shares of the device's own range, 0 to 1.
struct CameraControlStatus {
    CameraControl control = CameraControl::torch;
    double value = 0.0;         ///< as the device tells it; while automatic, the last known one
    double step = 0.0;          ///< the smallest change that the device makes
    bool hasAutomatic = false;  ///< the camera can choose the value by itself
    bool isAutomatic = false;   ///< it does so now

    friend bool operator==(const CameraControlStatus&, const CameraControlStatus&) = default;
};

}  // namespace kestrelid
