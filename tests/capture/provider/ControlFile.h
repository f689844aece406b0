#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kestrelid::testcamera {

enum class Failure : std::uint8_t { none, open, busy, start };

// One camera of the control file; README.md has the language.
struct CameraEntry {
    std::string name;
    std::vector<std::string> caps;
    std::vector<std::pair<std::string, std::string>> properties;
    std::string picture;
    Failure failure = Failure::none;
    std::optional<std::uint64_t> stallAfter;  // frames since it was opened
    std::optional<std::uint64_t> errorAfter;
    bool isUnplugged = false;
    bool tellsUnplugging = false;  // by an error message
};

// Empty where the file is missing.
std::vector<CameraEntry> readControlFile(const std::string& path);

std::optional<CameraEntry> findCamera(const std::string& path, const std::string& name);

// Adds a line to the journal beside the control file.
void writeJournal(const std::string& path, const std::string& line);

}  // namespace kestrelid::testcamera
