#pragma once

#include <kestrelid/PassportDetector.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kestrelid::test {

// What a request meets: it reports (or does not), then fails (or does not).
struct Script {
    std::optional<RequestReport> report;
    std::optional<RequestError> failure;
};

class FakeRectangles final : public RectangleService {
public:
    explicit FakeRectangles(Script script) : script_(std::move(script)) {}

    std::optional<RequestError> perform(const Bitmap&, const RectangleRequest& request,
                                        const RequestCompletion& completion) override {
        lastRequest = request;
        if (script_.report)
            completion(*script_.report);
        return script_.failure;
    }

    RectangleRequest lastRequest;

private:
    Script script_;
};

// Plays a script, or reads given lines one by one for as long as the request wants them.
class FakeText final : public TextService {
public:
    explicit FakeText(Script script) : script_(std::move(script)) {}
    explicit FakeText(std::vector<std::string> lines) : lines_(std::move(lines)) {}

    std::optional<RequestError> perform(const Bitmap& bitmap, const TextRequest& request,
                                        const RequestCompletion& completion) override {
        lastBitmap = bitmap;
        lastRequest = request;
        if (duringRequest)
            duringRequest();
        if (script_.report)
            completion(*script_.report);
        else if (!script_.failure)
            completion({.results = read(request), .error = std::nullopt});
        return script_.failure;
    }

    std::optional<Bitmap> lastBitmap;
    TextRequest lastRequest;
    std::size_t linesRead = 0;
    std::function<void()> duringRequest;

private:
    std::vector<Observation> read(const TextRequest& request) {
        std::vector<Observation> observations;
        linesRead = 0;
        for (const std::string& line : lines_) {
            observations.emplace_back(TextObservation({}, {{line, 1.0f}}));
            ++linesRead;
            if (request.isEnough && request.isEnough(line))
                break;
        }
        return observations;
    }

    Script script_;
    std::vector<std::string> lines_;
};

inline Script reporting(std::vector<Observation> results) {
    return {.report = RequestReport{.results = std::move(results), .error = std::nullopt},
            .failure = std::nullopt};
}

// For a detector that overrides what would use them.
inline PlatformServices noServices() {
    return {.rectangles = std::make_shared<FakeRectangles>(Script{}),
            .text = std::make_shared<FakeText>(Script{}),
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
