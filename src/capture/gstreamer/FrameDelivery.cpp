#include "capture/gstreamer/FrameDelivery.h"

#include "capture/gstreamer/MappedFrame.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <optional>
#include <utility>

namespace kestrelid::capture {

FrameDelivery::FrameDelivery()
    : surfaceCalls_(std::make_shared<CallGate>()), outputCalls_(std::make_shared<CallGate>()) {}

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

void FrameDelivery::deliver(SampleHandle frame) {
    const std::optional<Bitmap> bitmap = mapFrame(std::move(frame));
    if (!bitmap)
        return;
    const std::lock_guard lock(delivering_);
    size_ = {.width = bitmap->width(), .height = bitmap->height()};
    deliver(*bitmap);
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
        deliver(*blank);
} catch (const std::exception&) {
    // The next one is due soon.
}

void FrameDelivery::deliver(const Bitmap& frame) {
    std::shared_ptr<GStreamerVideoOutput> output;
    {
        const std::lock_guard lock(mutex_);
        output = output_;
    }
    if (output)
        output->post(frame, outputCalls_);
    show(frame);
}

void FrameDelivery::show(const Bitmap& frame) {
    const CallGate::Pass pass(*surfaceCalls_);
    if (!pass)
        return;
    std::vector<std::shared_ptr<PreviewSurface>> surfaces;
    Mounting mounting;
    {
        const std::lock_guard lock(mutex_);
        for (const auto& weak : surfaces_) {
            if (auto surface = weak.lock())
                surfaces.push_back(std::move(surface));
        }
        mounting = mounting_;
    }
    for (const auto& surface : surfaces)
        surface->show(frame, mounting.orientation, mounting.isMirrored);
}

bool FrameDelivery::close() {
    outputCalls_->close();
    return surfaceCalls_->close();
}

}  // namespace kestrelid::capture
