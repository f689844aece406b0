#include "tests/camera/CameraHarness.h"
#include "tests/support/FakeServices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace kestrelid::camera {
namespace {

using test::CameraHarness;
using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

// Finds one page, unless it is told otherwise.
struct PageFinder final : RectangleService {
    RectangleResult perform(const Bitmap&, const RectangleRequest&) override {
        ++requests;
        if (duringRequest)
            duringRequest();
        return result;
    }

    RectangleResult result = std::vector{
        RectangleObservation{.boundingBox = {0.2, 0.2, 0.6, 0.6},
                             .corners = {{{0.2, 0.8}, {0.8, 0.8}, {0.8, 0.2}, {0.2, 0.2}}},
                             .confidence = 1.0f}};
    std::function<void()> duringRequest;
    int requests = 0;
};

// A camera that is asked for guidance, in the dark.
struct GuidedCamera : CameraHarness {
    explicit GuidedCamera(std::shared_ptr<PageFinder> given = std::make_shared<PageFinder>())
        : CameraHarness(AuthorizationStatus::authorized, nullptr, given), finder(std::move(given)) {
        becomeReady();
    }

    // One frame, and so many seconds.
    void deliver(double later) {
        deliverFrame(std::make_shared<test::FakePixelBuffer>(test::blankBitmap(64, 48)));
        seconds += later;
    }

    [[nodiscard]] bool seesPage() const { return manager->page().value().outline.has_value(); }
    [[nodiscard]] Advice advice() const { return manager->page().value().advice; }

    const std::shared_ptr<PageFinder> finder;
};

TEST(CameraPage, IsLookedForBesideTheVerdicts) {
    GuidedCamera camera;
    CameraHarness plain;
    plain.becomeReady();
    int published = 0;
    const auto watched = plain.manager->page().didChange([&](const LivePage&) { ++published; });
    for (int frame = 0; frame < 15; ++frame) {
        camera.deliver(0.15);
        plain.deliverFrame();
        plain.seconds += 0.15;
    }
    EXPECT_EQ(camera.finder->requests, 8) << "every second frame";
    EXPECT_TRUE(camera.seesPage());
    EXPECT_EQ(camera.advice(), Advice::tooDark);
    EXPECT_THAT(plain.detector->images, SizeIs(camera.detector->images.size()));
    EXPECT_EQ(published, 0);
    EXPECT_FALSE(plain.queues.contains("page.queue")) << "nobody has asked for it";
}

TEST(CameraPage, IsForgottenOnceNoFrameComes) {
    GuidedCamera camera;
    camera.deliver(0.3);
    camera.pass(1.5);
    camera.deliver(0.1);
    camera.pass(1.0);
    EXPECT_TRUE(camera.seesPage()) << "two seconds after it was first seen";
    camera.pass(1.0);
    EXPECT_FALSE(camera.seesPage());
    camera.deliver(0.3);
    EXPECT_TRUE(camera.seesPage());

    camera.platform->session.lock()->lose();
    camera.settle();
    EXPECT_FALSE(camera.seesPage()) << "at once";
    const int requests = camera.finder->requests;
    for (int frame = 0; frame < 10; ++frame)
        camera.deliver(0.3);
    EXPECT_EQ(camera.finder->requests, requests) << "black frames show no page";
    camera.platform->session.lock()->heal();
    camera.deliver(0.3);
    EXPECT_TRUE(camera.seesPage());
    EXPECT_EQ(camera.advice(), Advice::none) << "of what was before nothing is left";

    camera.machine().starts = false;
    camera.platform->session.lock()->startRunning();  // it ends, and tells nobody
    for (int frame = 0; frame < 10; ++frame) {
        camera.deliver(0.0);
        camera.pass(0.3);
    }
    EXPECT_FALSE(camera.seesPage()) << "black frames are as good as none";
}

TEST(CameraPage, TakesAQuarterOfACoreAtMost) {
    GuidedCamera camera;
    std::vector<double> rests;
    double end = 0.0;
    camera.finder->duringRequest = [&] {
        if (end > 0.0)
            rests.push_back(camera.seconds - end);
        end = camera.seconds += 0.1;
    };
    for (int frame = 0; frame < 30; ++frame)
        camera.deliver(0.05);
    EXPECT_THAT(rests, SizeIs(testing::Ge(3u)));
    EXPECT_THAT(rests, Each(testing::AllOf(testing::Gt(0.299), testing::Lt(0.36))));
}

TEST(CameraPage, IsUnknownWhereTheServiceFails) {
    GuidedCamera camera;
    std::vector<bool> seen;
    const RectangleResult page = camera.finder->result;
    const auto look = [&] {
        camera.deliver(0.3);
        seen.push_back(camera.seesPage());
    };
    look();
    camera.finder->duringRequest = [] { throw std::runtime_error("out of order"); };
    look();
    camera.finder->duringRequest = nullptr;
    look();
    camera.finder->result = RequestError{"no model"};
    look();
    camera.finder->result = page;
    look();
    EXPECT_THAT(seen, ElementsAre(true, false, true, false, true));
    camera.finder->result = RequestError{"no model"};
    for (int frame = 0; frame < 10; ++frame)
        look();
    EXPECT_EQ(camera.advice(), Advice::none) << "that nothing was found does not mean no page";
}

TEST(CameraPage, IsGivenUpWithTheManager) {
    GuidedCamera camera;
    const std::weak_ptr<CameraManager> manager = camera.manager;
    camera.finder->duringRequest = [&] { camera.manager.reset(); };
    camera.deliver(0.3);
    EXPECT_EQ(camera.finder->requests, 1);
    EXPECT_TRUE(manager.expired()) << "a look holds nothing but its frame";
}

}  // namespace
}  // namespace kestrelid::camera
