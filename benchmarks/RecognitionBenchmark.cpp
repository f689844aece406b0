#include <kestrelid/DefaultServices.h>
#include <kestrelid/ImageFile.h>

#include <benchmark/benchmark.h>
#include <chrono>
#include <string>

// One passport frame of the samples from decoded bitmap to verdict.
namespace kestrelid {
namespace {

const Image& frame() {
    static const Image image =
        std::get<Image>(readImage(std::string(KESTRELID_SAMPLES_DIR) + "/bangladesh-on-wood.jpg"));
    return image;
}

void validate(benchmark::State& state, ValidationEffort effort) {
    const auto detector = PassportDetector::create(defaultServices(), effort);
    const auto judge = [&] {
        const Judgement judgement = detector->judge(frame());
        const auto* result = std::get_if<PassportValidationResult>(&judgement);
        return result && result->isPassport();
    };
    if (!judge())  // loads the models
        state.SkipWithError("the frame is not judged a passport");
    for (auto _ : state)
        benchmark::DoNotOptimize(judge());
}
BENCHMARK_CAPTURE(validate, complete, ValidationEffort::complete)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(validate, verdictOnly, ValidationEffort::verdictOnly)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// What the owner waits for when it lets go of a detector with pictures in flight.
void release(benchmark::State& state) {
    const PlatformServices all = defaultServices();
    for (auto _ : state) {
        auto detector = PassportDetector::create(all);
        for (int picture = 0; picture < 4; ++picture)
            detector->validate(frame(), {});
        const auto start = std::chrono::steady_clock::now();
        detector.reset();
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(taken.count());
    }
}
BENCHMARK(release)->Unit(benchmark::kMicrosecond)->UseManualTime()->Iterations(20);

// What examine() takes beyond the verdict, the outline being known: of a page with a zone, and of
// one without.
void zones(benchmark::State& state, const char* sample, bool hasZone) {
    const auto picture =
        std::get<Image>(readImage(std::string(KESTRELID_SAMPLES_DIR) + "/" + sample));
    const Bitmap& bitmap = *picture.bitmap();
    const PlatformServices all = defaultServices();
    const auto found = all.rectangles->perform(bitmap, {});
    const ZoneRequest request{std::get<std::vector<RectangleObservation>>(found)};
    const auto read = [&] {
        const ZoneResult result = all.zones->perform(bitmap, request);
        const auto* readings = std::get_if<std::vector<ZoneReading>>(&result);
        return readings && !readings->empty();
    };
    if (read() != hasZone)  // loads the network
        state.SkipWithError("the zone is not found, or one where there is none");
    for (auto _ : state)
        benchmark::DoNotOptimize(read());
}
BENCHMARK_CAPTURE(zones, passport, "bangladesh-on-wood.jpg", true)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(zones, receipt, "receipt.jpg", false)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
}  // namespace kestrelid
