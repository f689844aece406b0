#pragma once

#include "capture/controls/ControlNode.h"

#include <cstdint>
#include <linux/videodev2.h>
#include <optional>
#include <vector>

namespace kestrelid::capture {

// One control of a node that can be set.
class NodeControl {
public:
    // Nothing if the node has none, or says that it cannot be set.
    [[nodiscard]] static std::optional<NodeControl> find(ControlNode& node, std::uint32_t id);

    [[nodiscard]] std::uint32_t id() const { return described_.id; }
    // Has no effect while others stand as they do.
    [[nodiscard]] bool isInactive() const {
        return (described_.flags & V4L2_CTRL_FLAG_INACTIVE) != 0;
    }
    [[nodiscard]] const v4l2_queryctrl& described() const { return described_; }

    // Of a menu; nothing where it has a hole.
    [[nodiscard]] std::optional<v4l2_querymenu> item(std::int64_t index) const;

    // Nothing where the driver does not tell it.
    [[nodiscard]] std::optional<std::int32_t> value() const;
    // False where the driver refuses it.
    [[nodiscard]] bool set(std::int32_t value) const;

private:
    NodeControl(ControlNode& node, const v4l2_queryctrl& described)
        : node_(&node), described_(described) {}

    ControlNode* node_;
    v4l2_queryctrl described_;
};

// The values that a control takes, from the lowest place, 0, to the highest.
class ControlPlaces {
public:
    // Nothing where it takes one value, or where its range makes no sense.
    [[nodiscard]] static std::optional<ControlPlaces> of(const NodeControl& control);

    [[nodiscard]] std::int64_t highest() const { return highest_; }  // at least 1
    [[nodiscard]] std::int32_t at(std::int64_t place) const;
    [[nodiscard]] std::int64_t nearest(std::int32_t value) const;

private:
    std::int64_t highest_ = 0;
    std::int64_t minimum_ = 0;
    std::int64_t step_ = 1;
    std::vector<std::int32_t> items_;  // of a menu, in the order of what they stand for
};

}  // namespace kestrelid::capture
