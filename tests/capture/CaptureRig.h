#pragma once

#include "capture/gstreamer/GStreamerCapturePlatform.h"

#include <kestrelid/CaptureServices.h>
#include <kestrelid/DefaultCamera.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace kestrelid::test {

// Waits until condition holds; false where it does not in time.
bool eventually(const std::function<bool()>& condition);

// Of a camera by name, or of a file.
CameraOptions cameraNamed(const std::string& name);

// Counts what it is shown and keeps the last frame.
class ShownFrames final : public PreviewSurface {
public:
    void show(const Bitmap& frame, Orientation orientation, bool isMirrored) override;

    [[nodiscard]] int count() const { return count_; }
    [[nodiscard]] Bitmap last() const;  // once count() > 0

    std::atomic<Orientation> orientation = Orientation::up;  // once count() > 0
    std::atomic<bool> isMirrored = false;                    // once count() > 0
    std::function<void()> onFrame{};                         // set before frames flow

private:
    mutable std::mutex mutex_;
    std::atomic<int> count_ = 0;
    std::optional<Bitmap> last_;
};

// Counts frames and keeps the first ones.
class TakenFrames final : public SampleBufferDelegate {
public:
    void didOutput(const SampleBuffer& sampleBuffer) override;

    [[nodiscard]] int count() const { return count_; }
    [[nodiscard]] const std::vector<Bitmap>& kept() const {
        return kept_;
    }  // once count() >= keeps

    int keeps = 0;                    // that many bitmaps; set before frames flow
    std::function<void()> onFrame{};  // set before frames flow

private:
    std::atomic<int> count_ = 0;
    std::vector<Bitmap> kept_;
};

// What several photos ended in, in order.
struct PhotoAnswers {
    struct Answer {
        int number;  // of the photo
        std::vector<std::byte> file;
        std::string error;
    };
    using Log = std::vector<Answer>;

    std::mutex mutex;
    Log log;
    std::function<void()> onAnswer{};  // set before photos are taken
};

// A platform, its session and both outputs, wired as a host does.
struct CaptureRig {
    // Waits five times as long as usual for its camera: what is tested holds on a busy machine too.
    explicit CaptureRig(const CameraOptions& options,
                        const capture::Patience& patience = capture::Patience().times(5),
                        capture::OpenControlNodes openControls = capture::openV4l2Nodes);

    // Adds the default device, and the outputs the first time, and starts; the error where that
    // fails.
    std::string start();
    void takePhotos(int number, const PhotoSettings& settings = {});
    [[nodiscard]] PhotoAnswers::Log photos(std::size_t number) const;  // waits for so many

    std::shared_ptr<capture::GStreamerCapturePlatform> platform;
    std::shared_ptr<CaptureSession> session;
    std::shared_ptr<PhotoOutput> photoOutput;
    std::shared_ptr<VideoDataOutput> videoOutput;
    std::shared_ptr<ShownFrames> shown = std::make_shared<ShownFrames>();
    std::shared_ptr<TakenFrames> taken = std::make_shared<TakenFrames>();
    std::shared_ptr<PhotoAnswers> answers = std::make_shared<PhotoAnswers>();
};

}  // namespace kestrelid::test
