#include "vision/outlines/OpenCvRectangleService.h"

#include "vision/onnx/Failure.h"
#include "vision/outlines/ClassicalOutlineFinder.h"
#include "vision/outlines/FullPageFinder.h"
#include "vision/outlines/OutlineFinder.h"
#include "vision/outlines/OutlineSelection.h"
#include "vision/outlines/PrintBlockFinder.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <utility>
#include <vector>

namespace kestrelid::vision {

namespace {

constexpr int kLongestSide = 512;  // pixels; less loses the thin sides of far pages
constexpr int kShortestSide = 24;  // pixels; below this no page can be told from noise

RectangleObservation observationOf(const OutlineCandidate& candidate, cv::Size size) {
    const double width = size.width;
    const double height = size.height;
    RectangleObservation observation;
    double left = 1.0;
    double right = 0.0;
    double top = 0.0;
    double bottom = 1.0;
    for (std::size_t i = 0; i < 4; ++i) {
        const double x = std::clamp(candidate.quad[i].x / width, 0.0, 1.0);
        const double y = std::clamp(1.0 - candidate.quad[i].y / height, 0.0, 1.0);
        observation.corners[i] = {x, y};
        left = std::min(left, x);
        right = std::max(right, x);
        bottom = std::min(bottom, y);
        top = std::max(top, y);
    }
    observation.boundingBox = {left, bottom, right - left, top - bottom};
    observation.confidence = static_cast<float>(candidate.confidence);
    return observation;
}

std::vector<OutlineCandidate> findOutlines(const Bitmap& bitmap, const RectangleRequest& request,
                                           cv::Size& size) {
    const WorkingPicture picture = makeWorkingPicture(bitmap, kLongestSide);
    size = picture.size();
    if (std::min(size.width, size.height) < kShortestSide) {
        return {};
    }
    const Scene scene{
        .picture = picture, .edges = makeEdgeField(picture), .text = findTextLayout(picture)};
    const auto ask = [&](const std::vector<std::unique_ptr<const OutlineFinder>>& finders) {
        std::vector<OutlineCandidate> candidates;
        for (const auto& finder : finders) {
            const auto found = finder->find(scene);
            candidates.insert(candidates.end(), found.begin(), found.end());
        }
        return selectOutlines(std::move(candidates), request);
    };
    std::vector<std::unique_ptr<const OutlineFinder>> finders;
    finders.push_back(std::make_unique<ClassicalOutlineFinder>());
    finders.push_back(std::make_unique<FullPageFinder>());
    std::vector<OutlineCandidate> outlines = ask(finders);
    if (outlines.empty()) {
        finders.clear();
        finders.push_back(std::make_unique<PrintBlockFinder>());
        outlines = ask(finders);
    }
    return outlines;
}

}  // namespace

RectangleResult OpenCvRectangleService::perform(const Bitmap& bitmap,
                                                const RectangleRequest& request) {
    try {
        cv::Size size;
        std::vector<RectangleObservation> observations;
        for (const OutlineCandidate& candidate : findOutlines(bitmap, request, size)) {
            observations.push_back(observationOf(candidate, size));
        }
        return observations;
    } catch (const cv::Exception& error) {
        // The message alone: what() adds the place in OpenCV.
        return requestFailed("OpenCV failed to look for a rectangle", error.err);
    } catch (const std::exception& error) {
        return requestFailed("Looking for a rectangle failed", error.what());
    }
}

}  // namespace kestrelid::vision
