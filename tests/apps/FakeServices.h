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
    RectangleResult perform(const Bitmap& bitmap, const RectangleRequest&) override {
        width = bitmap.width();
        height = bitmap.height();
        return found;
    }
    std::vector<RectangleObservation> found;
    int width = 0;
    int height = 0;
};

// Reads PASSPORT, which matches four keywords, unless it is given an error.
class FakeText : public TextService {
public:
    TextResult perform(const Bitmap&, const TextRequest&) override {
        if (error)
            return *error;
        return std::vector{TextObservation({}, {{.string = "PASSPORT", .confidence = 1.0f}})};
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
