// The measures of every outline that the network's maps give, with its overlap with the known one:
// what the confidences are fitted to (training/calibrate.py). outline_features MANIFEST [RESOURCES]
// prints a tab-separated table.

#include "vision/onnx/OnnxRuntime.h"
#include "vision/outlines/MapOutlines.h"
#include "vision/outlines/OutlinePicture.h"
#include "vision/outlines/SideSharpener.h"

#include <kestrelid/ImageFile.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

namespace kestrelid::vision {
namespace {

// A line of a manifest.tsv as training/drawing writes it: file, kind, corners in pixels or "-".
struct Picture {
    explicit Picture(const std::string& line) {
        std::string kind;
        std::string quad;
        std::istringstream fields(line);
        std::getline(std::getline(std::getline(fields, name, '\t'), kind, '\t'), quad, '\t');
        std::array<cv::Point2d, 4> c;
        isKnown = std::sscanf(quad.c_str(), "%lf,%lf;%lf,%lf;%lf,%lf;%lf,%lf", &c[0].x, &c[0].y,
                              &c[1].x, &c[1].y, &c[2].x, &c[2].y, &c[3].x, &c[3].y) == 8;
        const auto [left, right] = std::minmax({c[0].x, c[1].x, c[2].x, c[3].x});
        const auto [top, bottom] = std::minmax({c[0].y, c[1].y, c[2].y, c[3].y});
        box = {left, top, right - left, bottom - top};
    }

    std::string name;
    bool isKnown = false;
    cv::Rect2d box;  // around the corners, in pixels
};

// In shares of a picture of that size.
cv::Rect2d shares(const cv::Rect2d& box, double width, double height) {
    return {box.x / width, box.y / height, box.width / width, box.height / height};
}

double overlap(const cv::Rect2d& a, const cv::Rect2d& b) {
    const double common = (a & b).area();
    return common / (a.area() + b.area() - common);
}

int print(const std::filesystem::path& manifest, const ResourceFolders& resources) {
    const auto runtime = OnnxRuntime::load(resources);
    const auto model = resources.find("outline-net.onnx");
    if (!runtime || !model) {
        std::fputs("ONNX Runtime or outline-net.onnx is missing\n", stderr);
        return 1;
    }
    std::ifstream pictures(manifest);
    std::string line;
    if (!std::getline(pictures, line) || !line.starts_with("file\tkind\tquad")) {
        std::fprintf(stderr, "%s: no list of pictures with the columns file, kind, quad\n",
                     manifest.c_str());
        return 1;
    }
    auto opened = (*runtime)->open(*model, 1);
    if (!opened) {
        std::fprintf(stderr, "%s: %s\n", model->c_str(), opened.error().description.c_str());
        return 1;
    }
    const OutlineNetwork network(*std::move(opened));
    std::puts("file\tinside\tfill\tcorners\tarea\toverlap");
    while (std::getline(pictures, line)) {
        const Picture picture(line);
        const ImageResult decoded = readImage(manifest.parent_path() / picture.name);
        if (!std::holds_alternative<Image>(decoded))
            continue;
        const Bitmap bitmap = *std::get<Image>(decoded).upright().bitmap();
        const cv::Mat small = outlinePicture(bitmap);
        const cv::Mat square = OutlineNetwork::squareOf(small);
        auto maps = network.look(square);
        if (maps)
            maps = network.lookAllWays(square, *maps, 1);  // as in doubt
        if (!maps) {
            std::fprintf(stderr, "%s: %s\n", picture.name.c_str(),
                         maps.error().description.c_str());
            return 1;
        }
        for (MapOutline found : outlinesOf(*maps)) {
            for (cv::Point2f& corner : found.quad)
                corner = {corner.x * static_cast<float>(small.cols),
                          corner.y * static_cast<float>(small.rows)};
            const cv::Rect2d box = shares(clippedBox(sharpened(small, found.quad), small.size()),
                                          small.cols, small.rows);
            const double met =
                picture.isKnown ? overlap(box, shares(picture.box, bitmap.width(), bitmap.height()))
                                : 0.0;
            std::printf("%s\t%.4f\t%.4f\t%.4f\t%.4f\t%.4f\n", picture.name.c_str(), found.inside,
                        found.fill, found.corners, box.area(), met);
        }
    }
    return 0;
}

}  // namespace
}  // namespace kestrelid::vision

int main(int argc, char** argv) {
    using kestrelid::vision::ResourceFolders;
    if (argc < 2 || argc > 3) {
        std::fputs("Usage: outline_features MANIFEST [RESOURCES]\n", stderr);
        return 2;
    }
    return kestrelid::vision::print(
        argv[1], argc == 3 ? ResourceFolders({argv[2]})
                           : ResourceFolders({KESTRELID_RESOURCES_DIR, KESTRELID_MODELS_DIR}));
}
