#include "vision/outlines/ContourProposals.h"

#include <algorithm>
#include <cstdint>
#include <opencv2/imgproc.hpp>

namespace kestrelid::vision {

namespace {

constexpr double kLeastArea = 0.03;  // of the picture

void addQuads(const cv::Mat1b& mask, int retrieval, std::vector<Quad>& quads) {
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(mask, contours, retrieval, cv::CHAIN_APPROX_SIMPLE);
    const double least = kLeastArea * static_cast<double>(mask.total());
    for (const auto& contour : contours) {
        const cv::Rect box = cv::boundingRect(contour);
        if (box.area() < least) {
            continue;
        }
        std::vector<cv::Point> hull;
        cv::convexHull(contour, hull);
        const double hullArea = cv::contourArea(hull);
        if (hullArea < least) {
            continue;
        }
        std::vector<cv::Point2f> polygon;
        cv::approxPolyDP(cv::Mat(hull), polygon, 0.008 * cv::arcLength(hull, true), true);
        const auto quad = enclosingQuad(std::move(polygon));
        // A round or ragged outline gains much area on its way to four corners.
        if (quad && area(*quad) < 1.35 * hullArea && rectanglePlausibility(*quad) > 0.0) {
            quads.push_back(*quad);
        }
    }
}

// How far each pixel is, in colour, from what the picture's rim mostly shows: the desk around a
// page.
cv::Mat1b distanceFromRim(const WorkingPicture& picture) {
    const cv::Mat& source = picture.colour.empty() ? picture.luma : picture.colour;
    std::vector<cv::Mat> planes;
    cv::split(source, planes);
    cv::Mat1b distance(source.size(), std::uint8_t{0});
    for (std::size_t i = 0; i < planes.size(); ++i) {
        const cv::Mat1b plane = planes[i];
        std::vector<std::uint8_t> rim;
        for (int x = 0; x < plane.cols; ++x) {
            rim.push_back(plane(0, x));
            rim.push_back(plane(plane.rows - 1, x));
        }
        for (int y = 0; y < plane.rows; ++y) {
            rim.push_back(plane(y, 0));
            rim.push_back(plane(y, plane.cols - 1));
        }
        std::ranges::nth_element(rim, rim.begin() + static_cast<std::ptrdiff_t>(rim.size() / 2));
        cv::Mat1b part;
        cv::absdiff(plane, cv::Scalar(rim[rim.size() / 2]), part);
        cv::addWeighted(distance, 1.0, part, i == 0 ? 1.0 : 2.0, 0.0, distance);
    }
    return distance;
}

}  // namespace

std::vector<Quad> proposeFromContours(const WorkingPicture& picture, const EdgeField& field) {
    std::vector<Quad> quads;
    const auto square = [](int side) {
        return cv::getStructuringElement(cv::MORPH_RECT, {side, side});
    };
    cv::Mat1b mask;
    for (const int reach : {3, 7}) {
        cv::dilate(field.ridges, mask, square(reach));
        addQuads(mask, cv::RETR_LIST, quads);
    }
    const cv::Mat1b distance = distanceFromRim(picture);
    for (const cv::Mat& plane : {cv::Mat(picture.luma), cv::Mat(distance)}) {
        cv::Mat smooth;
        cv::GaussianBlur(plane, smooth, {5, 5}, 0.0);
        cv::threshold(smooth, mask, 0, 255, cv::THRESH_BINARY | cv::THRESH_OTSU);
        cv::morphologyEx(mask, mask, cv::MORPH_OPEN, square(5));
        addQuads(mask, cv::RETR_EXTERNAL, quads);
    }
    return quads;
}

}  // namespace kestrelid::vision
