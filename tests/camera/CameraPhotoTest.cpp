#include "tests/camera/CameraHarness.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

namespace kestrelid::camera {
namespace {

using test::CameraHarness;
using test::FakeMachine;
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

// What stands in the way of a photo, and whether the camera is asked for one all the same.
struct ObstacleCase {
    const char* name;
    std::function<void(PhotoHarness&)> prepare;
    std::function<void(PhotoHarness&)> betweenTapAndCapture;
    bool asksTheCamera;
    CapturedPhoto photo;
    std::optional<CaptureError> error;
    std::string delivered;
};

void PrintTo(const ObstacleCase& row, std::ostream* out) {
    *out << row.name;
}

class CameraPhoto : public testing::TestWithParam<ObstacleCase> {};

TEST_P(CameraPhoto, EndsInOneDelivery) {
    const ObstacleCase& row = GetParam();
    PhotoHarness camera;
    row.prepare(camera);

    camera.manager->capturePhoto();
    EXPECT_THAT(camera.delivered, IsEmpty()) << "delivered before the call returned";
    row.betweenTapAndCapture(camera);
    camera.settle();
    ASSERT_EQ(camera.output().requests.size(), row.asksTheCamera ? 1u : 0u);
    if (row.asksTheCamera) {
        camera.output().finish(row.photo, row.error);
        EXPECT_THAT(camera.delivered, IsEmpty()) << "delivered on the platform's thread";
        camera.settle();
    }
    EXPECT_THAT(camera.delivered, ElementsAre(row.delivered));
}

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
void nothing(PhotoHarness&) {}

CapturedPhoto undecodablePhoto() {
    return {.fileDataRepresentation = std::vector<std::byte>(100)};
}

INSTANTIATE_TEST_SUITE_P(
    Table, CameraPhoto,
    testing::Values(
        ObstacleCase{"None", nothing, nothing, true, onePixelPhoto(), {}, "photo"},
        ObstacleCase{"SessionNotReady", notReady, nothing, false, {}, {}, "nothing"},
        ObstacleCase{"CameraLost", lost, nothing, false, {}, {}, "nothing"},
        ObstacleCase{"CameraLostAfterTheTap", nothing, lost, false, {}, {}, "nothing"},
        ObstacleCase{"NoConnection", unconnected, nothing, false, {}, {}, "nothing"},
        ObstacleCase{"FirstConnectionDisabled", disconnected, nothing, false, {}, {}, "nothing"},
        ObstacleCase{"CaptureError", nothing, nothing, true, onePixelPhoto(),
                     CaptureError{"lens cap"}, "nothing"},
        ObstacleCase{"NoFileData", nothing, nothing, true, {}, {}, "nothing"},
        ObstacleCase{
            "UndecodableFileData", nothing, nothing, true, undecodablePhoto(), {}, "nothing"}),
    [](const auto& given) { return std::string(given.param.name); });

struct SettingsCase {
    const char* name;
    std::vector<std::string> codecs;
    std::vector<FlashMode> flashModes;
    std::optional<std::string> codec;
    std::optional<FlashMode> flashMode;
};

void PrintTo(const SettingsCase& row, std::ostream* out) {
    *out << row.name;
}

class CameraPhotoSettings : public testing::TestWithParam<SettingsCase> {};

TEST_P(CameraPhotoSettings, FollowWhatTheOutputOffers) {
    const SettingsCase& row = GetParam();
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

INSTANTIATE_TEST_SUITE_P(
    Table, CameraPhotoSettings,
    testing::Values(
        SettingsCase{"BothCodecs", {"jpeg", "hvc1"}, {FlashMode::off}, "hvc1", FlashMode::off},
        SettingsCase{"JpegOnly", {"jpeg"}, {FlashMode::on, FlashMode::off}, "jpeg", FlashMode::off},
        SettingsCase{"OtherCodecsOnly", {"HVC1", "jpeg2000"}, {}, std::nullopt, std::nullopt},
        SettingsCase{
            "FlashCannotBeTurnedOff", {}, {FlashMode::automatic}, std::nullopt, std::nullopt}),
    [](const auto& given) { return std::string(given.param.name); });

TEST(CameraPhotos, SeveralInFlightAreEachDelivered) {
    PhotoHarness camera;
    for (int tap = 0; tap < 3; ++tap)
        camera.manager->capturePhoto();
    camera.settle();
    camera.output().finish(onePixelPhoto());
    camera.output().finish({}, CaptureError{"blocked"});
    camera.output().finish(onePixelPhoto());
    camera.settle();
    EXPECT_THAT(camera.delivered, ElementsAre("photo", "nothing", "photo"));
}

TEST(CameraPhotos, WithoutACallbackAreTakenAndThrownAway) {
    PhotoHarness camera;
    camera.manager->onPhotoCapture = nullptr;
    camera.manager->capturePhoto();
    camera.settle();
    camera.output().finish(onePixelPhoto());
    camera.settle();
    EXPECT_THAT(camera.delivered, IsEmpty());
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
    EXPECT_EQ(camera.output().requests.size(), 1u);
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
