#pragma once

#include <chrono>
#include <cstdint>
#include <gst/gst.h>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kestrelid::testcamera {

// Where a driver may take its time.
enum class Moment : std::uint8_t { open, first, close };

// What is wrong with the bytes of frames.
enum class Damage : std::uint8_t { none, truncated, stride, empty };

// One camera of the control file; README.md has the language.
struct CameraEntry {
    std::string name;
    std::string shownName;  // that it is announced by
    std::vector<std::string> caps{};
    std::vector<std::pair<std::string, std::string>> properties{};
    std::string picture{};
    bool failsToOpen = false;
    bool failsToStart = false;
    bool isBusy = false;
    bool isExclusive = false;
    bool isFrozen = false;
    std::optional<std::uint64_t> stallAfter{};  // frames since it was opened
    std::optional<std::uint64_t> capsChange{};  // frames since it was opened
    std::uint64_t settle = 0;                   // frames since it was opened or changed its format
    std::uint64_t blurred = 0;                  // those after them
    Damage damage = Damage::none;
    std::chrono::milliseconds delays[3]{};  // by Moment
    bool hangs[3]{};                        // by Moment
    bool isUnplugged = false;
    bool tellsUnplugging = false;  // by an error message
    bool hangsAlways = false;

    [[nodiscard]] GstCaps* allCaps() const;
};

// What the file that KESTRELID_TEST_CAMERA names says; empty where it is missing.
std::vector<CameraEntry> readControlFile();
// The line `generation NUMBER` of it; empty where there is none.
std::string readGeneration();
std::optional<CameraEntry> findCamera(const std::string& name);

// Says beside the control file up to which generation the devices follow it, which is empty while
// there is no control file; none: they do not follow it any more.
void tellFollowed(const std::optional<std::string>& generation);

// Adds a line to the journal beside the control file.
void writeJournal(const std::string& line);

// The element kestreltestcamerasrc: live frames of the camera that its property `device` names.
GType testCameraSourceType();
inline constexpr const char* kSourceName = "kestreltestcamerasrc";

}  // namespace kestrelid::testcamera
