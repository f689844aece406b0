#include "vision/outlines/Quad.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <opencv2/imgproc.hpp>

namespace kestrelid::vision {

namespace {

double cross(cv::Point2f a, cv::Point2f b) {
    return double{a.x} * b.y - double{a.y} * b.x;
}

double length(cv::Point2f vector) {
    return std::hypot(vector.x, vector.y);
}

}  // namespace

std::optional<Quad> orderedQuad(const std::array<cv::Point2f, 4>& corners) {
    const cv::Point2f centre = (corners[0] + corners[1] + corners[2] + corners[3]) * 0.25f;
    Quad clockwise = corners;
    std::ranges::sort(clockwise, {}, [centre](cv::Point2f corner) {
        return std::atan2(corner.y - centre.y, corner.x - centre.x);
    });
    std::size_t top = 0;
    double bestRightward = -std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < 4; ++i) {
        const cv::Point2f side = clockwise[(i + 1) % 4] - clockwise[i];
        const cv::Point2f next = clockwise[(i + 2) % 4] - clockwise[(i + 1) % 4];
        if (cross(side, next) <= 1e-3) {
            return std::nullopt;
        }
        const double rightward = side.x / length(side);
        if (rightward > bestRightward) {
            bestRightward = rightward;
            top = i;
        }
    }
    std::rotate(clockwise.begin(), clockwise.begin() + static_cast<std::ptrdiff_t>(top),
                clockwise.end());
    return clockwise;
}

double area(const Quad& quad) {
    return 0.5 * std::abs(cross(quad[2] - quad[0], quad[3] - quad[1]));
}

double aspectRatio(const Quad& quad) {
    const double width = length(quad[1] - quad[0]) + length(quad[2] - quad[3]);
    const double height = length(quad[3] - quad[0]) + length(quad[2] - quad[1]);
    return width / std::max(height, 1e-6);
}

cv::Rect2f boundingBox(const Quad& quad) {
    const auto [left, right] = std::minmax({quad[0].x, quad[1].x, quad[2].x, quad[3].x});
    const auto [top, bottom] = std::minmax({quad[0].y, quad[1].y, quad[2].y, quad[3].y});
    return {left, top, right - left, bottom - top};
}

cv::Rect2f clippedBox(const Quad& quad, cv::Size picture) {
    return boundingBox(quad) & cv::Rect2f(0.0f, 0.0f, static_cast<float>(picture.width),
                                          static_cast<float>(picture.height));
}

double overlap(const Quad& first, const Quad& second) {
    if ((boundingBox(first) & boundingBox(second)).empty()) {
        return 0.0;
    }
    std::vector<cv::Point2f> common;
    const double shared = cv::intersectConvexConvex(first, second, common);
    return shared / std::max(area(first) + area(second) - shared, 1e-6);
}

std::optional<cv::Point2f> intersection(cv::Point2f a, cv::Point2f b, cv::Point2f c,
                                        cv::Point2f d) {
    const cv::Point2f first = b - a;
    const cv::Point2f second = d - c;
    const double determinant = cross(first, second);
    if (std::abs(determinant) < 0.05 * length(first) * length(second)) {
        return std::nullopt;
    }
    return a + first * static_cast<float>(cross(c - a, second) / determinant);
}

std::optional<Quad> enclosingQuad(std::vector<cv::Point2f> polygon) {
    while (polygon.size() > 4) {
        const std::size_t count = polygon.size();
        double leastAdded = std::numeric_limits<double>::infinity();
        std::size_t lost = count;
        cv::Point2f replacement;
        for (std::size_t i = 0; i < count; ++i) {
            const cv::Point2f a = polygon[(i + count - 1) % count];
            const cv::Point2f b = polygon[i];
            const cv::Point2f c = polygon[(i + 1) % count];
            const cv::Point2f d = polygon[(i + 2) % count];
            const auto corner = intersection(a, b, d, c);
            // The point must lie beyond b and c, not behind a and d: sides that diverge cannot
            // close the gap.
            if (!corner || (*corner - b).dot(b - a) < 0.0f || (*corner - c).dot(c - d) < 0.0f) {
                continue;
            }
            const double added = 0.5 * std::abs(cross(*corner - b, *corner - c));
            if (added < leastAdded) {
                leastAdded = added;
                lost = i;
                replacement = *corner;
            }
        }
        if (lost == count) {
            return std::nullopt;
        }
        polygon[lost] = replacement;
        polygon.erase(polygon.begin() + static_cast<std::ptrdiff_t>((lost + 1) % count));
    }
    if (polygon.size() < 4) {
        return std::nullopt;
    }
    return orderedQuad({polygon[0], polygon[1], polygon[2], polygon[3]});
}

}  // namespace kestrelid::vision
