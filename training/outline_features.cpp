// The measures of every outline that the network's maps give, with its overlap with the known one:
// what the confidences are fitted to (training/calibrate.py). outline_features MANIFEST [RESOURCES]
// prints a tab-separated table.

#include "apps/evaluate/EvaluationManifest.h"
#include "apps/evaluate/Statistics.h"
#include "vision/onnx/OnnxRuntime.h"
#include "vision/outlines/MapOutlines.h"
#include "vision/outlines/OutlinePicture.h"
#include "vision/outlines/SideSharpener.h"

#include <kestrelid/ImageFile.h>

#include <cstdio>

namespace kestrelid::vision {
namespace {

NormalizedRect boxOf(const Quad& quad, cv::Size size) {
    const cv::Rect2d box = clippedBox(quad, size);
    return {box.x / size.width, 1.0 - box.br().y / size.height, box.width / size.width,
            box.height / size.height};
}

int print(const std::filesystem::path& manifest, const ResourceFolders& resources) {
    const auto runtime = OnnxRuntime::load(resources);
    const auto model = resources.find("outline-net.onnx");
    const auto pictures = evaluation::readManifest(manifest);
    if (!runtime || !model) {
        std::fputs("ONNX Runtime or outline-net.onnx is missing\n", stderr);
        return 1;
    }
    if (const auto* error = std::get_if<evaluation::ManifestError>(&pictures)) {
        std::fprintf(stderr, "%s:%zu: %s\n", manifest.c_str(), error->line, error->cause.c_str());
        return 1;
    }
    auto opened = (*runtime)->open(*model, 1);
    if (!opened) {
        std::fprintf(stderr, "%s: %s\n", model->c_str(), opened.error().description.c_str());
        return 1;
    }
    const OutlineNetwork network(*std::move(opened));
    std::puts("file\tinside\tfill\tcorners\tarea\toverlap");
    for (const auto& picture : std::get<std::vector<evaluation::LabelledPicture>>(pictures)) {
        const ImageResult decoded = readImage(picture.file);
        if (!std::holds_alternative<Image>(decoded))
            continue;
        const Bitmap bitmap = *std::get<Image>(decoded).upright().bitmap();
        const cv::Mat small = outlinePicture(bitmap);
        auto maps = network.look(small);
        if (maps)
            maps = network.lookAllWays(small, *maps);  // as in doubt
        if (!maps) {
            std::fprintf(stderr, "%s: %s\n", picture.name.c_str(),
                         maps.error().description.c_str());
            return 1;
        }
        for (MapOutline found : outlinesOf(*maps)) {
            for (cv::Point2f& corner : found.quad)
                corner = {corner.x * static_cast<float>(small.cols),
                          corner.y * static_cast<float>(small.rows)};
            const NormalizedRect box = boxOf(sharpened(small, found.quad), small.size());
            const double met =
                picture.quad
                    ? evaluation::overlap(box, evaluation::normalizedBox(
                                                   *picture.quad, bitmap.width(), bitmap.height()))
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
