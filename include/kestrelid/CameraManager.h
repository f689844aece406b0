#pragma once

#include <kestrelid/CameraControls.h>
#include <kestrelid/CameraOptions.h>
#include <kestrelid/CameraStatus.h>
#include <kestrelid/CaptureServices.h>
#include <kestrelid/detection/PassportDetector.h>
#include <kestrelid/DispatchQueue.h>
#include <kestrelid/Export.h>
#include <kestrelid/Guidance.h>
#include <kestrelid/Image.h>
#include <kestrelid/Published.h>
#include <kestrelid/VisionServices.h>
#include <kestrelid/ZoneTracker.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kestrelid {

namespace camera {
class PageWatch;
class ZoneWatch;
}  // namespace camera

/// Wall-clock time, seconds since 1970.
using WallTime = std::chrono::time_point<std::chrono::system_clock, std::chrono::duration<double>>;

/// What a camera manager needs from the machine.
struct CameraServices {
    std::shared_ptr<CameraAuthorization> authorization;
    std::shared_ptr<CapturePlatform> capture;
    std::shared_ptr<PassportDetector> detector;  ///< best with ValidationEffort::verdictOnly
    std::shared_ptr<DispatchQueue> mainQueue;    ///< serial: what the host shows changes here
    std::function<std::shared_ptr<DispatchQueue>(std::string label)> makeSerialQueue;
    std::function<WallTime()> now{};  ///< any thread; empty: the system's clock

    /// Whether a frame could be judged at once. While it says no, frames are left out and cost no
    /// interval, so that the next verdict is of the freshest one. Frame queue. Empty: always, even
    /// while earlier frames are judged.
    std::function<bool()> canJudge{};

    /// Reads machine-readable zones beside the verdicts; null: none are read. The verdicts, and
    /// when they come, are the same with it.
    std::shared_ptr<ZoneService> zones{};
    ZoneRules zoneRules{};

    /// Finds the page in the frames for page(); null: it is not looked for. The verdicts, and when
    /// they come, are the same with it.
    std::shared_ptr<RectangleService> outlines{};
    GuidanceLimits guidance{};

    /// Seconds on a clock that never goes back, for zone() and page(): the time of day may be set
    /// meanwhile. Any thread; empty: the system's steady clock.
    std::function<std::chrono::duration<double>()> uptime{};
};

/// Owns the camera of one scanning screen: permission, session, live detection, photos. The session
/// is never stopped; it ends with the manager. No call fails: what goes wrong becomes a published
/// false or a photo that is absent. Thread: main queue, unless another is named.
class KESTRELID_EXPORT CameraManager final : public std::enable_shared_from_this<CameraManager>,
                                             public PhotoCaptureDelegate,
                                             public SampleBufferDelegate {
public:
    /// Touches neither camera nor permission. Returns null if a service is missing.
    [[nodiscard]] static std::shared_ptr<CameraManager> create(CameraServices services);

    CameraManager(const CameraManager&) = delete;
    CameraManager& operator=(const CameraManager&) = delete;
    ~CameraManager() override;

    /// Publishes isAuthorized, after asking the person if nobody has asked yet. Sets the session up
    /// if access is granted.
    void checkAuthorization();

    /// Configures and starts the session on the session queue; isSessionReady is published 1 s
    /// after it has started, or false at once if there is no usable camera. A session that runs
    /// already may refuse a second input: it runs on, and isSessionReady is published false.
    void setupSession();

    /// Takes a photo of the output's largest size. Ends in exactly one call of onPhotoCapture,
    /// however many are under way.
    void capturePhoto();

    /// Goes on with another camera, by its name as cameras() gives it; before the first set-up it
    /// is remembered for that. cameraStatus() and currentCamera() tell what comes of it, and
    /// isSessionReady a second later if that has changed. A name that no camera has changes
    /// nothing.
    void switchCamera(const std::string& name);

    /// Changes what controls() names; without a value the camera chooses. Anything else is ignored.
    void setControl(CameraControl control, std::optional<double> value);

    /// Gets every photo, or nothing if it failed. If it is empty, photos are taken and thrown away.
    /// Main queue.
    std::function<void(const std::optional<Image>& photo)> onPhotoCapture;

    /// For a PreviewSurface. Any thread.
    [[nodiscard]] const std::shared_ptr<CaptureSession>& session() const noexcept {
        return session_;
    }

    /// Whether the camera may be used.
    [[nodiscard]] const Published<bool>& isAuthorized() const noexcept { return isAuthorized_; }
    /// Whether the session was running a second after its start; later losses are not published.
    [[nodiscard]] const Published<bool>& isSessionReady() const noexcept { return isSessionReady_; }
    /// Whether a passport is in view: from the first verdict for it to the second in a row against
    /// it. Published on a change only.
    [[nodiscard]] const Published<bool>& isDocumentDetected() const noexcept {
        return isDocumentDetected_;
    }
    /// Of the last verdict, 0 to 1. Published on every verdict.
    [[nodiscard]] const Published<float>& detectionConfidence() const noexcept {
        return detectionConfidence_;
    }

    /// What the frames say of the zone in view, if the host gave a ZoneService. Published as it
    /// grows, and once the page has left or the camera has given no frame for two seconds.
    [[nodiscard]] const Published<LiveZone>& zone() const noexcept { return zone_; }

    /// What the frames say of the page in view, and what would make a better photo, if the host
    /// gave CameraServices::outlines. Published up to five times a second, fewer where that would
    /// take a quarter of a core, and once more when the camera has given no frame for two seconds.
    [[nodiscard]] const Published<LivePage>& page() const noexcept { return page_; }

    /// What the camera is doing, and why: also what the values above do not tell. Published on a
    /// change only.
    [[nodiscard]] const Published<CameraStatus>& cameraStatus() const noexcept {
        return cameraStatus_;
    }

    /// The cameras, best first, from the first set-up on; those that were unplugged since stay at
    /// the end. Published on a change only. Empty where the platform tells of none.
    [[nodiscard]] const Published<std::vector<CameraDescription>>& cameras() const noexcept {
        return cameras_;
    }

    /// The name of the camera that the session was given last; empty before. Published on a change
    /// only.
    [[nodiscard]] const Published<std::string>& currentCamera() const noexcept {
        return currentCamera_;
    }

    /// What can be changed of the camera that runs; nothing while none does. Published on a change
    /// only.
    [[nodiscard]] const Published<std::vector<CameraControlStatus>>& controls() const noexcept {
        return controls_;
    }

    /// For the capture platform. Frame queue.
    void didOutput(const SampleBuffer& sampleBuffer) override;
    /// For the capture platform. Any thread.
    void didFinishProcessingPhoto(const CapturedPhoto& photo,
                                  const std::optional<CaptureError>& error) override;

private:
    explicit CameraManager(CameraServices services);

    void askForAccess();                                                           // main queue
    void publishNotReadyLater();                                                   // any thread
    void configureSession();                                                       // session queue
    void followSession();                                                          // session queue
    void publishWithoutSession(CameraState state, const std::string& cause = {});  // main queue
    void publishWithoutSessionLater(CameraState state, std::string cause);         // any thread
    void publishCamera(const CameraStatus& status);                                // main queue
    void publishControls();                                                        // main queue
    void publishStartLater();                                                      // session queue
    void checkReadinessLater(bool tellsAlways);                                    // session queue
    bool addChosenDevice();                                                        // session queue
    std::shared_ptr<CaptureDevice> chosenDevice();                                 // session queue
    void switchTo(const std::string& name);                                        // session queue
    void followCameras();                                                          // session queue
    void lookForCameras();                                                         // session queue
    void publishCurrentLater(std::string name);                                    // session queue
    void addVideoOutput();                                                         // session queue
    void performCapture();                                                         // session queue
    void handleDetectionResult(bool isPassport, float confidence);                 // main queue
    void judge(const Bitmap& frame);                                               // frame queue
    void addWatches();                                                             // session queue
    std::chrono::duration<double> timeOfFrame();                                   // frame queue
    void publishZoneLater(const LiveZone& zone);                                   // any thread
    void publishPageLater(const LivePage& page);                                   // any thread
    void awaitSilence(std::chrono::duration<double> patience);                     // main queue
    void forgetIfSilent();                                                         // main queue
    void forgetPageIfLost();                                                       // main queue
    void deliver(const std::optional<Image>& photo);                               // main queue
    void deliverLater(std::optional<Image> photo);                                 // any thread

    const CameraServices services_;
    const std::shared_ptr<CaptureSession> session_;
    const std::shared_ptr<PhotoOutput> photoOutput_;
    const std::shared_ptr<VideoDataOutput> videoOutput_;
    const std::shared_ptr<DispatchQueue> sessionQueue_;
    Published<bool> isAuthorized_{false};                       // main queue
    Published<bool> isSessionReady_{false};                     // main queue
    Published<bool> isDocumentDetected_{false};                 // main queue
    Published<float> detectionConfidence_{0.0f};                // main queue
    Published<CameraStatus> cameraStatus_{{}};                  // main queue
    Published<std::vector<CameraDescription>> cameras_{{}};     // main queue
    Published<std::string> currentCamera_{{}};                  // main queue
    Published<std::vector<CameraControlStatus>> controls_{{}};  // main queue
    bool wasSetUp_ = false;                                     // session queue; or it was tried
    bool hasInput_ = false;                                     // session queue; or had one
    std::string chosenCamera_;                     // session queue; empty: the default one
    Subscription cameraList_;                      // session queue
    std::vector<CameraDescription> knownCameras_;  // session queue
    // Any thread; whether a look at the cameras waits on the session queue.
    const std::shared_ptr<std::atomic<bool>> camerasAwaited_ =
        std::make_shared<std::atomic<bool>>(false);
    std::int64_t consecutiveDetectedCount_ = 0;     // main queue
    std::int64_t consecutiveNotDetectedCount_ = 0;  // main queue
    WallTime lastDetectionTime_;                    // frame queue
    Published<LiveZone> zone_{LiveZone{}};          // main queue
    std::shared_ptr<camera::ZoneWatch> zoneWatch_;  // frame queue; null if none is wanted
    Published<LivePage> page_{LivePage{}};          // main queue
    std::shared_ptr<camera::PageWatch> pageWatch_;  // frame queue; null if none is wanted
    std::atomic<double> lastFrameTime_ = 0.0;       // any thread; of a camera that runs
    bool isSilenceAwaited_ = false;                 // main queue
    const std::chrono::duration<double> detectionInterval_{0.5};
};

}  // namespace kestrelid
