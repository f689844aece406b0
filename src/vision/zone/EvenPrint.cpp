#include "vision/zone/EvenPrint.h"

#include "vision/zone/ZoneNetwork.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>

namespace kestrelid::vision {
namespace {

// Pixels from one character to the next, where the stretch is a little longer or shorter than
// taken for.
constexpr int kLeastPitch = 10;
constexpr int kMostPitch = 19;
static_assert(kLeastPitch < ZoneNetwork::kPitch && ZoneNetwork::kPitch < kMostPitch);

// A plane separates what the network's glance took for a zone's print from other print (logistic
// regression over 24,000 crops of drawn pictures, also blurred, noisy and small ones; see
// docs/performance.md for what it loses).
constexpr double kOfFineRecurrence = 1.24;
constexpr double kOfStrength = 0.63;  // a natural logarithm
constexpr double kOfMiddle = 0.82;
constexpr double kLeast = 1.04;

// How well the columns agree with those a pitch away: 1 is perfectly.
double recurrence(const cv::Mat1f& columns) {
    const double variance = columns.dot(columns) / columns.cols;
    double best = -1.0;
    for (int lag = kLeastPitch; lag <= kMostPitch; ++lag) {
        const int common = columns.cols - lag;
        const double product = columns.colRange(0, common).dot(columns.colRange(lag, columns.cols));
        best = std::max(best, product / common / (variance + 1e-6));
    }
    return best;
}

}  // namespace

bool isEvenPrint(const cv::Mat1b& crop) {
    constexpr double kLeastDeviation = 8.0;  // grey levels
    cv::Scalar mean;
    cv::Scalar deviation;
    cv::meanStdDev(crop, mean, deviation);
    cv::Mat1b change;
    cv::absdiff(crop.colRange(2, crop.cols), crop.colRange(0, crop.cols - 2), change);
    const cv::Range middle(crop.rows / 4, crop.rows * 3 / 4);
    const double changing = cv::mean(change)[0] + 1e-6;
    const double strength = std::log(changing / (deviation[0] + kLeastDeviation));
    const double inMiddle = cv::mean(change.rowRange(middle.start, middle.end))[0] / changing;
    cv::Mat1f columns;
    cv::reduce(crop.rowRange(middle.start, middle.end), columns, 0, cv::REDUCE_AVG, CV_32F);
    columns -= cv::mean(columns)[0];
    // Without what changes slowly: shade, and the blur of large print.
    constexpr int kSlow = 21;  // pixels
    cv::Mat1f slow;
    cv::blur(columns, slow, {kSlow, 1}, {-1, -1}, cv::BORDER_REPLICATE);
    cv::Mat1f fine;
    cv::subtract(columns, slow, fine);
    return recurrence(columns) + kOfFineRecurrence * recurrence(fine) + kOfStrength * strength +
               kOfMiddle * inMiddle >
           kLeast;
}

}  // namespace kestrelid::vision
