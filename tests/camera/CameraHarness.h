#pragma once

#include "tests/support/FakeCapture.h"
#include "tests/support/ManualQueue.h"

#include <kestrelid/CameraManager.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kestrelid::test {

// A camera manager on a fake machine, with queues cranked by hand and a clock set by hand.
struct CameraHarness {
    explicit CameraHarness(AuthorizationStatus status = AuthorizationStatus::authorized,
                           std::shared_ptr<ZoneService> zones = nullptr,
                           std::shared_ptr<RectangleService> outlines = nullptr)
        : authorization(std::make_shared<FakeAuthorization>(status)) {
        manager = CameraManager::create(
            {.authorization = authorization,
             .capture = platform,
             .detector = detector,
             .mainQueue = mainQueue,
             .makeSerialQueue =
                 [this](const std::string& label) {
                     return queues[label] = std::make_shared<ManualQueue>();
                 },
             .now = [this] { return WallTime(std::chrono::duration<double>(seconds)); },
             .canJudge = [this] { return canJudge; },
             .zones = std::move(zones),
             .outlines = std::move(outlines),
             .uptime = [this] { return std::chrono::duration<double>(seconds); }});
        watch(manager->isAuthorized(), "isAuthorized");
        watch(manager->isSessionReady(), "isSessionReady");
        watch(manager->isDocumentDetected(), "isDocumentDetected");
        watch(manager->detectionConfidence(), "detectionConfidence");
    }

    CameraHarness(const CameraHarness&) = delete;
    CameraHarness& operator=(const CameraHarness&) = delete;

    // What still waits holds the manager, which holds those with whom it waits.
    ~CameraHarness() {
        authorization->answer(false);
        mainQueue->clear();
        for (const auto& [label, queue] : queues)
            queue->clear();
        if (const auto output = platform->photoOutput.lock())
            output->requests.clear();
    }

    // Runs whatever waits on any queue, without moving a clock.
    void settle() {
        for (bool ran = true; ran;) {
            ran = mainQueue->runOne();
            for (const auto& [label, queue] : queues)
                ran = queue->runOne() || ran;
        }
    }

    // Permission, session and the second until it is ready.
    void becomeReady() {
        manager->checkAuthorization();
        settle();
        mainQueue->advance(1.0);
    }

    void deliverFrame(std::shared_ptr<const PixelBuffer> pixels) {
        platform->videoOutput.lock()->deliver(std::move(pixels));
        settle();
    }
    void deliverFrame() { deliverFrame(std::make_shared<FakePixelBuffer>(blankBitmap(12, 8))); }

    // Time in which no frame comes.
    void pass(double silence) {
        seconds += silence;
        mainQueue->advance(silence);
        settle();
    }

    // A frame at a time of its own, and the verdict on it.
    void judge(bool isPassport, double confidence) {
        seconds += 1.0;
        deliverFrame();
        detector->answer(detector->completions.size() - 1, isPassport, confidence);
        settle();
    }

    [[nodiscard]] FakeMachine& machine() const { return *platform->machine; }

    // Clears the announcements as it gives them: "name = value", in order.
    [[nodiscard]] std::vector<std::string> announced() { return std::exchange(announcements, {}); }

    std::shared_ptr<FakeAuthorization> authorization;
    std::shared_ptr<FakePlatform> platform = std::make_shared<FakePlatform>();
    std::shared_ptr<FakeDetector> detector = std::make_shared<FakeDetector>();
    std::shared_ptr<ManualQueue> mainQueue = std::make_shared<ManualQueue>();
    std::map<std::string, std::shared_ptr<ManualQueue>> queues;
    bool canJudge = true;
    double seconds = 1'700'000'000.0;  // both clocks
    std::vector<std::string> announcements;
    std::shared_ptr<CameraManager> manager;
    std::vector<Subscription> subscriptions;

private:
    template <typename Value>
    void watch(const Published<Value>& field, std::string name) {
        subscriptions.push_back(field.didChange([this, name = std::move(name)](Value value) {
            if constexpr (std::is_same_v<Value, bool>)
                announcements.push_back(name + (value ? " = true" : " = false"));
            else
                announcements.push_back(name + " = " + std::to_string(value).substr(0, 4));
        }));
    }
};

}  // namespace kestrelid::test
