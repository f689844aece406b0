#include "capture/gstreamer/CameraPreference.h"

#include <algorithm>
#include <cctype>

namespace kestrelid::capture {

namespace {

// Whether "IR" or "Infrared" is one of its words.
bool namesInfrared(const std::string& name) {
    std::string word;
    for (const char letter : name + ' ') {
        const auto code = static_cast<unsigned char>(letter);
        if (std::isalnum(code)) {
            word += static_cast<char>(std::tolower(code));
            continue;
        }
        if (word == "ir" || word == "infrared")
            return true;
        word.clear();
    }
    return false;
}

}  // namespace

CameraPosition positionFrom(const std::string& location) {
    for (const auto position :
         {CameraPosition::back, CameraPosition::front, CameraPosition::external}) {
        if (location == keyOf(position))
            return position;
    }
    return CameraPosition::unknown;
}

bool isInfrared(const std::string& name, const std::vector<VideoFormat>& formats) {
    const bool isGray = std::all_of(formats.begin(), formats.end(), [](const VideoFormat& format) {
        return format.layout.starts_with("GRAY");
    });
    return isGray || namesInfrared(name);
}

int preferenceOf(CameraPosition position, bool isInfrared) {
    if (isInfrared)
        return 3;
    switch (position) {
    case CameraPosition::back:
        return 0;
    case CameraPosition::external:
    case CameraPosition::unknown:
        return 1;
    case CameraPosition::front:
        break;
    }
    return 2;
}

}  // namespace kestrelid::capture
