#include "capture/permission/DeviceNodes.h"

#include "base/OwnedDescriptor.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <fcntl.h>
#include <linux/videodev2.h>
#include <string>
#include <sys/ioctl.h>
#include <system_error>

namespace kestrelid::capture {
namespace {

enum class Access { opens, refuses, isNoCamera };

// A node that is no V4L2 device counts as a camera.
bool canCapture(int node) {
    v4l2_capability capability{};
    if (::ioctl(node, VIDIOC_QUERYCAP, &capability) != 0)
        return true;
    const auto own = capability.capabilities & V4L2_CAP_DEVICE_CAPS ? capability.device_caps
                                                                    : capability.capabilities;
    return own & (V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_VIDEO_CAPTURE_MPLANE);
}

Access tryNode(const std::filesystem::path& path) {
    const base::OwnedDescriptor node(::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    if (node.isOpen())
        return canCapture(node.number()) ? Access::opens : Access::isNoCamera;
    switch (errno) {
    case EACCES:
    case EPERM:
        return Access::refuses;
    case EBUSY:
        return Access::opens;
    default:
        return Access::isNoCamera;  // unplugged just now, or broken
    }
}

bool isVideoNode(const std::string& name) {
    const std::string prefix = "video";
    return name.size() > prefix.size() && name.starts_with(prefix) &&
           std::all_of(name.begin() + prefix.size(), name.end(),
                       [](unsigned char letter) { return std::isdigit(letter); });
}

}  // namespace

AuthorizationStatus NodeAccess::status() const {
    return opened.empty() && !refused.empty() ? AuthorizationStatus::denied
                                              : AuthorizationStatus::authorized;
}

NodeAccess tryDeviceNodes(const std::filesystem::path& folder) {
    NodeAccess access;
    std::error_code failure;
    std::filesystem::directory_iterator entry(folder, failure);
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
        const auto& path = entry->path();
        if (!isVideoNode(path.filename()))
            continue;
        switch (tryNode(path)) {
        case Access::opens:
            access.opened.push_back(path);
            break;
        case Access::refuses:
            access.refused.push_back(path);
            break;
        case Access::isNoCamera:
            break;
        }
    }
    std::sort(access.opened.begin(), access.opened.end());
    std::sort(access.refused.begin(), access.refused.end());
    return access;
}

}  // namespace kestrelid::capture
