#pragma once

#include "base/Failures.h"

#include <kestrelid/DispatchQueue.h>

#include <utility>

namespace kestrelid::camera {

// Has the queue run a block, which tells what the host's own callbacks throw in it. False: the
// queue cannot take it.
template <typename Block>
bool submit(DispatchQueue& queue, Block block) noexcept {
    try {
        queue.async([block = std::move(block)] { base::runBlock("camera", block); });
        return true;
    } catch (...) {
        return false;
    }
}

}  // namespace kestrelid::camera
