#include "TesseractTextService.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>

using namespace kestrelid;
using Engine = tesseract::TessBaseAPI;

namespace {

constexpr int kLongestSide = 1600;        // letters of a page's small print are 15 pixels high then
constexpr int kShortestSide = 8;          // pixels; no line of text is lower
constexpr int kEnlargedSide = 1200;       // smaller pictures grow to this, or two and a half times
constexpr int kTurnSide = 900;            // longest side when only the turn is asked for
constexpr float kLeastConfidence = 0.4f;  // below are borders and pictures taken for letters
constexpr float kSureReading = 0.65f;     // mean confidence of a page that stands upright
constexpr float kEnoughCharacters = 40.0f;  // of it, weighted by confidence

struct Line {
    cv::Rect box;  // pixels of the upright picture
    std::string text;
    float confidence = 0.0f;  // 0 to 1
};

cv::Mat scaled(const cv::Mat& picture, double scale) {
    const cv::Size size(std::max(1, cvRound(picture.cols * scale)),
                        std::max(1, cvRound(picture.rows * scale)));
    cv::Mat result;
    cv::resize(picture, result, size, 0, 0, scale < 1.0 ? cv::INTER_AREA : cv::INTER_CUBIC);
    return result;
}

cv::Mat atMost(const cv::Mat& picture, int side) {
    const int longest = std::max(picture.cols, picture.rows);
    return longest > side ? scaled(picture, static_cast<double>(side) / longest) : picture;
}

// Dark text on even white, whatever the light was: grey values relative to their surroundings.
cv::Mat evenPicture(const Bitmap& bitmap) {
    const cv::Mat pixels(bitmap.height(), bitmap.width(), CV_8UC(bytesPerPixel(bitmap.format())),
                         const_cast<std::byte*>(bitmap.row(0)),  // only read
                         static_cast<std::size_t>(bitmap.stride()));
    cv::Mat gray = atMost(pixels, kLongestSide);
    if (bitmap.format() == PixelFormat::rgb8)
        cv::cvtColor(gray, gray, cv::COLOR_RGB2GRAY);
    else if (bitmap.format() == PixelFormat::bgra8)
        cv::cvtColor(gray, gray, cv::COLOR_BGRA2GRAY);
    else if (bitmap.format() == PixelFormat::bgr8)
        cv::cvtColor(gray, gray, cv::COLOR_BGR2GRAY);
    else if (bitmap.format() == PixelFormat::rgba8)
        cv::cvtColor(gray, gray, cv::COLOR_RGBA2GRAY);
    const int longest = std::max(gray.cols, gray.rows);
    if (longest < kEnlargedSide)
        gray = scaled(gray, std::min(2.5, static_cast<double>(kEnlargedSide) / longest));
    // Wider than letters and narrower than shadows; on a quarter of the size it costs little.
    cv::Mat background = scaled(gray, 0.25);
    cv::GaussianBlur(background, background, cv::Size(), std::max(gray.cols, gray.rows) / 160.0);
    cv::resize(background, background, gray.size());
    cv::divide(gray, background, background, 200.0);
    return background;
}

std::vector<Line> readLines(Engine& engine, const cv::Mat& gray) {
    engine.ClearAdaptiveClassifier();  // or results would depend on earlier pages
    engine.SetImage(gray.data, gray.cols, gray.rows, 1, static_cast<int>(gray.step));
    engine.SetSourceResolution(300);  // only saves an estimate
    if (engine.Recognize(nullptr) != 0)
        throw std::runtime_error("Tesseract could not read the picture");
    std::vector<Line> lines;
    constexpr auto kLevel = tesseract::RIL_TEXTLINE;
    const std::unique_ptr<tesseract::ResultIterator> found(engine.GetIterator());
    if (!found)
        return lines;
    do {
        const std::unique_ptr<const char[]> read(found->GetUTF8Text(kLevel));
        const float confidence = found->Confidence(kLevel) / 100.0f;
        int left = 0, top = 0, right = 0, bottom = 0;
        if (!read || confidence < kLeastConfidence ||
            !found->BoundingBox(kLevel, &left, &top, &right, &bottom))
            continue;
        std::string text = read.get();
        text.erase(text.find_last_not_of(" \n") + 1);
        if (std::any_of(text.begin(), text.end(), [](unsigned char character) {
                return character > 127 || std::isalnum(character);
            }))
            lines.push_back({cv::Rect(left, top, right - left, bottom - top), std::move(text),
                             std::min(confidence, 1.0f)});
    } while (found->Next(kLevel));
    return lines;
}

// The number of characters, weighted by their confidence, and the mean confidence.
std::pair<float, float> quality(const std::vector<Line>& lines) {
    float all = 1e-6f;
    float weighted = 0.0f;
    for (const Line& line : lines) {
        all += static_cast<float>(line.text.size());
        weighted += static_cast<float>(line.text.size()) * line.confidence;
    }
    return {weighted, weighted / all};
}

// After so many quarter turns clockwise.
cv::Mat turned(const cv::Mat& picture, int turns) {
    cv::Mat result = picture;
    if (turns > 0)
        cv::rotate(picture, result = cv::Mat(), turns - 1);
    return result;
}

// As it stands first, as most pictures do; only a poor result makes the other turns worth their
// time. turns: gets how many quarters clockwise brought the picture upright.
std::vector<Line> readInAnyTurn(Engine& engine, const cv::Mat& gray, int& turns) {
    std::vector<Line> lines = readLines(engine, gray);
    const auto [characters, confidence] = quality(lines);
    if (confidence >= kSureReading && characters >= kEnoughCharacters)
        return lines;
    const cv::Mat small = atMost(gray, kTurnSide);
    float most = 0.0f;
    for (int tried = 0; tried < 4; ++tried) {
        const auto [characters, confidence] = quality(readLines(engine, turned(small, tried)));
        // The square: upside down, letters are as many but doubtful.
        const float score = characters * confidence * confidence;
        if (score > most) {
            most = score;
            turns = tried;
        }
    }
    return turns > 0 ? readLines(engine, turned(gray, turns)) : lines;
}

// Rows from top to bottom, and each from left to right. A row may climb or fall slowly.
std::vector<Line> inReadingOrder(std::vector<Line> lines) {
    const auto center = [](const Line& line) { return line.box.y + line.box.height / 2.0f; };
    const auto gap = [](const Line& a, const Line& b) {  // negative where they overlap
        return std::max(a.box.x - b.box.br().x, b.box.x - a.box.br().x);
    };
    std::stable_sort(lines.begin(), lines.end(),
                     [&](const Line& a, const Line& b) { return center(a) < center(b); });
    std::vector<std::vector<Line>> rows;
    for (Line& line : lines) {
        std::vector<Line>* best = nullptr;
        float least = 0.6f;  // of the lower line's height: where two stand beside each other
        for (auto& row : rows) {
            const Line& nearest =
                *std::min_element(row.begin(), row.end(), [&](const Line& a, const Line& b) {
                    return gap(a, line) < gap(b, line);
                });
            const auto height = static_cast<float>(std::min(line.box.height, nearest.box.height));
            const float offset = std::abs(center(line) - center(nearest)) / height;
            if (offset < least &&
                2 * gap(nearest, line) > -std::min(line.box.width, nearest.box.width)) {
                least = offset;
                best = &row;
            }
        }
        (best ? *best : rows.emplace_back()).push_back(std::move(line));
    }
    std::stable_sort(rows.begin(), rows.end(), [&](const auto& a, const auto& b) {
        return center(a.front()) + center(a.back()) < center(b.front()) + center(b.back());
    });
    lines.clear();
    for (auto& row : rows) {
        std::stable_sort(row.begin(), row.end(),
                         [](const Line& a, const Line& b) { return a.box.x < b.box.x; });
        std::move(row.begin(), row.end(), std::back_inserter(lines));
    }
    return lines;
}

// A box of a picture that was turned clockwise, in fractions of the bitmap as it was before, from
// its lower left corner. size: of the turned picture.
NormalizedRect normalized(const cv::Rect& pixels, cv::Size size, int turns) {
    const cv::Size2d all = size;
    NormalizedRect box{pixels.x / all.width, 1.0 - pixels.br().y / all.height,
                       pixels.width / all.width, pixels.height / all.height};
    for (; turns > 0; --turns)
        box = {1.0 - box.y - box.height, box.x, box.height, box.width};
    return box;
}

}  // namespace

std::unique_ptr<Engine> TesseractTextService::borrowEngine() {
    if (const std::scoped_lock lock(mutex_); !idle_.empty()) {
        auto engine = std::move(idle_.back());
        idle_.pop_back();
        return engine;
    }
    auto engine = std::make_unique<Engine>();
    engine->SetVariable("debug_file", "/dev/null");  // or a missing model is told there, too
    if (engine->Init(nullptr, "eng", tesseract::OEM_LSTM_ONLY) != 0)
        throw std::runtime_error(
            "Tesseract found no eng.traineddata: install the package tesseract-ocr-eng");
    engine->SetPageSegMode(tesseract::PSM_SPARSE_TEXT);
    return engine;
}

TextResult TesseractTextService::perform(const Bitmap& bitmap, const TextRequest& request) try {
    const auto& languages = request.recognitionLanguages;
    if (std::find(languages.begin(), languages.end(), "en") == languages.end())
        return RequestError{"this recogniser reads English only: ask for \"en\""};
    std::vector<TextObservation> observations;
    if (std::min(bitmap.width(), bitmap.height()) < kShortestSide)
        return observations;
    auto engine = borrowEngine();
    const cv::Mat gray = evenPicture(bitmap);
    int turns = 0;
    std::vector<Line> lines = readInAnyTurn(*engine, gray, turns);
    {
        const std::scoped_lock lock(mutex_);
        idle_.push_back(std::move(engine));
    }
    const cv::Size size = turns % 2 == 0 ? gray.size() : cv::Size(gray.rows, gray.cols);
    for (const Line& line : inReadingOrder(std::move(lines))) {
        const std::vector<RecognizedText> readings{{line.text, line.confidence}};
        observations.emplace_back(normalized(line.box, size, turns), readings);
        if (request.isEnough && request.isEnough(line.text))
            break;  // the rest cannot change the verdict
    }
    return observations;
} catch (const std::exception& failure) {
    return RequestError{failure.what()};  // nothing that was read
}
