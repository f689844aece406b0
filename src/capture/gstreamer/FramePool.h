#pragma once

#include <kestrelid/Bitmap.h>

#include <memory>
#include <optional>

namespace kestrelid::capture {

// Memory for three frames of BGRA8, reused. Whoever holds a bitmap keeps its memory from the pool,
// and may hold it longer than the pool lives. Thread: any.
class FramePool {
public:
    static constexpr int kBitmaps = 3;

    FramePool();

    // A copy of frame, of BGRA8. None where all bitmaps are held, or memory is short. Another size
    // than the former replaces the memory.
    [[nodiscard]] std::optional<Bitmap> copy(const Bitmap& frame);

private:
    struct Memory;
    std::shared_ptr<Memory> memory_;
};

}  // namespace kestrelid::capture
