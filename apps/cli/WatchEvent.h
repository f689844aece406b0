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

struct PhotoWritten {
    std::string file;
    int width = 0;  // pixels, as it is shown
    int height = 0;
};

struct WatchFailed {
    std::string cause;  // one line
};

// What a watch tells. Nothing in it comes from a document.
using WatchEvent = std::variant<AuthorizationKnown, SessionKnown, FrameJudged, DocumentChanged,
                                PhotoWritten, WatchFailed>;

}  // namespace kestrelid::cli
