#include "tests/camera/CameraHarness.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

namespace kestrelid::camera {
namespace {

using test::CameraHarness;
using testing::ElementsAre;
using testing::IsEmpty;

// One grey pixel as a PNG file.
CapturedPhoto onePixelPhoto() {
    constexpr std::array<unsigned char, 67> kFile{
        0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a, 0x00, 0x00, 0x00, 0x0d, 0x49, 0x48,
        0x44, 0x52, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x08, 0x00, 0x00, 0x00,
        0x00, 0x3a, 0x7e, 0x9b, 0x55, 0x00, 0x00, 0x00, 0x0a, 0x49, 0x44, 0x41, 0x54, 0x78,
        0x9c, 0x63, 0x68, 0x00, 0x00, 0x00, 0x82, 0x00, 0x81, 0x77, 0xcd, 0x72, 0xb6, 0x00,
        0x00, 0x00, 0x00, 0x49, 0x45, 0x4e, 0x44, 0xae, 0x42, 0x60, 0x82};
    std::vector<std::byte> file;
    for (const unsigned char value : kFile)
        file.push_back(std::byte{value});
    return {.fileDataRepresentation = std::move(file)};
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

// What stands in the way of a photo.
struct ObstacleCase {
    const char* name;
    Step prepare;
    Step betweenTapAndCapture;
    std::optional<CapturedPhoto> photo;  // absent: the camera is not asked for one
    std::optional<CaptureError> error;
    std::string delivered;
};

TEST(CameraPhotos, EndInOneDelivery) {
    const CapturedPhoto damaged{.fileDataRepresentation = std::vector<std::byte>(100)};
    const ObstacleCase cases[] = {
        {"none", nothing, nothing, onePixelPhoto(), {}, "photo"},
        {"session not ready", notReady, nothing, {}, {}, "nothing"},
        {"camera lost", lost, nothing, {}, {}, "nothing"},
        {"camera lost after the tap", nothing, lost, {}, {}, "nothing"},
        {"no connection", unconnected, nothing, {}, {}, "nothing"},
        {"first connection disabled", disconnected, nothing, {}, {}, "nothing"},
        {"capture error", nothing, nothing, onePixelPhoto(), CaptureError{"lens cap"}, "nothing"},
        {"no file data", nothing, nothing, CapturedPhoto{}, {}, "nothing"},
        {"undecodable file data", nothing, nothing, damaged, {}, "nothing"},
    };
    for (const ObstacleCase& row : cases) {
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

struct SettingsCase {
    const char* name;
    std::vector<std::string> codecs;
    std::vector<FlashMode> flashModes;
    std::optional<std::string> codec;
    std::optional<FlashMode> flashMode;
};

TEST(CameraPhotos, FollowWhatTheOutputOffers) {
    using enum FlashMode;
    for (const SettingsCase& row :
         {SettingsCase{"both codecs", {"jpeg", "hvc1"}, {off}, "hvc1", off},
          SettingsCase{"JPEG only", {"jpeg"}, {on, off}, "jpeg", off},
          SettingsCase{"other codecs only", {"HVC1", "jpeg2000"}, {}, {}, {}},
          SettingsCase{"flash cannot be turned off", {}, {automatic}, {}, {}}}) {
        SCOPED_TRACE(row.name);
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
    camera.settle();
    camera.output().finish(onePixelPhoto());
    camera.settle();
    EXPECT_THAT(camera.delivered, ElementsAre(kept));
    ASSERT_EQ(camera.output().requests.size(), 1u);
    camera.output().finish(onePixelPhoto());
    camera.settle();
    EXPECT_EQ(camera.delivered.size(), 1u) << "nobody is there to take the second one";
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
