#pragma once

#include <kestrelid/Bitmap.h>

#include <filesystem>

namespace kestrelid::test {

// A folder that is removed with its files.
class TemporaryFolder {
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    [[nodiscard]] std::filesystem::path operator/(const char* name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

// A drawing with detail everywhere; its top left quarter is red.
[[nodiscard]] Bitmap drawing(int width, int height);

// Whether a pixel of that part of the bitmap, 0..1 from the top left, is about red.
[[nodiscard]] bool isRed(const Bitmap& bitmap, double x, double y);

// A motion JPEG film of that many frames of 320x240, 30 a second.
void writeFilm(const std::filesystem::path& path, int frames);

}  // namespace kestrelid::test
