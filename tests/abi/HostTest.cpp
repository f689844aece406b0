// A host against the shared library: what it derives, and what it asks of types, works although the
// library lets out nothing but its own names. Both sides have their own copies of the rest.

#include "tests/support/FakeServices.h"
#include "tests/support/ManualQueue.h"

#include <kestrelid/Bitmap.h>
#include <kestrelid/CaptureServices.h>
#include <kestrelid/DefaultCamera.h>
#include <kestrelid/Image.h>
#include <kestrelid/PassportDetector.h>

#include <cstddef>
#include <gtest/gtest.h>
#include <memory>
#include <typeinfo>
#include <variant>

namespace kestrelid::test {
namespace {

class HostDetector final : public PassportDetector {
public:
    explicit HostDetector(PlatformServices services)
        : PassportDetector(std::move(services), ValidationEffort::complete) {}

    void validate(const Image& image, Completion completion) override {
        ++calls;
        PassportDetector::validate(image, [completion](const PassportValidationResult& result) {
            completion(makeResult(result.isPassport(), 0.25, result.reasons(), "of the host"));
        });
    }

    int calls = 0;
};

class HostDevice final : public CaptureDevice {
public:
    [[nodiscard]] std::string name() const override { return "of the host"; }
    [[nodiscard]] Orientation orientation() const override { return Orientation::up; }
    [[nodiscard]] bool isMirrored() const override { return false; }
};

TEST(Host, DerivesFromADetector) {
    const auto queue = std::make_shared<ManualQueue>();
    const auto text = std::make_shared<FakeText>(std::vector<std::string>{"PASSPORT"});
    const std::shared_ptr<PassportDetector> detector = std::make_shared<HostDetector>(
        PlatformServices{.rectangles = std::make_shared<FakeRectangles>(),
                         .text = text,
                         .queue = queue,
                         .console = [](std::string_view) {}});
    std::optional<PassportValidationResult> result;
    const Bitmap grey =
        *Bitmap::wrap(40, 30, 40, PixelFormat::gray8, std::make_shared<std::byte[]>(1200), 1200);
    detector->validate(Image(grey), [&](const auto& given) { result = given; });
    queue->runAll();

    ASSERT_TRUE(result);
    EXPECT_EQ(result->recognizedText(), "of the host");
    EXPECT_EQ(text->linesRead, 1u);
    EXPECT_EQ(typeid(*detector), typeid(HostDetector));
    const auto own = std::dynamic_pointer_cast<HostDetector>(detector);
    ASSERT_TRUE(own);
    EXPECT_EQ(own->calls, 1);
    const std::shared_ptr<DispatchQueue> made = makeSerialQueue("host");
    EXPECT_FALSE(dynamic_cast<ManualQueue*>(made.get()));
}

TEST(Host, SharesTheMachinesServicesAsLongAsItOwnsThem) {
    const PlatformServices first = defaultServices();
    const PlatformServices again = ThisMachine::services();
    EXPECT_EQ(first.rectangles, again.rectangles);
    EXPECT_EQ(first.text, again.text);
    EXPECT_EQ(first.queue, again.queue);
    PlatformServices others = defaultServices({.resources = "/nowhere"});
    EXPECT_NE(first.text, others.text);
    const std::weak_ptr<TextService> released = others.text;
    others = {};
    EXPECT_TRUE(released.expired());
}

// The library asks for the types of what the host made.
TEST(Host, GivesADeviceOfItsOwnToAPlatformThatRefusesIt) {
    const CameraServices services = defaultCameraServices(makeSerialQueue("main"));
    const auto input = services.capture->makeInput(std::make_shared<HostDevice>());
    ASSERT_TRUE(std::holds_alternative<CaptureError>(input));
    EXPECT_EQ(std::get<CaptureError>(input).description, "not a camera of this platform");
}

}  // namespace
}  // namespace kestrelid::test
