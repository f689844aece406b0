#include "vision/outlines/NetworkRectangleService.h"

#include "vision/outlines/OutlineConfidence.h"
#include "vision/outlines/OutlineNetwork.h"
#include "vision/outlines/OutlinePicture.h"
#include "vision/outlines/SideSharpener.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace kestrelid::vision {
namespace {

constexpr int kShortestSide = 24;     // pixels; below this no page can be told from noise
constexpr double kSameOutline = 0.5;  // overlap from which two are one
constexpr float kAround = 0.25;       // of a box, on each side: what a closer look shows with it
constexpr double kWorthwhile = 0.75;  // of the picture: what a closer look shows at most
constexpr double kBorder = 0.02;      // of the picture: nearer sides are taken for its border
constexpr double kMargin = 0.001;     // of a box: what it is grown by on each side

// A page that almost fills the picture loses nothing by filling it, while print at its rim may be
// cut; for the same reason boxes get a small margin.
double ontoBorder(double share) {
    return share < kBorder ? 0.0 : share > 1.0 - kBorder ? 1.0 : share;
}

RectangleObservation observationOf(const WeighedOutline& found, cv::Size size) {
    RectangleObservation observation;
    double left = 1.0;
    double right = 0.0;
    double top = 0.0;
    double bottom = 1.0;
    for (std::size_t i = 0; i < 4; ++i) {
        const double x = ontoBorder(static_cast<double>(found.quad[i].x) / size.width);
        const double y = ontoBorder(1.0 - static_cast<double>(found.quad[i].y) / size.height);
        observation.corners[i] = {x, y};
        left = std::min(left, x);
        right = std::max(right, x);
        bottom = std::min(bottom, y);
        top = std::max(top, y);
    }
    const double x = kMargin * (right - left);
    const double y = kMargin * (top - bottom);
    left = std::max(left - x, 0.0);
    right = std::min(right + x, 1.0);
    bottom = std::max(bottom - y, 0.0);
    top = std::min(top + y, 1.0);
    observation.boundingBox = {left, bottom, right - left, top - bottom};
    observation.confidence = static_cast<float>(found.confidence);
    return observation;
}

// What the network saw, most confident first, no two of one document, corners in pixels of the
// picture.
std::vector<WeighedOutline> seenIn(const OutlineMaps& maps, cv::Size size,
                                   const RectangleRequest& request) {
    auto all = weighed(outlinesOf(maps));
    std::ranges::stable_sort(all, std::greater{}, &WeighedOutline::confidence);
    std::vector<WeighedOutline> seen;
    for (WeighedOutline& outline : all) {
        for (cv::Point2f& corner : outline.quad)
            corner = {corner.x * static_cast<float>(size.width),
                      corner.y * static_cast<float>(size.height)};
        const double aspect = aspectRatio(outline.quad);
        if (aspect >= static_cast<double>(request.minimumAspectRatio) &&
            aspect <= static_cast<double>(request.maximumAspectRatio) &&
            std::ranges::none_of(seen, [&](const WeighedOutline& other) {
                return overlap(outline.quad, other.quad) > kSameOutline;
            }))
            seen.push_back(outline);
    }
    return seen;
}

// What is around a box, as far as the picture shows it.
cv::Rect surroundings(const cv::Rect2f& box, cv::Size picture) {
    const cv::Size2f beyond = box.size() * kAround;
    const cv::Rect2f wide(box.tl() - cv::Point2f(beyond), box.size() + beyond + beyond);
    return cv::Rect(cv::Point(wide.tl()), cv::Point(wide.br())) & cv::Rect({}, picture);
}

// The outline as a look at its surroundings alone shows it, which has more pixels of it. far
// itself, if that look would show little more, or shows no such outline.
Expected<Quad> closer(const OutlineNetwork& net, const cv::Mat& picture, const Quad& far,
                      const RectangleRequest& request) {
    const cv::Rect2f box = clippedBox(far, picture.size());
    const cv::Rect part = surroundings(box, picture.size());
    if (part.area() > kWorthwhile * picture.size().area() ||
        std::min(part.width, part.height) < kShortestSide)
        return far;
    const auto maps = net.look(OutlineNetwork::squareOf(picture(part)));
    if (!maps)
        return Failure(maps.error());
    Quad same = far;
    double most = kSameOutline;
    for (const WeighedOutline& outline : seenIn(*maps, part.size(), request)) {
        Quad near = outline.quad;
        for (cv::Point2f& corner : near)
            corner += cv::Point2f(part.tl());
        if (const double shared = overlap(near, far); shared > most) {
            most = shared;
            same = near;
        }
    }
    return same;
}

}  // namespace

NetworkRectangleService::NetworkRectangleService(std::vector<std::filesystem::path> resources,
                                                 int threads)
    : file_(std::move(resources), "outline-net.onnx"), threads_(std::max(threads, 1)) {}

NetworkRectangleService::~NetworkRectangleService() = default;

ServiceStatus NetworkRectangleService::diagnose() const {
    return file_.diagnose("outline network", "no outline is found");
}

RectangleResult NetworkRectangleService::perform(const Bitmap& bitmap,
                                                 const RectangleRequest& request) {
    try {
        const auto opened = file_.network();
        if (!opened)
            return opened.error();
        const OutlineNetwork& net = **opened;
        std::vector<RectangleObservation> found;
        if (std::min(bitmap.width(), bitmap.height()) >= kShortestSide) {
            const cv::Mat picture = outlinePicture(bitmap);
            const cv::Mat square = OutlineNetwork::squareOf(picture);
            auto maps = net.look(square);
            if (!maps)
                return maps.error();
            auto seen = seenIn(*maps, picture.size(), request);
            if (leavesDoubt(seen, picture.size())) {
                maps = net.lookAllWays(square, *maps, threads_);
                if (!maps)
                    return maps.error();
                seen = seenIn(*maps, picture.size(), request);
            }
            for (WeighedOutline& candidate : seen) {
                if (candidate.confidence < static_cast<double>(request.minimumConfidence) ||
                    static_cast<int>(found.size()) >= request.maximumObservations)
                    break;
                const auto quad = closer(net, picture, candidate.quad, request);
                if (!quad)
                    return quad.error();
                candidate.quad = sharpened(picture, *quad);
                found.push_back(observationOf(candidate, picture.size()));
            }
        }
        return found;
    } catch (const std::exception& error) {
        return requestFailed("Looking for a rectangle failed", error.what());
    }
}

}  // namespace kestrelid::vision
