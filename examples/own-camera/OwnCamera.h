#pragma once

#include "OwnOutputs.h"

#include <chrono>
#include <kestrelid/DefaultCamera.h>
#include <thread>
#include <vector>

// Sends the frames of its one input to its outputs and to what shows them.
class OwnSession final : public kestrelid::CaptureSession {
public:
    // Nothing changes before the start here.
    void beginConfiguration() override {}
    void commitConfiguration() override {}
    void setSessionPreset(kestrelid::SessionPreset) override {}

    [[nodiscard]] bool
    canAddInput(const std::shared_ptr<kestrelid::CaptureInput>& input) const override {
        return !device_ && std::dynamic_pointer_cast<OwnInput>(input);
    }
    void addInput(std::shared_ptr<kestrelid::CaptureInput> input) override {
        device_ = std::dynamic_pointer_cast<OwnInput>(input)->device;
        connect();
    }
    [[nodiscard]] bool
    canAddOutput(const std::shared_ptr<kestrelid::CaptureOutput>& output) const override {
        return (!video_ && std::dynamic_pointer_cast<OwnVideoOutput>(output)) ||
               (!photo_ && std::dynamic_pointer_cast<OwnPhotoOutput>(output));
    }
    void addOutput(std::shared_ptr<kestrelid::CaptureOutput> output) override {
        if (auto video = std::dynamic_pointer_cast<OwnVideoOutput>(output))
            video_ = std::move(video);
        else
            photo_ = std::dynamic_pointer_cast<OwnPhotoOutput>(output);
        connect();
    }

    // A camera that may fail waits here for its first frame, 2 s at most.
    void startRunning() override {
        if (!device_ || isRunning())
            return;
        thread_ = std::jthread([this](const std::stop_token& stop) { run(stop); });
        isRunning_ = true;
    }
    [[nodiscard]] bool isRunning() const override { return isRunning_; }  // any thread

    void addPreviewSurface(std::weak_ptr<kestrelid::PreviewSurface> surface) override {
        const std::lock_guard lock(mutex_);
        surfaces_.push_back(std::move(surface));
    }

private:
    void connect() {
        if (photo_)
            photo_->connect(device_);
    }

    void run(const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            const kestrelid::Bitmap frame = device_->frame();
            if (video_)
                video_->deliver(frame);
            std::vector<std::weak_ptr<kestrelid::PreviewSurface>> surfaces;
            {
                const std::lock_guard lock(mutex_);
                surfaces = surfaces_;
            }
            for (const auto& weak : surfaces)
                if (const auto surface = weak.lock())
                    surface->show(frame, device_->orientation(), device_->isMirrored());
            std::this_thread::sleep_for(std::chrono::milliseconds(33));  // 30 frames a second
        }
    }

    std::shared_ptr<OwnDevice> device_;
    std::shared_ptr<OwnVideoOutput> video_;
    std::shared_ptr<OwnPhotoOutput> photo_;
    std::mutex mutex_;
    std::vector<std::weak_ptr<kestrelid::PreviewSurface>> surfaces_;
    std::atomic<bool> isRunning_ = false;
    std::jthread thread_;  // last: it ends before what it uses
};

class OwnPlatform final : public kestrelid::CapturePlatform {
public:
    explicit OwnPlatform(std::shared_ptr<OwnDevice> device) : device_(std::move(device)) {}
    [[nodiscard]] std::shared_ptr<kestrelid::CaptureSession> makeSession() override {
        return std::make_shared<OwnSession>();
    }
    [[nodiscard]] std::shared_ptr<kestrelid::PhotoOutput> makePhotoOutput() override {
        return std::make_shared<OwnPhotoOutput>(kestrelid::makeSerialQueue("photos"));
    }
    [[nodiscard]] std::shared_ptr<kestrelid::VideoDataOutput> makeVideoDataOutput() override {
        return std::make_shared<OwnVideoOutput>();
    }
    [[nodiscard]] std::shared_ptr<kestrelid::CaptureDevice> defaultVideoDevice() override {
        return device_;
    }
    [[nodiscard]] std::variant<std::shared_ptr<kestrelid::CaptureInput>, kestrelid::CaptureError>
    makeInput(std::shared_ptr<kestrelid::CaptureDevice>) override {
        return std::make_shared<OwnInput>(device_);
    }

private:
    const std::shared_ptr<OwnDevice> device_;
};

struct AlwaysAllowed final : kestrelid::CameraAuthorization {
    [[nodiscard]] kestrelid::AuthorizationStatus status() override {
        return kestrelid::AuthorizationStatus::authorized;
    }
    void requestAccess(std::function<void(bool)> completion) override { completion(true); }
};
