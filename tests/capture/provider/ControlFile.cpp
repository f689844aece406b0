#include "tests/capture/provider/TestCamera.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>

namespace kestrelid::testcamera {
namespace {

const char* const kUsualCaps[] = {
    "video/x-raw,format=YUY2,width=640,height=480,framerate=30/1",
    "video/x-raw,format=YUY2,width=1280,height=720,framerate=30/1",
    "video/x-raw,format=NV12,width=1280,height=720,framerate=30/1",
    "video/x-raw,format=I420,width=640,height=480,framerate=30/1",
    "video/x-raw,format=YUY2,width=1920,height=1080,framerate=5/1",
    "image/jpeg,width=1280,height=720,framerate=30/1",
    "image/jpeg,width=1920,height=1080,framerate=30/1",
};

std::string controlFile() {
    const char* path = std::getenv("KESTRELID_TEST_CAMERA");
    return path ? path : "";
}

void apply(CameraEntry& camera, const std::string& word, const std::string& rest) {
    if (word == "caps")
        camera.caps.push_back(rest);
    else if (word == "called")
        camera.shownName = rest;
    else if (word == "hang")
        camera.hangs = true;
    else if (word == "picture")
        camera.picture = rest;
    else if (word == "property")
        camera.properties.emplace_back(rest.substr(0, rest.find(' ')),
                                       rest.substr(std::min(rest.size(), rest.find(' ') + 1)));
    else if (word == "fail")
        camera.failure = rest;
    else if (word == "stall-after")
        camera.stallAfter = std::stoull(rest);
    else if (word == "unplugged") {
        camera.isUnplugged = true;
        camera.tellsUnplugging = rest == "error";
    }
}

}  // namespace

GstCaps* CameraEntry::allCaps() const {
    GstCaps* all = gst_caps_new_empty();
    for (const auto& line : caps)
        gst_caps_append(all, gst_caps_from_string(line.c_str()));
    return all;
}

std::vector<CameraEntry> readControlFile() {
    std::vector<CameraEntry> cameras;
    std::size_t described = 0;
    std::ifstream file(controlFile());
    for (std::string line; std::getline(file, line);) {
        const auto space = line.find(' ');
        const std::string word = line.substr(0, space);
        const std::string rest = space == std::string::npos ? "" : line.substr(space + 1);
        if (word == "device") {
            const auto known = std::find_if(cameras.begin(), cameras.end(),
                                            [&](const auto& one) { return one.name == rest; });
            described = static_cast<std::size_t>(known - cameras.begin());
            if (known == cameras.end())
                cameras.push_back({.name = rest, .shownName = rest});
        } else if (!cameras.empty())
            apply(cameras[described], word, rest);
    }
    for (auto& camera : cameras) {
        if (camera.caps.empty())
            camera.caps.assign(std::begin(kUsualCaps), std::end(kUsualCaps));
    }
    return cameras;
}

std::optional<CameraEntry> findCamera(const std::string& name) {
    for (auto& camera : readControlFile()) {
        if (camera.name == name)
            return camera;
    }
    return std::nullopt;
}

void writeJournal(const std::string& line) {
    // One write() a line: several cameras may add at once.
    std::ofstream(controlFile() + ".journal", std::ios::app) << line + '\n';
}

}  // namespace kestrelid::testcamera
