#include <kestrelid/ImageFile.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

// A photo of 12 megapixels from file to bitmap, whole and at the reduced size that a validation
// asks for.
namespace kestrelid {
namespace {

constexpr int kWidth = 4032;
constexpr int kHeight = 3024;

// A drawn sample repeated until it fills a phone's photo, as a JPEG file in memory.
std::vector<std::byte> photo() {
    const Bitmap tile = *std::get<Image>(readImage(std::filesystem::path(KESTRELID_SAMPLES_DIR) /
                                                   "bangladesh-on-wood.jpg"))
                             .bitmap();
    constexpr std::size_t kRow = std::size_t{3} * kWidth;
    const std::shared_ptr<std::byte[]> pixels(new std::byte[kRow * kHeight]);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; x += tile.width())
            std::copy_n(tile.row(y % tile.height()), 3 * std::min(tile.width(), kWidth - x),
                        pixels.get() + y * kRow + std::size_t{3} * static_cast<unsigned>(x));
    }
    const auto path = std::filesystem::temp_directory_path() / "kestrelid-decode-benchmark.jpg";
    if (writeImage(path, Image(*Bitmap::wrap(kWidth, kHeight, kRow, PixelFormat::rgb8, pixels,
                                             kRow * kHeight))))
        std::abort();
    std::vector<std::byte> file(std::filesystem::file_size(path));
    std::ifstream(path, std::ios::binary)
        .read(reinterpret_cast<char*>(file.data()), std::ssize(file));
    std::filesystem::remove(path);
    return file;
}

void decodeTwelveMegapixels(benchmark::State& state) {
    const std::vector<std::byte> file = photo();
    for (auto _ : state) {
        const ImageResult result =
            decodeImage(file, {.sufficientSide = static_cast<int>(state.range(0))});
        if (!std::holds_alternative<Image>(result))
            state.SkipWithError("the photo is not decoded");
    }
}
BENCHMARK(decodeTwelveMegapixels)
    ->ArgName("sufficientSide")
    ->Arg(0)
    ->Arg(1920)
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace kestrelid
