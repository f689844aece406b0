#include "vision/zone/NetworkZoneService.h"

#include "vision/onnx/OnnxRuntime.h"
#include "vision/zone/ZoneSearch.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <exception>
#include <span>
#include <string>
#include <utility>

namespace kestrelid::vision {
namespace {

constexpr const char* kModelName = "zone-net.onnx";
constexpr int kShortestSide = 48;     // pixels; no zone of two lines fits into less
constexpr std::size_t kOutlines = 5;  // documents that are looked at by their outline
constexpr float kReadable = 0.8f;     // quality; below, names are wrong though digits pass
constexpr double kLeastPixels = 6.0;  // a character; below, one in seven is read wrongly

Expected<std::shared_ptr<const ZoneNetwork>> openNetwork(const ResourceFolders& resources,
                                                         int threads) {
    const auto path = resources.find(kModelName);
    if (!path)
        return failure(resources.missing(kModelName));
    const auto runtime = OnnxRuntime::load(resources);
    if (!runtime)
        return Failure(runtime.error());
    auto session = (*runtime)->open(*path, threads);
    if (!session)
        return Failure(session.error());
    return std::make_shared<const ZoneNetwork>(*std::move(session));
}

// Print of another kind is read as a few letters here and there: a zone has fillers in each line,
// or digits in most places.
bool isLikeAZone(const ZoneReading& reading) {
    constexpr int kLeastTelling = 7;  // fillers and digits in a line
    return std::ranges::all_of(reading.lines, [](const ZoneLineReading& line) {
        return std::ranges::count_if(line.characters, [](const ZoneCharacter& character) {
                   const ZoneCharacter::Choice& best = character.choices[0];
                   return best.probability > 0.5f &&
                          !(best.character >= 'A' && best.character <= 'Z');
               }) >= kLeastTelling;
    });
}

bool isSame(const ZoneReading& a, const ZoneReading& b) {
    const auto corners = [](const ZoneReading& zone) {
        std::vector<cv::Point2f> points;
        for (const ZoneLineReading& line : zone.lines) {
            for (const NormalizedPoint& corner : line.corners)
                points.emplace_back(static_cast<float>(corner.x), static_cast<float>(corner.y));
        }
        std::vector<cv::Point2f> hull;
        cv::convexHull(points, hull);
        return hull;
    };
    std::vector<cv::Point2f> shared;
    return cv::intersectConvexConvex(corners(a), corners(b), shared) > 0.0f;
}

// The zones of several looks, each once.
class Found {
public:
    Found(const ZoneNetwork& network, const PictureLevels& picture)
        : network_(network), picture_(picture) {}

    // Until a view shows a zone that can be read.
    std::optional<Failure> look(std::span<const ZoneView> views) {
        for (const ZoneView& view : views) {
            const LineReader reader(network_, picture_, view);
            auto zones = searchZones(reader, picture_);
            if (!zones)
                return Failure(zones.error());
            bool isReadable = false;
            for (FoundZone& zone : *zones) {
                if (!isLikeAZone(zone.reading))
                    continue;
                isReadable = isReadable || zone.quality >= kReadable;
                add(std::move(zone));
            }
            if (isReadable)
                break;
        }
        return std::nullopt;
    }

    [[nodiscard]] bool hasReadable() const {
        return std::ranges::any_of(zones_,
                                   [](const FoundZone& zone) { return zone.quality >= kReadable; });
    }

    std::vector<ZoneReading> take() {
        std::vector<ZoneReading> readings;
        for (FoundZone& zone : zones_) {
            if (zone.reading.pixelsPerCharacter < kLeastPixels)
                zone.reading.legibility = ZoneReading::Legibility::tooSmall;
            else if (zone.quality < kReadable)
                zone.reading.legibility = ZoneReading::Legibility::blurred;
            readings.push_back(std::move(zone.reading));
        }
        std::ranges::stable_sort(readings, [](const ZoneReading& a, const ZoneReading& b) {
            return a.lines.front().corners[0].y > b.lines.front().corners[0].y;
        });
        return readings;
    }

private:
    void add(FoundZone zone) {
        const auto same = std::ranges::find_if(
            zones_, [&](const FoundZone& known) { return isSame(known.reading, zone.reading); });
        if (same == zones_.end())
            zones_.push_back(std::move(zone));
        else if (same->quality < zone.quality)
            *same = std::move(zone);
        std::ranges::stable_sort(
            zones_, [](const FoundZone& a, const FoundZone& b) { return a.quality > b.quality; });
    }

    const ZoneNetwork& network_;
    const PictureLevels& picture_;
    std::vector<FoundZone> zones_;
};

}  // namespace

NetworkZoneService::NetworkZoneService(std::vector<std::filesystem::path> resources, int threads)
    : resources_(std::move(resources)), threads_(std::max(threads, 1)) {}

NetworkZoneService::~NetworkZoneService() = default;

Expected<std::shared_ptr<const ZoneNetwork>> NetworkZoneService::network() {
    const std::scoped_lock lock(loading_);
    if (!network_) {
        auto opened = openNetwork(resources_, threads_);
        if (!opened)
            return opened;
        network_ = *std::move(opened);
    }
    return network_;
}

ServiceStatus NetworkZoneService::diagnose() const {
    const std::string name = "zone network";
    const auto opened = openNetwork(resources_, 1);
    if (!opened)
        return {name, false, opened.error().description + "; no machine-readable zone is read"};
    return {name, true, resources_.find(kModelName)->string()};
}

ZoneResult NetworkZoneService::perform(const Bitmap& bitmap, const ZoneRequest& request) {
    try {
        const auto opened = network();
        if (!opened)
            return opened.error();
        if (std::min(bitmap.width(), bitmap.height()) < kShortestSide)
            return std::vector<ZoneReading>();
        const PictureLevels picture(bitmap);
        Found found(**opened, picture);
        const auto count = std::min(request.outlines.size(), kOutlines);
        for (const RectangleObservation& outline : std::span(request.outlines).first(count)) {
            if (auto error = found.look(viewsOfOutline(outline, picture.size())))
                return error->value();
        }
        if (!found.hasReadable()) {
            if (auto error = found.look(viewsOfPicture(picture)))
                return error->value();
        }
        return found.take();
    } catch (const std::exception& error) {
        return requestFailed("Reading the machine-readable zone failed", error.what());
    }
}

}  // namespace kestrelid::vision
