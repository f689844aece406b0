#pragma once

#include <kestrelid/VisionServices.h>

#include <string>
#include <utility>
#include <vector>

// Engines mostly give pixels from the upper left corner; observations hold fractions of the bitmap,
// counted from its lower left corner.
inline kestrelid::NormalizedRect normalized(const kestrelid::PixelRect& box,
                                            const kestrelid::Bitmap& bitmap) {
    const double width = bitmap.width();
    const double height = bitmap.height();
    return {box.x / width, 1.0 - (box.y + box.height) / height, box.width / width,
            box.height / height};
}

// Stands for an engine of your own: whatever the picture, it "reads" the lines that it was made
// with.
class LinesBeside final : public kestrelid::TextService {
public:
    explicit LinesBeside(std::vector<std::string> lines) : lines_(std::move(lines)) {}

    // Called on workers, several times at once: nothing of the object changes here; an engine that
    // is not made for that takes a lock. The bitmap may be used until the return, no longer.
    kestrelid::TextResult perform(const kestrelid::Bitmap& bitmap,
                                  const kestrelid::TextRequest& request) override {
        if (lines_.empty())  // what went wrong and what to do about it, nothing that was read
            return kestrelid::RequestError{"no lines: name a file that has some"};
        std::vector<kestrelid::TextObservation> found;  // in reading order
        const int height = bitmap.height() / static_cast<int>(lines_.size());
        kestrelid::PixelRect box{0, 0, bitmap.width(), height};
        for (const std::string& line : lines_) {
            const float confidence = 1.0f;  // 0 to 1
            found.push_back({normalized(box, bitmap), {{line, confidence}}});
            box.y += height;
            if (request.isEnough && request.isEnough(line))
                break;  // the rest cannot change the verdict
        }
        return found;
    }

private:
    const std::vector<std::string> lines_;
};
