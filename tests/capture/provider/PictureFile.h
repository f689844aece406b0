#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestrelid::testcamera {

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;  // rows without padding
};

// A PNG or JPEG file, its orientation ignored.
std::optional<Picture> readPicture(const std::string& path);

}  // namespace kestrelid::testcamera
