#include "capture/gstreamer/PhotoDesk.h"

#include "capture/gstreamer/PhotoEncoder.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <pthread.h>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

namespace kestrelid::capture {

namespace {

using Clock = std::chrono::steady_clock;

// A still and its photo, shared by the requests that it answers.
struct Exposure {
    Still still;
    std::optional<FinishedPhoto> photo;  // desk's thread
};

struct Request {
    PhotoSettings settings;
    std::shared_ptr<PhotoCaptureDelegate> delegate;
    Clock::time_point due;
    std::variant<std::monostate, std::shared_ptr<Exposure>, const char*> outcome{};  // or the cause

    [[nodiscard]] bool waits() const { return std::holds_alternative<std::monostate>(outcome); }
};

bool sameSettings(const PhotoSettings& a, const PhotoSettings& b) {
    return a.codec == b.codec && a.flashMode == b.flashMode &&
           a.maxPhotoDimensions == b.maxPhotoDimensions && a.acceptsImage == b.acceptsImage;
}

struct Answer {
    CapturedPhoto photo;
    std::optional<CaptureError> error;
};

Answer failed(std::string_view cause) noexcept {
    Answer answer{.photo = {}, .error = CaptureError{}};
    try {
        answer.error->description = cause;
    } catch (const std::bad_alloc&) {
        // A cause would need memory.
    }
    return answer;
}

Answer answerTo(Request& request) noexcept {
    if (const auto* cause = std::get_if<const char*>(&request.outcome))
        return failed(*cause);
    auto& exposure = std::get<std::shared_ptr<Exposure>>(request.outcome);
    if (!exposure->photo)
        exposure->photo = finishPhoto(std::move(exposure->still), request.settings);
    FinishedPhoto& photo = *exposure->photo;
    if (!photo)
        return failed(photo.error().cause);
    try {
        const bool isLast = exposure.use_count() == 1;
        return {.photo = isLast ? *std::move(photo) : *photo, .error = {}};
    } catch (const std::bad_alloc&) {
        return failed("no memory for the photo");
    }
}

// By value: its end may release the delegate, and with it the desk.
void answer(Request request) {
    const Answer given = answerTo(request);
    request.delegate->didFinishProcessingPhoto(given.photo, given.error);
}

}  // namespace

struct PhotoDesk::Desk {
    template <typename Outcome>
    void settle(const PhotoSettings* settings, Outcome outcome) {
        const std::lock_guard lock(mutex);
        for (Request& request : requests) {
            if (request.waits() && (!settings || sameSettings(request.settings, *settings)))
                request.outcome = outcome;
        }
        outcome = {};  // now the requests alone own it
        changed.notify_all();
    }

    void work() {
        std::unique_lock lock(mutex);
        while (!requests.empty()) {
            Request& first = requests.front();
            if (first.waits() && Clock::now() < first.due) {
                changed.wait_until(lock, first.due);
                continue;
            }
            if (first.waits())
                first.outcome = "the camera gave no still in time";
            Request settled = std::move(first);
            requests.pop_front();
            lock.unlock();
            answer(std::move(settled));
            lock.lock();
        }
        isWorking = false;
    }

    mutable std::mutex mutex;
    std::condition_variable changed;
    std::deque<Request> requests;
    bool isWorking = false;
};

PhotoDesk::PhotoDesk(std::chrono::milliseconds patience)
    : patience_(patience), desk_(std::make_shared<Desk>()) {}

PhotoDesk::~PhotoDesk() {
    failAll("the camera was released");
}

void PhotoDesk::add(const PhotoSettings& settings, std::shared_ptr<PhotoCaptureDelegate> delegate) {
    Request request{
        .settings = settings, .delegate = std::move(delegate), .due = Clock::now() + patience_};
    std::unique_lock lock(desk_->mutex);
    try {
        desk_->requests.push_back(request);
        if (!desk_->isWorking)
            std::thread([desk = desk_] {
                pthread_setname_np(pthread_self(), "kestrelid.photo");
                desk->work();
            }).detach();
        desk_->isWorking = true;
    } catch (const std::exception&) {
        if (!desk_->isWorking)
            desk_->requests.clear();  // there was none before
        lock.unlock();
        request.outcome = "no thread or memory for the photo";
        answer(std::move(request));
    }
}

std::optional<PhotoSettings> PhotoDesk::firstWaiting() const {
    const std::lock_guard lock(desk_->mutex);
    for (const Request& request : desk_->requests) {
        if (request.waits())
            return request.settings;
    }
    return std::nullopt;
}

void PhotoDesk::give(const PhotoSettings& settings, Still still) {
    try {
        auto exposure = std::make_shared<Exposure>();
        exposure->still = std::move(still);
        desk_->settle(&settings, std::move(exposure));
    } catch (const std::bad_alloc&) {
        fail(settings, "no memory for the still");
    }
}

void PhotoDesk::fail(const PhotoSettings& settings, const char* cause) {
    desk_->settle(&settings, cause);
}

void PhotoDesk::failAll(const char* cause) {
    desk_->settle(nullptr, cause);
}

}  // namespace kestrelid::capture
