#include "capture/gstreamer/PhotoDesk.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <pthread.h>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

namespace kestrelid::capture {

namespace {

using Clock = std::chrono::steady_clock;

// An answer is due after 3 s; encoding takes some of it.
constexpr std::chrono::milliseconds kPatience{2500};

// A still and its file, shared by the requests that it answers.
struct Exposure {
    Still still;
    PhotoSettings settings;
    std::optional<imagefile::FileBytes> file;  // desk's thread
};

struct Request {
    PhotoSettings settings;
    std::shared_ptr<PhotoCaptureDelegate> delegate;
    Clock::time_point due;
    std::variant<std::monostate, std::shared_ptr<Exposure>, CaptureError> outcome{};

    [[nodiscard]] bool waits() const { return std::holds_alternative<std::monostate>(outcome); }
};

bool sameSettings(const PhotoSettings& a, const PhotoSettings& b) {
    return a.codec == b.codec && a.flashMode == b.flashMode &&
           a.maxPhotoDimensions == b.maxPhotoDimensions;
}

void answer(Request request) {
    const auto fail = [&](const CaptureError& error) {
        request.delegate->didFinishProcessingPhoto({}, error);
    };
    if (const auto* error = std::get_if<CaptureError>(&request.outcome))
        return fail(*error);
    Exposure& exposure = *std::get<std::shared_ptr<Exposure>>(request.outcome);
    if (!exposure.file)
        exposure.file = encodePhoto(exposure.still, exposure.settings);
    const imagefile::FileBytes& file = *exposure.file;
    if (!file)
        return fail({file.error().cause});
    request.delegate->didFinishProcessingPhoto({.fileDataRepresentation = *file}, std::nullopt);
}

}  // namespace

struct PhotoDesk::Desk {
    template <typename Outcome>
    void settle(const PhotoSettings* settings, const Outcome& outcome) {
        const std::lock_guard lock(mutex);
        for (Request& request : requests) {
            if (request.waits() && (!settings || sameSettings(request.settings, *settings)))
                request.outcome = outcome;
        }
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
                first.outcome = CaptureError{"the camera gave no still in time"};
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

PhotoDesk::PhotoDesk() : desk_(std::make_shared<Desk>()) {}

PhotoDesk::~PhotoDesk() {
    failAll("the camera was released");
    if (thread_.get_id() == std::this_thread::get_id())
        thread_.detach();  // released by the delegate that it answers
    else if (thread_.joinable())
        thread_.join();
}

void PhotoDesk::add(const PhotoSettings& settings, std::shared_ptr<PhotoCaptureDelegate> delegate) {
    std::unique_lock lock(desk_->mutex);
    desk_->requests.push_back(
        {.settings = settings, .delegate = std::move(delegate), .due = Clock::now() + kPatience});
    if (desk_->isWorking)
        return;
    if (thread_.joinable())
        thread_.join();  // it is past its last look at the desk
    try {
        thread_ = std::thread([desk = desk_] {
            pthread_setname_np(pthread_self(), "kestrelid.photo");
            desk->work();
        });
        desk_->isWorking = true;
    } catch (const std::system_error&) {
        Request refused = std::move(desk_->requests.back());
        desk_->requests.pop_back();
        lock.unlock();
        refused.outcome = CaptureError{"no thread for the photo"};
        answer(std::move(refused));
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
    const auto exposure = std::make_shared<Exposure>();
    exposure->still = std::move(still);
    exposure->settings = settings;
    desk_->settle(&settings, exposure);
}

void PhotoDesk::fail(const PhotoSettings& settings, const std::string& cause) {
    desk_->settle(&settings, CaptureError{cause});
}

void PhotoDesk::failAll(const std::string& cause) {
    desk_->settle(nullptr, CaptureError{cause});
}

}  // namespace kestrelid::capture
