#pragma once

#include <cstdint>

namespace kestrelid::scanner {

// What a camera manager publishes.
struct ScannerState {
    bool isAuthorized = false;
    bool isSessionReady = false;
    bool isDocumentDetected = false;
};

// sRGB, 0xAARRGGBB.
using Argb = std::uint32_t;

inline constexpr Argb kWhite = 0xffffffff;
inline constexpr Argb kGray = 0xff8e8e93;
inline constexpr Argb kSuccessColor = 0xff22c55e;

enum class CameraArea : std::uint8_t { preview, accessRequired };

// What assistive technology says.
enum class SpokenStatus : std::uint8_t { accessRequired, notReady, ready, passportInView };

[[nodiscard]] constexpr CameraArea cameraArea(ScannerState state) noexcept {
    return state.isAuthorized ? CameraArea::preview : CameraArea::accessRequired;
}

[[nodiscard]] constexpr Argb bracketColor(ScannerState state) noexcept {
    return state.isDocumentDetected ? kSuccessColor : kWhite;
}

[[nodiscard]] constexpr Argb captureDiscColor(ScannerState state) noexcept {
    return state.isSessionReady ? kWhite : kGray;
}

[[nodiscard]] constexpr bool isCaptureAllowed(ScannerState state) noexcept {
    return state.isSessionReady;
}

[[nodiscard]] constexpr SpokenStatus spokenStatus(ScannerState state) noexcept {
    if (!state.isAuthorized)
        return SpokenStatus::accessRequired;
    if (state.isDocumentDetected)
        return SpokenStatus::passportInView;
    return state.isSessionReady ? SpokenStatus::ready : SpokenStatus::notReady;
}

}  // namespace kestrelid::scanner
