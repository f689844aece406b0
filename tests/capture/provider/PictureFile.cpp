#include "tests/capture/provider/PictureFile.h"

#include <fstream>
#include <iterator>
#include <png.h>
#include <turbojpeg.h>

namespace kestrelid::testcamera {
namespace {

using Bytes = std::vector<unsigned char>;

std::optional<Picture> readPng(const Bytes& file) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&image, file.data(), file.size()))
        return std::nullopt;
    image.format = PNG_FORMAT_RGB;
    Picture picture{int(image.width), int(image.height),
                    std::vector<std::uint8_t>(PNG_IMAGE_SIZE(image))};
    const png_color black{};
    if (!png_image_finish_read(&image, &black, picture.rgb.data(), 0, nullptr))
        return std::nullopt;
    return picture;
}

std::optional<Picture> readJpeg(const Bytes& file) {
    tjhandle reader = tjInitDecompress();
    std::optional<Picture> picture;
    int width = 0;
    int height = 0;
    int sampling = 0;
    int space = 0;
    if (tjDecompressHeader3(reader, file.data(), file.size(), &width, &height, &sampling, &space) ==
        0) {
        Picture read{width, height, std::vector<std::uint8_t>(std::size_t(3) * width * height)};
        if (tjDecompress2(reader, file.data(), file.size(), read.rgb.data(), width, 3 * width,
                          height, TJPF_RGB, 0) == 0)
            picture = std::move(read);
    }
    tjDestroy(reader);
    return picture;
}

}  // namespace

std::optional<Picture> readPicture(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    const Bytes file{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (auto picture = readPng(file))
        return picture;
    return readJpeg(file);
}

}  // namespace kestrelid::testcamera
