#include "tests/capture/TestCamera.h"
#include "tests/screens/FakeCamera.h"
#include "tests/screens/ShownScreen.h"

#include <kestrelid/DefaultServices.h>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <QApplication>
#include <QColor>
#include <QElapsedTimer>
#include <QQuickWindow>
#include <QTest>
#include <QTimer>
#include <sys/resource.h>

// The screens in one process, with the software renderer.
namespace kestrelid::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::duration;

const QSize kPhone{420, 760};
constexpr int kFramesPerJournalLine = 30;

double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double secondsSince(Clock::time_point start) {
    return duration<double>(Clock::now() - start).count();
}

// The longest time during which the main thread took no event.
class Heartbeat {
public:
    Heartbeat() {
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { beat(); });
        since_.start();
        timer_.start(1);
    }
    [[nodiscard]] double longestGap() {
        beat();
        return longest_;
    }

private:
    void beat() {
        longest_ = std::max(longest_, static_cast<double>(since_.nsecsElapsed()) * 1e-9),
        since_.start();
    }

    QTimer timer_;
    QElapsedTimer since_;
    double longest_ = 0.0;
};

// Window in points; whether the recogniser judges frames meanwhile.
void livePreview(benchmark::State& state) {
    const TestCamera hardware("device Benchmark Camera\n"
                              "caps video/x-raw,format=YUY2,width=1280,height=720,framerate=30/1\n"
                              "picture " KESTRELID_SAMPLES_DIR "/bangladesh-on-wood.jpg\n");
    ScannerCamera camera;
    camera.recognition = defaultServices();
    if (state.range(2) == 0) {
        camera.recognition->rectangles = std::make_shared<FakeRectangles>();
        camera.recognition->text = std::make_shared<FakeText>();
    }
    const QSize size(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    ShownScreen screen("DocumentScannerView", {{"completion", QVariant()}}, size, camera);
    const QQuickItem* disc = screen.item("disc");
    int rendered = 0;
    QObject::connect(&screen.window(), &QQuickWindow::frameSwapped, &screen.window(),
                     [&rendered] { ++rendered; });
    for (auto _ : state) {
        if (!waitFor([&] { return disc->property("color").value<QColor>() == Qt::white; }))
            return state.SkipWithError("the camera does not get ready");
        QTest::qWait(2000);  // models load
        // From one line of the journal to another, so that both counts begin and end together.
        const int line = hardware.count("frames");
        waitFor([&] { return hardware.count("frames") > line; });
        const int linesBefore = hardware.count("frames");
        const int renderedBefore = rendered;
        const double cpuBefore = cpuSeconds();
        const auto start = Clock::now();
        if (!QTest::qWaitFor([&] { return hardware.count("frames") >= linesBefore + 10; }, 30'000))
            return state.SkipWithError("the camera stands still");
        const double seconds = secondsSince(start);
        const int delivered = (hardware.count("frames") - linesBefore) * kFramesPerJournalLine;
        state.SetIterationTime(seconds);
        state.counters["core_percent"] = 100.0 * (cpuSeconds() - cpuBefore) / seconds;
        state.counters["delivered"] = delivered;
        state.counters["rendered"] = rendered - renderedBefore;
        state.counters["per_second"] = (rendered - renderedBefore) / seconds;
    }
}
BENCHMARK(livePreview)
    ->ArgNames({"width", "height", "judged"})
    ->Args({420, 760, 0})
    ->Args({1280, 800, 0})
    ->Args({420, 760, 1})
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kSecond);

// From the verdict's publication to the frame that shows it.
void verdictToBrackets(benchmark::State& state) {
    const FakeCamera camera;
    ShownScreen screen("DocumentScannerView", {{"completion", QVariant()}}, kPhone,
                       camera.scannerCamera());
    camera.mainQueue->runAll();
    camera.makeReady();
    settle();
    int frames = 0;
    int framesOfLast = 0;
    QObject::connect(&screen.window(), &QQuickWindow::frameSwapped, &screen.window(),
                     [&frames] { ++frames; });
    bool isPassport = false;
    for (auto _ : state) {
        frames = 0;
        isPassport = !isPassport;
        const auto start = Clock::now();
        camera.judge(isPassport);
        if (!isPassport)
            camera.judge(false);  // the second in a row
        if (!waitFor([&] { return frames > 0; }))
            return state.SkipWithError("no frame follows");
        state.SetIterationTime(secondsSince(start));
        framesOfLast = frames;
        QTest::qWait(50);
    }
    state.counters["frames"] = framesOfLast;
}
BENCHMARK(verdictToBrackets)->Iterations(50)->UseManualTime()->Unit(benchmark::kMillisecond);

// From the making of the screen to the frame that shows the photo.
void largePhoto(benchmark::State& state) {
    constexpr int kWidth = 4032;
    constexpr int kHeight = 3024;
    constexpr std::size_t kBytes = std::size_t{3} * kWidth * kHeight;
    const Image photo(*Bitmap::wrap(kWidth, kHeight, 3 * kWidth, PixelFormat::rgb8,
                                    std::make_shared<std::byte[]>(kBytes), kBytes),
                      Orientation::right);
    double longestGap = 0.0;
    double first = 0.0;
    for (auto _ : state) {
        Heartbeat heartbeat;
        const auto start = Clock::now();
        ShownScreen screen("ImagePreviewView",
                           {{"title", "Front page"},
                            {"image", QVariant::fromValue(photo)},
                            {"didTapRetake", QVariant()},
                            {"didTapConfirm", QVariant()}},
                           kPhone);
        const double opened = secondsSince(start);
        const QQuickItem* shown = screen.item("photo");
        int framesOfPhoto = 0;
        QObject::connect(&screen.window(), &QQuickWindow::frameSwapped, &screen.window(),
                         [&] { framesOfPhoto += shown->property("isComplete").toBool() ? 1 : 0; });
        if (!waitFor([&] { return framesOfPhoto > 0; }))
            return state.SkipWithError("the photo is not shown");
        state.SetIterationTime(secondsSince(start));
        first += opened;
        longestGap = std::max(longestGap, heartbeat.longestGap());
    }
    state.counters["longest_block_ms"] = longestGap * 1e3;
    state.counters["opening_ms"] = first * 1e3 / static_cast<double>(state.iterations());
}
BENCHMARK(largePhoto)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kestrelid::test

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::fflush(nullptr);
    std::_Exit(0);  // frames may still be judged
}
