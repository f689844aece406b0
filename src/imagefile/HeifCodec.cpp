#include "imagefile/HeifCodec.h"

#include "imagefile/DecodingLimits.h"
#include "imagefile/HeifReferences.h"
#include "imagefile/HevcHeader.h"

#include <libheif/heif.h>

#include <algorithm>
#include <memory>
#include <string>
#include <thread>
#include <utility>

namespace kestrelid::imagefile {
namespace {

template <auto kRelease>
struct Releaser {
    template <typename T>
    void operator()(T* object) const {
        kRelease(object);
    }
};
// What a pixel takes at the peak: libde265's picture, libheif's
// copy and its steps to RGB. Measured with libheif 1.15.
constexpr int kHeldBytes = 9;
constexpr int kAlphaHeldBytes = 13;

using Context = std::unique_ptr<heif_context, Releaser<heif_context_free>>;
using Handle = std::unique_ptr<heif_image_handle, Releaser<heif_image_handle_release>>;
using Options = std::unique_ptr<heif_decoding_options, Releaser<heif_decoding_options_free>>;
using Picture = std::unique_ptr<heif_image, Releaser<heif_image_release>>;

ImageError errorFor(const heif_error& error) {
    if (error.subcode == heif_suberror_Security_limit_exceeded)
        return decodingError(Fault::unsupported, "HEIC", error.message);
    switch (error.code) {
    case heif_error_Memory_allocation_error:
        return outOfMemory();
    case heif_error_Unsupported_feature:
    case heif_error_Unsupported_filetype:
    case heif_error_Plugin_loading_error:
        return decodingError(Fault::unsupported, "HEIC", error.message);
    default:
        return decodingError(error.subcode == heif_suberror_End_of_data ? Fault::truncated
                                                                        : Fault::damaged,
                             "HEIC", error.message);
    }
}

// Rows in libheif's own memory, so that the picture is not held twice.
ImageResult imageOver(Picture picture, bool hasAlpha, Alpha alpha) {
    int stride = 0;
    std::uint8_t* rows = heif_image_get_plane(picture.get(), heif_channel_interleaved, &stride);
    const int width = heif_image_get_width(picture.get(), heif_channel_interleaved);
    const int height = heif_image_get_height(picture.get(), heif_channel_interleaved);
    if (!rows || stride <= 0)
        return decodingError(Fault::unsupported, "HEIC", "no RGB picture comes of it");
    if (auto error = checkSize(width, height))
        return *std::move(error);
    if (hasAlpha) {
        for (int y = 0; y < height; ++y)
            layOnWhite(rows + std::ptrdiff_t{y} * stride, width, alpha);
    }
    const auto* first = reinterpret_cast<const std::byte*>(rows);
    const std::shared_ptr<heif_image> owner = std::move(picture);
    auto bitmap = Bitmap::wrap(width, height, stride, PixelFormat::rgb8,
                               std::shared_ptr<const std::byte[]>(owner, first),
                               static_cast<std::size_t>(stride) * static_cast<std::size_t>(height));
    if (!bitmap)
        return decodingError(Fault::damaged, "HEIC", "no whole rows come of it");
    return Image(*std::move(bitmap));
}

}  // namespace

ImageResult decodeHeif(std::span<const std::byte> file) {
    const Context context(heif_context_alloc());
    const Options options(heif_decoding_options_alloc());
    if (!context || !options)
        return outOfMemory();
    heif_error error = heif_context_read_from_memory_without_copy(context.get(), file.data(),
                                                                  file.size(), nullptr);
    if (error.code != heif_error_Ok)
        return errorFor(error);
    heif_image_handle* primary = nullptr;
    error = heif_context_get_primary_image_handle(context.get(), &primary);
    const Handle handle(primary);
    if (error.code != heif_error_Ok)
        return errorFor(error);
    // The size before cropping and turning, because that much is decoded.
    const int width = heif_image_handle_get_ispe_width(primary);
    const int height = heif_image_handle_get_ispe_height(primary);
    if (auto tooLarge = checkSize(width, height))
        return *std::move(tooLarge);
    if (auto damaged = checkHevcHeaders(file))
        return *std::move(damaged);
    if (auto damaged = checkHeifReferences(file))
        return *std::move(damaged);
    const bool hasAlpha = heif_image_handle_has_alpha_channel(primary) != 0;
    if (auto tooLarge =
            checkMemory(std::int64_t{width} * height * (hasAlpha ? kAlphaHeldBytes : kHeldBytes)))
        return *std::move(tooLarge);
    // A picture put together from tiles has a size of its own, which libheif compares with this
    // limit alone.
    constexpr int kSideOfLargestSquare = 10'000;  // pixels; its square is kMaximumPixels
    heif_context_set_maximum_image_size_limit(context.get(),
                                              std::max({width, height, kSideOfLargestSquare}) + 1);

    // libde265 waits without end for a thread that it was refused. A shortage shows here first.
    std::thread([] {}).join();

    const Alpha alpha =
        heif_image_handle_is_premultiplied_alpha(primary) ? Alpha::premultiplied : Alpha::straight;
    options->convert_hdr_to_8bit = 1;
    options->strict_decoding = 1;  // otherwise damaged parts are made up from their surroundings
    heif_image* decoded = nullptr;
    error = heif_decode_image(primary, &decoded, heif_colorspace_RGB,
                              hasAlpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB,
                              options.get());
    Picture picture(decoded);
    if (error.code != heif_error_Ok)
        return errorFor(error);
    return imageOver(std::move(picture), hasAlpha, alpha);
}

}  // namespace kestrelid::imagefile
