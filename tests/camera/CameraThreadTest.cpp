#include "base/AsioQueue.h"
#include "tests/support/FakeCapture.h"

#include <kestrelid/CameraManager.h>

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <latch>
#include <thread>

namespace kestrelid::camera {
namespace {

using test::FakePixelBuffer;

// Answers on another thread, as the real one does; every second verdict is for a passport.
class WorkerDetector final : public PassportDetector {
public:
    WorkerDetector() : PassportDetector(test::noServices(), ValidationEffort::verdictOnly) {}

    void validate(const Image&, Completion completion) override {
        const bool isPassport = ++calls_ % 2 == 0;
        workers_.async([isPassport, completion = std::move(completion)] {
            completion(makeResult(isPassport, 0.5, {}, {}));
        });
    }

private:
    std::atomic<int> calls_ = 0;
    base::AsioQueue workers_{"workers", 2};
};

// A camera on real queues, whose main queue is a thread of its own. A frame in flight holds the
// manager beyond the end of a test, so what the manager calls shares what it needs.
struct LiveCamera {
    LiveCamera() {
        const auto photos = std::make_shared<base::AsioQueue>("photos", 2);
        platform->machine->takePhoto = [photos](std::shared_ptr<PhotoCaptureDelegate> delegate) {
            photos->async([delegate = std::move(delegate)] {
                delegate->didFinishProcessingPhoto({}, CaptureError{"no film"});
            });
        };
        const auto seconds =
            std::make_shared<std::atomic<int>>(0);  // every frame has its own second
        manager = CameraManager::create(
            {.authorization = authorization,
             .capture = platform,
             .detector = std::make_shared<WorkerDetector>(),
             .mainQueue = mainQueue,
             .makeSerialQueue =
                 [](const std::string& label) {
                     return std::make_shared<base::AsioQueue>(label, 1);
                 },
             .now = [seconds] { return WallTime(std::chrono::duration<double>(++*seconds)); },
             .outlines = std::make_shared<test::FakeRectangles>()});
    }

    void onMain(std::function<void()> block) {
        std::promise<void> done;
        mainQueue->async([&] {
            block();
            done.set_value();
        });
        done.get_future().wait();
    }

    std::shared_ptr<test::FakeAuthorization> authorization =
        std::make_shared<test::FakeAuthorization>(AuthorizationStatus::authorized);
    std::shared_ptr<test::FakePlatform> platform = std::make_shared<test::FakePlatform>();
    std::shared_ptr<base::AsioQueue> mainQueue = std::make_shared<base::AsioQueue>("main", 1);
    std::shared_ptr<CameraManager> manager;
};

// Frames until stopped, from a thread as the platform's.
std::jthread deliverFrames(const std::shared_ptr<test::FakeVideoOutput>& output) {
    return std::jthread([output](const std::stop_token& stop) {
        const auto pixels = std::make_shared<FakePixelBuffer>(test::blankBitmap(16, 16));
        while (!stop.stop_requested()) {
            output->deliver(pixels);
            std::this_thread::yield();
        }
    });
}

TEST(CameraThreads, FramesVerdictsAndPhotosMeetOnTheMainQueue) {
    LiveCamera camera;
    std::promise<void> ready;
    std::latch photos(50);
    std::latch verdicts(100);
    std::latch pages(2);
    std::vector<Subscription> subscriptions;
    camera.onMain([&] {
        camera.manager->onPhotoCapture = [&, main = std::this_thread::get_id()](const auto&) {
            EXPECT_EQ(std::this_thread::get_id(), main);
            photos.count_down();
        };
        subscriptions.push_back(camera.manager->isSessionReady().didChange([&](bool isReady) {
            if (isReady)
                ready.set_value();
        }));
        subscriptions.push_back(camera.manager->detectionConfidence().didChange(
            [&, main = std::this_thread::get_id()](float) {
                EXPECT_EQ(std::this_thread::get_id(), main);
                if (!verdicts.try_wait())
                    verdicts.count_down();
            }));
        subscriptions.push_back(camera.manager->page().didChange(
            [&, main = std::this_thread::get_id()](const LivePage&) {
                EXPECT_EQ(std::this_thread::get_id(), main);
                if (!pages.try_wait())
                    pages.count_down();
            }));
        camera.manager->checkAuthorization();
    });
    ready.get_future().wait();
    const std::jthread frames = deliverFrames(camera.platform->videoOutput.lock());
    for (int tap = 0; tap < 50; ++tap)
        camera.onMain([&] { camera.manager->capturePhoto(); });
    photos.wait();
    verdicts.wait();
    pages.wait();
    camera.onMain([&] { subscriptions.clear(); });
}

TEST(CameraThreads, ReleaseWhileFramesFlowLeavesNothingBehind) {
    for (int round = 0; round < 100; ++round) {
        LiveCamera camera;
        const std::weak_ptr<CameraManager> weak = camera.manager;
        // Without a session, whose readiness check would keep the manager for a second.
        const auto output = camera.platform->videoOutput.lock();
        output->setSampleBufferDelegate(camera.manager,
                                        std::make_shared<base::AsioQueue>("frames", 1));
        std::jthread frames = deliverFrames(output);
        if (round % 2 == 0)
            std::this_thread::yield();
        camera.onMain([&] { camera.manager.reset(); });
        while (!weak.expired())
            std::this_thread::yield();
    }
}

}  // namespace
}  // namespace kestrelid::camera
