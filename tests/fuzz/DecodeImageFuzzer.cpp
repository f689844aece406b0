#include <kestrelid/ImageFile.h>

#include <cstdlib>

// Files of every format, damaged at will. Whatever comes
// of one must be a whole picture or an error in words.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kestrelid;
    constexpr std::size_t kMaximumInput = 4096;  // bytes; larger ones only take longer
    if (size == 0 || size > kMaximumInput)
        return 0;
    // The last byte chooses the reduction, so that a
    // picture file followed by one byte is a fitting seed.
    const int sufficientSide = data[size - 1];
    const std::span file(reinterpret_cast<const std::byte*>(data), size - 1);
    const int pages = countPages(file);
    if (pages < 1)
        std::abort();
    const auto result =
        decodeImage(file, {.sufficientSide = sufficientSide, .page = sufficientSide % pages});
    if (const auto* error = std::get_if<ImageError>(&result)) {
        if (error->cause.empty() || error->cause.find('\n') != std::string::npos)
            std::abort();
        return 0;
    }
    const Image upright = std::get<Image>(result).upright();
    if (!upright.bitmap())
        std::abort();
    const Bitmap& bitmap = *upright.bitmap();
    // Reads every row's ends, where a wrong stride or height shows under the address sanitizer.
    unsigned sum = 0;
    for (int y = 0; y < bitmap.height(); ++y) {
        const std::byte* row = bitmap.row(y);
        sum += std::to_integer<unsigned>(row[0]);
        sum += std::to_integer<unsigned>(row[bitmap.width() * bytesPerPixel(bitmap.format()) - 1]);
    }
    volatile unsigned used = sum;
    static_cast<void>(used);
    return 0;
}
