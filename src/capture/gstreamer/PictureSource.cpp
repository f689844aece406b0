#include "capture/gstreamer/PictureSource.h"

#include "capture/gstreamer/FormatChoice.h"
#include "capture/gstreamer/PixelConversion.h"
#include "capture/gstreamer/SwayingFrames.h"

#include <gst/app/gstappsrc.h>
#include <gst/video/video.h>

#include <utility>

namespace kestrelid::capture {

namespace {

constexpr const char* kSourceName = "source";

// Gives an appsrc one frame after another.
struct Projector {
    explicit Projector(Bitmap shown)
        : picture(std::move(shown)), pool(adopt(gst_buffer_pool_new())) {
        GstStructure* config = gst_buffer_pool_get_config(pool.get());
        gst_buffer_pool_config_set_params(config, nullptr, static_cast<guint>(frameBytes()), 0, 0);
        gst_buffer_pool_set_config(pool.get(), config);
        gst_buffer_pool_set_active(pool.get(), TRUE);
    }
    Projector(const Projector&) = delete;
    Projector& operator=(const Projector&) = delete;
    ~Projector() { gst_buffer_pool_set_active(pool.get(), FALSE); }

    [[nodiscard]] std::size_t frameBytes() const {
        return std::size_t{4} * static_cast<std::size_t>(picture.width()) *
               static_cast<std::size_t>(picture.height());
    }

    void push(GstAppSrc* source) {
        GstBuffer* buffer = nullptr;
        if (gst_buffer_pool_acquire_buffer(pool.get(), &buffer, nullptr) != GST_FLOW_OK)
            return;
        GstMapInfo map;
        if (gst_buffer_map(buffer, &map, GST_MAP_WRITE)) {
            drawSwayingFrame(picture, number,
                             {reinterpret_cast<std::uint32_t*>(map.data), map.size / 4});
            gst_buffer_unmap(buffer, &map);
        }
        GST_BUFFER_PTS(buffer) = gst_util_uint64_scale(number, GST_SECOND, kSwayFramesPerSecond);
        GST_BUFFER_DURATION(buffer) = GST_SECOND / kSwayFramesPerSecond;
        ++number;
        gst_app_src_push_buffer(source, buffer);
    }

    Bitmap picture;
    PoolHandle pool;
    std::uint64_t number = 0;
};

}  // namespace

std::shared_ptr<const PictureSource> PictureSource::make(const Bitmap& picture) {
    auto live = convertToBgra(
        picture, liveDimensions({.width = picture.width(), .height = picture.height()}));
    return live ? std::make_shared<const PictureSource>(picture, *std::move(live)) : nullptr;
}

PictureSource::PictureSource(Bitmap picture, Bitmap live)
    : picture_(std::move(picture)),
      live_(std::move(live)), formats_{
                                  {.width = picture_.width(),
                                   .height = picture_.height(),
                                   .rate = {.numerator = kSwayFramesPerSecond, .denominator = 1},
                                   .encoding = Encoding::raw,
                                   .layout = "RGB"}} {}

CameraSource::Assembled PictureSource::assemble(const VideoFormat& /*format*/) const {
    Assembled assembled = parsePipeline(std::string("appsrc name=") + kSourceName +
                                        " format=time ! appsink name=" + kSinkName +
                                        " sync=true max-buffers=1 drop=true");
    if (!assembled)
        return assembled;
    const ElementHandle source(gst_bin_get_by_name(GST_BIN(assembled->get()), kSourceName));
    const CapsHandle caps(gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, "BGRx",
                                              "width", G_TYPE_INT, live_.width(), "height",
                                              G_TYPE_INT, live_.height(), "framerate",
                                              GST_TYPE_FRACTION, kSwayFramesPerSecond, 1, nullptr));
    gst_app_src_set_caps(GST_APP_SRC(source.get()), caps.get());
    GstAppSrcCallbacks callbacks{};
    callbacks.need_data = [](GstAppSrc* wanting, guint, gpointer projector) {
        static_cast<Projector*>(projector)->push(wanting);
    };
    gst_app_src_set_callbacks(
        GST_APP_SRC(source.get()), &callbacks, new Projector(live_),
        [](gpointer projector) { delete static_cast<Projector*>(projector); });
    return assembled;
}

}  // namespace kestrelid::capture
