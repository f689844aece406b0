#include "capture/gstreamer/SessionEngine.h"

#include "capture/gstreamer/FormatChoice.h"

#include <algorithm>
#include <exception>
#include <pthread.h>
#include <thread>
#include <utility>

namespace kestrelid::capture {

namespace {

using namespace std::chrono_literals;

constexpr auto kRewindPause = 30ms;  // so that the shortest video does not keep a core busy

constexpr auto kBusyPause = 150ms;  // from a start that finds the camera taken to the next try

// Silence is counted in looks. One that took much longer than planned tells that this process was
// suspended or frozen meanwhile, and that says nothing of the device.
constexpr auto kLook = 250ms;
constexpr auto kLongestLook = 500ms;

}  // namespace

SessionEngine::SessionEngine(std::shared_ptr<FrameDelivery> delivery,
                             std::shared_ptr<StatusBoard> board, const Patience& patience,
                             OpenControlNodes openControls)
    : delivery_(std::move(delivery)), patience_(patience), board_(std::move(board)),
      openControls_(std::move(openControls)) {}

std::shared_ptr<const GStreamerInput> SessionEngine::input() const {
    const std::lock_guard lock(mutex_);
    return isLost() || phase_ == Phase::away ? nullptr : input_;
}

void SessionEngine::setInput(std::shared_ptr<const GStreamerInput> input) {
    const std::lock_guard lock(mutex_);
    if (phase_ == Phase::running && !isLost() && input_->isSameDevice(*input))
        return;
    input_ = std::move(input);
    delivery_->setMounting(input_->mounting());
}

void SessionEngine::takeOver(std::shared_ptr<const GStreamerInput> input) {
    {
        const std::lock_guard lock(mutex_);
        follows_ = true;
    }
    setInput(std::move(input));
}

bool SessionEngine::keeps(const GStreamerInput& input) const {
    const std::lock_guard lock(mutex_);
    return phase_ != Phase::idle && input_ && input_->isVerySameDevice(input);
}

void SessionEngine::setPhotoDesk(std::weak_ptr<PhotoDesk> desk) {
    const std::lock_guard lock(mutex_);
    desk_ = std::move(desk);
}

void SessionEngine::start() {
    const auto limit = Clock::now() + patience_.start;
    Lock lock(mutex_);
    if (stopping_ || !input_ || (phase_ == Phase::running && !isLost()))
        return;
    if (!hasThread_ && !startThread()) {
        input_.reset();
        return post(lock, CameraState::failed, "no thread for the camera");
    }
    phase_ = Phase::starting;
    changed_.notify_all();
    changed_.wait_until(lock, limit, [&] { return phase_ != Phase::starting; });
    if (phase_ != Phase::starting)
        return;
    // The driver hangs. If it answers later, that is no longer this start.
    phase_ = heals_ ? Phase::away : Phase::idle;
    if (!heals_)
        input_.reset();
    controls_.clear();
    post(lock, CameraState::failed, "its driver does not answer");
}

bool SessionEngine::startThread() {
    try {
        delivery_->onDamage(
            [weak = weak_from_this()](const std::string& cause, Clock::duration lasts) {
                if (const auto self = weak.lock())
                    self->frameDamaged(cause, lasts);
            });
        // It owns this, and ends after requestStop().
        std::thread([self = shared_from_this()] {
            pthread_setname_np(pthread_self(), "kestrelid.cam");
            self->run();
        }).detach();
        return hasThread_ = true;
    } catch (const std::exception&) {
        return false;  // the machine has no thread or memory left
    }
}

bool SessionEngine::isRunning() const {
    const std::lock_guard lock(mutex_);
    return phase_ == Phase::running && !isLost();
}

bool SessionEngine::photoWanted() {
    const std::lock_guard lock(mutex_);
    if (stopping_ || phase_ != Phase::running || isLost())
        return false;
    photoWanted_ = true;
    changed_.notify_all();
    return true;
}

void SessionEngine::requestStop() {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
    changed_.notify_all();
}

void SessionEngine::finish(Clock::time_point limit) {
    Lock lock(mutex_);
    if (hasThread_)
        changed_.wait_until(lock, limit, [&] { return finished_; });
}

bool SessionEngine::isLost() const {
    if (phase_ != Phase::running || input_ != active_)
        return false;
    if (removed_ || (!switching_ && failed_))
        return true;
    if (active_->source().isFile())
        return false;
    const bool hangs = driverSince_ && Clock::now() - *driverSince_ >= patience_.pause;
    return hangs || silence_ >= patience_.frame || (!switching_ && ended_);
}

void SessionEngine::post(Lock& lock, CameraState state, std::string_view cause) {
    if (stopping_)
        return;
    lock.unlock();
    board_->post(state, cause);
    lock.lock();
}

void SessionEngine::run() {
    Lock lock(mutex_);
    while (!stopping_) {
        try {
            step(lock);
        } catch (const std::exception&) {
            // Memory is short: no other than a device that fails.
            if (!lock.owns_lock())
                lock.lock();
            lose(lock);
        }
    }
    phase_ = Phase::idle;
    dropControls(lock);
    close(lock);
    removal_.reset();
    finished_ = true;
    changed_.notify_all();
}

void SessionEngine::step(Lock& lock) {
    if (phase_ == Phase::starting)
        begin(lock);
    else if (phase_ == Phase::running)
        watch(lock);
    else if (phase_ == Phase::away)
        seek(lock);
    else
        rest(lock);
}

void SessionEngine::begin(Lock& lock) {
    const auto limit = Clock::now() + patience_.start;
    post(lock, CameraState::starting);
    bool flows = false;
    // Tried again where this program's former session, or another program, may just be giving the
    // camera back. start() may have given up whenever the lock was free, and then there is no
    // input.
    while (phase_ == Phase::starting) {
        flows = bring(lock, limit);
        if (flows || !failure_.isBusy || Clock::now() + kBusyPause >= limit ||
            changed_.wait_for(lock, kBusyPause, [&] { return stopping_ || input_ != active_; }))
            break;
    }
    if (phase_ != Phase::starting || input_ != active_)
        return close(lock);  // start() has given up
    if (!flows)
        return lose(lock);
    becomeLive(lock);
}

// Opens the input's device; true once its frames flow.
bool SessionEngine::bring(Lock& lock, Clock::time_point limit) {
    dropControls(lock);
    active_ = input_;
    removed_ = false;
    photoWanted_ = false;
    const CameraSource& source = active_->source();
    live_ = *chooseLive(source.formats());
    silent_.clear();
    isDamageTold_ = false;
    lock.unlock();
    removal_ = source.watchRemoval([weak = weak_from_this(), watched = active_.get()] {
        const auto self = weak.lock();
        if (!self)
            return;
        const std::lock_guard inCallback(self->mutex_);
        if (self->active_.get() == watched)
            self->removed_ = true;
        self->changed_.notify_all();
    });
    lock.lock();
    return open(lock, live_, false, limit);
}

void SessionEngine::becomeLive(Lock& lock) {
    phase_ = Phase::running;
    heals_ = true;
    seeksControls_ = true;
    silence_ = {};
    lastCount_ = liveSince_ = Clock::now();
    changed_.notify_all();
    post(lock, CameraState::live);
}

void SessionEngine::watch(Lock& lock) {
    const bool isFile = active_->source().isFile();
    if (!isFile)
        countSilence();
    if (isLost())
        return lose(lock);
    if (ended_)
        return playAgain(lock);
    if (tendControls(lock))
        return;
    if (std::exchange(photoWanted_, false)) {
        if (const auto desk = desk_.lock())
            takePhotos(lock, *desk);
        return;
    }
    if (isFile)
        changed_.wait(lock);
    else
        changed_.wait_for(lock, std::min<Clock::duration>(kLook, patience_.frame - silence_));
}

void SessionEngine::countSilence() {
    const auto now = Clock::now();
    if (lastFrame_ >= lastCount_)
        silence_ = {};
    silence_ += std::min<Clock::duration>(now - std::max(lastFrame_, lastCount_), kLongestLook);
    lastCount_ = now;
}

void SessionEngine::playAgain(Lock& lock) {
    ended_ = false;
    changed_.wait_for(lock, kRewindPause, [&] { return stopping_; });
    bool rewound = false;
    {
        const DriverCall call(*this, lock);
        rewound = pipeline_->rewind();
    }
    if (!rewound && !open(lock, live_, false, Clock::now() + patience_.start))
        lose(lock);
}

bool SessionEngine::open(Lock& lock, const VideoFormat& format, bool forStill,
                         Clock::time_point limit) {
    close(lock);
    arrived_ = failed_ = ended_ = false;
    failure_ = {};
    still_.reset();
    const CameraSource& source = active_->source();
    std::string refusal;
    bool plays = false;
    {
        const DriverCall call(*this, lock);
        CameraSource::Assembled assembled = source.assemble(format);
        if (assembled) {
            pipeline_ = std::make_unique<LivePipeline>(*std::move(assembled), source.isFile(),
                                                       shared_from_this());
            pipeline_->holdFrames(forStill && !haveOneShape(format, live_));
            if (forStill)
                pipeline_->armStill(format);
            plays = pipeline_->play();
        } else {
            refusal = assembled.error().description;
        }
    }
    if (!refusal.empty())
        failure_ = {.isBusy = false, .cause = std::move(refusal)};
    if (!plays) {
        failed_ = true;
        return false;
    }
    current_ = format;
    changed_.wait_until(lock, limit, [&] { return isInterrupted() || arrived_; });
    return arrived_ && !isInterrupted();
}

void SessionEngine::close(Lock& lock) {
    const DriverCall call(*this, lock);
    delivery_->letGo();
    pipeline_.reset();
}

void SessionEngine::frameArrived() {
    const std::lock_guard lock(mutex_);
    lastFrame_ = Clock::now();
    if (std::exchange(arrived_, true))
        return;
    changed_.notify_all();
}

bool SessionEngine::wantsFrames() {
    return !isStopping() && delivery_->hasConsumers();
}

bool SessionEngine::isStopping() const {
    const std::lock_guard lock(mutex_);
    return stopping_;
}

void SessionEngine::showFrame(SampleHandle frame) {
    if (isStopping())
        return;
    try {
        delivery_->deliver(std::move(frame));
    } catch (const std::exception&) {
        // One frame less, for want of memory.
    }
}

void SessionEngine::stillTaken(Still still) {
    const std::lock_guard lock(mutex_);
    still_ = std::move(still);
    changed_.notify_all();
}

// Some cameras garble a frame now and then.
void SessionEngine::frameDamaged(const std::string& cause, Clock::duration lasts) {
    const bool isHopeless = !cause.empty() && lasts >= patience_.frame;
    {
        const std::lock_guard lock(mutex_);
        const bool isTold = isDamageTold_;
        isDamageTold_ |= !cause.empty();
        if (phase_ != Phase::running || stopping_ || (!isHopeless && !cause.empty() && isTold))
            return;
    }
    if (isHopeless)
        pipelineFailed({.isBusy = false, .cause = cause});
    else
        board_->post(CameraState::live, cause);
}

void SessionEngine::pipelineFailed(PipelineFailure failure) {
    const std::lock_guard lock(mutex_);
    if (!std::exchange(failed_, true))
        failure_ = std::move(failure);  // what follows are its consequences
    changed_.notify_all();
}

void SessionEngine::pipelineEnded() {
    const std::lock_guard lock(mutex_);
    ended_ = true;
    changed_.notify_all();
}

}  // namespace kestrelid::capture
