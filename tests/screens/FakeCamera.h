#pragma once

#include "tests/support/FakeCapture.h"
#include "tests/support/FakeZones.h"
#include "tests/support/ManualQueue.h"

#include <kestrelid/screens/ScannerCamera.h>

#include <algorithm>
#include <memory>
#include <QVariant>
#include <string_view>

namespace kestrelid::test {

// Finds in every picture what the test puts there.
struct FakeOutlines final : RectangleService {
    RectangleResult perform(const Bitmap&, const RectangleRequest&) override {
        ++requests;
        return seen;
    }

    std::vector<RectangleObservation> seen;
    int requests = 0;
};

// A page with upright sides, in shares of the picture, y from its top.
inline RectangleObservation pageAt(double left, double top, double right, double bottom) {
    return {.boundingBox = {left, 1.0 - bottom, right - left, bottom - top},
            .corners = {{{left, 1.0 - top},
                         {right, 1.0 - top},
                         {right, 1.0 - bottom},
                         {left, 1.0 - bottom}}},
            .confidence = 1.0f};
}

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
    std::shared_ptr<FakeZones> zones = std::make_shared<FakeZones>();
    std::shared_ptr<FakeOutlines> outlines = std::make_shared<FakeOutlines>();
    // Seconds of both clocks.
    std::shared_ptr<double> wallClock = std::make_shared<double>(1'700'000'000.0);
    std::shared_ptr<ManualQueue> mainQueue = std::make_shared<ManualQueue>();
    std::shared_ptr<ManualQueue> otherQueues = std::make_shared<ManualQueue>();
    std::shared_ptr<int> managersMade = std::make_shared<int>(0);
    std::shared_ptr<CameraOptions> optionsGiven = std::make_shared<CameraOptions>();

    [[nodiscard]] ScannerCamera scannerCamera() const {
        const CameraServices services{
            .authorization = authorization,
            .capture = platform,
            .detector = detector,
            .mainQueue = mainQueue,
            .makeSerialQueue = [queue = otherQueues](const std::string&) { return queue; },
            .now = [now = wallClock] { return WallTime(std::chrono::duration<double>(*now)); },
            .zones = zones,
            .outlines = outlines,
            .uptime = [now = wallClock] { return std::chrono::duration<double>(*now); }};
        ScannerCamera camera;
        camera.makeServices = [services, made = managersMade,
                               given = optionsGiven](const auto&, const CameraOptions& options) {
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

    // Frames with this zone in them; empty: without one.
    void showZone(const std::vector<std::string>& lines, int frames) const {
        zones->seen.clear();
        if (!lines.empty())
            zones->seen.push_back(clearReading(lines));
        for (int frame = 0; frame < frames; ++frame) {
            *wallClock += 0.2;
            platform->videoOutput.lock()->deliver(
                std::make_shared<FakePixelBuffer>(blankBitmap(1, 1)));
            otherQueues->runAll();
            mainQueue->runAll();
        }
    }

    // Frames that are even and grey, a quarter of a second apart, with this page in them.
    void showPage(const std::optional<RectangleObservation>& page, int frames) const {
        outlines->seen.clear();
        if (page)
            outlines->seen.push_back(*page);
        for (int frame = 0; frame < frames; ++frame) {
            *wallClock += 0.25;
            constexpr std::size_t kSize = 64 * 48;
            const auto pixels = std::make_shared<std::byte[]>(kSize);
            std::fill_n(pixels.get(), kSize, std::byte(128));
            platform->videoOutput.lock()->deliver(std::make_shared<FakePixelBuffer>(
                Bitmap::wrap(64, 48, 64, PixelFormat::gray8, pixels, kSize)));
            otherQueues->runAll();
            mainQueue->runAll();
        }
    }

    // One verdict, as the detector gives it.
    void judge(bool isPassport) const {
        if (detector->completions.empty()) {
            platform->videoOutput.lock()->deliver(
                std::make_shared<FakePixelBuffer>(blankBitmap(1, 1)));
            otherQueues->runAll();
        }
        detector->answer(0, isPassport, 0.5);
        mainQueue->runAll();
    }

    // These cameras, as the machine tells of them.
    void plug(std::vector<CameraDescription> cameras) const {
        machine().cameras = std::move(cameras);
        if (machine().camerasChanged)
            machine().camerasChanged();
        otherQueues->runAll();
        mainQueue->runAll();
    }

    // A tenth of a second, after which a tap's photo is asked for.
    void pass(double seconds = 0.11) const {
        mainQueue->advance(seconds);
        otherQueues->runAll();
    }

    // The camera has no photo for anybody who asked.
    void refusePhotos() const {
        const auto output = platform->photoOutput.lock();
        while (!output->requests.empty())
            output->finish({}, CaptureError{"lost"});
    }

    [[nodiscard]] auto count(std::string_view operation) const {
        return std::ranges::count(machine().log, operation);
    }

    // Where the screen shows what the camera sees; null where it shows none.
    [[nodiscard]] std::shared_ptr<PreviewSurface> surface() const {
        const auto session = platform->session.lock();
        if (!session)
            return nullptr;
        for (const auto& weak : session->surfaces) {
            if (auto alive = weak.lock())
                return alive;
        }
        return nullptr;
    }
};

inline QVariant completing(PhotoCompletion completion) {
    return QVariant::fromValue(std::move(completion));
}

inline QVariant acting(ScreenAction action) {
    return QVariant::fromValue(std::move(action));
}

}  // namespace kestrelid::test
