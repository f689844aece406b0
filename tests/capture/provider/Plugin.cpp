#include "tests/capture/provider/TestCameraProvider.h"
#include "tests/capture/provider/TestCameraSource.h"

#define PACKAGE "kestrelid"

namespace {

gboolean initialize(GstPlugin* plugin) {
    using namespace kestrelid::testcamera;
    return gst_element_register(plugin, kSourceName, GST_RANK_NONE, testCameraSourceType()) &&
           gst_device_provider_register(plugin, "kestreltestcameraprovider", GST_RANK_PRIMARY,
                                        testCameraProviderType());
}

}  // namespace

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, kestreltestcamera,
                  "Cameras without hardware", initialize, "1.0", "Apache 2.0", "kestrelid",
                  "kestrelid")
