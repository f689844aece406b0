#include "capture/controls/DeviceControls.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kestrelid::capture {

namespace {

std::int64_t placeOf(double share, std::int64_t highest) {
    return std::llround(std::clamp(share, 0.0, 1.0) * static_cast<double>(highest));
}

double shareOf(std::int64_t place, std::int64_t highest) {
    return static_cast<double>(place) / static_cast<double>(highest);
}

// The first item of a menu that the driver has.
std::optional<std::int32_t> firstItem(const NodeControl& menu,
                                      std::initializer_list<std::int32_t> wanted) {
    const auto found = std::find_if(wanted.begin(), wanted.end(),
                                    [&](std::int32_t index) { return menu.item(index); });
    return found == wanted.end() ? std::nullopt : std::optional(*found);
}

}  // namespace

DeviceControls::DeviceControls(ControlNodes nodes) : nodes_(std::move(nodes)) {
    for (const auto& node : nodes_) {
        if (!torch_)
            torch_ = findTorch(*node);
    }
    if (nodes_.empty())
        return;
    ControlNode& node = *nodes_.front();
    addValue(node, CameraControl::zoom, V4L2_CID_ZOOM_ABSOLUTE, std::nullopt);
    addValue(node, CameraControl::focus, V4L2_CID_FOCUS_ABSOLUTE, focusMode(node));
    const std::optional<Mode> mode = exposureMode(node);
    if (!addValue(node, CameraControl::exposure, V4L2_CID_AUTO_EXPOSURE_BIAS, mode, true))
        addValue(node, CameraControl::exposure, V4L2_CID_EXPOSURE_ABSOLUTE, mode);
}

// Of the four modes of exposure, two choose how long it lasts, and two leave that to the program.
bool DeviceControls::isAutomatic(const Mode& mode, std::int32_t value) {
    if (mode.control.id() != V4L2_CID_EXPOSURE_AUTO)
        return value != mode.manual;
    return value == V4L2_EXPOSURE_AUTO || value == V4L2_EXPOSURE_APERTURE_PRIORITY;
}

// Webcams mostly have `manual` and `aperture priority` alone, with holes between.
std::optional<DeviceControls::Mode> DeviceControls::exposureMode(ControlNode& node) {
    const auto menu = NodeControl::find(node, V4L2_CID_EXPOSURE_AUTO);
    if (!menu || menu->isInactive() || menu->described().type != V4L2_CTRL_TYPE_MENU)
        return std::nullopt;
    const auto manual = firstItem(*menu, {V4L2_EXPOSURE_MANUAL, V4L2_EXPOSURE_SHUTTER_PRIORITY});
    const bool isApertureUsual = menu->described().default_value == V4L2_EXPOSURE_APERTURE_PRIORITY;
    const auto automatic =
        isApertureUsual ? firstItem(*menu, {V4L2_EXPOSURE_APERTURE_PRIORITY, V4L2_EXPOSURE_AUTO})
                        : firstItem(*menu, {V4L2_EXPOSURE_AUTO, V4L2_EXPOSURE_APERTURE_PRIORITY});
    if (!manual || !automatic)
        return std::nullopt;
    return Mode{.control = *menu, .manual = *manual, .automatic = *automatic};
}

std::optional<DeviceControls::Mode> DeviceControls::focusMode(ControlNode& node) {
    const auto control = NodeControl::find(node, V4L2_CID_FOCUS_AUTO);
    if (!control || control->isInactive())
        return std::nullopt;
    return Mode{.control = *control, .manual = 0, .automatic = 1};
}

bool DeviceControls::addValue(ControlNode& node, CameraControl kind, std::uint32_t id,
                              std::optional<Mode> mode, bool isShift) {
    const auto control = NodeControl::find(node, id);
    // Inactive while the camera chooses, it wakes up once the program does.
    if (!control || (control->isInactive() && !mode))
        return false;
    auto places = ControlPlaces::of(*control);
    if (!places)
        return false;
    const std::int64_t usual = places->nearest(control->described().default_value);
    values_.push_back({.kind = kind,
                       .control = *control,
                       .places = *std::move(places),
                       .place = usual,
                       .mode = std::move(mode),
                       .neutral = isShift ? std::optional(usual) : std::nullopt});
    return true;
}

std::optional<DeviceControls::Torch> DeviceControls::findTorch(ControlNode& node) {
    const auto mode = NodeControl::find(node, V4L2_CID_FLASH_LED_MODE);
    if (!mode || mode->isInactive() || !mode->item(V4L2_FLASH_LED_MODE_NONE) ||
        !mode->item(V4L2_FLASH_LED_MODE_TORCH))
        return std::nullopt;
    Torch torch{.mode = *mode,
                .intensity = NodeControl::find(node, V4L2_CID_FLASH_TORCH_INTENSITY),
                .places = std::nullopt};
    if (torch.intensity)
        torch.places = ControlPlaces::of(*torch.intensity);
    return torch;
}

std::vector<CameraControlStatus> DeviceControls::statuses() {
    std::vector<CameraControlStatus> all;
    if (torch_)
        all.push_back(statusOf(*torch_));
    for (Value& value : values_)
        all.push_back(statusOf(value));
    return all;
}

CameraControlStatus DeviceControls::statusOf(Torch& torch) {
    if (const auto mode = torch.mode.value()) {
        const bool isLit = *mode == V4L2_FLASH_LED_MODE_TORCH;
        const auto intensity = isLit && torch.places ? torch.intensity->value() : std::nullopt;
        torch.level = !isLit      ? 0
                      : intensity ? torch.places->nearest(*intensity) + 1
                                  : torch.levels();
    }
    return {.control = CameraControl::torch,
            .value = shareOf(torch.level, torch.levels()),
            .step = shareOf(1, torch.levels())};
}

CameraControlStatus DeviceControls::statusOf(Value& value) {
    if (const auto now = value.control.value())
        value.place = value.places.nearest(*now);
    if (const auto mode = value.mode ? value.mode->control.value() : std::nullopt)
        value.isAutomatic = isAutomatic(*value.mode, *mode);
    const bool isUnshifted = value.place == value.neutral && (value.isAutomatic || !value.mode);
    return {.control = value.kind,
            .value = shareOf(value.place, value.places.highest()),
            .step = shareOf(1, value.places.highest()),
            .hasAutomatic = value.neutral || value.mode,
            .isAutomatic = value.neutral ? isUnshifted : value.isAutomatic};
}

void DeviceControls::set(CameraControl control, std::optional<double> value) {
    if (control == CameraControl::torch) {
        if (torch_ && value)
            setTorch(*value);
        return;
    }
    for (const Value& known : values_) {
        if (known.kind == control)
            setValue(known, value);
    }
}

void DeviceControls::setValue(const Value& value, std::optional<double> share) {
    const std::optional<Mode>& mode = value.mode;
    if (!share && !value.neutral) {
        if (mode)
            static_cast<void>(mode->control.set(mode->automatic));
        return;
    }
    const bool isShift = value.neutral.has_value();
    // One that is not told is taken for the other one, which is then what to return to.
    const std::int32_t former =
        mode ? mode->control.value().value_or(isShift ? mode->manual : mode->automatic) : 0;
    const bool fits = !mode || isAutomatic(*mode, former) == isShift;
    if (!fits && !mode->control.set(isShift ? mode->automatic : mode->manual))
        return;
    const std::int64_t place =
        share ? placeOf(*share, value.places.highest()) : value.neutral.value_or(0);
    if (!value.control.set(value.places.at(place)) && !fits)
        static_cast<void>(mode->control.set(former));
}

// Every level is brighter than off, so that the lowest intensity is not taken for it.
void DeviceControls::setTorch(double share) const {
    const std::int64_t level = placeOf(share, torch_->levels());
    if (level > 0 && torch_->places)
        static_cast<void>(torch_->intensity->set(torch_->places->at(level - 1)));
    static_cast<void>(
        torch_->mode.set(level > 0 ? V4L2_FLASH_LED_MODE_TORCH : V4L2_FLASH_LED_MODE_NONE));
}

}  // namespace kestrelid::capture
