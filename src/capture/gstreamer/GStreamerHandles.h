#pragma once

#include "capture/GLibHandles.h"

#include <gst/gst.h>

#include <string>

namespace kestrelid::capture {

// GLibReleaser for the types of GStreamer.
struct GStreamerReleaser {
    void operator()(GstBuffer* object) const { gst_buffer_unref(object); }
    void operator()(GstBufferPool* object) const { gst_object_unref(object); }
    void operator()(GstBus* object) const { gst_object_unref(object); }
    void operator()(GstCaps* object) const { gst_caps_unref(object); }
    void operator()(GstDevice* object) const { gst_object_unref(object); }
    void operator()(GstDeviceMonitor* object) const { gst_object_unref(object); }
    void operator()(GstDeviceProvider* object) const { gst_object_unref(object); }
    void operator()(GstDeviceProviderFactory* object) const { gst_object_unref(object); }
    void operator()(GstElement* object) const { gst_object_unref(object); }
    void operator()(GstMessage* object) const { gst_message_unref(object); }
    void operator()(GstPad* object) const { gst_object_unref(object); }
    void operator()(GstSample* object) const { gst_sample_unref(object); }
    void operator()(GstStructure* object) const { gst_structure_free(object); }
};

template <typename T>
using GStreamerHandle = GLibHandle<T, GStreamerReleaser>;

using BufferHandle = GStreamerHandle<GstBuffer>;
using BusHandle = GStreamerHandle<GstBus>;
using CapsHandle = GStreamerHandle<GstCaps>;
using DeviceHandle = GStreamerHandle<GstDevice>;
using ElementHandle = GStreamerHandle<GstElement>;
using FactoryHandle = GStreamerHandle<GstDeviceProviderFactory>;
using MessageHandle = GStreamerHandle<GstMessage>;
using MonitorHandle = GStreamerHandle<GstDeviceMonitor>;
using PadHandle = GStreamerHandle<GstPad>;
using PoolHandle = GStreamerHandle<GstBufferPool>;
using ProviderHandle = GStreamerHandle<GstDeviceProvider>;
using SampleHandle = GStreamerHandle<GstSample>;
using StructureHandle = GStreamerHandle<GstStructure>;

// An owner of a new object. GStreamer's constructors give a floating reference or a full one.
template <typename T>
GStreamerHandle<T> adopt(T* object) {
    if (object && g_object_is_floating(object))
        gst_object_ref_sink(object);
    return GStreamerHandle<T>(object);
}

// The error of a message of that kind.
inline ErrorHandle errorOf(GstMessage* message) {
    GError* error = nullptr;
    gst_message_parse_error(message, &error, nullptr);
    return ErrorHandle(error);
}

}  // namespace kestrelid::capture
