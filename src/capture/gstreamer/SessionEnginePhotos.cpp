#include "capture/gstreamer/FormatChoice.h"
#include "capture/gstreamer/SessionEngine.h"
#include "capture/gstreamer/StillChoice.h"

#include <algorithm>
#include <utility>

namespace kestrelid::capture {

void SessionEngine::takePhotos(Lock& lock, PhotoDesk& desk) {
    const CameraSource& source = active_->source();
    const Orientation orientation = active_->mounting().orientation;
    while (!stopping_ && !isLost()) {
        const std::optional<PhotoSettings> settings = desk.firstWaiting();
        if (!settings)
            break;
        std::optional<Still> still;
        if (auto fixed = source.fixedStill())
            still = Still{.pixels = *std::move(fixed)};
        else
            still = takeStill(lock, settings->maxPhotoDimensions);
        if (!still) {
            desk.fail(*settings, "the camera gave no still");
            continue;
        }
        still->orientation = orientation;
        desk.give(*settings, *std::move(still));
    }
    if (switching_ && !stopping_ && !removed_ && !returnToLive(lock))
        failed_ = true;
    switching_ = false;
}

std::optional<Still> SessionEngine::takeStill(Lock& lock, const PhotoDimensions& bound) {
    std::vector<VideoFormat> formats = active_->source().formats();
    std::erase_if(formats, [this](const VideoFormat& format) {
        return std::ranges::find(silent_, format) != silent_.end();
    });
    const VideoFormat format = chooseStill(formats, bound, live_).value_or(live_);
    if (format == current_)
        return switching_ ? stillOf(lock, format) : nextFrame(lock);
    std::optional<Still> still = stillOf(lock, format);
    if (still || stopping_ || removed_ || format == live_)
        return still;
    silent_.push_back(format);
    return returnToLive(lock) ? nextFrame(lock) : std::nullopt;
}

// The next one that is not damaged. A file may end and begin again meanwhile.
std::optional<Still> SessionEngine::nextFrame(Lock& lock) {
    const auto limit = Clock::now() + patience_.next;
    std::optional<Still> whole;
    still_.reset();
    while (pipeline_ && !whole && !isInterrupted() && Clock::now() < limit) {
        pipeline_->armStill(current_);
        changed_.wait_until(lock, limit, [&] { return isInterrupted() || still_ || ended_; });
        if (auto still = std::exchange(still_, std::nullopt)) {
            lock.unlock();
            if (lookOf(*still))
                whole = std::move(still);
            lock.lock();
        } else if (ended_ && active_->source().isFile()) {
            playAgain(lock);
        } else if (ended_) {
            break;
        }
    }
    if (pipeline_)
        pipeline_->disarmStill();
    still_.reset();
    return whole;
}

// Changes to the format, if it does not flow yet.
std::optional<Still> SessionEngine::stillOf(Lock& lock, const VideoFormat& format) {
    const auto limit = Clock::now() + patience_.still;
    switching_ = true;
    if (pipeline_ && !failed_) {
        changeInPlace(lock, format);
        auto still = settledStill(
            lock, format, std::min<Clock::time_point>(limit, Clock::now() + patience_.change));
        if (still || stopping_ || removed_)
            return still;
    }
    if (!open(lock, format, true, limit))
        return std::nullopt;
    return settledStill(lock, format, limit);
}

// The best of the first frames after a change of format.
std::optional<Still> SessionEngine::settledStill(Lock& lock, const VideoFormat& format,
                                                 Clock::time_point limit) {
    StillChoice choice;
    const auto settled = std::min<Clock::time_point>(limit, Clock::now() + patience_.settling);
    while (!choice.isDone() && awaitStill(lock, limit)) {
        Still still = *std::exchange(still_, std::nullopt);
        limit = settled;
        pipeline_->armStill(format);
        lock.unlock();
        const std::optional<StillLook> look = lookOf(still);
        if (look)
            choice.add(std::move(still), *look);
        lock.lock();
    }
    if (pipeline_)
        pipeline_->disarmStill();
    still_.reset();
    return choice.take();
}

// Frames go on meanwhile, unless they would show another part of the scene.
void SessionEngine::changeInPlace(Lock& lock, const VideoFormat& format) {
    still_.reset();
    if (!haveOneShape(format, live_))
        pipeline_->holdFrames(true);
    const DriverCall call(*this, lock);
    delivery_->letGo();
    pipeline_->armStill(format);
    if (format == current_)
        return;
    current_ = format;
    pipeline_->switchTo(format);
}

bool SessionEngine::returnToLive(Lock& lock) {
    bool flows = false;
    if (pipeline_ && !failed_) {
        changeInPlace(lock, live_);
        flows = awaitStill(lock, Clock::now() + patience_.change);
        still_.reset();
    }
    if (!flows && !stopping_ && !removed_)
        flows = open(lock, live_, false, Clock::now() + patience_.restart);
    if (flows) {
        pipeline_->disarmStill();
        pipeline_->holdFrames(false);
        switching_ = false;
    }
    return flows;
}

bool SessionEngine::awaitStill(Lock& lock, Clock::time_point limit) {
    changed_.wait_until(lock, limit, [&] { return isInterrupted() || still_; });
    return still_.has_value();
}

}  // namespace kestrelid::capture
