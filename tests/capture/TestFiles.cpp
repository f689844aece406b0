#include "tests/capture/TestFiles.h"

#include "capture/gstreamer/CameraSource.h"
#include "capture/gstreamer/GStreamerLibrary.h"

#include <gtest/gtest.h>

#include <variant>

namespace kestrelid::test {

Bitmap drawing(int width, int height) {
    const std::size_t size =
        std::size_t{3} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const std::shared_ptr<std::byte[]> pixels(new std::byte[size]);
    std::byte* at = pixels.get();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool red = x < width / 2 && y < height / 2;
            const auto light = static_cast<std::byte>((x / 3 + y / 2) % 2 ? 200 : 120);
            *at++ = red ? std::byte{220} : light;
            *at++ = red ? std::byte{20} : light;
            *at++ = red ? std::byte{20} : light;
        }
    }
    return *Bitmap::wrap(width, height, std::ptrdiff_t{3} * width, PixelFormat::rgb8, pixels, size);
}

bool isRed(const Bitmap& bitmap, double x, double y) {
    const auto* pixel = reinterpret_cast<const unsigned char*>(
        bitmap.row(static_cast<int>(y * bitmap.height())) +
        std::ptrdiff_t{bytesPerPixel(bitmap.format())} * static_cast<int>(x * bitmap.width()));
    const int red = bitmap.format() == PixelFormat::bgra8 ? pixel[2] : pixel[0];
    return red > 170 && pixel[1] < 90;
}

void writeFilm(const std::filesystem::path& path, int frames) {
    ASSERT_TRUE(capture::startGStreamer());
    const capture::CameraSource::Assembled made = capture::parsePipeline(
        "videotestsrc pattern=ball num-buffers=" + std::to_string(frames) +
        " ! video/x-raw,width=320,height=240,framerate=30/1 ! jpegenc ! avimux ! "
        "filesink name=sink");
    ASSERT_TRUE(made);
    GstElement* pipeline = made->get();
    const capture::ElementHandle sink(gst_bin_get_by_name(GST_BIN(pipeline), "sink"));
    g_object_set(sink.get(), "location", path.c_str(), nullptr);
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    const capture::BusHandle bus(gst_element_get_bus(pipeline));
    const capture::MessageHandle message(gst_bus_timed_pop_filtered(
        bus.get(), 10 * GST_SECOND,
        static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
    gst_element_set_state(pipeline, GST_STATE_NULL);
    ASSERT_TRUE(message && GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_EOS);
}

}  // namespace kestrelid::test
