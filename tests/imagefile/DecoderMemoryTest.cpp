#include "tests/imagefile/BlockPicture.h"
#include "tests/imagefile/EncodedPictures.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <tiffio.h>

#include <fstream>

namespace kestrelid::imagefile {
namespace {

constexpr std::int64_t kMegabyte = 1024 * 1024;

std::int64_t statusBytes(const std::string& key) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(key + ":"))
            return std::stoll(line.substr(key.size() + 1)) * 1024;
    }
    return -1;
}

// What decoding file adds to this process's memory
// at its peak; none where the system does not tell.
std::optional<std::int64_t> peakGrowth(const Bytes& file) {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak starts anew: man 5 proc
    const std::int64_t before = statusBytes("VmRSS");
    if (before < 0 || statusBytes("VmHWM") > before + kMegabyte)
        return std::nullopt;
    static_cast<void>(decodeImage(file));
    return statusBytes("VmHWM") - before;
}

struct MemoryCase {
    const char* name;
    Bytes file;
    double allowed;  // times the picture as RGB8
};

TEST(DecoderMemory, IsAboutTwiceThePicture) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer's own memory is in the way; a build without it brings this back";
#endif
    // Otherwise freed memory waits in the heap, and taking it again does not show.
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    constexpr int kSide = 600;
    const Bitmap large = blockPicture(kSide);  // 1800 x 1200
    constexpr std::int64_t kPicture = std::int64_t{kSide} * kColumns * kSide * kRows * 3;
    const MemoryCase cases[] = {
        {"JPEG", encodeTestJpeg(large), 1},
        {"JPEG, ink", encodeTestJpeg(large, {.color = Color::ink}), 1.4},
        {"JPEG, progressive: coefficients of the whole picture",
         encodeTestJpeg(large, {.progressive = true}), 2},
        {"PNG, half transparent, 16 bits, interlaced",
         encodeTestPng(large,
                       {.color = Color::rgba, .bitDepth = 16, .interlaced = true, .opacity = 128}),
         1.4},
        {"PNG, 100 MB of compressed texts", encodeTestPng(large, {.textBombs = 100}), 1},
        {"WebP", encodeTestWebP(large), 1},
        {"WebP, lossless: four bytes a pixel beside the picture",
         encodeTestWebP(large, {.lossless = true}), 2.4},
        {"TIFF, 16 bits", encodeTestTiff(large, {.bits = 16, .compression = COMPRESSION_LZW}), 1},
        {"TIFF, half transparent", encodeTestTiff(large, {.color = Color::rgba, .opacity = 128}),
         1.4},
        {"PNG header of 100 megapixels", pngHeader(20000, 5001), 0},
    };
    for (const MemoryCase& c : cases) {
        const auto growth = peakGrowth(c.file);
        if (!growth)
            GTEST_SKIP() << "/proc/self does not tell the peak here; a Linux kernel that lets "
                            "clear_refs be written does";
        EXPECT_LE(static_cast<double>(*growth), c.allowed * kPicture + 1.5 * kMegabyte) << c.name;
        RecordProperty(c.name, std::to_string(*growth / 1024) + " KB");
    }
}

}  // namespace
}  // namespace kestrelid::imagefile
