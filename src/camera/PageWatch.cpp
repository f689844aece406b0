#include "camera/PageWatch.h"

#include "camera/PageLook.h"

#include <optional>
#include <utility>

namespace kestrelid::camera {

namespace {

constexpr FrameWatch::Pace kPace{.interval = FrameWatch::Time(0.2), .restPerLook = 3.0};

// Nothing where the service fails.
std::optional<PageLook> tryToLook(const Bitmap& frame, RectangleService& outlines) {
    try {
        return lookAtPage(frame, outlines);
    } catch (...) {
        return std::nullopt;
    }
}

}  // namespace

PageWatch::PageWatch(std::shared_ptr<RectangleService> outlines, GuidanceLimits limits,
                     std::shared_ptr<DispatchQueue> queue, Clock clock, Tell tell)
    : FrameWatch(std::move(queue), std::move(clock), kPace), outlines_(std::move(outlines)),
      tell_(std::move(tell)), tracker_(limits) {}

void PageWatch::forgetNow() {
    tracker_.forget();
    tell_(tracker_.live());
}

void PageWatch::lookNow(const Bitmap& frame, Time takenAt) {
    // A service that fails does not say that there is no page.
    const std::optional<PageLook> look = tryToLook(frame, *outlines_);
    if (!look)
        return forgetNow();
    tracker_.see(*look, takenAt);
    tell_(tracker_.live());
}

}  // namespace kestrelid::camera
