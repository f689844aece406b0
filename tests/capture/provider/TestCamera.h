#pragma once

#include <cstdint>
#include <gst/gst.h>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kestrelid::testcamera {

// One camera of the control file; README.md has the language.
struct CameraEntry {
    std::string name;
    std::string shownName;  // that it is announced by
    std::vector<std::string> caps{};
    std::vector<std::pair<std::string, std::string>> properties{};
    std::string picture{};
    std::string failure{};
    std::optional<std::uint64_t> stallAfter{};  // frames since it was opened
    bool isUnplugged = false;
    bool tellsUnplugging = false;  // by an error message
    bool hangs = false;

    [[nodiscard]] GstCaps* allCaps() const;
};

// What the file that KESTRELID_TEST_CAMERA names says; empty where it is missing.
std::vector<CameraEntry> readControlFile();
std::optional<CameraEntry> findCamera(const std::string& name);

// Adds a line to the journal beside the control file.
void writeJournal(const std::string& line);

// The element kestreltestcamerasrc: live frames of the camera that its property `device` names.
GType testCameraSourceType();
inline constexpr const char* kSourceName = "kestreltestcamerasrc";

}  // namespace kestrelid::testcamera
