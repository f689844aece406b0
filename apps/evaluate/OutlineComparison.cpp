#include "apps/evaluate/OutlineComparison.h"

#include "apps/evaluate/Statistics.h"

#include "apps/cli/OutlineRecorder.h"

#include <kestrelid/ImageFile.h>

#include <opencv2/core.hpp>

#include <chrono>

namespace kestrelid::evaluation {
namespace {

OutlineRow measured(const PlatformServices& services, const LabelledPicture& picture) {
    OutlineRow row;
    const ImageResult decoded = readImage(picture.file);
    if (const auto* error = std::get_if<ImageError>(&decoded)) {
        row.error = error->cause;
        return row;
    }
    const Image image = std::get<Image>(decoded).upright();
    if (!image.bitmap())
        return row;
    cli::OutlineRecorder recorder(services.rectangles);
    const auto start = std::chrono::steady_clock::now();
    const RectangleResult result = recorder.perform(*image.bitmap(), {});
    if (const auto* error = std::get_if<RequestError>(&result))
        row.error = error->description;
    const std::chrono::duration<double, std::milli> taken =
        std::chrono::steady_clock::now() - start;
    row.milliseconds = taken.count();
    const std::vector<RectangleObservation> found = recorder.take();
    const auto chosen = cli::chosenOutline(found);
    row.largest = chosen ? chosen->boundingBox.area() : 0.0;
    if (picture.quad) {
        const NormalizedRect truth =
            normalizedBox(*picture.quad, image.bitmap()->width(), image.bitmap()->height());
        row.overlap = chosen ? overlap(truth, chosen->boundingBox) : 0.0;
    }
    return row;
}

}  // namespace

OutlineMeasurement measureOutlines(const std::vector<LabelledPicture>& pictures,
                                   OutlineFinder finder, const MeasureOptions& options) {
    cv::setNumThreads(1);
    const PlatformServices services =
        defaultServices({.resources = options.resources, .outlines = finder});
    OutlineMeasurement measurement{finder, {}};
    for (const LabelledPicture& picture : pictures) {
        // The first request loads the network.
        if (measurement.rows.empty())
            (void)measured(services, picture);
        measurement.rows.push_back(measured(services, picture));
    }
    return measurement;
}

}  // namespace kestrelid::evaluation
