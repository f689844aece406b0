#include "apps/cli/CameraList.h"

#include "apps/cli/JsonLine.h"
#include "apps/cli/TerminalText.h"

#include <cstdio>
#include <utility>

namespace kestrelid::cli {
namespace {

std::string formatLine(const CameraFormat& format) {
    char text[96];
    std::snprintf(text, sizeof text, "    %dx%d, %g frames/s, ", format.width, format.height,
                  format.framesPerSecond);
    return text + terminalText(format.encoding) + "\n";
}

}  // namespace

std::string camerasAsText(const std::vector<CameraDescription>& cameras) {
    if (cameras.empty())
        return whyNoCamera("", cameras) + "\n";
    std::string text;
    for (const CameraDescription& camera : cameras) {
        text += terminalText(camera.name) +
                (camera.obstacle.empty() ? "" : " (" + camera.obstacle + ")") + "\n";
        for (const CameraFormat& format : camera.formats)
            text += formatLine(format);
    }
    return text;
}

std::string camerasAsJson(const std::vector<CameraDescription>& cameras) {
    auto list = nlohmann::ordered_json::array();
    for (const CameraDescription& camera : cameras) {
        auto formats = nlohmann::ordered_json::array();
        for (const CameraFormat& format : camera.formats)
            formats.push_back({{"width", format.width},
                               {"height", format.height},
                               {"framesPerSecond", format.framesPerSecond},
                               {"encoding", format.encoding}});
        list.push_back({{"name", camera.name},
                        {"position", keyOf(camera.position)},
                        {"infrared", camera.isInfrared},
                        {"obstacle", camera.obstacle},
                        {"formats", std::move(formats)}});
    }
    return jsonLine({{"cameras", std::move(list)}});
}

std::string whyNoCamera(const std::string& wanted, const std::vector<CameraDescription>& cameras) {
    if (wanted.empty() && !cameras.empty() && !cameras.front().obstacle.empty())
        return cameras.front().name + " cannot be used: " + cameras.front().obstacle;
    if (wanted.empty())
        return "no camera found, neither a video device nor one that PipeWire offers; a picture or "
               "video can stand for one: kestrelid watch --camera FILE";
    if (cameras.empty())
        return wanted + ": neither a file nor a camera; this machine has no camera";
    std::string names;
    for (const CameraDescription& camera : cameras)
        names += (names.empty() ? "" : ", ") + camera.name;
    return wanted + ": neither a file nor a camera; the cameras are: " + names;
}

}  // namespace kestrelid::cli
