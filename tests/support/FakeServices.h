#pragma once

#include <kestrelid/PassportDetector.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kestrelid::test {

// Gives the same result to every request.
class FakeRectangles final : public RectangleService {
public:
    explicit FakeRectangles(RectangleResult result = {}) : result_(std::move(result)) {}

    RectangleResult perform(const Bitmap&, const RectangleRequest& request) override {
        lastRequest = request;
        ++requests;
        return result_;
    }

    RectangleRequest lastRequest;
    int requests = 0;

private:
    RectangleResult result_;
};

// Gives the same result to every request, or reads given lines one by one for as long as the
// request wants them.
class FakeText final : public TextService {
public:
    explicit FakeText(TextResult result = {}) : result_(std::move(result)) {}
    explicit FakeText(std::vector<std::string> lines) : lines_(std::move(lines)) {}

    TextResult perform(const Bitmap& bitmap, const TextRequest& request) override {
        lastBitmap = bitmap;
        lastRequest = request;
        if (duringRequest)
            duringRequest();
        if (lines_.empty())
            return result_;
        return read(request);
    }

    std::optional<Bitmap> lastBitmap;
    TextRequest lastRequest;
    std::size_t linesRead = 0;
    std::function<void()> duringRequest;

private:
    std::vector<TextObservation> read(const TextRequest& request) {
        std::vector<TextObservation> observations;
        linesRead = 0;
        for (const std::string& line : lines_) {
            observations.push_back({{}, {{line, 1.0f}}});
            ++linesRead;
            if (request.isEnough && request.isEnough(line))
                break;
        }
        return observations;
    }

    TextResult result_;
    std::vector<std::string> lines_;
};

// For a detector that overrides what would use them.
inline PlatformServices noServices() {
    return {.rectangles = std::make_shared<FakeRectangles>(),
            .text = std::make_shared<FakeText>(),
            .queue = nullptr};
}

// Covers fraction of the bitmap, from its upper left corner.
inline RectangleObservation rectangleOf(double width, double height) {
    return {.boundingBox = {0.0, 1.0 - height, width, height}, .corners = {}, .confidence = 1.0f};
}

inline Bitmap blankBitmap(int width, int height) {
    const std::size_t size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    return *Bitmap::wrap(width, height, width, PixelFormat::gray8,
                         std::shared_ptr<const std::byte[]>(new std::byte[size]{}), size);
}

}  // namespace kestrelid::test
