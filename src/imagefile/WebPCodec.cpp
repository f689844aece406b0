#include "imagefile/WebPCodec.h"

#include "base/PixelStore.h"
#include "imagefile/DecodingLimits.h"
#include "imagefile/ExifOrientation.h"

#include <webp/decode.h>
#include <webp/demux.h>

#include <cstring>
#include <memory>
#include <utility>

namespace kestrelid::imagefile {
namespace {

constexpr int kLossless = 2;  // WebPBitstreamFeatures::format

ImageError errorFor(VP8StatusCode status) {
    switch (status) {
    case VP8_STATUS_OUT_OF_MEMORY:
        return outOfMemory();
    case VP8_STATUS_NOT_ENOUGH_DATA:
    case VP8_STATUS_SUSPENDED:
        return decodingError(Fault::truncated, "WebP", "the file ends early");
    case VP8_STATUS_UNSUPPORTED_FEATURE:
        return decodingError(Fault::unsupported, "WebP",
                             "it asks for a feature that the decoder lacks");
    default:
        return decodingError(Fault::damaged, "WebP", "the picture's data make no sense");
    }
}

// The parts of a WebP file. Empty if the file is damaged.
class Container {
public:
    explicit Container(std::span<const std::byte> file) {
        const WebPData contents = {reinterpret_cast<const std::uint8_t*>(file.data()), file.size()};
        demuxer_.reset(WebPDemux(&contents));
    }

    [[nodiscard]] Orientation orientation() const {
        WebPChunkIterator chunk = {};
        Orientation orientation = Orientation::up;
        if (demuxer_ && WebPDemuxGetChunk(demuxer_.get(), "EXIF", 1, &chunk)) {
            orientation = exifOrientation(
                {reinterpret_cast<const std::byte*>(chunk.chunk.bytes), chunk.chunk.size});
        }
        WebPDemuxReleaseChunkIterator(&chunk);
        return orientation;
    }

    // Points into the file.
    [[nodiscard]] bool firstFrame(WebPIterator& frame) const {
        const bool found =
            demuxer_ && WebPDemuxGetFrame(demuxer_.get(), 1, &frame) && frame.complete;
        WebPDemuxReleaseIterator(&frame);
        return found;
    }

private:
    struct Delete {
        void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
    };
    std::unique_ptr<WebPDemuxer, Delete> demuxer_;
};

// Decodes one picture, not an animation, into pixels, its corner at left, top.
std::optional<ImageError> decodeInto(const base::PixelStore& pixels, int left, int top,
                                     std::span<const std::byte> picture, int channels) {
    WebPDecoderConfig config;
    if (!WebPInitDecoderConfig(&config))
        return ImageError{"the WebP decoder does not start"};
    const std::size_t offset =
        static_cast<std::size_t>(top) * pixels.stride() + static_cast<std::size_t>(left) * channels;
    config.output.colorspace = channels == 4 ? MODE_RGBA : MODE_RGB;
    config.output.is_external_memory = 1;
    config.output.u.RGBA.rgba = pixels.bytes() + offset;
    config.output.u.RGBA.stride = static_cast<int>(pixels.stride());
    config.output.u.RGBA.size = pixels.size() - offset;
    const VP8StatusCode status =
        WebPDecode(reinterpret_cast<const std::uint8_t*>(picture.data()), picture.size(), &config);
    WebPFreeDecBuffer(&config.output);
    if (status != VP8_STATUS_OK)
        return errorFor(status);
    return std::nullopt;
}

}  // namespace

ImageResult decodeWebP(std::span<const std::byte> file) {
    WebPBitstreamFeatures features;
    const VP8StatusCode status =
        WebPGetFeatures(reinterpret_cast<const std::uint8_t*>(file.data()), file.size(), &features);
    if (status != VP8_STATUS_OK)
        return errorFor(status);
    if (auto error = checkSize(features.width, features.height))
        return *std::move(error);
    const bool animated = features.has_animation != 0;
    const int channels = features.has_alpha || animated ? 4 : 3;
    // Lossless pictures are decoded to four bytes a pixel first,
    // whatever is asked for; frames may be of either kind.
    const int held = channels + (features.format == kLossless || animated ? 4 : 0);
    if (auto error = checkMemory(std::int64_t{features.width} * features.height * held))
        return *std::move(error);

    const Container container(file);
    WebPIterator frame = {};
    if (animated && !container.firstFrame(frame))
        return decodingError(Fault::truncated, "WebP",
                             "no whole picture before the end of the file");

    base::PixelStore pixels(features.width, features.height, channels);
    std::span<const std::byte> picture = file;
    if (animated) {
        std::memset(pixels.bytes(), 0, pixels.size());  // transparent around the frame
        picture = {reinterpret_cast<const std::byte*>(frame.fragment.bytes), frame.fragment.size};
    }
    if (auto error = decodeInto(pixels, frame.x_offset, frame.y_offset, picture, channels))
        return *std::move(error);
    if (channels == 4) {
        for (int y = 0; y < pixels.height(); ++y)
            layOnWhite(pixels.bytes(y), pixels.width(), Alpha::straight);
    }
    return std::move(pixels).toImage(PixelFormat::rgb8, container.orientation());
}

}  // namespace kestrelid::imagefile
