#include "vision/outlines/StraightLines.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numbers>

namespace kestrelid::vision {

namespace {

constexpr int kAngleBins = 180;  // one degree each
constexpr int kVoteSpread = 2;   // bins to either side of an edge point's own direction
constexpr int kSector = 20;      // bins
constexpr std::size_t kMostPeaks = 110;
constexpr std::size_t kMostLines = 44;
// Grain and rows of print must not crowd out other directions.
constexpr int kMostPeaksPerSector = 25;
constexpr int kMostLinesPerSector = 10;
constexpr float kBorderSupport = 0.6f;  // a page may end there, or not

using PerSector = std::array<int, kAngleBins / kSector>;

cv::Point2f perpendicular(cv::Point2f vector) {
    return {-vector.y, vector.x};
}

// Each edge point votes only for lines along its own edge: sharper peaks than every direction would
// give, and cheaper.
struct Votes {
    Votes(const EdgeField& field, cv::Point2f centre)
        : reach(static_cast<int>(std::ceil(std::hypot(centre.x, centre.y))) + 2),
          cells(kAngleBins, 2 * reach + 1, 0.0f) {
        for (int bin = 0; bin < kAngleBins; ++bin) {
            const double angle = bin * std::numbers::pi / kAngleBins;
            normals[static_cast<std::size_t>(bin)] = {static_cast<float>(std::cos(angle)),
                                                      static_cast<float>(std::sin(angle))};
        }
        for (const EdgePoint& point : field.points) {
            const double angle = std::atan2(point.normal.y, point.normal.x);
            const int own = cvRound(angle * kAngleBins / std::numbers::pi);
            for (int spread = -kVoteSpread; spread <= kVoteSpread; ++spread) {
                const int bin = (own + spread + 2 * kAngleBins) % kAngleBins;
                const float distance =
                    (point.position - centre).dot(normals[static_cast<std::size_t>(bin)]);
                cells(bin, cvRound(distance) + reach) += std::min(point.strength, 1.5f);
            }
        }
    }

    int reach;
    cv::Mat1f cells;  // row: angle of the normal; column: distance from the centre + reach
    std::array<cv::Point2f, kAngleBins> normals;
};

struct Peak {
    int angle;
    int distance;
    float votes;
};

bool areNear(const Peak& a, const Peak& b) {
    int angle = std::abs(a.angle - b.angle);
    int other = b.distance;
    if (angle > kAngleBins / 2) {
        angle = kAngleBins - angle;
        other = -other;
    }
    return angle <= 5 && std::abs(a.distance - other) <= 5;
}

std::vector<Peak> peaksOf(const Votes& votes, float least) {
    std::vector<Peak> candidates;
    for (int angle = 0; angle < kAngleBins; ++angle) {
        const float* row = votes.cells[angle];
        for (int column = 1; column + 1 < votes.cells.cols; ++column) {
            // A line that lies between two columns votes in both.
            const float sum = row[column] + 0.5f * (row[column - 1] + row[column + 1]);
            if (sum >= least && row[column] >= row[column - 1] && row[column] >= row[column + 1]) {
                candidates.push_back({angle, column - votes.reach, sum});
            }
        }
    }
    std::ranges::stable_sort(candidates, std::greater{}, &Peak::votes);
    std::vector<Peak> peaks;
    PerSector perSector{};
    for (const Peak& candidate : candidates) {
        int& used = perSector[static_cast<std::size_t>(candidate.angle / kSector)];
        if (used < kMostPeaksPerSector && std::ranges::none_of(peaks, [&](const Peak& peak) {
                return areNear(peak, candidate);
            })) {
            ++used;
            peaks.push_back(candidate);
            if (peaks.size() == kMostPeaks) {
                break;
            }
        }
    }
    return peaks;
}

// The straight line through the edge points close to a peak's line.
StraightLine fitted(const EdgeField& field, cv::Point2f centre, cv::Point2f normal,
                    float distance) {
    double weight = 0.0;
    cv::Point2d mean;
    double xx = 0.0;
    double xy = 0.0;
    double yy = 0.0;
    for (const EdgePoint& point : field.points) {
        const cv::Point2f from = point.position - centre;
        if (std::abs(from.dot(normal) - distance) < 3.0f &&
            std::abs(point.normal.dot(normal)) > 0.97f) {
            const double w = std::min(point.strength, 1.5f);
            weight += w;
            mean += cv::Point2d(from) * w;
            xx += w * from.x * from.x;
            xy += w * from.x * from.y;
            yy += w * from.y * from.y;
        }
    }
    cv::Point2f direction = perpendicular(normal);
    cv::Point2f through = normal * distance;
    if (weight > 0.0) {
        mean *= 1.0 / weight;
        xx = xx / weight - mean.x * mean.x;
        xy = xy / weight - mean.x * mean.y;
        yy = yy / weight - mean.y * mean.y;
        const double angle = 0.5 * std::atan2(2.0 * xy, xx - yy);
        direction = {static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle))};
        through = cv::Point2f(mean);
    }
    const cv::Point2f across = perpendicular(direction);
    return {.point = centre + across * through.dot(across),
            .direction = direction,
            .summed = {},
            .longestRun = 0};
}

// Walks the line through the picture and sums up what the field shows of it.
bool measureSupport(const EdgeField& field, StraightLine& line) {
    const cv::Size size = field.gradient.size();
    float enter = -1e6f;
    float leave = 1e6f;
    const auto clip = [&](float position, float step, float end) {
        if (std::abs(step) < 1e-6f) {
            return position >= 0.0f && position <= end;
        }
        const float a = -position / step;
        const float b = (end - position) / step;
        enter = std::max(enter, std::min(a, b));
        leave = std::min(leave, std::max(a, b));
        return true;
    };
    if (!clip(line.point.x, line.direction.x, static_cast<float>(size.width - 1)) ||
        !clip(line.point.y, line.direction.y, static_cast<float>(size.height - 1)) ||
        leave - enter < 8.0f) {
        return false;
    }
    line.first = enter;
    line.summed.assign(1, 0.0f);
    const cv::Point2f normal = perpendicular(line.direction);
    int run = 0;
    int gap = 0;
    for (float along = enter; along <= leave; along += 1.0f) {
        const float support = line.border
                                  ? kBorderSupport
                                  : lineSupport(field, line.point + line.direction * along, normal);
        line.summed.push_back(line.summed.back() + support);
        constexpr int kWidestGap = 3;
        if (support > 0.5f) {
            gap = 0;
            line.longestRun = std::max(line.longestRun, ++run);
        } else if (++gap > kWidestGap) {
            run = 0;
        }
    }
    return true;
}

}  // namespace

float StraightLine::supportBetween(float from, float to) const {
    const float low = std::min(from, to);
    const float high = std::max(from, to);
    const auto last = static_cast<float>(summed.size() - 1);
    const float a = std::clamp(low - first, 0.0f, last);
    const float b = std::clamp(high - first, 0.0f, last);
    if (b - a < 0.5f * (high - low) || b - a < 6.0f) {
        return 0.0f;
    }
    const auto at = [&](float place) { return summed[static_cast<std::size_t>(place)]; };
    return (at(b) - at(a)) / std::max(1.0f, std::floor(b) - std::floor(a));
}

std::vector<StraightLine> findStraightLines(const EdgeField& field) {
    const cv::Size size = field.gradient.size();
    const cv::Point2f centre(0.5f * static_cast<float>(size.width - 1),
                             0.5f * static_cast<float>(size.height - 1));
    const Votes votes(field, centre);
    const float least = 0.12f * static_cast<float>(std::min(size.width, size.height));
    std::vector<StraightLine> lines;
    for (const Peak& peak : peaksOf(votes, least)) {
        StraightLine line =
            fitted(field, centre, votes.normals[static_cast<std::size_t>(peak.angle)],
                   static_cast<float>(peak.distance));
        if (measureSupport(field, line)) {
            lines.push_back(std::move(line));
        }
    }
    // A page's side is continuous, keys and grain are broken up. So of many lines those with the
    // longest runs stay.
    std::ranges::stable_sort(lines, std::greater{}, &StraightLine::longestRun);
    PerSector perSector{};
    std::erase_if(lines, [&](const StraightLine& line) {
        const double degrees = std::atan2(line.direction.y, line.direction.x) * 180.0 / CV_PI;
        const auto sector =
            static_cast<std::size_t>((static_cast<int>(degrees + 360.0) % 180) / kSector);
        return ++perSector[sector] > kMostLinesPerSector;
    });
    lines.resize(std::min(lines.size(), kMostLines));
    const auto right = static_cast<float>(size.width - 1);
    const auto bottom = static_cast<float>(size.height - 1);
    for (StraightLine border : {StraightLine{{centre.x, 0.0f}, {1.0f, 0.0f}, true, 0.0f, {}, 0},
                                StraightLine{{centre.x, bottom}, {1.0f, 0.0f}, true, 0.0f, {}, 0},
                                StraightLine{{0.0f, centre.y}, {0.0f, 1.0f}, true, 0.0f, {}, 0},
                                StraightLine{{right, centre.y}, {0.0f, 1.0f}, true, 0.0f, {}, 0}}) {
        if (measureSupport(field, border)) {
            lines.push_back(std::move(border));
        }
    }
    return lines;
}

}  // namespace kestrelid::vision
