#include "tests/support/FakeCapture.h"
#include "tests/support/ManualQueue.h"

#include <kestrelid/CameraManager.h>

#include <benchmark/benchmark.h>

// What a frame costs that is not judged, as most are, against the reading of the clock alone.
namespace kestrelid {
namespace {

void clockRead(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(std::chrono::system_clock::now());
}
BENCHMARK(clockRead)->Unit(benchmark::kNanosecond);

void droppedFrame(benchmark::State& state) {
    const auto manager =
        CameraManager::create({.authorization = std::make_shared<test::FakeAuthorization>(
                                   AuthorizationStatus::authorized),
                               .capture = std::make_shared<test::FakePlatform>(),
                               .detector = std::make_shared<test::FakeDetector>(),
                               .mainQueue = std::make_shared<test::ManualQueue>(),
                               .makeSerialQueue = [](const std::string&) {
                                   return std::make_shared<test::ManualQueue>();
                               }});
    const test::FakeSampleBuffer frame(nullptr);  // uses up the interval as any other
    for (auto _ : state)
        manager->didOutput(frame);
}
BENCHMARK(droppedFrame)->Unit(benchmark::kNanosecond);

}  // namespace
}  // namespace kestrelid
