#include "tests/capture/CaptureRig.h"
#include "tests/capture/TestCamera.h"

#include "capture/controls/DeviceControls.h"

#include <cstdio>
#include <future>
#include <gtest/gtest.h>
#include <linux/videodev2.h>
#include <map>
#include <utility>

namespace kestrelid::capture {
namespace {

using namespace test;

constexpr std::uint32_t kInactive = V4L2_CTRL_FLAG_INACTIVE;
enum class Fault { none, refusesValues, ignoresValues, tellsNothing };

struct FakeControl {
    std::uint32_t id;
    std::uint32_t type;
    std::int32_t minimum;
    std::int32_t maximum;
    std::int32_t step = 1;
    std::int32_t value = 0;  // the usual one too
    std::uint32_t flags = 0;
    Fault fault = Fault::none;
    std::vector<std::pair<std::int32_t, std::int64_t>> items{};  // of a menu that has holes
};

FakeControl number(std::uint32_t id, std::int32_t minimum, std::int32_t maximum, std::int32_t value,
                   std::uint32_t flags = 0) {
    return {.id = id,
            .type = V4L2_CTRL_TYPE_INTEGER,
            .minimum = minimum,
            .maximum = maximum,
            .value = value,
            .flags = flags};
}
FakeControl autofocus(std::int32_t value) {
    return {.id = V4L2_CID_FOCUS_AUTO,
            .type = V4L2_CTRL_TYPE_BOOLEAN,
            .minimum = 0,
            .maximum = 1,
            .value = value};
}
FakeControl menu(std::uint32_t id, std::int32_t value, std::vector<std::int32_t> indices) {
    FakeControl control{
        .id = id, .type = V4L2_CTRL_TYPE_MENU, .minimum = 0, .maximum = 3, .value = value};
    for (const std::int32_t index : indices)
        control.items.emplace_back(index, 0);
    return control;
}
FakeControl with(FakeControl control, Fault fault) {
    control.fault = fault;
    return control;
}
FakeControl withStep(FakeControl control, std::int32_t step) {
    control.step = step;
    return control;
}

// A device that a test may change and look at while a session uses it.
struct FakeDriver {
    std::mutex mutex;
    std::map<std::uint32_t, FakeControl> controls;
    std::string told;  // "id=value;" for each value that was taken; ids as V4L2 counts in a class
    std::atomic<int> openNodes = 0;
    std::shared_future<void> hangsUntil;  // while a value is set

    explicit FakeDriver(const std::vector<FakeControl>& all) {
        for (const FakeControl& control : all)
            controls.emplace(control.id, control);
    }

    [[nodiscard]] std::string log() {
        const std::lock_guard lock(mutex);
        return std::exchange(told, {});
    }
    [[nodiscard]] std::int32_t value(std::uint32_t id) {
        const std::lock_guard lock(mutex);
        return controls.at(id).value;
    }
    void change(std::uint32_t id, std::int32_t value) {
        const std::lock_guard lock(mutex);
        controls.at(id).value = value;
    }
};

class FakeNode final : public ControlNode {
public:
    explicit FakeNode(std::shared_ptr<FakeDriver> driver) : driver_(std::move(driver)) {
        ++driver_->openNodes;
    }
    ~FakeNode() override { --driver_->openNodes; }

    bool call(unsigned long request, void* argument) override {
        if (request == VIDIOC_S_CTRL && driver_->hangsUntil.valid())
            driver_->hangsUntil.wait();
        const std::lock_guard lock(driver_->mutex);
        const auto found = driver_->controls.find(*static_cast<std::uint32_t*>(argument));
        if (found == driver_->controls.end())
            return false;
        FakeControl& control = found->second;
        if (request == VIDIOC_QUERYCTRL) {
            auto& described = *static_cast<v4l2_queryctrl*>(argument);
            described.type = control.type;
            described.minimum = control.minimum;
            described.maximum = control.maximum;
            described.step = control.step;
            described.default_value = control.value;
            described.flags = control.flags;
            return true;
        }
        if (request == VIDIOC_QUERYMENU) {
            auto& asked = *static_cast<v4l2_querymenu*>(argument);
            for (const auto& [index, value] : control.items) {
                if (asked.index == static_cast<std::uint32_t>(index)) {
                    asked.value = value;
                    return true;
                }
            }
            return false;
        }
        auto& asked = *static_cast<v4l2_control*>(argument);
        if (request == VIDIOC_G_CTRL) {
            asked.value = control.value;
            return control.fault != Fault::tellsNothing;
        }
        if (request != VIDIOC_S_CTRL || control.fault == Fault::refusesValues)
            return false;
        if (control.fault != Fault::ignoresValues)
            control.value = asked.value;
        driver_->told +=
            std::to_string(control.id & 0xff) + "=" + std::to_string(asked.value) + ";";
        return true;
    }

private:
    const std::shared_ptr<FakeDriver> driver_;
};

// "zoom 0.25/400": a quarter of 400 steps; "~": may be automatic, "*": it is.
std::string text(const std::vector<CameraControlStatus>& all) {
    std::string said;
    for (const CameraControlStatus& status : all) {
        std::array<char, 64> line{};
        std::snprintf(line.data(), line.size(), " %.3g/%.0f%s%s;", status.value, 1.0 / status.step,
                      status.hasAutomatic ? "~" : "", status.isAutomatic ? "*" : "");
        said += std::string(keyOf(status.control)) + line.data();
    }
    return said;
}

// In a class of V4L2: 1 mode of exposure, 2 its time, 10 focus, 12 autofocus, 13 zoom, 19 bias; of
// lights: 1 mode, 8 brightness.
TEST(Controls, AreWhatTheDriverHasAsSharesOfItsRange) {
    const FakeControl zoom = number(V4L2_CID_ZOOM_ABSOLUTE, 100, 500, 200);
    const FakeControl focus = number(V4L2_CID_FOCUS_ABSOLUTE, 0, 200, 50, kInactive);
    const FakeControl time = number(V4L2_CID_EXPOSURE_ABSOLUTE, -100, 100, 0, kInactive);
    const FakeControl webcam = menu(V4L2_CID_EXPOSURE_AUTO, 3, {1, 3});
    const FakeControl light = menu(V4L2_CID_FLASH_LED_MODE, 0, {0, 2});
    const FakeControl current = withStep(number(V4L2_CID_FLASH_TORCH_INTENSITY, 50, 200, 50), 50);
    // In thousandths of a stop, upside down and with a hole.
    const FakeControl bias{.id = V4L2_CID_AUTO_EXPOSURE_BIAS,
                           .type = V4L2_CTRL_TYPE_INTEGER_MENU,
                           .minimum = 0,
                           .maximum = 5,
                           .value = 2,
                           .items = {{0, 2000}, {1, 1000}, {2, 0}, {4, -1000}, {5, -2000}}};
    constexpr auto kZoom = CameraControl::zoom;
    constexpr auto kFocus = CameraControl::focus;
    constexpr auto kExposure = CameraControl::exposure;
    constexpr auto kTorch = CameraControl::torch;
    const std::optional<double> automatic;
    struct Case {
        const char* name;
        std::vector<FakeControl> controls;
        std::string found;
        CameraControl set;
        std::optional<double> value;
        std::string told;
        std::string then;
    };
    const Case cases[] = {
        {"zoom", {zoom}, "zoom 0.25/400;", kZoom, 1.0, "13=500;", "zoom 1/400;"},
        {"what it has not", {zoom}, "zoom 0.25/400;", kTorch, 1.0, "", "zoom 0.25/400;"},
        {"no automatic", {zoom}, "zoom 0.25/400;", kZoom, automatic, "", "zoom 0.25/400;"},
        {"step 0", {withStep(zoom, 0)}, "zoom 0.25/400;", kZoom, 0.5, "13=300;", "zoom 0.5/400;"},
        {"coarse steps", {withStep(zoom, 150)}, "zoom 0.5/2;", kZoom, 1.0, "13=400;", "zoom 1/2;"},
        {"the whole of 32 bits",
         {number(zoom.id, INT32_MIN, INT32_MAX, -1)},
         "zoom 0.5/4294967295;",
         kZoom,
         1.0,
         "13=2147483647;",
         "zoom 1/4294967295;"},
        {"one value", {number(zoom.id, 7, 7, 7)}, "", kZoom, 1.0, "", ""},
        {"upside down", {number(zoom.id, 500, 100, 200)}, "", kZoom, 1.0, "", ""},
        {"cannot be set",
         {number(zoom.id, 0, 9, 0, V4L2_CTRL_FLAG_READ_ONLY)},
         "",
         kZoom,
         1.0,
         "",
         ""},
        {"disabled", {number(zoom.id, 0, 9, 0, V4L2_CTRL_FLAG_DISABLED)}, "", kZoom, 1.0, "", ""},
        {"refused",
         {with(zoom, Fault::refusesValues)},
         "zoom 0.25/400;",
         kZoom,
         1.0,
         "",
         "zoom 0.25/400;"},
        {"ignored",
         {with(zoom, Fault::ignoresValues)},
         "zoom 0.25/400;",
         kZoom,
         1.0,
         "13=500;",
         "zoom 0.25/400;"},
        {"not told",
         {with(zoom, Fault::tellsNothing)},
         "zoom 0.25/400;",
         kZoom,
         1.0,
         "13=500;",
         "zoom 0.25/400;"},
        {"inactive for another reason", {focus}, "", kFocus, 1.0, "", ""},
        {"by hand",
         {focus, autofocus(1)},
         "focus 0.25/200~*;",
         kFocus,
         0.5,
         "12=0;10=100;",
         "focus 0.5/200~;"},
        {"by itself again",
         {focus, autofocus(0)},
         "focus 0.25/200~;",
         kFocus,
         automatic,
         "12=1;",
         "focus 0.25/200~*;"},
        {"refused by hand",
         {with(focus, Fault::refusesValues), autofocus(1)},
         "focus 0.25/200~*;",
         kFocus,
         0.5,
         "12=0;12=1;",
         "focus 0.25/200~*;"},
        {"stays automatic",
         {focus, with(autofocus(1), Fault::refusesValues)},
         "focus 0.25/200~*;",
         kFocus,
         0.5,
         "",
         "focus 0.25/200~*;"},
        {"a webcam",
         {time, webcam},
         "exposure 0.5/200~*;",
         kExposure,
         0.75,
         "1=1;2=50;",
         "exposure 0.75/200~;"},
        {"a webcam, automatic",
         {time, menu(webcam.id, 1, {1, 3})},
         "exposure 0.5/200~;",
         kExposure,
         automatic,
         "1=3;",
         "exposure 0.5/200~*;"},
        {"time only by hand",
         {number(time.id, 0, 10, 5), menu(webcam.id, 1, {1})},
         "exposure 0.5/10;",
         kExposure,
         1.0,
         "2=10;",
         "exposure 1/10;"},
        {"never by hand", {time, menu(webcam.id, 3, {0, 3})}, "", kExposure, 1.0, "", ""},
        {"bias before time",
         {bias, time, webcam},
         "exposure 0.5/4~*;",
         kExposure,
         1.0,
         "19=0;",
         "exposure 1/4~;"},
        {"bias needs automatic",
         {bias, menu(webcam.id, 1, {1, 3})},
         "exposure 0.5/4~;",
         kExposure,
         automatic,
         "1=3;19=2;",
         "exposure 0.5/4~*;"},
        {"torch", {light}, "torch 0/1;", kTorch, 1.0, "1=2;", "torch 1/1;"},
        {"dim torch", {light, current}, "torch 0/4;", kTorch, 0.25, "8=50;1=2;", "torch 0.25/4;"},
        {"torch off",
         {menu(light.id, 2, {0, 2}), current},
         "torch 0.25/4;",
         kTorch,
         0.0,
         "1=0;",
         "torch 0/4;"},
        {"a flash alone", {menu(light.id, 0, {0, 1})}, "", kTorch, 1.0, "", ""},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        const auto driver = std::make_shared<FakeDriver>(row.controls);
        ControlNodes nodes;
        nodes.push_back(std::make_unique<FakeNode>(driver));
        DeviceControls controls(std::move(nodes));
        EXPECT_EQ(text(controls.statuses()), row.found);
        controls.set(row.set, row.value);
        EXPECT_EQ(driver->log(), row.told);
        EXPECT_EQ(text(controls.statuses()), row.then);
        driver->controls.clear();  // unplugged
        controls.set(row.set, row.value);
        EXPECT_EQ(text(controls.statuses()), row.then);
    }
}

const char* const kCameraWithNode = "device Test Camera\nproperty api.v4l2.path /dev/fake0\n";

struct ControlsRig {
    explicit ControlsRig(const Patience& patience = Patience().times(5))
        : rig({}, patience, [driver = driver, light = light](const std::string& path) {
              ControlNodes nodes;
              for (const auto& of : {driver, light}) {
                  if (path == "/dev/fake0")
                      nodes.push_back(std::make_unique<FakeNode>(of));
              }
              return nodes;
          }) {
        rig.session->observeStatus([told = told] { ++*told; });
    }
    [[nodiscard]] std::string controls() const { return text(rig.session->controls()); }
    [[nodiscard]] bool becomes(const std::string& expected) const {
        return eventually([&] { return controls() == expected; });
    }

    const std::shared_ptr<std::atomic<int>> told = std::make_shared<std::atomic<int>>(0);
    const std::shared_ptr<FakeDriver> driver = std::make_shared<FakeDriver>(
        std::vector{number(V4L2_CID_FOCUS_ABSOLUTE, 0, 200, 50), autofocus(1)});
    const std::shared_ptr<FakeDriver> light = std::make_shared<FakeDriver>(
        std::vector{menu(V4L2_CID_FLASH_LED_MODE, V4L2_FLASH_LED_MODE_NONE, {0, 2})});
    CaptureRig rig;
};

TEST(Controls, OfASessionComeBackWithTheDeviceButTheTorchStaysOff) {
    test::TestCamera camera(kCameraWithNode);
    ControlsRig test;
    CaptureSession& session = *test.rig.session;
    FakeDriver& driver = *test.driver;
    FakeDriver& light = *test.light;
    EXPECT_EQ(test.controls(), "");
    session.setControl(CameraControl::torch, 1.0);
    ASSERT_EQ(test.rig.start(), "");
    ASSERT_TRUE(test.becomes("torch 0/1;focus 0.25/200~*;")) << test.controls();
    const int before = *test.told;
    session.setControl(CameraControl::torch, 7.0);
    session.setControl(CameraControl::focus, 0.5);
    session.setControl(CameraControl::zoom, 1.0);
    session.setControl(CameraControl::torch, std::nullopt);
    session.setControl(CameraControl::focus, std::nan(""));
    ASSERT_TRUE(test.becomes("torch 1/1;focus 0.5/200~;")) << test.controls();
    EXPECT_TRUE(eventually([&] { return *test.told > before; }));
    test.rig.takePhotos(1);
    EXPECT_EQ(test.rig.photos(1).at(0).error, "");
    EXPECT_EQ(light.value(V4L2_CID_FLASH_LED_MODE), V4L2_FLASH_LED_MODE_TORCH);

    camera.set("unplugged");
    ASSERT_TRUE(test.becomes(""));
    EXPECT_TRUE(eventually([&] { return driver.openNodes == 0; }));
    EXPECT_EQ(light.value(V4L2_CID_FLASH_LED_MODE), V4L2_FLASH_LED_MODE_NONE);
    driver.change(V4L2_CID_FOCUS_AUTO, 1);
    light.change(V4L2_CID_FLASH_LED_MODE, V4L2_FLASH_LED_MODE_TORCH);
    camera.unset("unplugged");
    ASSERT_TRUE(test.becomes("torch 0/1;focus 0.5/200~;")) << test.controls();

    session.setControl(CameraControl::torch, 1.0);
    ASSERT_TRUE(test.becomes("torch 1/1;focus 0.5/200~;"));
    test.rig.session.reset();
    EXPECT_EQ(light.value(V4L2_CID_FLASH_LED_MODE), V4L2_FLASH_LED_MODE_NONE);
    EXPECT_EQ(driver.openNodes, 0);
}

TEST(Controls, WhoseDriverHangsHoldUpNobody) {
    const test::TestCamera camera(kCameraWithNode);
    ControlsRig test(Patience{});
    std::promise<void> answer;
    test.light->hangsUntil = answer.get_future().share();
    ASSERT_EQ(test.rig.start(), "");
    ASSERT_TRUE(test.becomes("torch 0/1;focus 0.25/200~*;"));
    test.rig.session->setControl(CameraControl::torch, 1.0);
    ASSERT_TRUE(eventually([&] { return !test.rig.session->isRunning(); }));
    test.rig.session->setControl(CameraControl::torch, 0.0);
    EXPECT_EQ(test.controls(), "torch 0/1;focus 0.25/200~*;");
    test.rig.session.reset();
    answer.set_value();
    EXPECT_TRUE(eventually([&] { return test.light->openNodes == 0; }));
    EXPECT_EQ(test.light->value(V4L2_CID_FLASH_LED_MODE), V4L2_FLASH_LED_MODE_NONE);
    EXPECT_TRUE(camera.waitUntilClosed());
}

}  // namespace
}  // namespace kestrelid::capture
