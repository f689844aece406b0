#pragma once

#include "capture/gstreamer/GStreamerHandles.h"
#include "capture/gstreamer/VideoFormat.h"

#include <kestrelid/CaptureServices.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace kestrelid::capture {

// Elements of these names are looked for in what a source assembles.
inline constexpr const char* kSinkName = "sink";      // appsink of raw video or motion JPEG; always
inline constexpr const char* kFilterName = "filter";  // capsfilter that sets a device's format
inline constexpr const char* kTapName = "tap";        // whose buffers are the stills, if not filter

// A camera, or a file that stands for one. Thread: any.
class CameraSource : public std::enable_shared_from_this<CameraSource> {
public:
    using Assembled = tl::expected<ElementHandle, CaptureError>;

    CameraSource() = default;
    CameraSource(const CameraSource&) = delete;
    CameraSource& operator=(const CameraSource&) = delete;
    virtual ~CameraSource() = default;

    // At least one.
    [[nodiscard]] virtual const std::vector<VideoFormat>& formats() const = 0;

    // The same camera as it is announced now; null while it is not.
    [[nodiscard]] virtual std::shared_ptr<const CameraSource> announced() const {
        return shared_from_this();
    }

    // Path of the device node that has its controls; empty: none is known.
    [[nodiscard]] virtual std::string controlNode() const { return {}; }

    // Whether it stands for the same plugged-in device or file.
    [[nodiscard]] virtual bool isSameAs(const CameraSource& other) const { return this == &other; }

    // A file starts again at its end and is not unplugged; a device's filter changes its format.
    [[nodiscard]] virtual bool isFile() const = 0;

    // A new pipeline for one of formats(), stopped.
    [[nodiscard]] virtual Assembled assemble(const VideoFormat& format) const = 0;

    // The still, for a source that always shows the same. Otherwise empty.
    [[nodiscard]] virtual std::optional<Bitmap> fixedStill() const { return std::nullopt; }

    // Calls removed on any thread once the device has gone, for as long as the result lives.
    [[nodiscard]] virtual std::shared_ptr<const void>
    watchRemoval(std::function<void()> /*removed*/) const {
        return nullptr;
    }
};

using OpenedSource = tl::expected<std::shared_ptr<const CameraSource>, CaptureError>;

// A pipeline as gst_parse_launch() takes it.
[[nodiscard]] CameraSource::Assembled parsePipeline(const std::string& description);

}  // namespace kestrelid::capture
