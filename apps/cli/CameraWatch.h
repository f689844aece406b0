#pragma once

#include "apps/cli/CaptureRecorder.h"
#include "apps/cli/ExitStatus.h"
#include "apps/cli/PhotoFile.h"
#include "apps/cli/WatchEvent.h"

#include <kestrelid/CameraManager.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kestrelid::cli {

struct WatchPlan {
    std::string camera;             // as the person named it; empty: the first one
    std::optional<double> seconds;  // until the watch ends by itself
    std::optional<PhotoFile> photo;
    // From the readiness of the camera to the photo, in seconds; absent: once a passport is in
    // view.
    std::optional<double> photoAfter;
};

// What a watch needs besides the camera. All of it is called on the main queue.
struct WatchCallbacks {
    std::function<void(const WatchEvent& event)> tell;
    std::function<void(ExitStatus status)> onEnd;  // once, after the camera was released
    std::function<double()> elapsed;               // seconds on a clock that never goes back
    std::function<std::string()> whyDenied;        // one line on the permission
    std::function<std::string()> whyNoCamera;      // one line; may take a second
};

// Owns a camera manager, tells what it publishes and takes at most one photo. Thread: main queue.
class CameraWatch final : public std::enable_shared_from_this<CameraWatch> {
public:
    CameraWatch(WatchPlan plan, WatchCallbacks callbacks);

    void start(CameraServices services);

    // Ends it as the person at the terminal asked to.
    void stop();

    // Ends it for a reason that leaves nothing to watch.
    void fail(const std::string& cause);

private:
    enum class Photo { unwanted, wanted, requested, written };
    struct ZoneAnswer {
        bool isInView = false;
        bool isStrict = false;
        std::vector<ZoneProblem> problems;

        friend bool operator==(const ZoneAnswer&, const ZoneAnswer&) = default;
    };

    void observe();
    void zoneGrew(const LiveZone& live);
    void becameAuthorized(bool authorized);
    void becameReady(bool ready);
    void tick();
    void tickLater();
    void timeIsUp();
    void takePhotoWhereDue();
    void gotPhoto(const std::optional<Image>& photo);
    void failPhoto(const std::string& cause);
    void end(ExitStatus status);
    [[nodiscard]] std::optional<std::string> cameraName() const;
    [[nodiscard]] std::string whyNotReady() const;

    const WatchPlan plan_;
    const WatchCallbacks callbacks_;
    std::shared_ptr<DispatchQueue> mainQueue_;
    std::shared_ptr<CaptureRecorder> capture_;
    std::shared_ptr<CameraManager> manager_;  // null before the start and after the end
    std::vector<Subscription> subscriptions_;
    double startedAt_ = 0.0;         // on the clock of callbacks_.elapsed
    std::optional<double> readyAt_;  // likewise
    Photo photo_ = Photo::unwanted;
    ZoneAnswer zoneTold_;
};

}  // namespace kestrelid::cli
