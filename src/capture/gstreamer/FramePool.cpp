#include "capture/gstreamer/FramePool.h"

#include <cstring>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace kestrelid::capture {

struct FramePool::Memory {
    using Block = std::unique_ptr<std::byte[]>;

    explicit Memory(int bitmaps) : most(bitmaps) {
        free.reserve(static_cast<std::size_t>(bitmaps));
    }

    // Nothing if all are held.
    Block take(std::size_t size) {
        const std::lock_guard lock(mutex);
        if (held >= most)
            return nullptr;
        if (size != blockSize) {
            free.clear();
            blockSize = size;
        }
        Block block;
        if (free.empty()) {
            block.reset(new (std::nothrow) std::byte[size]);
        } else {
            block = std::move(free.back());
            free.pop_back();
        }
        if (block)
            ++held;
        return block;
    }

    void giveBack(Block block, std::size_t size) {
        const std::lock_guard lock(mutex);
        --held;
        if (size == blockSize)
            free.push_back(std::move(block));
    }

    const int most;
    std::mutex mutex;
    std::vector<Block> free;
    std::size_t blockSize = 0;  // bytes of each block in free
    int held = 0;               // of any size
};

FramePool::FramePool(int most) : memory_(std::make_shared<Memory>(most)) {}

std::optional<Bitmap> FramePool::make(int width, int height, const Fill& fill) {
    const std::ptrdiff_t stride = std::ptrdiff_t{width} * bytesPerPixel(PixelFormat::bgra8);
    const std::size_t size = static_cast<std::size_t>(stride) * static_cast<std::size_t>(height);
    Memory::Block block = memory_->take(size);
    if (!block)
        return std::nullopt;
    std::shared_ptr<std::byte[]> pixels(block.release(),
                                        [size, weak = std::weak_ptr(memory_)](std::byte* bytes) {
                                            Memory::Block owner(bytes);
                                            if (const auto memory = weak.lock())
                                                memory->giveBack(std::move(owner), size);
                                        });
    if (!fill(pixels.get()))
        return std::nullopt;
    return Bitmap::wrap(width, height, stride, PixelFormat::bgra8, std::move(pixels), size);
}

std::optional<Bitmap> FramePool::copy(const Bitmap& frame) {
    return make(frame.width(), frame.height(), [&frame](std::byte* pixels) {
        const std::size_t row = static_cast<std::size_t>(frame.width()) * 4;
        for (int y = 0; y < frame.height(); ++y)
            std::memcpy(pixels + static_cast<std::size_t>(y) * row, frame.row(y), row);
        return true;
    });
}

}  // namespace kestrelid::capture
