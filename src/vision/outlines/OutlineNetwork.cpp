#include "vision/outlines/OutlineNetwork.h"

#include "vision/ReducedPicture.h"
#include "vision/SideBySide.h"

#include <opencv2/imgproc.hpp>

#include <array>

namespace kestrelid::vision {
namespace {

constexpr int kSide = 192;  // pixels: what the network takes
constexpr int kCells = kSide / 4;
constexpr std::size_t kMaps = 3;
constexpr int kWays = 8;

// The square in one of the ways that it can lie; way 0: as it is.
cv::Mat laid(const cv::Mat& square, int way) {
    cv::Mat other = square.clone();
    if (way & 1)
        cv::flip(other, other, 1);
    if (way & 2)
        cv::flip(other, other, 0);
    if (way & 4)
        cv::transpose(other, other);
    return other;
}

cv::Mat laidBack(const cv::Mat& square, int way) {
    return way & 4 ? laid(square.t(), way & 3) : laid(square, way);
}

}  // namespace

cv::Mat OutlineNetwork::squareOf(const cv::Mat& picture) {
    cv::Mat square;
    cv::resize(picture, square, {kSide, kSide}, 0, 0, cv::INTER_AREA);
    return square;
}

OutlineNetwork::Maps OutlineNetwork::lookAllWays(const cv::Mat& square, const OutlineMaps& first,
                                                 int threads) const {
    constexpr std::array kMembers = {&OutlineMaps::page, &OutlineMaps::core, &OutlineMaps::corner};
    std::array<Maps, kWays> seen;
    seen[0] = first;
    sideBySide(kWays - 1, threads, [&](std::size_t index) {
        seen[index + 1] = look(laid(square, static_cast<int>(index) + 1));
    });
    OutlineMaps mean;
    for (int way = 0; way < kWays; ++way) {
        const Maps& maps = seen[static_cast<std::size_t>(way)];
        if (!maps)
            return maps;
        for (const auto map : kMembers) {
            const cv::Mat share = laidBack((*maps).*map, way) / kWays;
            mean.*map = way == 0 ? share : mean.*map + share;
        }
    }
    return mean;
}

OutlineNetwork::Maps OutlineNetwork::look(const cv::Mat& square) const {
    const cv::Mat1f values = planesOf(square, {1.0, 1.0, 1.0}, {});
    constexpr std::array<std::int64_t, 4> kShape{1, 3, kSide, kSide};
    const OnnxInput input{{values[0], values.total()}, kShape};
    const auto outputs = session_.run({&input, 1});
    if (!outputs)
        return Failure(outputs.error());
    const OnnxTensor& tensor = outputs->front();
    constexpr std::size_t kMap = std::size_t{kCells} * kCells;
    if (tensor.values().size() != kMaps * kMap)
        return failure("the outline network gave maps of another size than expected");
    const auto map = [&](std::size_t index) {
        const float* cells = tensor.values().data() + index * kMap;
        return cv::Mat1f(kCells, kCells, const_cast<float*>(cells)).clone();
    };
    return OutlineMaps{map(0), map(1), map(2)};
}

}  // namespace kestrelid::vision
