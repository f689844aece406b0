#include "vision/zone/NetworkZoneService.h"

#include "vision/SideBySide.h"
#include "vision/zone/ZoneSearch.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <atomic>
#include <exception>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace kestrelid::vision {
namespace {

constexpr int kShortestSide = 48;     // pixels; no zone of two lines fits into less
constexpr std::size_t kOutlines = 5;  // documents that are looked at by their outline
constexpr float kSureOutline = 0.9f;  // confidence from which hardly any has a corner misplaced
constexpr float kReadable = 0.8f;     // quality; below, names are wrong though digits pass
constexpr double kLeastPixels = 6.0;  // a character; below, one in seven is read wrongly

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

// Lines of which an end is hidden or cut off may pass for those of a shorter layout.
bool isReadable(const FoundZone& zone) {
    return zone.quality >= kReadable && parseZone(zone.reading).has_value();
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
    Found(const ZoneNetwork& network, const PictureLevels& picture, int threads)
        : network_(network), picture_(picture), threads_(threads) {}

    // The first view with a zone that can be read, and those before it. Views are looked at side by
    // side, where there are threads for it.
    std::optional<Failure> look(const std::vector<ZoneView>& views) {
        std::vector<std::optional<Expected<std::vector<FoundZone>>>> seen(views.size());
        std::atomic<std::size_t> end = views.size();
        sideBySide(views.size(), threads_, [&](std::size_t index) {
            if (index >= end)
                return;
            seen[index] = likelyZones(views[index]);
            if (*seen[index] && hasReadable(**seen[index])) {
                for (std::size_t known = end; index + 1 < known;)
                    end.compare_exchange_weak(known, index + 1);
            }
        });
        for (std::size_t index = 0; index < end; ++index) {
            auto& zones = *seen[index];
            if (!zones)
                return Failure(zones.error());
            for (FoundZone& zone : *zones)
                add(std::move(zone));
        }
        return std::nullopt;
    }

    [[nodiscard]] bool hasReadable() const { return hasReadable(zones_); }

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
    static bool hasReadable(const std::vector<FoundZone>& zones) {
        return std::ranges::any_of(zones, isReadable);
    }

    [[nodiscard]] Expected<std::vector<FoundZone>> likelyZones(const ZoneView& view) const {
        auto zones = searchZones(LineReader(network_, picture_, view), picture_);
        if (zones)
            std::erase_if(*zones, [](const FoundZone& zone) { return !isLikeAZone(zone.reading); });
        return zones;
    }

    void add(FoundZone zone) {
        const auto same = std::ranges::find_if(
            zones_, [&](const FoundZone& known) { return isSame(known.reading, zone.reading); });
        if (same == zones_.end())
            zones_.push_back(std::move(zone));
        else if (std::pair(isReadable(*same), same->quality) <
                 std::pair(isReadable(zone), zone.quality))
            *same = std::move(zone);
        std::ranges::stable_sort(
            zones_, [](const FoundZone& a, const FoundZone& b) { return a.quality > b.quality; });
    }

    const ZoneNetwork& network_;
    const PictureLevels& picture_;
    int threads_;
    std::vector<FoundZone> zones_;
};

}  // namespace

NetworkZoneService::NetworkZoneService(std::vector<std::filesystem::path> resources, int threads)
    : file_(std::move(resources), "zone-net.onnx"), threads_(std::max(threads, 1)) {}

NetworkZoneService::~NetworkZoneService() = default;

ServiceStatus NetworkZoneService::diagnose() const {
    return file_.diagnose("zone network", "no machine-readable zone is read");
}

ZoneResult NetworkZoneService::perform(const Bitmap& bitmap, const ZoneRequest& request) {
    try {
        const auto opened = file_.network();
        if (!opened)
            return opened.error();
        if (std::min(bitmap.width(), bitmap.height()) < kShortestSide)
            return std::vector<ZoneReading>();
        const PictureLevels picture(bitmap);
        Found found(**opened, picture, threads_);
        const auto count = std::min(request.outlines.size(), kOutlines);
        for (const RectangleObservation& outline : std::span(request.outlines).first(count)) {
            if (auto error = found.look(viewsOfOutline(outline, picture.size())))
                return error->value();
        }
        if (count > 0 && request.outlines.front().confidence < kSureOutline &&
            !found.hasReadable()) {
            const auto views = viewsAroundOutline(request.outlines.front(), picture.size());
            if (auto error = found.look(views))
                return error->value();
        }
        if (!found.hasReadable()) {
            if (auto error = found.look(viewsOfPicture(picture, threads_)))
                return error->value();
        }
        return found.take();
    } catch (const std::exception& error) {
        return requestFailed("Reading the machine-readable zone failed", error.what());
    }
}

}  // namespace kestrelid::vision
