#include "capture/gstreamer/CameraNames.h"

#include <algorithm>
#include <set>

namespace kestrelid::capture {

namespace {

bool isSame(const AnnouncedCamera& a, const AnnouncedCamera& b) {
    return a.provider != b.provider && !a.node.empty() && a.node == b.node;
}

}  // namespace

std::vector<NamedCamera> nameCameras(const std::vector<AnnouncedCamera>& announced) {
    std::vector<NamedCamera> named;
    std::set<std::string> taken;
    for (std::size_t index = 0; index < announced.size(); ++index) {
        const AnnouncedCamera& camera = announced[index];
        const bool known = std::any_of(named.begin(), named.end(), [&](const NamedCamera& other) {
            return isSame(announced[other.index], camera);
        });
        if (known)
            continue;
        const std::string base = camera.name.empty() ? "Camera" : camera.name;
        std::string name = base;
        for (int number = 2; !taken.insert(name).second; ++number)
            name = base + " " + std::to_string(number);
        named.push_back({.index = index, .name = std::move(name)});
    }
    return named;
}

Mounting mountingFrom(const std::string& location, const std::string& rotation) {
    Mounting mounting{.orientation = Orientation::up, .isMirrored = location == "front"};
    // libcamera counts the turn that corrects a picture counter-clockwise.
    if (rotation == "90")
        mounting.orientation = Orientation::left;
    else if (rotation == "180")
        mounting.orientation = Orientation::down;
    else if (rotation == "270")
        mounting.orientation = Orientation::right;
    return mounting;
}

}  // namespace kestrelid::capture
