#include "capture/gstreamer/SessionEngine.h"

#include "capture/gstreamer/FormatChoice.h"

#include <exception>
#include <pthread.h>
#include <utility>

namespace kestrelid::capture {

namespace {

using namespace std::chrono_literals;

constexpr auto kRewindPause = 30ms;  // so that the shortest video does not keep a core busy

}  // namespace

SessionEngine::SessionEngine(std::shared_ptr<FrameDelivery> delivery, const Patience& patience)
    : delivery_(std::move(delivery)), patience_(patience) {}

SessionEngine::~SessionEngine() {
    // The thread owns this, so it has ended or is this one.
    if (thread_.joinable())
        thread_.detach();
}

std::shared_ptr<const GStreamerInput> SessionEngine::input() const {
    const std::lock_guard lock(mutex_);
    return isLost() ? nullptr : input_;
}

void SessionEngine::setInput(std::shared_ptr<const GStreamerInput> input) {
    const std::lock_guard lock(mutex_);
    input_ = std::move(input);
    delivery_->setMounting(input_->mounting());
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
    if (!thread_.joinable() && !startThread()) {
        input_.reset();
        return;
    }
    phase_ = Phase::starting;
    changed_.notify_all();
    changed_.wait_until(lock, limit, [&] { return phase_ != Phase::starting; });
    if (phase_ != Phase::starting)
        return;
    // The driver hangs. If it answers later, that is no longer this start.
    phase_ = Phase::idle;
    input_.reset();
}

bool SessionEngine::startThread() {
    try {
        thread_ = std::thread([self = shared_from_this()] {
            pthread_setname_np(pthread_self(), "kestrelid.cam");
            self->run();
        });
        return true;
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

void SessionEngine::finish() {
    {
        Lock lock(mutex_);
        if (!thread_.joinable())
            return;
        changed_.wait_for(lock, patience_.finish, [&] { return finished_; });
        if (!finished_)
            return thread_.detach();
    }
    thread_.join();
}

void SessionEngine::abandon() {
    const std::lock_guard lock(mutex_);
    if (thread_.joinable())
        thread_.detach();
}

bool SessionEngine::isLost() const {
    if (phase_ != Phase::running || input_ != active_)
        return false;
    if (!active_->source().isFile() && Clock::now() - lastFrame_ >= patience_.pause)
        return true;
    return removed_ || (!switching_ && (failed_ || (ended_ && !active_->source().isFile())));
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
    else
        changed_.wait(lock);
}

void SessionEngine::begin(Lock& lock) {
    const auto limit = Clock::now() + patience_.start;
    active_ = input_;
    removed_ = false;
    photoWanted_ = false;
    const CameraSource& source = active_->source();
    live_ = *chooseLive(source.formats());
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
    const bool flows = open(lock, live_, false, limit);
    if (phase_ != Phase::starting || input_ != active_)
        return close(lock);  // start() has given up
    if (!flows)
        return lose(lock);
    phase_ = Phase::running;
    changed_.notify_all();
}

void SessionEngine::watch(Lock& lock) {
    const bool isFile = active_->source().isFile();
    if (isLost() || (!isFile && Clock::now() - lastFrame_ >= patience_.frame))
        return lose(lock);
    if (ended_)
        return playAgain(lock);
    if (std::exchange(photoWanted_, false)) {
        if (const auto desk = desk_.lock())
            takePhotos(lock, *desk);
        return;
    }
    if (isFile)
        changed_.wait(lock);
    else
        changed_.wait_until(lock, lastFrame_ + patience_.frame);
}

void SessionEngine::lose(Lock& lock) {
    if (input_ == active_)
        input_.reset();
    if (phase_ == Phase::running || !input_)
        phase_ = Phase::idle;
    changed_.notify_all();
    const auto desk = desk_.lock();
    close(lock);
    lock.unlock();
    removal_.reset();
    if (desk)
        desk->failAll("the camera was lost");
    lock.lock();
}

void SessionEngine::playAgain(Lock& lock) {
    ended_ = false;
    changed_.wait_for(lock, kRewindPause, [&] { return stopping_; });
    lock.unlock();
    const bool rewound = pipeline_->rewind();
    lock.lock();
    if (!rewound && !open(lock, live_, false, Clock::now() + patience_.start))
        lose(lock);
}

bool SessionEngine::open(Lock& lock, const VideoFormat& format, bool forStill,
                         Clock::time_point limit) {
    close(lock);
    arrived_ = failed_ = ended_ = false;
    still_.reset();
    lock.unlock();
    const CameraSource& source = active_->source();
    CameraSource::Assembled assembled = source.assemble(format);
    bool plays = false;
    if (assembled) {
        pipeline_ = std::make_unique<LivePipeline>(*std::move(assembled), source.isFile(),
                                                   shared_from_this());
        pipeline_->holdFrames(forStill);
        if (forStill)
            pipeline_->armStill(format);
        plays = pipeline_->play();
    }
    lock.lock();
    if (!plays)
        return false;
    current_ = format;
    changed_.wait_until(lock, limit, [&] { return isInterrupted() || arrived_; });
    return arrived_ && !isInterrupted();
}

void SessionEngine::close(Lock& lock) {
    lock.unlock();
    pipeline_.reset();
    lock.lock();
}

void SessionEngine::frameArrived() {
    const std::lock_guard lock(mutex_);
    lastFrame_ = Clock::now();
    if (std::exchange(arrived_, true))
        return;
    changed_.notify_all();
}

bool SessionEngine::wantsFrames() {
    return delivery_->hasConsumers();
}

void SessionEngine::showFrame(SampleHandle frame) {
    try {
        delivery_->deliver(std::move(frame));
    } catch (const std::exception&) {
        // One frame less, for want of memory.
    }
}

void SessionEngine::stillTaken(SampleHandle still) {
    const std::lock_guard lock(mutex_);
    still_ = std::move(still);
    changed_.notify_all();
}

void SessionEngine::pipelineFailed() {
    const std::lock_guard lock(mutex_);
    failed_ = true;
    changed_.notify_all();
}

void SessionEngine::pipelineEnded() {
    const std::lock_guard lock(mutex_);
    ended_ = true;
    changed_.notify_all();
}

}  // namespace kestrelid::capture
