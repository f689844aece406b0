#include "vision/outlines/NetworkRectangleService.h"

#include "vision/onnx/OnnxRuntime.h"
#include "vision/outlines/OutlineConfidence.h"
#include "vision/outlines/OutlineNetwork.h"
#include "vision/outlines/OutlinePicture.h"
#include "vision/outlines/SideSharpener.h"

#include <algorithm>
#include <exception>
#include <string>
#include <utility>

namespace kestrelid::vision {
namespace {

constexpr const char* kModelName = "outline-net.onnx";
constexpr int kShortestSide = 24;     // pixels; below this no page can be told from noise
constexpr double kSameOutline = 0.5;  // overlap from which two are one
constexpr double kBorder = 0.02;      // of the picture: nearer sides are taken for its border
constexpr double kMargin = 0.005;     // of a box: what it is grown by on each side

struct Opened {
    std::shared_ptr<const OutlineNetwork> network;
    ServiceStatus status;
};

Opened openNetwork(const ResourceFolders& resources) {
    const std::string name = "outline network";
    const std::string without = "; outlines come from the classical finder alone";
    const auto path = resources.find(kModelName);
    if (!path)
        return {nullptr, {name, false, resources.missing(kModelName) + without}};
    const auto runtime = OnnxRuntime::load(resources);
    auto session = runtime.and_then(
        [&](const auto& onnx) -> Expected<OnnxSession> { return onnx->open(*path, 1); });
    if (!session)
        return {nullptr, {name, false, session.error().description + without}};
    return {std::make_shared<const OutlineNetwork>(*std::move(session)),
            {name, true, path->string()}};
}

double overlap(const NormalizedRect& a, const NormalizedRect& b) {
    const double width = std::min(a.x + a.width, b.x + b.width) - std::max(a.x, b.x);
    const double height = std::min(a.y + a.height, b.y + b.height) - std::max(a.y, b.y);
    const double shared = std::max(width, 0.0) * std::max(height, 0.0);
    return shared / std::max(a.area() + b.area() - shared, 1e-9);
}

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
// picture; none where it could not look.
std::optional<std::vector<WeighedOutline>> seenIn(const OutlineNetwork::Maps& maps, cv::Size size,
                                                  const RectangleRequest& request) {
    if (!maps)
        return std::nullopt;
    auto all = weighed(outlinesOf(*maps));
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
                return vision::overlap(outline.quad, other.quad) > kSameOutline;
            }))
            seen.push_back(outline);
    }
    return seen;
}

// Adds what others found; of two that are one outline the more confident stays.
void addOthers(RectangleService& service, const Bitmap& bitmap, const RectangleRequest& request,
               std::vector<RectangleObservation>& found) {
    const RectangleResult result = service.perform(bitmap, request);
    const auto* others = std::get_if<std::vector<RectangleObservation>>(&result);
    if (!others)
        return;  // the other finder's failure is no reason to give up what the network saw
    for (const RectangleObservation& other : *others) {
        const auto same = std::ranges::find_if(found, [&](const RectangleObservation& known) {
            return overlap(known.boundingBox, other.boundingBox) > kSameOutline;
        });
        if (same == found.end())
            found.push_back(other);
        else if (other.confidence > same->confidence)
            *same = other;
    }
}

}  // namespace

NetworkRectangleService::NetworkRectangleService(std::vector<std::filesystem::path> resources,
                                                 std::shared_ptr<RectangleService> other,
                                                 OutlineMixture mixture)
    : resources_(std::move(resources)), other_(std::move(other)), mixture_(mixture) {}

NetworkRectangleService::~NetworkRectangleService() = default;

std::shared_ptr<const OutlineNetwork> NetworkRectangleService::network() {
    const std::scoped_lock lock(loading_);
    if (!network_)
        network_ = openNetwork(resources_).network;
    return network_;
}

ServiceStatus NetworkRectangleService::diagnose() const {
    return openNetwork(resources_).status;
}

RectangleResult NetworkRectangleService::perform(const Bitmap& bitmap,
                                                 const RectangleRequest& request) {
    try {
        const auto net = network();
        if (!net)
            return other_->perform(bitmap, request);
        std::vector<RectangleObservation> found;
        if (std::min(bitmap.width(), bitmap.height()) >= kShortestSide) {
            const cv::Mat picture = outlinePicture(bitmap);
            const auto first = net->look(picture);
            auto seen = seenIn(first, picture.size(), request);
            if (seen && leavesDoubt(*seen, picture.size()))
                seen = seenIn(net->lookAllWays(picture, *first), picture.size(), request);
            if (!seen)
                return other_->perform(bitmap, request);
            for (WeighedOutline& candidate : *seen) {
                if (candidate.confidence < static_cast<double>(request.minimumConfidence))
                    break;
                candidate.quad = sharpened(picture, candidate.quad);
                found.push_back(observationOf(candidate, picture.size()));
            }
            if (mixture_ == OutlineMixture::doubtful && isUncertain(*seen))
                addOthers(*other_, bitmap, request, found);
        }
        std::ranges::stable_sort(found, std::greater{}, &RectangleObservation::confidence);
        if (static_cast<int>(found.size()) > request.maximumObservations)
            found.resize(static_cast<std::size_t>(std::max(request.maximumObservations, 0)));
        return found;
    } catch (const std::exception& error) {
        return requestFailed("Looking for a rectangle failed", error.what());
    }
}

}  // namespace kestrelid::vision
