#include "vision/outlines/EdgeField.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>

namespace kestrelid::vision {

namespace {

// Gradients below these are camera noise or compression, whatever the texture; units of 8-bit
// levels a pixel.
constexpr float kLeastLumaStep = 4.0f;
constexpr float kLeastColourStep = 2.5f;
constexpr float kTextureQuantile =
    0.75f;  // a page's sides and its text are far less than a quarter of the pixels

constexpr float kRidgeStrength = 0.7f;

struct Gradient {
    cv::Mat1s dx;
    cv::Mat1s dy;
    float unit;  // Sobel sums (8 times levels a pixel) that count as strength 1
};

Gradient gradientOf(const cv::Mat& channel, float leastStep) {
    Gradient gradient;
    cv::Mat smooth;
    cv::GaussianBlur(channel, smooth, {3, 3}, 0.0);
    cv::Sobel(smooth, gradient.dx, CV_16S, 1, 0);
    cv::Sobel(smooth, gradient.dy, CV_16S, 0, 1);

    std::array<int, 512> histogram{};
    constexpr int kBin = 4;
    int count = 0;
    for (int y = 0; y < channel.rows; y += 2) {
        for (int x = 0; x < channel.cols; x += 2) {
            const float magnitude = std::hypot(static_cast<float>(gradient.dx(y, x)),
                                               static_cast<float>(gradient.dy(y, x)));
            ++histogram[std::min<std::size_t>(histogram.size() - 1,
                                              static_cast<std::size_t>(magnitude) / kBin)];
            ++count;
        }
    }
    int left = static_cast<int>(static_cast<float>(count) * (1.0f - kTextureQuantile));
    std::size_t bin = histogram.size() - 1;
    while (bin > 0 && (left -= histogram[bin]) >= 0) {
        --bin;
    }
    const float texture = static_cast<float>(bin) * kBin;
    // In a busy picture too (much print, wood), four times the least step is an edge, so that a
    // page's sides are not lost.
    gradient.unit = std::max(8.0f * leastStep, std::min(1.2f * texture, 4.0f * 8.0f * leastStep));
    return gradient;
}

// Keeps the pixels with the greatest gradient across the edge.
void thinRidges(const cv::Mat_<cv::Vec2f>& gradient, const cv::Mat1f& strength, cv::Mat1b& ridges) {
    for (int y = 1; y + 1 < strength.rows; ++y) {
        for (int x = 1; x + 1 < strength.cols; ++x) {
            const float here = strength(y, x);
            if (here < kRidgeStrength) {
                continue;
            }
            const cv::Vec2f g = gradient(y, x);
            const float ax = std::abs(g[0]);
            const float ay = std::abs(g[1]);
            const int sx = ax > 0.41f * ay ? (g[0] > 0 ? 1 : -1) : 0;
            const int sy = ay > 0.41f * ax ? (g[1] > 0 ? 1 : -1) : 0;
            if (here >= strength(y - sy, x - sx) && here > strength(y + sy, x + sx)) {
                ridges(y, x) = 255;
            }
        }
    }
}

// Letters, specks and grain make short curls; a page's side is long.
void dropShortRidges(cv::Mat1b& ridges) {
    const int least = std::max(8, std::max(ridges.cols, ridges.rows) / 32);
    cv::Mat1i labels;
    cv::Mat1i stats;
    cv::Mat centroids;
    const int count = cv::connectedComponentsWithStats(ridges, labels, stats, centroids, 8, CV_32S);
    std::vector<std::uint8_t> keep(static_cast<std::size_t>(count), 0);
    for (int i = 1; i < count; ++i) {
        keep[static_cast<std::size_t>(i)] =
            std::max(stats(i, cv::CC_STAT_WIDTH), stats(i, cv::CC_STAT_HEIGHT)) >= least ? 255 : 0;
    }
    for (int y = 0; y < ridges.rows; ++y) {
        for (int x = 0; x < ridges.cols; ++x) {
            ridges(y, x) = keep[static_cast<std::size_t>(labels(y, x))];
        }
    }
}

}  // namespace

EdgeField makeEdgeField(const WorkingPicture& picture) {
    std::vector<Gradient> gradients{gradientOf(picture.luma, kLeastLumaStep)};
    if (!picture.colour.empty()) {
        for (const int channel : {1, 2}) {
            cv::Mat plane;
            cv::extractChannel(picture.colour, plane, channel);
            gradients.push_back(gradientOf(plane, kLeastColourStep));
        }
    }

    EdgeField field;
    field.gradient.create(picture.size());
    cv::Mat1f strength(picture.size());
    for (int y = 0; y < strength.rows; ++y) {
        for (int x = 0; x < strength.cols; ++x) {
            cv::Vec2f strongest;
            float greatest = 0.0f;
            for (const Gradient& gradient : gradients) {
                const cv::Vec2f g{static_cast<float>(gradient.dx(y, x)) / gradient.unit,
                                  static_cast<float>(gradient.dy(y, x)) / gradient.unit};
                const float squared = g.dot(g);
                if (squared > greatest) {
                    greatest = squared;
                    strongest = g;
                }
            }
            field.gradient(y, x) = strongest;
            strength(y, x) = std::sqrt(greatest);
        }
    }

    field.ridges = cv::Mat1b::zeros(picture.size());
    thinRidges(field.gradient, strength, field.ridges);
    dropShortRidges(field.ridges);
    for (int y = 0; y < field.ridges.rows; ++y) {
        for (int x = 0; x < field.ridges.cols; ++x) {
            if (field.ridges(y, x) != 0) {
                const cv::Vec2f g = field.gradient(y, x) / strength(y, x);
                field.points.push_back(
                    {{static_cast<float>(x), static_cast<float>(y)}, {g[0], g[1]}, strength(y, x)});
            }
        }
    }
    return field;
}

float lineSupport(const EdgeField& field, cv::Point2f position, cv::Point2f normal) {
    float across = 0.0f;
    for (int offset = -2; offset <= 2; ++offset) {
        const int x = cvRound(position.x + static_cast<float>(offset) * normal.x);
        const int y = cvRound(position.y + static_cast<float>(offset) * normal.y);
        if (x < 0 || y < 0 || x >= field.gradient.cols || y >= field.gradient.rows) {
            continue;
        }
        const cv::Vec2f g = field.gradient(y, x);
        const float along = std::abs(g[1] * normal.x - g[0] * normal.y);
        // A letter or a grain points anywhere; a straight side does not.
        across = std::max(across, std::abs(g[0] * normal.x + g[1] * normal.y) - along);
    }
    return std::clamp((across - 0.3f) / 0.7f, 0.0f, 1.0f);
}

}  // namespace kestrelid::vision
