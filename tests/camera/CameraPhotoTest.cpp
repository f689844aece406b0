#include "imagefile/JpegCodec.h"
#include "tests/camera/CameraHarness.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kestrelid::camera {
namespace {

using test::CameraHarness;
using testing::ElementsAre;
using testing::IsEmpty;

CapturedPhoto onePixelPhoto() {
    return {.fileDataRepresentation = *imagefile::encodeJpeg(test::blankBitmap(1, 1))};
}

// A camera that is ready, with a callback that writes "photo" or "nothing".
struct PhotoHarness : CameraHarness {
    PhotoHarness() {
        becomeReady();
        manager->onPhotoCapture = [this](const std::optional<Image>& photo) {
            delivered.push_back(photo && photo->bitmap() ? "photo" : "nothing");
        };
    }

    [[nodiscard]] test::FakePhotoOutput& output() const { return *platform->photoOutput.lock(); }

    std::vector<std::string> delivered;
};

using Step = void (*)(PhotoHarness&);

void nothing(PhotoHarness&) {}
void notReady(PhotoHarness& camera) {
    camera.manager->setupSession();  // refused: published false, although the session runs
    camera.settle();
}
void lost(PhotoHarness& camera) {
    camera.platform->session.lock()->lose();
}
void unconnected(PhotoHarness& camera) {
    camera.machine().connections.clear();
}
void disconnected(PhotoHarness& camera) {
    camera.machine().connections = {{.isEnabled = false}, {.isEnabled = true}};
}

TEST(CameraPhotos, EndInOneDelivery) {
    struct Case {
        const char* name;
        Step prepare;
        Step betweenTapAndCapture;
        std::optional<CapturedPhoto> photo = {};  // absent: the camera is not asked for one
        std::optional<CaptureError> error = {};
        std::string delivered = "nothing";
    };
    const CapturedPhoto damaged{.fileDataRepresentation = std::vector<std::byte>(100)};
    const Case cases[] = {
        {"no obstacle", nothing, nothing, onePixelPhoto(), {}, "photo"},
        {"pixels without a file",
         nothing,
         nothing,
         CapturedPhoto{.fileDataRepresentation = {}, .image = Image(test::blankBitmap(1, 1))},
         {},
         "photo"},
        {"session not ready", notReady, nothing},
        {"camera lost", lost, nothing},
        {"camera lost after the tap", nothing, lost},
        {"no connection", unconnected, nothing},
        {"first connection disabled", disconnected, nothing},
        {"capture error", nothing, nothing, onePixelPhoto(), CaptureError{"lens cap"}},
        {"no file data", nothing, nothing, CapturedPhoto{}},
        {"undecodable file data", nothing, nothing, damaged},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        PhotoHarness camera;
        row.prepare(camera);
        camera.manager->capturePhoto();
        EXPECT_THAT(camera.delivered, IsEmpty()) << "delivered before the call returned";
        row.betweenTapAndCapture(camera);
        camera.settle();
        ASSERT_EQ(camera.output().requests.size(), row.photo ? 1u : 0u);
        if (row.photo) {
            camera.output().finish(*row.photo, row.error);
            EXPECT_THAT(camera.delivered, IsEmpty()) << "delivered on the platform's thread";
            camera.settle();
        }
        EXPECT_THAT(camera.delivered, ElementsAre(row.delivered));
    }
}

TEST(CameraPhotos, FollowWhatTheOutputOffers) {
    using enum FlashMode;
    struct Case {
        std::vector<std::string> codecs;
        std::vector<FlashMode> flashModes;
        std::optional<std::string> codec;
        std::optional<FlashMode> flashMode;
    };
    for (const Case& row :
         {Case{{"jpeg", "hvc1"}, {off}, "hvc1", off}, Case{{"jpeg"}, {on, off}, "jpeg", off},
          Case{{"HVC1", "jpeg2000"}, {automatic}, {}, {}}}) {
        PhotoHarness camera;
        camera.machine().codecs = row.codecs;
        camera.machine().flashModes = row.flashModes;
        camera.manager->capturePhoto();
        camera.settle();
        const PhotoSettings& settings = camera.output().requests.at(0).settings;
        EXPECT_EQ(settings.codec, row.codec);
        EXPECT_EQ(settings.flashMode, row.flashMode);
        EXPECT_EQ(settings.maxPhotoDimensions, (PhotoDimensions{4032, 3024}));
    }
}

TEST(CameraPhotos, CallbackMayReplaceItselfAndAskAgain) {
    PhotoHarness camera;
    const std::string kept = "what the first callback owns";
    camera.manager->onPhotoCapture = [&camera, kept](const std::optional<Image>&) {
        camera.manager->onPhotoCapture = nullptr;
        camera.delivered.push_back(kept);
        camera.manager->capturePhoto();
    };
    camera.manager->capturePhoto();
    for (int photo = 0; photo < 2; ++photo) {
        camera.settle();
        ASSERT_EQ(camera.output().requests.size(), 1u);
        camera.output().finish(onePixelPhoto());
    }
    camera.settle();
    EXPECT_THAT(camera.delivered, ElementsAre(kept)) << "nobody is there to take the second one";
}

TEST(CameraPhotos, UnderWayKeepTheManagerUntilTheyAreDelivered) {
    PhotoHarness camera;
    const std::weak_ptr<CameraManager> weak = camera.manager;
    camera.manager->capturePhoto();
    camera.manager.reset();
    camera.settle();
    camera.output().finish(onePixelPhoto());
    camera.settle();
    EXPECT_THAT(camera.delivered, ElementsAre("photo"));
    EXPECT_TRUE(weak.expired());
}

}  // namespace
}  // namespace kestrelid::camera
