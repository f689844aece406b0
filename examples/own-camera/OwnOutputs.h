#pragma once

#include <kestrelid/CaptureServices.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

// What your camera can do. Called on any thread, also at the same time.
struct OwnDevice final : kestrelid::CaptureDevice {
    std::function<kestrelid::Bitmap()> frame;           // BGRA8; stays as it is while it is held
    std::function<std::vector<std::byte>()> takePhoto;  // a JPEG file
    kestrelid::PhotoDimensions photoDimensions;

    [[nodiscard]] std::string name() const override { return "own camera"; }
    [[nodiscard]] kestrelid::Orientation orientation() const override {
        return kestrelid::Orientation::up;
    }
    [[nodiscard]] bool isMirrored() const override { return false; }
};

struct OwnInput final : kestrelid::CaptureInput {
    explicit OwnInput(std::shared_ptr<OwnDevice> opened) : device(std::move(opened)) {}
    const std::shared_ptr<OwnDevice> device;
};

class OwnFrame final : public kestrelid::SampleBuffer, public kestrelid::PixelBuffer {
public:
    using Count = std::shared_ptr<std::atomic<int>>;

    OwnFrame(kestrelid::Bitmap frame, Count copies)
        : frame_(std::move(frame)), copies_(std::move(copies)) {}
    [[nodiscard]] const PixelBuffer* imageBuffer() const override { return this; }

    // Three copies at most: a machine that judges slowly drops frames instead of piling them up.
    [[nodiscard]] std::optional<kestrelid::Bitmap> render() const override {
        if (copies_->fetch_add(1) >= 3) {
            --*copies_;
            return std::nullopt;
        }
        const std::ptrdiff_t row = std::ptrdiff_t{4} * frame_.width();
        const std::size_t size = static_cast<std::size_t>(row) * frame_.height();
        const std::shared_ptr<std::byte[]> pixels(new std::byte[size],
                                                  [copies = copies_](const std::byte* all) {
                                                      delete[] all;
                                                      --*copies;
                                                  });
        for (int y = 0; y < frame_.height(); ++y)
            std::copy_n(frame_.row(y), row, pixels.get() + y * row);
        return kestrelid::Bitmap::wrap(frame_.width(), frame_.height(), row, frame_.format(),
                                       pixels, size);
    }

private:
    const kestrelid::Bitmap frame_;
    const Count copies_;
};

class OwnVideoOutput final : public kestrelid::VideoDataOutput {
public:
    void setVideoSettings(const kestrelid::VideoSettings&) override {}  // always BGRA
    void setSampleBufferDelegate(std::weak_ptr<kestrelid::SampleBufferDelegate> delegate,
                                 std::shared_ptr<kestrelid::DispatchQueue> queue) override {
        const std::lock_guard lock(mutex_);
        delegate_ = std::move(delegate);
        queue_ = std::move(queue);
    }

    void deliver(const kestrelid::Bitmap& frame) {
        const std::lock_guard lock(mutex_);
        if (!queue_ || isBusy_->exchange(true))
            return;  // an earlier frame is still worked on
        queue_->async([frame, delegate = delegate_, isBusy = isBusy_, copies = copies_] {
            if (const auto receiver = delegate.lock())
                receiver->didOutput(OwnFrame(frame, copies));
            *isBusy = false;
        });
    }

private:
    std::mutex mutex_;
    std::weak_ptr<kestrelid::SampleBufferDelegate> delegate_;
    std::shared_ptr<kestrelid::DispatchQueue> queue_;
    const std::shared_ptr<std::atomic<bool>> isBusy_ = std::make_shared<std::atomic<bool>>(false);
    const OwnFrame::Count copies_ = std::make_shared<std::atomic<int>>(0);
};

class OwnPhotoOutput final : public kestrelid::PhotoOutput {
public:
    explicit OwnPhotoOutput(std::shared_ptr<kestrelid::DispatchQueue> queue)
        : queue_(std::move(queue)) {}
    void connect(std::shared_ptr<OwnDevice> device) { device_ = std::move(device); }

    [[nodiscard]] std::vector<kestrelid::CaptureConnection> connections() const override {
        return std::vector<kestrelid::CaptureConnection>(device_ ? 1 : 0, {.isEnabled = true});
    }
    [[nodiscard]] std::vector<std::string> availablePhotoCodecTypes() const override {
        return {kestrelid::kPhotoCodecJpeg};
    }
    [[nodiscard]] std::vector<kestrelid::FlashMode> supportedFlashModes() const override {
        return {};
    }
    [[nodiscard]] kestrelid::PhotoDimensions maxPhotoDimensions() const override {
        return device_ ? device_->photoDimensions : kestrelid::PhotoDimensions{};
    }
    // Answers once, within 3 s, whatever happens: an error where the camera has none.
    void capturePhoto(const kestrelid::PhotoSettings&,
                      std::shared_ptr<kestrelid::PhotoCaptureDelegate> delegate) override {
        queue_->async([device = device_, delegate] {
            if (device)
                delegate->didFinishProcessingPhoto({device->takePhoto()}, std::nullopt);
            else
                delegate->didFinishProcessingPhoto({}, kestrelid::CaptureError{"no camera"});
        });
    }

private:
    const std::shared_ptr<kestrelid::DispatchQueue> queue_;  // serial: photos come in order
    std::shared_ptr<OwnDevice> device_;
};
