#include "benchmarks/chaos/Screen.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <optional>
#include <thread>
#include <utility>

namespace kestrelid::chaos {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::duration<double> kBeat{0.01};

// Colour bars have a bright spot in the middle row; a lost camera's black, and that of a sensor
// that has not settled, has none.
bool hasPicture(const Bitmap& frame) {
    const std::byte* row = frame.row(frame.height() / 2);
    return std::any_of(
        row, row + static_cast<std::ptrdiff_t>(frame.width()) * 4,
        [index = 0](std::byte value) mutable { return index++ % 4 != 3 && value > std::byte{64}; });
}

std::string inSeconds(Seconds seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f s", seconds);
    return text;
}

}  // namespace

// One manager's life on the screen, known to its callbacks.
struct Screen::Visit {
    std::weak_ptr<CameraManager> manager;
    std::atomic<int> frames = 0;
    std::atomic<Seconds> releasedAt = -1.0;
    std::atomic<bool> isTold = false;  // that it stays too long

    std::mutex mutex;
    std::deque<Seconds> asked;  // photos without an answer
    bool isLate = false;        // told
};

struct Screen::Surface final : PreviewSurface {
    explicit Surface(std::shared_ptr<Visit> shownIn) : visit(std::move(shownIn)) {}
    void show(const Bitmap& frame, Orientation, bool) override {
        if (hasPicture(frame))
            ++visit->frames;
    }
    const std::shared_ptr<Visit> visit;
};

Screen::Screen(CameraServices services, const AwakeClock& clock, Witness& witness, Totals& totals,
               int patience)
    : services_(std::move(services)), clock_(clock), witness_(witness), totals_(totals),
      patience_(patience), lastBeat_(clock.now()) {
    beat();
}

Screen::~Screen() {
    releaseAndWait();
    ends_ = true;
    while (!hasEnded_)
        std::this_thread::sleep_for(1ms);
}

void Screen::beat() {
    services_.mainQueue->asyncAfter(kBeat, [this] {
        const Seconds now = clock_.now();
        totals_.gap.add(now - lastBeat_.exchange(now) - kBeat.count(), "");
        if (ends_)
            hasEnded_ = true;
        else
            beat();
    });
}

void Screen::onMain(const std::string& name, std::function<void()> call) {
    witness_.note(name);
    services_.mainQueue->async([this, name, call = std::move(call)] {
        const Seconds begin = clock_.now();
        call();
        const Seconds took = clock_.now() - begin;
        totals_.call.add(took, name);
        if (took > kCallLimit * patience_)
            witness_.find(name + " held the main queue for " + inSeconds(took));
    });
}

void Screen::open() {
    if (visit_ && visit_->releasedAt < 0.0)
        return;
    visit_ = std::make_shared<Visit>();
    former_.push_back(visit_);
    ++totals_.managers;
    onMain("open", [this, visit = visit_] {
        manager_ = CameraManager::create(services_);
        visit->manager = manager_;
        status_ = manager_->cameraStatus().didChange([this](const CameraStatus& status) {
            witness_.note("camera is " + std::string(keyOf(status.state)) +
                          (status.cause.empty() ? "" : ": " + status.cause));
        });
        manager_->onPhotoCapture = [this, visit](const std::optional<Image>& photo) {
            const std::lock_guard lock(visit->mutex);
            ++(photo ? totals_.photosTaken : totals_.photosFailed);
            if (visit->asked.empty())
                return witness_.find("more answers than photos");
            const Seconds took = clock_.now() - visit->asked.front();
            visit->asked.pop_front();
            totals_.toPhoto.add(took, photo ? "taken" : "failed");
            witness_.note((photo ? "photo after " : "no photo after ") + inSeconds(took));
        };
    });
    show();
}

void Screen::release() {
    if (!visit_ || visit_->releasedAt >= 0.0)
        return;
    visit_->releasedAt = clock_.now();
    onMain("release", [this] {
        surface_.reset();
        status_ = {};
        manager_.reset();
    });
}

void Screen::show() {
    onMain("show", [this, visit = visit_] {
        if (!manager_)
            return;
        if (!surface_) {
            surface_ = std::make_shared<Surface>(visit);
            manager_->session()->addPreviewSurface(surface_);
        }
        manager_->checkAuthorization();
    });
}

void Screen::hide() {
    onMain("hide", [this] { surface_.reset(); });
}

void Screen::takePhotos(int number) {
    onMain("photos: " + std::to_string(number), [this, number, visit = visit_] {
        for (int photo = 0; photo < number && manager_; ++photo) {
            ++totals_.photosAsked;
            {
                const std::lock_guard lock(visit->mutex);
                visit->asked.push_back(clock_.now());
            }
            manager_->capturePhoto();
        }
    });
}

void Screen::look() {
    const Seconds now = clock_.now();
    if (now - lastBeat_ > kHangs * patience_) {
        witness_.find("the main queue hangs");
        std::abort();
    }
    std::erase_if(former_, [&](const auto& visit) {
        const bool isGone = visit->releasedAt >= 0.0 && visit->manager.expired();
        const std::lock_guard lock(visit->mutex);
        const bool isLate =
            !visit->asked.empty() && now - visit->asked.front() > kPhotoLimit * patience_;
        if (isLate && !std::exchange(visit->isLate, true))
            witness_.find("a photo is not answered in time");
        if (visit->asked.empty())
            visit->isLate = false;
        const Seconds gone = visit->releasedAt >= 0.0 ? now - visit->releasedAt : 0.0;
        if (gone > kReleasedLimit * patience_ && !isGone && !visit->isTold.exchange(true))
            witness_.find("a manager lives on after its release");
        if (!isGone)
            return false;
        totals_.release.add(gone, "");
        if (!visit->asked.empty())
            witness_.find("photos were never answered");
        return true;
    });
}

void Screen::releaseAndWait() {
    release();
    const Seconds limit = clock_.now() + 2 * kReleasedLimit * patience_;
    while (!former_.empty() && clock_.now() < limit) {
        std::this_thread::sleep_for(5ms);
        look();
    }
    if (!former_.empty())
        std::abort();  // told already; what it holds would be used after its end
}

int Screen::frames() const {
    return visit_ ? visit_->frames.load() : 0;
}

std::string Screen::status() {
    std::promise<std::string> status;
    auto told = status.get_future();
    services_.mainQueue->async([&] {
        if (!manager_)
            return status.set_value("no manager");
        const CameraStatus now = manager_->session()->status();
        status.set_value(std::string(keyOf(now.state)) + ", published " +
                         std::string(keyOf(manager_->cameraStatus().value().state)) +
                         (now.cause.empty() ? "" : ": " + now.cause));
    });
    return told.get();
}

}  // namespace kestrelid::chaos
