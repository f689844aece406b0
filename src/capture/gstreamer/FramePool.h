#pragma once

#include <kestrelid/Bitmap.h>

#include <memory>
#include <optional>

namespace kestrelid::capture {

// Memory for three frames of BGRA8, reused. A bitmap keeps its memory from the pool as long as it
// is held, which may be longer than the pool lives. Thread: any.
class FramePool {
public:
    static constexpr int kBitmaps = 3;

    FramePool();

    // A copy of frame, of BGRA8. Nothing if all bitmaps are held, or if there is not enough memory.
    // A frame of another size than the last replaces the memory.
    [[nodiscard]] std::optional<Bitmap> copy(const Bitmap& frame);

private:
    struct Memory;
    std::shared_ptr<Memory> memory_;
};

}  // namespace kestrelid::capture
