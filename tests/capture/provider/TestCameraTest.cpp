#include "tests/capture/TestCamera.h"

#include <gst/gst.h>
#include <gtest/gtest.h>
#include <optional>

namespace kestrelid::capture {
namespace {

struct Fault {
    const char* line;
    std::optional<int> code;  // a GstResourceError on the bus
};

// The adapter ends a session in all these ways alike, so its tests cannot tell one from another.
TEST(TestCamera, FailsInTheWayItWasToldTo) {
    gst_init(nullptr, nullptr);
    for (const Fault& fault :
         {Fault{"fail open", GST_RESOURCE_ERROR_OPEN_READ},
          Fault{"fail busy", GST_RESOURCE_ERROR_BUSY},
          Fault{"fail start", GST_RESOURCE_ERROR_FAILED},
          Fault{"error-after 3", GST_RESOURCE_ERROR_READ},
          Fault{"unplugged", GST_RESOURCE_ERROR_NOT_FOUND}, Fault{"stall-after 3", std::nullopt}}) {
        SCOPED_TRACE(fault.line);
        test::TestCamera camera;
        camera.set(fault.line);
        GstElement* pipeline =
            gst_parse_launch("kestreltestcamerasrc device=\"Test Camera\" ! fakesink", nullptr);
        gst_element_set_state(pipeline, GST_STATE_PLAYING);
        GstBus* bus = gst_element_get_bus(pipeline);
        GstMessage* message = gst_bus_timed_pop_filtered(
            bus, (fault.code ? 20'000 : 500) * GST_MSECOND, GST_MESSAGE_ERROR);
        ASSERT_EQ(message != nullptr, fault.code.has_value());
        if (message) {
            GError* cause = nullptr;
            gst_message_parse_error(message, &cause, nullptr);
            EXPECT_TRUE(g_error_matches(cause, GST_RESOURCE_ERROR, *fault.code)) << cause->message;
            g_error_free(cause);
            gst_message_unref(message);
        }
        gst_object_unref(bus);
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_object_unref(pipeline);
        EXPECT_EQ(camera.count("closed 3"), fault.line[0] == 'e' || fault.line[0] == 's');
        EXPECT_FALSE(camera.isOpen());
    }
}

}  // namespace
}  // namespace kestrelid::capture
