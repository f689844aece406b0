#include <kestrelid/CameraManager.h>

#include "camera/PageWatch.h"
#include "camera/Submit.h"
#include "camera/ZoneWatch.h"

#include <kestrelid/ImageFile.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <utility>
#include <variant>

namespace kestrelid {

namespace {

using camera::submit;

constexpr std::chrono::duration<double> kReadinessCheckDelay{1.0};
constexpr std::int64_t kVerdictsToAppear = 1;     // in a row
constexpr std::int64_t kVerdictsToDisappear = 2;  // in a row: a single blurred frame is no absence

// Earlier than any clock, so that the first frame is always judged: 0001-01-01.
constexpr WallTime kDistantPast{std::chrono::duration<double>(-62135596800.0)};

WallTime systemTime() {
    return std::chrono::system_clock::now();
}

std::chrono::duration<double> steadyTime() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

CameraServices withClocks(CameraServices services) {
    if (!services.now)
        services.now = systemTime;
    if (!services.uptime)
        services.uptime = steadyTime;
    return services;
}

void countUp(std::int64_t& run) {
    if (__builtin_add_overflow(run, 1, &run))
        std::abort();
}

bool contains(const auto& list, const auto& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

PhotoSettings settingsFor(const PhotoOutput& output) {
    PhotoSettings settings;
    const std::vector<std::string> codecs = output.availablePhotoCodecTypes();
    for (const char* codec : {kPhotoCodecHevc, kPhotoCodecJpeg}) {
        if (contains(codecs, codec)) {
            settings.codec = codec;
            break;
        }
    }
    if (contains(output.supportedFlashModes(), FlashMode::off))
        settings.flashMode = FlashMode::off;
    settings.maxPhotoDimensions = output.maxPhotoDimensions();
    settings.acceptsImage = true;
    return settings;
}

}  // namespace

std::shared_ptr<CameraManager> CameraManager::create(CameraServices services) {
    if (!services.authorization || !services.capture || !services.detector || !services.mainQueue ||
        !services.makeSerialQueue)
        return nullptr;
    try {
        return std::shared_ptr<CameraManager>(new CameraManager(withClocks(std::move(services))));
    } catch (...) {
        return nullptr;
    }
}

CameraManager::CameraManager(CameraServices services)
    : services_(std::move(services)), session_(services_.capture->makeSession()),
      photoOutput_(services_.capture->makePhotoOutput()),
      videoOutput_(services_.capture->makeVideoDataOutput()),
      sessionQueue_(services_.makeSerialQueue("camera.session.queue")),
      lastDetectionTime_(kDistantPast) {}

CameraManager::~CameraManager() = default;

void CameraManager::checkAuthorization() {
    const auto self = shared_from_this();  // an observer may release the manager
    const auto publish = [this](bool isAuthorized) {
        base::runBlock("camera", [&] { isAuthorized_.publish(isAuthorized); });
    };
    switch (services_.authorization->status()) {
    case AuthorizationStatus::authorized:
        publish(true);
        setupSession();
        break;
    case AuthorizationStatus::notDetermined:
        base::runBlock("camera", [this] { askForAccess(); });
        break;
    case AuthorizationStatus::restricted:
    case AuthorizationStatus::denied:
        publish(false);
        base::runBlock("camera", [this] { publishWithoutSession(CameraState::denied); });
        break;
    }
}

void CameraManager::askForAccess() {
    services_.authorization->requestAccess([self = shared_from_this()](bool granted) {
        submit(*self->services_.mainQueue, [self, granted] {
            self->isAuthorized_.publish(granted);
            if (granted)
                self->setupSession();
            else
                self->publishWithoutSession(CameraState::denied);
        });
    });
}

void CameraManager::setupSession() {
    if (!submit(*sessionQueue_, [self = shared_from_this()] {
            self->configureSession();
            self->followCameras();
        }))
        publishNotReadyLater();
}

void CameraManager::publishNotReadyLater() {
    submit(*services_.mainQueue,
           [self = shared_from_this()] { self->isSessionReady_.publish(false); });
}

void CameraManager::publishCamera(const CameraStatus& status) {
    if (status != cameraStatus_.value())
        cameraStatus_.publish(status);
}

void CameraManager::publishControls() {
    if (auto controls = session_->controls(); controls != controls_.value())
        controls_.publish(std::move(controls));
}

// A session that runs keeps its camera, whatever was found since.
void CameraManager::publishWithoutSession(CameraState state, const std::string& cause) {
    if (!session_->isRunning())
        publishCamera({.state = state, .cause = cause});
}

void CameraManager::publishWithoutSessionLater(CameraState state, std::string cause) {
    submit(*services_.mainQueue, [self = shared_from_this(), state, cause = std::move(cause)] {
        self->publishWithoutSession(state, cause);
    });
}

void CameraManager::followSession() {
    // Called on threads that must not release the manager.
    session_->observeStatus([weak = weak_from_this(), mainQueue = services_.mainQueue] {
        submit(*mainQueue, [weak] {
            const auto self = weak.lock();
            if (!self)
                return;
            base::runBlock("camera", [&] { self->publishCamera(self->session_->status()); });
            self->publishControls();
            base::runBlock("camera", [&] { self->forgetPageIfLost(); });
        });
    });
}

void CameraManager::configureSession() try {
    wasSetUp_ = true;
    followSession();
    session_->beginConfiguration();
    session_->setSessionPreset(SessionPreset::photo);
    if (!addChosenDevice()) {
        session_->commitConfiguration();
        publishNotReadyLater();
        return;
    }
    if (session_->canAddOutput(photoOutput_))
        session_->addOutput(photoOutput_);
    if (session_->canAddOutput(videoOutput_))
        addVideoOutput();
    session_->commitConfiguration();
    session_->startRunning();
    publishStartLater();
    checkReadinessLater(true);
} catch (...) {
    publishNotReadyLater();
}

void CameraManager::checkReadinessLater(bool tellsAlways) {
    services_.mainQueue->asyncAfter(kReadinessCheckDelay, [self = shared_from_this(), tellsAlways] {
        base::runBlock("camera", [&] {
            const bool isReady = self->session_->isRunning();
            if (tellsAlways || isReady != self->isSessionReady_.value())
                self->isSessionReady_.publish(isReady);
        });
    });
}

void CameraManager::publishStartLater() {
    submit(*services_.mainQueue, [self = shared_from_this()] {
        CameraStatus status = self->session_->status();
        if (status.state == CameraState::idle)
            status.state = CameraState::failed;
        self->publishCamera(status);
    });
}

bool CameraManager::addChosenDevice() {
    const std::shared_ptr<CaptureDevice> device = chosenDevice();
    if (!device) {
        publishWithoutSessionLater(CameraState::absent, {});
        return false;
    }
    const auto opened = services_.capture->makeInput(device);
    if (const auto* error = std::get_if<CaptureError>(&opened)) {
        publishWithoutSessionLater(CameraState::failed, error->description);
        return false;
    }
    const auto* input = std::get_if<std::shared_ptr<CaptureInput>>(&opened);
    if (!input || !session_->canAddInput(*input))
        return false;
    session_->addInput(*input);
    hasInput_ = true;
    publishCurrentLater(device->name());
    return true;
}

void CameraManager::addVideoOutput() {
    addWatches();
    videoOutput_->setVideoSettings({.pixelFormat = kPixelFormat32Bgra});
    videoOutput_->setSampleBufferDelegate(weak_from_this(),
                                          services_.makeSerialQueue("video.frame.queue"));
    session_->addOutput(videoOutput_);
}

void CameraManager::didOutput(const SampleBuffer& sampleBuffer) try {
    const WallTime now = services_.now();
    const bool isJudged = now - lastDetectionTime_ >= detectionInterval_ &&
                          (!services_.canJudge || services_.canJudge());
    const std::chrono::duration<double> uptime = timeOfFrame();
    const bool isRead = zoneWatch_ && zoneWatch_->isDue(uptime);
    // The black frames of a camera that is lost say nothing of light or page.
    const bool isWatched = pageWatch_ && pageWatch_->isDue(uptime) && session_->isRunning();
    if (!isJudged && !isRead && !isWatched)
        return;
    if (isJudged)
        lastDetectionTime_ = now;
    const PixelBuffer* pixels = sampleBuffer.imageBuffer();
    if (!pixels)
        return;
    const std::optional<Bitmap> bitmap = pixels->render();
    if (!bitmap)
        return;
    if (isJudged)
        judge(*bitmap);
    if (isRead)
        zoneWatch_->look(*bitmap, uptime);
    if (isWatched)
        pageWatch_->look(*bitmap, uptime);
} catch (...) {
    // A frame that memory is too short for is dropped; another one follows.
}

void CameraManager::judge(const Bitmap& frame) {
    services_.detector->validate(
        Image(frame), [weak = weak_from_this()](const PassportValidationResult& result) {
            std::shared_ptr<CameraManager> self = weak.lock();
            if (!self)
                return;
            const std::shared_ptr<DispatchQueue> mainQueue = self->services_.mainQueue;
            // Moved, so that this worker, which may belong to the manager, does not release it.
            submit(*mainQueue, [self = std::move(self), isPassport = result.isPassport(),
                                confidence = static_cast<float>(result.confidence())] {
                self->handleDetectionResult(isPassport, confidence);
            });
        });
}

void CameraManager::handleDetectionResult(bool isPassport, float confidence) {
    if (isPassport) {
        consecutiveNotDetectedCount_ = 0;
        countUp(consecutiveDetectedCount_);
        if (consecutiveDetectedCount_ >= kVerdictsToAppear && !isDocumentDetected_.value())
            isDocumentDetected_.publish(true);
    } else {
        consecutiveDetectedCount_ = 0;
        countUp(consecutiveNotDetectedCount_);
        if (consecutiveNotDetectedCount_ >= kVerdictsToDisappear && isDocumentDetected_.value())
            isDocumentDetected_.publish(false);
    }
    detectionConfidence_.publish(confidence);
}

void CameraManager::setControl(CameraControl control, std::optional<double> value) {
    submit(*sessionQueue_, [self = shared_from_this(), control, value] {
        self->session_->setControl(control, value);
    });
}

void CameraManager::capturePhoto() {
    const bool isTaken =
        isSessionReady_.value() && session_->isRunning() &&
        submit(*sessionQueue_, [self = shared_from_this()] { self->performCapture(); });
    if (!isTaken)
        deliverLater(std::nullopt);
}

void CameraManager::performCapture() try {
    if (!session_->isRunning())
        return deliverLater(std::nullopt);
    const std::vector<CaptureConnection> connections = photoOutput_->connections();
    if (connections.empty() || !connections.front().isEnabled)
        return deliverLater(std::nullopt);
    photoOutput_->capturePhoto(settingsFor(*photoOutput_), shared_from_this());
} catch (...) {
    deliverLater(std::nullopt);
}

void CameraManager::didFinishProcessingPhoto(const CapturedPhoto& photo,
                                             const std::optional<CaptureError>& error) {
    if (!error && photo.image)
        return deliverLater(photo.image);
    if (error || !photo.fileDataRepresentation)
        return deliverLater(std::nullopt);
    ImageResult decoded = decodeImage(*photo.fileDataRepresentation);
    if (auto* image = std::get_if<Image>(&decoded))
        deliverLater(std::move(*image));
    else
        deliverLater(std::nullopt);
}

void CameraManager::deliverLater(std::optional<Image> photo) {
    const auto self = shared_from_this();
    if (submit(*services_.mainQueue, [self, photo = std::move(photo)] { self->deliver(photo); }))
        return;
    submit(*services_.mainQueue, [self] { self->deliver(std::nullopt); });
}

void CameraManager::deliver(const std::optional<Image>& photo) {
    // A copy: the callback may replace itself.
    if (const auto callback = onPhotoCapture)
        callback(photo);
}

}  // namespace kestrelid
