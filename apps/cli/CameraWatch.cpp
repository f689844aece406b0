#include "apps/cli/CameraWatch.h"

#include "apps/cli/VerdictRecorder.h"

#include <utility>

namespace kestrelid::cli {
namespace {

// The end of the time and the loss of the camera are noticed within this time.
constexpr std::chrono::duration<double> kTick{0.1};

PhotoWritten photoWritten(const PhotoFile& file, const Image& photo) {
    const Bitmap& bitmap = *photo.bitmap();
    const bool turned = photo.orientation() >= Orientation::leftMirrored;
    return {.file = file.path.native(),
            .width = turned ? bitmap.height() : bitmap.width(),
            .height = turned ? bitmap.width() : bitmap.height()};
}

}  // namespace

CameraWatch::CameraWatch(WatchPlan plan, WatchCallbacks callbacks)
    : plan_(std::move(plan)), callbacks_(std::move(callbacks)),
      photo_(plan_.photo ? Photo::wanted : Photo::unwanted) {}

void CameraWatch::start(CameraServices services) {
    mainQueue_ = services.mainQueue;
    startedAt_ = callbacks_.elapsed();
    capture_ = std::make_shared<CaptureRecorder>(std::move(services.capture));
    services.capture = capture_;
    services.detector = std::make_shared<VerdictRecorder>(
        std::move(services.detector),
        [weak = weak_from_this(), queue = mainQueue_](bool isPassport, double confidence) {
            queue->async([weak, isPassport, confidence] {
                const auto self = weak.lock();
                if (self && self->manager_)
                    self->callbacks_.tell(FrameJudged{isPassport, confidence});
            });
        });
    manager_ = CameraManager::create(std::move(services));
    if (!manager_) {
        callbacks_.tell(WatchFailed{"there is not enough memory for a camera"});
        return callbacks_.onEnd(ExitStatus::inputFailed);
    }
    observe();
    tickLater();
    const auto manager = manager_;  // a refusal releases the other reference
    manager->checkAuthorization();
}

void CameraWatch::observe() {
    subscriptions_ = {
        manager_->isAuthorized().didChange(
            [this](bool authorized) { becameAuthorized(authorized); }),
        manager_->isSessionReady().didChange([this](bool ready) { becameReady(ready); }),
        manager_->isDocumentDetected().didChange([this](bool detected) {
            callbacks_.tell(DocumentChanged{detected});
            takePhotoWhereDue();
        }),
        manager_->zone().didChange([this](const LiveZone& zone) { zoneGrew(zone); })};
    manager_->onPhotoCapture = [weak = weak_from_this()](const std::optional<Image>& photo) {
        if (const auto self = weak.lock())
            self->gotPhoto(photo);
    };
}

// Frames come several a second, and most of them change no answer.
void CameraWatch::zoneGrew(const LiveZone& live) {
    ZoneAnswer answer{.isInView = live.zone.has_value(), .isStrict = live.isStrict(), .problems{}};
    if (live.zone)
        answer.problems = live.zone->problems;
    if (answer == zoneTold_)
        return;
    zoneTold_ = std::move(answer);
    callbacks_.tell(ZoneChanged{live});
}

void CameraWatch::becameAuthorized(bool authorized) {
    callbacks_.tell(AuthorizationKnown{authorized});
    if (!authorized)
        fail(callbacks_.whyDenied());
}

void CameraWatch::becameReady(bool ready) {
    callbacks_.tell(SessionKnown{ready, cameraName()});
    if (!ready)
        return fail(whyNotReady());
    readyAt_ = callbacks_.elapsed();
    takePhotoWhereDue();
}

std::optional<std::string> CameraWatch::cameraName() const {
    const std::optional<std::string>& name = capture_->deviceName();
    return name && !plan_.camera.empty() ? plan_.camera : name;
}

std::string CameraWatch::whyNotReady() const {
    const std::optional<std::string> name = cameraName();
    if (!name)
        return callbacks_.whyNoCamera();
    const CameraStatus& status = manager_->cameraStatus().value();
    return *name + ": " +
           (status.cause.empty() ? "gives no pictures; another program may be using it"
                                 : status.cause);
}

void CameraWatch::tickLater() {
    mainQueue_->asyncAfter(kTick, [weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->tick();
    });
}

void CameraWatch::tick() {
    if (readyAt_ && manager_ && !manager_->session()->isRunning())
        fail(cameraName().value_or("") + ": the camera was lost");
    takePhotoWhereDue();
    if (plan_.seconds && callbacks_.elapsed() - startedAt_ >= *plan_.seconds)
        timeIsUp();
    if (manager_)
        tickLater();
}

void CameraWatch::timeIsUp() {
    if (photo_ == Photo::wanted)
        failPhoto(plan_.photoAfter ? "no photo: the time was up before it was due"
                                   : "no photo: no passport came into view");
    else if (photo_ != Photo::requested)  // which is answered within seconds
        end(ExitStatus::done);
}

void CameraWatch::takePhotoWhereDue() {
    if (!manager_ || !readyAt_ || photo_ != Photo::wanted)
        return;
    const bool due = plan_.photoAfter ? callbacks_.elapsed() - *readyAt_ >= *plan_.photoAfter
                                      : manager_->isDocumentDetected().value();
    if (!due)
        return;
    photo_ = Photo::requested;
    manager_->capturePhoto();
}

void CameraWatch::gotPhoto(const std::optional<Image>& photo) {
    if (!manager_)
        return;
    if (!photo || !photo->bitmap())
        return failPhoto("the camera gave no photo");
    if (const auto cause = writePhoto(*plan_.photo, *photo))
        return failPhoto(*cause);
    photo_ = Photo::written;
    callbacks_.tell(photoWritten(*plan_.photo, *photo));
    if (!plan_.seconds)
        end(ExitStatus::done);
}

void CameraWatch::stop() {
    end(ExitStatus::done);
}

void CameraWatch::failPhoto(const std::string& cause) {
    fail(plan_.photo->path.native() + ": " + cause);
}

void CameraWatch::fail(const std::string& cause) {
    if (!manager_)
        return;
    callbacks_.tell(WatchFailed{cause});
    end(ExitStatus::inputFailed);
}

void CameraWatch::end(ExitStatus status) {
    if (!manager_)
        return;
    subscriptions_.clear();
    manager_->onPhotoCapture = nullptr;
    manager_.reset();
    callbacks_.onEnd(status);
}

}  // namespace kestrelid::cli
