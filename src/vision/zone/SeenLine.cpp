#include "vision/zone/SeenLine.h"

#include "vision/zone/EvenPrint.h"

#include <algorithm>
#include <cmath>

namespace kestrelid::vision {
namespace {

constexpr double kPad = 1.6;          // pitches that a crop shows beyond each end
constexpr int kShortestCrop = 64;     // pixels
constexpr int kLongestCrop = 1400;    // of a hundred characters: longer stretches are cut
constexpr int kGlance = 160;          // pixels, of 11 characters
constexpr std::size_t kLongest = 44;  // characters of any zone's line

double framesPerPitch() {
    return ZoneNetwork::kPitch / ZoneNetwork::kStep;
}

int cropWidth(const Stretch& stretch) {
    const double pitches = stretch.line.length() / stretch.pitch + 2.0 * kPad;
    // Few widths, so that lines of a zone are read together.
    constexpr int kMultiple = 32;
    const int width = cvCeil(pitches * ZoneNetwork::kPitch / kMultiple) * kMultiple;
    return std::clamp(width, kShortestCrop, kLongestCrop / kMultiple * kMultiple);
}

// The longest row of marks without a gap: what stands apart is no part of the line.
std::span<const ZoneMark> longestRow(const Wiped<ZoneMark>& marks, double pitch) {
    constexpr double kGap = 3.2;  // pitches
    std::size_t first = 0;
    std::span<const ZoneMark> longest;
    for (std::size_t index = 0; index < marks.size(); ++index) {
        const bool isLast = index + 1 == marks.size();
        if (isLast || marks[index + 1].middle() - marks[index].middle() > kGap * pitch) {
            if (index + 1 - first > longest.size())
                longest = std::span(marks).subspan(first, index + 1 - first);
            first = index + 1;
        }
    }
    return longest;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

std::vector<double> steps(std::span<const ZoneMark> marks) {
    std::vector<double> all;
    for (std::size_t index = 1; index < marks.size(); ++index)
        all.push_back(marks[index].middle() - marks[index - 1].middle());
    return all;
}

}  // namespace

double SeenLine::weight() const {
    return static_cast<double>(scores.meanProbability()) *
           static_cast<double>(std::min(count(), kLongest));
}

cv::Point2d SeenLine::at(double frame) const {
    const double pitches = (frame + 0.5) / framesPerPitch() - kPad;
    return stretch.line.start + stretch.line.along() * (pitches * stretch.pitch);
}

std::optional<Stretch> SeenLine::seen() const {
    constexpr float kSure = 0.3f;
    constexpr std::size_t kFew = 8;
    Wiped<ZoneMark> sure;
    std::ranges::copy_if(scores.marks(), std::back_inserter(sure),
                         [](const ZoneMark& mark) { return mark.probability > kSure; });
    if (sure.size() < kFew)
        return std::nullopt;
    const std::span<const ZoneMark> row = longestRow(sure, median(steps(sure)));
    if (row.size() < kFew)
        return std::nullopt;
    const std::vector<double> all = steps(row);
    const double usual = median(all);
    double sum = 0.0;
    double count = 0.0;
    for (const double step : all) {
        if (step > 0.6 * usual && step < 1.5 * usual) {
            sum += step;
            ++count;
        }
    }
    const double step = count > 0.0 ? sum / count : usual;
    Stretch result = stretch;
    result.pitch = stretch.pitch * step / framesPerPitch();
    result.line = {at(row.front().middle() - step / 2.0), at(row.back().middle() + step / 2.0)};
    return result;
}

double Stretch::distanceTo(const Baseline& other) const {
    const cv::Point2d middle = (other.start + other.end) / 2.0;
    return (middle - line.start).dot(line.down()) / pitch;
}

cv::Mat1b LineReader::crop(const Stretch& stretch, int width) const {
    const cv::Point2d right = stretch.line.along() * (stretch.pitch / ZoneNetwork::kPitch);
    const cv::Point2d down =
        stretch.line.down() * (stretch.tall * stretch.pitch / ZoneNetwork::kHeight);
    // The centre of the crop's first pixel.
    const cv::Point2d origin = stretch.line.start - stretch.line.along() * (kPad * stretch.pitch) +
                               right * 0.5 - down * ((ZoneNetwork::kHeight - 1) / 2.0);
    const cv::Matx33d toView(right.x, down.x, origin.x, right.y, down.y, origin.y, 0, 0, 1);
    return picture_->sample(view_.toPicture * toView, {width, ZoneNetwork::kHeight});
}

Expected<std::vector<SeenLine>> LineReader::read(std::span<const Stretch> stretches) const {
    int width = 0;
    for (const Stretch& stretch : stretches)
        width = std::max(width, cropWidth(stretch));
    std::vector<cv::Mat1b> crops;
    for (const Stretch& stretch : stretches)
        crops.push_back(crop(stretch, width));
    auto scores = network_->read(crops);
    if (!scores)
        return Failure(scores.error());
    std::vector<SeenLine> lines;
    for (std::size_t index = 0; index < stretches.size(); ++index)
        lines.push_back({stretches[index], std::move((*scores)[index])});
    return lines;
}

Expected<std::vector<LineScores>> LineReader::glance(std::span<const Stretch> stretches) const {
    std::vector<cv::Mat1b> crops;
    for (const Stretch& stretch : stretches)
        crops.push_back(middle(stretch));
    return network_->read(crops);
}

bool LineReader::isEvenPrint(const Stretch& stretch) const {
    return vision::isEvenPrint(middle(stretch));
}

cv::Mat1b LineReader::middle(Stretch stretch) const {
    const double half = stretch.pitch * (kGlance / ZoneNetwork::kPitch / 2.0 - kPad);
    const cv::Point2d middle = (stretch.line.start + stretch.line.end) / 2.0;
    const cv::Point2d along = stretch.line.along();
    stretch.line = {middle - along * half, middle + along * half};
    return crop(stretch, kGlance);
}

}  // namespace kestrelid::vision
