#pragma once

#include <kestrelid/Bitmap.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>

namespace kestrelid::capture {

// Memory for some frames of BGRA8, reused. A bitmap keeps its memory from the pool as long as it is
// held, which may be longer than the pool lives. Thread: any.
class FramePool {
public:
    explicit FramePool(int most);

    // Gets the memory of a frame, rows without gaps. False: there is no frame after all.
    using Fill = std::function<bool(std::byte* pixels)>;

    // A frame that fill has written. Nothing if as many as there may be are held, or if there is
    // not enough memory. A frame of another size than the last replaces the memory.
    [[nodiscard]] std::optional<Bitmap> make(int width, int height, const Fill& fill);

    // A copy of frame, of BGRA8.
    [[nodiscard]] std::optional<Bitmap> copy(const Bitmap& frame);

private:
    struct Memory;
    std::shared_ptr<Memory> memory_;
};

}  // namespace kestrelid::capture
