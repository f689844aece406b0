#include "tests/capture/provider/ControlFile.h"

#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace kestrelid::testcamera {
namespace {

const std::vector<std::string>& usualCaps() {
    static const std::vector<std::string> caps = {
        "video/x-raw,format=YUY2,width=640,height=480,framerate=30/1",
        "video/x-raw,format=YUY2,width=1280,height=720,framerate=30/1",
        "video/x-raw,format=NV12,width=1280,height=720,framerate=30/1",
        "video/x-raw,format=I420,width=640,height=480,framerate=30/1",
        "video/x-raw,format=YUY2,width=1920,height=1080,framerate=5/1",
        "image/jpeg,width=1280,height=720,framerate=30/1",
        "image/jpeg,width=1920,height=1080,framerate=30/1",
    };
    return caps;
}

std::optional<std::uint64_t> count(const std::string& text) {
    std::uint64_t value = 0;
    std::istringstream stream(text);
    if (stream >> value)
        return value;
    return std::nullopt;
}

void apply(CameraEntry& camera, const std::string& word, const std::string& rest) {
    if (word == "caps")
        camera.caps.push_back(rest);
    else if (word == "picture")
        camera.picture = rest;
    else if (word == "property")
        camera.properties.emplace_back(rest.substr(0, rest.find(' ')),
                                       rest.substr(std::min(rest.size(), rest.find(' ') + 1)));
    else if (word == "fail")
        camera.failure = rest == "open"   ? Failure::open
                         : rest == "busy" ? Failure::busy
                                          : Failure::start;
    else if (word == "stall-after")
        camera.stallAfter = count(rest);
    else if (word == "error-after")
        camera.errorAfter = count(rest);
    else if (word == "unplugged") {
        camera.isUnplugged = true;
        camera.tellsUnplugging = rest == "error";
    }
}

}  // namespace

std::vector<CameraEntry> readControlFile(const std::string& path) {
    std::vector<CameraEntry> cameras;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        const auto space = line.find(' ');
        const std::string word = line.substr(0, space);
        const std::string rest = space == std::string::npos ? "" : line.substr(space + 1);
        if (word == "device")
            cameras.emplace_back().name = rest;
        else if (!cameras.empty())
            apply(cameras.back(), word, rest);
    }
    for (auto& camera : cameras) {
        if (camera.caps.empty())
            camera.caps = usualCaps();
    }
    return cameras;
}

std::optional<CameraEntry> findCamera(const std::string& path, const std::string& name) {
    for (auto& camera : readControlFile(path)) {
        if (camera.name == name)
            return camera;
    }
    return std::nullopt;
}

void writeJournal(const std::string& path, const std::string& line) {
    const int file =
        ::open((path + ".journal").c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0)
        return;
    const std::string whole = line + '\n';
    [[maybe_unused]] const auto written = ::write(file, whole.data(), whole.size());
    ::close(file);
}

}  // namespace kestrelid::testcamera
