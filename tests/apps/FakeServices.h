#pragma once

#include "base/AsioQueue.h"

#include <kestrelid/PassportDetector.h>
#include <kestrelid/VisionServices.h>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace kestrelid::cli {

// Finds the outlines that it is given.
class FakeRectangles : public RectangleService {
public:
    std::optional<RequestError> perform(const Bitmap& bitmap, const RectangleRequest&,
                                        const RequestCompletion& completion) override {
        width = bitmap.width();
        height = bitmap.height();
        completion({.results = found, .error = std::nullopt});
        return std::nullopt;
    }
    std::vector<Observation> found;
    int width = 0;
    int height = 0;
};

// Reads PASSPORT, which matches four keywords, unless it is given an error.
class FakeText : public TextService {
public:
    std::optional<RequestError> perform(const Bitmap&, const TextRequest&,
                                        const RequestCompletion& completion) override {
        if (error)
            return error;
        const TextObservation line({}, {{.string = "PASSPORT", .confidence = 1.0f}});
        completion({.results = std::vector<Observation>{line}, .error = std::nullopt});
        return std::nullopt;
    }
    std::optional<RequestError> error;
};

inline PlatformServices fakeServices(std::shared_ptr<RectangleService> rectangles,
                                     std::shared_ptr<TextService> text) {
    return {.rectangles = std::move(rectangles),
            .text = std::move(text),
            .queue = std::make_shared<base::AsioQueue>("test", 2)};
}

}  // namespace kestrelid::cli
