#include "capture/controls/V4l2Node.h"

#include "base/OwnedDescriptor.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <linux/media.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <system_error>
#include <utility>

namespace kestrelid::capture {

namespace {

namespace fs = std::filesystem;

class V4l2Node final : public ControlNode {
public:
    explicit V4l2Node(base::OwnedDescriptor node) : node_(std::move(node)) {}

    bool call(unsigned long request, void* argument) override {
        int result = 0;
        do
            result = ::ioctl(node_.number(), request, argument);
        while (result != 0 && errno == EINTR);
        return result == 0;
    }

private:
    const base::OwnedDescriptor node_;
};

// A device may be opened several times; only one opening streams.
base::OwnedDescriptor openDevice(const fs::path& path) {
    base::OwnedDescriptor node(::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    struct stat status {};
    const bool isDevice =
        node.isOpen() && ::fstat(node.number(), &status) == 0 && S_ISCHR(status.st_mode);
    return isDevice ? std::move(node) : base::OwnedDescriptor();
}

fs::path inSys(std::uint32_t major, std::uint32_t minor) {
    return fs::path("/sys/dev/char") / (std::to_string(major) + ":" + std::to_string(minor));
}

// Where the kernel's device of a node lies; empty if it is not to be had.
fs::path inSys(const std::string& node) {
    struct stat status {};
    if (::stat(node.c_str(), &status) != 0)
        return {};
    return inSys(::major(status.st_rdev), ::minor(status.st_rdev));
}

// Paths of the flash lights that a media device lists.
std::vector<fs::path> flashNodes(const fs::path& media) {
    std::vector<fs::path> nodes;
    V4l2Node device(openDevice(media));
    media_entity_desc entity{};
    for (;;) {
        entity.id |= MEDIA_ENT_ID_FLAG_NEXT;
        if (!device.call(MEDIA_IOC_ENUM_ENTITIES, &entity))
            return nodes;
        std::error_code failure;
        const fs::path link = fs::read_symlink(inSys(entity.dev.major, entity.dev.minor), failure);
        if (entity.type == MEDIA_ENT_F_FLASH && !failure)
            nodes.push_back("/dev" / link.filename());
    }
}

}  // namespace

ControlNodes openV4l2Nodes(const std::string& path) {
    ControlNodes nodes;
    const auto add = [&](const fs::path& node) {
        if (base::OwnedDescriptor device = openDevice(node); device.isOpen())
            nodes.push_back(std::make_unique<V4l2Node>(std::move(device)));
    };
    add(path);
    if (nodes.empty())
        return nodes;
    std::error_code failure;
    fs::directory_iterator entry(inSys(path) / "device", failure);
    for (; !failure && entry != fs::directory_iterator(); entry.increment(failure)) {
        const fs::path name = entry->path().filename();
        if (!name.string().starts_with("media"))
            continue;
        for (const fs::path& flash : flashNodes("/dev" / name))
            add(flash);
    }
    return nodes;
}

}  // namespace kestrelid::capture
