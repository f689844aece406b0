#pragma once

#include "capture/gstreamer/GStreamerCapturePlatform.h"

#include <kestrelid/CaptureServices.h>
#include <kestrelid/DefaultCamera.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace kestrelid::test {

// Waits until condition holds, asking every few milliseconds; false after limit.
bool eventually(const std::function<bool()>& condition,
                std::chrono::milliseconds limit = std::chrono::seconds(5));

// Of a camera by name, or of a file.
CameraOptions cameraNamed(const std::string& name);

// Of a photo of that size at most.
PhotoSettings boundedBy(int width, int height);

// Counts what it is shown and keeps the last frame.
class ShownFrames final : public PreviewSurface {
public:
    void show(const Bitmap& frame, Orientation orientation, bool isMirrored) override;

    [[nodiscard]] int count() const;
    [[nodiscard]] std::optional<Bitmap> last() const;
    [[nodiscard]] std::chrono::steady_clock::duration longestGap() const;

    Orientation orientation = Orientation::up;     // once count() > 0
    bool isMirrored = false;                       // once count() > 0
    std::function<void(const Bitmap&)> onFrame{};  // set before frames flow

private:
    mutable std::mutex mutex_;
    int count_ = 0;
    std::optional<Bitmap> last_;
    std::chrono::steady_clock::time_point lastTime_;
    std::chrono::steady_clock::duration longestGap_{};
};

// Counts frames and those that render() gave nothing for; may keep bitmaps and take its time.
class TakenFrames final : public SampleBufferDelegate {
public:
    void didOutput(const SampleBuffer& sampleBuffer) override;

    [[nodiscard]] int count() const;
    [[nodiscard]] int unrendered() const;
    [[nodiscard]] std::vector<Bitmap> kept() const;
    void letGo();

    std::size_t keeps = 0;            // that many bitmaps; set before frames flow
    std::function<void()> onFrame{};  // set before frames flow

private:
    mutable std::mutex mutex_;
    int count_ = 0;
    int unrendered_ = 0;
    std::vector<Bitmap> kept_;
};

class PhotoAnswers final : public PhotoCaptureDelegate {
public:
    struct Answer {
        int number;  // of the delegate
        std::vector<std::byte> file;
        std::string error;
        std::chrono::steady_clock::time_point time;
    };
    using Log = std::vector<Answer>;

    // What several delegates got, in order.
    struct Shared {
        mutable std::mutex mutex;
        Log log;
        [[nodiscard]] Log answers() const;
    };

    PhotoAnswers(std::shared_ptr<Shared> shared, int number)
        : shared_(std::move(shared)), number_(number) {}
    void didFinishProcessingPhoto(const CapturedPhoto& photo,
                                  const std::optional<CaptureError>& error) override;

private:
    const std::shared_ptr<Shared> shared_;
    const int number_;
};

// A platform, its session and both outputs, wired as a host does.
struct CaptureRig {
    explicit CaptureRig(const CameraOptions& options);

    // Adds the default device, and the outputs the first time; the error where there is none.
    std::string addCamera();
    // addCamera() and startRunning().
    std::string start();
    void takePhotos(int number, const PhotoSettings& settings = {});
    [[nodiscard]] PhotoAnswers::Log photos(std::size_t number) const;  // waits for so many

    std::shared_ptr<capture::GStreamerCapturePlatform> platform;
    std::shared_ptr<CaptureSession> session;
    std::shared_ptr<PhotoOutput> photoOutput;
    std::shared_ptr<VideoDataOutput> videoOutput;
    std::shared_ptr<ShownFrames> shown = std::make_shared<ShownFrames>();
    std::shared_ptr<TakenFrames> taken = std::make_shared<TakenFrames>();
    std::shared_ptr<PhotoAnswers::Shared> answers = std::make_shared<PhotoAnswers::Shared>();
};

}  // namespace kestrelid::test
