#include "camera/PageLook.h"

#include <kestrelid/DefaultServices.h>
#include <kestrelid/ImageFile.h>

#include <benchmark/benchmark.h>
#include <memory>
#include <opencv2/imgproc.hpp>
#include <string>

// Outlines alone, on one thread, of a frame as a camera gives it and of a photo of 12 megapixels,
// and what guidance measures beside them: the frame of a page, seen at one look, is the yardstick.
namespace kestrelid {
namespace {

Bitmap frame(const std::string& name, int width, int height) {
    const ImageResult read = readImage(std::string(KESTRELID_SAMPLES_DIR) + "/" + name);
    const Bitmap small = std::get<Image>(read).bitmap().value();
    const cv::Mat view(small.height(), small.width(), CV_8UC3, const_cast<std::byte*>(small.row(0)),
                       static_cast<std::size_t>(small.stride()));
    const std::size_t stride = static_cast<std::size_t>(width) * 4;
    const std::size_t bytes = stride * static_cast<std::size_t>(height);
    const std::shared_ptr<std::byte[]> pixels(new std::byte[bytes]);
    cv::Mat large(height, width, CV_8UC4, pixels.get());
    cv::Mat scaled;
    cv::resize(view, scaled, large.size(), 0, 0, cv::INTER_CUBIC);
    cv::cvtColor(scaled, large, cv::COLOR_RGB2BGRA);
    return *Bitmap::wrap(width, height, static_cast<int>(stride), PixelFormat::bgra8, pixels,
                         bytes);
}

void outlines(benchmark::State& state, const char* name, int width, int height) {
    cv::setNumThreads(1);
    const PlatformServices services = defaultServices();
    const Bitmap bitmap = frame(name, width, height);
    const auto find = [&] { return services.rectangles->perform(bitmap, {}); };
    if (std::holds_alternative<RequestError>(find()))  // loads the network
        state.SkipWithError("no outlines could be asked for");
    for (auto _ : state)
        benchmark::DoNotOptimize(find());
}

// What guidance measures of a page beside its outline.
void measures(benchmark::State& state, const char* name, int width, int height) {
    const Bitmap bitmap = frame(name, width, height);
    for (auto _ : state)
        benchmark::DoNotOptimize(camera::measuredPage(bitmap, std::nullopt));
}

constexpr const char* kPage = "bangladesh-on-wood.jpg";
constexpr const char* kDesk = "desk.jpg";
BENCHMARK_CAPTURE(outlines, page720p, kPage, 1280, 720)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(outlines, desk720p, kDesk, 1280, 720)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(measures, page720p, kPage, 1280, 720)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(outlines, page12Megapixels, kPage, 4032, 3024)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kestrelid
