#pragma once

#include "capture/gstreamer/Still.h"

#include <kestrelid/CaptureServices.h>

#include <chrono>
#include <memory>
#include <optional>

namespace kestrelid::capture {

// Answers requests for photos in order, each exactly once and in time, on a thread that lives while
// there are some. Without memory or a thread the answer is an error. Causes are literals. Thread:
// any.
class PhotoDesk {
public:
    explicit PhotoDesk(std::chrono::milliseconds patience);
    PhotoDesk(const PhotoDesk&) = delete;
    PhotoDesk& operator=(const PhotoDesk&) = delete;
    ~PhotoDesk();  // requests that still wait fail; waits for nothing

    void add(const PhotoSettings& settings, std::shared_ptr<PhotoCaptureDelegate> delegate);

    // Of the first request that waits for a still.
    [[nodiscard]] std::optional<PhotoSettings> firstWaiting() const;

    // For all requests with these settings that wait for a still.
    void give(const PhotoSettings& settings, Still still);
    void fail(const PhotoSettings& settings, const char* cause);

    void failAll(const char* cause);

private:
    struct Desk;
    const std::chrono::milliseconds patience_;
    std::shared_ptr<Desk> desk_;  // shared with the thread
};

}  // namespace kestrelid::capture
