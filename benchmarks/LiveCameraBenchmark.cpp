#include "base/AsioQueue.h"
#include "capture/gstreamer/CameraSource.h"
#include "capture/gstreamer/DeviceWatch.h"
#include "capture/gstreamer/GStreamerCapturePlatform.h"
#include "capture/gstreamer/GStreamerLibrary.h"
#include "tests/capture/TestCamera.h"

#include <kestrelid/DefaultCamera.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>
#include <sys/resource.h>
#include <thread>
#include <vector>

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

bool eventually(const std::function<bool()>& condition) {
    const auto end = Clock::now() + kPatience;
    while (!condition() && Clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return condition();
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
        output->setSampleBufferDelegate(counter, std::make_shared<base::AsioQueue>("frames", 1));
        session->addOutput(output);
    }

    capture::GStreamerCapturePlatform platform{CameraOptions{}};
    std::shared_ptr<CaptureSession> session = platform.makeSession();
    std::shared_ptr<VideoDataOutput> output = platform.makeVideoDataOutput();
    std::shared_ptr<FrameCounter> counter = std::make_shared<FrameCounter>();
};

void firstFrame(benchmark::State& state) {
    const test::TestCamera hardware(camera("desk.jpg"));
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

// The camera into nothing: what its own drawing and its thread take.
class CameraAlone {
public:
    CameraAlone() {
        const auto watch = capture::startGStreamer() ? capture::DeviceWatch::start() : nullptr;
        const std::vector<capture::DeviceHandle> devices =
            watch ? watch->devices() : std::vector<capture::DeviceHandle>{};
        auto pipeline =
            capture::parsePipeline("capsfilter name=filter caps=video/x-raw,format=YUY2 ! "
                                   "fakesink sync=false async=false");
        if (devices.empty() || !pipeline)
            return;
        GstElement* source = gst_device_create_element(devices.front().get(), nullptr);
        gst_bin_add(GST_BIN(pipeline->get()), source);
        const capture::ElementHandle filter(
            gst_bin_get_by_name(GST_BIN(pipeline->get()), "filter"));
        gst_element_link(source, filter.get());
        pipeline_ = *std::move(pipeline);
        gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING);
    }
    ~CameraAlone() {
        if (pipeline_)
            gst_element_set_state(pipeline_.get(), GST_STATE_NULL);
    }

private:
    capture::ElementHandle pipeline_;
};

double cpuPercentOf(std::chrono::seconds time) {
    const double cpu = cpuSeconds();
    const auto start = Clock::now();
    std::this_thread::sleep_for(time);
    return 100.0 * (cpuSeconds() - cpu) / duration<double>(Clock::now() - start).count();
}

// camera_percent is the yardstick: the same camera without a session.
void idleDetection(benchmark::State& state) {
    constexpr auto kTime = std::chrono::seconds(5);
    const test::TestCamera hardware(camera("desk.jpg"));
    for (auto _ : state) {
        double alone = 0.0;
        {
            const CameraAlone yardstick;
            if (!eventually([&] { return hardware.count("frames 1 ") > 0; }))
                return state.SkipWithError("no frame came from the camera alone");
            alone = cpuPercentOf(kTime);
        }
        CountedSession counted;
        counted.session->startRunning();
        auto first = counted.counter->first.get_future();
        if (first.wait_for(kPatience) == std::future_status::timeout)
            return state.SkipWithError("no frame came");
        const int frames = counted.counter->frames;
        const auto start = Clock::now();
        const double whole = cpuPercentOf(kTime);
        const double seconds = duration<double>(Clock::now() - start).count();
        state.counters["whole_percent"] = whole;
        state.counters["camera_percent"] = alone;
        state.counters["own_percent"] = whole - alone;
        state.counters["frames_per_s"] = (counted.counter->frames - frames) / seconds;
    }
}
BENCHMARK(idleDetection)->Iterations(1)->Repetitions(3)->Unit(benchmark::kMillisecond);

class ShownCounter final : public PreviewSurface {
public:
    void show(const Bitmap&, Orientation, bool) override { ++frames; }
    std::atomic<int> frames = 0;
};

// A manager whose detection state can be waited for.
class WatchedCamera {
public:
    WatchedCamera() {
        services_.detector =
            PassportDetector::create(defaultServices(), ValidationEffort::verdictOnly);
        manager_ = CameraManager::create(services_);
        manager_->session()->addPreviewSurface(shown_);
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

    [[nodiscard]] int framesShown() const { return shown_->frames; }

private:
    std::shared_ptr<ShownCounter> shown_ = std::make_shared<ShownCounter>();
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
    test::TestCamera hardware(camera("bangladesh-on-wood.jpg"));
    WatchedCamera watched;
    if (!watched.waitUntilReady() || !watched.waitUntilDetected(true))  // loads the models
        return state.SkipWithError("the passport is not found");
    const auto show = [&](const std::string& sample) {
        hardware.unset("picture");
        hardware.set("picture " KESTRELID_SAMPLES_DIR "/" + sample);
    };
    std::vector<double> seconds;
    const auto begin = Clock::now();
    const int before = watched.framesShown();
    for (auto _ : state) {
        show("desk.jpg");
        if (!watched.waitUntilDetected(false))
            return state.SkipWithError("the passport stays in view");
        // So that passports come at all moments between two judged frames.
        std::this_thread::sleep_for(std::chrono::milliseconds(500 + 137 * (seconds.size() % 4)));
        const auto start = Clock::now();
        show("bangladesh-on-wood.jpg");
        if (!watched.waitUntilDetected(true))
            return state.SkipWithError("the passport is not found again");
        seconds.push_back(duration<double>(Clock::now() - start).count());
        state.SetIterationTime(seconds.back());
    }
    state.counters["frames_per_s"] =
        (watched.framesShown() - before) / duration<double>(Clock::now() - begin).count();
    std::ranges::sort(seconds);
    state.counters["median_s"] = seconds[seconds.size() / 2];
    state.counters["slowest_s"] = seconds.back();
}
BENCHMARK(liveDetection)->UseManualTime()->Iterations(11)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kestrelid
