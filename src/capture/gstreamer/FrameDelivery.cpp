#include "capture/gstreamer/FrameDelivery.h"

#include "capture/gstreamer/CapsFormats.h"
#include "capture/gstreamer/FormatChoice.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <optional>
#include <utility>

namespace kestrelid::capture {

namespace {

// Of those that surfaces hold: the one they show, the next one, and some for who is slow.
constexpr int kShownFrames = 8;

}  // namespace

FrameDelivery::FrameDelivery()
    : surfaceCalls_(std::make_shared<CallGate>()), outputCalls_(std::make_shared<CallGate>()),
      shown_(kShownFrames) {}

void FrameDelivery::setOutput(std::shared_ptr<GStreamerVideoOutput> output) {
    const std::lock_guard lock(mutex_);
    output_ = std::move(output);
}

void FrameDelivery::addSurface(std::weak_ptr<PreviewSurface> surface) {
    const std::lock_guard lock(mutex_);
    surfaces_.push_back(std::move(surface));
}

void FrameDelivery::setMounting(const Mounting& mounting) {
    const std::lock_guard lock(mutex_);
    mounting_ = mounting;
}

bool FrameDelivery::hasConsumers() {
    const std::lock_guard lock(mutex_);
    std::erase_if(surfaces_, [](const auto& surface) { return surface.expired(); });
    return !surfaces_.empty() || (output_ && output_->hasDelegate());
}

void FrameDelivery::deliver(SampleHandle sample) {
    const std::lock_guard lock(delivering_);
    size_ = liveDimensions(sizeIn(gst_sample_get_caps(sample.get())));
    const auto frame = std::make_shared<LiveFrame>(std::move(sample), converter_);
    {
        const std::lock_guard inner(mutex_);
        last_ = frame;
    }
    deliver(frame);
}

void FrameDelivery::letGo() {
    std::shared_ptr<LiveFrame> last;
    {
        const std::lock_guard lock(mutex_);
        last = last_.lock();
    }
    if (last)
        last->letGo();
}

void FrameDelivery::deliverBlank() noexcept try {
    const std::unique_lock lock(delivering_, std::try_to_lock);
    if (!lock || size_.width <= 0)
        return;
    const auto stride =
        static_cast<std::ptrdiff_t>(size_.width) * bytesPerPixel(PixelFormat::bgra8);
    const auto bytes = static_cast<std::size_t>(stride) * size_.height;
    std::shared_ptr<const std::byte[]> black = std::make_shared<std::byte[]>(bytes);
    if (const auto blank = Bitmap::wrap(size_.width, size_.height, stride, PixelFormat::bgra8,
                                        std::move(black), bytes))
        deliver(std::make_shared<LiveFrame>(*blank));
} catch (const std::exception&) {
    // The next one is due soon.
}

void FrameDelivery::deliver(const std::shared_ptr<LiveFrame>& frame) {
    std::shared_ptr<GStreamerVideoOutput> output;
    {
        const std::lock_guard lock(mutex_);
        output = output_;
    }
    // Converted first, or the output's queue would do it at the same time.
    const Surfaces shownOn = surfaces();
    const std::optional<Bitmap> shown = shownOn.empty() ? std::nullopt : frame->shared(shown_);
    if (output)
        output->post(frame, outputCalls_);
    if (shown)
        show(shownOn, *shown);
}

FrameDelivery::Surfaces FrameDelivery::surfaces() {
    Surfaces all;
    const std::lock_guard lock(mutex_);
    for (const auto& weak : surfaces_) {
        if (auto surface = weak.lock())
            all.push_back(std::move(surface));
    }
    return all;
}

void FrameDelivery::show(const Surfaces& surfaces, const Bitmap& frame) {
    const CallGate::Pass pass(*surfaceCalls_);
    if (!pass)
        return;
    Mounting mounting;
    {
        const std::lock_guard lock(mutex_);
        mounting = mounting_;
    }
    for (const auto& surface : surfaces)
        surface->show(frame, mounting.orientation, mounting.isMirrored);
}

bool FrameDelivery::close(std::chrono::steady_clock::time_point limit) {
    outputCalls_->close(limit);
    return surfaceCalls_->close(limit);
}

}  // namespace kestrelid::capture
