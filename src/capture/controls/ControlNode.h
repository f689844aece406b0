#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kestrelid::capture {

// A node of a device that has controls. Thread: one at a time, which waits as long as the driver
// does.
class ControlNode {
public:
    virtual ~ControlNode() = default;

    // As ioctl(); false where the driver refuses.
    virtual bool call(unsigned long request, void* argument) = 0;
};

// The camera's own node first.
using ControlNodes = std::vector<std::unique_ptr<ControlNode>>;

// Opens those of the camera whose node has this path. None where that cannot be opened.
using OpenControlNodes = std::function<ControlNodes(const std::string& path)>;

}  // namespace kestrelid::capture
