#include "vision/outlines/SideSharpener.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <vector>

namespace kestrelid::vision {
namespace {

constexpr int kPlaces = 40;         // along a side
constexpr double kReach = 0.014;    // of the picture's longer side, to either side
constexpr int kSmooth = 2;          // pixels on either side of an edge that are averaged
constexpr float kLeastStep = 9.0f;  // of 255, all channels together: less is noise
constexpr double kEnough = 0.5;     // of the places must agree on the line
constexpr float kAgree = 1.6f;      // pixels from the line

struct Edge {
    float along = 0.0f;   // pixels from the side's start
    float across = 0.0f;  // pixels outward
    float step = 0.0f;
};

cv::Vec3f colourAt(const cv::Mat& picture, cv::Point2f point) {
    const int x = std::clamp(cvFloor(point.x), 0, picture.cols - 1);
    const int y = std::clamp(cvFloor(point.y), 0, picture.rows - 1);
    return picture.at<cv::Vec3b>(y, x);
}

// The strongest step across the side at one place. Nothing if no step stands out.
std::optional<Edge> edgeAt(const cv::Mat& picture, cv::Point2f at, cv::Point2f outward, int reach) {
    const int count = 2 * (reach + kSmooth) + 1;
    std::vector<cv::Vec3f> profile(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        profile[static_cast<std::size_t>(i)] =
            colourAt(picture, at + outward * static_cast<float>(i - reach - kSmooth));
    Edge best;
    float score = 0.0f;
    for (int i = kSmooth; i + kSmooth < count; ++i) {
        cv::Vec3f difference;
        for (int k = 1; k <= kSmooth; ++k)
            difference +=
                profile[static_cast<std::size_t>(i + k)] - profile[static_cast<std::size_t>(i - k)];
        const float step =
            (std::abs(difference[0]) + std::abs(difference[1]) + std::abs(difference[2])) / kSmooth;
        const float across = static_cast<float>(i - reach - kSmooth);
        // The network is seldom far off, and print runs along the sides inside.
        const float trust = std::exp(-across * across / (0.5f * static_cast<float>(reach * reach)));
        if (step * trust > score) {
            score = step * trust;
            best = {0.0f, across, step};
        }
    }
    return score >= kLeastStep ? std::optional(best) : std::nullopt;
}

// across = offset + slope * along, agreed by the most places.
std::optional<std::array<float, 2>> agreedLine(const std::vector<Edge>& edges) {
    std::size_t most = 0;
    std::array<float, 2> line{};
    for (std::size_t i = 0; i < edges.size(); ++i)
        for (std::size_t j = i + edges.size() / 3; j < edges.size(); ++j) {
            const float run = edges[j].along - edges[i].along;
            if (run <= 0.0f)
                continue;
            const float slope = (edges[j].across - edges[i].across) / run;
            const float offset = edges[i].across - slope * edges[i].along;
            const auto agreeing =
                static_cast<std::size_t>(std::ranges::count_if(edges, [&](const Edge& edge) {
                    return std::abs(edge.across - offset - slope * edge.along) < kAgree;
                }));
            if (agreeing > most) {
                most = agreeing;
                line = {offset, slope};
            }
        }
    if (static_cast<double>(most) < kEnough * kPlaces)
        return std::nullopt;
    // Least squares over those that agree.
    double n = 0, sx = 0, sy = 0, sxx = 0, sxy = 0;
    for (const Edge& edge : edges) {
        if (std::abs(edge.across - line[0] - line[1] * edge.along) >= kAgree)
            continue;
        n += 1;
        sx += static_cast<double>(edge.along);
        sy += static_cast<double>(edge.across);
        sxx += static_cast<double>(edge.along) * static_cast<double>(edge.along);
        sxy += static_cast<double>(edge.along) * static_cast<double>(edge.across);
    }
    const double spread = n * sxx - sx * sx;
    if (spread < 1e-6)
        return std::nullopt;
    const double slope = (n * sxy - sx * sy) / spread;
    return std::array{static_cast<float>((sy - slope * sx) / n), static_cast<float>(slope)};
}

bool followsBorder(cv::Point2f a, cv::Point2f b, cv::Size size, float near) {
    const auto right = static_cast<float>(size.width) - near;
    const auto bottom = static_cast<float>(size.height) - near;
    return (a.x < near && b.x < near) || (a.y < near && b.y < near) ||
           (a.x > right && b.x > right) || (a.y > bottom && b.y > bottom);
}

}  // namespace

Quad sharpened(const cv::Mat& picture, const Quad& quad) {
    const int reach = std::max(3, cvRound(kReach * std::max(picture.cols, picture.rows)));
    const cv::Rect2f frame(0.0f, 0.0f, static_cast<float>(picture.cols),
                           static_cast<float>(picture.rows));
    std::array<cv::Point2f, 8> ends;
    for (std::size_t i = 0; i < 4; ++i) {
        const cv::Point2f a = quad[i];
        const cv::Point2f b = quad[(i + 1) % 4];
        ends[2 * i] = a;
        ends[2 * i + 1] = b;
        const float length = std::hypot(b.x - a.x, b.y - a.y);
        if (length < 4.0f * static_cast<float>(reach) ||
            followsBorder(a, b, picture.size(), 0.4f * static_cast<float>(reach)))
            continue;
        const cv::Point2f unit = (b - a) / length;
        const cv::Point2f outward(unit.y, -unit.x);
        std::vector<Edge> edges;
        for (int place = 0; place < kPlaces; ++place) {
            const float along =
                length * (0.04f + 0.92f * (static_cast<float>(place) + 0.5f) / kPlaces);
            const cv::Point2f at = a + unit * along;
            if (!frame.contains(at))
                continue;
            if (auto edge = edgeAt(picture, at, outward, reach)) {
                edge->along = along;
                edges.push_back(*edge);
            }
        }
        if (const auto line = agreedLine(edges)) {
            // A pixel's centre lies half a pixel beyond its corner, in both directions alike.
            ends[2 * i] = a + outward * (*line)[0];
            ends[2 * i + 1] = b + outward * ((*line)[0] + (*line)[1] * length);
        }
    }
    std::array<cv::Point2f, 4> corners;
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t before = (i + 3) % 4;
        corners[i] =
            intersection(ends[2 * before], ends[2 * before + 1], ends[2 * i], ends[2 * i + 1])
                .value_or(quad[i]);
    }
    return orderedQuad(corners).value_or(quad);
}

}  // namespace kestrelid::vision
