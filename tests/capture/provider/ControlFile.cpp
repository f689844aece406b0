#include "tests/capture/provider/TestCamera.h"

#include <algorithm>
#include <cstdio>
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

std::pair<std::string, std::string> split(const std::string& line) {
    const auto space = line.find(' ');
    return {line.substr(0, space), space == std::string::npos ? "" : line.substr(space + 1)};
}

std::size_t momentOf(const std::string& name) {
    const auto moment = name == "open"    ? Moment::open
                        : name == "first" ? Moment::first
                                          : Moment::close;
    return static_cast<std::size_t>(moment);
}

Damage damageOf(const std::string& name) {
    return name == "truncated" ? Damage::truncated
           : name == "stride"  ? Damage::stride
                               : Damage::empty;
}

void apply(CameraEntry& camera, const std::string& word, const std::string& rest) {
    if (word == "caps")
        camera.caps.push_back(rest);
    else if (word == "called")
        camera.shownName = rest;
    else if (word == "picture")
        camera.picture = rest;
    else if (word == "property")
        camera.properties.push_back(split(rest));
    else if (word == "fail")
        (rest == "open" ? camera.failsToOpen : camera.failsToStart) = true;
    else if (word == "busy")
        camera.isBusy = true;
    else if (word == "exclusive")
        camera.isExclusive = true;
    else if (word == "freeze")
        camera.isFrozen = true;
    else if (word == "damage")
        camera.damage = damageOf(rest);
    else if (word == "hang" && rest.empty())
        camera.hangsAlways = true;
    else if (word == "hang")
        camera.hangs[momentOf(rest)] = true;
    else if (word == "delay")
        camera.delays[momentOf(split(rest).first)] =
            std::chrono::milliseconds(std::stoull(split(rest).second));
    else if (word == "settle")
        camera.settle = std::stoull(rest);
    else if (word == "blurred")
        camera.blurred = std::stoull(rest);
    else if (word == "stall-after")
        camera.stallAfter = std::stoull(rest);
    else if (word == "caps-change")
        camera.capsChange = std::stoull(rest);
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
        const auto [word, rest] = split(line);
        if (word == "device") {
            const auto known =
                std::find_if(cameras.begin(), cameras.end(),
                             [&name = rest](const auto& one) { return one.name == name; });
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

std::string readGeneration() {
    std::ifstream file(controlFile());
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("generation "))
            return line;
    }
    return {};
}

void tellFollowed(const std::optional<std::string>& generation) {
    const std::string told = controlFile() + ".followed";
    if (!generation) {
        std::remove(told.c_str());
        return;
    }
    // Whole or not at all, since the test reads it at any time.
    const std::string draft = told + ".new";
    std::ofstream(draft) << "follows " << *generation << '\n';
    std::rename(draft.c_str(), told.c_str());
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
