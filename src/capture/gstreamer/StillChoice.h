#pragma once

#include "capture/gstreamer/Still.h"

#include <optional>

namespace kestrelid::capture {

// What a still looks like: shares, 0 to 1.
struct StillLook {
    double sharpness = 0.0;
    double brightness = 0.0;
};

// Takes milliseconds. Nothing where the pixels cannot be read. Throws std::bad_alloc.
[[nodiscard]] std::optional<StillLook> lookOf(const Still& still);

// Chooses among the first frames of a format: exposure and focus settle only after the sensor has
// changed to it.
class StillChoice {
public:
    void add(Still still, const StillLook& look);

    // Nothing better is to be expected.
    [[nodiscard]] bool isDone() const { return settled_ >= kSettledFrames; }

    // The sharpest of those as bright as the one before them; if there is none, the last one.
    [[nodiscard]] std::optional<Still> take();

private:
    static constexpr int kSettledFrames = 3;

    std::optional<Still> best_;
    StillLook bestLook_;
    std::optional<double> brightness_;  // of the last one
    int settled_ = 0;
};

}  // namespace kestrelid::capture
