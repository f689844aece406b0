#include "vision/outlines/OutlineNetwork.h"
#include "vision/onnx/OnnxRuntime.h"
#include "vision/outlines/OutlinePicture.h"

#include <kestrelid/ImageFile.h>

#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>

#include <memory>
#include <string>
#include <variant>

namespace kestrelid::vision {
namespace {

cv::Mat mirrored(const cv::Mat& mat) {
    cv::Mat other;
    cv::flip(mat, other, 1);
    return other;
}

cv::Mat quarterTurned(const cv::Mat& mat) {
    cv::Mat other;
    cv::rotate(mat, other, cv::ROTATE_90_CLOCKWISE);
    return other;
}

double furthest(const cv::Mat1f& a, const cv::Mat1f& b) {
    return cv::norm(a, b, cv::NORM_INF);
}

// However the picture lies, eight looks add up to the same maps, laid the same way: a way that is
// not undone as it was done would show.
TEST(OutlineNetworkTest, eightLooksTurnWithThePicture) {
    const auto runtime = OnnxRuntime::load(ResourceFolders({KESTRELID_RESOURCES_DIR}));
    if (!runtime)
        GTEST_SKIP() << runtime.error().description;
    auto session = (*runtime)->open(KESTRELID_SOURCE_DIR "/models/outline-net.onnx", 1);
    ASSERT_TRUE(session);
    const OutlineNetwork network(*std::move(session));

    const ImageResult file = readImage(KESTRELID_SOURCE_DIR "/samples/utopia-perspective.jpg");
    const cv::Mat picture =
        OutlineNetwork::squareOf(outlinePicture(*std::get<Image>(file).upright().bitmap()));
    const auto allWays = [&](const cv::Mat& laid) {
        return network.lookAllWays(laid, network.look(laid).value(), 2).value();
    };
    const OutlineMaps plain = allWays(picture);
    EXPECT_GT(furthest(plain.page, mirrored(plain.page)), 0.3);  // not the same whatever is done
    EXPECT_LT(furthest(plain.page, network.look(picture).value().page), 0.5);
    for (const auto change : {&mirrored, &quarterTurned}) {
        const OutlineMaps changed = allWays(change(picture));
        EXPECT_LT(furthest(changed.page, change(plain.page)), 1e-3);
        EXPECT_LT(furthest(changed.core, change(plain.core)), 1e-3);
        EXPECT_LT(furthest(changed.corner, change(plain.corner)), 1e-3);
    }
}

}  // namespace
}  // namespace kestrelid::vision
