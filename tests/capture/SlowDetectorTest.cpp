#include "base/AsioQueue.h"
#include "capture/gstreamer/FramePool.h"
#include "tests/capture/CaptureRig.h"
#include "tests/capture/TestCamera.h"
#include "tests/support/FakeCapture.h"

#include <kestrelid/CameraManager.h>

#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <future>
#include <set>

namespace kestrelid::capture {
namespace {

using namespace test;

// Holds every picture until it is told to be done with the oldest.
class HoldingDetector final : public PassportDetector {
public:
    HoldingDetector() : PassportDetector(noServices(), ValidationEffort::verdictOnly) {}

    void validate(const Image& image, Completion completion) override {
        const std::lock_guard lock(mutex_);
        ++received_;
        places_.insert(image.bitmap()->row(0));
        held_.emplace_back(image, std::move(completion));
    }

    void finishOldest() {
        std::unique_lock lock(mutex_);
        auto [image, completion] = std::move(held_.front());
        held_.pop_front();
        lock.unlock();
        completion(FakeDetector::verdict(false, 0.0));
    }

    [[nodiscard]] int received() const {
        const std::lock_guard lock(mutex_);
        return received_;
    }
    [[nodiscard]] std::size_t places() const {
        const std::lock_guard lock(mutex_);
        return places_.size();
    }

private:
    mutable std::mutex mutex_;
    int received_ = 0;
    std::set<const std::byte*> places_;
    std::deque<std::pair<Image, Completion>> held_;
};

TEST(SlowDetector, IsGivenThreePicturesAtOnceAndTheirMemoryAgain) {
    const test::TestCamera camera;
    const auto detector = std::make_shared<HoldingDetector>();
    const auto shown = std::make_shared<ShownFrames>();
    const auto mainQueue = std::make_shared<base::AsioQueue>("test.main", 1);
    std::atomic<int> second = 0;  // every frame is due
    auto manager = CameraManager::create(
        {.authorization = std::make_shared<FakeAuthorization>(AuthorizationStatus::authorized),
         .capture = std::make_shared<GStreamerCapturePlatform>(CameraOptions{}),
         .detector = detector,
         .mainQueue = mainQueue,
         .makeSerialQueue =
             [](const std::string& label) { return std::make_shared<base::AsioQueue>(label, 1); },
         .now = [&second] { return WallTime(std::chrono::seconds(++second)); }});
    manager->session()->addPreviewSurface(shown);
    mainQueue->async([&] { manager->checkAuthorization(); });

    constexpr int kPictures = FramePool::kBitmaps;
    for (int finished = 0; finished < 10; ++finished) {
        ASSERT_TRUE(eventually([&] { return detector->received() == kPictures + finished; }))
            << detector->received();
        const int before = shown->count();
        ASSERT_TRUE(eventually([&] { return shown->count() >= before + 6; })) << "frames flow on";
        ASSERT_EQ(detector->received(), kPictures + finished) << "no memory for another";
        detector->finishOldest();
    }
    EXPECT_EQ(detector->places(), std::size_t{kPictures});

    std::promise<void> released;
    mainQueue->async([&] {
        manager.reset();
        released.set_value();
    });
    released.get_future().wait();
    EXPECT_TRUE(camera.waitUntilClosed());
}

}  // namespace
}  // namespace kestrelid::capture
