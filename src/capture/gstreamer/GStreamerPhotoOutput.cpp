#include "capture/gstreamer/GStreamerOutputs.h"

#include "capture/gstreamer/FormatChoice.h"
#include "capture/gstreamer/SessionEngine.h"

#include <optional>
#include <utility>

namespace kestrelid::capture {

namespace {

std::optional<VideoFormat> largestStill(const std::weak_ptr<SessionEngine>& weak) {
    const auto engine = weak.lock();
    const auto input = engine ? engine->input() : nullptr;
    if (!input)
        return std::nullopt;
    const std::vector<VideoFormat>& formats = input->source().formats();
    return chooseStill(formats, {}, chooseLive(formats));
}

}  // namespace

std::vector<CaptureConnection> GStreamerPhotoOutput::connections() const {
    const std::lock_guard lock(mutex_);
    const auto engine = engine_.lock();
    if (!engine || !engine->input())
        return {};
    return {{.isEnabled = true}};
}

std::vector<std::string> GStreamerPhotoOutput::availablePhotoCodecTypes() const {
    const std::lock_guard lock(mutex_);
    return largestStill(engine_) ? std::vector<std::string>{kPhotoCodecJpeg}
                                 : std::vector<std::string>{};
}

PhotoDimensions GStreamerPhotoOutput::maxPhotoDimensions() const {
    const std::lock_guard lock(mutex_);
    const std::optional<VideoFormat> still = largestStill(engine_);
    return still ? PhotoDimensions{.width = still->width, .height = still->height}
                 : PhotoDimensions{};
}

void GStreamerPhotoOutput::capturePhoto(const PhotoSettings& settings,
                                        std::shared_ptr<PhotoCaptureDelegate> delegate) {
    if (!delegate)
        return;
    desk_->add(settings, std::move(delegate));
    const std::lock_guard lock(mutex_);
    const auto engine = engine_.lock();
    if (!engine || !engine->photoWanted())
        desk_->failAll("no running camera to take it with");
}

void GStreamerPhotoOutput::attach(const std::shared_ptr<SessionEngine>& engine) {
    const std::lock_guard lock(mutex_);
    engine_ = engine;
    engine->setPhotoDesk(desk_);
}

void GStreamerPhotoOutput::detach(const char* cause) {
    {
        const std::lock_guard lock(mutex_);
        engine_.reset();
    }
    desk_->failAll(cause);
}

}  // namespace kestrelid::capture
