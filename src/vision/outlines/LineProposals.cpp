#include "vision/outlines/LineProposals.h"

#include "vision/outlines/StraightLines.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

namespace kestrelid::vision {

namespace {

constexpr float kLeastSideSupport = 0.35f;
constexpr std::size_t kMostQuads = 400;

struct Crossing {
    bool exists = false;
    cv::Point2f position;
    float along = 0.0f;  // pixels from the first line's point
};

// Two lines that can be neighbouring sides: they cross at more than 40 degrees, in the picture or a
// little outside.
Crossing crossingOf(const StraightLine& line, const StraightLine& other, cv::Size size) {
    const double sine =
        double{line.direction.x} * other.direction.y - double{line.direction.y} * other.direction.x;
    if (std::abs(sine) < 0.64) {
        return {};
    }
    const cv::Point2f between = other.point - line.point;
    const auto along = static_cast<float>(
        (double{between.x} * other.direction.y - double{between.y} * other.direction.x) / sine);
    const cv::Point2f position = line.point + line.direction * along;
    const float marginX = 0.12f * static_cast<float>(size.width);
    const float marginY = 0.12f * static_cast<float>(size.height);
    const bool near = position.x > -marginX && position.y > -marginY &&
                      position.x < static_cast<float>(size.width) + marginX &&
                      position.y < static_cast<float>(size.height) + marginY;
    return {near, position, along};
}

}  // namespace

std::vector<Quad> proposeFromLines(const EdgeField& field) {
    const cv::Size size = field.gradient.size();
    const std::vector<StraightLine> lines = findStraightLines(field);
    const std::size_t count = lines.size();
    std::vector<Crossing> crossings(count * count);
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t k = 0; k < count; ++k) {
            crossings[i * count + k] = crossingOf(lines[i], lines[k], size);
        }
    }
    // support[(i, k, l)]: of line i as the side between its crossings with k and l.
    const float shortest = 0.1f * static_cast<float>(std::min(size.width, size.height));
    std::vector<float> support(count * count * count, 0.0f);
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t k = 0; k < count; ++k) {
            for (std::size_t l = k + 1; l < count; ++l) {
                const Crossing& a = crossings[i * count + k];
                const Crossing& b = crossings[i * count + l];
                if (a.exists && b.exists && std::abs(a.along - b.along) > shortest) {
                    const float mean = lines[i].supportBetween(a.along, b.along);
                    support[(i * count + k) * count + l] = mean;
                    support[(i * count + l) * count + k] = mean;
                }
            }
        }
    }

    struct Proposal {
        Quad quad;
        float support;
    };
    std::vector<Proposal> proposals;
    const double leastArea = 0.03 * size.area();
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t j = i + 1; j < count; ++j) {
            for (std::size_t k = i + 1; k < count; ++k) {
                if (k == j || support[(k * count + i) * count + j] < kLeastSideSupport) {
                    continue;
                }
                for (std::size_t l = k + 1; l < count; ++l) {
                    const std::array sides{
                        support[(k * count + i) * count + j], support[(l * count + i) * count + j],
                        support[(i * count + k) * count + l], support[(j * count + k) * count + l]};
                    const float least = std::ranges::min(sides);
                    const int borders =
                        lines[i].border + lines[j].border + lines[k].border + lines[l].border;
                    if (l == j || least < kLeastSideSupport || borders > 2) {
                        continue;
                    }
                    const auto quad = orderedQuad(
                        {crossings[i * count + k].position, crossings[i * count + l].position,
                         crossings[j * count + l].position, crossings[j * count + k].position});
                    if (quad && area(*quad) >= leastArea && rectanglePlausibility(*quad) > 0.0) {
                        const float mean = 0.25f * (sides[0] + sides[1] + sides[2] + sides[3]);
                        proposals.push_back({*quad, mean + least});
                    }
                }
            }
        }
    }
    std::ranges::stable_sort(proposals, std::greater{}, &Proposal::support);
    std::vector<Quad> quads;
    for (const Proposal& proposal : proposals) {
        quads.push_back(proposal.quad);
        if (quads.size() == kMostQuads) {
            break;
        }
    }
    return quads;
}

}  // namespace kestrelid::vision
