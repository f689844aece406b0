#include "capture/gstreamer/FormatChoice.h"
#include "capture/gstreamer/SessionEngine.h"

#include <utility>

namespace kestrelid::capture {

void SessionEngine::takePhotos(Lock& lock, PhotoDesk& desk) {
    const CameraSource& source = active_->source();
    const Orientation orientation = active_->mounting().orientation;
    while (!stopping_ && !isLost()) {
        const std::optional<PhotoSettings> settings = desk.firstWaiting();
        if (!settings)
            break;
        if (auto still = source.fixedStill()) {
            desk.give(*settings, {.pixels = *std::move(still), .orientation = orientation});
            continue;
        }
        const VideoFormat format =
            *chooseStill(source.formats(), settings->maxPhotoDimensions, live_);
        if (SampleHandle still = takeStill(lock, format))
            desk.give(*settings, {.pixels = std::move(still), .orientation = orientation});
        else
            desk.fail(*settings, "the camera gave no still");
    }
    if (switching_ && !stopping_ && !removed_ && !returnToLive(lock))
        failed_ = true;
    switching_ = false;
}

SampleHandle SessionEngine::takeStill(Lock& lock, const VideoFormat& format) {
    still_.reset();
    if (format == current_) {
        awaitNextFrame(lock, format);
        return std::move(still_);
    }
    switching_ = true;
    pipeline_->holdFrames(true);
    if (!switchInPlace(lock, format) && !stopping_ && !removed_ &&
        open(lock, format, true, Clock::now() + patience_.restart))
        awaitStill(lock, patience_.change);
    return std::move(still_);
}

// Leaves the next frame in still_; a file may end and begin again meanwhile.
void SessionEngine::awaitNextFrame(Lock& lock, const VideoFormat& format) {
    const auto limit = Clock::now() + patience_.next;
    while (pipeline_ && !still_ && !isInterrupted() && Clock::now() < limit) {
        pipeline_->armStill(format);
        changed_.wait_until(lock, limit, [&] { return isInterrupted() || still_ || ended_; });
        if (ended_ && active_->source().isFile())
            playAgain(lock);
        else if (ended_)
            break;
    }
    if (pipeline_)
        pipeline_->disarmStill();
}

// Leaves the first frame of that format in still_.
bool SessionEngine::switchInPlace(Lock& lock, const VideoFormat& format) {
    if (!pipeline_ || failed_ || format.encoding != current_.encoding)
        return false;
    {
        const DriverCall call(*this, lock);
        pipeline_->armStill(format);
        pipeline_->switchTo(format);
    }
    current_ = format;
    return awaitStill(lock, patience_.change);
}

bool SessionEngine::returnToLive(Lock& lock) {
    still_.reset();
    bool flows = switchInPlace(lock, live_);
    still_.reset();
    if (!flows && !stopping_ && !removed_)
        flows = open(lock, live_, false, Clock::now() + patience_.restart);
    if (flows)
        pipeline_->holdFrames(false);
    return flows;
}

bool SessionEngine::awaitStill(Lock& lock, Clock::duration patience) {
    changed_.wait_for(lock, patience, [&] { return isInterrupted() || still_; });
    return still_ != nullptr;
}

}  // namespace kestrelid::capture
