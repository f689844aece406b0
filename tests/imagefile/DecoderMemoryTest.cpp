#include "tests/imagefile/FileBytes.h"

#include <kestrelid/ImageFile.h>

#include <gtest/gtest.h>
#include <malloc.h>

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

TEST(DecoderMemory, IsAboutTwiceThePicture) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer's own memory is in the way; a build without it brings this back";
#endif
    // Otherwise freed memory waits in the heap, and taking it again does not show.
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    constexpr double kPicture = 1800 * 1200 * 3;
    const std::pair<const char*, double> cases[] = {
        // times the picture as RGB8
        {"large.jpg", 1},
        {"large-ink.jpg", 1.4},
        {"large-progressive.jpg", 2},  // coefficients of the whole picture
        {"large-transparent16-interlaced.png", 1.4},
        {"large-texts.png", 1},  // 100 MB of compressed texts
        {"large.webp", 1},
        {"large-lossless.webp", 2.4},  // four bytes a pixel beside the picture
        {"large16.tif", 1},
        {"large-transparent.tif", 1.4},
        {"header-20000x5001.png", 0},
    };
    for (const auto& [name, allowed] : cases) {
        const auto growth = peakGrowth(pictureFile(name));
        if (!growth)
            GTEST_SKIP() << "/proc/self does not tell the peak here; a Linux kernel that lets "
                            "clear_refs be written does";
        EXPECT_LE(static_cast<double>(*growth), allowed * kPicture + 1.5 * kMegabyte) << name;
        RecordProperty(name, std::to_string(*growth / 1024) + " KB");
    }
}

}  // namespace
}  // namespace kestrelid::imagefile
