#pragma once

#include "tests/support/FakeCapture.h"
#include "tests/support/ManualQueue.h"

#include <kestrelid/screens/ScannerCamera.h>

#include <memory>

namespace kestrelid::test {

// A camera that obeys the test, with queues that the test cranks.
struct FakeCamera {
    FakeCamera() = default;
    FakeCamera(const FakeCamera&) = delete;
    FakeCamera& operator=(const FakeCamera&) = delete;

    // What still waits holds the manager, which holds these queues.
    ~FakeCamera() {
        mainQueue->clear();
        otherQueues->clear();
    }

    std::shared_ptr<FakeAuthorization> authorization =
        std::make_shared<FakeAuthorization>(AuthorizationStatus::authorized);
    std::shared_ptr<FakePlatform> platform = std::make_shared<FakePlatform>();
    std::shared_ptr<FakeDetector> detector = std::make_shared<FakeDetector>();
    std::shared_ptr<ManualQueue> mainQueue = std::make_shared<ManualQueue>();
    std::shared_ptr<ManualQueue> otherQueues = std::make_shared<ManualQueue>();
    std::shared_ptr<int> managersMade = std::make_shared<int>(0);
    std::shared_ptr<CameraOptions> optionsGiven = std::make_shared<CameraOptions>();

    [[nodiscard]] ScannerCamera scannerCamera() const {
        ScannerCamera camera;
        const CameraServices services{
            .authorization = authorization,
            .capture = platform,
            .detector = detector,
            .mainQueue = mainQueue,
            .makeSerialQueue = [queue = otherQueues](const std::string&) { return queue; }};
        camera.makeServices = [services, made = managersMade,
                               given = optionsGiven](const std::shared_ptr<DispatchQueue>&,
                                                     const CameraOptions& options) {
            ++*made;
            *given = options;
            return services;
        };
        return camera;
    }

    [[nodiscard]] FakeMachine& machine() const { return *platform->machine; }

    // Until the session was started and its readiness published.
    void makeReady() const {
        otherQueues->runAll();
        mainQueue->advance(1.0);
    }

    // One verdict, as the detector gives it.
    void judge(bool isPassport) const {
        const auto output = platform->videoOutput.lock();
        const auto bitmap =
            Bitmap::wrap(1, 1, 4, PixelFormat::bgra8, std::make_shared<std::byte[]>(4), 4);
        const std::size_t call = detector->completions.size();
        if (call == 0) {
            output->deliver(std::make_shared<FakePixelBuffer>(bitmap));
            otherQueues->runAll();
        }
        detector->answer(0, isPassport, 0.5);
        mainQueue->runAll();
    }
};

}  // namespace kestrelid::test
