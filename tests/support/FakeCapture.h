#pragma once

#include "tests/support/FakeServices.h"

#include <kestrelid/CameraManager.h>
#include <kestrelid/CaptureServices.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kestrelid::test {

// Answers as it is told; what it is asked for waits until answer() is called.
class FakeAuthorization final : public CameraAuthorization {
public:
    explicit FakeAuthorization(AuthorizationStatus status) : status_(status) {}

    AuthorizationStatus status() override { return status_; }
    void requestAccess(std::function<void(bool)> completion) override {
        waiting_.push_back(std::move(completion));
    }

    [[nodiscard]] std::size_t requests() const { return waiting_.size(); }

    // As the platform does: the status stands, then the answer comes.
    void answer(bool granted) {
        status_ = granted ? AuthorizationStatus::authorized : AuthorizationStatus::denied;
        for (const auto& completion : std::exchange(waiting_, {}))
            completion(granted);
    }

private:
    AuthorizationStatus status_;
    std::vector<std::function<void(bool)>> waiting_;
};

// What the fake machine offers, and what was done to it, in order.
struct FakeMachine {
    bool hasDevice = true;
    bool deviceOpens = true;
    bool takesInput = true;
    bool takesPhotoOutput = true;
    bool takesVideoOutput = true;
    bool starts = true;
    bool replacesInput = true;
    std::vector<CameraDescription> cameras;  // beside the default one
    std::function<void()> camerasChanged;    // while somebody observes them
    std::vector<CaptureConnection> connections{{.isEnabled = true}};
    std::vector<std::string> codecs{kPhotoCodecHevc, kPhotoCodecJpeg};
    std::vector<FlashMode> flashModes{FlashMode::off, FlashMode::on};
    // Takes photos in place of the test; empty: requests wait in FakePhotoOutput.
    std::function<void(std::shared_ptr<PhotoCaptureDelegate>)> takePhoto;

    std::vector<CameraControlStatus> controls;  // of the device that runs

    std::vector<std::string> log;

    void note(std::string operation) { log.push_back(std::move(operation)); }
};

struct FakeDevice final : CaptureDevice {
    explicit FakeDevice(std::string given) : called(std::move(given)) {}
    [[nodiscard]] std::string name() const override { return called; }
    [[nodiscard]] Orientation orientation() const override { return Orientation::up; }
    [[nodiscard]] bool isMirrored() const override { return false; }

    const std::string called;
};

struct FakeInput final : CaptureInput {
    explicit FakeInput(std::string given) : device(std::move(given)) {}

    const std::string device;
};

struct FakePixelBuffer final : PixelBuffer {
    explicit FakePixelBuffer(std::optional<Bitmap> given) : bitmap(std::move(given)) {}
    [[nodiscard]] std::optional<Bitmap> render() const override { return bitmap; }

    const std::optional<Bitmap> bitmap;
};

struct FakeSampleBuffer final : SampleBuffer {
    explicit FakeSampleBuffer(const PixelBuffer* given) : pixels(given) {}
    [[nodiscard]] const PixelBuffer* imageBuffer() const override { return pixels; }

    const PixelBuffer* const pixels;
};

class FakeVideoOutput final : public VideoDataOutput {
public:
    explicit FakeVideoOutput(std::shared_ptr<FakeMachine> machine) : machine_(std::move(machine)) {}

    void setVideoSettings(const VideoSettings& given) override {
        machine_->note("setVideoSettings");
        settings = given;
    }
    void setSampleBufferDelegate(std::weak_ptr<SampleBufferDelegate> given,
                                 std::shared_ptr<DispatchQueue> givenQueue) override {
        machine_->note("setSampleBufferDelegate");
        delegate = std::move(given);
        queue = std::move(givenQueue);
    }

    // A frame on the delegate's queue. pixels: null for a frame without any.
    void deliver(std::shared_ptr<const PixelBuffer> pixels) {
        queue->async([weak = delegate, pixels = std::move(pixels)] {
            if (const auto receiver = weak.lock())
                receiver->didOutput(FakeSampleBuffer(pixels.get()));
        });
    }

    std::optional<VideoSettings> settings;
    std::weak_ptr<SampleBufferDelegate> delegate;
    std::shared_ptr<DispatchQueue> queue;

private:
    std::shared_ptr<FakeMachine> machine_;
};

class FakePhotoOutput final : public PhotoOutput {
public:
    explicit FakePhotoOutput(std::shared_ptr<FakeMachine> machine) : machine_(std::move(machine)) {}

    [[nodiscard]] std::vector<CaptureConnection> connections() const override {
        return machine_->connections;
    }
    [[nodiscard]] std::vector<std::string> availablePhotoCodecTypes() const override {
        return machine_->codecs;
    }
    [[nodiscard]] std::vector<FlashMode> supportedFlashModes() const override {
        return machine_->flashModes;
    }
    [[nodiscard]] PhotoDimensions maxPhotoDimensions() const override {
        return {.width = 4032, .height = 3024};
    }
    void capturePhoto(const PhotoSettings& settings,
                      std::shared_ptr<PhotoCaptureDelegate> delegate) override {
        machine_->note("capturePhoto");
        if (machine_->takePhoto)
            machine_->takePhoto(std::move(delegate));
        else
            requests.push_back({settings, std::move(delegate)});
    }

    struct Request {
        PhotoSettings settings;
        std::shared_ptr<PhotoCaptureDelegate> delegate;
    };

    // Answers the oldest request.
    void finish(const CapturedPhoto& photo, const std::optional<CaptureError>& error = {}) {
        const Request request = std::move(requests.front());
        requests.erase(requests.begin());
        request.delegate->didFinishProcessingPhoto(photo, error);
    }

    std::vector<Request> requests;

private:
    std::shared_ptr<FakeMachine> machine_;
};

class FakeSession final : public CaptureSession {
public:
    explicit FakeSession(std::shared_ptr<FakeMachine> machine) : machine_(std::move(machine)) {}
    ~FakeSession() override { machine_->note("session released"); }

    void beginConfiguration() override { machine_->note("beginConfiguration"); }
    void commitConfiguration() override { machine_->note("commitConfiguration"); }
    void setSessionPreset(SessionPreset) override { machine_->note("setSessionPreset photo"); }
    [[nodiscard]] bool canAddInput(const std::shared_ptr<CaptureInput>&) const override {
        return machine_->takesInput && !hasInput_;
    }
    void addInput(std::shared_ptr<CaptureInput>) override {
        machine_->note("addInput");
        hasInput_ = true;
    }
    [[nodiscard]] bool canAddOutput(const std::shared_ptr<CaptureOutput>& output) const override {
        return isVideo(output) ? machine_->takesVideoOutput && !hasVideoOutput_
                               : machine_->takesPhotoOutput && !hasPhotoOutput_;
    }
    void addOutput(std::shared_ptr<CaptureOutput> output) override {
        machine_->note(isVideo(output) ? "addOutput video" : "addOutput photo");
        (isVideo(output) ? hasVideoOutput_ : hasPhotoOutput_) = true;
    }
    void startRunning() override {
        machine_->note("startRunning");
        isRunning_ = machine_->starts;
        lost_.reset();
    }
    [[nodiscard]] bool isRunning() const override { return isRunning_; }
    bool replaceInput(std::shared_ptr<CaptureInput> input) override {
        if (!machine_->replacesInput)
            return false;
        machine_->note("replaceInput " + std::dynamic_pointer_cast<FakeInput>(input)->device);
        isRunning_ = machine_->starts;
        return true;
    }
    void addPreviewSurface(std::weak_ptr<PreviewSurface> surface) override {
        surfaces.push_back(std::move(surface));
    }

    [[nodiscard]] CameraStatus status() const override {
        return lost_.value_or(CaptureSession::status());
    }
    void observeStatus(std::function<void()> observer) override { observer_ = std::move(observer); }

    [[nodiscard]] std::vector<CameraControlStatus> controls() const override {
        return isRunning_ ? machine_->controls : std::vector<CameraControlStatus>{};
    }
    void setControl(CameraControl control, std::optional<double> value) override {
        machine_->note(std::string(keyOf(control)) + " " +
                       (value ? std::to_string(*value).substr(0, 4) : "automatic"));
    }
    void tell() const { observer_(); }

    // The device is gone, and may come back by itself.
    void lose() { fail({.state = CameraState::lost, .cause = "unplugged"}); }
    void fail(CameraStatus status) {
        isRunning_ = false;
        hasInput_ = false;
        lost_ = std::move(status);
        observer_();
    }
    void heal() {
        isRunning_ = hasInput_ = true;
        lost_.reset();
        observer_();
    }

    std::vector<std::weak_ptr<PreviewSurface>> surfaces;

private:
    static bool isVideo(const std::shared_ptr<CaptureOutput>& output) {
        return std::dynamic_pointer_cast<VideoDataOutput>(output) != nullptr;
    }

    std::shared_ptr<FakeMachine> machine_;
    bool hasInput_ = false;
    bool hasPhotoOutput_ = false;
    bool hasVideoOutput_ = false;
    bool isRunning_ = false;
    std::optional<CameraStatus> lost_;
    std::function<void()> observer_;
};

// Makes one session and one output of each kind, and remembers them for the test.
class FakePlatform final : public CapturePlatform {
public:
    std::shared_ptr<CaptureSession> makeSession() override { return make(session); }
    std::shared_ptr<PhotoOutput> makePhotoOutput() override { return make(photoOutput); }
    std::shared_ptr<VideoDataOutput> makeVideoDataOutput() override { return make(videoOutput); }
    std::shared_ptr<CaptureDevice> defaultVideoDevice() override {
        return machine->hasDevice ? std::make_shared<FakeDevice>("Fake camera") : nullptr;
    }
    std::shared_ptr<CaptureDevice> videoDevice(const std::string& name) override {
        for (const CameraDescription& camera : machine->cameras) {
            if (camera.name == name)
                return std::make_shared<FakeDevice>(name);
        }
        return CapturePlatform::videoDevice(name);
    }
    std::vector<CameraDescription> cameras() override { return machine->cameras; }
    std::shared_ptr<const void> observeCameras(std::function<void()> observer) override {
        machine->camerasChanged = std::move(observer);
        return {machine.get(), [kept = machine](const void*) { kept->camerasChanged = nullptr; }};
    }
    std::variant<std::shared_ptr<CaptureInput>, CaptureError>
    makeInput(std::shared_ptr<CaptureDevice> device) override {
        if (!machine->deviceOpens)
            return CaptureError{"in use by another program"};
        return std::make_shared<FakeInput>(device->name());
    }

    const std::shared_ptr<FakeMachine> machine = std::make_shared<FakeMachine>();
    std::weak_ptr<FakeSession> session;
    std::weak_ptr<FakePhotoOutput> photoOutput;
    std::weak_ptr<FakeVideoOutput> videoOutput;

private:
    template <typename Made>
    std::shared_ptr<Made> make(std::weak_ptr<Made>& remembered) {
        const auto made = std::make_shared<Made>(machine);
        remembered = made;
        return made;
    }
};

// Keeps what it is to judge until the test answers.
class FakeDetector final : public PassportDetector {
public:
    FakeDetector() : PassportDetector(noServices(), ValidationEffort::verdictOnly) {}

    void validate(const Image& image, Completion completion) override {
        images.push_back(image);
        completions.push_back(std::move(completion));
    }

    static PassportValidationResult verdict(bool isPassport, double confidence) {
        return makeResult(isPassport, confidence, {}, {});
    }

    void answer(std::size_t call, bool isPassport, double confidence) const {
        completions.at(call)(verdict(isPassport, confidence));
    }

    std::vector<Image> images;
    std::vector<Completion> completions;
};

}  // namespace kestrelid::test
