#include "vision/outlines/OutlineNetwork.h"

#include "vision/ReducedPicture.h"

#include <opencv2/imgproc.hpp>

#include <array>
#include <vector>

namespace kestrelid::vision {
namespace {

constexpr int kSide = 192;  // pixels: what the network takes
constexpr int kCells = kSide / 4;
constexpr std::size_t kMaps = 3;
constexpr int kWays = 8;

cv::Mat reduced(const cv::Mat& picture) {
    cv::Mat square;
    cv::resize(picture, square, {kSide, kSide}, 0, 0, cv::INTER_AREA);
    return square;
}

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

OutlineNetwork::Maps OutlineNetwork::look(const cv::Mat& picture) const {
    return mapsOf(reduced(picture));
}

OutlineNetwork::Maps OutlineNetwork::lookAllWays(const cv::Mat& picture,
                                                 const OutlineMaps& first) const {
    constexpr std::array kMembers = {&OutlineMaps::page, &OutlineMaps::core, &OutlineMaps::corner};
    const cv::Mat square = reduced(picture);
    OutlineMaps mean;
    for (const auto map : kMembers)
        mean.*map = first.*map / kWays;
    for (int way = 1; way < kWays; ++way) {
        const Maps seen = mapsOf(laid(square, way));
        if (!seen)
            return seen;
        for (const auto map : kMembers)
            mean.*map += laidBack((*seen).*map, way) / kWays;
    }
    return mean;
}

OutlineNetwork::Maps OutlineNetwork::mapsOf(const cv::Mat& square) const {
    const std::vector<float> values = planesOf(square, {1.0, 1.0, 1.0}, {});
    constexpr std::array<std::int64_t, 4> kShape{1, 3, kSide, kSide};
    const OnnxInput input{values, kShape};
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
