#include "vision/tesseract/TesseractTextService.h"

#include "vision/tesseract/TesseractEngine.h"
#include "vision/text/EnglishOnly.h"
#include "vision/text/LineCollector.h"
#include "vision/text/QuarterTurns.h"
#include "vision/text/ReducedPicture.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <exception>
#include <string>
#include <utility>

namespace kestrelid::vision {
namespace {

constexpr int kPictureSide =
    1600;  // longest side read; letters of a page's small print are 15 pixels high then
constexpr int kEnlargedSide = 1200;  // smaller pictures grow to this
constexpr double kStrongestEnlarging = 2.5;
constexpr int kTurnSide = 900;         // longest side when only the turn is asked for
constexpr int kSmallestSide = 8;       // pixels; no line of text is lower
constexpr float kSureReading = 0.65f;  // mean confidence of a page that stands upright
constexpr float kEnoughCharacters = 40.0f;

// Dark text on even white, whatever the light was: grey values relative to their surroundings.
cv::Mat evenPicture(const Bitmap& bitmap) {
    cv::Mat gray;
    cv::cvtColor(reducedPicture(bitmap, kPictureSide), gray, cv::COLOR_BGR2GRAY);
    const int longest = std::max(gray.cols, gray.rows);
    if (const double scale =
            std::min(kStrongestEnlarging, static_cast<double>(kEnlargedSide) / longest);
        scale > 1.0)
        cv::resize(gray, gray, cv::Size(), scale, scale, cv::INTER_CUBIC);
    // The blur must be wider than letters and narrower than shadows. On a quarter of the size it
    // costs little.
    cv::Mat background;
    cv::resize(gray, background, cv::Size(), 0.25, 0.25, cv::INTER_AREA);
    cv::GaussianBlur(background, background, cv::Size(), std::max(gray.cols, gray.rows) / 160.0);
    cv::resize(background, background, gray.size(), 0, 0, cv::INTER_LINEAR);
    cv::divide(gray, background, gray, 200.0);
    return gray;
}

struct Quality {
    float characters = 0.0f;  // weighted by confidence
    float confidence = 0.0f;  // mean
};

Quality quality(const std::vector<TesseractLine>& lines) {
    Quality sum;
    float characters = 0.0f;
    for (const auto& line : lines) {
        const auto length = static_cast<float>(line.text.size());
        characters += length;
        sum.characters += length * line.confidence;
    }
    sum.confidence = characters > 0.0f ? sum.characters / characters : 0.0f;
    return sum;
}

struct TurnedLines {
    std::vector<TesseractLine> lines;
    int turns = 0;  // clockwise, that brought the picture upright
};

// As it stands first, as most pictures do; only a poor result makes the other turns worth their
// time.
std::variant<TurnedLines, RequestError> readInAnyTurn(TesseractEngine& engine,
                                                      const cv::Mat& gray) {
    auto upright = engine.read(gray);
    if (const auto* error = std::get_if<RequestError>(&upright))
        return *error;
    TurnedLines result{std::get<std::vector<TesseractLine>>(std::move(upright)), 0};
    const Quality found = quality(result.lines);
    if (found.confidence >= kSureReading && found.characters >= kEnoughCharacters)
        return result;

    cv::Mat small = gray;
    if (const int longest = std::max(gray.cols, gray.rows); longest > kTurnSide) {
        const double scale = static_cast<double>(kTurnSide) / longest;
        cv::resize(gray, small, cv::Size(), scale, scale, cv::INTER_AREA);
    }
    float most = 0.0f;
    int best = 0;
    for (int turns = 0; turns < 4; ++turns) {
        const auto lines = engine.read(turned(small, turns));
        if (const auto* error = std::get_if<RequestError>(&lines))
            return *error;
        const Quality reading = quality(std::get<std::vector<TesseractLine>>(lines));
        // The square: upside down, letters are as many but doubtful.
        if (const float score = reading.characters * reading.confidence * reading.confidence;
            score > most) {
            most = score;
            best = turns;
        }
    }
    if (best == 0)
        return result;
    auto lines = engine.read(turned(gray, best));
    if (const auto* error = std::get_if<RequestError>(&lines))
        return *error;
    return TurnedLines{std::get<std::vector<TesseractLine>>(std::move(lines)), best};
}

// Hands the lines to the caller's isEnough in reading order.
void collect(const TurnedLines& read, cv::Size picture, LineCollector& collector) {
    std::vector<LineExtent> extents;
    for (const auto& line : read.lines) {
        const auto width = static_cast<float>(line.box.width);
        const auto height = static_cast<float>(line.box.height);
        extents.push_back({static_cast<float>(line.box.x) + width / 2.0f,
                           static_cast<float>(line.box.y) + height / 2.0f, width, height});
    }
    for (const std::size_t index : readingOrder(extents)) {
        if (collector.isComplete())
            return;
        const TesseractLine& line = read.lines[index];
        const std::array corners{beforeTurns(line.box.tl(), read.turns, picture),
                                 beforeTurns(line.box.br(), read.turns, picture)};
        collector.add(
            {extents[index], normalizedBounds(corners, picture), line.text, line.confidence});
    }
}

}  // namespace

TesseractTextService::TesseractTextService(TesseractOptions options)
    : options_(std::move(options)) {}

TesseractTextService::~TesseractTextService() = default;

TesseractTextService::Borrowed TesseractTextService::borrow() {
    std::shared_ptr<const TesseractLibrary> library;
    {
        const std::scoped_lock lock(mutex_);
        if (!idle_.empty()) {
            auto engine = std::move(idle_.back());
            idle_.pop_back();
            return engine;
        }
        if (!library_) {
            auto loaded = TesseractLibrary::load();
            if (const auto* error = std::get_if<RequestError>(&loaded))
                return *error;
            library_ = std::get<std::shared_ptr<const TesseractLibrary>>(std::move(loaded));
        }
        library = library_;
    }
    return TesseractEngine::open(std::move(library), options_.models);
}

void TesseractTextService::giveBack(std::unique_ptr<TesseractEngine> engine) {
    const std::scoped_lock lock(mutex_);
    idle_.push_back(std::move(engine));
}

TextResult TesseractTextService::perform(const Bitmap& bitmap, const TextRequest& request) {
    try {
        if (auto refusal = refuseUnlessEnglish(request))
            return *std::move(refusal);
        auto borrowed = borrow();
        if (const auto* error = std::get_if<RequestError>(&borrowed))
            return *error;
        auto& engine = std::get<std::unique_ptr<TesseractEngine>>(borrowed);
        LineCollector collector(request.isEnough);
        if (std::min(bitmap.width(), bitmap.height()) >= kSmallestSide) {
            const cv::Mat gray = evenPicture(bitmap);
            const auto read = readInAnyTurn(*engine, gray);
            if (const auto* error = std::get_if<RequestError>(&read))
                return *error;
            collect(std::get<TurnedLines>(read), gray.size(), collector);
        }
        giveBack(std::move(engine));
        return collector.observations();
    } catch (const std::exception& failure) {
        return RequestError{std::string("text recognition failed: ") + failure.what()};
    }
}

std::vector<ServiceStatus> TesseractTextService::diagnose() const {
    const auto loaded = TesseractLibrary::load();
    if (const auto* error = std::get_if<RequestError>(&loaded))
        return {{"Tesseract", false, error->description},
                {"English model for Tesseract", false,
                 "needs Tesseract, and " + std::string(kTesseractModelRemedy)}};
    const auto& library = std::get<std::shared_ptr<const TesseractLibrary>>(loaded);
    std::vector<ServiceStatus> parts{
        {"Tesseract", true, library->releaseNumber + ", " + library->place.string()}};
    const auto engine = TesseractEngine::open(library, options_.models);
    if (const auto* error = std::get_if<RequestError>(&engine))
        parts.push_back({"English model for Tesseract", false, error->description});
    else
        parts.push_back({"English model for Tesseract", true,
                         std::get<std::unique_ptr<TesseractEngine>>(engine)->models()});
    return parts;
}

}  // namespace kestrelid::vision
