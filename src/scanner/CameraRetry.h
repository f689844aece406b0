#pragma once

#include <kestrelid/CameraStatus.h>

#include <chrono>

namespace kestrelid::scanner {

// Whether a person has to know of it, as no picture comes.
[[nodiscard]] constexpr bool isProblem(CameraState state) noexcept {
    switch (state) {
    case CameraState::lost:
    case CameraState::busy:
    case CameraState::failed:
    case CameraState::denied:
    case CameraState::absent:
        return true;
    case CameraState::idle:
    case CameraState::starting:
    case CameraState::live:
        return false;
    }
    return false;
}

// Whether it is worth trying again after a while. A lost camera comes back by itself, and who was
// denied it has to be asked by a tap.
[[nodiscard]] constexpr bool isTriedAgain(CameraState state) noexcept {
    return state == CameraState::busy || state == CameraState::failed ||
           state == CameraState::absent;
}

// tries: how often it was tried in vain since the screen was shown or the camera worked.
[[nodiscard]] constexpr std::chrono::duration<double> retryDelay(int tries) noexcept {
    return std::chrono::duration<double>(tries == 0 ? 2.0 : tries == 1 ? 4.0 : 8.0);
}

}  // namespace kestrelid::scanner
