#include "tests/capture/TestCamera.h"

#include <cstring>
#include <gst/gst.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>
#include <optional>

namespace kestrelid::capture {
namespace {

constexpr GstClockTime kLimit = 20 * GST_SECOND;

struct Unref {
    void operator()(gpointer object) const { gst_object_unref(object); }
};
using Element = std::unique_ptr<GstElement, Unref>;

// A monitor of video sources, as a program that looks for cameras has one.
class Monitor {
public:
    Monitor() {
        gst_init(nullptr, nullptr);
        monitor_.reset(gst_device_monitor_new());
        gst_device_monitor_add_filter(monitor_.get(), "Video/Source", nullptr);
        EXPECT_TRUE(gst_device_monitor_start(monitor_.get()));
    }
    ~Monitor() { gst_device_monitor_stop(monitor_.get()); }

    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> found;
        GList* devices = gst_device_monitor_get_devices(monitor_.get());
        for (GList* device = devices; device; device = device->next) {
            gchar* name = gst_device_get_display_name(GST_DEVICE(device->data));
            found.emplace_back(name);
            g_free(name);
        }
        g_list_free_full(devices, gst_object_unref);
        return found;
    }

    // The next message of that kind came in time, and then the list. GStreamer posts the message
    // of a removal before it shortens the list.
    [[nodiscard]] bool waitFor(GstMessageType type, const std::vector<std::string>& list) const {
        GstBus* bus = gst_device_monitor_get_bus(monitor_.get());
        GstMessage* message = gst_bus_timed_pop_filtered(bus, kLimit, type);
        gst_object_unref(bus);
        if (!message)
            return false;
        gst_message_unref(message);
        for (int attempt = 0; attempt < 1000 && names() != list; ++attempt)
            g_usleep(2000);
        return names() == list;
    }

private:
    std::unique_ptr<GstDeviceMonitor, Unref> monitor_;
};

// The camera before a capsfilter and a sink.
class Pipeline {
public:
    explicit Pipeline(const std::string& format) {
        gst_init(nullptr, nullptr);
        const std::string text = "kestreltestcamerasrc name=camera device=\"Test Camera\" "
                                 "! capsfilter name=filter caps=\"" +
                                 format +
                                 "\" ! appsink name=sink sync=false max-buffers=1 drop=true";
        pipeline_.reset(gst_parse_launch(text.c_str(), nullptr));
        sink_.reset(gst_bin_get_by_name(GST_BIN(pipeline_.get()), "sink"));
        const Element camera(gst_bin_get_by_name(GST_BIN(pipeline_.get()), "camera"));
        g_object_set(camera.get(), "control", g_getenv("KESTRELID_TEST_CAMERA"), nullptr);
    }
    ~Pipeline() { gst_element_set_state(pipeline_.get(), GST_STATE_NULL); }

    bool play() const {
        return gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING) !=
               GST_STATE_CHANGE_FAILURE;
    }

    void setFormat(const std::string& format) const {
        const Element filter(gst_bin_get_by_name(GST_BIN(pipeline_.get()), "filter"));
        GstCaps* caps = gst_caps_from_string(format.c_str());
        g_object_set(filter.get(), "caps", caps, nullptr);
        gst_caps_unref(caps);
    }

    // Null where none comes within limit.
    [[nodiscard]] std::unique_ptr<GstSample, decltype(&gst_sample_unref)>
    frame(GstClockTime limit = kLimit) const {
        GstSample* sample = nullptr;
        g_signal_emit_by_name(sink_.get(), "try-pull-sample", limit, &sample);
        return {sample, gst_sample_unref};
    }

    // The code of the first error, as GstResourceError has them.
    [[nodiscard]] std::optional<int> error() const {
        GstBus* bus = gst_element_get_bus(pipeline_.get());
        GstMessage* message = gst_bus_timed_pop_filtered(bus, kLimit, GST_MESSAGE_ERROR);
        gst_object_unref(bus);
        if (!message)
            return std::nullopt;
        GError* cause = nullptr;
        gst_message_parse_error(message, &cause, nullptr);
        const int code = cause->domain == GST_RESOURCE_ERROR ? cause->code : -1;
        g_error_free(cause);
        gst_message_unref(message);
        return code;
    }

private:
    Element pipeline_;
    Element sink_;
};

int widthOf(GstSample* sample) {
    int width = 0;
    gst_structure_get_int(gst_caps_get_structure(gst_sample_get_caps(sample), 0), "width", &width);
    return width;
}

TEST(TestCamera, IsListedAndFollowsItsPlug) {
    test::TestCamera camera("device Front\ncaps image/jpeg,width=640,height=480,framerate=30/1\n"
                            "device Back\n");
    const Monitor monitor;
    EXPECT_EQ(monitor.names(), (std::vector<std::string>{"Front", "Back"}));
    camera.unplug();
    EXPECT_TRUE(monitor.waitFor(GST_MESSAGE_DEVICE_REMOVED, {"Front"}));
    camera.plug();
    EXPECT_TRUE(monitor.waitFor(GST_MESSAGE_DEVICE_ADDED, {"Front", "Back"}));
}

struct Format {
    const char* name;
    const char* caps;
    int width;
};

void PrintTo(const Format& format, std::ostream* stream) {
    *stream << format.name;
}

class TestCameraFormat : public testing::TestWithParam<Format> {};

TEST_P(TestCameraFormat, GivesFramesThatDiffer) {
    const test::TestCamera camera;
    {
        const Pipeline pipeline(GetParam().caps);
        ASSERT_TRUE(pipeline.play());
        const auto first = pipeline.frame();
        const auto second = pipeline.frame();
        ASSERT_TRUE(first && second);
        EXPECT_EQ(widthOf(first.get()), GetParam().width);
        GstMapInfo before;
        ASSERT_TRUE(gst_buffer_map(gst_sample_get_buffer(first.get()), &before, GST_MAP_READ));
        EXPECT_NE(
            gst_buffer_memcmp(gst_sample_get_buffer(second.get()), 0, before.data, before.size), 0);
        gst_buffer_unmap(gst_sample_get_buffer(first.get()), &before);
        EXPECT_TRUE(camera.isOpen());
    }
    EXPECT_FALSE(camera.isOpen());
}

INSTANTIATE_TEST_SUITE_P(Formats, TestCameraFormat,
                         testing::Values(Format{"yuy2", "video/x-raw,format=YUY2,width=1280", 1280},
                                         Format{"nv12", "video/x-raw,format=NV12", 1280},
                                         Format{"i420", "video/x-raw,format=I420", 640},
                                         Format{"jpeg", "image/jpeg,width=1920", 1920}),
                         [](const auto& row) { return row.param.name; });

TEST(TestCamera, ChangesItsFormatWhileItRuns) {
    const test::TestCamera camera;
    const Pipeline pipeline("image/jpeg,width=1280");
    ASSERT_TRUE(pipeline.play());
    ASSERT_TRUE(pipeline.frame());
    pipeline.setFormat("image/jpeg,width=1920");
    int width = 0;
    for (int frame = 0; frame < 30 && width != 1920; ++frame) {
        if (const auto sample = pipeline.frame())
            width = widthOf(sample.get());
    }
    EXPECT_EQ(width, 1920);
    EXPECT_EQ(camera.count("format "), 2);
    EXPECT_EQ(camera.count("opened "), 1);
}

TEST(TestCamera, KeepsItsFrameRate) {
    const test::TestCamera camera;
    const Pipeline pipeline("video/x-raw,format=I420,width=640");
    ASSERT_TRUE(pipeline.play());
    GstClockTime last = GST_CLOCK_TIME_NONE;
    for (int frame = 0; frame < 15; ++frame) {
        const auto sample = pipeline.frame();
        ASSERT_TRUE(sample);
        const GstBuffer* buffer = gst_sample_get_buffer(sample.get());
        if (last != GST_CLOCK_TIME_NONE) {
            EXPECT_GE(GST_BUFFER_PTS(buffer) - last + 2, GST_SECOND / 30);
        }
        last = GST_BUFFER_PTS(buffer);
    }
}

struct Fault {
    const char* name;
    const char* line;
    bool opens;
    int code;
};

void PrintTo(const Fault& fault, std::ostream* stream) {
    *stream << fault.name;
}

class TestCameraFault : public testing::TestWithParam<Fault> {};

TEST_P(TestCameraFault, IsToldOnTheBus) {
    test::TestCamera camera;
    camera.set(GetParam().line);
    {
        const Pipeline pipeline("video/x-raw,width=640");
        EXPECT_EQ(pipeline.play(), GetParam().opens);
        EXPECT_EQ(pipeline.error(), GetParam().code);
    }
    EXPECT_FALSE(camera.isOpen());
}

INSTANTIATE_TEST_SUITE_P(
    Faults, TestCameraFault,
    testing::Values(Fault{"open", "fail open", false, GST_RESOURCE_ERROR_OPEN_READ},
                    Fault{"busy", "fail busy", true, GST_RESOURCE_ERROR_BUSY},
                    Fault{"start", "fail start", true, GST_RESOURCE_ERROR_FAILED},
                    Fault{"error", "error-after 3", true, GST_RESOURCE_ERROR_READ},
                    Fault{"unplugged", "unplugged", false, GST_RESOURCE_ERROR_NOT_FOUND}),
    [](const auto& row) { return row.param.name; });

TEST(TestCamera, StallsSilentlyAndGoesOn) {
    test::TestCamera camera;
    camera.set("stall-after 5");
    const Pipeline pipeline("video/x-raw,width=640");
    ASSERT_TRUE(pipeline.play());
    int frames = 0;
    while (pipeline.frame(300 * GST_MSECOND))
        ++frames;
    EXPECT_LE(frames, 5);
    EXPECT_GE(frames, 1);
    camera.unset("stall-after");
    EXPECT_TRUE(pipeline.frame());
    camera.unplug(true);
    EXPECT_EQ(pipeline.error(), GST_RESOURCE_ERROR_READ);
}

}  // namespace
}  // namespace kestrelid::capture
