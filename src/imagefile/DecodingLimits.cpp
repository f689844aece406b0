#include "imagefile/DecodingLimits.h"

#include "base/Failures.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kestrelid::imagefile {
namespace {

constexpr std::size_t kMaximumCauseLength =
    160;  // bytes; enough for any sentence of the codec libraries

// In the words of libjpeg, libpng and libtiff. What goes beyond libtiff's own limit is damage.
bool saysThatMemoryIsShort(std::string_view text) {
    constexpr std::array<std::string_view, 6> kWords = {"nsufficient memory", "ut of memory",
                                                        "llocation failure",  "No space for",
                                                        "to allocate memory", "malloc("};
    return text.find("beyond the") == std::string_view::npos &&
           std::ranges::any_of(kWords, [&](std::string_view words) {
               return text.find(words) != std::string_view::npos;
           });
}

}  // namespace

std::optional<ImageError> checkSize(std::int64_t width, std::int64_t height) {
    if (width <= 0 || height <= 0)
        return ImageError{"the picture has no pixels"};
    const auto tooLong = [](std::int64_t side, const char* direction) {
        return ImageError{std::to_string(side) + " pixels " + direction + ", at most " +
                          std::to_string(kMaximumSide) + " are read"};
    };
    if (width > kMaximumSide)
        return tooLong(width, "wide");
    if (height > kMaximumSide)
        return tooLong(height, "high");
    if (width * height > kMaximumPixels)
        return ImageError{std::to_string(width) + " x " + std::to_string(height) +
                          " pixels, at most " + std::to_string(kMaximumPixels / 1'000'000) +
                          " million are read"};
    return std::nullopt;
}

std::optional<ImageError> checkMemory(std::int64_t bytes) {
    if (bytes <= kMaximumDecoderMemory)
        return std::nullopt;
    return ImageError{"decoding takes " + std::to_string(bytes / 1'000'000) + " MB, at most " +
                      std::to_string(kMaximumDecoderMemory / 1'000'000) + " MB are used"};
}

ImageError outOfMemory() noexcept {
    return {.cause = base::kOutOfMemory, .isOutOfMemory = true};
}

ImageError decodingError(Fault fault, const char* format, const std::string& text) {
    if (saysThatMemoryIsShort(text))
        return outOfMemory();
    std::string line = text.substr(0, kMaximumCauseLength);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c < ' ' || c > '~'; }, ' ');
    const char* what = fault == Fault::truncated ? "truncated "
                       : fault == Fault::damaged ? "damaged "
                                                 : "unsupported ";
    return {std::string(what) + format + ": " + line};
}

void layOnWhite(unsigned char* row, int width, Alpha alpha) {
    const unsigned char* from = row;
    for (unsigned char* to = row; width > 0; --width, from += 4) {
        const int opacity = from[3];
        for (int channel = 0; channel < 3; ++channel) {
            const int value = from[channel];
            const int shown = alpha == Alpha::straight
                                  ? (value * opacity + 255 * (255 - opacity) + 127) / 255
                                  : std::min(value + 255 - opacity, 255);
            *to++ = static_cast<unsigned char>(shown);
        }
    }
}

}  // namespace kestrelid::imagefile
