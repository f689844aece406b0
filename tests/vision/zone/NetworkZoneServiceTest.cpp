#include "vision/zone/NetworkZoneService.h"

#include "vision/text/QuarterTurns.h"

#include <kestrelid/ImageFile.h>

#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <opencv2/imgproc.hpp>
#include <sstream>

namespace kestrelid::vision {
namespace {

const std::string kSource = KESTRELID_SOURCE_DIR;

NetworkZoneService& service() {
    static NetworkZoneService one({KESTRELID_RESOURCES_DIR, kSource + "/models"}, 2);
    return one;
}

Bitmap sample(const std::string& name) {
    return *std::get<Image>(readImage(kSource + "/samples/" + name)).upright().bitmap();
}

// The lines, joined; a number's 0 for O is the check digit's to tell.
std::string textOf(const ZoneReading& reading) {
    std::string text;
    if (const auto zone = parseZone(reading)) {
        for (const ZoneLine& line : zone->lines)
            text.append(line.text.view()) += '\n';
    }
    return text;
}

std::vector<ZoneReading> readingsOf(const Bitmap& bitmap) {
    const ZoneResult result = service().perform(bitmap, {});
    EXPECT_TRUE(std::holds_alternative<std::vector<ZoneReading>>(result));
    return std::get<std::vector<ZoneReading>>(result);
}

Bitmap bitmapOf(const cv::Mat& picture) {
    const std::size_t size = picture.total() * picture.elemSize();
    const std::shared_ptr<std::byte[]> pixels(new std::byte[size]);
    cv::Mat copy(picture.size(), picture.type(), pixels.get());
    picture.copyTo(copy);
    return *Bitmap::wrap(picture.cols, picture.rows, static_cast<std::ptrdiff_t>(copy.step),
                         picture.channels() == 1 ? PixelFormat::gray8 : PixelFormat::rgb8, pixels,
                         size);
}

cv::Mat greyOf(const Bitmap& bitmap) {
    const cv::Mat view(bitmap.height(), bitmap.width(), CV_8UC(bytesPerPixel(bitmap.format())),
                       const_cast<std::byte*>(bitmap.row(0)),
                       static_cast<std::size_t>(bitmap.stride()));
    cv::Mat grey;
    cv::cvtColor(view, grey, view.channels() == 3 ? cv::COLOR_RGB2GRAY : cv::COLOR_BGRA2GRAY);
    return grey;
}

TEST(NetworkZoneService, ReadsTheZonesOfTheSamplesAndNoneWhereThereIsNone) {
    std::ifstream manifest(kSource + "/samples/manifest.tsv");
    std::string row;
    std::getline(manifest, row);
    int zones = 0;
    while (std::getline(manifest, row)) {
        std::istringstream cells(row);
        std::string file;
        std::string cell;
        std::string lines;
        std::getline(cells, file, '\t');
        for (int column = 1; std::getline(cells, cell, '\t'); ++column) {
            if (column >= 3 && column <= 5 && cell != "-")
                lines += cell + "\n";
        }
        SCOPED_TRACE(file);
        const auto readings = readingsOf(sample(file));
        ASSERT_EQ(readings.size(), lines.empty() ? 0u : 1u);
        if (lines.empty())
            continue;
        ++zones;
        EXPECT_EQ(readings[0].legibility, ZoneReading::Legibility::readable);
        EXPECT_EQ(textOf(readings[0]), lines);
        EXPECT_GT(readings[0].pixelsPerCharacter, 10.0);
    }
    EXPECT_EQ(zones, 9);
}

TEST(NetworkZoneService, ReadsAllTurnsAndSaysWhereTheLinesStand) {
    const cv::Mat grey = greyOf(sample("utopia-scan.jpg"));
    const std::string text = textOf(readingsOf(bitmapOf(grey)).at(0));
    for (int turns = 0; turns < 4; ++turns) {
        SCOPED_TRACE(turns);
        const cv::Mat picture = turned(grey, turns);
        const auto readings = readingsOf(bitmapOf(picture));
        ASSERT_EQ(readings.size(), 1u);
        EXPECT_EQ(textOf(readings[0]), text);
        // Back in the upright picture, the lines run from left to right below its middle.
        for (const ZoneLineReading& line : readings[0].lines) {
            std::vector<cv::Point2f> upright;
            for (const NormalizedPoint& corner : line.corners)
                upright.push_back(beforeTurns({static_cast<float>(corner.x * picture.cols),
                                               static_cast<float>((1 - corner.y) * picture.rows)},
                                              turns, grey.size()));
            EXPECT_LT(upright[0].x, static_cast<float>(grey.cols) * 0.1f);
            EXPECT_GT(upright[1].x, static_cast<float>(grey.cols) * 0.9f);
            EXPECT_GT(upright[0].y, static_cast<float>(grey.rows) * 0.7f);
            EXPECT_GT(upright[3].y, upright[0].y);
        }
    }
}

TEST(NetworkZoneService, ReadsAroundAnOutlineWithACornerInTheWrongPlace) {
    // Too small to be read in the whole picture, and tilted.
    cv::Mat page;
    cv::resize(greyOf(sample("utopia-scan.jpg")), page, {640, 452}, 0, 0, cv::INTER_AREA);
    const cv::Size size(3200, 2400);
    const cv::Matx23d lying(0.94, -0.34, 900, 0.34, 0.94, 500);
    cv::Mat desk(size, CV_8U, cv::Scalar(90));
    cv::warpAffine(page, desk, lying, size, cv::INTER_LINEAR, cv::BORDER_TRANSPARENT);
    RectangleObservation outline;
    const std::array<cv::Point, 4> corners{{{0, -180}, {640, 0}, {640, 452}, {0, 452}}};
    std::ranges::transform(corners, outline.corners.begin(), [&](cv::Point at) {
        const cv::Vec2d place = lying * cv::Vec3d(at.x, at.y, 1);
        return NormalizedPoint{place[0] / size.width, 1 - place[1] / size.height};
    });
    const std::string text = textOf(readingsOf(sample("utopia-scan.jpg")).at(0));
    for (const ZoneReading& reading : readingsOf(bitmapOf(desk)))
        EXPECT_NE(reading.legibility, ZoneReading::Legibility::readable);
    const ZoneResult result = service().perform(bitmapOf(desk), {{outline}});
    const auto& readings = std::get<std::vector<ZoneReading>>(result);
    ASSERT_EQ(readings.size(), 1u);
    EXPECT_EQ(textOf(readings[0]), text);
    outline.corners[0].x = std::nan("");
    EXPECT_EQ(service().perform(bitmapOf(desk), {{outline}}).index(), result.index());
}

TEST(NetworkZoneService, RefusesWhatIsTooSmall) {
    cv::Mat small;
    cv::resize(greyOf(sample("utopia-scan.jpg")), small, {230, 162}, 0, 0, cv::INTER_AREA);
    for (const ZoneReading& reading : readingsOf(bitmapOf(small)))
        EXPECT_NE(reading.legibility, ZoneReading::Legibility::readable);
    EXPECT_TRUE(readingsOf(bitmapOf(cv::Mat1b(3, 5, std::uint8_t{7}))).empty());
}

TEST(NetworkZoneService, WithoutItsNetworkItSaysWhatToDo) {
    NetworkZoneService none({"/nowhere"}, 1);
    const ZoneResult result = none.perform(bitmapOf(cv::Mat1b(90, 90, std::uint8_t{7})), {});
    ASSERT_TRUE(std::holds_alternative<RequestError>(result));
    EXPECT_NE(std::get<RequestError>(result).description.find("zone-net.onnx"), std::string::npos);
    EXPECT_FALSE(none.diagnose().available);
    EXPECT_TRUE(service().diagnose().available);
}

}  // namespace
}  // namespace kestrelid::vision
