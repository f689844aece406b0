#pragma once

#include <kestrelid/Export.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace kestrelid {

/// What a camera is doing.
enum class CameraState : std::uint8_t {
    idle,      ///< nobody has asked for it yet
    starting,  ///< it is being opened
    live,      ///< its frames flow
    lost,      ///< its frames flowed before; it is opened again once that is possible
    busy,      ///< another program uses it
    failed,    ///< it does not open, or gives no frames
    denied,    ///< this program may not use cameras
    absent,    ///< there is none, or none of the name that was asked for
};

/// A word for each state, for QML and for logs: "idle", "starting", "live" and so on.
[[nodiscard]] KESTRELID_EXPORT std::string_view keyOf(CameraState state) noexcept;

/// What a camera is doing, and why.
struct CameraStatus {
    CameraState state = CameraState::idle;
    /// One line in English, of the driver for example. Empty where the state says all. Holds
    /// nothing of any picture.
    std::string cause;

    friend bool operator==(const CameraStatus&, const CameraStatus&) = default;
};

}  // namespace kestrelid
