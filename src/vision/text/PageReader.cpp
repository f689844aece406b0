#include "vision/text/PageReader.h"

#include "vision/ReducedPicture.h"
#include "vision/SideBySide.h"
#include "vision/text/QuarterTurns.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <mutex>
#include <stop_token>

namespace kestrelid::vision {
namespace {

constexpr float kLeastConfidence = 0.5f;  // below, the box held texture or another script

// A line across the page can run up or down: the better reading tells.
Expected<CtcReading> readLine(const LineRecognizer& recognizer, const cv::Mat& picture,
                              const LineBox& line, const std::stop_token& stop) {
    auto reading = recognizer.read(picture, line, stop);
    if (!line.crosswise || !reading)
        return reading;
    auto other = recognizer.read(picture, line.reversed(), stop);
    if (other && other->confidence <= reading->confidence)
        return reading;
    return other;
}

// First the lines that are worth most for their cost: titles and labels, from the top of the page
// down. Long lines take as long as ten labels. Those of a machine-readable zone are one word each,
// and say nothing for the verdict.
void putTellingLinesFirst(PageLines& page) {
    constexpr float kLongLine = 10.0f;  // times its height
    std::vector<LineExtent> extents;
    for (const auto& line : page.lines)
        extents.push_back(line.extentOn(page.along));
    std::vector<LineBox> ordered;
    for (const std::size_t index : readingOrder(extents))
        ordered.push_back(page.lines[index]);
    std::stable_partition(ordered.begin(), ordered.end(), [](const LineBox& line) {
        return line.length <= kLongLine * line.height;
    });
    page.lines = std::move(ordered);
}

// A page's lines, and the picture in which they are level.
struct LevelPage {
    cv::Mat picture;
    int turns = 0;  // quarter turns clockwise, that made the picture of the one given
    PageLines lines;
};

// Reads lines until one failed or the collector has enough. Thread: any, several lines at once.
class LinesReader {
public:
    LinesReader(const TextModels& models, const LevelPage& page, cv::Size given,
                LineCollector& collector)
        : models_(models), page_(page), given_(given), collector_(collector) {}

    void read(const LineBox& line) {
        if (failed_ || collector_.isComplete())
            return;
        auto reading = readLine(models_.recognizer, page_.picture, line, enough_.get_token());
        if (!reading) {
            if (!enough_.stop_requested())
                fail(reading.error());
            return;
        }
        auto& [text, confidence] = *reading;
        if (confidence < kLeastConfidence)
            return;
        std::array<cv::Point2f, 4> corners = line.corners();
        for (auto& corner : corners)
            corner = beforeTurns(corner, page_.turns, given_);
        collector_.add({line.extentOn(page_.lines.along), normalizedBounds(corners, given_),
                        std::move(text), confidence});
        if (collector_.isComplete())
            enough_.request_stop();  // the lines that other threads are reading
    }

    // After all lines are done.
    [[nodiscard]] const std::optional<RequestError>& error() const { return error_; }

private:
    void fail(RequestError error) {
        const std::scoped_lock lock(mutex_);
        error_ = std::move(error);
        failed_ = true;
    }

    const TextModels& models_;
    const LevelPage& page_;
    cv::Size given_;
    LineCollector& collector_;
    std::atomic<bool> failed_ = false;
    std::stop_source enough_;
    std::mutex mutex_;
    std::optional<RequestError> error_;
};

// The detector breaks up lines that run up or down, so a page of those is turned and looked at
// again.
Expected<LevelPage> findLines(const TextModels& models, const cv::Mat& picture,
                              const PageReaderSettings& settings) {
    LevelPage page{picture, 0, {}};
    for (const int turns : {0, 1}) {
        page.turns = turns;
        page.picture = turned(picture, turns);
        const auto boxes = models.detector.find(page.picture, settings.detectorSide);
        if (!boxes)
            return Failure(boxes.error());
        page.lines = alignToPage(*boxes);
        if (std::abs(page.lines.along.x) >= std::abs(page.lines.along.y))
            break;
    }
    const auto reversed =
        models.direction.isReversed(page.picture, page.lines, models.recognizer, settings.threads);
    if (!reversed)
        return Failure(reversed.error());
    if (*reversed)
        page.lines.reverse();
    return page;
}

}  // namespace

std::optional<RequestError> readPage(const TextModels& models, const cv::Mat& picture,
                                     const PageReaderSettings& settings, LineCollector& collector) {
    auto page = findLines(models, picture, settings);
    if (!page)
        return page.error();
    auto& lines = page->lines.lines;
    if (settings.mayStopEarly)
        putTellingLinesFirst(page->lines);
    else
        // The longest lines first: the threads then finish at nearly the same time.
        std::stable_sort(lines.begin(), lines.end(), [](const LineBox& a, const LineBox& b) {
            return a.length * b.height > b.length * a.height;
        });

    LinesReader reader(models, *page, picture.size(), collector);
    sideBySide(lines.size(), settings.threads,
               [&](std::size_t index) { reader.read(lines[index]); });
    return reader.error();
}

}  // namespace kestrelid::vision
