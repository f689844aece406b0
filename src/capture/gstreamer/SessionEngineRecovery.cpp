#include "capture/gstreamer/SessionEngine.h"

#include <algorithm>
#include <utility>

namespace kestrelid::capture {

namespace {

using namespace std::chrono_literals;

constexpr auto kLongestPause = 5s;
constexpr auto kSteady = 10s;  // what is lost sooner is no new loss, and pauses go on growing

// Two frames without a page take the verdict back; a slow machine sees later ones.
constexpr auto kBlankPause = 250ms;
constexpr auto kLaterBlankPause = 1s;
constexpr auto kBlankedSoon = 3s;

}  // namespace

SessionEngine::Loss SessionEngine::whyLost() const {
    constexpr std::string_view kSilence = "it gives no pictures";
    if (removed_)
        return {.isBusy = false, .cause = "it was unplugged"};
    if (!failed_)
        return {.isBusy = false, .cause = kSilence};
    return {.isBusy = failure_.isBusy,
            .cause = failure_.cause.empty() ? kSilence : std::string_view(failure_.cause)};
}

// Needs no memory.
void SessionEngine::lose(Lock& lock) {
    if (stopping_)
        return;
    const Loss loss = whyLost();
    const bool isCurrent = input_ == active_;  // otherwise the host has another one ready
    lostAt_ = nextBlank_ = Clock::now();
    controls_.clear();
    if (phase_ == Phase::running && lostAt_ - liveSince_ >= kSteady)
        pause_ = kFirstPause;
    nextTry_ = lostAt_ + pause_;
    if (phase_ == Phase::running || isCurrent)
        phase_ = heals_ ? Phase::away : Phase::idle;
    if (isCurrent && !heals_)
        input_.reset();
    changed_.notify_all();
    if (pipeline_)
        pipeline_->holdFrames(true);  // the last one would stay in the place of the blank
    const auto desk = desk_.lock();
    const bool wasLive = heals_;
    lock.unlock();
    board_->post(loss.isBusy ? CameraState::busy
                 : wasLive   ? CameraState::lost
                             : CameraState::failed,
                 loss.cause);
    if (wasLive || follows_)
        delivery_->deliverBlank();
    if (desk)
        desk->failAll("the camera was lost");
    removal_.reset();
    lock.lock();
    dropControls(lock);
    close(lock);
}

void SessionEngine::seek(Lock& lock) {
    if (Clock::now() >= nextTry_)
        return openAgain(lock);
    if (!blank(lock))
        changed_.wait_until(lock, std::min(nextTry_, nextBlank_));
}

// Has no device that works.
void SessionEngine::rest(Lock& lock) {
    if (!follows_)
        changed_.wait(lock);
    else if (!blank(lock))
        changed_.wait_until(lock, nextBlank_);
}

// Black frames keep the last page from staying on the screen, and from counting as in view. False
// where none is due.
bool SessionEngine::blank(Lock& lock) {
    const auto now = Clock::now();
    if (now < nextBlank_)
        return false;
    nextBlank_ = now + (now - lostAt_ < kBlankedSoon ? Clock::duration(kBlankPause)
                                                     : Clock::duration(kLaterBlankPause));
    lock.unlock();
    delivery_->deliverBlank();
    lock.lock();
    return true;
}

void SessionEngine::openAgain(Lock& lock) {
    const std::shared_ptr<const GStreamerInput> wanted = input_;
    lock.unlock();
    std::shared_ptr<const GStreamerInput> announced = wanted->announced();
    lock.lock();
    if (stopping_ || phase_ != Phase::away || input_ != wanted)
        return;
    if (!announced) {
        pause_ = kFirstPause;  // a device that comes back is looked at soon
        nextTry_ = Clock::now() + pause_;
        return;
    }
    const bool isPluggedIn = &announced->source() != &wanted->source();
    pause_ = isPluggedIn ? kFirstPause : std::min<Clock::duration>(2 * pause_, kLongestPause);
    input_ = std::move(announced);
    if (bring(lock, Clock::now() + patience_.start) && phase_ == Phase::away)
        return becomeLive(lock);
    close(lock);
    if (stopping_ || phase_ != Phase::away)
        return;
    nextTry_ = Clock::now() + pause_;
    if (const Loss loss = whyLost(); loss.isBusy)
        post(lock, CameraState::busy, loss.cause);
}

}  // namespace kestrelid::capture
