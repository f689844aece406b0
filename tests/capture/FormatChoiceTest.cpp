#include "capture/gstreamer/FormatChoice.h"
#include "capture/gstreamer/CameraNames.h"
#include "capture/gstreamer/CameraPreference.h"
#include "capture/gstreamer/CapsFormats.h"
#include "capture/gstreamer/GStreamerLibrary.h"
#include "capture/gstreamer/StillChoice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace kestrelid::capture {
namespace {

// framesPerSecond: 0 for unknown.
VideoFormat raw(int width, int height, int framesPerSecond) {
    return {.width = width,
            .height = height,
            .rate = {.numerator = framesPerSecond, .denominator = 1},
            .encoding = Encoding::raw,
            .layout = "YUY2"};
}

VideoFormat jpeg(int width, int height, int framesPerSecond) {
    VideoFormat format = raw(width, height, framesPerSecond);
    format.encoding = Encoding::jpeg;
    format.layout.clear();
    return format;
}

TEST(FormatChoice, TakesALiveAndAStillFormat) {
    struct ChoiceCase {
        const char* name;
        std::vector<VideoFormat> formats;
        VideoFormat live;
        std::optional<VideoFormat> still = {};  // absent: the live one
        PhotoDimensions bound{};
    };
    const VideoFormat vga = raw(640, 480, 30);
    const VideoFormat hd = raw(1280, 720, 30);
    const ChoiceCase cases[] = {
        {"the live size among others", {vga, hd, raw(1920, 1080, 30)}, hd, raw(1920, 1080, 30)},
        {"raw is slow where motion JPEG is not",
         {vga, raw(1280, 720, 10), raw(1920, 1080, 5), jpeg(1280, 720, 30), jpeg(1920, 1080, 30)},
         jpeg(1280, 720, 30),
         jpeg(1920, 1080, 30)},
        {"raw and motion JPEG alike", {hd, jpeg(1280, 720, 30)}, hd},
        {"smooth but too small to read",
         {raw(160, 120, 30), raw(1280, 720, 15)},
         raw(1280, 720, 15)},
        {"none smooth: the fastest", {raw(1280, 720, 5), raw(1600, 1200, 15)}, raw(1600, 1200, 15)},
        {"no faster than needed",
         {jpeg(1280, 720, 60), jpeg(1280, 720, 30), jpeg(1280, 720, 120)},
         jpeg(1280, 720, 30)},
        {"unknown rate", {raw(1280, 720, 0), vga}, raw(1280, 720, 0)},
        {"wide among equals", {raw(960, 960, 30), hd}, hd},
        {"stills within a bound",
         {vga, hd, jpeg(4032, 3024, 5), jpeg(1600, 1200, 15)},
         hd,
         jpeg(1600, 1200, 15),
         {2000, 2000}},
        {"no still within the bound", {vga, hd}, hd, vga, {320, 240}},
        {"the sooner still of a size, whatever its encoding",
         {hd, raw(3840, 2160, 2), jpeg(3840, 2160, 30)},
         hd,
         jpeg(3840, 2160, 30)},
        {"one shape for frames and stills",
         {hd, jpeg(1280, 960, 30), jpeg(1920, 1080, 30), jpeg(2592, 1944, 30)},
         jpeg(1280, 960, 30),
         jpeg(2592, 1944, 30)},
        {"the largest still has the shape of frames too small to read well",
         {jpeg(640, 480, 30), hd, jpeg(1920, 1080, 30), jpeg(2592, 1944, 30)},
         hd,
         jpeg(1920, 1080, 30)},
        {"no large still of the shape of frames",
         {hd, jpeg(4032, 3024, 30)},
         hd,
         jpeg(4032, 3024, 30)},
        {"a still that would take seconds", {hd, raw(3840, 2160, 1)}, hd},
        {"nothing but slow", {raw(3840, 2160, 1)}, raw(3840, 2160, 1)},
    };
    for (const ChoiceCase& row : cases) {
        SCOPED_TRACE(row.name);
        std::vector<VideoFormat> formats = row.formats;
        for (int order = 0; order < 2; ++order, std::reverse(formats.begin(), formats.end())) {
            const auto live = chooseLive(formats);
            EXPECT_EQ(live, row.live);
            EXPECT_EQ(chooseStill(formats, row.bound, live), row.still.value_or(row.live));
        }
    }
    EXPECT_FALSE(chooseLive({}));
    EXPECT_FALSE(chooseStill({}, {}, std::nullopt));
}

TEST(FormatChoice, ScalesWithoutDistortion) {
    EXPECT_EQ(scaledInto({4000, 3000}, {}), (PhotoDimensions{4000, 3000}));
    EXPECT_EQ(scaledInto({3000, 4000}, {2000, 2000}), (PhotoDimensions{1500, 2000}));
    EXPECT_EQ(scaledInto({640, 480}, {2000, 0}), (PhotoDimensions{640, 480}));
    EXPECT_EQ(scaledInto({4001, 11}, {100, 100}), (PhotoDimensions{100, 2}));
    EXPECT_EQ(liveDimensions({4000, 3000}), (PhotoDimensions{1108, 832}));
    EXPECT_EQ(liveDimensions({300, 200}), (PhotoDimensions{300, 200}));
}

TEST(StillChoice, TakesTheSharpestOfThreeSettledFrames) {
    struct ChoiceCase {
        const char* name;
        std::vector<StillLook> looks;
        int chosen;
        bool isDone;
    };
    const ChoiceCase cases[] = {
        {"one frame", {{0.1, 0.5}}, 0, false},
        {"exposure never settles", {{0.5, 0.1}, {0.4, 0.3}, {0.3, 0.6}}, 2, false},
        {"the first is only known to be settled by the next", {{0.9, 0.5}, {0.2, 0.5}}, 1, false},
        {"focus comes last", {{0.1, 0.1}, {0.1, 0.5}, {0.1, 0.5}, {0.2, 0.5}, {0.4, 0.5}}, 4, true},
        {"one is shaken", {{0.4, 0.5}, {0.3, 0.5}, {0.4, 0.51}, {0.1, 0.5}}, 2, true},
        {"a flicker between", {{0.4, 0.5}, {0.4, 0.5}, {0.9, 0.9}, {0.3, 0.9}}, 1, false},
    };
    for (const ChoiceCase& row : cases) {
        StillChoice choice;
        int number = 0;
        for (const StillLook& look : row.looks)
            choice.add({.pixels = JpegStill{.file = {}, .size = {.width = number++, .height = 1}}},
                       look);
        EXPECT_EQ(choice.isDone(), row.isDone) << row.name;
        const auto still = choice.take();
        ASSERT_TRUE(still) << row.name;
        EXPECT_EQ(std::get<JpegStill>(still->pixels).size.width, row.chosen) << row.name;
    }
    EXPECT_FALSE(StillChoice().take());
}

TEST(CapsFormats, AreReadFromAnyWayOfStatingThem) {
    ASSERT_TRUE(startGStreamer());
    struct CapsCase {
        const char* caps;
        std::set<std::string> formats;  // "1280x720@30/1 YUY2"
    };
    const CapsCase cases[] = {
        {"image/jpeg,width=1280,height=720,framerate=30/1", {"1280x720@30/1 jpeg"}},
        {"video/x-raw,format={YUY2,NV12},width=640,height=480,framerate={30/1,15/2}",
         {"640x480@30/1 YUY2", "640x480@15/2 YUY2", "640x480@30/1 NV12", "640x480@15/2 NV12"}},
        {"video/x-raw,format=YUY2,width=640,height=480", {"640x480@0/1 YUY2"}},
        {"video/x-raw,format=YUY2,width=640,height=480,framerate=[0/1,60/1]",
         {"640x480@30/1 YUY2", "640x480@60/1 YUY2"}},
        {"video/x-raw,format=YUY2,width=640,height=480,framerate=[0/1,2147483647/1]",
         {"640x480@30/1 YUY2"}},
        {"video/x-raw,format=YUY2,width=[16,1280,16],height=[16,720,16],framerate=30/1",
         {"640x480@30/1 YUY2", "1280x720@30/1 YUY2"}},
        {"video/x-raw(memory:DMABuf),format=YUY2,width=640,height=480,framerate=30/1", {}},
        {"video/x-h264,width=640,height=480,framerate=30/1", {"640x480@30/1 h264"}},
        {"video/x-raw,width=640,height=480,framerate=30/1", {}},
        {"ANY", {}},
    };
    for (const CapsCase& row : cases) {
        const CapsHandle caps(gst_caps_from_string(row.caps));
        ASSERT_TRUE(caps) << row.caps;
        std::set<std::string> formats;
        for (const VideoFormat& format : formatsIn(caps.get())) {
            formats.insert(std::to_string(format.width) + "x" + std::to_string(format.height) +
                           "@" + std::to_string(format.rate.numerator) + "/" +
                           std::to_string(format.rate.denominator) + " " +
                           (format.encoding == Encoding::raw    ? format.layout
                            : format.encoding == Encoding::jpeg ? "jpeg"
                                                                : "h264"));
            const CapsHandle one = capsFor(format);
            EXPECT_TRUE(gst_caps_can_intersect(one.get(), caps.get())) << row.caps;
        }
        EXPECT_EQ(formats, row.formats) << row.caps;
    }
}

TEST(CameraNames, AreUniqueAndEachCameraStandsOnce) {
    const std::vector<NamedCamera> named =
        nameCameras({{"Webcam", "/dev/video0", "v4l2"},
                     {"Webcam", "/dev/video2", "v4l2"},
                     {"Webcam (V4L2)", "/dev/video0", "pipewire"},
                     {"", "", "pipewire"},
                     {"Webcam", "", "pipewire"},
                     {"Webcam 2", "/dev/video4", "v4l2"}});
    std::string names;
    for (const NamedCamera& camera : named)
        names += std::to_string(camera.index) + " " + camera.name + ", ";
    EXPECT_EQ(names, "0 Webcam, 1 Webcam 2, 3 Camera, 4 Webcam 3, 5 Webcam 2 2, ");
}

TEST(CameraPreference, PutsTheBackFirstAndInfraredLast) {
    VideoFormat gray = raw(640, 480, 30);
    gray.layout = "GRAY8";
    const std::vector<VideoFormat> colour{gray, jpeg(640, 480, 30)};
    EXPECT_TRUE(isInfrared("Lid", {gray}));
    EXPECT_TRUE(isInfrared("Lid (IR Camera)", colour));
    EXPECT_FALSE(isInfrared("Iris", colour));
    std::string order;
    for (const char* location : {"back", "external", "", "front"})
        order += std::to_string(preferenceOf(positionFrom(location), false));
    EXPECT_EQ(order + std::to_string(preferenceOf(positionFrom("back"), true)), "01123");
}

TEST(CameraNames, MountingComesFromLibcamera) {
    EXPECT_EQ(mountingFrom("back", "90").orientation, Orientation::left);
    EXPECT_EQ(mountingFrom("back", "180").orientation, Orientation::down);
    EXPECT_EQ(mountingFrom("back", "270").orientation, Orientation::right);
    EXPECT_FALSE(mountingFrom("back", "").isMirrored);
    EXPECT_EQ(mountingFrom("front", "0").orientation, Orientation::up);
    EXPECT_TRUE(mountingFrom("front", "0").isMirrored);
}

}  // namespace
}  // namespace kestrelid::capture
