#include "capture/controls/NodeControl.h"

#include <algorithm>
#include <utility>

namespace kestrelid::capture {

namespace {

constexpr std::int64_t kLongestMenu = 256;  // of drivers that tell the truth, with much to spare

}  // namespace

std::optional<NodeControl> NodeControl::find(ControlNode& node, std::uint32_t id) {
    v4l2_queryctrl described{};
    described.id = id;
    const bool isFound =
        node.call(VIDIOC_QUERYCTRL, &described) && described.id == id &&
        (described.flags & (V4L2_CTRL_FLAG_DISABLED | V4L2_CTRL_FLAG_READ_ONLY)) == 0;
    return isFound ? std::optional(NodeControl(node, described)) : std::nullopt;
}

std::optional<v4l2_querymenu> NodeControl::item(std::int64_t index) const {
    if (index < described_.minimum || index > described_.maximum || index < 0)
        return std::nullopt;
    v4l2_querymenu item{};
    item.id = described_.id;
    item.index = static_cast<std::uint32_t>(index);
    return node_->call(VIDIOC_QUERYMENU, &item) ? std::optional(item) : std::nullopt;
}

std::optional<std::int32_t> NodeControl::value() const {
    v4l2_control control{.id = described_.id, .value = 0};
    return node_->call(VIDIOC_G_CTRL, &control) ? std::optional(control.value) : std::nullopt;
}

bool NodeControl::set(std::int32_t value) const {
    v4l2_control control{.id = described_.id, .value = value};
    return node_->call(VIDIOC_S_CTRL, &control);
}

std::optional<ControlPlaces> ControlPlaces::of(const NodeControl& control) {
    const v4l2_queryctrl& described = control.described();
    const std::int64_t range = std::int64_t{described.maximum} - described.minimum;
    ControlPlaces places;
    if (described.type == V4L2_CTRL_TYPE_INTEGER) {
        places.minimum_ = described.minimum;
        places.step_ = std::max(described.step, 1);
        places.highest_ = range / places.step_;
    } else if (described.type == V4L2_CTRL_TYPE_INTEGER_MENU && range <= kLongestMenu) {
        std::vector<std::pair<std::int64_t, std::int32_t>> items;
        for (std::int32_t index = described.minimum; index <= described.maximum; ++index) {
            if (const auto item = control.item(index))
                items.emplace_back(item->value, index);
        }
        std::sort(items.begin(), items.end());
        for (const auto& [value, index] : items)
            places.items_.push_back(index);
        places.highest_ = static_cast<std::int64_t>(items.size()) - 1;
    }
    return places.highest_ >= 1 ? std::optional(std::move(places)) : std::nullopt;
}

std::int32_t ControlPlaces::at(std::int64_t place) const {
    const std::int64_t inside = std::clamp<std::int64_t>(place, 0, highest_);
    return items_.empty() ? static_cast<std::int32_t>(minimum_ + inside * step_)
                          : items_[static_cast<std::size_t>(inside)];
}

std::int64_t ControlPlaces::nearest(std::int32_t value) const {
    if (items_.empty())
        return std::clamp<std::int64_t>((value - minimum_ + step_ / 2) / step_, 0, highest_);
    const auto found = std::find(items_.begin(), items_.end(), value);
    return found == items_.end() ? 0 : found - items_.begin();
}

}  // namespace kestrelid::capture
