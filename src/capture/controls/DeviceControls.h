#pragma once

#include "capture/controls/ControlNode.h"
#include "capture/controls/NodeControl.h"

#include <kestrelid/CameraControls.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace kestrelid::capture {

// The controls of one device, as its drivers have them now. Thread: as ControlNode.
class DeviceControls {
public:
    // Looks for them.
    explicit DeviceControls(ControlNodes nodes);

    // What there is, with the values as they are now.
    [[nodiscard]] std::vector<CameraControlStatus> statuses();

    // value: 0 to 1; nothing: the camera chooses. What the device has not, or its driver refuses,
    // is left as it was.
    void set(CameraControl control, std::optional<double> value);

private:
    // Another control, which says whether the camera chooses by itself.
    struct Mode {
        NodeControl control;
        std::int32_t manual;
        std::int32_t automatic;
    };

    struct Value {
        CameraControl kind;
        NodeControl control;
        ControlPlaces places;
        std::int64_t place;  // the last known one
        std::optional<Mode> mode{};
        bool isAutomatic = false;  // by the mode, as last known
        // Only of a value that leaves the choice to the camera and shifts it: where it does not.
        std::optional<std::int64_t> neutral{};
    };

    struct Torch {
        NodeControl mode;
        std::optional<NodeControl> intensity;
        std::optional<ControlPlaces> places;  // of intensity
        std::int64_t level = 0;               // the last known one; 0: off

        [[nodiscard]] std::int64_t levels() const { return places ? places->highest() + 1 : 1; }
    };

    static bool isAutomatic(const Mode& mode, std::int32_t value);
    static std::optional<Mode> exposureMode(ControlNode& node);
    static std::optional<Mode> focusMode(ControlNode& node);
    static std::optional<Torch> findTorch(ControlNode& node);
    bool addValue(ControlNode& node, CameraControl kind, std::uint32_t id, std::optional<Mode> mode,
                  bool isShift = false);
    static void setValue(const Value& value, std::optional<double> share);
    static CameraControlStatus statusOf(Value& value);
    static CameraControlStatus statusOf(Torch& torch);
    void setTorch(double share) const;

    const ControlNodes nodes_;
    std::optional<Torch> torch_;
    std::vector<Value> values_;
};

}  // namespace kestrelid::capture
