#include "apps/cli/CameraList.h"
#include "apps/cli/PhotoFile.h"
#include "apps/cli/WatchLog.h"
#include "tests/support/FakeServices.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace kestrelid::cli {
namespace {

void setTimeZone(const char* zone) {
    ::setenv("TZ", zone, 1);
    ::tzset();
}

TEST(WatchLogTest, LinesBeginWithLocalTime) {
    setTimeZone("IST-5:30");  // east of Greenwich
    const WallTime time{std::chrono::duration<double>(1'790'000'000.0625)};
    const std::string start = "2026-09-21T19:43:20.062+05:30";
    EXPECT_EQ(eventAsText(time, DocumentChanged{true}), start + "  document    in view\n");
    EXPECT_EQ(eventAsJson(time, DocumentChanged{true}),
              R"({"time":")" + start + R"(","event":"document","detected":true})" + "\n");
    setTimeZone("NST3:30");  // west, and before the first second of 1970
    EXPECT_EQ(eventAsText(WallTime{std::chrono::duration<double>(-0.25)}, DocumentChanged{}),
              "1969-12-31T20:29:59.750-03:30  document    gone\n");
}

TEST(WatchLogTest, WhatTheErrorTellsIsNoLineOfText) {
    for (const WatchEvent& event : {WatchEvent(SessionKnown{}), WatchEvent(AuthorizationKnown{}),
                                    WatchEvent(WatchFailed{"gone"})})
        EXPECT_EQ(eventAsText({}, event), "");
}

TEST(WatchLogTest, HostileNamesReachNoTerminal) {
    const std::string name = "a\x1b[31m\n.jpg";
    for (const WatchEvent& event : {WatchEvent(PhotoWritten{name, 1, 1}),
                                    WatchEvent(SessionKnown{.ready = true, .camera = name})}) {
        for (const std::string& line : {eventAsText({}, event), eventAsJson({}, event)}) {
            EXPECT_EQ(line.find('\x1b'), std::string::npos);
            EXPECT_EQ(line.find('\n'), line.size() - 1);
        }
    }
}

TEST(CameraListTest, NamesFormatsOrSaysThatThereIsNone) {
    const std::vector<CameraDescription> cameras{
        {.name = "Front",
         .formats = {{.width = 1920, .height = 1080, .framesPerSecond = 30.0, .encoding = "jpeg"},
                     {.width = 640, .height = 480, .framesPerSecond = 7.5, .encoding = "raw"}}},
        {.name = "Back", .formats = {}, .obstacle = "too odd"}};
    EXPECT_EQ(camerasAsText(cameras), "Front\n    1920x1080, 30 frames/s, jpeg\n"
                                      "    640x480, 7.5 frames/s, raw\nBack (too odd)\n");
    EXPECT_EQ(camerasAsJson({cameras[1]}),
              "{\"cameras\":[{\"name\":\"Back\",\"position\":"
              "\"unknown\",\"infrared\":false,\"obstacle\":\"too odd\","
              "\"formats\":[]}]}\n");
    EXPECT_EQ(whyNoCamera("Side", cameras),
              "Side: neither a file nor a camera; the cameras are: Front, Back");
    EXPECT_EQ(whyNoCamera("", {cameras[1]}), "Back cannot be used: too odd");
    for (const std::string& line : {camerasAsText({}), whyNoCamera("", {})})
        EXPECT_NE(line.find("watch --camera FILE"), std::string::npos);
}

TEST(PhotoFileTest, ExtensionsThatCanBeWritten) {
    for (const char* name : {"a.jpg", "a.JPEG", "b/a.b.Png"})
        EXPECT_TRUE(hasWritableExtension(name)) << name;
    for (const char* name : {"", "a", "jpg", ".jpg", "a.jpg/", "a.gif", "a.jpg.txt"})
        EXPECT_FALSE(hasWritableExtension(name)) << name;
}

TEST(PhotoFileTest, NothingIsLeftOfAPhotoThatCannotBeWritten) {
    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder / "too-wide.jpg";
    const Image tooWide(test::blankBitmap(70'000, 1));  // JPEG ends at 65,535 pixels
    for (const bool mayReplace : {false, true}) {
        EXPECT_TRUE(writePhoto({.path = file, .mayReplace = mayReplace}, tooWide));
        EXPECT_FALSE(std::filesystem::exists(file));
    }
}

}  // namespace
}  // namespace kestrelid::cli
