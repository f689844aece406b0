#include "platform/capture/gstreamer/GStreamerCapturePlatform.h"
#include "platform/dispatch/AsioQueue.h"
#include "tests/capture/TestCamera.h"

#include <kestrelid/DefaultCamera.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <sys/resource.h>
#include <thread>

// The way from a camera without hardware, 1280x720 at 30 frames a second, to frames and verdicts.
namespace kestrelid {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::duration;

constexpr auto kPatience = std::chrono::seconds(30);

std::string camera(const std::string& sample) {
    return "device Benchmark Camera\n"
           "caps video/x-raw,format=YUY2,width=1280,height=720,framerate=30/1\n"
           "picture " KESTRELID_SAMPLES_DIR "/" +
           sample + "\n";
}

double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// A session without a manager: its frames are only counted.
class FrameCounter final : public SampleBufferDelegate {
public:
    void didOutput(const SampleBuffer&) override {
        if (++frames == 1)
            first.set_value(Clock::now());
    }

    std::atomic<int> frames = 0;
    std::promise<Clock::time_point> first;
};

struct CountedSession {
    CountedSession() {
        const auto device = platform.defaultVideoDevice();
        auto input = platform.makeInput(device);
        session->setSessionPreset(SessionPreset::photo);
        session->addInput(std::get<std::shared_ptr<CaptureInput>>(input));
        output->setSampleBufferDelegate(counter, std::make_shared<AsioQueue>("frames", 1));
        session->addOutput(output);
    }

    GStreamerCapturePlatform platform{CameraOptions{}};
    std::shared_ptr<CaptureSession> session = platform.makeSession();
    std::shared_ptr<VideoDataOutput> output = platform.makeVideoDataOutput();
    std::shared_ptr<FrameCounter> counter = std::make_shared<FrameCounter>();
};

void firstFrame(benchmark::State& state) {
    const TestCamera hardware(camera("desk.jpg"));
    for (auto _ : state) {
        CountedSession counted;
        const auto start = Clock::now();
        counted.session->startRunning();
        auto first = counted.counter->first.get_future();
        if (first.wait_for(kPatience) == std::future_status::timeout)
            return state.SkipWithError("no frame came");
        state.SetIterationTime(duration<double>(first.get() - start).count());
    }
}
BENCHMARK(firstFrame)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(11)
    ->Unit(benchmark::kMillisecond);

// The camera's own drawing is in the percentage.
void idleDetection(benchmark::State& state) {
    const TestCamera hardware(camera("desk.jpg"));
    CountedSession counted;
    counted.session->startRunning();
    for (auto _ : state) {
        const double cpu = cpuSeconds();
        const int frames = counted.counter->frames;
        const auto start = Clock::now();
        std::this_thread::sleep_for(std::chrono::seconds(5));
        const double seconds = duration<double>(Clock::now() - start).count();
        state.counters["cpu_percent"] = 100.0 * (cpuSeconds() - cpu) / seconds;
        state.counters["frames_per_s"] = (counted.counter->frames - frames) / seconds;
    }
}
BENCHMARK(idleDetection)->Iterations(1)->Repetitions(3)->Unit(benchmark::kMillisecond);

// A manager whose detection state can be waited for.
class WatchedCamera {
public:
    WatchedCamera() {
        services_.detector = PassportDetector::create(
            defaultServices({.resources = KESTRELID_RESOURCES_DIR}), ValidationEffort::verdictOnly);
        manager_ = CameraManager::create(services_);
        services_.mainQueue->async([this] {
            const auto note = [this](bool) {
                const std::lock_guard lock(mutex_);
                isDetected_ = manager_->isDocumentDetected().value();
                isReady_ = manager_->isSessionReady().value();
                changed_.notify_all();
            };
            subscriptions_ = {manager_->isDocumentDetected().didChange(note),
                              manager_->isSessionReady().didChange(note)};
            manager_->checkAuthorization();
        });
    }
    ~WatchedCamera() {
        std::promise<void> done;
        services_.mainQueue->async([&] {
            subscriptions_.clear();
            manager_.reset();
            done.set_value();
        });
        done.get_future().wait();
    }

    bool waitUntilReady() {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, kPatience, [this] { return isReady_; });
    }
    bool waitUntilDetected(bool isDetected) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, kPatience, [&] { return isDetected_ == isDetected; });
    }

private:
    CameraServices services_ = defaultCameraServices(makeSerialQueue("main"));
    std::shared_ptr<CameraManager> manager_;
    std::vector<Subscription> subscriptions_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool isDetected_ = false;
    bool isReady_ = false;
};

// A desk, and then a passport on it.
void liveDetection(benchmark::State& state) {
    TestCamera hardware(camera("bangladesh-on-wood.jpg"));
    WatchedCamera watched;
    if (!watched.waitUntilReady() || !watched.waitUntilDetected(true))  // loads the models
        return state.SkipWithError("the passport is not found");
    const auto show = [&](const std::string& sample) {
        hardware.unset("picture");
        hardware.set("picture " KESTRELID_SAMPLES_DIR "/" + sample);
    };
    int round = 0;
    for (auto _ : state) {
        show("desk.jpg");
        if (!watched.waitUntilDetected(false))
            return state.SkipWithError("the passport stays in view");
        // So that passports come at all moments between two judged frames.
        std::this_thread::sleep_for(std::chrono::milliseconds(500 + 137 * (round++ % 4)));
        const auto start = Clock::now();
        show("bangladesh-on-wood.jpg");
        if (!watched.waitUntilDetected(true))
            return state.SkipWithError("the passport is not found again");
        state.SetIterationTime(duration<double>(Clock::now() - start).count());
    }
}
BENCHMARK(liveDetection)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(11)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kestrelid
