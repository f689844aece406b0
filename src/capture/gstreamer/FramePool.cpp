#include "capture/gstreamer/FramePool.h"

#include <cstring>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace kestrelid::capture {

struct FramePool::Memory {
    using Block = std::unique_ptr<std::byte[]>;

    // Nothing if all are held.
    Block take(std::size_t size) {
        const std::lock_guard lock(mutex);
        if (held >= kBitmaps)
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

    std::mutex mutex;
    std::vector<Block> free;
    std::size_t blockSize = 0;  // bytes of each block in free
    int held = 0;               // of any size
};

FramePool::FramePool() : memory_(std::make_shared<Memory>()) {
    memory_->free.reserve(kBitmaps);
}

std::optional<Bitmap> FramePool::copy(const Bitmap& frame) {
    const std::ptrdiff_t stride = std::ptrdiff_t{frame.width()} * bytesPerPixel(frame.format());
    const std::size_t size = static_cast<std::size_t>(stride) * frame.height();
    Memory::Block block = memory_->take(size);
    if (!block)
        return std::nullopt;
    for (int y = 0; y < frame.height(); ++y)
        std::memcpy(block.get() + y * stride, frame.row(y), static_cast<std::size_t>(stride));
    std::shared_ptr<const std::byte[]> pixels(
        block.release(), [size, weak = std::weak_ptr(memory_)](std::byte* bytes) {
            Memory::Block owner(bytes);
            if (const auto memory = weak.lock())
                memory->giveBack(std::move(owner), size);
        });
    return Bitmap::wrap(frame.width(), frame.height(), stride, frame.format(), std::move(pixels),
                        size);
}

}  // namespace kestrelid::capture
