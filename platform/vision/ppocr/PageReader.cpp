#include "platform/vision/ppocr/PageReader.h"

#include "platform/vision/layout/ReducedPicture.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <exception>
#include <mutex>
#include <thread>

namespace kestrelid {
namespace {

constexpr float kLeastConfidence = 0.5f;  // below, the box held texture or another script

// A line across the page can run up or down: the better reading tells.
LineRecognizer::Reading readLine(const LineRecognizer& recognizer, const cv::Mat& picture,
                                 const LineBox& line) {
    auto reading = recognizer.read(picture, line);
    if (!line.crosswise || std::holds_alternative<RequestError>(reading))
        return reading;
    auto other = recognizer.read(picture, line.reversed());
    if (const auto* reversed = std::get_if<CtcReading>(&other);
        reversed && reversed->confidence <= std::get<CtcReading>(reading).confidence)
        return reading;
    return other;
}

void putInReadingOrder(std::vector<LineBox>& lines, cv::Point2f along) {
    std::vector<LineExtent> extents;
    for (const auto& line : lines)
        extents.push_back(line.extentOn(along));
    std::vector<LineBox> ordered;
    for (const std::size_t index : readingOrder(extents))
        ordered.push_back(lines[index]);
    lines = std::move(ordered);
}

// Work shared between threads: each takes the next line until none is left, one failed or the
// collector has enough.
class LineQueue {
public:
    LineQueue(const PpOcrModels& models, const cv::Mat& picture, const PageLines& page,
              LineCollector& collector)
        : models_(models), picture_(picture), page_(page), collector_(collector) {}

    void work() noexcept {
        try {
            while (!failed_ && !collector_.isComplete()) {
                const std::size_t index = next_++;
                if (index >= page_.lines.size())
                    return;
                read(page_.lines[index]);
            }
        } catch (const std::exception& failure) {
            fail({std::string("reading a line failed: ") + failure.what()});
        }
    }

    // After all threads are done.
    [[nodiscard]] const std::optional<RequestError>& error() const noexcept { return error_; }

private:
    void read(const LineBox& line) {
        auto reading = readLine(models_.recognizer, picture_, line);
        if (const auto* error = std::get_if<RequestError>(&reading))
            return fail(*error);
        auto& [text, confidence] = std::get<CtcReading>(reading);
        if (confidence >= kLeastConfidence)
            collector_.add({line.extentOn(page_.along),
                            normalizedBounds(line.corners(), picture_.size()), std::move(text),
                            confidence});
    }

    void fail(RequestError error) {
        const std::scoped_lock lock(mutex_);
        error_ = std::move(error);
        failed_ = true;
    }

    const PpOcrModels& models_;
    const cv::Mat& picture_;
    const PageLines& page_;
    LineCollector& collector_;
    std::atomic<std::size_t> next_ = 0;
    std::atomic<bool> failed_ = false;
    std::mutex mutex_;
    std::optional<RequestError> error_;
};

}  // namespace

std::optional<RequestError> readPage(const PpOcrModels& models, const cv::Mat& picture,
                                     const PageReaderSettings& settings, LineCollector& lines) {
    const auto boxes = models.detector.find(picture, settings.detectorSide);
    if (const auto* error = std::get_if<RequestError>(&boxes))
        return *error;
    PageLines page = alignToPage(std::get<std::vector<cv::RotatedRect>>(boxes));
    const auto reversed = models.direction.isReversed(picture, page, models.recognizer);
    if (const auto* error = std::get_if<RequestError>(&reversed))
        return *error;
    if (std::get<bool>(reversed))
        page.reverse();

    if (settings.mayStopEarly)
        putInReadingOrder(page.lines, page.along);
    else
        // The longest lines first: the threads then finish at nearly the same time.
        std::stable_sort(page.lines.begin(), page.lines.end(),
                         [](const LineBox& a, const LineBox& b) {
                             return a.length * b.height > b.length * a.height;
                         });

    LineQueue queue(models, picture, page, lines);
    {
        std::vector<std::jthread> others;
        for (int thread = 1;
             thread < std::min<int>(settings.threads, static_cast<int>(page.lines.size()));
             ++thread)
            others.emplace_back([&queue] { queue.work(); });
        queue.work();
    }
    return queue.error();
}

}  // namespace kestrelid
