#pragma once

#include <kestrelid/CameraManager.h>

#include <optional>
#include <string>
#include <variant>

namespace kestrelid::cli {

struct AuthorizationKnown {
    bool authorized = false;
};

struct SessionKnown {
    bool ready = false;
    std::optional<std::string> camera;  // absent: there is none
};

struct FrameJudged {
    bool isPassport = false;
    double confidence = 0.0;  // 0 to 1
};

struct DocumentChanged {
    bool detected = false;
};

// The zone in view has grown or left. Personal data.
struct ZoneChanged {
    LiveZone live;
};

struct PhotoWritten {
    std::string file;
    int width = 0;  // pixels, as it is shown
    int height = 0;
};

struct WatchFailed {
    std::string cause;  // one line
};

// What a watch tells. Nothing in it comes from a document, but for the zone that a person asked
// for.
using WatchEvent = std::variant<AuthorizationKnown, SessionKnown, FrameJudged, DocumentChanged,
                                ZoneChanged, PhotoWritten, WatchFailed>;

}  // namespace kestrelid::cli
